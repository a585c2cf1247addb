// Maintenance plans: what is done, by which discipline and how often; a tree
// of groups and leaf plans.
#pragma once

#include "platform/records/PXCriterios.h"

#define CAMPOS_PX_PLANO(CAMPO, LISTA)                     \
    CAMPO(CString, Codigo, QZ_IDX)                        \
    CAMPO(CString, Nome, 0)                               \
    CAMPO(uint32_t, PonteiroPai, QZ_IDX)                  \
    CAMPO(uint8_t, TipoClassificacao, 0)                  \
    CAMPO(uint32_t, PonteiroDisciplina, QZ_IDX)           \
    CAMPO(REG_QZDMAHMSUTC, DmaHmsGravacao, QZ_CARIMBO)

class CQZDadosPX_Plano : public TQZBaseParaDados {
    QZ_REGISTRO(CQZDadosPX_Plano, CAMPOS_PX_PLANO)
};

// Codes match whole; SetValorUnicoDisciplina keeps the plans of that very
// discipline.
#define CRITERIOS_PX_FILTRO_PLANO(CRITERIO) \
    CRITERIO(CString, Codigo)               \
    CRITERIO(uint32_t, PonteiroPai)         \
    CRITERIO(uint32_t, ValorUnicoDisciplina)

class CQZDadosPX_FiltroPlano : public TQZBaseFiltro {
    QZ_FILTRO(CQZDadosPX_FiltroPlano, CQZDadosPX_Plano, CRITERIOS_PX_FILTRO_PLANO)
public:
    void MontaCondicoes(CQZCondicoes& c, bool classificacao) const override {
        c.Codigo("Codigo", m_critCodigo, false);
        PXCondicaoPai(c, m_critPonteiroPai, classificacao);
        c.Igual("PonteiroDisciplina", m_critValorUnicoDisciplina);
    }
};
