// Priorities: code, description and a base priority from 0 to 100.
#pragma once

#include "platform/QZRegistro.h"

#define CAMPOS_PX_PRIORIDADE(CAMPO, LISTA)    \
    CAMPO(CString, Codigo, QZ_IDX)            \
    CAMPO(CString, Descricao, 0)              \
    CAMPO(uint8_t, PrioridadeBase, 0)         \
    CAMPO(REG_QZDMAHMSUTC, DmaHmsAtualizacao, QZ_CARIMBO)

class CQZDadosPX_Prioridade : public TQZBaseParaDados {
    QZ_REGISTRO(CQZDadosPX_Prioridade, CAMPOS_PX_PRIORIDADE)
};

#define CRITERIOS_PX_FILTRO_PRIORIDADE(CRITERIO) \
    CRITERIO(CString, Codigo)                    \
    CRITERIO(uint8_t, AtivaVerificacaoCodigoParcial)

class CQZDadosPX_FiltroPrioridade : public TQZBaseFiltro {
    QZ_FILTRO(CQZDadosPX_FiltroPrioridade, CQZDadosPX_Prioridade, CRITERIOS_PX_FILTRO_PRIORIDADE)
public:
    void MontaCondicoes(CQZCondicoes& c, bool) const override {
        c.Codigo("Codigo", m_critCodigo, m_critAtivaVerificacaoCodigoParcial.value_or(0) != 0);
    }
};
