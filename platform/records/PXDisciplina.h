// Disciplines: the trades that technicians hold and tasks require, a tree of
// groups and leaves.
#pragma once

#include "platform/records/PXCriterios.h"

#define CAMPOS_PX_DISCIPLINA(CAMPO, LISTA)                               \
    CAMPO(CString, Codigo, QZ_IDX)                                       \
    CAMPO(CString, Nome, 0)                                              \
    CAMPO(uint32_t, PonteiroPai, QZ_IDX | QZ_REF(CQZDadosPX_Disciplina)) \
    CAMPO(uint8_t, TipoClassificacao, 0)                                 \
    CAMPO(REG_QZDMAHMSUTC, DmaHmsGravacao, QZ_CARIMBO)

class CQZDadosPX_Disciplina : public TQZBaseParaDados {
    QZ_REGISTRO(CQZDadosPX_Disciplina, CAMPOS_PX_DISCIPLINA)
};

// Codes match whole.
#define CRITERIOS_PX_FILTRO_DISCIPLINA(CRITERIO) \
    CRITERIO(CString, Codigo)                    \
    CRITERIO(uint32_t, PonteiroPai)

class CQZDadosPX_FiltroDisciplina : public TQZBaseFiltro {
    QZ_FILTRO(CQZDadosPX_FiltroDisciplina, CQZDadosPX_Disciplina, CRITERIOS_PX_FILTRO_DISCIPLINA)
public:
    void MontaCondicoes(CQZCondicoes& c, bool classificacao) const override {
        c.Codigo("Codigo", m_critCodigo, false);
        PXCondicaoPai(c, m_critPonteiroPai, classificacao);
    }
};
