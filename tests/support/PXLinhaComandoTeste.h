// The command line run inside the test's own process: its exit status and
// what it wrote on standard output and standard error.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>
#include <sstream>
#include <string>
#include <vector>

#include "host/PXComandos.h"

struct PXResultadoComando {
    int codigo;
    std::string saida, erros;
    nlohmann::ordered_json json() const { return nlohmann::ordered_json::parse(saida); }
};

// `args` without the program's name; `entrada` is standard input.
inline PXResultadoComando PXRodaComando(std::vector<std::string> args, const std::string& entrada = {}) {
    args.insert(args.begin(), "pxlreg");
    std::istringstream in(entrada);
    std::ostringstream out, err;
    const int codigo = PXLinhaComando(args, in, out, err);
    return {codigo, out.str(), err.str()};
}

// Literals are compiled as Windows-1252; the command speaks UTF-8, so the
// texts expected of it are written as UTF-8 literals.
inline std::string U8(const char8_t* s) { return reinterpret_cast<const char*>(s); }

// Fixture of the command-line tests: a store file of the test's own,
// removed with the files SQLite keeps beside it before and after the test.
class PXComandosTeste : public ::testing::Test {
protected:
    using Json = nlohmann::ordered_json;
    using Resultado = PXResultadoComando;

    void SetUp() override {
        const auto* teste = ::testing::UnitTest::GetInstance()->current_test_info();
        std::string nome = std::string(teste->test_suite_name()) + "_" + std::to_string(getpid()) + "_" + teste->name();
        std::replace(nome.begin(), nome.end(), '/', '_');  // parameterized tests' names
        m_arquivo = ::testing::TempDir() + "pxlreg_" + nome + ".db";
        Remove(m_arquivo);
    }
    void TearDown() override {
        Remove(m_arquivo);
        for (const auto& extra : m_extras) Remove(extra);
    }
    static void Remove(const std::string& caminho) {
        for (const char* s : {"", "-wal", "-shm", "-journal"}) std::remove((caminho + s).c_str());
    }
    // A path beside the store, removed before and after the test.
    std::string Extra(const std::string& sufixo) {
        m_extras.push_back(m_arquivo + sufixo);
        Remove(m_extras.back());
        return m_extras.back();
    }

    static Resultado Roda(std::vector<std::string> args, const std::string& entrada = {}) {
        return PXRodaComando(std::move(args), entrada);
    }

    void CriaDemo() {
        // The demo placed around the day the README tells of, so its orders
        // keep the keys and dates these tests name.
        auto r = Roda({"init", "--demo", "--at", "2026-05-04", m_arquivo});
        ASSERT_EQ(r.codigo, 0) << r.erros;
    }

    // The records of `tipo` (of every type when empty), as export writes them.
    std::vector<Json> Exporta(const std::string& tipo = {}) {
        std::vector<std::string> args{"export", m_arquivo};
        if (!tipo.empty()) args.insert(args.end(), {"--type", tipo});
        const auto r = Roda(args);
        EXPECT_EQ(r.codigo, 0) << r.erros;
        std::vector<Json> registros;
        std::istringstream linhas(r.saida);
        for (std::string l; std::getline(linhas, l);) registros.push_back(Json::parse(l));
        return registros;
    }
    // The first exported record of `tipo` whose `campo` is `valor`; null when none.
    Json Registro(const std::string& tipo, const char* campo, const Json& valor) {
        for (Json& j : Exporta(tipo))
            if (j[campo] == valor) return j;
        return {};
    }

    std::string m_arquivo;
    std::vector<std::string> m_extras;
};
