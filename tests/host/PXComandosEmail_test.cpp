// The e-mail commands of pxlreg: the account (set, show, never the
// password) and the template check with its exit statuses.
#include <gtest/gtest.h>

#include <fstream>

#include "tests/support/PXLinhaComandoTeste.h"

namespace {

class PXComandosEmailTest : public PXComandosTeste {
protected:
    std::string Armazem() const { return m_arquivo; }
    std::string Modelo(const std::string& conteudo) {
        const std::string arquivo = Extra(".html");
        std::ofstream(arquivo, std::ios::binary) << conteudo;
        return arquivo;
    }
};

}  // namespace

TEST_F(PXComandosEmailTest, TheAccountIsSetPieceByPieceAndShownWithoutThePassword) {
    ASSERT_EQ(0, Roda({"init", Armazem()}).codigo);
    auto r = Roda({"--json", "email-account", "show", Armazem()});
    ASSERT_EQ(0, r.codigo) << r.erros;
    EXPECT_FALSE(r.json()["account"]["configured"].get<bool>());

    ASSERT_EQ(0, setenv("PXLREG_TESTE_CLI_SENHA", "nao-deve-aparecer", 1));
    r = Roda({"email-account", "set", Armazem(), "--url", "smtps://smtp.empresa.com.br", "--port", "465", "--user",
              "alertas", "--password-env", "PXLREG_TESTE_CLI_SENHA", "--from", "alertas@empresa.com.br", "--from-name",
              U8(u8"Manutenção"), "--starttls", "true"});
    ASSERT_EQ(0, r.codigo) << r.erros;
    r = Roda({"email-account", "set", Armazem(), "--timeout", "30"});
    ASSERT_EQ(0, r.codigo) << r.erros;
    r = Roda({"--json", "email-account", "show", Armazem()});
    ASSERT_EQ(0, r.codigo) << r.erros;
    const auto conta = r.json()["account"];
    EXPECT_TRUE(conta["configured"].get<bool>());
    EXPECT_EQ("smtps://smtp.empresa.com.br", conta["url"]);
    EXPECT_EQ(465, conta["port"]);
    EXPECT_EQ(30, conta["timeout_seconds"]);
    EXPECT_TRUE(conta["starttls_required"].get<bool>());
    EXPECT_EQ(U8(u8"Manutenção"), conta["from_name"]);
    EXPECT_EQ(Json({{"env", "PXLREG_TESTE_CLI_SENHA"}}), conta["password_source"]);
    const auto texto = Roda({"email-account", "show", Armazem()});
    for (const auto& s : {r.saida, texto.saida}) EXPECT_EQ(std::string::npos, s.find("nao-deve-aparecer"));
    EXPECT_NE(std::string::npos, texto.saida.find("PXLREG_TESTE_CLI_SENHA"));
    unsetenv("PXLREG_TESTE_CLI_SENHA");
}

TEST_F(PXComandosEmailTest, BadAccountSettingsAreRefusedAndNothingIsStored) {
    ASSERT_EQ(0, Roda({"init", Armazem()}).codigo);
    const struct {
        std::vector<std::string> extra;
        const char8_t* trecho;  // the whole reason, as printed; empty: the option parser's own, not checked
    } ruins[] = {
        {{"--url", "http://x"}, u8"a URL deve começar por smtp:// ou smtps://: http://x"},
        {{"--from", "sem arroba"}, u8"endereço de remetente inválido: sem arroba"},
        {{"--from", U8(u8"sem≠arroba")}, u8"--from: o caractere U+2260, na posição 3, não tem forma em Windows-1252"},
        {{"--password-file", "relativo/senha.txt"}, u8"o arquivo da senha deve ter caminho absoluto: relativo/senha.txt"},
        {{"--transport", U8(u8"pássaro")}, u8"transporte desconhecido \"pássaro\": use smtp ou outbox"},
        {{"--password-env", "X", "--password-file", "/y"}, u8""},
    };
    for (const auto& c : ruins) {
        SCOPED_TRACE(c.extra[0]);
        std::vector<std::string> args = {"email-account", "set", Armazem()};
        args.insert(args.end(), c.extra.begin(), c.extra.end());
        const std::string trecho = U8(c.trecho);
        auto humano = Roda(args);
        EXPECT_EQ(2, humano.codigo);
        EXPECT_NE(std::string::npos, humano.erros.find(trecho)) << humano.erros;
        if (trecho.empty()) continue;
        // In JSON the same reason, as valid UTF-8.
        args.insert(args.begin(), "--json");
        auto json = Roda(args);
        EXPECT_EQ(2, json.codigo) << json.erros;
        ASSERT_TRUE(Json::accept(json.saida)) << json.saida;
        EXPECT_EQ(trecho, json.json()["error"]["text"]);
    }
    auto r = Roda({"--json", "email-account", "show", Armazem()});
    EXPECT_EQ("", r.json()["account"]["url"]);
    EXPECT_EQ(2, Roda({"email-account", "show", m_arquivo + "_nao_existe.db"}).codigo);
}

TEST_F(PXComandosEmailTest, TemplateCheckTellsWhatTheTemplateWillDo) {
    struct Caso {
        const char* nome;
        std::string modelo;
        int codigo;
        bool bloco;
        std::vector<std::string> numerados;
        std::vector<std::pair<std::string, std::string>> achados;  // kind, text
    };
    const Caso casos[] = {
        {"clean list", "<b>QZ_NOME_TECNICO</b><table>QZ_INICIO_LISTA<tr></tr>\r\n  QZ_FIM_LISTA\r\n <tr><td>QZ_COD_RECURSO</td>\r\n<td>QZ_DT_PROX_MANUT</td></tr>",
         0, true, {"QZ_COD_RECURSO", "QZ_DT_PROX_MANUT"}, {}},
        {"clean without list", "<p>QZ_COD_RECURSO QZ_DATA_ATUAL&nbsp;</p>", 0, false, {}, {}},
        {"findings", "<b>QZ_NOME_TECNICO QZ_FOO</b>QZ_DESC_RECURSO<table>QZ_INICIO_LISTA<tr></tr>\r\n  QZ_FIM_LISTA\r\n"
                     " <tr><td>QZ_COD_RECURSO&nbsp;</td><td>QZ_NOME_TECNICO</td>\r\n<td>QZ_BAR</td></tr>",
         1, true, {"QZ_COD_RECURSO&nbsp;", "QZ_BAR"},
         {{"glued", "QZ_COD_RECURSO&nbsp;"}, {"header_in_row", "QZ_NOME_TECNICO"}, {"unknown", "QZ_BAR"},
          {"unknown", "QZ_FOO"}, {"never_replaced", "QZ_DESC_RECURSO"}}},
    };
    for (const auto& c : casos) {
        SCOPED_TRACE(c.nome);
        const std::string arquivo = Modelo(c.modelo);
        const auto r = Roda({"--json", "template", "check", arquivo});
        EXPECT_EQ(c.codigo, r.codigo) << r.saida << r.erros;
        const auto j = r.json();
        EXPECT_EQ(c.bloco, j["list_block"].get<bool>());
        EXPECT_EQ(Json(c.numerados), j["numbered_tokens"]);
        std::vector<std::pair<std::string, std::string>> achados;
        for (const auto& a : j["findings"]) achados.emplace_back(a["kind"], a["text"]);
        EXPECT_EQ(c.achados, achados);
        EXPECT_EQ(c.codigo, Roda({"template", "check", arquivo}).codigo);
    }
    EXPECT_EQ(2, Roda({"template", "check", m_arquivo + "_nao_existe.html"}).codigo);
}
