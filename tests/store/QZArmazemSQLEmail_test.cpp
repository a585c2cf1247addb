// The enterprise service's e-mail on the store: which account is
// configured, sending through it (to a real local SMTP server, or a
// capture), and the plan search the alert routine starts from.
#include <cstdlib>

#include "mail/QZTransporteCaptura.h"
#include "platform/QZCodigosResultado.h"
#include "tests/support/PXServidorSmtp.h"
#include "tests/support/PXTeste.h"

namespace {

CQZDadosGT_Email Email(const CString& para, const std::string& corpo, char tipo = QZ_TIPO_ANEXO_CORPO) {
    CQZDadosGT_EmailAnexo anexo;
    anexo.SetTipo(tipo);
    anexo.SetConteudo(corpo.data(), corpo.size());
    CQZDadosGT_Email email;
    email.SetAssunto("Alerta de Manutenção - Óleo");
    email.SetDestinatarios(para);
    email.SetCorpo(anexo);
    return email;
}

}  // namespace

class QZArmazemSQLEmailTest : public PXTeste {
protected:
    CQZDadosGT_ContaEmail Conta() {
        CQZDadosGT_ContaEmail c;
        c.SetUrl("smtp://127.0.0.1").SetEnderecoRemetente("alertas@empresa.com.br");
        return c;
    }
    void Grava(CQZDadosGT_ContaEmail c) { ASSERT_EQ(0, armazem.Grava(c)) << QZParaUtf8(armazem.GetErro().GetMensagem()); }
};

TEST_F(QZArmazemSQLEmailTest, AnAccountIsConfiguredWithASenderAndSomewhereToSend) {
    uint64_t id = 99;
    ASSERT_EQ(0, armazem.GetEmailContaConfigurada(&id, QZ_MODULO_GT));
    EXPECT_EQ(0u, id) << "no account stored";
    struct Caso {
        const char* nome;
        CQZDadosGT_ContaEmail conta;
        uint64_t id;
    };
    CQZDadosGT_ContaEmail semRemetente = Conta(), semUrl = Conta(), saidaSemPasta = Conta(), saida = Conta();
    semRemetente.SetEnderecoRemetente("");
    semUrl.SetUrl("");
    saidaSemPasta.SetTransporte(E_GT_TRANSPORTE_EMAIL_CAIXA_SAIDA);
    saida.SetTransporte(E_GT_TRANSPORTE_EMAIL_CAIXA_SAIDA).SetPastaSaida("/tmp");
    const Caso casos[] = {{"smtp", Conta(), 1},
                          {"no sender", semRemetente, 0},
                          {"no server", semUrl, 0},
                          {"outbox without folder", saidaSemPasta, 0},
                          {"outbox", saida, 1}};
    for (const auto& c : casos) {
        SCOPED_TRACE(c.nome);
        CQZDadosGT_ContaEmail atual;
        ASSERT_EQ(0, armazem.LeContaEmail(&atual));
        CQZDadosGT_ContaEmail nova = c.conta;
        nova.SetDmaHmsAtualizacao(atual.GetDmaHmsAtualizacao());
        Grava(nova);
        ASSERT_EQ(0, armazem.GetEmailContaConfigurada(&id, QZ_MODULO_PX));
        EXPECT_EQ(c.id, id);
    }
}

TEST_F(QZArmazemSQLEmailTest, TheAccountsSmtpServerGetsTheMessageAndTheLoginFromTheEnvironment) {
    PXServidorSmtp servidor;
    ASSERT_NE(0, servidor.Porta()) << "the local SMTP server (python3-aiosmtpd) did not start";
    ASSERT_EQ(0, setenv("PXLREG_TESTE_SMTP_SENHA", "senha-do-ambiente", 1));
    CQZDadosGT_ContaEmail conta = Conta();
    conta.SetPorta(static_cast<uint16_t>(servidor.Porta()))
        .SetUsuario("alertas")
        .SetOrigemSenha(E_GT_ORIGEM_SENHA_EMAIL_AMBIENTE)
        .SetReferenciaSenha("PXLREG_TESTE_SMTP_SENHA")
        .SetTempoLimiteSegundos(20);
    Grava(conta);
    const std::string corpo = "<p>Recurso: Compressor n\xBA 3</p>\r\n";
    ASSERT_EQ(0, armazem.EnviaEmail(Email("tecnico@empresa.com.br", corpo), nullptr, QZ_MODULO_GT, 0))
        << QZParaUtf8(armazem.GetErro().GetMensagem());
    EXPECT_EQ("250 2.0.0 Mensagem aceita", armazem.GetUltimaRespostaEmail());
    unsetenv("PXLREG_TESTE_SMTP_SENHA");
    auto r = servidor.Recebida();
    ASSERT_TRUE(r.has_value());
    EXPECT_EQ(nlohmann::json::array({"alertas", "senha-do-ambiente"}), (*r)["login"]);
    EXPECT_EQ(QZParaUtf8(CString("Alerta de Manutenção - Óleo")), (*r)["assunto"]);
    EXPECT_EQ("windows-1252", (*r)["charset"]);
}

TEST_F(QZArmazemSQLEmailTest, FailuresComeBackAsTheServicesErrorAndInTheDetails) {
    CQZTransporteCaptura captura;
    armazem.DefineTransporteEmail(&captura);
    CQZDadosGT_Erro detalhes;
    EXPECT_EQ(QZ_E_CONTA_EMAIL, armazem.EnviaEmail(Email("a@b.com", "x"), &detalhes, QZ_MODULO_GT, 0));
    EXPECT_EQ(QZ_E_CONTA_EMAIL, detalhes.GetUltimoHR());

    Grava(Conta());
    EXPECT_EQ(QZ_E_ENVIO_EMAIL, armazem.EnviaEmail(Email("a@b.com", "x", 3), &detalhes, QZ_MODULO_GT, 0));
    EXPECT_EQ(QZ_E_ENVIO_EMAIL, armazem.EnviaEmail(Email("a@b.com; c@d.com", "x"), &detalhes, QZ_MODULO_GT, 0));
    EXPECT_NE(std::string::npos, detalhes.GetMensagem().str().find("a@b.com; c@d.com"));
    EXPECT_EQ(0u, captura.Enviadas().size());

    captura.Recusa(451, "451 4.7.1 Greylisted");
    EXPECT_EQ(QZ_E_ENVIO_EMAIL, armazem.EnviaEmail(Email("a@b.com", "x"), nullptr, QZ_MODULO_GT, 0));
    EXPECT_NE(std::string::npos, armazem.GetErro().GetMensagem().str().find("451 4.7.1 Greylisted"));
    EXPECT_EQ("451 4.7.1 Greylisted", armazem.GetUltimaRespostaEmail());
    EXPECT_EQ(QZ_MODULO_CONEXAO, armazem.GetErro().GetModulo());
}

TEST_F(QZArmazemSQLEmailTest, ThePlanSearchKeepsActivePlansThatAnActiveResourceLinkNames) {
    auto plano = [&](const char* codigo, uint8_t inativo) {
        CQZDadosPX_Plano p;
        p.SetCodigo(codigo).SetNome(codigo).SetInativo(inativo);
        return PXTeste::Grava(p).GetPosicao();
    };
    const uint32_t ativoSeguido = plano("P1", 0), ativoLinkInativo = plano("P2", 0), inativoSeguido = plano("P3", 1),
                   ativoSemRecurso = plano("P4", 0), seguidoDuasVezes = plano("P5", 0);
    auto recurso = [&](std::vector<std::pair<uint32_t, uint8_t>> links) {
        CQZDadosGT_Recurso r;
        r.SetCodigo("R").SetDescricao("Recurso");
        for (auto [p, inativo] : links) {
            CQZDadosGT_RecursoPlanoManutencao l;
            l.SetPonteiroPlanoManutencao(p).SetInativo(inativo);
            r.AdicionaPlanoManutencao(l);
        }
        PXTeste::Grava(r);
    };
    recurso({{ativoSeguido, 0}, {ativoLinkInativo, 1}, {seguidoDuasVezes, 0}});
    recurso({{inativoSeguido, 0}, {seguidoDuasVezes, 0}});
    struct Caso {
        uint8_t ativo, ativoRecurso;
        std::vector<uint32_t> esperado;
    };
    const Caso casos[] = {
        {1, 1, {ativoSeguido, seguidoDuasVezes}},
        {1, 0, {ativoSeguido, ativoLinkInativo, ativoSemRecurso, seguidoDuasVezes}},
        {0, 1, {ativoSeguido, inativoSeguido, seguidoDuasVezes}},
    };
    for (const auto& c : casos) {
        CQZDadosPX_FiltroPlano filtro;
        filtro.SetAtivo(c.ativo).SetAtivoRecurso(c.ativoRecurso);
        CQZArray_deprecated<uint32_t> lista;
        ASSERT_EQ(0, armazem.BuscaPonteirosPlano(filtro, lista)) << QZParaUtf8(armazem.GetErro().GetMensagem());
        std::vector<uint32_t> obtido(lista.begin(), lista.end());
        EXPECT_EQ(c.esperado, obtido) << int(c.ativo) << int(c.ativoRecurso);
    }
}
