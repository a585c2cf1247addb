// What the benchmarks share: a plant (a store of n records, in memory or in
// a file, registered for a company of its own and kept for every run of a
// size), and the measure of what a validation costs beyond its reads: the
// statements a validation runs are recorded once and replayed directly with
// the sqlite3 C API (the same statements, prepared once and reused, in a
// transaction of their own), in turns with the validation itself.
#pragma once

#include <benchmark/benchmark.h>
#include <sqlite3.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "store/QZFabricaArmazemSQL.h"
#include "store/QZPostgres.h"

namespace pxbench {

inline CString Codigo(char prefixo, int64_t i) {
    return CString::Formatado("%c%07lld", prefixo, static_cast<long long>(i));
}

// A store of records, built once per (kind, store, size) and kept.
class Planta {
public:
    using Carga = std::function<long(CQZArmazemSQL& armazem, int64_t n)>;

    // `armazem`: 0 in memory, 1 a file, 2 the PostgreSQL server of
    // PXLREG_BENCH_PG (its database emptied first).
    Planta(int64_t armazem, int64_t n, const Carga& carga, const IQZRelogio* relogio = nullptr)
        : m_empresa("BENCH" + std::to_string(s_proxima++)) {
        m_caminho = armazem == 1 ? "/tmp/pxlreg_bench_" + std::to_string(getpid()) + "_" + m_empresa.str() + ".db"
                    : armazem == 2 ? EsquemaPostgres(m_empresa.str())
                                   : ":memory:";
        Remove();
        m_fabrica = std::make_shared<CQZFabricaArmazemSQL>(m_caminho, QZ_ABRE_OU_CRIA);
        CQZDadosGT_Erro erro;
        m_armazem = m_fabrica->AbreArmazem(erro);
        if (!m_armazem) throw std::runtime_error("store did not open");
        if (m_armazem->EmTransacao("Carga", [&] { return carga(*m_armazem, n); }) != 0)
            throw std::runtime_error("load failed: " + QZParaUtf8(m_armazem->GetErro().GetMensagem()));
        CQZServicosEmpresa s;
        s.pFabrica = m_fabrica;
        s.pRelogio = relogio;
        CQZRegistroServicos::Registra(m_empresa, s);
    }
    ~Planta() {
        CQZRegistroServicos::Remove(m_empresa);
        m_armazem.reset();
        m_fabrica.reset();
        Remove();
    }
    CQZArmazemSQL& Armazem() { return *m_armazem; }
    // What the factory's connections open.
    const std::string& Caminho() const { return m_fabrica->CaminhoConexoes(); }
    // What a plain SQLite connection opens to reach the same database.
    const std::string& CaminhoSQLite() const { return m_fabrica->CaminhoConexoes(); }
    template <class H>
    void Inicializa(H& handler) {
        if (handler.Inicializa(m_empresa, 1, 1) < 0) throw std::runtime_error("handler did not initialise");
    }

    // The plant of a kind (a name), store and size, loaded on first use.
    static Planta& De(const std::string& tipo, int64_t arquivo, int64_t n, const Carga& carga,
                      const IQZRelogio* relogio = nullptr) {
        using Plantas = std::map<std::tuple<std::string, int64_t, int64_t>, std::unique_ptr<Planta>>;
        static Plantas* plantas = new Plantas;
        auto& p = (*plantas)[{tipo, arquivo, n}];
        if (!p) {
            p = std::make_unique<Planta>(arquivo, n, carga, relogio);
            // Released at exit before the service registry the plants are in.
            [[maybe_unused]] static const bool liberacao = (std::atexit([] { plantas->clear(); }), true);
        }
        return *p;
    }

    // A schema of its own on the benchmark server, created empty; its URL.
    static std::string EsquemaPostgres(const std::string& nome) {
        const char* url = std::getenv("PXLREG_BENCH_PG");
        if (!url) throw std::runtime_error("PXLREG_BENCH_PG names no server");
        const std::string esquema = "bench_" + std::to_string(getpid()) + "_" + nome;
        qzsql::CQZBanco admin("bench");
        admin.Abre(qzsql::AbrePostgres("bench", url), 5000);
        admin.Executa(("DROP SCHEMA IF EXISTS " + esquema + " CASCADE; CREATE SCHEMA " + esquema).c_str());
        return std::string(url) + (std::string(url).find('?') == std::string::npos ? "?" : "&") +
               "options=-csearch_path%3D" + esquema;
    }

private:
    void Remove() {
        if (m_caminho == ":memory:" || qzsql::EhUrlPostgres(m_caminho)) return;
        for (const char* sufixo : {"", "-wal", "-shm"}) std::remove((m_caminho + sufixo).c_str());
    }
    static inline int s_proxima = 0;
    CString m_empresa;
    std::string m_caminho;
    std::shared_ptr<CQZFabricaArmazemSQL> m_fabrica;
    std::unique_ptr<CQZArmazemSQL> m_armazem;
};

// The data reads of one validation: every statement the connection ran,
// but the bookkeeping of its transaction (the snapshot and data_version).
class Gravador : public qzsql::IObservadorComandos {
public:
    struct Comando {
        std::string sql;
        std::vector<Valor> valores;
    };
    void AoExecutar(std::string_view sql, const std::vector<Valor>& valores) override {
        if (sql.rfind("PRAGMA", 0) == 0) return;
        comandos.push_back({std::string(sql), valores});
    }
    std::vector<Comando> comandos;
};

// The recorded reads, run directly: statements prepared once and reused,
// every column of every row read, in one read transaction per run.
class Replay {
public:
    Replay(const std::string& caminho, const std::vector<Gravador::Comando>& comandos) {
        if (sqlite3_open_v2(caminho.c_str(), &m_db, SQLITE_OPEN_READWRITE | SQLITE_OPEN_URI | SQLITE_OPEN_NOMUTEX,
                            nullptr) != SQLITE_OK)
            throw std::runtime_error("raw connection did not open");
        m_inicio = Prepara("BEGIN");
        m_fim = Prepara("COMMIT");
        for (const auto& c : comandos) m_comandos.push_back({Prepara(c.sql), c.valores});
    }
    ~Replay() {
        for (auto& c : m_comandos) sqlite3_finalize(c.st);
        sqlite3_finalize(m_inicio);
        sqlite3_finalize(m_fim);
        sqlite3_close(m_db);
    }
    // Runs the reads once; the number of rows read.
    int64_t Roda() {
        Passo(m_inicio);
        int64_t linhas = 0;
        for (auto& c : m_comandos) {
            for (const auto& v : c.valores) {
                if (v.texto)
                    sqlite3_bind_text(c.st, v.indice, v.utf8.data(), static_cast<int>(v.utf8.size()), SQLITE_STATIC);
                else
                    sqlite3_bind_int64(c.st, v.indice, v.inteiro);
            }
            while (sqlite3_step(c.st) == SQLITE_ROW) {
                ++linhas;
                const int n = sqlite3_column_count(c.st);
                for (int i = 0; i < n; ++i) {
                    if (sqlite3_column_type(c.st, i) == SQLITE_TEXT)
                        benchmark::DoNotOptimize(sqlite3_column_text(c.st, i));
                    else
                        benchmark::DoNotOptimize(sqlite3_column_int64(c.st, i));
                }
            }
            sqlite3_reset(c.st);
        }
        Passo(m_fim);
        return linhas;
    }

private:
    struct Preparado {
        sqlite3_stmt* st;
        std::vector<qzsql::IObservadorComandos::Valor> valores;
    };
    sqlite3_stmt* Prepara(const std::string& sql) {
        sqlite3_stmt* st = nullptr;
        if (sqlite3_prepare_v3(m_db, sql.c_str(), -1, SQLITE_PREPARE_PERSISTENT, &st, nullptr) != SQLITE_OK)
            throw std::runtime_error("raw prepare failed: " + sql);
        return st;
    }
    static void Passo(sqlite3_stmt* st) {
        sqlite3_step(st);
        sqlite3_reset(st);
    }
    sqlite3* m_db = nullptr;
    sqlite3_stmt* m_inicio = nullptr;
    sqlite3_stmt* m_fim = nullptr;
    std::vector<Preparado> m_comandos;
};

// What a workload measures: the handler's save check, its reads replayed,
// or both in turns with the ratio of the two.
enum class Medida { VALIDA, LEITURAS, PAR };

// The validation and its replayed reads in turns, in rounds of about 200 us
// a side, each round starting with the side the last one ended with: a
// slower stretch of a shared machine then weighs on both alike. Each
// iteration is one round. The counters give each side's time per run and
// the median of the rounds' ratios.
template <class V, class L>
void MedePar(benchmark::State& state, V&& valida, L&& le) {
    using Relogio = std::chrono::steady_clock;
    const auto mede = [](auto& f, int64_t vezes) {
        const auto inicio = Relogio::now();
        for (int64_t i = 0; i < vezes; ++i) f();
        return std::chrono::duration<double, std::micro>(Relogio::now() - inicio).count();
    };
    mede(le, 20);
    const double estimativa = mede(valida, 20) / 20;
    const int64_t lote = std::max<int64_t>(1, static_cast<int64_t>(200.0 / std::max(estimativa, 0.01)));
    std::vector<double> razoes;
    double totalValida = 0, totalLeituras = 0;
    bool validaPrimeiro = true;
    for (auto _ : state) {
        double v, l;
        if (validaPrimeiro) {
            v = mede(valida, lote);
            l = mede(le, lote);
        } else {
            l = mede(le, lote);
            v = mede(valida, lote);
        }
        validaPrimeiro = !validaPrimeiro;
        totalValida += v;
        totalLeituras += l;
        razoes.push_back(v / l);
    }
    if (razoes.empty()) return;
    std::nth_element(razoes.begin(), razoes.begin() + static_cast<std::ptrdiff_t>(razoes.size() / 2), razoes.end());
    const double execucoes = static_cast<double>(state.iterations() * lote);
    state.counters["valida_us"] = totalValida / execucoes;
    state.counters["leituras_us"] = totalLeituras / execucoes;
    state.counters["razao"] = razoes[razoes.size() / 2];
    state.counters["lote"] = static_cast<double>(lote);
}

// One validation workload. The verdict is checked once first: a wrong answer
// is an error, not a number.
template <class H, class R>
void Valida(benchmark::State& state, Planta& planta, const R& registro, long esperado, Medida medida) {
    H handler;
    planta.Inicializa(handler);
    R copia = registro;
    Gravador gravador;
    auto* conexao = dynamic_cast<CQZArmazemSQL*>(handler.GetConexao());
    // A first check warms the connection (tables checked, statements
    // prepared); the second is the one recorded.
    (void)handler.TrataGravacao(&copia, nullptr);
    copia = registro;
    conexao->DefineObservadorComandos(&gravador);
    const int ok = handler.TrataGravacao(&copia, nullptr);
    conexao->DefineObservadorComandos(nullptr);
    if ((esperado == 1) != (ok == 1) || (!ok && handler.GetMensagemNumero() != esperado)) {
        state.SkipWithError(("wrong verdict: message " + std::to_string(handler.GetMensagemNumero()) + " " +
                             QZParaUtf8(handler.GetMensagem()))
                                .c_str());
        return;
    }
    state.counters["leituras"] = static_cast<double>(gravador.comandos.size());
    // A check that completed the record gets the record as it was each time;
    // otherwise the record is checked again as it stands.
    const bool refaz = !(copia == registro);
    state.counters["copia"] = refaz;
    const auto valida = [&] {
        if (refaz) copia = registro;
        benchmark::DoNotOptimize(handler.TrataGravacao(&copia, nullptr));
    };
    if (medida == Medida::VALIDA) {
        for (auto _ : state) valida();
        state.SetItemsProcessed(state.iterations());
        return;
    }
    Replay replay(planta.CaminhoSQLite(), gravador.comandos);
    const auto le = [&] { benchmark::DoNotOptimize(replay.Roda()); };
    if (medida == Medida::PAR) {
        MedePar(state, valida, le);
        return;
    }
    for (auto _ : state) le();
    state.SetItemsProcessed(state.iterations());
}

}  // namespace pxbench

namespace pxbench {

// Registers a workload for each store and size: in memory and on file, the
// validation and its replayed reads in turns ("<nome>/par/arquivo:A/n:N");
// on the server of PXLREG_BENCH_PG (arquivo:2), the validation alone, since
// the replay is SQLite's. PXLREG_BENCH_SEPARADOS=1 also registers each side
// alone ("valida", "leituras"), for profilers that follow one function.
using Carga = void (*)(benchmark::State&, Medida medida);
inline bool Registra(const char* nome, Carga fn, std::vector<int64_t> tamanhos) {
    std::vector<int64_t> armazens{0, 1};
    if (std::getenv("PXLREG_BENCH_PG")) armazens.push_back(2);
    const bool separados = std::getenv("PXLREG_BENCH_SEPARADOS") != nullptr;
    for (int64_t arquivo : armazens)
        for (int64_t n : tamanhos) {
            std::vector<std::pair<const char*, Medida>> medidas;
            if (arquivo == 2) {
                medidas = {{"valida", Medida::VALIDA}};
            } else {
                medidas = {{"par", Medida::PAR}};
                if (separados) medidas.insert(medidas.end(), {{"valida", Medida::VALIDA}, {"leituras", Medida::LEITURAS}});
            }
            for (const auto& [sufixo, medida] : medidas) {
                const std::string completo = std::string(nome) + "/" + sufixo;
                benchmark::RegisterBenchmark(completo.c_str(), [fn, medida](benchmark::State& st) { fn(st, medida); })
                    ->ArgNames({"arquivo", "n"})
                    ->Args({arquivo, n})
                    ->Unit(benchmark::kMicrosecond);
            }
        }
    return true;
}

}  // namespace pxbench

// Sizes of the plants: 1k and 100k by default; PXLREG_BENCH_MILHAO=1 adds 1M.
#define PX_BANCADA(nome, fn)                                                                 \
    [[maybe_unused]] static const bool kRegistrado_##fn = pxbench::Registra(                 \
        nome, fn,                                                                            \
        std::getenv("PXLREG_BENCH_MILHAO") ? std::vector<int64_t>{1000, 100000, 1000000}     \
                                           : std::vector<int64_t>{1000, 100000})
