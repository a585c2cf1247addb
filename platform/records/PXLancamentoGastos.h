// Expense entries: dated expenses incurred on a resource and booked under an
// expense type, movement records keyed by month and number (REG_QZDMC), with
// their item lines.
#pragma once

#include "platform/records/PXCriterios.h"

// An item: a product, how much of it and what it cost.
// ProdutoServico is a product or a service with nothing saying which: no
// target is declared for it.
#define CAMPOS_PX_LANCAMENTO_GASTOS_ITEM(CAMPO, LISTA) \
    CAMPO(_REG_POSICAO_PRODUTOPS, ProdutoServico, 0)   \
    CAMPO(CQZMoeda, Quantidade, 0)                     \
    CAMPO(CQZMoeda, Valor, 0)

class CQZDadosPX_LancamentoGastosItem : public TQZBaseParaDados {
    QZ_REGISTRO(CQZDadosPX_LancamentoGastosItem, CAMPOS_PX_LANCAMENTO_GASTOS_ITEM)
};

// Data: the day of the expense (empty when not informed); the key's month is
// the month of the date the entry was first saved with.
#define CAMPOS_PX_LANCAMENTO_GASTOS(CAMPO, LISTA)                             \
    CAMPO(REG_QZDMC, Dmc, QZ_CHAVE)                                           \
    CAMPO(uint32_t, PonteiroTipoGasto, QZ_IDX | QZ_REF(CQZDadosPX_TipoGasto)) \
    CAMPO(REG_QZDMA, Data, 0)                                                 \
    CAMPO(uint32_t, PonteiroRecurso, QZ_REF(CQZDadosGT_Recurso))              \
    CAMPO(REG_QZDMAHMSUTC, DmaHmsGravacao, QZ_CARIMBO)                        \
    LISTA(CQZDadosPX_LancamentoGastosItem, Item)

class CQZDadosPX_LancamentoGastos : public TQZBaseParaDados {
    QZ_REGISTRO(CQZDadosPX_LancamentoGastos, CAMPOS_PX_LANCAMENTO_GASTOS)
public:
    static constexpr QZTipoChave kTipoChave = QZ_CHAVE_DMC;
};

// An entry carries no branch of its own, so the filter has no branch
// criterion and every search covers the entries of all branches. Periods as
// PXCriterios.h says.
#define CRITERIOS_PX_FILTRO_LANCAMENTO_GASTOS(CRITERIO) \
    CRITERIO(uint8_t, TodosPeriodos)                    \
    CRITERIO(uint32_t, ValorUnicoTipoGasto)

class CQZDadosPX_FiltroLancamentoGastos : public TQZBaseFiltro {
    QZ_FILTRO(CQZDadosPX_FiltroLancamentoGastos, CQZDadosPX_LancamentoGastos, CRITERIOS_PX_FILTRO_LANCAMENTO_GASTOS)
public:
    void MontaCondicoes(CQZCondicoes& c, bool) const override {
        c.Igual("PonteiroTipoGasto", m_critValorUnicoTipoGasto);
    }
};
