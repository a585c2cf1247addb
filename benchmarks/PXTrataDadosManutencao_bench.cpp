// Save validations of the movements, beside the same reads replayed directly
// (PXBancada.h): a maintenance order with 10 material lines and 5 tasks,
// finished (so its tasks are read), over a plant of n orders and n
// resources; an expense entry with 3 items over a plant of n entries.
#include "benchmarks/PXBancada.h"
#include "rules/PXTrataDadosLancamentoGastos.h"
#include "rules/PXTrataDadosManutencao.h"

namespace {

constexpr int kMateriais = 10;
constexpr int kTarefas = 5;
constexpr uint32_t kDisciplina = 1;

REG_QZDMAHMSUTC Em(int dia, int hora) { return REG_QZDMAHMSUTC(dia, 3, 2026, hora, 0, 0); }

CQZDadosPX_Manutencao Ordem(uint32_t i) {
    CQZDadosPX_Manutencao m;
    m.SetDmc(REG_QZDMC(REG_QZMA(3, 2026), i)).SetPonteiroFilial(1).SetPonteiroRecurso(i).SetTipoManutencao(1);
    m.SetPonteiroPlano(1).SetPonteiroDisciplina(kDisciplina).SetDescricao("Revisão trimestral");
    m.SetPonteiroRequisitante(1).SetPonteiroPrioridade(1).SetPonteiroTecnico(1);
    m.SetPonteiroSituacao(1).SetSituacao(8);
    m.SetDataHoraEmissao(Em(2, 8)).SetDataHoraInicio(Em(3, 8)).SetDataHoraFim(Em(3, 17));
    for (uint32_t p = 1; p <= kMateriais; ++p) {
        CQZDadosPX_ManutencaoComponente c;
        _REG_POSICAO_PRODUTOPS item;
        item.lPonteiroProduto = p;
        c.SetProdutoServico(item).SetTipoProdutoServico('P').SetQtdRequisitada(CQZMoeda::DeInteiro(p)).SetTipoRI(2);
        m.AdicionaMaterial(c);
    }
    for (uint32_t t = 1; t <= kTarefas; ++t) {
        CQZDadosPX_ManutencaoTarefa linha;
        linha.SetPonteiroTarefa(t).SetTarefa("Tarefa");
        // Tasks 1 and 2 are reported with custom data, already filled in.
        if (t <= 2) {
            CQZDadosBDD_Campo campo;
            campo.SetTextoDescricao("Pressão (bar)").SetCampoObrigatorio(1).SetValor("140");
            linha.IncluiApontamentoTarefa().SetTipoAtividade(BDD_ATV_PX_APONTAMENTO_TAREFA).AdicionaCampos(campo);
        }
        m.AdicionaTarefa(linha);
    }
    CQZDadosPX_ManutencaoApontamento a;
    a.SetDataHoraInicial(Em(3, 8)).SetDataHoraFinal(Em(3, 17)).SetPonteiroTecnico(1);
    m.AdicionaApontamento(a);
    return m;
}

template <class R>
long InsereEm(CQZArmazemSQL& a, R r) {
    return a.Insere(r);
}

long CargaOrdens(CQZArmazemSQL& a, int64_t n) {
    long hr = 0;
    CQZDadosPX_Mestre mestre;
    CQZDadosGT_PeriodoContabil periodo;
    periodo.SetMesBloqueio(REG_QZMA(12, 2025)).SetDataInferiorIntegracao(REG_QZDMA(1, 1, 2026));
    periodo.SetDataSuperiorIntegracao(REG_QZDMA(31, 12, 2026)).SetDataInferiorMovimentacao(REG_QZDMA(1, 1, 2026));
    periodo.SetDataSuperiorMovimentacao(REG_QZDMA(31, 12, 2026));
    CQZDadosGT_Filial filial;
    filial.SetPosicao(1);
    filial.SetMesBloqueioIntegracao(REG_QZMA(12, 2025));
    CQZDadosPX_Plano plano;
    plano.SetCodigo("PREV").SetNome("Revisão trimestral").SetTipoClassificacao(1).SetTipo(1);
    plano.SetPonteiroDisciplina(kDisciplina);
    CQZDadosGT_Requisitante requisitante;
    requisitante.SetNome("Produção").SetFilial(1);
    CQZDadosPX_Tecnico tecnico;
    tecnico.SetCodigo("T1").SetNome("Técnico").SetTipoClassificacao(1).SetPonteiroFilial(1);
    CQZDadosPX_TecnicoDisciplina d;
    d.SetPonteiroDisciplina(kDisciplina);
    tecnico.AdicionaDisciplina(d);
    CQZDadosPX_Situacao situacao;
    situacao.SetCodigo("ENC").SetTipo(1).SetSituacaoBase(8);
    if ((hr = InsereEm(a, mestre)) || (hr = InsereEm(a, periodo)) || (hr = InsereEm(a, filial)) || (hr = InsereEm(a, plano)) ||
        (hr = InsereEm(a, requisitante)) || (hr = InsereEm(a, tecnico)) || (hr = InsereEm(a, situacao)))
        return hr;
    for (int t = 1; t <= kTarefas; ++t) {
        CQZDadosPX_Tarefa tarefa;
        tarefa.SetCodigo(CString::Formatado("T%d", t)).SetNome("Tarefa").SetTipoClassificacao(1);
        tarefa.SetEfetuarApontTarefa(t <= 2).SetPonteiroInfPersonalizada(t <= 2 ? 1 : 0);
        if ((hr = InsereEm(a, tarefa))) return hr;
    }
    for (int p = 1; p <= kMateriais; ++p) {
        CQZDadosGT_ProdutoEx produto;
        produto.SetCodigoSPED(CString::Formatado("P%d", p)).SetNomeCompleto("Produto");
        if ((hr = InsereEm(a, produto))) return hr;
    }
    for (int64_t i = 1; i <= n; ++i) {
        CQZDadosGT_Recurso recurso;
        recurso.SetCodigo(CString::Formatado("R%07lld", static_cast<long long>(i))).SetDescricao("Injetora");
        recurso.SetTipoClassificacao(1).SetTipo(2).SetPonteiroFilial(1);
        CQZDadosGT_RecursoPlanoManutencao vinculo;
        vinculo.SetPonteiroPlanoManutencao(1);
        recurso.AdicionaPlanoManutencao(vinculo);
        if ((hr = InsereEm(a, recurso)) || (hr = InsereEm(a, Ordem(static_cast<uint32_t>(i))))) return hr;
    }
    return 0;
}

// Inside the plant's periods.
const CQZRelogioFixo kRelogio{REG_QZDMAHMSUTC(10, 3, 2026, 9, 30, 0)};

// The movement in the middle of the plant's March file, saved again
// unchanged: allowed.
template <class H, class R>
void ValidaGravado(benchmark::State& state, pxbench::Planta& planta, pxbench::Medida medida) {
    R registro;
    const auto chave = static_cast<int64_t>(REG_QZDMC(REG_QZMA(3, 2026), static_cast<uint32_t>(state.range(1) / 2)).GetValor());
    if (planta.Armazem().LeRegistro(chave, registro) != 0) {
        state.SkipWithError("read failed");
        return;
    }
    pxbench::Valida<H>(state, planta, registro, 1, medida);
}

// A finished order: its tasks, components and time entries are checked.
void OrdemGravada(benchmark::State& state, pxbench::Medida medida) {
    pxbench::Planta& planta = pxbench::Planta::De("ordens", state.range(0), state.range(1), CargaOrdens, &kRelogio);
    ValidaGravado<CPXTrataDadosManutencao, CQZDadosPX_Manutencao>(state, planta, medida);
}

CQZDadosPX_LancamentoGastos Lancamento(uint32_t i) {
    CQZDadosPX_LancamentoGastos l;
    l.SetDmc(REG_QZDMC(REG_QZMA(3, 2026), i)).SetPonteiroTipoGasto(i % 20 + 1).SetData(REG_QZDMA(i % 28 + 1, 3, 2026));
    l.SetPonteiroRecurso(i % 500 + 1);
    for (uint32_t p = 1; p <= 3; ++p) {
        _REG_POSICAO_PRODUTOPS item;
        item.lPonteiroProduto = p;
        l.AdicionaItem(CQZDadosPX_LancamentoGastosItem()
                           .SetProdutoServico(item)
                           .SetQuantidade(CQZMoeda::DeInteiro(p))
                           .SetValor(CQZMoeda::DeInteiro(10 * p)));
    }
    return l;
}

long CargaLancamentos(CQZArmazemSQL& a, int64_t n) {
    for (int64_t i = 1; i <= n; ++i)
        if (long hr = InsereEm(a, Lancamento(static_cast<uint32_t>(i)))) return hr;
    return 0;
}

// A saved expense entry: read by its key and its stamp compared.
void LancamentoGravado(benchmark::State& state, pxbench::Medida medida) {
    pxbench::Planta& planta = pxbench::Planta::De("lancamentos", state.range(0), state.range(1), CargaLancamentos);
    ValidaGravado<CPXTrataDadosLancamentoGastos, CQZDadosPX_LancamentoGastos>(state, planta, medida);
}

}  // namespace

PX_BANCADA("OrdemGravada", OrdemGravada);
PX_BANCADA("LancamentoGravado", LancamentoGravado);
