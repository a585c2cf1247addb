// Pointers that name no record, refused by save and import at the command
// line: the field, the value and the list entry are named, 0 means "not
// informed", an import may refer forwards, and a refused import leaves the
// store as it was.
#include <gtest/gtest.h>

#include "tests/support/PXPostgresTeste.h"
#include "tests/support/PXLinhaComandoTeste.h"

namespace {

class PXReferenciasTest : public PXComandosTeste {
protected:
    void SetUp() override {
        PXComandosTeste::SetUp();
        if (!m_esquema.Url().empty()) m_arquivo = m_esquema.Url();
        auto r = Roda({"init", "--demo", m_arquivo});
        ASSERT_EQ(r.codigo, 0) << r.erros;
    }

    PXEsquemaPostgres m_esquema;
};

// A new leaf technician of the demo's mechanics team, with `mudanca` merged in.
std::string Tecnico(const nlohmann::ordered_json& mudanca) {
    using Json = nlohmann::ordered_json;
    Json t = {{"Codigo", "T090"},           {"Nome", "Tecnico novo"},   {"PonteiroPai", 1},
              {"TipoClassificacao", 1},     {"PonteiroFilial", 1},      {"PonteiroUsuario", 0},
              {"Disciplina", Json::array({{{"PonteiroDisciplina", 2}}, {{"PonteiroDisciplina", 7}}})}};
    t.update(mudanca);
    return t.dump();
}

}  // namespace

TEST_F(PXReferenciasTest, SaveRefusesAPointerNamingNoRecordAndWritesNothing) {
    struct Caso {
        const char* nome;
        Json mudanca;
        const char* campo;  // empty: the save goes on to the rules and is written
        const char8_t* texto;
    };
    const Caso casos[] = {
        {"pai", {{"PonteiroPai", 99999}}, "PonteiroPai", u8"CQZDadosPX_Tecnico na posição 99999"},
        {"filial", {{"PonteiroFilial", 77}}, "PonteiroFilial", u8"CQZDadosGT_Filial na posição 77"},
        {"usuário", {{"PonteiroUsuario", 4000}}, "PonteiroUsuario", u8"CQZDadosGT_Usuario na posição 4000"},
        {"item de lista",
         {{"Disciplina", Json::array({{{"PonteiroDisciplina", 2}}, {{"PonteiroDisciplina", 99}}})}},
         "Disciplina[2].PonteiroDisciplina", u8"CQZDadosPX_Disciplina na posição 99"},
        // A technician of another branch's user, both of which exist.
        {"existentes", {{"PonteiroFilial", 2}, {"PonteiroUsuario", 1}}, "", u8""},
        {"zeros não informam", {{"Codigo", "T091"}, {"PonteiroPai", 0}, {"PonteiroFilial", 0}}, "", u8""},
    };
    for (const auto& c : casos) {
        SCOPED_TRACE(c.nome);
        const auto antes = Exporta();
        auto r = Roda({"--json", "save", m_arquivo, "Tecnico", "-"}, Tecnico(c.mudanca));
        if (*c.campo == 0) {
            EXPECT_EQ(r.codigo, 0) << r.saida;
            continue;
        }
        ASSERT_EQ(r.codigo, 2) << r.saida << r.erros;
        EXPECT_EQ(r.json()["error"]["field"], c.campo);
        EXPECT_NE(r.json()["error"]["text"].get<std::string>().find(U8(c.texto)), std::string::npos) << r.saida;
        EXPECT_EQ(Exporta(), antes);
    }
    // A list entry of 0 is not informed either: the rules, not the
    // reference check, answer it (exit 1).
    auto r0 = Roda({"--json", "save", m_arquivo, "Tecnico", "-"},
                   Tecnico({{"Disciplina", Json::array({{{"PonteiroDisciplina", 0}}})}}));
    EXPECT_EQ(r0.codigo, 1) << r0.saida;
    EXPECT_EQ(r0.json()["message"], 86);
    // In words too, the field and the value.
    auto r = Roda({"save", m_arquivo, "Tecnico", "-"}, Tecnico({{"PonteiroFilial", 77}}));
    EXPECT_EQ(r.codigo, 2);
    EXPECT_NE(r.erros.find(U8(u8"campo PonteiroFilial: não há CQZDadosGT_Filial na posição 77")), std::string::npos)
        << r.erros;
}

TEST_F(PXReferenciasTest, AChangedRecordIsCheckedLikeANewOne) {
    // The demo's open order, its technician swapped for one that does not exist.
    Json j = Registro("Manutencao", "Situacao", 2);
    ASSERT_FALSE(j.is_null());
    j.erase("type");
    j["PonteiroTecnico"] = 4242;
    auto r = Roda({"--json", "save", m_arquivo, "Manutencao", "-"}, j.dump());
    ASSERT_EQ(r.codigo, 2) << r.saida;
    EXPECT_EQ(r.json()["error"]["field"], "PonteiroTecnico");
}

TEST_F(PXReferenciasTest, ImportChecksOnceAllIsInAndRollsBackOnADanglingPointer) {
    // Lines refer forwards and backwards: a discipline group after the leaf
    // that names it, a technician before its discipline and its branch.
    const std::string adiante =
        R"({"type": "CQZDadosPX_Tecnico", "Posicao": 40, "Codigo": "T040", "Nome": "Novo", "TipoClassificacao": 1, "PonteiroFilial": 3, "Disciplina": [{"PonteiroDisciplina": 41}]})"
        "\n"
        R"({"type": "CQZDadosPX_Disciplina", "Posicao": 41, "Codigo": "SOL", "Nome": "Solda", "PonteiroPai": 42, "TipoClassificacao": 1})"
        "\n"
        R"({"type": "CQZDadosPX_Disciplina", "Posicao": 42, "Codigo": "CAL", "Nome": "Caldeiraria", "TipoClassificacao": 2})"
        "\n"
        R"({"type": "CQZDadosGT_Filial", "Posicao": 3, "Codigo": 3, "Identificacao": "FILIAL-NORTE"})"
        "\n";
    auto r = Roda({"--json", "import", m_arquivo, "-"}, adiante);
    ASSERT_EQ(r.codigo, 0) << r.saida << r.erros;
    EXPECT_EQ(r.json()["records"], 4);

    struct Caso {
        const char* nome;
        std::string linhas;
        const char* campo;
        const char8_t* texto;
    };
    const Caso casos[] = {
        {"campo do registro",
         R"({"type": "CQZDadosPX_Prioridade", "Posicao": 30, "Codigo": "X"})" "\n"
         R"({"type": "CQZDadosPX_Tecnico", "Posicao": 50, "Codigo": "T050", "Nome": "N", "TipoClassificacao": 1, "PonteiroUsuario": 4000})",
         "PonteiroUsuario", u8"CQZDadosPX_Tecnico de Posicao 50: não há CQZDadosGT_Usuario na posição 4000"},
        {"item de lista",
         R"({"type": "CQZDadosPX_Tecnico", "Posicao": 51, "Codigo": "T051", "Nome": "N", "TipoClassificacao": 1, "Disciplina": [{"PonteiroDisciplina": 2}, {"PonteiroDisciplina": 77}]})",
         "Disciplina[2].PonteiroDisciplina", u8"CQZDadosPX_Disciplina na posição 77"},
        {"lista dentro de lista",
         R"({"type": "CQZDadosPX_Plano", "Posicao": 60, "Codigo": "P60", "Nome": "N", "TipoClassificacao": 1, "Alerta": [{"Descricao": "a"}, {"Descricao": "b", "Tecnicos": [{"Ponteiro": 2}, {"Ponteiro": 3}, {"Ponteiro": 999}]}]})",
         "Alerta[2].Tecnicos[3].Ponteiro", u8"CQZDadosPX_Tecnico na posição 999"},
        {"movimento",
         R"({"type": "CQZDadosPX_LancamentoGastos", "Dmc": "2031-01/9", "PonteiroTipoGasto": 2, "Data": "2031-01-10", "PonteiroRecurso": 88})",
         "PonteiroRecurso", u8"CQZDadosPX_LancamentoGastos de Dmc 2031-01/9: não há CQZDadosGT_Recurso na posição 88"},
    };
    for (const auto& c : casos) {
        SCOPED_TRACE(c.nome);
        const auto antes = Exporta();
        r = Roda({"--json", "import", m_arquivo, "-"}, c.linhas + "\n");
        ASSERT_EQ(r.codigo, 2) << r.saida << r.erros;
        EXPECT_EQ(r.json()["error"]["field"], c.campo);
        EXPECT_NE(r.json()["error"]["text"].get<std::string>().find(U8(c.texto)), std::string::npos) << r.saida;
        EXPECT_EQ(Exporta(), antes);
    }
}

TEST_F(PXReferenciasTest, AReadErrorOfANamedFileNamesTheFile) {
    // Reading a process's memory from offset 0 fails with an I/O error.
    auto r = Roda({"import", m_arquivo, "/proc/self/mem"});
    EXPECT_EQ(r.codigo, 2);
    EXPECT_NE(r.erros.find(U8(u8"não foi possível ler o arquivo /proc/self/mem.")), std::string::npos) << r.erros;
}
