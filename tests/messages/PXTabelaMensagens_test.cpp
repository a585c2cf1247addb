// The message table: its loader, its rendering, and that every message
// number the library's code can set has a text with room for its parameters.
#include "host/PXTabelaMensagens.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>

namespace {

CString Renderiza(const CPXTabelaMensagens& t, QZModulo m, long n, std::initializer_list<const char*> params) {
    CStringArray a;
    for (const char* p : params) a.Add(p);
    CString texto;
    EXPECT_TRUE(t.Renderiza(m, n, a, texto)) << n;
    return texto;
}

// Restores the process's message table when a test that set one ends.
class TabelaGlobal {
public:
    explicit TabelaGlobal(const IQZTabelaMensagens* t) : m_anterior(CQZDadosGT_Erro::GetTabelaMensagens()) {
        CQZDadosGT_Erro::DefineTabelaMensagens(t);
    }
    ~TabelaGlobal() { CQZDadosGT_Erro::DefineTabelaMensagens(m_anterior); }

private:
    const IQZTabelaMensagens* m_anterior;
};

}  // namespace

TEST(PXTabelaMensagensTest, RendersParametersInTheirPlaces) {
    CPXTabelaMensagens t;
    std::string erro;
    // UTF-8 outside ("situação", "ç" as two bytes), Windows-1252 inside.
    ASSERT_TRUE(t.Carrega("# comentário\n\n28\t146\tA situa\xC3\xA7\xC3\xA3o %1 - %2 est\xC3\xA1 inativa.\r\n"
                          "28\t7\t%2 antes de %1: 100%% %3\n20\t125\tOutro m\xC3\xB3""dulo.",
                          &erro))
        << erro;
    EXPECT_EQ(Renderiza(t, QZ_MODULO_PX, 146, {"S1", "Aberta"}), "A situação S1 - Aberta está inativa.");
    EXPECT_EQ(Renderiza(t, QZ_MODULO_PX, 7, {"um", "dois"}), "dois antes de um: 100%");  // %3 not passed
    EXPECT_EQ(Renderiza(t, QZ_MODULO_20, 125, {}), "Outro módulo.");
    EXPECT_EQ(t.MaiorParametro(QZ_MODULO_PX, 7), 3);
    CString texto;
    EXPECT_FALSE(t.Renderiza(QZ_MODULO_PX, 125, CStringArray(), texto));
}

TEST(PXTabelaMensagensTest, ABadFileIsRefusedWholeNamingTheLine) {
    CPXTabelaMensagens t;
    std::string erro;
    ASSERT_TRUE(t.Carrega("28\t1\tUm.", &erro));
    struct Caso {
        const char* texto;
        const char* motivo;
    } casos[] = {
        {"28\t2\tDois.\n28 3 Tr\xC3\xAAs.", "linha 2: esperava"},
        {"28\t2\tDois.\n\n28\t2\tDe novo.", "linha 3: mensagem 28/2 repetida"},
        {"28\tdois\tDois.", "linha 1: módulo ou número inválido"},
        {"28\t2\tSeta \xE2\x86\x92 sem forma.", "linha 1: "},
        {"28\t2\t50% sem n\xC3\xBAmero.", "linha 1: '%'"},
        {"28\t2\t", "linha 1: texto vazio"},
    };
    for (const auto& c : casos) {
        EXPECT_FALSE(t.Carrega(c.texto, &erro)) << c.texto;
        EXPECT_EQ(erro.rfind(c.motivo, 0), 0u) << QZParaUtf8(erro);
    }
    EXPECT_TRUE(t.Tem(QZ_MODULO_PX, 1));  // the table loaded before is kept
    EXPECT_FALSE(t.Tem(QZ_MODULO_PX, 2));
}

TEST(PXTabelaMensagensTest, TheErrorRecordRendersThroughTheLoadedTable) {
    const CPXTabelaMensagens& tabela = CPXTabelaMensagens::Embutida();
    TabelaGlobal global(&tabela);
    CQZDadosGT_Erro erro;
    erro.SetAviso(QZ_MODULO_PX, 176, 3);
    EXPECT_EQ(erro.GetMensagem(), "A prioridade base deve estar entre 0 e 100.");
    erro.SetAvisoPersonalizado(QZ_MODULO_PX, 1, 146L, CString("M1"), CString("Manutenção"));
    EXPECT_EQ(erro.GetMensagem(), "A situação M1 - Manutenção está inativa.");
    erro.SetAviso(QZ_MODULO_20, 125, 1);
    EXPECT_EQ(erro.GetMensagem(), "O tipo da situação não corresponde a este cadastro.");
    // A formatted text and a service's own text are not looked up.
    erro.SetAvisoPersonalizado(QZ_MODULO_PX, 0, "Técnico %s depende", "T1");
    EXPECT_EQ(erro.GetMensagem(), "Técnico T1 depende");
}

// ---- every message the code can set -----------------------------------------

namespace {

namespace fs = std::filesystem;

// The sources of the library, found from this file's own place in the tree.
fs::path RaizProjeto() { return fs::path(__FILE__).parent_path().parent_path().parent_path(); }

// The text with comments blanked out, string and character literals kept.
std::string SemComentarios(const std::string& s) {
    std::string r = s;
    for (size_t i = 0; i < r.size(); ++i) {
        if (r[i] == '"' || r[i] == '\'') {
            char q = r[i];
            for (++i; i < r.size() && r[i] != q; ++i)
                if (r[i] == '\\') ++i;
        } else if (r.compare(i, 2, "//") == 0) {
            while (i < r.size() && r[i] != '\n') r[i++] = ' ';
        } else if (r.compare(i, 2, "/*") == 0) {
            size_t fim = r.find("*/", i + 2);
            fim = fim == std::string::npos ? r.size() : fim + 2;
            for (; i < fim; ++i)
                if (r[i] != '\n') r[i] = ' ';
        }
    }
    return r;
}

// The top-level arguments of the call whose '(' is at `abre`.
std::vector<std::string> Argumentos(const std::string& s, size_t abre) {
    std::vector<std::string> args(1);
    int nivel = 0;
    for (size_t i = abre + 1; i < s.size(); ++i) {
        char c = s[i];
        if (c == '"' || c == '\'') {
            size_t j = i;
            for (++j; j < s.size() && s[j] != c; ++j)
                if (s[j] == '\\') ++j;
            args.back() += s.substr(i, j - i + 1);
            i = j;
            continue;
        }
        if (c == '(' || c == '{' || c == '[') ++nivel;
        if (c == ')' || c == '}' || c == ']') {
            if (nivel == 0) break;
            --nivel;
        }
        if (c == ',' && nivel == 0)
            args.emplace_back();
        else
            args.back() += c;
    }
    for (auto& a : args) a = std::regex_replace(a, std::regex("^\\s+|\\s+$"), "");
    return args;
}

struct Uso {
    int modulo;
    long mensagem;
    int parametros;  // -1: SetAviso, which passes none and renders the text as it is
    std::string onde;
};

std::string Le(const fs::path& p) {
    std::ifstream f(p, std::ios::binary);
    std::stringstream ss;
    ss << f.rdbuf();
    return ss.str();
}

// Numeric values of a message argument: a literal, a constant defined in
// the file or its header, or a member of a struct whose values come from a
// table of aggregates ({36, 47}, ...) somewhere in the sources. `texto` says
// the argument is a format string.
bool ValoresMensagem(const std::string& arg, const std::string& fonte, const std::string& todas,
                     std::vector<long>& valores, bool& texto) {
    std::smatch m;
    texto = false;
    valores.clear();
    if (std::regex_match(arg, m, std::regex("(\\d+)[lLuU]*"))) {
        valores.push_back(std::stol(m[1]));
        return true;
    }
    if (!arg.empty() && arg.front() == '"') {
        texto = true;
        return true;
    }
    std::string nome = std::regex_replace(arg, std::regex(".*[.>:]"), "");
    if (std::regex_search(fonte, m, std::regex("\\b" + nome + "\\s*=\\s*(\\d+)"))) {
        valores.push_back(std::stol(m[1]));
        return true;
    }
    if (std::regex_search(fonte, std::regex("(char\\s*\\*|CString|std::string)\\s*(const\\s*)?&?\\s*" + nome + "\\b"))) {
        texto = true;
        return true;
    }
    // A member: its place among the struct's fields, then that place in
    // every aggregate of the struct's tables.
    if (nome == arg) return false;
    const std::regex estrutura("struct\\s+(\\w+)\\s*\\{([^{}]*)\\}");
    for (auto it = std::sregex_iterator(todas.begin(), todas.end(), estrutura); it != std::sregex_iterator(); ++it) {
        std::vector<std::string> campos;
        std::string corpo = (*it)[2];
        static const std::regex campo("(\\w+)\\s*;");
        for (auto c = std::sregex_iterator(corpo.begin(), corpo.end(), campo);
             c != std::sregex_iterator(); ++c)
            campos.push_back((*c)[1]);
        auto pos = std::find(campos.begin(), campos.end(), nome);
        if (pos == campos.end()) continue;
        const size_t k = static_cast<size_t>(pos - campos.begin());
        const std::regex tabela(std::string((*it)[1]) + "\\s+\\w+\\[\\]\\s*=\\s*\\{((\\s*\\{[^{}]*\\}\\s*,?)+)\\}");
        for (auto t = std::sregex_iterator(todas.begin(), todas.end(), tabela); t != std::sregex_iterator(); ++t) {
            std::string grupos = (*t)[1];
            static const std::regex grupo("\\{([^{}]*)\\}");
            for (auto g = std::sregex_iterator(grupos.begin(), grupos.end(), grupo);
                 g != std::sregex_iterator(); ++g) {
                std::string linha = (*g)[1];
                std::vector<std::string> elementos;
                static const std::regex elemento("[^,]+");
                for (auto e = std::sregex_iterator(linha.begin(), linha.end(), elemento);
                     e != std::sregex_iterator(); ++e)
                    elementos.push_back(std::regex_replace(e->str(), std::regex("^\\s+|\\s+$"), ""));
                if (k < elementos.size() && std::regex_match(elementos[k], m, std::regex("(\\d+)[lLuU]*")))
                    valores.push_back(std::stol(m[1]));
            }
        }
    }
    return !valores.empty();
}

void ColetaUsos(std::vector<Uso>& usos, std::vector<std::string>& obscuros) {
    const std::regex chamada("\\bSetAviso(Personalizado)?\\s*\\(");
    std::map<fs::path, std::string> fontes;
    std::string todas;
    for (const char* pasta : {"rules", "integrity", "permissions", "files", "extrainfo", "alerts", "platform"}) {
        fs::path dir = RaizProjeto() / pasta;
        if (!fs::exists(dir)) continue;
        for (const auto& e : fs::recursive_directory_iterator(dir)) {
            if (e.path().extension() != ".cpp" && e.path().extension() != ".h") continue;
            fontes[e.path()] = SemComentarios(Le(e.path()));
            todas += fontes[e.path()] + "\n";
        }
    }
    for (const auto& [caminho, fonte] : fontes) {
        fs::path cabecalho = fs::path(caminho).replace_extension(".h");
        std::string contexto = fonte + (cabecalho != caminho && fontes.count(cabecalho) ? fontes[cabecalho] : "");
        for (auto it = std::sregex_iterator(fonte.begin(), fonte.end(), chamada); it != std::sregex_iterator(); ++it) {
            const bool personalizado = (*it)[1].matched;
            auto args = Argumentos(fonte, static_cast<size_t>(it->position() + it->length() - 1));
            int modulo = args[0] == "QZ_MODULO_PX" || args[0] == "28" ? 28
                         : args[0] == "QZ_MODULO_20" || args[0] == "20" ? 20
                                                                         : 0;
            if (modulo == 0 || args.size() < 3) continue;  // declarations, other modules
            std::string onde = caminho.filename().string() + ": " + it->str() + args[0] + ", " + args[1] + ", " +
                               args[2] + (args.size() > 3 ? ", ..." : "") + ")";
            std::vector<long> valores;
            bool texto = false;
            if (!ValoresMensagem(personalizado ? args[2] : args[1], contexto, todas, valores, texto)) {
                obscuros.push_back(onde);
                continue;
            }
            for (long valor : valores)  // none for a formatted text: not a numbered message
                usos.push_back({modulo, valor, personalizado ? static_cast<int>(args.size()) - 3 : -1, onde});
        }
    }
}

}  // namespace

TEST(PXTabelaMensagensTest, EveryMessageTheCodeCanSetHasATextWithRoomForItsParameters) {
    const CPXTabelaMensagens& tabela = CPXTabelaMensagens::Embutida();
    std::vector<Uso> usos;
    std::vector<std::string> obscuros;
    ColetaUsos(usos, obscuros);
    EXPECT_GT(usos.size(), 20u) << "the scan of " << RaizProjeto() << " found too few calls to be trusted";
    for (const auto& o : obscuros)
        ADD_FAILURE() << "cannot tell which message this sets (use a literal or a constant in the file): " << o;

    std::map<std::pair<int, long>, int> maisParametros;
    for (const auto& u : usos) {
        const auto modulo = static_cast<QZModulo>(u.modulo);
        EXPECT_TRUE(tabela.Tem(modulo, u.mensagem)) << "no text for message " << u.mensagem << " of module "
                                                    << u.modulo << ", set by " << u.onde;
        auto& n = maisParametros[{u.modulo, u.mensagem}];
        n = std::max(n, u.parametros);
        if (u.parametros < 0)
            EXPECT_EQ(tabela.MaiorParametro(modulo, u.mensagem), 0)
                << "message " << u.mensagem << " is set without parameters by " << u.onde << " but its text has some";
        else
            EXPECT_LE(u.parametros, tabela.MaiorParametro(modulo, u.mensagem))
                << "message " << u.mensagem << " drops parameters passed by " << u.onde;
    }
    // A placeholder that no caller fills would always render empty.
    for (const auto& [chave, n] : maisParametros)
        EXPECT_LE(tabela.MaiorParametro(static_cast<QZModulo>(chave.first), chave.second), std::max(n, 0))
            << "message " << chave.second << " of module " << chave.first << " has a placeholder nobody fills";
}
