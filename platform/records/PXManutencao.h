// Maintenance orders: movement records keyed by month and number (REG_QZDMC).
#pragma once

#include "platform/records/PXCriterios.h"

#define CAMPOS_PX_MANUTENCAO(CAMPO, LISTA)                \
    CAMPO(REG_QZDMC, Dmc, QZ_CHAVE)                       \
    CAMPO(uint16_t, PonteiroFilial, QZ_IDX)               \
    CAMPO(uint32_t, PonteiroPlano, QZ_IDX)                \
    CAMPO(uint32_t, PonteiroTecnico, QZ_IDX)              \
    CAMPO(uint32_t, PonteiroSituacao, QZ_IDX)             \
    CAMPO(REG_QZDMAHMSUTC, DmaHmsGravacao, QZ_CARIMBO)

class CQZDadosPX_Manutencao : public TQZBaseParaDados {
    QZ_REGISTRO(CQZDadosPX_Manutencao, CAMPOS_PX_MANUTENCAO)
public:
    static constexpr QZTipoChave kTipoChave = QZ_CHAVE_DMC;
};

// Branch scope and periods as PXCriterios.h says; each SetValorUnico* keeps
// the orders that point to that very record.
#define CRITERIOS_PX_FILTRO_MANUTENCAO(CRITERIO)     \
    CRITERIO(uint8_t, TodasFiliais)                  \
    CRITERIO(uint16_t, ValorUnicoFilial)             \
    CRITERIO(uint8_t, TodosPeriodos)                 \
    CRITERIO(uint32_t, ValorUnicoPlanoManutencao)    \
    CRITERIO(uint32_t, ValorUnicoTecnico)            \
    CRITERIO(uint32_t, ValorUnicoSituacao)

class CQZDadosPX_FiltroManutencao : public TQZBaseFiltro {
    QZ_FILTRO(CQZDadosPX_FiltroManutencao, CQZDadosPX_Manutencao, CRITERIOS_PX_FILTRO_MANUTENCAO)
public:
    void MontaCondicoes(CQZCondicoes& c, bool) const override {
        PXCondicaoFilial(c, m_critTodasFiliais, m_critValorUnicoFilial);
        c.Igual("PonteiroPlano", m_critValorUnicoPlanoManutencao);
        c.Igual("PonteiroTecnico", m_critValorUnicoTecnico);
        c.Igual("PonteiroSituacao", m_critValorUnicoSituacao);
    }
};
