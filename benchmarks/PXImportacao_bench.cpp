// Import measured against its yardstick in one run: the command line's
// import of n priorities in JSON Lines ("importa/json"), and SQLite itself
// inserting the same rows into the same table through one prepared INSERT in
// one transaction ("importa/sqlite3"). Both write a fresh store file with the
// same settings (WAL, synchronous FULL); n is PXLREG_BENCH_IMPORTA (1M).
#include <benchmark/benchmark.h>
#include <sqlite3.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <string>

#include "host/PXComandos.h"
#include "store/QZArmazemSQL.h"

namespace {

int64_t Quantos() {
    const char* n = std::getenv("PXLREG_BENCH_IMPORTA");
    return n ? std::atoll(n) : 1000000;
}

// Row i, as import reads it and as the yardstick binds it.
std::string Codigo(int64_t i) { return "P" + std::to_string(10000000 + i).substr(1); }
std::string Descricao(int64_t i) { return "Prioridade " + std::to_string(i); }
constexpr const char* kCarimbo = "2026-01-02T03:04:05+00:00";

std::string CaminhoTemporario(const char* nome) {
    return "/tmp/pxlreg_bench_" + std::to_string(getpid()) + "_" + nome;
}

void Remove(const std::string& caminho) {
    for (const char* s : {"", "-wal", "-shm"}) std::remove((caminho + s).c_str());
}

// A fresh store: the tables as the store makes them, nothing in them.
void NovoArmazem(const std::string& caminho) {
    Remove(caminho);
    CQZArmazemSQL armazem(caminho, QZ_ABRE_OU_CRIA);
    if (!armazem.EstaAberto()) throw std::runtime_error("store did not open");
}

// The input file, written once per run.
const std::string& Entrada(int64_t n) {
    static const std::string caminho = [n] {
        const std::string c = CaminhoTemporario("importa.jsonl");
        std::ofstream f(c, std::ios::binary);
        for (int64_t i = 1; i <= n; ++i)
            f << R"({"type":"CQZDadosPX_Prioridade","Posicao":)" << i << R"(,"Codigo":")" << Codigo(i)
              << R"(","Descricao":")" << Descricao(i) << R"(","PrioridadeBase":)" << i % 101
              << R"(,"DmaHmsAtualizacao":")" << kCarimbo << "\"}\n";
        if (!f.flush()) throw std::runtime_error("input not written");
        return c;
    }();
    return caminho;
}

void ImportaJson(benchmark::State& state) {
    const int64_t n = Quantos();
    const std::string& entrada = Entrada(n);
    const std::string caminho = CaminhoTemporario("importa_json.db");
    for (auto _ : state) {
        state.PauseTiming();
        NovoArmazem(caminho);
        state.ResumeTiming();
        CQZArmazemSQL armazem(caminho, QZ_ABRE_EXISTENTE);
        std::ifstream f(entrada, std::ios::binary);
        try {
            if (PXImportaJsonLinhas(armazem, f) != static_cast<size_t>(n)) state.SkipWithError("records missing");
        } catch (const CPXErroEntrada& e) {
            state.SkipWithError(e.texto.c_str());
        }
    }
    Remove(caminho);
    state.SetItemsProcessed(state.iterations() * n);
}

void ImportaSqlite(benchmark::State& state) {
    const int64_t n = Quantos();
    const std::string caminho = CaminhoTemporario("importa_sqlite.db");
    // The stamp as the store keeps it.
    int64_t carimbo = 0;
    {
        NovoArmazem(caminho);
        CQZArmazemSQL armazem(caminho, QZ_ABRE_EXISTENTE);
        const std::string linha = std::string(R"({"type":"CQZDadosPX_Prioridade","Posicao":1,"DmaHmsAtualizacao":")") +
                                  kCarimbo + "\"}\n";
        if (PXImportaJsonLinhas(armazem, linha) != 1) throw std::runtime_error("stamp not stored");
    }
    {
        sqlite3* db = nullptr;
        sqlite3_stmt* st = nullptr;
        sqlite3_open(caminho.c_str(), &db);
        sqlite3_prepare_v2(db, "SELECT DmaHmsAtualizacao FROM CQZDadosPX_Prioridade", -1, &st, nullptr);
        if (sqlite3_step(st) == SQLITE_ROW) carimbo = sqlite3_column_int64(st, 0);
        sqlite3_finalize(st);
        sqlite3_close(db);
    }
    for (auto _ : state) {
        state.PauseTiming();
        NovoArmazem(caminho);
        state.ResumeTiming();
        sqlite3* db = nullptr;
        sqlite3_stmt* insere = nullptr;
        bool ok = sqlite3_open_v2(caminho.c_str(), &db, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr) ==
                      SQLITE_OK &&
                  sqlite3_exec(db, "PRAGMA synchronous = FULL; BEGIN IMMEDIATE", nullptr, nullptr, nullptr) == SQLITE_OK &&
                  sqlite3_prepare_v2(db,
                                     "INSERT INTO CQZDadosPX_Prioridade (chave, Codigo, Descricao, PrioridadeBase, "
                                     "DmaHmsAtualizacao) VALUES (?, ?, ?, ?, ?)",
                                     -1, &insere, nullptr) == SQLITE_OK;
        for (int64_t i = 1; ok && i <= n; ++i) {
            const std::string codigo = Codigo(i), descricao = Descricao(i);
            sqlite3_bind_int64(insere, 1, i);
            sqlite3_bind_text(insere, 2, codigo.data(), static_cast<int>(codigo.size()), SQLITE_STATIC);
            sqlite3_bind_text(insere, 3, descricao.data(), static_cast<int>(descricao.size()), SQLITE_STATIC);
            sqlite3_bind_int64(insere, 4, i % 101);
            sqlite3_bind_int64(insere, 5, carimbo);
            ok = sqlite3_step(insere) == SQLITE_DONE && sqlite3_reset(insere) == SQLITE_OK;
        }
        sqlite3_finalize(insere);
        ok = ok && sqlite3_exec(db, "COMMIT", nullptr, nullptr, nullptr) == SQLITE_OK;
        if (!ok) state.SkipWithError(sqlite3_errmsg(db));
        sqlite3_close(db);
    }
    Remove(caminho);
    state.SetItemsProcessed(state.iterations() * n);
}

}  // namespace

BENCHMARK(ImportaSqlite)->Name("importa/sqlite3")->Iterations(1)->UseRealTime()->MeasureProcessCPUTime()->Unit(benchmark::kMillisecond);
BENCHMARK(ImportaJson)->Name("importa/json")->Iterations(1)->UseRealTime()->MeasureProcessCPUTime()->Unit(benchmark::kMillisecond);
