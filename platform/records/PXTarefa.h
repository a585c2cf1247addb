// Tasks: the catalogue of maintenance jobs that plans and orders name, a tree
// of groups and leaf tasks. A leaf task carries its planned time, warranty
// terms, custom information, situation flow and three lists of components.
#pragma once

#include "platform/records/PXFiltroClassificacao.h"

// One component of a task. Its kind (1, 2 or 3) says which of the task's
// three lists it belongs to.
// PosicaoProdutoServico names a product or a service as TipoProdutoServico
// says: no one target is declared for it.
#define CAMPOS_PX_TAREFA_COMPONENTE(CAMPO, LISTA)           \
    CAMPO(uint8_t, TipoComponente, 0)                       \
    CAMPO(_REG_POSICAO_PRODUTOPS, PosicaoProdutoServico, 0) \
    CAMPO(uint8_t, TipoProdutoServico, 0)                   \
    CAMPO(CQZMoeda, Quantidade, 0)                          \
    CAMPO(CString, Complemento, 0)

class CQZDadosPX_TarefaComponente : public TQZBaseParaDados {
    QZ_REGISTRO(CQZDadosPX_TarefaComponente, CAMPOS_PX_TAREFA_COMPONENTE)
};

#define CAMPOS_PX_TAREFA(CAMPO, LISTA)                                                 \
    CAMPO(CString, Codigo, QZ_IDX)                                                     \
    CAMPO(CString, Nome, 0)                                                            \
    CAMPO(uint32_t, PonteiroPai, QZ_IDX | QZ_REF(CQZDadosPX_Tarefa))                   \
    CAMPO(uint8_t, TipoClassificacao, QZ_IDX)                                          \
    CAMPO(CString, Descricao, 0)                                                       \
    CAMPO(CQZMoeda, TempoPrevisto, 0)                                                  \
    CAMPO(uint8_t, Garantia, 0)                                                        \
    CAMPO(CQZMoeda, QuantPeriodoGarantia, 0)                                           \
    CAMPO(uint32_t, PonteiroPeriodoGarantia, QZ_REF(CQZDadosGT_TipoPeriodo))           \
    CAMPO(uint8_t, EfetuarApontTarefa, 0)                                              \
    CAMPO(uint32_t, PonteiroInfPersonalizada, QZ_REF(CQZDadosPX_CamposPersonalizados)) \
    CAMPO(uint8_t, AtribuirSituacaoTarefa, 0)                                          \
    CAMPO(uint32_t, PonteiroSituacaoGrupo, QZ_REF(CQZDadosPX_Situacao))                \
    CAMPO(uint32_t, PonteiroSituacaoInicial, QZ_REF(CQZDadosPX_Situacao))              \
    CAMPO(REG_QZDMAHMSUTC, DmaHmsGravacao, QZ_CARIMBO)                                 \
    LISTA(CQZDadosPX_TarefaComponente, Material)                                       \
    LISTA(CQZDadosPX_TarefaComponente, Equipamento)                                    \
    LISTA(CQZDadosPX_TarefaComponente, Servico)

class CQZDadosPX_Tarefa : public TQZBaseParaDados {
    QZ_REGISTRO(CQZDadosPX_Tarefa, CAMPOS_PX_TAREFA)
public:
    // Code and name, as messages name a task.
    CString GetCodigoNome() const { return GetCodigo() + " - " + GetNome(); }
    const CQZDadosPX_TarefaComponente* GetPtrMaterial(int64_t i) const { return &GetConstRefMaterial(i); }
    const CQZDadosPX_TarefaComponente* GetPtrEquipamento(int64_t i) const { return &GetConstRefEquipamento(i); }
    const CQZDadosPX_TarefaComponente* GetPtrServico(int64_t i) const { return &GetConstRefServico(i); }
};

// Codes match whole. GetFiltroClassificacao().SetPonteiroInicial names the
// root of the subtree a classification search returns. SetFlagSituacao(1)
// asks for tasks in use only: a task has no inactive flag, so every task is
// in use and the criterion narrows nothing.
#define CRITERIOS_PX_FILTRO_TAREFA(CRITERIO) \
    CRITERIO(CString, Codigo)                \
    CRITERIO(uint8_t, FlagSituacao)          \
    CRITERIO(CQZDadosPX_FiltroClassificacao, FiltroClassificacao)

class CQZDadosPX_FiltroTarefa : public TQZBaseFiltro {
    QZ_FILTRO(CQZDadosPX_FiltroTarefa, CQZDadosPX_Tarefa, CRITERIOS_PX_FILTRO_TAREFA)
public:
    CQZDadosPX_FiltroClassificacao& GetFiltroClassificacao() {
        return PXFiltroClassificacao(m_critFiltroClassificacao);
    }
    void MontaCondicoes(CQZCondicoes& c, bool classificacao) const override {
        c.Codigo("Codigo", m_critCodigo, false);
        if (m_critFiltroClassificacao) m_critFiltroClassificacao->MontaCondicoes(c, "PonteiroPai", classificacao);
    }
};
