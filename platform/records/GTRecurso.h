// Resources (machines, vehicles, equipment) of the enterprise layer, with
// the maintenance plans linked to each. Resources form a classification
// tree: analytic records are the resources themselves, synthetic ones group
// them.
#pragma once

#include "platform/records/PXCriterios.h"

// The link of a maintenance plan to a resource, with when the resource is
// next due under it: a date, and the counter cycles left (negative when the
// counter has run past the due point).
#define CAMPOS_GT_RECURSO_PLANO_MANUTENCAO(CAMPO, LISTA) \
    CAMPO(uint32_t, PonteiroPlanoManutencao, QZ_IDX)     \
    CAMPO(uint8_t, Inativo, QZ_IDX)                      \
    CAMPO(REG_QZDMA, DataProximaManutencao, 0)           \
    CAMPO(CQZMoeda, CiclosContadorProximaManutencao, 0)

class CQZDadosGT_RecursoPlanoManutencao : public TQZBaseParaDados {
    QZ_REGISTRO(CQZDadosGT_RecursoPlanoManutencao, CAMPOS_GT_RECURSO_PLANO_MANUTENCAO)
public:
    QZModulo OnGetModulo() const override { return QZ_MODULO_GT; }
};

// A warranty the resource holds: the task an order did on it, until when
// the work is under warranty, and that order.
#define CAMPOS_GT_RECURSO_GARANTIA(CAMPO, LISTA) \
    CAMPO(uint32_t, PonteiroTarefa, 0)           \
    CAMPO(REG_QZDMA, DmaGarantia, 0)             \
    CAMPO(REG_QZDMC, DmcManutencao, 0)

class CQZDadosGT_RecursoGarantia : public TQZBaseParaDados {
    QZ_REGISTRO(CQZDadosGT_RecursoGarantia, CAMPOS_GT_RECURSO_GARANTIA)
public:
    QZModulo OnGetModulo() const override { return QZ_MODULO_GT; }
};

// Tipo: the kind of resource; kind 2 (equipment: machines, vehicles, tools)
// is the one maintenance orders are opened for. The counter (hour meter,
// odometer) has a unit of measure, a product unit ('P') or a service unit,
// and a number of digits before it turns over.
#define CAMPOS_GT_RECURSO(CAMPO, LISTA)                   \
    CAMPO(CString, Codigo, 0)                             \
    CAMPO(CString, Descricao, 0)                          \
    CAMPO(uint8_t, TipoClassificacao, QZ_IDX)             \
    CAMPO(uint8_t, Tipo, 0)                               \
    CAMPO(uint8_t, Inativo, 0)                            \
    CAMPO(uint16_t, PonteiroFilial, 0)                    \
    CAMPO(uint32_t, PonteiroUnidadeMedidaContador, 0)     \
    CAMPO(uint8_t, UnidadeProdutoServico, 0)              \
    CAMPO(uint16_t, NumeroDigitosContador, 0)             \
    CAMPO(REG_QZDMAHMSUTC, DmaHmsAtualizacao, QZ_CARIMBO) \
    LISTA(CQZDadosGT_RecursoPlanoManutencao, PlanoManutencao) \
    LISTA(CQZDadosGT_RecursoGarantia, RecursoGarantia)

class CQZDadosGT_Recurso : public TQZBaseParaDados {
    QZ_REGISTRO(CQZDadosGT_Recurso, CAMPOS_GT_RECURSO)
public:
    QZModulo OnGetModulo() const override { return QZ_MODULO_GT; }
    const CQZDadosGT_RecursoPlanoManutencao& GetPlanoManutencao(int64_t i) const {
        return GetConstRefPlanoManutencao(i);
    }
};

// The classification part of an enterprise filter: SetApenasAnalitico(1)
// keeps analytic records only; unset or 0 keeps groups too.
class CQZDadosGT_FiltroClassificacao {
public:
    auto& SetApenasAnalitico(uint8_t valor) {
        m_ucApenasAnalitico = valor;
        return *this;
    }
    uint8_t GetApenasAnalitico() const { return m_ucApenasAnalitico; }
    void MontaCondicoes(CQZCondicoes& c) const {
        if (m_ucApenasAnalitico != 0) c.Igual("TipoClassificacao", PX_CLASSIFICACAO_ANALITICO);
    }

private:
    uint8_t m_ucApenasAnalitico = 0;
};

// SetPonteiroPlanoManutencao keeps the resources linked to that plan,
// whether the link is active or not.
#define CRITERIOS_GT_FILTRO_RECURSO(CRITERIO)           \
    CRITERIO(uint32_t, PonteiroPlanoManutencao)         \
    CRITERIO(CQZDadosGT_FiltroClassificacao, FiltroClassificacao)

class CQZDadosGT_FiltroRecurso : public TQZBaseFiltro {
    QZ_FILTRO(CQZDadosGT_FiltroRecurso, CQZDadosGT_Recurso, CRITERIOS_GT_FILTRO_RECURSO)
public:
    void MontaCondicoes(CQZCondicoes& c, bool) const override {
        if (m_critPonteiroPlanoManutencao)
            c.ListaContem("PlanoManutencao", "PonteiroPlanoManutencao", *m_critPonteiroPlanoManutencao);
        if (m_critFiltroClassificacao) m_critFiltroClassificacao->MontaCondicoes(c);
    }
};
