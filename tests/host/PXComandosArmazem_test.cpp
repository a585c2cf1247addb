// The command line around its store and its streams: init racing itself and
// refusing what is not a store path, output that cannot be written, bad
// arguments, damaged or newer stores, and imports read line by line.
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <iterator>
#include <map>
#include <fstream>
#include <sstream>
#include <thread>

#include "host/PXComandos.h"
#include "host/PXTiposHost.h"
#include "platform/CString.h"
#include "tests/support/PXLinhaComandoTeste.h"

namespace {

// Accepts `limite` bytes, then fails every write, as a full disk does.
class SaidaLimitada : public std::streambuf {
public:
    explicit SaidaLimitada(size_t limite) : m_limite(limite) {}
    std::string texto;

protected:
    int_type overflow(int_type c) override {
        if (traits_type::eq_int_type(c, traits_type::eof())) return traits_type::not_eof(c);
        if (texto.size() >= m_limite) return traits_type::eof();
        texto.push_back(traits_type::to_char_type(c));
        return c;
    }
    std::streamsize xsputn(const char* s, std::streamsize n) override {
        const auto cabe = static_cast<std::streamsize>(m_limite - std::min(m_limite, texto.size()));
        texto.append(s, static_cast<size_t>(std::min(n, cabe)));
        return std::min(n, cabe);
    }

private:
    size_t m_limite;
};

std::string Sql1(const std::string& arquivo, const std::string& sql) {
    sqlite3* db = nullptr;
    std::string resultado;
    if (sqlite3_open(arquivo.c_str(), &db) == SQLITE_OK) {
        sqlite3_exec(
            db, sql.c_str(),
            [](void* r, int n, char** valores, char**) {
                if (n > 0 && valores[0]) *static_cast<std::string*>(r) = valores[0];
                return 0;
            },
            &resultado, nullptr);
    }
    sqlite3_close(db);
    return resultado;
}

class PXComandosArmazemTest : public PXComandosTeste {
protected:
    // Runs with standard output going to `out`.
    static Resultado RodaEm(std::ostream& out, std::vector<std::string> args, const std::string& entrada = {}) {
        args.insert(args.begin(), "pxlreg");
        std::istringstream in(entrada);
        std::ostringstream err;
        const int codigo = PXLinhaComando(args, in, out, err);
        return {codigo, {}, err.str()};
    }
    size_t LinhasExportadas(const std::string& arquivo) {
        auto r = Roda({"export", arquivo});
        EXPECT_EQ(r.codigo, 0) << r.erros;
        return static_cast<size_t>(std::count(r.saida.begin(), r.saida.end(), '\n'));
    }
};

const std::string kErroSaida = QZParaUtf8(CString("não foi possível escrever a saída"));

}  // namespace

TEST_F(PXComandosArmazemTest, OfTwoInitsOfOnePathOneWinsAndTheStoreIsWhole) {
    CriaDemo();
    const size_t demo = LinhasExportadas(m_arquivo);
    Remove(m_arquivo);
    for (bool comDemo : {true, false}) {
        for (int rodada = 0; rodada < 15; ++rodada) {
            std::atomic<int> prontos{0};
            Resultado r[2];
            auto init = [&](int i) {
                ++prontos;
                while (prontos < 2) std::this_thread::yield();
                r[i] = comDemo ? Roda({"init", "--demo", m_arquivo}) : Roda({"init", m_arquivo});
            };
            std::thread a(init, 0), b(init, 1);
            a.join();
            b.join();
            ASSERT_EQ((r[0].codigo == 0) + (r[1].codigo == 0), 1) << r[0].erros << r[1].erros;
            const Resultado& perdedor = r[0].codigo == 0 ? r[1] : r[0];
            EXPECT_EQ(perdedor.codigo, 2);
            EXPECT_NE(perdedor.erros.find(QZParaUtf8(CString("já existe"))), std::string::npos) << perdedor.erros;
            // The winner's store is there, whole.
            EXPECT_EQ(LinhasExportadas(m_arquivo), comDemo ? demo : 0u);
            Remove(m_arquivo);
        }
    }
}

TEST_F(PXComandosArmazemTest, InitRefusesWhatIsNotAStorePathAndTouchesNothing) {
    // An unrelated SQLite file, reachable as a URI.
    const std::string alheio = Extra(".alheio");
    Sql1(alheio, "CREATE TABLE t (x); INSERT INTO t VALUES (1)");
    const std::string link = Extra(".link");
    const std::string alvo = Extra(".alvo");
    ASSERT_EQ(::symlink(alvo.c_str(), link.c_str()), 0);
    struct Caso {
        std::string caminho;
        const char* trecho;
    } casos[] = {
        {"file:" + m_arquivo, "não é o caminho de um arquivo"},
        {"file:" + alheio + "?mode=rwc", "não é o caminho de um arquivo"},
        {":memory:", "não é o caminho de um arquivo"},
        {"", "nome do armazém está vazio"},
        {link, "link simbólico para um arquivo que não existe"},
        {alheio, "já existe"},
    };
    for (const auto& c : casos) {
        auto r = Roda({"--json", "init", "--demo", c.caminho});
        EXPECT_EQ(r.codigo, 2) << c.caminho;
        EXPECT_NE(r.json()["error"]["text"].get<std::string>().find(QZParaUtf8(CString(c.trecho))), std::string::npos)
            << r.saida;
        // The other commands take no such name either.
        EXPECT_EQ(Roda({"export", c.caminho}).codigo, 2) << c.caminho;
    }
    EXPECT_NE(::access(link.c_str(), F_OK), 0);  // the link still points nowhere
    EXPECT_NE(::access(m_arquivo.c_str(), F_OK), 0);
    EXPECT_EQ(Sql1(alheio, "SELECT count(*) FROM sqlite_master"), "1");
    EXPECT_EQ(Sql1(alheio, "PRAGMA journal_mode"), "delete");
}

TEST_F(PXComandosArmazemTest, OutputThatCannotBeWrittenFailsTheCommand) {
    CriaDemo();
    const std::string tarefa = R"({"Codigo": "OUT", "Descricao": "Saída"})";
    const std::vector<std::string> comandos[] = {
        {"export", m_arquivo},
        {"--json", "export", m_arquivo},
        {"--json", "save", "--dry-run", m_arquivo, "Prioridade", "-"},
        {"permissions", m_arquivo, "--user", "1", "2"},
        {"check", m_arquivo},
        {"--json", "check", m_arquivo},
        {"--help"},
    };
    for (const auto& args : comandos) {
        // The kernel's always-full device, and a disk that fills mid-way.
        std::ofstream cheio("/dev/full", std::ios::binary);
        ASSERT_TRUE(cheio.is_open());
        auto r = RodaEm(cheio, args, tarefa);
        EXPECT_EQ(r.codigo, 2) << args[0] << " " << args.size();
        EXPECT_NE(r.erros.find(kErroSaida), std::string::npos) << r.erros;

        SaidaLimitada limitada(100);
        std::ostream out(&limitada);
        r = RodaEm(out, args, tarefa);
        EXPECT_EQ(r.codigo, limitada.texto.size() < 100 ? 0 : 2) << args[0] << " " << args.size();
    }
    // A cut export is never taken for a whole one.
    SaidaLimitada limitada(5000);
    std::ostream out(&limitada);
    auto r = RodaEm(out, {"export", m_arquivo});
    EXPECT_EQ(r.codigo, 2);
    EXPECT_EQ(limitada.texto.size(), 5000u);
    EXPECT_NE(r.erros.find(kErroSaida), std::string::npos) << r.erros;
}

TEST_F(PXComandosArmazemTest, AStoreOfANewerSchemaIsRefusedAndLeftAlone) {
    CriaDemo();
    // Past 32 bits: read as 32 it would be version 1.
    Sql1(m_arquivo, "INSERT INTO QZ_Esquema (versao, descricao, aplicada_em) VALUES (4294967297, 'futuro', 'x')");
    const std::string antes = Sql1(m_arquivo, "SELECT group_concat(versao) FROM QZ_Esquema");
    for (const std::vector<std::string>& args :
         {std::vector<std::string>{"export", m_arquivo}, {"import", m_arquivo, "-"},
          {"save", m_arquivo, "Prioridade", "-"}, {"delete", m_arquivo, "Prioridade", "2"}}) {
        auto r = Roda(args, R"({"Codigo": "N", "Descricao": "n"})");
        EXPECT_EQ(r.codigo, 2) << args[0];
        EXPECT_NE(r.erros.find(QZParaUtf8(CString("versão mais nova do PXLREG (esquema 4294967297"))), std::string::npos)
            << r.erros;
    }
    EXPECT_EQ(Sql1(m_arquivo, "SELECT group_concat(versao) FROM QZ_Esquema"), antes);
}

TEST_F(PXComandosArmazemTest, CheckReportsDamagedPages) {
    CriaDemo();
    auto r = Roda({"--json", "check", m_arquivo});
    EXPECT_EQ(r.codigo, 0) << r.saida << r.erros;
    EXPECT_EQ(r.json()["intact"], true);
    const std::string danificado = Extra(".danificado");
    {
        // A copy of the store with the headers of some of its pages overwritten.
        Sql1(m_arquivo, "PRAGMA wal_checkpoint(TRUNCATE)");
        std::ifstream origem(m_arquivo, std::ios::binary);
        std::string bytes((std::istreambuf_iterator<char>(origem)), {});
        ASSERT_GT(bytes.size(), 64u * 4096);
        for (size_t pagina : {30, 31, 60})
            for (size_t i = 0; i < 16; ++i) bytes[(pagina - 1) * 4096 + i] = "\x0d\xff\xff\x7f"[i % 4];
        std::ofstream(danificado, std::ios::binary) << bytes;
    }
    r = Roda({"--json", "check", danificado});
    EXPECT_EQ(r.codigo, 1) << r.saida << r.erros;
    EXPECT_EQ(r.json()["intact"], false);
    EXPECT_NE(r.json()["problems"].dump().find("Page 30"), std::string::npos) << r.saida;
    r = Roda({"check", danificado});
    EXPECT_NE(r.saida.find("danificado"), std::string::npos) << r.saida;

    const std::string lixo = Extra(".lixo");
    std::ofstream(lixo, std::ios::binary) << std::string(8192, '\x07');
    const std::string vazio = Extra(".vazio");
    Sql1(vazio, "CREATE TABLE t (x)");
    for (const std::string& caminho : {lixo, vazio, Extra(".ausente"), std::string(":memory:")}) {
        r = Roda({"check", caminho});
        EXPECT_EQ(r.codigo, 2) << caminho << r.saida;
        EXPECT_EQ(r.erros.rfind("pxlreg: erro: ", 0), 0u) << r.erros;
    }
}

TEST_F(PXComandosArmazemTest, ImportReadsLineByLineAcrossBlocksAndCountsLines) {
    ASSERT_EQ(Roda({"init", m_arquivo}).codigo, 0);
    // A line longer than the reader's block, CRLF ends, blank lines and a
    // last line without its end.
    const std::string longa(1500000, 'd');
    const std::string texto = "{\"type\": \"CQZDadosPX_Prioridade\", \"Codigo\": \"A\"}\r\n\n   \n"
                              "{\"type\": \"CQZDadosPX_Prioridade\", \"Codigo\": \"B\", \"Descricao\": \"" + longa + "\"}\n"
                              "{\"type\": \"CQZDadosPX_Prioridade\", \"Codigo\": \"C\"}";
    const std::string arquivo = Extra(".jsonl");
    std::ofstream(arquivo, std::ios::binary) << texto;
    auto r = Roda({"--json", "--max-text", "2MiB", "import", m_arquivo, arquivo});
    ASSERT_EQ(r.codigo, 0) << r.saida;
    EXPECT_EQ(r.json()["records"], 3);
    const std::string exportado = Roda({"export", m_arquivo}).saida;
    EXPECT_NE(exportado.find(longa), std::string::npos);
    EXPECT_NE(exportado.find("\"Codigo\":\"C\""), std::string::npos);

    // The line limit is met in the middle of a line that spans blocks; the
    // line is the fourth of the file, and nothing of the first stays.
    const std::string copia = Extra(".2");
    ASSERT_EQ(Roda({"init", copia}).codigo, 0);
    r = Roda({"--json", "--max-line", "1200000", "import", copia, "-"}, texto);
    EXPECT_EQ(r.codigo, 2);
    EXPECT_EQ(r.json()["error"]["line"], 4);
    EXPECT_EQ(LinhasExportadas(copia), 0u);
    // A bad last line without its end is counted too.
    r = Roda({"--json", "--max-text", "2MiB", "import", copia, "-"}, texto + "\n{\"type\": 1}");
    EXPECT_EQ(r.json()["error"]["line"], 6);
    EXPECT_EQ(LinhasExportadas(copia), 0u);
}

TEST_F(PXComandosArmazemTest, SavesAndDeletesNeedThePermissionOfTheirScreen) {
    CriaDemo();
    const std::string antes = Roda({"export", m_arquivo}).saida;
    // The demo's users: 1 is a supervisor; 7 includes and changes tasks
    // (kind 2) and situations (6) and works on orders (11); 8 only looks.
    const std::string tarefa = R"({"Codigo": "NOVA", "Nome": "Nova tarefa"})";
    const std::string prioridade = R"({"Codigo": "NOVA", "Descricao": "Nova"})";
    struct Caso {
        std::vector<std::string> args;
        std::string entrada;
        int codigo;
        const char* permissao;  // the one missing, when refused for it
        int tela;
    } casos[] = {
        {{"save", "--dry-run", "--user", "8", m_arquivo, "Tarefa", "-"}, tarefa, 1, "Incluir", 2},
        {{"save", "--dry-run", "--user", "7", m_arquivo, "Tarefa", "-"}, tarefa, 0, "", 0},
        {{"save", "--dry-run", "--user", "7", m_arquivo, "Prioridade", "-"}, prioridade, 1, "Incluir", 7},
        {{"save", "--dry-run", "--user", "1", m_arquivo, "Prioridade", "-"}, prioridade, 0, "", 0},
        // A change needs Alterar: user 8 may only look at the situations.
        {{"save", "--dry-run", "--user", "8", m_arquivo, "Situacao", "-"}, R"({"Posicao": 9, "Codigo": "X"})", 1,
         "Alterar", 6},
        // A register's delete needs include-and-change; an order's, Cancelar;
        // another movement's, Excluir.
        {{"delete", "--user", "8", m_arquivo, "Tarefa", "3"}, "", 1, "Incluir e Alterar", 2},
        {{"delete", "--user", "8", m_arquivo, "Manutencao", "2026-03/1"}, "", 1, "Cancelar", 11},
        {{"delete", "--user", "7", m_arquivo, "LancamentoGastos", "2026-03/1"}, "", 1, "Excluir", 12},
        // Users that do not exist.
        {{"save", "--user", "65535", m_arquivo, "Prioridade", "-"}, prioridade, 2, "", 0},
        {{"save", "--user", "0", m_arquivo, "Prioridade", "-"}, prioridade, 2, "", 0},
        {{"delete", "--user", "99", m_arquivo, "Tarefa", "3"}, "", 2, "", 0},
        {{"permissions", m_arquivo, "--user", "99", "2"}, "", 2, "", 0},
    };
    for (const auto& c : casos) {
        auto args = c.args;
        args.insert(args.begin(), "--json");
        auto r = Roda(args, c.entrada);
        EXPECT_EQ(r.codigo, c.codigo) << r.saida << r.erros;
        ASSERT_TRUE(Json::accept(r.saida)) << r.saida;
        const Json j = r.json();
        EXPECT_EQ(j.value("permission", ""), c.permissao) << r.saida;
        if (*c.permissao) {
            EXPECT_EQ(j["kind"], c.tela);
            EXPECT_EQ(j["allowed"], false);
            EXPECT_NE(j["text"].get<std::string>().find(QZParaUtf8(CString("a permissão ")) + c.permissao),
                      std::string::npos)
                << j["text"];
        }
        if (c.codigo == 2) {
            EXPECT_NE(j["error"]["text"].get<std::string>().find(QZParaUtf8(CString("não existe"))), std::string::npos);
        }
    }
    // The user may come from the environment.
    ::setenv("PXLREG_USER", "8", 1);
    auto r = Roda({"--json", "save", "--dry-run", m_arquivo, "Tarefa", "-"}, tarefa);
    ::unsetenv("PXLREG_USER");
    EXPECT_EQ(r.codigo, 1) << r.saida;
    EXPECT_EQ(r.json()["user"], 8);
    EXPECT_EQ(Roda({"export", m_arquivo}).saida, antes);
}

TEST_F(PXComandosArmazemTest, HelpVersionMessagesAndUnknownCommandsGuideTheUser) {
    const std::string desconhecido = QZParaUtf8(CString("comando desconhecido \"foo\"; os comandos são: init, import"));
    struct Caso {
        std::vector<std::string> args;
        int codigo;
        std::string saida, erros;  // what each must contain
    } casos[] = {
        {{"--version"}, 0, "pxlreg " PXLREG_VERSAO_TESTE, ""},
        {{"--help"}, 0, QZParaUtf8(CString("Saída: 0 feito")), ""},
        {{"help"}, 0, "check", ""},
        {{"help", "import"}, 0, "JSON Lines", ""},
        {{"help", "permissions"}, 0, "11 ordem de manut", ""},
        {{"help", "foo"}, 2, "", desconhecido},
        {{"foo"}, 2, "", desconhecido},
        {{"--json", "foo"}, 2, "comando desconhecido \\\"foo\\\"", ""},
        {{}, 2, "", "falta o comando"},
        {{"--json", "save", "x"}, 2, "\"error\"", ""},
        // CLI11's own words, in Portuguese.
        {{"save", "x"}, 2, "", QZParaUtf8(CString("falta TYPE, que é obrigatório"))},
        {{"export", "a", "b"}, 2, "", "argumentos a mais: b"},
        {{"help", "save"}, 0, QZParaUtf8(CString("Uso: save [OPÇÕES] STORE TYPE FILE")), ""},
        {{"help", "save"}, 0, "Argumentos:", ""},
        {{"messages", "10"}, 0, "10\tEste c", ""},
        {{"messages", "99999"}, 2, "", "99999"},
        {{"messages", "x1"}, 2, "", "NUMBER"},
        {{"messages", "--module", "3", "10"}, 2, "", QZParaUtf8(CString("no módulo 3"))},
    };
    for (const auto& c : casos) {
        auto r = Roda(c.args);
        EXPECT_EQ(r.codigo, c.codigo) << r.saida << r.erros;
        EXPECT_NE(r.saida.find(c.saida), std::string::npos) << r.saida;
        EXPECT_NE(r.erros.find(c.erros), std::string::npos) << r.erros;
        if (!c.args.empty() && c.args[0] == "--json") {
            EXPECT_TRUE(Json::accept(r.saida)) << r.saida;
        }
    }
}

TEST_F(PXComandosArmazemTest, TypesAndMessagesTellWhatTheProgramKnows) {
    auto r = Roda({"--json", "types"});
    ASSERT_EQ(r.codigo, 0) << r.erros;
    std::map<std::string, Json> tipos;
    const Json lidos = r.json();
    for (const auto& t : lidos["types"]) tipos[t["type"].get<std::string>()] = t;
    // Every type the host knows, each once.
    EXPECT_EQ(tipos.size(), PXTiposHost().size());
    EXPECT_EQ(lidos["types"].size(), PXTiposHost().size());
    EXPECT_EQ(tipos["CQZDadosPX_Prioridade"]["rules"], true);
    EXPECT_EQ(tipos["CQZDadosPX_Prioridade"]["kind"], 7);
    EXPECT_EQ(tipos["CQZDadosPX_Manutencao"]["key"], "movimento");
    EXPECT_EQ(tipos["CQZDadosPX_Mestre"]["key"], "unica");
    EXPECT_EQ(tipos["CQZDadosGT_Usuario"]["rules"], false);
    EXPECT_EQ(tipos["CQZDadosGT_Usuario"]["commands"], "import, export");
    r = Roda({"--json", "messages"});
    EXPECT_GT(r.json()["messages"].size(), 100u);
}

TEST_F(PXComandosArmazemTest, TheCompanyIsReadAsUtf8) {
    CriaDemo();
    const std::string prioridade = R"({"Codigo": "EMP", "Descricao": "e"})";
    auto r = Roda({"save", "--dry-run", "--company", QZParaUtf8(CString("Serra Azul Indústria")), m_arquivo, "Prioridade", "-"},
                  prioridade);
    EXPECT_EQ(r.codigo, 0) << r.erros;
    r = Roda({"save", "--dry-run", "--company", reinterpret_cast<const char*>(u8"Empresa ≠"), m_arquivo, "Prioridade", "-"},
             prioridade);
    EXPECT_EQ(r.codigo, 2);
    EXPECT_NE(r.erros.find(reinterpret_cast<const char*>(
                  u8"--company: o caractere U+2260, na posição 8, não tem forma em Windows-1252")),
              std::string::npos)
        << r.erros;
}

// An example names every field of its type, reads back as a record of that
// type, and is a new record: saved as it stands, the rules take it.
TEST_F(PXComandosArmazemTest, AnExampleHasEveryFieldAndIsANewRecord) {
    for (const auto& tipo : PXTiposHost()) {
        auto r = Roda({"example", tipo->Nome()});
        ASSERT_EQ(r.codigo, 0) << tipo->Nome() << ": " << r.erros;
        const Json exemplo = Json::parse(r.saida);
        EXPECT_EQ(exemplo["type"], tipo->Nome());
        auto modelo = tipo->Novo();
        const Json campos = tipo->ParaJson(*modelo);
        for (const auto& [campo, valor] : campos.items()) {
            ASSERT_TRUE(exemplo.contains(campo)) << tipo->Nome() << " sem " << campo;
            EXPECT_EQ(exemplo[campo].type(), valor.type()) << tipo->Nome() << "." << campo;
        }
        if (campos.contains(tipo->CampoChave())) {
            EXPECT_EQ(exemplo[tipo->CampoChave()], campos[tipo->CampoChave()]) << tipo->Nome();
        }
        auto lido = tipo->Novo();
        EXPECT_NO_THROW(tipo->DeJson(exemplo, *lido)) << tipo->Nome();
        EXPECT_EQ(tipo->ChaveInformada(*lido), 0) << tipo->Nome();
    }

    // A priority from the example, its code made new, goes through the rules.
    Json prioridade = Json::parse(Roda({"example", "Prioridade"}).saida);
    prioridade["Codigo"] = "EX1";
    CriaDemo();
    auto salvo = Roda({"save", m_arquivo, "Prioridade", "-"}, prioridade.dump());
    EXPECT_EQ(salvo.codigo, 0) << salvo.saida << salvo.erros;

    auto desconhecido = Roda({"example", "NaoExiste"});
    EXPECT_EQ(desconhecido.codigo, 2);
    EXPECT_NE(desconhecido.erros.find("NaoExiste"), std::string::npos) << desconhecido.erros;
}
