// Resources (machines, vehicles, equipment) of the enterprise layer, with
// the maintenance plans linked to each. Resources form a classification
// tree: analytic records are the resources themselves, synthetic ones group
// them.
#pragma once

#include <cstring>

#include "platform/records/PXCriterios.h"
#include "platform/records/QZLeituraListas.h"

// The link of a maintenance plan to a resource, with when the resource is
// next due under it: a date, and the counter cycles left (negative when the
// counter has run past the due point).
#define CAMPOS_GT_RECURSO_PLANO_MANUTENCAO(CAMPO, LISTA)                        \
    CAMPO(uint32_t, PonteiroPlanoManutencao, QZ_IDX | QZ_REF(CQZDadosPX_Plano)) \
    CAMPO(uint8_t, Inativo, QZ_IDX)                                             \
    CAMPO(REG_QZDMA, DataProximaManutencao, 0)                                  \
    CAMPO(CQZMoeda, CiclosContadorProximaManutencao, 0)

class CQZDadosGT_RecursoPlanoManutencao : public TQZBaseParaDados {
    QZ_REGISTRO(CQZDadosGT_RecursoPlanoManutencao, CAMPOS_GT_RECURSO_PLANO_MANUTENCAO)
public:
    QZModulo OnGetModulo() const override { return QZ_MODULO_GT; }
};

// A warranty the resource holds: the task an order did on it, until when
// the work is under warranty, and that order.
// DmcManutencao records the order that gave the warranty; that order may
// have gone to an old month file since, so it declares no reference.
#define CAMPOS_GT_RECURSO_GARANTIA(CAMPO, LISTA)               \
    CAMPO(uint32_t, PonteiroTarefa, QZ_REF(CQZDadosPX_Tarefa)) \
    CAMPO(REG_QZDMA, DmaGarantia, 0)                           \
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
// PonteiroUnidadeMedidaContador is a product's or a service's unit as
// UnidadeProdutoServico says: no one target is declared.
#define CAMPOS_GT_RECURSO(CAMPO, LISTA)                                  \
    CAMPO(CString, Codigo, 0)                                            \
    CAMPO(CString, Descricao, 0)                                         \
    CAMPO(uint8_t, TipoClassificacao, QZ_IDX)                            \
    CAMPO(uint8_t, Tipo, 0)                                              \
    CAMPO(uint32_t, PonteiroTipoRecurso, QZ_REF(CQZDadosGT_TipoRecurso)) \
    CAMPO(uint8_t, Inativo, 0)                                           \
    CAMPO(uint16_t, PonteiroFilial, QZ_REF(CQZDadosGT_Filial))           \
    CAMPO(uint32_t, PonteiroUnidadeMedidaContador, 0)                    \
    CAMPO(uint8_t, UnidadeProdutoServico, 0)                             \
    CAMPO(uint16_t, NumeroDigitosContador, 0)                            \
    CAMPO(REG_QZDMAHMSUTC, DmaHmsAtualizacao, QZ_CARIMBO)                \
    LISTA(CQZDadosGT_RecursoPlanoManutencao, PlanoManutencao)            \
    LISTA(CQZDadosGT_RecursoGarantia, RecursoGarantia)

class CQZDadosGT_Recurso : public TQZBaseParaDados {
    QZ_REGISTRO(CQZDadosGT_Recurso, CAMPOS_GT_RECURSO)
public:
    QZModulo OnGetModulo() const override { return QZ_MODULO_GT; }
    const CQZDadosGT_RecursoPlanoManutencao& GetPlanoManutencao(int64_t i) const {
        return GetConstRefPlanoManutencao(i);
    }
};

// Lists a read of resources loads: GT_LER_RECURSO_PLANOS the plan links,
// GT_LER_RECURSO_GARANTIAS the warranties. A read with neither bit (0, 1, the
// buffered reads) loads both.
constexpr uint64_t GT_LER_RECURSO_PLANOS = 4;
constexpr uint64_t GT_LER_RECURSO_GARANTIAS = 8;
template <>
struct QZLeituraListas<CQZDadosGT_Recurso> {
    static bool LeLista(uint64_t flags, const char* lista) {
        if ((flags & (GT_LER_RECURSO_PLANOS | GT_LER_RECURSO_GARANTIAS)) == 0 || flags == QZ_LER_TUDO) return true;
        if (std::strcmp(lista, "PlanoManutencao") == 0) return (flags & GT_LER_RECURSO_PLANOS) != 0;
        if (std::strcmp(lista, "RecursoGarantia") == 0) return (flags & GT_LER_RECURSO_GARANTIAS) != 0;
        return true;
    }
};

// The register of resource types (lathe, forklift, compressor, ...) a
// resource names through PonteiroTipoRecurso.
#define CAMPOS_GT_TIPO_RECURSO(CAMPO, LISTA) \
    CAMPO(CString, Codigo, 0)                \
    CAMPO(CString, Descricao, 0)             \
    CAMPO(REG_QZDMAHMSUTC, DmaHmsAtualizacao, QZ_CARIMBO)

class CQZDadosGT_TipoRecurso : public TQZBaseParaDados {
    QZ_REGISTRO(CQZDadosGT_TipoRecurso, CAMPOS_GT_TIPO_RECURSO)
public:
    QZModulo OnGetModulo() const override { return QZ_MODULO_GT; }
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
// whether the link is active or not. SetFlagAtivoInativo(1) asks for active
// and inactive resources alike, as every search of this filter gives them
// (the caller judges each resource's state).
#define CRITERIOS_GT_FILTRO_RECURSO(CRITERIO)           \
    CRITERIO(uint32_t, PonteiroPlanoManutencao)         \
    CRITERIO(CQZDadosGT_FiltroClassificacao, FiltroClassificacao) \
    CRITERIO(uint8_t, FlagAtivoInativo)

class CQZDadosGT_FiltroRecurso : public TQZBaseFiltro {
    QZ_FILTRO(CQZDadosGT_FiltroRecurso, CQZDadosGT_Recurso, CRITERIOS_GT_FILTRO_RECURSO)
public:
    void MontaCondicoes(CQZCondicoes& c, bool) const override {
        if (m_critPonteiroPlanoManutencao)
            c.ListaContem("PlanoManutencao", "PonteiroPlanoManutencao", *m_critPonteiroPlanoManutencao);
        if (m_critFiltroClassificacao) m_critFiltroClassificacao->MontaCondicoes(c);
    }
};
