// The pxlreg command line, driven in-process: its outputs and exit statuses,
// all-or-nothing imports, exact export round trips, and two writers racing
// on one record through two connections to one file.
#include "host/PXComandos.h"

#include "store/QZFabricaArmazemSQL.h"

#include <gtest/gtest.h>

#include <atomic>
#include <fstream>
#include <map>
#include <thread>

#include "host/PXDadosEmbutidos.h"
#include "tests/support/PXPostgresTeste.h"
#include "host/PXTiposHost.h"
#include "store/QZArmazemSQL.h"
#include "tests/support/PXLinhaComandoTeste.h"

namespace {

class PXComandosTest : public PXComandosTeste {
protected:
    void SetUp() override {
        PXComandosTeste::SetUp();
        // On the test server the store is a schema of the test's own.
        if (!m_esquema.Url().empty()) m_arquivo = m_esquema.Url();
    }
    // The stored priority at `posicao`, as export writes it.
    Json Prioridade(int posicao) { return Registro("CQZDadosPX_Prioridade", "Posicao", posicao); }

    PXEsquemaPostgres m_esquema;
};

}  // namespace

TEST_F(PXComandosTest, AnAllowedSaveIsWrittenTrimmedAndPrinted) {
    CriaDemo();
    auto r = Roda({"--json", "save", m_arquivo, "Prioridade", "-"},
                  U8(u8R"({"Codigo": "  LUB ", "Descricao": " Lubrificação ", "PrioridadeBase": 30})"));
    ASSERT_EQ(r.codigo, 0) << r.saida << r.erros;
    Json j = r.json();
    EXPECT_EQ(j["allowed"], true);
    EXPECT_EQ(j["written"], true);
    EXPECT_EQ(j["record"]["Codigo"], "LUB");
    EXPECT_EQ(j["record"]["Descricao"], U8(u8"Lubrificação"));
    const int posicao = j["record"]["Posicao"];
    EXPECT_GT(posicao, 0);
    EXPECT_NE(j["record"]["DmaHmsAtualizacao"], "");
    EXPECT_EQ(Prioridade(posicao), j["record"]);

    // Saved again with the stamp it was given: an update, with a new stamp.
    Json alterada = j["record"];
    alterada["PrioridadeBase"] = 35;
    r = Roda({"save", m_arquivo, "CQZDadosPX_Prioridade", "-"}, alterada.dump());
    ASSERT_EQ(r.codigo, 0) << r.erros;
    EXPECT_EQ(r.saida.rfind("permitido: gravado\n", 0), 0u) << r.saida;
    EXPECT_EQ(Prioridade(posicao)["PrioridadeBase"], 35);
    EXPECT_NE(Prioridade(posicao)["DmaHmsAtualizacao"], j["record"]["DmaHmsAtualizacao"]);
}

TEST_F(PXComandosTest, ARefusedSavePrintsTheVerdictAndWritesNothing) {
    CriaDemo();
    const std::string antes = Roda({"export", m_arquivo}).saida;
    auto r = Roda({"save", m_arquivo, "Prioridade", "-"}, R"({"Codigo": "URG", "Descricao": "Outra"})");
    EXPECT_EQ(r.codigo, 1);
    EXPECT_EQ(r.saida, U8(u8"recusado: módulo 28, mensagem 10, campo 1, item 0: Este código já está em uso em outro registro.\n"));
    r = Roda({"save", "--json", m_arquivo, "Prioridade", "-"}, R"({"Codigo": "ALTA", "Descricao": "Alta", "PrioridadeBase": 101})");
    EXPECT_EQ(r.codigo, 1);
    EXPECT_EQ(r.json()["module"], 28);
    EXPECT_EQ(r.json()["message"], 176);
    EXPECT_EQ(r.json()["field"], 3);
    EXPECT_EQ(r.json()["item"], 0);
    EXPECT_EQ(r.json()["text"], "A prioridade base deve estar entre 0 e 100.");
    // A dry run asks the rules and writes nothing, even when they allow.
    r = Roda({"--json", "save", "--dry-run", m_arquivo, "Prioridade", "-"}, R"({"Codigo": " NOVA ", "Descricao": "Nova"})");
    EXPECT_EQ(r.codigo, 0) << r.saida;
    EXPECT_EQ(r.json()["allowed"], true);
    EXPECT_EQ(r.json()["written"], false);
    EXPECT_EQ(r.json()["record"]["Codigo"], "NOVA");
    EXPECT_EQ(Roda({"export", m_arquivo}).saida, antes);
}

TEST_F(PXComandosTest, AStoreInUseIsAClearError) {
    if (!m_esquema.Url().empty()) GTEST_SKIP() << "a locked file: the file store's case";
    CriaDemo();
    CQZArmazemSQL outro(m_arquivo);
    PXResultadoComando r;
    ASSERT_EQ(0, outro.EmTransacao("Segura", [&]() -> long {
        r = Roda({"--wait", "50", "save", m_arquivo, "Prioridade", "-"}, R"({"Codigo": "X", "Descricao": "X"})");
        return 0;
    }));
    EXPECT_EQ(r.codigo, 2);
    EXPECT_NE(r.erros.find(QZParaUtf8("em uso por outra gravação")), std::string::npos) << r.erros;
    EXPECT_EQ(Prioridade(5), Json());
}

TEST_F(PXComandosTest, ImportIsAllOrNothingAndNamesTheBadLine) {
    ASSERT_EQ(Roda({"init", m_arquivo}).codigo, 0);
    const std::string ruins =
        "{\"type\": \"CQZDadosPX_Prioridade\", \"Posicao\": 3, \"Codigo\": \"A\"}\n"
        "{\"type\": \"CQZDadosPX_Prioridade\", \"Posicao\": 4, \"Codigo\": \"B\", \"PrioridadeBase\": -1}\n";
    auto r = Roda({"import", m_arquivo, "-"}, ruins);
    EXPECT_EQ(r.codigo, 2);
    EXPECT_NE(r.erros.find("linha 2, campo PrioridadeBase"), std::string::npos) << r.erros;

    // A key taken by an earlier line of the same file: found at the write,
    // after the first record was written, and still nothing stays.
    const std::string repetida =
        "{\"type\": \"CQZDadosPX_Prioridade\", \"Posicao\": 3, \"Codigo\": \"A\"}\n"
        "{\"type\": \"CQZDadosPX_Prioridade\", \"Posicao\": 3, \"Codigo\": \"B\"}\n";
    r = Roda({"--json", "import", m_arquivo, "-"}, repetida);
    EXPECT_EQ(r.codigo, 2);
    EXPECT_EQ(r.json()["error"]["line"], 2);
    EXPECT_EQ(Roda({"export", m_arquivo}).saida, "");
    // After a failed import the store takes the next one.
    r = Roda({"--json", "import", m_arquivo, "-"}, repetida.substr(0, repetida.find('\n') + 1));
    EXPECT_EQ(r.codigo, 0) << r.saida;
    EXPECT_EQ(r.json()["records"], 1);
}

// Batches of lines are parsed side by side: whichever fault comes first in
// the file is the one reported, a bad line or a key refused at the write.
TEST_F(PXComandosTest, ALongImportReportsItsFirstFaultInFileOrder) {
    ASSERT_EQ(Roda({"init", m_arquivo}).codigo, 0);
    constexpr int kLinhas = 3000;
    // Line 2 is blank: skipped, but counted in the lines the errors name.
    auto entrada = [](std::map<int, std::string> trocas) {
        trocas.emplace(2, "  ");
        std::string texto;
        for (int i = 1; i <= kLinhas; ++i) {
            auto t = trocas.find(i);
            texto += t != trocas.end() ? t->second
                                       : R"({"type":"CQZDadosPX_Prioridade","Posicao":)" + std::to_string(i) +
                                             R"(,"Codigo":"P)" + std::to_string(i) + "\"}";
            texto += '\n';
        }
        return texto;
    };
    const std::string malformada = R"({"type":"CQZDadosPX_Prioridade","Posicao":)";
    const std::string repetida = R"({"type":"CQZDadosPX_Prioridade","Posicao":1,"Codigo":"X"})";
    // Well-formed, but a value of the wrong type: the error names its field.
    const std::string tipoErrado = R"({"type":"CQZDadosPX_Prioridade","Codigo":7})";
    const struct {
        std::map<int, std::string> trocas;
        int linha;
        const char* campo;
    } casos[] = {
        {{{700, malformada}, {2500, malformada}}, 700, "Posicao"},
        {{{1200, repetida}, {2500, malformada}}, 1200, ""},
        {{{1100, malformada}, {2000, repetida}}, 1100, "Posicao"},
        {{{kLinhas - 1, tipoErrado}}, kLinhas - 1, "Codigo"},
        {{{kLinhas, malformada}}, kLinhas, "Posicao"},
    };
    for (const auto& c : casos) {
        SCOPED_TRACE(c.linha);
        auto r = Roda({"--json", "import", m_arquivo, "-"}, entrada(c.trocas));
        EXPECT_EQ(r.codigo, 2) << r.saida;
        EXPECT_EQ(r.json()["error"]["line"], c.linha) << r.saida;
        EXPECT_EQ(r.json()["error"].value("field", ""), c.campo) << r.saida;
        EXPECT_EQ(Roda({"export", m_arquivo}).saida, "");
    }
    auto r = Roda({"--json", "import", m_arquivo, "-"}, entrada({}));
    EXPECT_EQ(r.codigo, 0) << r.erros;
    EXPECT_EQ(r.json()["records"], kLinhas - 1);
    EXPECT_EQ(Exporta().size(), static_cast<size_t>(kLinhas - 1));
}

TEST_F(PXComandosTest, ExportThenImportReproducesTheStoreExactly) {
    CriaDemo();
    ASSERT_EQ(Roda({"save", m_arquivo, "Prioridade", "-"}, R"({"Codigo": "Z", "Descricao": "Z"})").codigo, 0);
    const std::string exportado = Roda({"export", m_arquivo}).saida;
    PXEsquemaPostgres segundo;
    const std::string copia = segundo.Url().empty() ? Extra(".2") : segundo.Url();
    ASSERT_EQ(Roda({"init", copia}).codigo, 0);
    auto r = Roda({"import", copia, "-"}, exportado);
    ASSERT_EQ(r.codigo, 0) << r.erros;
    EXPECT_EQ(Roda({"export", copia}).saida, exportado);
    // Every type the host knows is in the demo plant's export.
    for (const auto& t : PXTiposHost())
        EXPECT_NE(exportado.find(std::string("\"type\":\"") + t->Nome() + "\""), std::string::npos) << t->Nome();
}

TEST_F(PXComandosTest, EveryDemoRecordPassesItsOwnRules) {
    CriaDemo();
    CQZArmazemSQL armazem(m_arquivo, QZ_ABRE_EXISTENTE);
    CQZServicosEmpresa servicos;
    servicos.pFabrica = std::make_shared<CQZFabricaArmazemSQL>(m_arquivo);
    CQZRegistroServicos::Registra("DEMO", servicos);
    int verificados = 0;
    for (const auto& t : PXTiposHost()) {
        std::vector<int64_t> chaves;
        ASSERT_EQ(0, t->Chaves(armazem, chaves));
        for (int64_t chave : chaves) {
            auto reg = t->Novo();
            ASSERT_EQ(0, t->Le(armazem, chave, *reg));
            auto tratador = t->Tratador(*reg);
            if (!tratador) continue;
            ASSERT_GE(tratador->Inicializa("DEMO", 1, 1), 0);
            EXPECT_EQ(tratador->TrataGravacao(reg.get(), nullptr), 1)
                << t->Nome() << " " << chave << ": " << QZParaUtf8(tratador->GetMensagem());
            ++verificados;
        }
    }
    CQZRegistroServicos::Remove("DEMO");
    EXPECT_GT(verificados, 0);
}

TEST_F(PXComandosTest, ARegisterIsDeletedAfterItsIntegrityCheckAndKeptWhenRefused) {
    CriaDemo();
    // Technician T001 is named by an order of the demo plant.
    auto r = Roda({"--json", "delete", m_arquivo, "Tecnico", "2"});
    EXPECT_EQ(r.codigo, 1);
    EXPECT_EQ(r.json()["module"], 28);
    EXPECT_EQ(r.json()["text"], U8(u8"A manutenção 03/2026-000001 é dependente do técnico T001 João Pereira"));
    r = Roda({"delete", m_arquivo, "Tecnico", "2"});
    EXPECT_EQ(r.saida, U8(u8"recusado: A manutenção 03/2026-000001 é dependente do técnico T001 João Pereira\n"))
        << "a text of its own is shown alone";
    EXPECT_NE(Roda({"export", m_arquivo, "--type", "Tecnico"}).saida.find("\"Posicao\":2,"), std::string::npos);
    // A task situation has no integrity check and no delete rules: it goes.
    r = Roda({"--json", "delete", m_arquivo, "Situacao", "9"});
    EXPECT_EQ(r.codigo, 0) << r.saida;
    EXPECT_EQ(r.json()["allowed"], true);
    EXPECT_EQ(Roda({"export", m_arquivo, "--type", "Situacao"}).saida.find("\"Posicao\":9,"), std::string::npos);
}

TEST_F(PXComandosTest, PermissionsPrintTheThirteenFlags) {
    CriaDemo();
    auto r = Roda({"--json", "permissions", m_arquivo, "--user", "7", "2"});
    ASSERT_EQ(r.codigo, 0) << r.saida << r.erros;
    Json flags = r.json()["flags"];
    EXPECT_EQ(flags.size(), 13u);
    EXPECT_EQ(r.json()["any"], true);
    for (const char* f : {"Incluir", "Alterar", "Consultar"}) EXPECT_EQ(flags[f], true) << f;
    for (const char* f : {"Configurar", "Excluir", "AlterarItemInfDocFical"}) EXPECT_EQ(flags[f], false) << f;
    r = Roda({"--json", "permissions", m_arquivo, "--user", "8", "13"});
    EXPECT_EQ(r.json()["any"], false);
    r = Roda({"permissions", m_arquivo, "--user", "1", "29"});  // the supervisor
    EXPECT_NE(r.saida.find("AlterarItemInfDocFical  1"), std::string::npos) << r.saida;
    EXPECT_EQ(Roda({"permissions", m_arquivo, "2"}).codigo, 2);  // --user is required
}

TEST_F(PXComandosTest, OfTwoWritersRacingOnOneRecordExactlyOneWins) {
    CriaDemo();
    const Json lida = Prioridade(3);
    ASSERT_FALSE(lida.is_null());
    for (int rodada = 0; rodada < 5; ++rodada) {
        const Json base = rodada == 0 ? lida : Prioridade(3);
        std::atomic<int> prontos{0};
        Resultado resultados[2];
        auto escritor = [&](int i) {
            Json alterada = base;
            alterada["Descricao"] = "Escritor " + std::to_string(i);
            ++prontos;
            while (prontos < 2) std::this_thread::yield();
            // Two companies: two registrations, two connections to one file.
            resultados[i] = Roda({"--json", "save", "--company", "E" + std::to_string(i), m_arquivo, "Prioridade", "-"},
                                 alterada.dump());
        };
        std::thread a(escritor, 0), b(escritor, 1);
        a.join();
        b.join();
        const int vencedores = (resultados[0].codigo == 0) + (resultados[1].codigo == 0);
        ASSERT_EQ(vencedores, 1) << resultados[0].saida << resultados[0].erros << resultados[1].saida
                                 << resultados[1].erros;
        const Resultado& perdedor = resultados[0].codigo == 0 ? resultados[1] : resultados[0];
        EXPECT_EQ(perdedor.codigo, 1);
        EXPECT_EQ(perdedor.json()["module"], 28);
        EXPECT_EQ(perdedor.json()["message"], 3);
        const int vencedor = resultados[0].codigo == 0 ? 0 : 1;
        EXPECT_EQ(Prioridade(3)["Descricao"], "Escritor " + std::to_string(vencedor));
    }
}

namespace {

// Words of the JSON library's English messages.
bool TemIngles(const std::string& texto) {
    for (const char* palavra : {"syntax", "parse error", "unexpected", "expected", "overflow", "last read", "invalid"})
        if (texto.find(palavra) != std::string::npos) return true;
    return false;
}

std::string Lista(size_t n, const std::string& elemento) {
    std::string lista = "[";
    for (size_t i = 0; i < n; ++i) lista += (i ? "," : "") + elemento;
    return lista + "]";
}

const std::string kPrioridade = R"({"type": "CQZDadosPX_Prioridade", "Codigo": "N1", "Descricao": "n"})";

}  // namespace

// Bad input, ordinary or hostile (deep, long, with NUL bytes, past the
// limits): exit 2 with the field, the line and the reason in Portuguese, one
// short line on standard error, and nothing written.
TEST_F(PXComandosTest, BadInputIsAnErrorNamingItsPlaceAndNeverAWrite) {
    CriaDemo();
    const std::string antes = Roda({"export", m_arquivo}).saida;
    const std::string ausente = Extra(".2");
    const std::string pasta = ::testing::TempDir();
    const std::string fundo = std::string(50000, '[') + std::string(50000, ']');
    const std::string chaveLonga = "2026-04/" + std::string(100000, '7');
    std::string aninhado = "Descricao";  // the field where the 33rd level opens
    for (int i = 0; i < 31; ++i) aninhado += "[0]";
    struct Caso {
        std::vector<std::string> args;
        std::string entrada;
        std::string campo;      // the field named; empty when none
        const char8_t* trecho;  // a part of the reason
        long linha = -1;        // the line named; -1: not checked
    } casos[] = {
        // The converter's and the reader's own errors are their suites' (PXJson,
        // PXLeituraJson, PXLeituraRegistros); here each kind reaches the output.
        {{"save", m_arquivo, "Peixe", "-"}, "{}", "", u8"tipo de registro desconhecido"},
        {{"save", m_arquivo, "Prioridade", "-"}, R"({"Codigo": "A", "PrioridadeBase": 256})", "PrioridadeBase", u8"entre 0 e 255"},
        {{"save", m_arquivo, "Usuario", "-"}, R"({"Login": "x"})", "", u8"não tem regras de gravação"},
        {{"save", m_arquivo, "Prioridade", "/nao/existe.json"}, "", "", u8"não foi possível ler"},
        {{"save", ausente, "Prioridade", "-"}, "{}", "", u8"não existe"},
        {{"delete", m_arquivo, "Prioridade", "99"}, "", "", u8"Não há CQZDadosPX_Prioridade na chave 99"},
        {{"delete", m_arquivo, "Prioridade", "x"}, "", "", u8"chave inválida"},
        {{"import", m_arquivo, pasta}, "", "", u8"é uma pasta"},
        {{"save", m_arquivo, "Prioridade", pasta}, "", "", u8"é uma pasta"},
        {{"import", m_arquivo, pasta + "/nao-existe.jsonl"}, "", "", u8"não foi possível ler"},
        {{"permissions", m_arquivo, "--user", "1", "0"}, "", "", u8"KIND 0 não é um tipo de permissão"},
        {{"permissions", m_arquivo, "--user", "1", "30"}, "", "", u8"KIND 30"},
        {{"permissions", m_arquivo, "--user", "1", "--", "-5"}, "", "", u8"KIND -5"},
        {{"save", m_arquivo, "Prioridade", "-"}, R"({"Posicao": 999, "Codigo": "X", "Descricao": "x"})", "Posicao",
         u8"não há CQZDadosPX_Prioridade na chave 999 para alterar"},
        {{"save", m_arquivo, "Manutencao", "-"}, R"({"Dmc": "2026-01/999"})", "Dmc",
         u8"não há CQZDadosPX_Manutencao na chave \"2026-01/999\""},
        // Nesting deep enough to overflow any recursive walk.
        {{"import", m_arquivo, "-"}, kPrioridade + "\n{\"type\": \"Prioridade\", \"Descricao\": " + fundo + "}\n",
         aninhado, u8"aninhados", 2},
        {{"import", m_arquivo, "-"}, R"({"type": "CQZDadosPX_Manutencao", "Dmc": ")" + chaveLonga + "\"}", "Dmc",
         u8"além do limite de 65536 (--max-text)", 1},
        {{"delete", m_arquivo, "Manutencao", chaveLonga}, "", "", u8"chave inválida \"2026-04/7777", 0},
        {{"delete", m_arquivo, "Prioridade", std::string(100000, '0') + "2"}, "", "", u8"chave inválida", 0},
        // A NUL byte is not the end of the input.
        {{"save", m_arquivo, "Prioridade", "-"}, std::string("{\"Codigo\": \"N1\", \"Descricao\": \"n\"}\0{}", 36), "",
         u8"byte nulo (0x00) na entrada", 1},
        {{"import", m_arquivo, "-"}, kPrioridade + "\n" + std::string("{\"type\": \"Prioridade\"\0}", 23) + "\n", "",
         u8"byte nulo", 2},
        // Limits, and their options.
        {{"save", m_arquivo, "Prioridade", "-"},
         R"({"Codigo": "N1", "Descricao": ")" + std::string(65537, 'd') + "\"}", "Descricao",
         u8"texto de 65537 bytes, além do limite de 65536 (--max-text)", 1},
        {{"save", m_arquivo, "Tecnico", "-"},
         R"({"Codigo": "T9", "Nome": "t", "Disciplina": )" + Lista(100001, R"({"PonteiroDisciplina": 2})") + "}",
         "Disciplina[100000]", u8"lista com mais de 100000 elementos (--max-list)", 1},
        {{"--max-list", "3", "save", m_arquivo, "Tecnico", "-"},
         R"({"Codigo": "T9", "Nome": "t", "Disciplina": )" + Lista(4, R"({"PonteiroDisciplina": 2})") + "}",
         "Disciplina[3]", u8"lista com mais de 3", 1},
        {{"--max-line", "1KiB", "save", m_arquivo, "Prioridade", "-"},
         R"({"Codigo": "N1", "Descricao": ")" + std::string(2000, 'd') + "\"}", "",
         u8"passa de 1024 bytes, o limite de um registro (--max-line)", 0},
        {{"--max-line", "100", "import", m_arquivo, "-"},
         kPrioridade + "\n" + R"({"type": "Prioridade", "Descricao": ")" + std::string(100, 'd') + "\"}\n", "",
         u8"além do limite de 100 (--max-line)", 2},
        {{"import", m_arquivo, "-"}, R"({"type": ")" + std::string(60000, 'P') + "\"}", "type",
         u8"tipo de registro desconhecido \"PPPP", 1},
    };
    for (const auto& c : casos) {
        // A missing file has no counterpart on a server.
        if (!m_esquema.Url().empty() && c.args.size() > 1 && c.args[1] == ausente) continue;
        const std::string trecho = U8(c.trecho);
        auto args = c.args;
        args.insert(args.begin(), "--json");
        auto r = Roda(args, c.entrada);
        EXPECT_EQ(r.codigo, 2) << trecho;
        ASSERT_TRUE(Json::accept(r.saida)) << r.saida.substr(0, 300);
        const Json erro = r.json()["error"];
        EXPECT_EQ(erro.value("field", ""), c.campo) << trecho;
        if (c.linha >= 0) {
            EXPECT_EQ(erro.value("line", 0L), c.linha) << trecho;
        }
        const std::string texto = erro.value("text", "");
        EXPECT_NE(texto.find(trecho), std::string::npos) << texto;
        EXPECT_FALSE(TemIngles(texto)) << texto;
        // The same error in human form: one short line on standard error.
        r = Roda(c.args, c.entrada);
        EXPECT_EQ(r.codigo, 2) << trecho;
        EXPECT_EQ(r.erros.rfind("pxlreg: erro: ", 0), 0u) << r.erros.substr(0, 400);
        EXPECT_EQ(r.erros.find('\n'), r.erros.size() - 1) << r.erros.substr(0, 400);
        EXPECT_LT(r.erros.size(), 1000u) << r.erros.substr(0, 400);
    }
    EXPECT_EQ(Roda({"export", m_arquivo}).saida, antes);
}

TEST_F(PXComandosTest, LimitsAreOptionsAndAcceptWhatTheyAllow) {
    CriaDemo();
    const std::string longa(70000, 'd');
    const std::string registro = R"({"Codigo": "LONGA", "Descricao": ")" + longa + "\"}";
    EXPECT_EQ(Roda({"save", m_arquivo, "Prioridade", "-"}, registro).codigo, 2);
    auto r = Roda({"--json", "--max-text", "128KiB", "save", m_arquivo, "Prioridade", "-"}, registro);
    ASSERT_EQ(r.codigo, 0) << r.saida.substr(0, 300);
    EXPECT_EQ(r.json()["record"]["Descricao"], longa);
    // An import line at its limit passes; the limit is per line, not per file.
    std::string linha = R"({"type": "CQZDadosPX_Prioridade", "Codigo": "L1", "Descricao": "x"})";
    const std::string limite = std::to_string(linha.size());
    std::string arquivo = linha + "\n" + linha;
    arquivo.replace(arquivo.rfind("L1"), 2, "L2");
    r = Roda({"--json", "--max-line", limite, "import", m_arquivo, "-"}, arquivo);
    EXPECT_EQ(r.codigo, 0) << r.saida;
    EXPECT_EQ(Roda({"--max-line", "0", "import", m_arquivo, "-"}, "").codigo, 2);  // a usage error
    EXPECT_EQ(Roda({"--max-text", "muito", "import", m_arquivo, "-"}, "").codigo, 2);
}
