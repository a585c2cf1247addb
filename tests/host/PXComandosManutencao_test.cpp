// Orders through the pxlreg command line, as a new user would save them.
#include <gtest/gtest.h>

#include <functional>

#include "tests/support/PXLinhaComandoTeste.h"

namespace {

class PXComandosManutencaoTest : public PXComandosTeste {
protected:
    void SetUp() override {
        PXComandosTeste::SetUp();
        CriaDemo();
    }
    std::vector<Json> Ordens() { return Exporta("Manutencao"); }
    Json Ordem(const std::string& chave) { return Registro("Manutencao", "Dmc", chave); }

    // A corrective order on the press, as a screen would fill it in.
    static Json Nova(const std::string& emissao) {
        return Json{{"PonteiroRecurso", 4},       {"TipoManutencao", 2},     {"PonteiroDisciplina", 2},
                    {"Descricao", " Troca do pressostato "}, {"PonteiroRequisitante", 1}, {"PonteiroPrioridade", 2},
                    {"PonteiroTecnico", 2},       {"PonteiroSituacao", 1},   {"DataHoraEmissao", emissao}};
    }
};

}  // namespace

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

// One order from its plan's suggestions to its end, as the README tells it.
TEST_F(PXComandosManutencaoTest, TheReadmeTourOfOneOrder) {
    const Json nova{{"PonteiroRecurso", 2},     {"TipoManutencao", 1},    {"PonteiroPlano", 2},
                    {"PonteiroDisciplina", 2},  {"PonteiroRequisitante", 1}, {"PonteiroPrioridade", 3},
                    {"PonteiroTecnico", 3},     {"PonteiroSituacao", 1},  {"DataHoraEmissao", "2026-05-04T08:00:00-03:00"}};
    const size_t antes = Ordens().size();

    // The plan's tasks with their warranty, the components of the tasks; nothing written.
    auto r = Roda({"--json", "suggest", m_arquivo, "-"}, nova.dump());
    ASSERT_EQ(r.codigo, 0) << r.saida << r.erros;
    const Json sugerida = r.json()["record"];
    ASSERT_EQ(sugerida["Tarefa"].size(), 2u);
    EXPECT_EQ(sugerida["Tarefa"][0]["PonteiroTarefa"], 2);
    EXPECT_EQ(sugerida["Tarefa"][1]["PonteiroTarefa"], 3);
    EXPECT_EQ(sugerida["Tarefa"][1]["GarantiaAte"], 1);
    EXPECT_EQ(sugerida["Material"].size(), 2u);
    EXPECT_EQ(sugerida["Servico"].size(), 1u);
    EXPECT_EQ(Ordens().size(), antes);
    r = Roda({"--json", "suggest", m_arquivo, "-", "--tasks"}, nova.dump());
    ASSERT_EQ(r.codigo, 0) << r.saida << r.erros;
    EXPECT_TRUE(r.json()["record"]["Material"].empty()) << "only what was asked for";

    // Saved open.
    r = Roda({"--json", "save", m_arquivo, "Manutencao", "-"}, sugerida.dump());
    ASSERT_EQ(r.codigo, 0) << r.saida << r.erros;
    Json ordem = r.json()["record"];
    ASSERT_EQ(ordem["Dmc"], "2026-05/1");
    auto salva = [&](const Json& j) {
        auto s = Roda({"--json", "save", m_arquivo, "Manutencao", "-"}, j.dump());
        if (s.codigo == 0) ordem = s.json()["record"];
        return s;
    };

    // Started: a new situation, its base derived again.
    Json iniciada = ordem;
    iniciada["PonteiroSituacao"] = 2;
    iniciada["Situacao"] = 0;
    iniciada["DataHoraInicio"] = "2026-05-04T09:00:00-03:00";
    r = salva(iniciada);
    ASSERT_EQ(r.codigo, 0) << r.saida << r.erros;
    EXPECT_EQ(ordem["Situacao"], 4);

    // Time entries: an electrician's is refused on its line; Ana's and João's pass.
    Json comApontamentos = ordem;
    comApontamentos["Apontamento"] = Json::array(
        {Json{{"DataHoraInicial", "2026-05-04T09:00:00-03:00"}, {"DataHoraFinal", "2026-05-04T12:00:00-03:00"}, {"PonteiroTecnico", 3}},
         Json{{"DataHoraInicial", "2026-05-04T13:00:00-03:00"}, {"DataHoraFinal", "2026-05-04T15:30:00-03:00"}, {"PonteiroTecnico", 5}}});
    r = salva(comApontamentos);
    EXPECT_EQ(r.codigo, 1) << r.saida << r.erros;
    EXPECT_EQ(r.json()["list"], "Apontamento");
    EXPECT_EQ(r.json()["line"], 1);
    EXPECT_EQ(r.json()["message"], 71);
    comApontamentos["Apontamento"][1]["PonteiroTecnico"] = 2;
    r = salva(comApontamentos);
    ASSERT_EQ(r.codigo, 0) << r.saida << r.erros;
    EXPECT_EQ(ordem["Apontamento"].size(), 2u);

    // Finished, with the oil change's readings.
    Json encerrada = ordem;
    encerrada["PonteiroSituacao"] = 4;
    encerrada["Situacao"] = 0;
    encerrada["DataHoraFim"] = "2026-05-04T16:00:00-03:00";
    encerrada["Tarefa"][0]["ApontamentoTarefa"] = Json::array({Json{
        {"Campos", Json::array({Json{{"TextoDescricao", U8(u8"Pressão de trabalho (bar)")}, {"CampoObrigatorio", 1}, {"Valor", "140"}},
                                Json{{"TextoDescricao", U8(u8"Vazamentos visíveis (sim/não)")}, {"CampoObrigatorio", 1}, {"Valor", U8(u8"não")}},
                                Json{{"TextoDescricao", U8(u8"Observações")}}})}}});
    r = salva(encerrada);
    ASSERT_EQ(r.codigo, 0) << r.saida << r.erros;
    EXPECT_EQ(ordem["Situacao"], 8);

    // A finished order is not cancelled, and stays as it was.
    r = Roda({"--json", "delete", m_arquivo, "Manutencao", "2026-05/1", "--situation", "5"});
    EXPECT_EQ(r.codigo, 1) << r.saida << r.erros;
    EXPECT_EQ(r.json()["message"], 148);
    EXPECT_EQ(r.json()["field"], 84);
    EXPECT_EQ(Ordem("2026-05/1"), ordem);

    // The demo's open order nobody worked on is: kept, in the cancelled situation.
    const Json aberta = Ordem("2026-03/2");
    r = Roda({"--json", "delete", m_arquivo, "Manutencao", "2026-03/2", "--situation", "5"});
    ASSERT_EQ(r.codigo, 0) << r.saida << r.erros;
    const Json cancelada = Ordem("2026-03/2");
    EXPECT_EQ(cancelada["Situacao"], 16);
    EXPECT_EQ(cancelada["PonteiroSituacao"], 5);
    EXPECT_EQ(cancelada, r.json()["record"]) << "the host writes the order it got back";
    Json resto = cancelada, antesResto = aberta;
    for (Json* j : {&resto, &antesResto})
        for (const char* campo : {"Situacao", "PonteiroSituacao", "DmaHmsGravacao"}) j->erase(campo);
    EXPECT_EQ(resto, antesResto) << "nothing else of it changed";
    EXPECT_EQ(Ordens().size(), antes + 1);
}

TEST_F(PXComandosManutencaoTest, AsANewUserWould) {
    struct Caso {
        const char* nome;
        std::vector<std::string> args;
        std::string entrada;
        int codigo;
        Json esperado;  // fields of the JSON answer
    };
    const Caso casos[] = {
        {"an unused priority is deleted", {"delete", m_arquivo, "Prioridade", "1"}, "", 0, Json{{"allowed", true}}},
        {"a used discipline is kept, with the integrity text",
         {"delete", m_arquivo, "Disciplina", "2"}, "", 1,
         Json{{"allowed", false}, {"text", U8(u8"Técnico T001 João Pereira é dependente da disciplina MEC-HID Hidráulica")}}},
        {"an expense entry whose rules let it go", {"delete", m_arquivo, "LancamentoGastos", "2026-04/1"}, "", 0,
         Json{{"allowed", true}, {"written", true}}},
        {"an expense entry never saved", {"save", m_arquivo, "LancamentoGastos", "-"},
         R"({"Data": "2026-05-02", "PonteiroRecurso": 4, "Item": [{"ProdutoServico": {"Produto": 103}, "Quantidade": "1", "Valor": "0"}]})",
         1, Json{{"message", 167}, {"list", "Item"}, {"line", 0}}},
    };
    for (const Caso& c : casos) {
        std::vector<std::string> args = c.args;
        args.insert(args.begin(), "--json");
        auto r = Roda(args, c.entrada);
        ASSERT_EQ(r.codigo, c.codigo) << c.nome << ": " << r.saida << r.erros;
        const Json j = r.json();
        for (const auto& [campo, valor] : c.esperado.items()) EXPECT_EQ(j[campo], valor) << c.nome << ": " << campo;
    }
    for (const Json& p : Exporta("Prioridade")) EXPECT_NE(p["Posicao"], 1) << "gone from export";
    EXPECT_EQ(Exporta("Disciplina").size(), 7u);
    EXPECT_EQ(Exporta("LancamentoGastos").size(), 1u);

    // A missing movement is named as users write its key.
    auto r = Roda({"delete", m_arquivo, "LancamentoGastos", "2026-09/9"});
    EXPECT_EQ(r.codigo, 2);
    EXPECT_NE(r.erros.find("na chave 2026-09/9"), std::string::npos) << r.erros;
}

// The demo's March expense entry has items 102 and 101. Saved again, each
// item is checked as a change of the stored item at its index: with the two
// swapped, item 0 becomes 101 while the stored item 1 still is 101. As a new
// entry, the same items are additions one after the other, and pass.
TEST_F(PXComandosManutencaoTest, ALineTheStoredRecordHasIsCheckedAsAChangeOfIt) {
    const Json entrada = Registro("LancamentoGastos", "Dmc", "2026-03/1");
    ASSERT_EQ(entrada["Item"].size(), 2u);
    auto r = Roda({"--json", "save", "--dry-run", m_arquivo, "LancamentoGastos", "-"}, entrada.dump());
    EXPECT_EQ(r.codigo, 0) << r.saida << r.erros;

    Json trocada = entrada;
    std::swap(trocada["Item"][0], trocada["Item"][1]);
    r = Roda({"--json", "save", m_arquivo, "LancamentoGastos", "-"}, trocada.dump());
    EXPECT_EQ(r.codigo, 1) << r.saida << r.erros;
    EXPECT_EQ(r.json()["message"], 168);
    EXPECT_EQ(r.json()["list"], "Item");
    EXPECT_EQ(r.json()["line"], 0);

    trocada["Dmc"] = "";
    trocada.erase("DmaHmsGravacao");
    r = Roda({"--json", "save", "--dry-run", m_arquivo, "LancamentoGastos", "-"}, trocada.dump());
    EXPECT_EQ(r.codigo, 0) << r.saida << r.erros;
}

// One refused line of each kind of list a save replays: the verdict names
// the list and the line, and the record is not written.
TEST_F(PXComandosManutencaoTest, EachKindOfListLineIsCheckedBeforeTheSave) {
    struct Caso {
        const char* tipo;
        Json registro;
        std::function<void(Json&)> altera;
        const char* lista;
        int linha, mensagem;
    } casos[] = {
        {"Plano", Registro("Plano", "Posicao", 2), [](Json& j) { j["Alerta"][0]["Tecnicos"] = Json::array(); }, "Alerta", 0, 117},
        {"Plano", Registro("Plano", "Posicao", 2), [](Json& j) { j["Material"].push_back(j["Material"][0]); }, "Material", 1, 47},
        {"Plano", Registro("Plano", "Posicao", 2), [](Json& j) { j["Tarefa"].push_back(j["Tarefa"][0]); }, "Tarefa", 2, 163},
        {"Tarefa", Registro("Tarefa", "Posicao", 2), [](Json& j) { j["Material"].push_back(j["Material"][0]); }, "Material", 1, 47},
        {"Tecnico", Registro("Tecnico", "Codigo", "T001"), [](Json& j) { j["Disciplina"].push_back(Json{{"PonteiroDisciplina", 2}}); },
         "Disciplina", 2, 87},
        {"Manutencao", Registro("Manutencao", "Dmc", "2026-03/2"), [](Json& j) { j["Tarefa"][1]["PonteiroSituacao"] = 0; },
         "Tarefa", 1, 181},
        {"Manutencao", Registro("Manutencao", "Dmc", "2026-03/2"), [](Json& j) { j["Material"].push_back(j["Material"][0]); },
         "Material", 2, 97},
    };
    for (const Caso& c : casos) {
        ASSERT_FALSE(c.registro.is_null()) << c.tipo;
        Json j = c.registro;
        c.altera(j);
        auto r = Roda({"--json", "save", m_arquivo, c.tipo, "-"}, j.dump());
        ASSERT_EQ(r.codigo, 1) << c.tipo << " " << c.lista << ": " << r.saida << r.erros;
        const Json v = r.json();
        EXPECT_EQ(v["list"], c.lista) << c.tipo;
        EXPECT_EQ(v["line"], c.linha) << c.tipo << " " << c.lista;
        EXPECT_EQ(v["item"], c.linha) << c.tipo << " " << c.lista;
        EXPECT_EQ(v["message"], c.mensagem) << c.tipo << " " << c.lista;
        EXPECT_EQ(v["written"], false);
        // Unchanged, the same record passes.
        r = Roda({"--json", "save", "--dry-run", m_arquivo, c.tipo, "-"}, c.registro.dump());
        EXPECT_EQ(r.codigo, 0) << c.tipo << ": " << r.saida << r.erros;
    }
}
