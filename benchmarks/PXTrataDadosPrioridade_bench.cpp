// Save validations per second of the priority and technician handlers, on
// the in-memory store and on the file store, over a plant of n records.
// Each workload checks its verdict once first: a wrong answer is an error,
// not a number. scripts/bench.sh runs them and prints the file/memory ratios.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <tuple>

#include "rules/PXTrataDadosPrioridade.h"
#include "rules/PXTrataDadosTecnico.h"
#include "store/QZArmazemSQL.h"
#include "store/QZFabricaArmazemSQL.h"

namespace {

enum Tipo { PRIORIDADES, TECNICOS };

CString Codigo(char prefixo, int64_t i) { return CString::Formatado("%c%07lld", prefixo, static_cast<long long>(i)); }

// Technician i: a leaf under one of ten groups, in one of five branches,
// tied to user i while users last, with two disciplines.
CQZDadosPX_Tecnico Tecnico(int64_t i) {
    CQZDadosPX_Tecnico t;
    t.SetCodigo(Codigo('T', i)).SetNome("Técnico").SetPonteiroPai(static_cast<uint32_t>(i % 10 + 1));
    t.SetTipoClassificacao(1).SetPonteiroFilial(static_cast<uint16_t>(i % 5 + 1));
    t.SetPonteiroUsuario(static_cast<uint16_t>(i <= 60000 ? i : 0));
    CQZDadosPX_TecnicoDisciplina d;
    d.SetPonteiroDisciplina(static_cast<uint32_t>(i % 7 + 1));
    t.AdicionaDisciplina(d);
    d.SetPonteiroDisciplina(static_cast<uint32_t>(i % 11 + 8));
    t.AdicionaDisciplina(d);
    return t;
}

// A store holding n records of one type, registered for its own company.
// Built once per (store, type, size) and kept for every run of a workload.
class Planta {
public:
    Planta(bool arquivo, Tipo tipo, int64_t n) : m_empresa("BENCH" + std::to_string(s_proxima++)) {
        m_caminho = arquivo ? "/tmp/pxlreg_bench_" + std::to_string(getpid()) + "_" + m_empresa.str() + ".db"
                            : ":memory:";
        Remove();
        m_fabrica = std::make_shared<CQZFabricaArmazemSQL>(m_caminho, QZ_ABRE_OU_CRIA);
        CQZDadosGT_Erro erro;
        m_armazem = m_fabrica->AbreArmazem(erro);
        if (!m_armazem) throw std::runtime_error("store did not open");
        long hr = m_armazem->EmTransacao("Carga", [&]() -> long {
            for (int64_t i = 1; i <= n; ++i) {
                long r;
                if (tipo == PRIORIDADES) {
                    CQZDadosPX_Prioridade p;
                    p.SetCodigo(Codigo('P', i)).SetDescricao("Prioridade").SetPrioridadeBase(static_cast<uint8_t>(i % 101));
                    r = m_armazem->Insere(p);
                } else {
                    CQZDadosPX_Tecnico t = Tecnico(i);
                    r = m_armazem->Insere(t);
                }
                if (r) return r;
            }
            return 0;
        });
        if (hr != 0) throw std::runtime_error("load failed");
        CQZServicosEmpresa s;
        s.pFabrica = m_fabrica;
        CQZRegistroServicos::Registra(m_empresa, s);
    }
    ~Planta() {
        CQZRegistroServicos::Remove(m_empresa);
        m_armazem.reset();
        m_fabrica.reset();
        Remove();
    }
    CQZArmazemSQL& Armazem() { return *m_armazem; }
    template <class H>
    void Inicializa(H& handler) {
        if (handler.Inicializa(m_empresa, 1, 1) < 0) throw std::runtime_error("handler did not initialise");
    }

    static Planta& De(bool arquivo, Tipo tipo, int64_t n) {
        using Plantas = std::map<std::tuple<bool, Tipo, int64_t>, std::unique_ptr<Planta>>;
        static Plantas* plantas = new Plantas;
        auto& p = (*plantas)[{arquivo, tipo, n}];
        if (!p) {
            p = std::make_unique<Planta>(arquivo, tipo, n);
            // Released at exit before the service registry the plants are in.
            [[maybe_unused]] static const bool liberacao = (std::atexit([] { plantas->clear(); }), true);
        }
        return *p;
    }

private:
    void Remove() {
        if (m_caminho == ":memory:") return;
        for (const char* sufixo : {"", "-wal", "-shm"}) std::remove((m_caminho + sufixo).c_str());
    }
    static inline int s_proxima = 0;
    CString m_empresa;
    std::string m_caminho;
    std::shared_ptr<CQZFabricaArmazemSQL> m_fabrica;
    std::unique_ptr<CQZArmazemSQL> m_armazem;
};

// Runs the handler's save check on `registro` in the timed loop, after
// checking once that it gives `esperado` (1 allowed, else the message).
template <class H, class R>
void Valida(benchmark::State& state, Planta& planta, const R& registro, long esperado) {
    H handler;
    planta.Inicializa(handler);
    R copia = registro;
    int ok = handler.TrataGravacao(&copia, nullptr);
    if ((esperado == 1) != (ok == 1) || (!ok && handler.GetMensagemNumero() != esperado)) {
        state.SkipWithError(("wrong verdict: message " + std::to_string(handler.GetMensagemNumero())).c_str());
        return;
    }
    for (auto _ : state) {
        copia = registro;
        benchmark::DoNotOptimize(handler.TrataGravacao(&copia, nullptr));
    }
    state.SetItemsProcessed(state.iterations());
}

// A new priority: the duplicate-code search over n codes.
void BM_PrioridadeNova(benchmark::State& state) {
    Planta& planta = Planta::De(state.range(0) != 0, PRIORIDADES, state.range(1));
    CQZDadosPX_Prioridade nova;
    nova.SetCodigo(" NOVA ").SetDescricao("Nova").SetPrioridadeBase(10);
    Valida<CPXTrataDadosPrioridade>(state, planta, nova, 1);
}

// A new priority whose code is taken: refused with message 10.
void BM_PrioridadeRepetida(benchmark::State& state) {
    Planta& planta = Planta::De(state.range(0) != 0, PRIORIDADES, state.range(1));
    CQZDadosPX_Prioridade repetida;
    repetida.SetCodigo(Codigo('P', state.range(1) / 2)).SetDescricao("Repetida");
    Valida<CPXTrataDadosPrioridade>(state, planta, repetida, 10);
}

// A saved priority: the stored copy is read by position and its stamp compared.
void BM_PrioridadeGravada(benchmark::State& state) {
    Planta& planta = Planta::De(state.range(0) != 0, PRIORIDADES, state.range(1));
    CQZDadosPX_Prioridade gravada;
    if (planta.Armazem().LeRegistro(state.range(1) / 2, gravada) != 0) state.SkipWithError("read failed");
    Valida<CPXTrataDadosPrioridade>(state, planta, gravada, 1);
}

// A new leaf technician tied to a user: the code search over all branches,
// then the search for another active leaf of that user in the branch.
void BM_TecnicoNovo(benchmark::State& state) {
    Planta& planta = Planta::De(state.range(0) != 0, TECNICOS, state.range(1));
    CQZDadosPX_Tecnico novo = Tecnico(state.range(1) + 1);
    novo.SetCodigo("NOVO").SetPonteiroUsuario(65000);
    Valida<CPXTrataDadosTecnico>(state, planta, novo, 1);
}

// A saved leaf technician: read, stamp compared, then the same searches.
void BM_TecnicoGravado(benchmark::State& state) {
    Planta& planta = Planta::De(state.range(0) != 0, TECNICOS, state.range(1));
    CQZDadosPX_Tecnico gravado;
    if (planta.Armazem().LeRegistro(state.range(1) / 2, gravado) != 0) state.SkipWithError("read failed");
    Valida<CPXTrataDadosTecnico>(state, planta, gravado, 1);
}

}  // namespace

// Arguments: {0 = memory, 1 = file}, number of stored records.
#define PX_BENCH(fn) BENCHMARK(fn)->ArgNames({"arquivo", "n"})->ArgsProduct({{0, 1}, {1000, 100000}})->Unit(benchmark::kMicrosecond)
PX_BENCH(BM_PrioridadeNova);
PX_BENCH(BM_PrioridadeRepetida);
PX_BENCH(BM_PrioridadeGravada);
PX_BENCH(BM_TecnicoNovo);
PX_BENCH(BM_TecnicoGravado);
