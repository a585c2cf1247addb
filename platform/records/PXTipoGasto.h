// Expense types: the headings under which maintenance expenses are booked,
// a tree of groups and leaves.
#pragma once

#include "platform/records/PXCriterios.h"

#define CAMPOS_PX_TIPO_GASTO(CAMPO, LISTA)                              \
    CAMPO(CString, Codigo, QZ_IDX)                                      \
    CAMPO(CString, Nome, 0)                                             \
    CAMPO(uint32_t, PonteiroPai, QZ_IDX | QZ_REF(CQZDadosPX_TipoGasto)) \
    CAMPO(uint8_t, TipoClassificacao, 0)                                \
    CAMPO(REG_QZDMAHMSUTC, DmaHmsGravacao, QZ_CARIMBO)

class CQZDadosPX_TipoGasto : public TQZBaseParaDados {
    QZ_REGISTRO(CQZDadosPX_TipoGasto, CAMPOS_PX_TIPO_GASTO)
public:
    // "code - name", as lists and messages show a type.
    CString GetCodigoNome() const { return GetCodigo() + " - " + GetNome(); }
};

// Codes match whole.
#define CRITERIOS_PX_FILTRO_TIPO_GASTO(CRITERIO) \
    CRITERIO(CString, Codigo)                    \
    CRITERIO(uint32_t, PonteiroPai)

class CQZDadosPX_FiltroTipoGasto : public TQZBaseFiltro {
    QZ_FILTRO(CQZDadosPX_FiltroTipoGasto, CQZDadosPX_TipoGasto, CRITERIOS_PX_FILTRO_TIPO_GASTO)
public:
    void MontaCondicoes(CQZCondicoes& c, bool classificacao) const override {
        c.Codigo("Codigo", m_critCodigo, false);
        PXCondicaoPai(c, m_critPonteiroPai, classificacao);
    }
};
