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

namespace {

// Hands messages to a capture, and first writes down what another
// connection sees of the delivery log at that moment: one digit per line
// (its situation), lines after key `depois`.
class TransporteQueLeOLog : public IQZTransporteEmail {
public:
    TransporteQueLeOLog(CQZTransporteCaptura& captura, CQZArmazemSQL& outra) : m_captura(captura), m_outra(outra) {}
    long Envia(const CQZMensagemEmail& mensagem, CQZResultadoEnvio& resultado) override {
        vistos.push_back(Situacoes(m_outra, depois));
        return m_captura.Envia(mensagem, resultado);
    }
    static std::string Situacoes(CQZArmazemSQL& armazem, int64_t depois) {
        std::vector<int64_t> chaves;
        if (armazem.ListaChaves<CQZDadosGT_EnvioEmail>(chaves) != 0) return "?";
        std::string s;
        for (int64_t chave : chaves) {
            CQZDadosGT_EnvioEmail e;
            if (chave <= depois) continue;
            if (armazem.LeRegistro(chave, e) != 0) return "?";
            s += static_cast<char>('0' + e.GetSituacao());
        }
        return s;
    }
    int64_t depois = 0;
    std::vector<std::string> vistos;

private:
    CQZTransporteCaptura& m_captura;
    CQZArmazemSQL& m_outra;
};

}  // namespace

TEST_F(QZArmazemSQLEmailTest, ABatchIsLoggedPendingBeforeTheHandOverAndSettledAfterUpToTheFirstRefusal) {
    Grava(Conta());
    CQZDadosGT_Erro erro;
    auto outra = fabrica->AbreArmazem(erro);
    ASSERT_TRUE(outra) << QZParaUtf8(erro.GetMensagem());
    struct Caso {
        const char* nome;
        size_t mensagens;
        size_t recusaDesde;  // 1-based; 0: none
        long falhaEm;        // the hook stops the batch before this message (1-based; 0: never)
        long hr;
        int64_t tratadas;
        std::string depois;  // the lines after the batch, one digit per situation
    };
    const Caso casos[] = {
        {"all sent", 3, 0, 0, 0, 3, "111"},
        {"the second refused", 3, 2, 0, QZ_E_ENVIO_EMAIL, 2, "12"},
        {"the first refused", 3, 1, 0, QZ_E_ENVIO_EMAIL, 1, "2"},
        {"stopped before the third", 3, 0, 3, QZ_E_BANCO_OCUPADO, 2, "11"},
        {"an empty batch", 0, 0, 0, 0, 0, ""},
    };
    for (const auto& c : casos) {
        SCOPED_TRACE(c.nome);
        CQZTransporteCaptura captura;
        if (c.recusaDesde) captura.Recusa(554, "554 5.7.1 Recusado", c.recusaDesde);
        falhas.Limpa();
        falhas.ZeraContagem();
        if (c.falhaEm) falhas.FalhaEm("EnviaEmail", c.falhaEm, QZ_E_BANCO_OCUPADO, "Banco ocupado.");
        TransporteQueLeOLog transporte(captura, *outra);
        armazem.DefineTransporteEmail(&transporte);
        std::vector<int64_t> chaves;
        ASSERT_EQ(0, armazem.ListaChaves<CQZDadosGT_EnvioEmail>(chaves));
        transporte.depois = chaves.empty() ? 0 : chaves.back();

        CQZVector<CQZDadosGT_Email> lote;
        for (size_t i = 0; i < c.mensagens; ++i) {
            lote.push_back(Email(CString::Formatado("t%zu@empresa.com.br", i), "corpo"));
            lote.back().SetOrigem(CQZOrigemEmail{7, static_cast<uint32_t>(i), 40 + static_cast<uint32_t>(i)});
        }
        int64_t tratadas = -1;
        CQZDadosGT_Erro detalhes;
        EXPECT_EQ(c.hr, armazem.EnviaEmails(lote, &tratadas, &detalhes, QZ_MODULO_GT, 0));
        EXPECT_EQ(c.tratadas, tratadas);
        EXPECT_EQ(c.hr, detalhes.GetUltimoHR());
        // At every hand-over the whole batch was already in the log, pending.
        EXPECT_EQ(std::vector<std::string>(static_cast<size_t>(c.tratadas), std::string(c.mensagens, '3')),
                  transporte.vistos);
        EXPECT_EQ(c.depois, TransporteQueLeOLog::Situacoes(*outra, transporte.depois));
        ASSERT_EQ(0, armazem.ListaChaves<CQZDadosGT_EnvioEmail>(chaves));
        for (int64_t chave : chaves) {
            if (chave <= transporte.depois) continue;
            CQZDadosGT_EnvioEmail e;
            ASSERT_EQ(0, armazem.LeRegistro(chave, e));
            const uint32_t i = e.GetIndiceAlerta();
            EXPECT_EQ(CString::Formatado("t%u@empresa.com.br", i), e.GetEndereco());
            EXPECT_EQ(7u, e.GetPonteiroPlano());
            EXPECT_EQ(40 + i, e.GetPonteiroTecnico());
            EXPECT_EQ(e.GetSituacao() == E_GT_SITUACAO_ENVIO_EMAIL_ENVIADO ? "250 aceita" : "554 5.7.1 Recusado",
                      e.GetRespostaTransporte().str());
        }
    }
    armazem.DefineTransporteEmail(nullptr);
}
