// Custom-field definitions: extra information that users define and fill in
// elsewhere in the module (its destination), a tree of classes (groups) and
// leaf definitions hung from their class.
#pragma once

#include "platform/records/PXFiltroClassificacao.h"

#define CAMPOS_PX_CAMPOS_PERSONALIZADOS(CAMPO, LISTA)                                 \
    CAMPO(uint8_t, Destinacao, QZ_IDX)                                                \
    CAMPO(CString, Codigo, QZ_IDX)                                                    \
    CAMPO(CString, Descricao, 0)                                                      \
    CAMPO(uint8_t, TipoClassificacao, QZ_IDX)                                         \
    CAMPO(uint32_t, PonteiroClasse, QZ_IDX | QZ_REF(CQZDadosPX_CamposPersonalizados)) \
    CAMPO(CString, Detalhamento, 0)                                                   \
    CAMPO(uint8_t, Inativo, 0)                                                        \
    CAMPO(REG_QZDMAHMSUTC, DmaHmsGravacao, QZ_CARIMBO)

class CQZDadosPX_CamposPersonalizados : public TQZBaseParaDados {
    QZ_REGISTRO(CQZDadosPX_CamposPersonalizados, CAMPOS_PX_CAMPOS_PERSONALIZADOS)
};

// Codes match whole. The tree runs through PonteiroClasse: a classification
// search returns the subtree rooted at GetFiltroClassificacao()'s initial
// record, its descendants limited to the destination when one is set.
#define CRITERIOS_PX_FILTRO_CAMPOS_PERSONALIZADOS(CRITERIO) \
    CRITERIO(CString, Codigo)                               \
    CRITERIO(uint8_t, Destinacao)                           \
    CRITERIO(CQZDadosPX_FiltroClassificacao, FiltroClassificacao)

class CQZDadosPX_FiltroCamposPersonalizados : public TQZBaseFiltro {
    QZ_FILTRO(CQZDadosPX_FiltroCamposPersonalizados, CQZDadosPX_CamposPersonalizados,
              CRITERIOS_PX_FILTRO_CAMPOS_PERSONALIZADOS)
public:
    CQZDadosPX_FiltroClassificacao& GetFiltroClassificacao() {
        return PXFiltroClassificacao(m_critFiltroClassificacao);
    }
    void MontaCondicoes(CQZCondicoes& c, bool classificacao) const override {
        c.Codigo("Codigo", m_critCodigo, false);
        c.Igual("Destinacao", m_critDestinacao);
        if (m_critFiltroClassificacao) m_critFiltroClassificacao->MontaCondicoes(c, "PonteiroClasse", classificacao);
    }
};
