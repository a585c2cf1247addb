// The alert routine as the scheduler drives it: its interval, its abort
// convention, the first steps of a run, reading templates and handing
// e-mails to the enterprise service.
#include "platform/QZCaixaMensagem.h"
#include "tests/alerts/PXAlertaTeste.h"

namespace {

// An exception whose deletion the test can see.
class ExcecaoVigiada : public CException {
public:
    explicit ExcecaoVigiada(bool& apagada) : m_apagada(apagada) {}
    ~ExcecaoVigiada() override { m_apagada = true; }
    CString GetMensagem() const override { return "texto interno da exceção"; }

private:
    bool& m_apagada;
};

class CaixaCapturada : public IQZCaixaMensagem {
public:
    int Mostra(const CString& texto, const CString&, QZBotoesCaixa b) override {
        textos.push_back(texto);
        botoes.push_back(b);
        return 1;
    }
    std::vector<CString> textos;
    std::vector<QZBotoesCaixa> botoes;
};

}  // namespace

class PXEmailAlertaPlanoTest : public PXAlertaTeste {};

TEST_F(PXEmailAlertaPlanoTest, TheIntervalIsFiveMinutesWhateverTheState) {
    CPXEmailAlertaPlano rotina;
    int intervalo = 0;
    EXPECT_EQ(0, rotina.OnGetIntervalo(&intervalo));
    EXPECT_EQ(300000, intervalo);
    Inicializa(rotina);
    intervalo = 0;
    EXPECT_EQ(0, rotina.OnGetIntervalo(&intervalo));
    EXPECT_EQ(300000, intervalo);
}

TEST_F(PXEmailAlertaPlanoTest, AbortFollowsItsFourSteps) {
    struct Caso {
        const char* nome;
        long codigo;
        int id;
        const char* mensagem;
        bool comExcecao;
        bool lanca;
        long idLancado;
    };
    const Caso casos[] = {
        {"code 0 does nothing", 0, 1111, "Mensagem de teste", false, false, 0},
        {"code 0 with an exception does nothing", 0, 1111, "Mensagem de teste", true, false, 0},
        {"plain abort", static_cast<long>(0x80040A64), 1111, "Falha ao enviar e-mail.", false, true, 1111},
        {"id 999999 is thrown as 0", 77, 999999, "Mensagem longa o bastante", false, true, 0},
        {"an exception's text reaches nothing", 55, 1113, "Falha ao ler o modelo de e-mail", true, true, 1113},
        {"a short message keeps its terminator", 55, 12, "Curta", true, true, 12},
    };
    for (const auto& c : casos) {
        SCOPED_TRACE(c.nome);
        std::remove(m_log.c_str());
        CPXEmailAlertaPlano rotina;
        Inicializa(rotina);
        char mensagem[128];
        std::snprintf(mensagem, sizeof mensagem, "%s", c.mensagem);
        bool apagada = false;
        auto* excecao = c.comExcecao ? new ExcecaoVigiada(apagada) : nullptr;
        const PXLancada l = PXCaptura([&] { rotina.AbortaExecucao(c.codigo, mensagem, c.id, excecao); });
        EXPECT_EQ(c.lanca, l.lancou);
        EXPECT_STREQ(c.mensagem, mensagem);
        const auto linhas = LinhasLog();
        if (!c.lanca) {
            EXPECT_TRUE(linhas.empty());
            if (excecao) {
                // Nothing is done with it, deleting included: it is still the caller's.
                EXPECT_FALSE(apagada);
                delete excecao;
            }
            continue;
        }
        EXPECT_EQ(c.codigo, l.codigo);
        EXPECT_EQ(c.idLancado, l.id);
        EXPECT_EQ(0, l.valor);
        EXPECT_TRUE(l.titulo.IsEmpty());
        EXPECT_EQ(CString(c.mensagem), l.descricao);
        EXPECT_EQ(CString("PXEmailAlertaPlano"), l.origem);
        EXPECT_EQ(112, l.modulo);
        ASSERT_EQ(1u, linhas.size());
        EXPECT_EQ(QZParaUtf8(c.mensagem), linhas[0]["mensagem"]);
        EXPECT_EQ(1, linhas[0]["tipo"]);
        EXPECT_EQ(4, linhas[0]["nivel"]);
        EXPECT_EQ("PXEmailAlertaPlano", linhas[0]["rotina"]);
        EXPECT_EQ("2026-03-10T09:30:00", linhas[0]["quando"]);
        if (c.comExcecao) {
            EXPECT_TRUE(apagada);
        }
        EXPECT_EQ(std::string::npos, linhas[0].dump().find("interna"));
    }
}

TEST_F(PXEmailAlertaPlanoTest, ConfigShowsWhereAlertsAreConfiguredAndTouchesNoData) {
    CaixaCapturada caixa;
    QZDefineCaixaMensagem(&caixa);
    ZeraChamadas();
    EXPECT_EQ(0, PXEmailAlertaPlano_Config());
    EXPECT_EQ(0, PXEmailAlertaPlano_Config());
    QZDefineCaixaMensagem(nullptr);
    ASSERT_EQ(2u, caixa.textos.size());
    EXPECT_EQ(CString("A configuração deve ser feita no Cadastro de Planos do Navor Manutenção."), caixa.textos[0]);
    EXPECT_EQ(QZ_MB_OK, caixa.botoes[0]);
    EXPECT_EQ(0, falhas.TotalChamadas());
}

TEST_F(PXEmailAlertaPlanoTest, WithoutAnAccountTheRunLogsAndThrowsAndReadsNoPlan) {
    CPXEmailAlertaPlano rotina;
    Inicializa(rotina);
    ZeraChamadas();
    bool flag = true;
    const PXLancada l = PXCaptura([&] { rotina.OnRun(flag); });
    ASSERT_TRUE(l.lancou);
    EXPECT_EQ(static_cast<long>(static_cast<int32_t>(0x80040A68u)), l.codigo);
    EXPECT_EQ(1110, l.id);
    EXPECT_EQ(CString("Nenhuma conta de e-mail configurada. Para enviar o e-mail é necessário configurar uma conta de "
                      "e-mail nas propriedades do Gestavo, no Cadastro de Usuários ou no Cadastro de Empresas e Filiais"),
              l.descricao);
    EXPECT_TRUE(flag);
    EXPECT_EQ(0, falhas.Chamadas("BuscaPonteirosPlano"));
    const auto linhas = LinhasLog();
    ASSERT_EQ(1u, linhas.size());
    EXPECT_EQ(QZParaUtf8(l.descricao), linhas[0]["mensagem"]);
    EXPECT_EQ("EMPRESA01", linhas[0]["empresa"]);
    EXPECT_EQ(42, linhas[0]["sessao"]);
}

TEST_F(PXEmailAlertaPlanoTest, AFailedAccountQueryOrPlanSearchEndsTheRunQuietlyWithItsStatus) {
    ConfiguraConta();
    struct Caso {
        const char* operacao;
        long hr;
        long planos;  // plan searches made
    };
    const Caso casos[] = {
        {"GetEmailContaConfigurada", QZ_E_BANCO, 0},
        {"BuscaPonteirosPlano", QZ_E_BANCO_OCUPADO, 1},
        {"BuscaPonteirosPlano", 1, 1},  // a positive status ends the run too
    };
    for (const auto& c : casos) {
        SCOPED_TRACE(c.operacao);
        CPXEmailAlertaPlano rotina;
        Inicializa(rotina);
        ZeraChamadas();
        falhas.FalhaEm(c.operacao, 0, c.hr);
        bool flag = false;
        long hr = 0;
        const PXLancada l = PXCaptura([&] { hr = rotina.OnRun(flag); });
        EXPECT_FALSE(l.lancou);
        EXPECT_EQ(c.hr, hr);
        EXPECT_EQ(c.planos, falhas.Chamadas("BuscaPonteirosPlano"));
        EXPECT_TRUE(LinhasLog().empty());
    }
}

TEST_F(PXEmailAlertaPlanoTest, SendingPackagesTheBodyAsItIs) {
    ConfiguraConta();
    CPXEmailAlertaPlano rotina;
    Inicializa(rotina);
    const std::string bytes = std::string("<p>Ol\xE1, t\xE9" "cnico</p>\r\n.\r\n") + std::string(1, '\0') + "=fim";
    struct Caso {
        std::string corpo;
        CString assunto;
    };
    const Caso casos[] = {{bytes, "Alerta de Manutenção - Troca de óleo"}, {"", "Alerta de Manutenção - "}};
    for (const auto& c : casos) {
        CString corpo(c.corpo);
        EXPECT_EQ(0, rotina.EnviaEmail("tecnico@empresa.com.br", corpo, c.assunto));
    }
    const auto enviadas = captura.Enviadas();
    ASSERT_EQ(2u, enviadas.size());
    for (size_t i = 0; i < 2; ++i) {
        EXPECT_EQ(casos[i].corpo, enviadas[i].mensagem.corpoHtml);
        EXPECT_EQ(casos[i].assunto, enviadas[i].mensagem.assunto);
        EXPECT_EQ("tecnico@empresa.com.br", enviadas[i].mensagem.destinatario);
        EXPECT_EQ("alertas@empresa.com.br", enviadas[i].mensagem.remetente);
    }
    EXPECT_TRUE(LinhasLog().empty());
}

TEST_F(PXEmailAlertaPlanoTest, AFailedSendingIsLoggedAndThrownAndAPositiveStatusReturned) {
    ConfiguraConta();
    CPXEmailAlertaPlano rotina;
    Inicializa(rotina);
    CString corpo("<p>x</p>");
    captura.Recusa(554, "554 5.7.1 recusada");
    const PXLancada recusada = PXCaptura([&] { rotina.EnviaEmail("a@b.com", corpo, "Alerta de Manutenção - X"); });
    ASSERT_TRUE(recusada.lancou);
    EXPECT_EQ(static_cast<long>(static_cast<int32_t>(0x80040A64u)), recusada.codigo);
    EXPECT_EQ(1111, recusada.id);
    EXPECT_EQ(CString("Falha ao enviar e-mail."), recusada.descricao);
    auto linhas = LinhasLog();
    ASSERT_EQ(1u, linhas.size());
    EXPECT_EQ("Falha ao enviar e-mail.", linhas[0]["mensagem"]);

    falhas.FalhaEm("EnviaEmail", 0, 1);
    long hr = 0;
    EXPECT_FALSE(PXCaptura([&] { hr = rotina.EnviaEmail("a@b.com", corpo, "Alerta de Manutenção - X"); }).lancou);
    EXPECT_EQ(1, hr);
    EXPECT_EQ(1u, LinhasLog().size());
}

TEST_F(PXEmailAlertaPlanoTest, WithoutAnAccountSendingIsAFailure) {
    CPXEmailAlertaPlano rotina;
    Inicializa(rotina);
    CString corpo("x");
    const PXLancada l = PXCaptura([&] { rotina.EnviaEmail("a@b.com", corpo, "s"); });
    EXPECT_TRUE(l.lancou);
    EXPECT_EQ(1111, l.id);
    EXPECT_EQ(0u, captura.Tentativas());
}

TEST_F(PXEmailAlertaPlanoTest, ATemplateIsReadByteForByte) {
    const char kBruto[] = "<html>\r\nQZ_COD_RECURSO \xE9\0\n\r";
    const std::string conteudo(kBruto, sizeof kBruto - 1);
    for (const std::string& c : {conteudo, std::string()}) {
        CPXEmailAlertaPlano rotina;
        CString modelo("lixo anterior");
        EXPECT_EQ(0, rotina.LeModeloEmail(Arquivo("modelo", c).c_str(), modelo));
        EXPECT_EQ(c, modelo.str());
    }
    EXPECT_TRUE(LinhasLog().empty());
}

TEST_F(PXEmailAlertaPlanoTest, ATemplateThatCannotBeOpenedOrReadIsLoggedAndThrown) {
    struct Caso {
        std::string caminho;
        long codigo;
        long id;
        const char* texto;
    };
    const Caso casos[] = {
        {::testing::TempDir() + "pxlreg_nao_existe/modelo.html", static_cast<long>(static_cast<int32_t>(0x80040A66u)),
         1112, "Falha ao abrir arquivo modelo de e-mail"},
        // A folder opens for reading and has nothing to read.
        {::testing::TempDir(), static_cast<long>(static_cast<int32_t>(0x80040A65u)), 1113,
         "Falha ao ler o modelo de e-mail"},
    };
    for (const auto& c : casos) {
        SCOPED_TRACE(c.caminho);
        std::remove(m_log.c_str());
        CPXEmailAlertaPlano rotina;
        CString modelo;
        const PXLancada l = PXCaptura([&] { rotina.LeModeloEmail(c.caminho.c_str(), modelo); });
        ASSERT_TRUE(l.lancou);
        EXPECT_EQ(c.codigo, l.codigo);
        EXPECT_EQ(c.id, l.id);
        EXPECT_EQ(CString(c.texto), l.descricao);
        const auto linhas = LinhasLog();
        ASSERT_EQ(1u, linhas.size());
        EXPECT_EQ(c.texto, linhas[0]["mensagem"]);
    }
}

TEST_F(PXEmailAlertaPlanoTest, OnlyATemplateThatIsNotThereIsMissing) {
    const std::string arquivo = Arquivo("existe", "x");
    struct Caso {
        std::string caminho;
        bool existe;
    };
    const Caso casos[] = {
        {arquivo, true},
        {::testing::TempDir(), true},  // a folder: open fails with EISDIR, which is not "not found"
        {"/dev/null", true},
        {::testing::TempDir() + "pxlreg_nada_aqui.html", false},
        {::testing::TempDir() + "pxlreg_pasta_nada/x.html", false},
        {arquivo + "/dentro.html", false},  // ENOTDIR: path not found
    };
    for (const auto& c : casos) EXPECT_EQ(c.existe, CPXEmailAlertaPlano::ModeloEmailExiste(c.caminho.c_str())) << c.caminho;
}
