// Saves per second of 8 clients at once, each on its own connection saving
// its own record (one write transaction per save), on the SQLite file
// (armazem:1) and on the PostgreSQL server of PXLREG_BENCH_PG (armazem:2).
#include <benchmark/benchmark.h>

#include <mutex>

#include "benchmarks/PXBancada.h"

namespace {

constexpr int kClientes = 8;

long CargaClientes(CQZArmazemSQL& a, int64_t n) {
    for (int64_t i = 1; i <= n; ++i) {
        CQZDadosPX_Prioridade p;
        p.SetCodigo(pxbench::Codigo('C', i)).SetDescricao("Cliente").SetPrioridadeBase(10);
        if (long r = a.Insere(p)) return r;
    }
    return 0;
}

void GravacaoConcorrente(benchmark::State& state) {
    static std::mutex mutex;
    std::string caminho;
    {
        // The plant is built once, by whichever client comes first.
        std::lock_guard<std::mutex> trava(mutex);
        caminho = pxbench::Planta::De("clientes", state.range(0), kClientes, CargaClientes).Caminho();
    }
    CQZArmazemSQL armazem(caminho, QZ_ABRE_EXISTENTE, 60000);
    CQZDadosPX_Prioridade p;
    if (!armazem.EstaAberto() || armazem.LeRegistro(state.thread_index() + 1, p) != 0) {
        state.SkipWithError("client did not open its record");
        return;
    }
    int64_t i = 0;
    for (auto _ : state) {
        p.SetDescricao(CString::Formatado("gravação %lld", static_cast<long long>(++i)));
        if (armazem.Atualiza(p) != 0) {
            state.SkipWithError(QZParaUtf8(armazem.GetErro().GetMensagem()).c_str());
            break;
        }
    }
    state.SetItemsProcessed(state.iterations());
}

[[maybe_unused]] const bool kRegistrado = [] {
    std::vector<int64_t> armazens{1};
    if (std::getenv("PXLREG_BENCH_PG")) armazens.push_back(2);
    for (int64_t a : armazens)
        benchmark::RegisterBenchmark("GravacaoConcorrente", GravacaoConcorrente)
            ->ArgName("armazem")
            ->Arg(a)
            ->Threads(kClientes)
            ->UseRealTime()
            ->Unit(benchmark::kMicrosecond);
    return true;
}();

}  // namespace
