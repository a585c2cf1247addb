// Save validation of a maintenance order with 10 material lines and 5 tasks,
// finished (so its tasks are read), over a plant of n orders and n
// resources, on the in-memory store and on the file store; and, as the
// yardstick, the same reads issued directly to SQLite on the same database
// with the store's own statements and no cache. Each runs with every read
// on its own (transacao:0) or inside one read transaction per validation
// (transacao:1, as the save service runs it inside its write transaction).
// The validation reports its rate as a multiple of the direct reads' rate
// under the same conditions (x_direto).
#include <benchmark/benchmark.h>
#include <sqlite3.h>
#include <unistd.h>

#include <ctime>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <tuple>

#include "rules/PXTrataDadosManutencao.h"
#include "store/QZArmazemSQL.h"
#include "store/QZFabricaArmazemSQL.h"

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

// A store holding n orders, n resources and what they name, registered
// for its own company with a clock inside the plant's periods.
class Planta {
public:
    Planta(bool arquivo, int64_t n) : m_empresa("ORDENS" + std::to_string(s_proxima++)) {
        m_caminho = arquivo ? "/tmp/pxlreg_bench_" + std::to_string(getpid()) + "_" + m_empresa.str() + ".db"
                            : ":memory:";
        Remove();
        m_fabrica = std::make_shared<CQZFabricaArmazemSQL>(m_caminho, QZ_ABRE_OU_CRIA);
        CQZDadosGT_Erro erro;
        m_armazem = m_fabrica->AbreArmazem(erro);
        if (!m_armazem) throw std::runtime_error("store did not open");
        long hr = m_armazem->EmTransacao("Carga", [&]() -> long { return Carrega(n); });
        if (hr != 0) throw std::runtime_error("load failed: " + m_armazem->GetErro().GetMensagem().str());
        CQZServicosEmpresa s;
        s.pFabrica = m_fabrica;
        s.pRelogio = &m_relogio;
        CQZRegistroServicos::Registra(m_empresa, s);
    }
    ~Planta() {
        CQZRegistroServicos::Remove(m_empresa);
        m_armazem.reset();
        m_fabrica.reset();
        Remove();
    }
    CQZArmazemSQL& Armazem() { return *m_armazem; }
    const std::string& CaminhoConexoes() const { return m_fabrica->CaminhoConexoes(); }
    template <class H>
    void Inicializa(H& handler) {
        if (handler.Inicializa(m_empresa, 1, 1) < 0) throw std::runtime_error("handler did not initialise");
    }

    static Planta& De(bool arquivo, int64_t n) {
        using Plantas = std::map<std::tuple<bool, int64_t>, std::unique_ptr<Planta>>;
        static Plantas* plantas = new Plantas;
        auto& p = (*plantas)[{arquivo, n}];
        if (!p) {
            p = std::make_unique<Planta>(arquivo, n);
            [[maybe_unused]] static const bool liberacao = (std::atexit([] { plantas->clear(); }), true);
        }
        return *p;
    }

private:
    template <class R>
    long Insere(R r) {
        return m_armazem->Insere(r);
    }
    long Carrega(int64_t n) {
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
        if ((hr = Insere(mestre)) || (hr = Insere(periodo)) || (hr = Insere(filial)) || (hr = Insere(plano)) ||
            (hr = Insere(requisitante)) || (hr = Insere(tecnico)) || (hr = Insere(situacao)))
            return hr;
        for (int t = 1; t <= kTarefas; ++t) {
            CQZDadosPX_Tarefa tarefa;
            tarefa.SetCodigo(CString::Formatado("T%d", t)).SetNome("Tarefa").SetTipoClassificacao(1);
            tarefa.SetEfetuarApontTarefa(t <= 2).SetPonteiroInfPersonalizada(t <= 2 ? 1 : 0);
            if ((hr = Insere(tarefa))) return hr;
        }
        for (int p = 1; p <= kMateriais; ++p) {
            CQZDadosGT_ProdutoEx produto;
            produto.SetCodigoSPED(CString::Formatado("P%d", p)).SetNomeCompleto("Produto");
            if ((hr = Insere(produto))) return hr;
        }
        for (int64_t i = 1; i <= n; ++i) {
            CQZDadosGT_Recurso recurso;
            recurso.SetCodigo(CString::Formatado("R%07lld", static_cast<long long>(i))).SetDescricao("Injetora");
            recurso.SetTipoClassificacao(1).SetTipo(2).SetPonteiroFilial(1);
            CQZDadosGT_RecursoPlanoManutencao vinculo;
            vinculo.SetPonteiroPlanoManutencao(1);
            recurso.AdicionaPlanoManutencao(vinculo);
            if ((hr = Insere(recurso)) || (hr = Insere(Ordem(static_cast<uint32_t>(i))))) return hr;
        }
        return 0;
    }
    void Remove() {
        if (m_caminho == ":memory:") return;
        for (const char* sufixo : {"", "-wal", "-shm"}) std::remove((m_caminho + sufixo).c_str());
    }

    static inline int s_proxima = 0;
    CString m_empresa;
    std::string m_caminho;
    CQZRelogioFixo m_relogio{REG_QZDMAHMSUTC(10, 3, 2026, 9, 30, 0)};
    std::shared_ptr<CQZFabricaArmazemSQL> m_fabrica;
    std::unique_ptr<CQZArmazemSQL> m_armazem;
};

// The direct reads' rate of each plant, for the validation's ratio.
std::map<std::tuple<bool, int64_t, bool>, double>& TaxasDiretas() {
    static std::map<std::tuple<bool, int64_t, bool>, double> taxas;
    return taxas;
}

// Plain SQLite on the plant's database: each read the validation makes,
// with the statement the store prepares for it, every column taken, and
// no cache in between.
class LeitorDireto {
public:
    explicit LeitorDireto(const std::string& caminho) {
        if (sqlite3_open_v2(caminho.c_str(), &m_db, SQLITE_OPEN_READONLY | SQLITE_OPEN_URI, nullptr) != SQLITE_OK)
            throw std::runtime_error("direct open failed");
    }
    ~LeitorDireto() {
        for (auto& [sql, stmt] : m_stmts) sqlite3_finalize(stmt);
        sqlite3_close(m_db);
    }

    // The row at `chave` and, unless `soCabecalho`, its lists; the number of rows read.
    template <class R>
    int Le(int64_t chave, bool soCabecalho = false) {
        const qzsql::Tabela& t = qzsql::EsquemaDe<R>();
        int linhas = Passa(t.sqlSeleciona, {chave});
        if (!soCabecalho)
            for (const auto& f : t.filhas) linhas += LeFilhas(f, chave);
        return linhas;
    }
    void Executa(const char* sql) {
        if (sqlite3_exec(m_db, sql, nullptr, nullptr, nullptr) != SQLITE_OK)
            throw std::runtime_error(std::string(sql) + ": " + sqlite3_errmsg(m_db));
    }
    int BuscaTecnicos(uint32_t disciplina) {
        return Passa("SELECT t.chave FROM \"CQZDadosPX_Tecnico\" AS t WHERE t.\"TipoClassificacao\" = ? AND t.chave "
                     "IN (SELECT f.pai FROM \"CQZDadosPX_Tecnico__Disciplina\" AS f WHERE f.\"PonteiroDisciplina\" = ?) "
                     "ORDER BY t.chave",
                     {1, disciplina});
    }

private:
    int LeFilhas(const qzsql::Tabela& t, int64_t pai) {
        std::vector<int64_t> chaves;
        int linhas = Passa(t.sqlFilhas, {pai}, t.filhas.empty() ? nullptr : &chaves);
        for (int64_t c : chaves)
            for (const auto& f : t.filhas) linhas += LeFilhas(f, c);
        return linhas;
    }
    int Passa(const std::string& sql, std::initializer_list<int64_t> valores, std::vector<int64_t>* chaves = nullptr) {
        sqlite3_stmt*& stmt = m_stmts[sql];
        if (!stmt && sqlite3_prepare_v3(m_db, sql.c_str(), -1, SQLITE_PREPARE_PERSISTENT, &stmt, nullptr) != SQLITE_OK)
            throw std::runtime_error(std::string("prepare failed: ") + sqlite3_errmsg(m_db));
        int i = 1;
        for (int64_t v : valores) sqlite3_bind_int64(stmt, i++, v);
        int linhas = 0;
        int rc;
        while ((rc = sqlite3_step(stmt)) == SQLITE_ROW) {
            ++linhas;
            const int colunas = sqlite3_column_count(stmt);
            for (int c = 0; c < colunas; ++c) {
                if (sqlite3_column_type(stmt, c) == SQLITE_TEXT)
                    benchmark::DoNotOptimize(sqlite3_column_text(stmt, c));
                else
                    benchmark::DoNotOptimize(sqlite3_column_int64(stmt, c));
            }
            if (chaves) chaves->push_back(sqlite3_column_int64(stmt, 0));
        }
        sqlite3_reset(stmt);
        if (rc != SQLITE_DONE) throw std::runtime_error(std::string("step failed: ") + sqlite3_errmsg(m_db));
        return linhas;
    }

    sqlite3* m_db = nullptr;
    std::map<std::string, sqlite3_stmt*> m_stmts;
};

// The reads of one validation of order `ordem` (resource `ordem` too).
int LeiturasDaValidacao(LeitorDireto& l, uint32_t ordem) {
    int linhas = 0;
    linhas += l.Le<CQZDadosPX_Manutencao>(static_cast<int64_t>(REG_QZDMC(REG_QZMA(3, 2026), ordem).GetValor()), true);
    linhas += l.Le<CQZDadosPX_Mestre>(1);
    linhas += l.Le<CQZDadosGT_Recurso>(ordem);
    linhas += l.Le<CQZDadosPX_Plano>(1);
    linhas += l.Le<CQZDadosGT_Recurso>(ordem);  // the plan's link
    linhas += l.Le<CQZDadosGT_Requisitante>(1);
    linhas += l.Le<CQZDadosPX_Tecnico>(1);
    linhas += l.BuscaTecnicos(kDisciplina);
    linhas += l.Le<CQZDadosGT_PeriodoContabil>(1);  // issue date
    linhas += l.Le<CQZDadosGT_Filial>(1);
    linhas += l.Le<CQZDadosGT_PeriodoContabil>(1);  // integration
    linhas += l.Le<CQZDadosGT_PeriodoContabil>(1);  // end
    for (int t = 1; t <= kTarefas; ++t) linhas += l.Le<CQZDadosPX_Tarefa>(t);
    for (int p = 1; p <= kMateriais; ++p) linhas += l.Le<CQZDadosGT_ProdutoEx>(p);
    return linhas;
}

// Iterations per second of processor time since `inicio` (std::clock), as
// the benchmark's own rates are: a busy machine shifts both sides alike.
double Taxa(benchmark::State& state, std::clock_t inicio) {
    const double s = static_cast<double>(std::clock() - inicio) / CLOCKS_PER_SEC;
    return s > 0 ? static_cast<double>(state.iterations()) / s : 0;
}

void BM_ManutencaoLeiturasDiretas(benchmark::State& state) {
    const bool arquivo = state.range(0) != 0;
    const int64_t n = state.range(1);
    const bool transacao = state.range(2) != 0;
    Planta& planta = Planta::De(arquivo, n);
    LeitorDireto leitor(planta.CaminhoConexoes());
    const auto ordem = static_cast<uint32_t>(n / 2);
    // Every record the validation reads is there: a missing one is an error.
    const int esperadas = 1 + 1 + 2 + 1 + 2 + 1 + 2 + 1 + 4 + kTarefas + kMateriais;
    if (const int linhas = LeiturasDaValidacao(leitor, ordem); linhas != esperadas) {
        state.SkipWithError(("direct reads found " + std::to_string(linhas) + " rows").c_str());
        return;
    }
    const std::clock_t inicio = std::clock();
    for (auto _ : state) {
        if (transacao) leitor.Executa("BEGIN");
        benchmark::DoNotOptimize(LeiturasDaValidacao(leitor, ordem));
        if (transacao) leitor.Executa("COMMIT");
    }
    TaxasDiretas()[{arquivo, n, transacao}] = Taxa(state, inicio);
    state.SetItemsProcessed(state.iterations());
}

void BM_ManutencaoValidacao(benchmark::State& state) {
    const bool arquivo = state.range(0) != 0;
    const int64_t n = state.range(1);
    const bool transacao = state.range(2) != 0;
    Planta& planta = Planta::De(arquivo, n);
    CQZDadosPX_Manutencao gravada;
    if (planta.Armazem().LeRegistro(static_cast<int64_t>(REG_QZDMC(REG_QZMA(3, 2026), static_cast<uint32_t>(n / 2)).GetValor()),
                                     gravada) != 0) {
        state.SkipWithError("read failed");
        return;
    }
    if (gravada.GetQuantidadeMaterial() != kMateriais || gravada.GetQuantidadeTarefa() != kTarefas) {
        state.SkipWithError("the order lacks its lines");
        return;
    }
    CPXTrataDadosManutencao handler;
    planta.Inicializa(handler);
    CQZDadosPX_Manutencao copia = gravada;
    if (handler.TrataGravacao(&copia, nullptr) != 1 || !(copia == gravada)) {
        state.SkipWithError(("wrong verdict: " + handler.GetMensagem().str()).c_str());
        return;
    }
    auto* conexao = dynamic_cast<CQZArmazemSQL*>(handler.GetConexao());
    if (!conexao) {
        state.SkipWithError("the handler's connection is not a store");
        return;
    }
    const std::clock_t inicio = std::clock();
    for (auto _ : state) {
        copia = gravada;
        if (!transacao) {
            benchmark::DoNotOptimize(handler.TrataGravacao(&copia, nullptr));
            continue;
        }
        if (conexao->EmLeitura("Valida", [&]() -> long { return handler.TrataGravacao(&copia, nullptr) == 1 ? 0 : 1; }))
            state.SkipWithError("validation refused inside a transaction");
    }
    const double taxa = Taxa(state, inicio);
    state.SetItemsProcessed(state.iterations());
    if (auto it = TaxasDiretas().find({arquivo, n, transacao}); it != TaxasDiretas().end() && it->second > 0)
        state.counters["x_direto"] = taxa / it->second;
}

}  // namespace

// Arguments: {0 = memory, 1 = file}, number of orders and resources, {0 =
// each read on its own, 1 = one read transaction}. The direct reads run
// first: the validation compares itself with them.
#define PX_BENCH_ORDENS(fn)                                                                          \
    BENCHMARK(fn)                                                                                    \
        ->ArgNames({"arquivo", "n", "transacao"})                                                    \
        ->ArgsProduct({{0, 1}, {1000, 100000}, {0, 1}})                                              \
        ->Unit(benchmark::kMicrosecond)
PX_BENCH_ORDENS(BM_ManutencaoLeiturasDiretas);
PX_BENCH_ORDENS(BM_ManutencaoValidacao);
