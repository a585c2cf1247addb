// Orders through the pxlreg command line, as a new user would save them.
#include <gtest/gtest.h>
#include <unistd.h>

#include <nlohmann/json.hpp>

#include <sstream>

#include "host/PXComandos.h"

namespace {

using Json = nlohmann::ordered_json;

class PXComandosManutencaoTest : public ::testing::Test {
protected:
    void SetUp() override {
        m_arquivo = ::testing::TempDir() + "pxlreg_ordens_" + std::to_string(getpid()) + "_" +
                    ::testing::UnitTest::GetInstance()->current_test_info()->name() + ".db";
        Remove();
        auto r = Roda({"init", "--demo", m_arquivo});
        ASSERT_EQ(r.codigo, 0) << r.erros;
    }
    void TearDown() override { Remove(); }
    void Remove() {
        for (const char* s : {"", "-wal", "-shm"}) std::remove((m_arquivo + s).c_str());
    }

    struct Resultado {
        int codigo;
        std::string saida, erros;
        Json json() const { return Json::parse(saida); }
    };
    static Resultado Roda(std::vector<std::string> args, const std::string& entrada = {}) {
        args.insert(args.begin(), "pxlreg");
        std::istringstream in(entrada);
        std::ostringstream out, err;
        const int codigo = PXLinhaComando(args, in, out, err);
        return {codigo, out.str(), err.str()};
    }

    std::vector<Json> Ordens() {
        auto r = Roda({"export", m_arquivo, "--type", "Manutencao"});
        std::vector<Json> ordens;
        std::istringstream linhas(r.saida);
        for (std::string l; std::getline(linhas, l);) ordens.push_back(Json::parse(l));
        return ordens;
    }
    Json Ordem(const std::string& chave) {
        for (const Json& j : Ordens())
            if (j["Dmc"] == chave) return j;
        return {};
    }

    // A corrective order on the press, as a screen would fill it in.
    static Json Nova(const std::string& emissao) {
        return Json{{"PonteiroRecurso", 4},       {"TipoManutencao", 2},     {"PonteiroDisciplina", 2},
                    {"Descricao", " Troca do pressostato "}, {"PonteiroRequisitante", 1}, {"PonteiroPrioridade", 2},
                    {"PonteiroTecnico", 2},       {"PonteiroSituacao", 1},   {"DataHoraEmissao", emissao}};
    }

    std::string m_arquivo;
};

}  // namespace

TEST_F(PXComandosManutencaoTest, AnOrderWithoutAResourceIsRefusedOnTheResource) {
    Json semRecurso = Nova("2026-05-04T08:00:00-03:00");
    semRecurso.erase("PonteiroRecurso");
    const size_t antes = Ordens().size();
    auto r = Roda({"--json", "save", m_arquivo, "Manutencao", "-"}, semRecurso.dump());
    EXPECT_EQ(r.codigo, 1) << r.saida << r.erros;
    Json j = r.json();
    EXPECT_EQ(j["allowed"], false);
    EXPECT_EQ(j["module"], 28);
    EXPECT_EQ(j["message"], 50);
    EXPECT_EQ(j["field"], 86);
    EXPECT_EQ(j["text"], "O recurso deve ser informado.");
    EXPECT_EQ(Ordens().size(), antes);
}

TEST_F(PXComandosManutencaoTest, TheDemosOpenOrderSavedAgainUnchangedIsAllowed) {
    const Json aberta = Ordem("2026-03/2");
    ASSERT_EQ(aberta["Situacao"], 2) << aberta.dump();
    ASSERT_FALSE(aberta["Material"].empty());
    auto r = Roda({"--json", "save", m_arquivo, "Manutencao", "-"}, aberta.dump());
    ASSERT_EQ(r.codigo, 0) << r.saida << r.erros;
    Json gravada = r.json()["record"];
    EXPECT_EQ(gravada["Dmc"], "2026-03/2") << "an update, not a new order";
    EXPECT_NE(gravada["DmaHmsGravacao"], aberta["DmaHmsGravacao"]);
    gravada.erase("DmaHmsGravacao");
    Json esperada = aberta;
    esperada.erase("DmaHmsGravacao");
    EXPECT_EQ(gravada, esperada) << "nothing of it changed";
    EXPECT_EQ(Ordem("2026-03/2")["DmaHmsGravacao"], r.json()["record"]["DmaHmsGravacao"]);
}

TEST_F(PXComandosManutencaoTest, ANewOrderIsNumberedInTheMonthOfItsIssue) {
    struct Caso {
        const char* emissao;
        const char* chave;
    } casos[] = {
        {"2026-05-04T08:00:00-03:00", "2026-05/1"},
        {"2026-05-31T23:30:00-03:00", "2026-05/2"},
        {"2026-03-20T10:00:00-03:00", "2026-03/3"},  // after the demo's two March orders
    };
    for (const auto& c : casos) {
        auto r = Roda({"--json", "save", m_arquivo, "Manutencao", "-"}, Nova(c.emissao).dump());
        ASSERT_EQ(r.codigo, 0) << r.saida << r.erros;
        const Json gravada = r.json()["record"];
        EXPECT_EQ(gravada["Dmc"], c.chave);
        EXPECT_EQ(gravada["Descricao"], "Troca do pressostato");
        EXPECT_EQ(gravada["PonteiroFilial"], 1) << "the resource's branch";
        EXPECT_EQ(gravada["Situacao"], 2);
        EXPECT_EQ(Ordem(c.chave), gravada);
    }
    // A dry run numbers nothing.
    auto r = Roda({"--json", "save", "--dry-run", m_arquivo, "Manutencao", "-"},
                  Nova("2026-05-05T08:00:00-03:00").dump());
    ASSERT_EQ(r.codigo, 0) << r.saida << r.erros;
    EXPECT_EQ(r.json()["record"]["Dmc"], "");
    EXPECT_TRUE(Ordem("2026-05/3").is_null());
}
