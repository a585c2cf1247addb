// Maintenance plans: which tasks are done, by which discipline and priority,
// and how often (by period, by counter or both); a tree of groups and leaf
// plans. A plan carries its alerts, three lists of components and its tasks.
#pragma once

#include "platform/records/PXCriterios.h"

// The kind of component list a line belongs to.
enum _E_PX_MANUTENCOES_COMPONENTES : uint8_t {
    E_PX_MANUTENCOES_COMPONENTES_MATERIAL = 1,
    E_PX_MANUTENCOES_COMPONENTES_EQUIPAMENTO = 2,
    E_PX_MANUTENCOES_COMPONENTES_SERVICO = 3,
};

// A technician warned by an alert: Ponteiro is the technician's key (a
// field of its own, since list lines keep no position).
#define CAMPOS_PX_PLANO_ALERTA_TECNICO(CAMPO, LISTA) CAMPO(uint32_t, Ponteiro, QZ_REF(CQZDadosPX_Tecnico))

class CQZDadosPX_PlanoAlertaTecnico : public TQZBaseParaDados {
    QZ_REGISTRO(CQZDadosPX_PlanoAlertaTecnico, CAMPOS_PX_PLANO_ALERTA_TECNICO)
};

// An alert: who is warned (technicians), with which e-mail template, before
// or after the due point (AntesApos 1 or 2) by days and/or counter, and how
// often it repeats (TipoRepeticao 1 days, 2 hours, 3 minutes).
#define CAMPOS_PX_PLANO_ALERTA(CAMPO, LISTA)     \
    CAMPO(CString, Descricao, 0)                 \
    CAMPO(CString, Detalhamento, 0)              \
    CAMPO(CString, ModeloEmail, 0)               \
    CAMPO(uint8_t, Inativo, 0)                   \
    CAMPO(uint8_t, AntesApos, 0)                 \
    CAMPO(uint8_t, Dias, 0)                      \
    CAMPO(CQZMoeda, QtdDias, 0)                  \
    CAMPO(uint8_t, Contador, 0)                  \
    CAMPO(CQZMoeda, QtdContador, 0)              \
    CAMPO(uint8_t, RepetirEm, 0)                 \
    CAMPO(uint8_t, TipoRepeticao, 0)             \
    CAMPO(CQZMoeda, TempoRepeticao, 0)           \
    CAMPO(REG_QZDMAHMSUTC, DmaHmsUltimoEnvio, 0) \
    LISTA(CQZDadosPX_PlanoAlertaTecnico, Tecnicos)

class CQZDadosPX_PlanoAlerta : public TQZBaseParaDados {
    QZ_REGISTRO(CQZDadosPX_PlanoAlerta, CAMPOS_PX_PLANO_ALERTA)
public:
    const CQZDadosPX_PlanoAlertaTecnico& GetTecnicos(int64_t i) const { return GetConstRefTecnicos(i); }
};

// A component line; TipoProdutoServico 'S' marks a service.
// PosicaoProduto names a product or a service as TipoProdutoServico says: no
// one target is declared for it.
#define CAMPOS_PX_PLANO_COMPONENTE(CAMPO, LISTA)     \
    CAMPO(_REG_POSICAO_PRODUTOPS, PosicaoProduto, 0) \
    CAMPO(uint8_t, TipoProdutoServico, 0)            \
    CAMPO(CQZMoeda, Quantidade, 0)

class CQZDadosPX_PlanoComponente : public TQZBaseParaDados {
    QZ_REGISTRO(CQZDadosPX_PlanoComponente, CAMPOS_PX_PLANO_COMPONENTE)
};

#define CAMPOS_PX_PLANO_TAREFA(CAMPO, LISTA) CAMPO(uint32_t, PonteiroTarefa, QZ_REF(CQZDadosPX_Tarefa))

class CQZDadosPX_PlanoTarefa : public TQZBaseParaDados {
    QZ_REGISTRO(CQZDadosPX_PlanoTarefa, CAMPOS_PX_PLANO_TAREFA)
};

// Tipo: 1 recurring, 2 other leaf plans, 0 groups. TipoControle: 0 by
// period, 1 by counter, 2 both must be due, 3 either. TempoPrevisto is the
// planned time of the plan's orders, in hours when TempoPrevistoEmHoras.
#define CAMPOS_PX_PLANO(CAMPO, LISTA)                                           \
    CAMPO(CString, Codigo, QZ_IDX)                                              \
    CAMPO(CString, Nome, 0)                                                     \
    CAMPO(uint32_t, PonteiroPai, QZ_IDX | QZ_REF(CQZDadosPX_Plano))             \
    CAMPO(uint8_t, TipoClassificacao, 0)                                        \
    CAMPO(uint8_t, Tipo, 0)                                                     \
    CAMPO(uint32_t, PonteiroDisciplina, QZ_IDX | QZ_REF(CQZDadosPX_Disciplina)) \
    CAMPO(uint32_t, PonteiroPrioridade, QZ_REF(CQZDadosPX_Prioridade))          \
    CAMPO(uint8_t, TipoControle, 0)                                             \
    CAMPO(uint16_t, PonteiroTipoPeriodo, QZ_REF(CQZDadosGT_TipoPeriodo))        \
    CAMPO(CQZMoeda, ContadorCicloManutencao, 0)                                 \
    CAMPO(uint8_t, InativarAposRealManut, 0)                                    \
    CAMPO(uint8_t, Inativo, QZ_IDX)                                             \
    CAMPO(CQZMoeda, TempoPrevisto, 0)                                           \
    CAMPO(uint8_t, TempoPrevistoEmHoras, 0)                                     \
    CAMPO(REG_QZDMAHMSUTC, DmaHmsGravacao, QZ_CARIMBO)                          \
    LISTA(CQZDadosPX_PlanoAlerta, Alerta)                                       \
    LISTA(CQZDadosPX_PlanoComponente, Material)                                 \
    LISTA(CQZDadosPX_PlanoComponente, Equipamento)                              \
    LISTA(CQZDadosPX_PlanoComponente, Servico)                                  \
    LISTA(CQZDadosPX_PlanoTarefa, Tarefa)

class CQZDadosPX_Plano : public TQZBaseParaDados {
    QZ_REGISTRO(CQZDadosPX_Plano, CAMPOS_PX_PLANO)
public:
    const CQZDadosPX_PlanoAlerta& GetAlerta(int64_t i) const { return GetConstRefAlerta(i); }
};

// Codes match whole; SetValorUnicoDisciplina keeps the plans of that very
// discipline. SetAtivo(1) keeps the active plans. SetAtivoRecurso(1) keeps
// the plans that some resource follows: named by at least one active link
// of a resource to its maintenance plans (an inactive link does not count;
// the resource's own state is the alert routine's to judge, resource by
// resource).
#define CRITERIOS_PX_FILTRO_PLANO(CRITERIO) \
    CRITERIO(CString, Codigo)               \
    CRITERIO(uint32_t, PonteiroPai)         \
    CRITERIO(uint32_t, ValorUnicoDisciplina) \
    CRITERIO(uint8_t, Ativo)                \
    CRITERIO(uint8_t, AtivoRecurso)

class CQZDadosPX_FiltroPlano : public TQZBaseFiltro {
    QZ_FILTRO(CQZDadosPX_FiltroPlano, CQZDadosPX_Plano, CRITERIOS_PX_FILTRO_PLANO)
public:
    void MontaCondicoes(CQZCondicoes& c, bool classificacao) const override {
        c.Codigo("Codigo", m_critCodigo, false);
        PXCondicaoPai(c, m_critPonteiroPai, classificacao);
        c.Igual("PonteiroDisciplina", m_critValorUnicoDisciplina);
        if (m_critAtivo.value_or(0) != 0) c.Igual("Inativo", uint8_t{0});
        if (m_critAtivoRecurso.value_or(0) != 0)
            c.ReferenciadoPor("CQZDadosGT_Recurso", "PlanoManutencao", "PonteiroPlanoManutencao", "Inativo", uint8_t{0});
    }
};
