// The demo plant placed around the day it is created: the README's commands
// work the same whatever the year, and its dates land where its story puts
// them.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <set>
#include <sstream>

#include "host/PXComandosAdicionais.h"
#include "host/PXLeituraJson.h"
#include "platform/QZDatas.h"
#include "tests/support/PXLinhaComandoTeste.h"
#include "tests/support/PXPastaTeste.h"

namespace {

using Json = nlohmann::ordered_json;

std::string Mes(const REG_QZDMA& d, int meses) {
    const REG_QZDMA m = d.SomaMeses(meses);
    char texto[16];
    std::snprintf(texto, sizeof texto, "%04d-%02d", m.GetAno(), m.GetMes());
    return texto;
}

std::string Dia(const REG_QZDMA& d) {
    char texto[16];
    std::snprintf(texto, sizeof texto, "%04d-%02d-%02d", d.GetAno(), d.GetMes(), d.GetDia());
    return texto;
}

class PXDemoTest : public PXComandosTeste, public ::testing::WithParamInterface<const char*> {
protected:
    // A file store: the demo's alert template and outbox sit beside it.
    void SetUp() override {
        PXComandosTeste::SetUp();
        Limpa();
        // The program's clock, for every command of the test.
        ASSERT_EQ(0, setenv("PXLREG_AGORA", GetParam(), 1));
    }
    void TearDown() override {
        unsetenv("PXLREG_AGORA");
        Limpa();
        PXComandosTeste::TearDown();
    }
    void Limpa() {
        for (const char* pasta : {".saida", ".modelos"}) PXApagaPasta(m_arquivo + pasta);
    }
};

}  // namespace

// A January (the story's months reach into the year before) and a day at a
// month's end, years apart: the clock is set to each (PXLREG_AGORA).
INSTANTIATE_TEST_SUITE_P(DoisAnos, PXDemoTest, ::testing::Values("2029-01-15", "2041-08-31"));

TEST_P(PXDemoTest, TheReadmesCommandsWorkOnTheDayTheDemoIsCreated) {
    REG_QZDMA hoje;
    ASSERT_TRUE(pxjson::LeData(GetParam(), hoje));
    auto r = Roda({"init", "--demo", m_arquivo});
    ASSERT_EQ(r.codigo, 0) << r.erros;

    // A plan-driven order issued today is in the accounting period and is
    // the first of this month.
    const Json nova{{"PonteiroRecurso", 2},    {"TipoManutencao", 1},       {"PonteiroPlano", 2},
                    {"PonteiroDisciplina", 2}, {"PonteiroRequisitante", 1}, {"PonteiroPrioridade", 3},
                    {"PonteiroTecnico", 3},    {"PonteiroSituacao", 1},
                    {"DataHoraEmissao", Dia(hoje) + "T08:00:00-03:00"}};
    r = Roda({"--json", "suggest", m_arquivo, "-"}, nova.dump());
    ASSERT_EQ(r.codigo, 0) << r.saida << r.erros;
    const Json sugerida = r.json()["record"];
    ASSERT_EQ(sugerida["Tarefa"].size(), 2u);
    EXPECT_EQ(sugerida["Tarefa"][1]["DataGarantiaAte"], Dia(hoje.SomaMeses(6))) << "six months from the issue";
    EXPECT_EQ(sugerida["Tarefa"][1]["DmcUltimaManutencao"], Mes(hoje, -3) + "/1") << "the demo's finished order";
    r = Roda({"--json", "save", m_arquivo, "Manutencao", "-"}, sugerida.dump());
    ASSERT_EQ(r.codigo, 0) << r.saida << r.erros;
    EXPECT_EQ(r.json()["record"]["Dmc"], Mes(hoje, 0) + "/1");

    // The demo's open order, two months back, is cancelled.
    r = Roda({"--json", "delete", m_arquivo, "Manutencao", Mes(hoje, -2) + "/2", "--situation", "5"});
    ASSERT_EQ(r.codigo, 0) << r.saida << r.erros;
    EXPECT_EQ(r.json()["record"]["Situacao"], 16);

    // Its alerts are due today: before and after by days and by counter,
    // and the inherited ones.
    r = Roda({"--json", "alerts", "preview", m_arquivo, "--at", std::string(GetParam()) + " 10:00"});
    ASSERT_EQ(r.codigo, 0) << r.saida << r.erros;
    std::set<std::string> alertas;
    const Json previa = r.json();
    for (const auto& a : previa["alerts"]) {
        alertas.insert(a["plan"].get<std::string>() + "/" + a["alert_plan"].get<std::string>() + "#" +
                       std::to_string(a["alert"].get<int>()));
        EXPECT_FALSE(a["due"].empty()) << a.dump();
    }
    const std::set<std::string> esperados{"PREV-INJ/PREV-INJ#1", "PREV-CMP/PREV-CMP#1", "PREV-PRE/PREV-PRE#1",
                                          "PREV-PRE/PREV-PRE#2", "PREV-PRE-LUB/PREV-PRE#1", "PREV-PRE-LUB/PREV-PRE#2"};
    EXPECT_EQ(alertas, esperados);
}

TEST(PXDemoDatas, MarksArePlacedAroundTheDayAndNoneIsLeft) {
    const std::string texto = PXTextoDemoEm(REG_QZDMA(15, 1, 2029));
    EXPECT_EQ(texto.find("${"), std::string::npos);
    // As the demo holds them once placed.
    const char* const casos[] = {
        R"("MesBloqueio": "2028-08")",                           // five months back
        R"("DataInferiorMovimentacao": "2028-09-01")",            // four months back, crossing the year
        R"("DataSuperiorMovimentacao": "2029-12-31")",            // the year's end
        R"("DataSuperiorIntegracao": "2039-12-31")",              // ten years on
        R"("Dmc": "2028-10/1")",                                  // the finished order, three months back
        R"("DataProximaManutencao": "2029-01-18")",               // due in three days
        R"("DataProximaManutencao": "2029-01-10")",               // five days overdue
    };
    for (const char* c : casos) EXPECT_NE(texto.find(c), std::string::npos) << c;
}
