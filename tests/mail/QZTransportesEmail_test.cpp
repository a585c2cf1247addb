// The composed message, and the transports: SMTP against a real local
// server (what it receives, byte for byte, and what it refuses), the outbox
// folder and the account's password sources.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <random>

#include "mail/QZFormatoEmail.h"
#include "mail/QZTransporteCaixaSaida.h"
#include "mail/QZTransporteConta.h"
#include "mail/QZTransporteSmtp.h"
#include "platform/QZCodigosResultado.h"
#include "tests/support/PXPastaTeste.h"
#include "tests/support/PXServidorSmtp.h"

namespace {

std::string DeBase64(const std::string& s) {
    static const std::string kAlfabeto = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string saida;
    uint32_t acumulado = 0;
    int bits = 0;
    for (char c : s) {
        const size_t v = kAlfabeto.find(c);
        if (v == std::string::npos) continue;
        acumulado = acumulado << 6 | static_cast<uint32_t>(v);
        bits += 6;
        if (bits >= 8) {
            bits -= 8;
            saida += static_cast<char>((acumulado >> bits) & 0xFF);
        }
    }
    return saida;
}

// Quoted-printable read back the way RFC 2045 says.
std::string DeQuotedPrintable(const std::string& s) {
    std::string saida;
    for (size_t i = 0; i < s.size(); ++i) {
        if (s[i] != '=') {
            saida += s[i];
        } else if (s.compare(i, 3, "=\r\n") == 0) {
            i += 2;
        } else {
            saida += static_cast<char>(std::stoi(s.substr(i + 1, 2), nullptr, 16));
            i += 2;
        }
    }
    return saida;
}

// A filled template: accents, CR LF, a dot alone on a line, long lines, "=".
std::string CorpoTipico() {
    std::string corpo = "<html><body>\r\n<p>Ol\xE1, Jo\xE3o: manuten\xE7\xE3o do compressor \x80 200,00</p>\r\n.\r\n";
    corpo += "<p>" + std::string(150, 'x') + " a=b </p> \r\n";
    corpo += "<td>fim</td>";
    return corpo;
}

CQZMensagemEmail Mensagem() {
    CQZMensagemEmail m;
    m.remetente = "alertas@empresa.com.br";
    m.nomeRemetente = "Manutenção \"PX\"";
    m.destinatario = "tecnico@empresa.com.br";
    m.assunto = "Alerta de Manutenção - Troca de óleo do compressor número 3 da linha de produção de embalagens";
    m.corpoHtml = CorpoTipico();
    return m;
}

}  // namespace

TEST(QZFormatoEmailTest, QuotedPrintableKeepsEveryByteAndTheLineLimit) {
    struct Caso {
        std::string entrada, esperado;
    };
    const Caso casos[] = {
        {"a=b", "a=3Db=\r\n"},
        {"linha\r\n.\r\n", "linha\r\n=2E\r\n"},
        {"fim \r\nx\t", "fim=20\r\nx=09=\r\n"},
        {"\xE9\x80", "=E9=80=\r\n"},
        {"a\nb\rc", "a=0Ab=0Dc=\r\n"},
        {"", ""},
        {"\r\n", "\r\n"},
    };
    for (const auto& c : casos) EXPECT_EQ(c.esperado, QZCodificaQuotedPrintable(c.entrada)) << c.entrada;

    std::mt19937 g(7);
    for (int n = 0; n < 500; ++n) {
        std::string bytes;
        for (int i = static_cast<int>(g() % 400); i > 0; --i) {
            const unsigned r = g() % 10;
            bytes += r == 0 ? std::string("\r\n") : r == 1 ? std::string(" ") : r == 2 ? std::string(".")
                                                                              : std::string(1, static_cast<char>(g()));
        }
        const std::string qp = QZCodificaQuotedPrintable(bytes);
        ASSERT_EQ(bytes, DeQuotedPrintable(qp));
        for (size_t inicio = 0; inicio < qp.size();) {
            size_t fim = qp.find("\r\n", inicio);
            ASSERT_NE(std::string::npos, fim) << "every line ends in CR LF";
            ASSERT_LE(fim - inicio, 76u);
            ASSERT_FALSE(fim > inicio && (qp[fim - 1] == ' ' || qp[fim - 1] == '\t')) << "blank before a break";
            ASSERT_FALSE(fim > inicio && qp[inicio] == '.') << "a dot opens a line";
            for (size_t i = inicio; i < fim; ++i)
                ASSERT_TRUE((qp[i] >= 0x20 && qp[i] <= 0x7E) || qp[i] == '\t') << "a byte not written =XX";
            inicio = fim + 2;
        }
    }
}

TEST(QZFormatoEmailTest, HeadersAreAsciiOrEncodedWordsOfUtf8) {
    std::string s;
    ASSERT_TRUE(QZCodificaCabecalho("Alerta simples", s));
    EXPECT_EQ("Alerta simples", s);
    ASSERT_TRUE(QZCodificaCabecalho("Manutenção", s));
    EXPECT_EQ("=?UTF-8?B?TWFudXRlbsOnw6Nv?=", s);
    ASSERT_TRUE(QZCodificaCabecalho("um =?texto?= suspeito", s));
    EXPECT_EQ(0u, s.find("=?UTF-8?B?"));
    // Long: several words on folded lines, each whole characters.
    ASSERT_TRUE(QZCodificaCabecalho(CString(std::string(100, '\xE7')), s));
    std::string decodificado;
    for (size_t inicio = 0; inicio < s.size();) {
        size_t fim = s.find("\r\n ", inicio);
        const std::string palavra = s.substr(inicio, fim == std::string::npos ? std::string::npos : fim - inicio);
        ASSERT_LE(palavra.size(), 75u);
        ASSERT_EQ(0u, palavra.find("=?UTF-8?B?"));
        decodificado += DeBase64(palavra.substr(10, palavra.size() - 12));
        inicio = fim == std::string::npos ? s.size() : fim + 3;
    }
    std::string esperado;
    for (int i = 0; i < 100; ++i) esperado += "\xC3\xA7";
    EXPECT_EQ(esperado, decodificado);
    EXPECT_FALSE(QZCodificaCabecalho(CString("\x81"), s)) << "a byte Windows-1252 leaves undefined";
}

TEST(QZFormatoEmailTest, OnlyOneMailboxIsAnAddress) {
    const std::pair<const char*, bool> casos[] = {
        {"a@b.com", true},          {"nome.sobrenome+x@empresa.com.br", true},
        {"", false},                {"semarroba", false},
        {"a@b@c", false},           {"a b@c.com", false},
        {"a@b.com, c@d.com", false}, {"a@b.com\r\nBcc: x@y.com", false},
        {"<a@b.com>", false},       {"@b.com", false},
        {"a@", false},              {"\xE9@b.com", false},
    };
    for (const auto& [endereco, valido] : casos) EXPECT_EQ(valido, QZEnderecoValido(endereco)) << endereco;
}

TEST(QZFormatoEmailTest, TheMessageCarriesItsHeadersAndItsBody) {
    std::string bytes, erro;
    ASSERT_TRUE(QZMontaMensagemEmail(Mensagem(), 0, bytes, &erro)) << erro;
    const size_t fimCabecalho = bytes.find("\r\n\r\n");
    ASSERT_NE(std::string::npos, fimCabecalho);
    const std::string cabecalho = bytes.substr(0, fimCabecalho + 2);
    for (const char* h : {"Date: ", "\r\nFrom: =?UTF-8?B?", "\r\nTo: <tecnico@empresa.com.br>\r\n", "\r\nSubject: =?UTF-8?B?",
                          "\r\nMessage-ID: <", "@empresa.com.br>\r\n", "\r\nMIME-Version: 1.0\r\n",
                          "\r\nContent-Type: text/html; charset=windows-1252\r\n",
                          "\r\nContent-Transfer-Encoding: quoted-printable\r\n"})
        EXPECT_NE(std::string::npos, cabecalho.find(h)) << h;
    EXPECT_EQ(CorpoTipico(), DeQuotedPrintable(bytes.substr(fimCabecalho + 4)));

    CQZMensagemEmail invalida = Mensagem();
    invalida.destinatario = "x@y.com\r\nBcc: z@w.com";
    EXPECT_FALSE(QZMontaMensagemEmail(invalida, 0, bytes, &erro));
    EXPECT_NE(std::string::npos, erro.find("destinat"));
    std::string id1 = QZNovoIdMensagem("a.com"), id2 = QZNovoIdMensagem("a.com");
    EXPECT_NE(id1, id2);
}

// ---- SMTP against a real server ---------------------------------------------

TEST(QZTransporteSmtpTest, TheServerReceivesTheBodyAndHeadersAsComposed) {
    PXServidorSmtp servidor;
    ASSERT_NE(0, servidor.Porta()) << "the local SMTP server (python3-aiosmtpd) did not start";
    CQZConfiguracaoSmtp cfg;
    cfg.url = "smtp://127.0.0.1";
    cfg.porta = static_cast<unsigned>(servidor.Porta());
    cfg.usuario = "alertas";
    cfg.senha = "s3nh@";
    cfg.tempoLimiteSegundos = 20;
    CQZTransporteSmtp smtp(cfg);
    CQZResultadoEnvio resultado;
    ASSERT_EQ(0, smtp.Envia(Mensagem(), resultado)) << resultado.erro;
    EXPECT_EQ(250, resultado.codigoServidor);
    EXPECT_EQ("250 2.0.0 Mensagem aceita", resultado.resposta);

    auto recebida = servidor.Recebida();
    ASSERT_TRUE(recebida.has_value());
    const auto& r = *recebida;
    EXPECT_EQ("<alertas@empresa.com.br>", "<" + r["de"].get<std::string>() + ">");
    EXPECT_EQ(nlohmann::json::array({"tecnico@empresa.com.br"}), r["para"]);
    EXPECT_EQ(nlohmann::json::array({"alertas", "s3nh@"}), r["login"]);
    EXPECT_EQ("text/html", r["tipo"]);
    EXPECT_EQ("windows-1252", r["charset"]);
    EXPECT_EQ(CorpoTipico(), DeBase64(r["corpo"]));
    EXPECT_EQ(QZParaUtf8(Mensagem().assunto), r["assunto"]);
    const std::string bruto = DeBase64(r["bruto"]);
    EXPECT_NE(std::string::npos, bruto.find("\r\nContent-Transfer-Encoding: quoted-printable\r\n"));
    EXPECT_NE(std::string::npos, bruto.find("Date: "));
    EXPECT_NE(std::string::npos, bruto.find("\r\nMessage-ID: <"));
}

TEST(QZTransporteSmtpTest, RefusalsAreFailuresWithTheServersReply) {
    struct Caso {
        std::vector<std::string> argumentos;
        long codigo;
        bool temporaria;
        const char* resposta;
    };
    const Caso casos[] = {
        {{"--recusa-data", "451 4.3.0 Tente mais tarde"}, 451, true, "451 4.3.0 Tente mais tarde"},
        {{"--recusa-rcpt", "554 5.7.1 Destinatario recusado"}, 554, false, "554 5.7.1 Destinatario recusado"},
    };
    for (const auto& c : casos) {
        SCOPED_TRACE(c.resposta);
        PXServidorSmtp servidor(c.argumentos);
        ASSERT_NE(0, servidor.Porta());
        CQZConfiguracaoSmtp cfg;
        cfg.url = servidor.Url();
        cfg.tempoLimiteSegundos = 20;
        CQZTransporteSmtp smtp(cfg);
        CQZResultadoEnvio resultado;
        EXPECT_EQ(QZ_E_ENVIO_EMAIL, smtp.Envia(Mensagem(), resultado));
        EXPECT_EQ(c.codigo, resultado.codigoServidor);
        EXPECT_EQ(c.temporaria, resultado.temporaria);
        EXPECT_EQ(c.resposta, resultado.resposta);
        EXPECT_NE(std::string::npos, resultado.erro.find(c.resposta));
        EXPECT_TRUE(servidor.Encerra().empty());
    }
}

TEST(QZTransporteSmtpTest, RequiredTlsIsNeverDroppedForAServerWithoutIt) {
    PXServidorSmtp servidor;
    ASSERT_NE(0, servidor.Porta());
    CQZConfiguracaoSmtp cfg;
    cfg.url = servidor.Url();
    cfg.exigeTls = true;
    cfg.tempoLimiteSegundos = 20;
    CQZResultadoEnvio resultado;
    EXPECT_EQ(QZ_E_ENVIO_EMAIL, CQZTransporteSmtp(cfg).Envia(Mensagem(), resultado));
    EXPECT_FALSE(resultado.erro.empty());
    EXPECT_TRUE(servidor.Encerra().empty()) << "the message went out in clear text";
}

TEST(QZTransporteSmtpTest, NoServerOrABadUrlIsAFailure) {
    CQZConfiguracaoSmtp cfg;
    {
        PXServidorSmtp livre;  // a port that was free a moment ago, now closed
        ASSERT_NE(0, livre.Porta());
        cfg.url = livre.Url();
        livre.Encerra();
    }
    cfg.tempoLimiteSegundos = 10;
    CQZResultadoEnvio resultado;
    EXPECT_EQ(QZ_E_ENVIO_EMAIL, CQZTransporteSmtp(cfg).Envia(Mensagem(), resultado));
    EXPECT_EQ(0, resultado.codigoServidor);
    EXPECT_FALSE(resultado.erro.empty());
    cfg.url = "http://127.0.0.1";
    EXPECT_EQ(QZ_E_ENVIO_EMAIL, CQZTransporteSmtp(cfg).Envia(Mensagem(), resultado));
    EXPECT_NE(std::string::npos, resultado.erro.find("smtp://"));
}

// ---- outbox ------------------------------------------------------------------

namespace {

struct PastaTemporaria {
    PastaTemporaria() {
        std::string modelo = ::testing::TempDir() + "pxlreg_saida_XXXXXX";
        caminho = mkdtemp(modelo.data()) ? modelo : "";
    }
    ~PastaTemporaria() { PXApagaPasta(caminho); }
    std::string caminho;
};

}  // namespace

TEST(QZTransporteCaixaSaidaTest, EachMessageIsOneWholeFileAndNothingElse) {
    PastaTemporaria pasta;
    ASSERT_FALSE(pasta.caminho.empty());
    CQZTransporteCaixaSaida caixa(pasta.caminho);
    CQZResultadoEnvio r1, r2;
    ASSERT_EQ(0, caixa.Envia(Mensagem(), r1)) << r1.erro;
    ASSERT_EQ(0, caixa.Envia(Mensagem(), r2)) << r2.erro;
    const auto nomes = PXArquivosDaPasta(pasta.caminho);
    ASSERT_EQ(2u, nomes.size()) << "no temporary file is left behind";
    EXPECT_NE(r1.resposta, r2.resposta);
    for (const auto& n : nomes) {
        EXPECT_EQ(".eml", n.substr(n.size() - 4));
        std::ifstream f(pasta.caminho + "/" + n, std::ios::binary);
        const std::string bytes((std::istreambuf_iterator<char>(f)), std::istreambuf_iterator<char>());
        const size_t corpo = bytes.find("\r\n\r\n");
        ASSERT_NE(std::string::npos, corpo);
        EXPECT_EQ(CorpoTipico(), DeQuotedPrintable(bytes.substr(corpo + 4)));
    }
    CQZTransporteCaixaSaida semPasta(pasta.caminho + "/nao_existe");
    CQZResultadoEnvio r3;
    EXPECT_EQ(QZ_E_ENVIO_EMAIL, semPasta.Envia(Mensagem(), r3));
    EXPECT_NE(std::string::npos, r3.erro.find("nao_existe"));
}

// ---- password sources ---------------------------------------------------------

TEST(QZTransporteContaTest, ThePasswordComesFromTheEnvironmentOrAnOwnerOnlyFile) {
    const std::string arquivo = ::testing::TempDir() + "pxlreg_senha_" + std::to_string(getpid());
    std::ofstream(arquivo) << "segredo\n";
    ASSERT_EQ(0, setenv("PXLREG_TESTE_SENHA", "do-ambiente", 1));
    struct Caso {
        uint8_t origem;
        std::string referencia;
        mode_t modo;
        bool ok;
        const char* senhaOuErro;
    };
    const Caso casos[] = {
        {E_GT_ORIGEM_SENHA_EMAIL_NENHUMA, "", 0600, true, ""},
        {E_GT_ORIGEM_SENHA_EMAIL_AMBIENTE, "PXLREG_TESTE_SENHA", 0600, true, "do-ambiente"},
        {E_GT_ORIGEM_SENHA_EMAIL_AMBIENTE, "PXLREG_TESTE_NAO_DEFINIDA", 0600, false, "PXLREG_TESTE_NAO_DEFINIDA"},
        {E_GT_ORIGEM_SENHA_EMAIL_ARQUIVO, arquivo, 0600, true, "segredo"},
        {E_GT_ORIGEM_SENHA_EMAIL_ARQUIVO, arquivo, 0640, false, "chmod 600"},
        {E_GT_ORIGEM_SENHA_EMAIL_ARQUIVO, arquivo + ".nao", 0600, false, "não foi possível abrir"},
        {9, "", 0600, false, "desconhecida"},
    };
    for (const auto& c : casos) {
        SCOPED_TRACE(c.referencia);
        ASSERT_EQ(0, chmod(arquivo.c_str(), c.modo));
        CQZDadosGT_ContaEmail conta;
        conta.SetOrigemSenha(c.origem).SetReferenciaSenha(CString(c.referencia));
        std::string senha = "antiga", erro;
        EXPECT_EQ(c.ok, QZLeSenhaConta(conta, senha, erro));
        if (c.ok) {
            EXPECT_EQ(c.senhaOuErro, senha);
        } else {
            EXPECT_NE(std::string::npos, erro.find(c.senhaOuErro)) << erro;
            EXPECT_EQ(std::string::npos, erro.find("segredo"));
        }
    }
    unsetenv("PXLREG_TESTE_SENHA");
    std::remove(arquivo.c_str());
}
