// Templates of the alert e-mails: the list block prepared byte for byte, the
// two substitutions, and two differential checks: RE2 against libstdc++'s
// ECMAScript engine, and the one-pass substitution against the sequential
// replace-all it stands for.
#include <gtest/gtest.h>

#include <random>
#include <regex>

#include "alerts/PXModeloEmail.h"

namespace {

// The ECMAScript engine of the standard library (the oracle: quadratic and
// recursive, fine on small texts).
class BuscaStdRegex : public IPXBuscaPadrao {
public:
    explicit BuscaStdRegex(const char* padrao) : m_re(padrao, std::regex::ECMAScript) {}
    bool Busca(std::string_view texto, size_t inicio, size_t& posicao, size_t& tamanho) const override {
        std::match_results<std::string_view::const_iterator> m;
        auto flags = inicio > 0 ? std::regex_constants::match_prev_avail : std::regex_constants::match_default;
        if (!std::regex_search(texto.begin() + static_cast<ptrdiff_t>(inicio), texto.end(), m, m_re, flags))
            return false;
        posicao = inicio + static_cast<size_t>(m.position(0));
        tamanho = static_cast<size_t>(m.length(0));
        return true;
    }

private:
    std::regex m_re;
};

const CPXPadroesModelo& PadroesStd() {
    static const BuscaStdRegex bloco(kPXPadraoBloco), linha(kPXPadraoLinha), token(kPXPadraoToken);
    static const CPXPadroesModelo padroes{bloco, linha, token};
    return padroes;
}

// A line of values whose every field names itself and its line (the ";"
// tells line 10's value from line 1's followed by a stray "0").
DADOS_CORPO_EMAIL Linha(int i) {
    DADOS_CORPO_EMAIL d;
    for (const auto& m : kPXMarcadoresLinha) d.*m.campo = CString::Formatado("%s#%d;", m.texto + 3, i);
    return d;
}

DADOS_CORPO_EMAIL Cabecalho() {
    DADOS_CORPO_EMAIL d;
    for (const auto& m : kPXMarcadoresCabecalho) d.*m.campo = CString::Formatado("[%s]", m.texto + 3);
    return d;
}

// A list block whose row carries a token glued to an entity: the header row
// "</tr>" opens the row pattern, the end marker stands two lines before the
// row's own "</tr>".
const std::string kModeloLista =
    "<html>QZ_NOME_TECNICO\r\n"
    "<table>QZ_INICIO_LISTA<tr><th>Recurso</th></tr>\r\n"
    "  QZ_FIM_LISTA\r\n"
    " <tr><td>QZ_COD_RECURSO</td>\r\n"
    "<td>QZ_DESC_RECURSO&nbsp;</td></tr>\r\n"
    "</table></html>";

}  // namespace

// The list block prepared for a number of lines: whether there was one, and
// the template afterwards.
TEST(PXModeloEmailTest, TheListBlockIsPreparedByteForByte) {
    struct Caso {
        const char* nome;
        std::string modelo;
        int64_t linhas;
        bool bloco;
        std::string esperado;
    };
    const Caso casos[] = {
        {"no list block: left as it is", "<p>QZ_COD_RECURSO</p>\r\n<tr>QZ_FIM_LISTA</tr>\r\n", 3, false,
         "<p>QZ_COD_RECURSO</p>\r\n<tr>QZ_FIM_LISTA</tr>\r\n"},
        {"an empty template", "", 5, false, ""},
        // The end marker and its line break leave; the row, from " <tr" to the
        // block's last "</tr>", comes back once per line with its tokens
        // numbered, the one glued to "&nbsp;" included.
        {"two lines", kModeloLista, 2, true,
         "<html>QZ_NOME_TECNICO\r\n"
         "<table>QZ_INICIO_LISTA<tr><th>Recurso</th></tr>\r\n"
         " <tr><td>QZ_COD_RECURSO_0</td>\r\n"
         "<td>QZ_DESC_RECURSO&nbsp;_0</td></tr>\r\n"
         " <tr><td>QZ_COD_RECURSO_1</td>\r\n"
         "<td>QZ_DESC_RECURSO&nbsp;_1</td></tr>\r\n"
         "</table></html>"},
        {"zero lines leave no row", kModeloLista, 0, true,
         "<html>QZ_NOME_TECNICO\r\n<table>QZ_INICIO_LISTA<tr><th>Recurso</th></tr>\r\n</table></html>"},
        {"a block without row loses only its end marker line",
         "<table>QZ_INICIO_LISTA<tr>x\r\n  QZ_FIM_LISTA\r\n<td>a</td>\r\n<b></tr>tail", 4, true,
         "<table>QZ_INICIO_LISTA<tr>x\r\n<td>a</td>\r\n<b></tr>tail"},
        {"row tokens already suffixed or repeated are suffixed twice",
         "QZ_INICIO_LISTA</tr>\r\n  QZ_FIM_LISTA\r\n <tr>QZ_COD_FILIAL_0 QZ_COD_RECURSO QZ_COD_RECURSO <br>\r\n</tr>", 1,
         true, "QZ_INICIO_LISTA</tr>\r\n <tr>QZ_COD_FILIAL_0_0 QZ_COD_RECURSO_0_0 QZ_COD_RECURSO_0_0 <br>\r\n</tr>"},
        // A colon does not end a token, and a token at a line's end runs on
        // into the next line: both are numbered whole.
        {"a token ends only before a blank, a less-than or an asterisk",
         "QZ_INICIO_LISTA</tr>\r\n  QZ_FIM_LISTA\r\n <tr>QZ_NOME_TECNICO:QZ_COD_RECURSO<br>QZ_COD_FILIAL\r\n</tr>", 2, true,
         "QZ_INICIO_LISTA</tr>\r\n <tr>QZ_NOME_TECNICO:QZ_COD_RECURSO_0<br>QZ_COD_FILIAL\r\n_0</tr>\r\n"
         " <tr>QZ_NOME_TECNICO:QZ_COD_RECURSO_1<br>QZ_COD_FILIAL\r\n_1</tr>"},
    };
    for (const auto& c : casos) {
        std::string modelo = c.modelo;
        EXPECT_EQ(c.bloco, PXAtualizaConteudoEmail(modelo, c.linhas)) << c.nome;
        EXPECT_EQ(c.esperado, modelo) << c.nome;
    }
}

TEST(PXModeloEmailTest, HeaderPlaceholdersInTheRowStayUnnumberedAndShowTheHeaderInEveryRow) {
    std::string modelo = "QZ_INICIO_LISTA</tr>\r\n  QZ_FIM_LISTA\r\n <tr>QZ_NOME_TECNICO <i>QZ_COD_RECURSO</i>\r\n</tr>";
    ASSERT_TRUE(PXAtualizaConteudoEmail(modelo, 2));
    EXPECT_EQ("QZ_INICIO_LISTA</tr>\r\n <tr>QZ_NOME_TECNICO <i>QZ_COD_RECURSO_0</i>\r\n</tr>\r\n"
              " <tr>QZ_NOME_TECNICO <i>QZ_COD_RECURSO_1</i>\r\n</tr>",
              modelo);
    PXSubstitui(modelo, Cabecalho(), {Linha(0), Linha(1)});
    EXPECT_EQ("</tr>\r\n <tr>[NOME_TECNICO] <i>COD_RECURSO#0;</i>\r\n</tr>\r\n"
              " <tr>[NOME_TECNICO] <i>COD_RECURSO#1;</i>\r\n</tr>",
              modelo);
}

TEST(PXModeloEmailTest, TheListFormFillsHeaderAndLinesAndLeavesTheGluedTokenAlone) {
    std::string modelo = kModeloLista;
    ASSERT_TRUE(PXAtualizaConteudoEmail(modelo, 2));
    PXSubstitui(modelo, Cabecalho(), {Linha(0), Linha(1)});
    EXPECT_EQ("<html>[NOME_TECNICO]\r\n"
              "<table><tr><th>Recurso</th></tr>\r\n"
              " <tr><td>COD_RECURSO#0;</td>\r\n"
              "<td>QZ_DESC_RECURSO&nbsp;_0</td></tr>\r\n"
              " <tr><td>COD_RECURSO#1;</td>\r\n"
              "<td>QZ_DESC_RECURSO&nbsp;_1</td></tr>\r\n"
              "</table></html>",
              modelo);
}

TEST(PXModeloEmailTest, FromTheEleventhLineTheFirstLinesRewriteTheNumberedPlaceholders) {
    std::vector<DADOS_CORPO_EMAIL> linhas;
    for (int i = 0; i < 12; ++i) linhas.push_back(Linha(i));
    // Line 1 comes before lines 10 and 11: its replace-all takes
    // "QZ_COD_RECURSO_1" out of their placeholders first.
    const std::string esperado = "COD_RECURSO#1;|COD_RECURSO#1;0|COD_RECURSO#1;1|DESC_RECURSO#1;0|COD_RECURSO#9;";
    const std::string modelo = "QZ_COD_RECURSO_1|QZ_COD_RECURSO_10|QZ_COD_RECURSO_11|QZ_DESC_RECURSO_10|QZ_COD_RECURSO_9";
    std::string sequencial = modelo, rapido = modelo;
    PXSubstituiSequencial(sequencial, DADOS_CORPO_EMAIL(), linhas);
    PXSubstitui(rapido, DADOS_CORPO_EMAIL(), linhas);
    EXPECT_EQ(esperado, sequencial);
    EXPECT_EQ(esperado, rapido);
}

TEST(PXModeloEmailTest, TheOneRecordFormKeepsTheListMarkers) {
    DADOS_CORPO_EMAIL r = Linha(3);
    r.sNomeTecnico = "Ana";
    std::string modelo = "QZ_INICIO_LISTA QZ_NOME_TECNICO QZ_COD_RECURSO QZ_NRO_SERIE_RECURSO| QZ_FIM_LISTA";
    PXSubstitui(modelo, r);
    EXPECT_EQ("QZ_INICIO_LISTA Ana COD_RECURSO#3; NRO_SERIE_RECURSO#3;| QZ_FIM_LISTA", modelo);
}

TEST(PXModeloEmailTest, AnEmptyTemplateGivesAnEmptyBody) {
    std::string modelo;
    PXSubstitui(modelo, Cabecalho(), {Linha(0)});
    EXPECT_EQ("", modelo);
    PXSubstitui(modelo, Linha(0));
    EXPECT_EQ("", modelo);
}

TEST(PXModeloEmailTest, ReplaceAllIsLeftToRightAndNeverRescansItsReplacement) {
    struct Caso {
        std::string texto, de, para, esperado;
        size_t vezes;
    };
    const Caso casos[] = {
        {"aaa", "aa", "b", "ba", 1},
        {"abab", "ab", "abab", "abababab", 2},
        {"x", "", "y", "x", 0},
        {std::string("a\0b\0", 4), std::string("\0", 1), "-", "a-b-", 2},
        {"QZ_A_1QZ_A_1", "QZ_A_1", "", "", 2},
    };
    for (const auto& c : casos) {
        std::string t = c.texto;
        EXPECT_EQ(c.vezes, PXSubstituiTodos(t, c.de, c.para)) << c.texto;
        EXPECT_EQ(c.esperado, t) << c.texto;
    }
}

// ---- RE2 against the ECMAScript oracle --------------------------------------

namespace {

std::string ModeloAleatorio(std::mt19937& g) {
    static const char* const kPedacos[] = {
        "QZ_INICIO_LISTA", "QZ_FIM_LISTA", "\r\n", "\r\n  QZ_FIM_LISTA", "  ", " ", "<tr>", " <tr", "</tr>", "*",
        "QZ_COD_RECURSO", "QZ_NOME_TECNICO", "QZ_DESC_RECURSO", "&nbsp;", "x", "<td>", "\r", "\n", "QZ_",
        "QZ_COD_RECURSO_0", "<", "\xE9", "</t", "r>", "\r\n <tr>", "</tr>\r\n",
    };
    std::uniform_int_distribution<size_t> pedaco(0, std::size(kPedacos) - 1);
    std::uniform_int_distribution<int> tamanho(0, 30);
    std::string s;
    // Half of them along the shape of a real block, with noise in between.
    if (g() % 2) {
        const char* const kForma[] = {"<table>", "QZ_INICIO_LISTA", "<tr><th>h</th></tr>", "\r\n  QZ_FIM_LISTA",
                                      "\r\n", " <tr><td>QZ_COD_RECURSO</td>", "\r\n", "<td>QZ_DESC_RECURSO</td></tr>",
                                      "\r\n", "</table>"};
        for (const char* f : kForma) {
            s += f;
            if (g() % 4 == 0) s += kPedacos[pedaco(g)];
        }
        return s;
    }
    for (int i = tamanho(g); i > 0; --i) s += kPedacos[pedaco(g)];
    return s;
}

}  // namespace

TEST(PXModeloEmailTest, Re2FindsWhatTheEcmaScriptEngineFinds) {
    std::mt19937 g(20260310);
    const CPXPadroesModelo& re2 = PXPadroesRe2();
    const CPXPadroesModelo& ecma = PadroesStd();
    const std::pair<const IPXBuscaPadrao*, const IPXBuscaPadrao*> pares[] = {
        {&re2.bloco, &ecma.bloco}, {&re2.linha, &ecma.linha}, {&re2.token, &ecma.token}};
    int blocos = 0;
    for (int n = 0; n < 4000; ++n) {
        const std::string modelo = ModeloAleatorio(g);
        for (const auto& [a, b] : pares) {
            // Every successive match, as an iterator over the text gives them.
            for (size_t de = 0; de <= modelo.size();) {
                size_t pa = 0, ta = 0, pb = 0, tb = 0;
                const bool achouA = a->Busca(modelo, de, pa, ta), achouB = b->Busca(modelo, de, pb, tb);
                ASSERT_EQ(achouB, achouA) << ::testing::PrintToString(modelo) << " from " << de;
                if (!achouA) break;
                ASSERT_EQ(pb, pa) << ::testing::PrintToString(modelo);
                ASSERT_EQ(tb, ta) << ::testing::PrintToString(modelo);
                de = pa + std::max<size_t>(ta, 1);
            }
        }
        for (int64_t linhas : {0, 1, 3}) {
            std::string comRe2 = modelo, comEcma = modelo;
            const bool r1 = PXAtualizaConteudoEmail(comRe2, linhas, re2);
            const bool r2 = PXAtualizaConteudoEmail(comEcma, linhas, ecma);
            ASSERT_EQ(r2, r1) << ::testing::PrintToString(modelo);
            ASSERT_EQ(comEcma, comRe2) << ::testing::PrintToString(modelo);
            blocos += r1;
        }
    }
    // The generator must reach the interesting part.
    EXPECT_GT(blocos, 1000);
}

// ---- the one-pass substitution against the sequential one ------------------

namespace {

const char* const kValoresAdversos[] = {
    "", "", "v", "Q", "QZ", "Z", "Z_", "_", "QZ_", "QZ_COD_RECURSO", "QZ_COD_RECURSO_1", "_0", "1", "0", "10",
    "COD_RECURSO", "COD_TECNICO", "QZ_NOME_TECNICO", "QZ_FIM_LISTA", "_1", "NOME_TECNICO", "abc\xE9",
    "QZ_DT_PROX_MANUT_", "QZ_INICIO_", "LISTA",
};

std::string TextoAdverso(std::mt19937& g) {
    static std::vector<std::string> pedacos = [] {
        std::vector<std::string> p = {"QZ_", "Q", "QZ", "Z_", "_", "_1", "_0", "0", "1", "x", " ", "<", "&nbsp;",
                                      "QZ_INICIO_LISTA", "QZ_FIM_LISTA", "QZ_COD_RECURSO_1", "QZ_COD_RECURSO_10",
                                      "QZ_COD_RECURSO_9999999999999999999", "QZ_COD_RECURSO_00"};
        for (const auto& m : kPXMarcadoresCabecalho) p.push_back(m.texto);
        for (const auto& m : kPXMarcadoresLinha) {
            p.push_back(m.texto);
            for (int i : {0, 1, 2, 11}) p.push_back(std::string(m.texto) + "_" + std::to_string(i));
        }
        return p;
    }();
    std::uniform_int_distribution<size_t> pedaco(0, pedacos.size() - 1);
    std::string s;
    for (int i = static_cast<int>(g() % 25); i > 0; --i) s += pedacos[pedaco(g)];
    return s;
}

DADOS_CORPO_EMAIL ValoresAdversos(std::mt19937& g, bool adversos) {
    DADOS_CORPO_EMAIL d;
    std::uniform_int_distribution<size_t> valor(0, std::size(kValoresAdversos) - 1);
    auto preenche = [&](const CPXMarcadorModelo& m) {
        d.*m.campo = adversos ? CString(kValoresAdversos[valor(g)]) : CString::Formatado("v%u", static_cast<unsigned>(g() % 100));
    };
    for (const auto& m : kPXMarcadoresCabecalho) preenche(m);
    for (const auto& m : kPXMarcadoresLinha) preenche(m);
    return d;
}

}  // namespace

TEST(PXModeloEmailTest, TheOnePassSubstitutionGivesTheSequentialBytes) {
    std::mt19937 g(4242);
    int rapidas = 0, sequenciais = 0;
    for (int n = 0; n < 6000; ++n) {
        const std::string modelo = TextoAdverso(g);
        const bool adversos = n % 3 != 0;
        const DADOS_CORPO_EMAIL cabecalho = ValoresAdversos(g, adversos);
        std::vector<DADOS_CORPO_EMAIL> linhas(g() % 14);
        for (auto& l : linhas) l = ValoresAdversos(g, adversos);

        std::string esperado = modelo, obtido = modelo;
        PXSubstituiSequencial(esperado, cabecalho, linhas);
        bool sequencial = false;
        PXSubstitui(obtido, cabecalho, linhas, &sequencial);
        ASSERT_EQ(esperado, obtido) << "template " << ::testing::PrintToString(modelo) << ", " << linhas.size()
                                    << " lines";
        (sequencial ? sequenciais : rapidas)++;

        std::string umEsperado = modelo, umObtido = modelo;
        PXSubstituiSequencial(umEsperado, cabecalho);
        PXSubstitui(umObtido, cabecalho, &sequencial);
        ASSERT_EQ(umEsperado, umObtido) << "template " << ::testing::PrintToString(modelo);
        (sequencial ? sequenciais : rapidas)++;
    }
    // Both ways were taken, many times.
    EXPECT_GT(rapidas, 2000);
    EXPECT_GT(sequenciais, 500);
}

TEST(PXModeloEmailTest, APlainListOfTenThousandLinesIsFilledInOnePass) {
    std::string modelo = kModeloLista;
    ASSERT_TRUE(PXAtualizaConteudoEmail(modelo, 10000));
    std::vector<DADOS_CORPO_EMAIL> linhas;
    for (int i = 0; i < 10000; ++i) linhas.push_back(Linha(i));
    bool sequencial = true;
    std::string obtido = modelo;
    PXSubstitui(obtido, Cabecalho(), linhas, &sequencial);
    EXPECT_FALSE(sequencial);
    // Every line from the eleventh shows the value of the line its number starts with.
    EXPECT_NE(std::string::npos, obtido.find("<td>COD_RECURSO#9;999</td>"));
    EXPECT_NE(std::string::npos, obtido.find("<td>COD_RECURSO#1;0</td>"));
    EXPECT_EQ(std::string::npos, obtido.find("QZ_COD_RECURSO"));
}

TEST(PXModeloEmailTest, OnlyNotFoundErrorsMakeATemplateMissing) {
    struct Caso {
        int erro;
        bool ausente;
    };
    const Caso casos[] = {{ENOENT, true},  {ENOTDIR, true}, {EHOSTDOWN, true}, {EHOSTUNREACH, true},
                          {ENETUNREACH, true}, {ENOTCONN, true}, {ESTALE, true}, {ENXIO, true},
                          {ENODEV, true},  {ENOMEDIUM, true}, {EACCES, false}, {EPERM, false},
                          {EISDIR, false}, {EROFS, false}, {ETXTBSY, false}, {ELOOP, false},
                          {ENAMETOOLONG, false}, {EMFILE, false}};
    for (const auto& c : casos) EXPECT_EQ(c.ausente, PXErroSignificaAusente(c.erro)) << "errno " << c.erro;
}
