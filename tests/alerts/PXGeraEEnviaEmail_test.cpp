// One run of the alert routine over a real store: which alerts are taken,
// which resources are due, who is mailed and how often, what the bodies
// carry, and when the alerts are stamped.
#include <map>

#include "tests/alerts/PXAlertaTeste.h"
#include "tests/support/PXServidorSmtp.h"

namespace {

// Every placeholder, one per line, no list block: a body shows each value.
const std::string kModeloCampos =
    "tec=QZ_COD_TECNICO|QZ_NOME_TECNICO\r\n"
    "alerta=QZ_DESC_ALERTA|QZ_DETALHAMENTO_ALERTA\r\n"
    "disc=QZ_COD_DISCIPLINA|QZ_DESC_DISCIPLINA\r\n"
    "plano=QZ_COD_PLANO_MANUT|QZ_DESC_PLANO_MANUT\r\n"
    "hoje=QZ_DATA_ATUAL|QZ_DATA_HORA_ATUAL\r\n"
    "rec=QZ_COD_RECURSO|QZ_DESC_RECURSO\r\n"
    "tipo=QZ_COD_TP_RECURSO|QZ_DESC_TP_RECURSO\r\n"
    "serie=[QZ_NRO_SERIE_RECURSO]\r\n"
    "prox=QZ_DT_PROX_MANUT|QZ_DIAS_PROX_MANUT\r\n"
    "cont=QZ_CONTADOR_PROX_MANUT|QZ_UN_MED_CONTADOR\r\n"
    "filial=QZ_COD_FILIAL|QZ_IDENT_FILIAL|QZ_NOME_FANT_FILIAL|QZ_RAZAO_SOCIAL\r\n";

// A list block: one e-mail per addressee, one row per due resource.
const std::string kModeloLista =
    "<html>QZ_NOME_TECNICO\r\n"
    "<table>QZ_INICIO_LISTA<tr><th>Recurso</th></tr>\r\n"
    "  QZ_FIM_LISTA\r\n"
    " <tr><td>QZ_COD_RECURSO</td>\r\n"
    "<td>QZ_DIAS_PROX_MANUT</td></tr>\r\n"
    "</table></html>";

}  // namespace

class PXGeraEEnviaEmailTest : public PXAlertaTeste {
protected:
    void SetUp() override {
        PXAlertaTeste::SetUp();
        ConfiguraConta();
        CQZDadosGT_Filial filial;
        filial.SetCodigo(3).SetIdentificacao("MATRIZ").SetNomeFantasia("Serra Azul").SetRazaoSocial("Serra Azul Ltda.");
        m_filial = static_cast<uint16_t>(Grava(filial).GetPosicao());
        CQZDadosGT_TipoRecurso tipo;
        tipo.SetCodigo("CMP").SetDescricao("Compressor");
        m_tipo = Grava(tipo).GetPosicao();
        CQZDadosGT_UnidadeMedidaProduto hora;
        hora.SetCodigo("HR").SetQuantidadeCasasDecimais(1);
        m_unidade = Grava(hora).GetPosicao();
        CQZDadosPX_Disciplina disciplina;
        disciplina.SetCodigo("MEC").SetNome("Mecânica").SetTipoClassificacao(1);
        m_disciplina = Grava(disciplina).GetPosicao();
        modeloCampos = Arquivo("campos", kModeloCampos);
        modeloLista = Arquivo("lista", kModeloLista);
    }
    uint32_t Tecnico(const char* codigo, std::vector<const char*> emails, uint32_t pai = 0, uint8_t tipo = 1,
                     uint8_t inativo = 0) {
        CQZDadosPX_Tecnico t;
        t.SetCodigo(codigo).SetNome(CString("Técnico ") + codigo).SetPonteiroPai(pai).SetTipoClassificacao(tipo);
        t.SetInativo(inativo);
        for (const char* e : emails) t.AdicionaEmail(CQZDadosPX_TecnicoEmail().SetEndereco(e));
        return Grava(t).GetPosicao();
    }

    static CQZDadosPX_PlanoAlerta Alerta(const char* descricao, const std::string& modelo,
                                         std::vector<uint32_t> tecnicos) {
        CQZDadosPX_PlanoAlerta a;
        // Due from 10 days before the next date, not repeated.
        a.SetDescricao(descricao).SetDetalhamento("Verificar").SetModeloEmail(CString(modelo)).SetAntesApos(1);
        a.SetDias(1).SetQtdDias(CQZMoeda::DeInteiro(10));
        for (uint32_t t : tecnicos) a.AdicionaTecnicos(CQZDadosPX_PlanoAlertaTecnico().SetPonteiro(t));
        return a;
    }

    uint32_t Plano(const char* codigo, std::vector<CQZDadosPX_PlanoAlerta> alertas, uint32_t pai = 0,
                   uint8_t tipoControle = 0) {
        CQZDadosPX_Plano p;
        p.SetCodigo(codigo).SetNome(CString("Plano ") + codigo).SetPonteiroPai(pai).SetTipoClassificacao(1).SetTipo(1);
        p.SetPonteiroDisciplina(m_disciplina).SetTipoControle(tipoControle);
        for (auto& a : alertas) p.AdicionaAlerta(a);
        return Grava(p).GetPosicao();
    }

    // A resource following `plano`, next due `dias` from today with
    // `ciclos` counter cycles left.
    uint32_t Recurso(const char* codigo, uint32_t plano, int dias, const char* ciclos = "500") {
        CQZDadosGT_RecursoPlanoManutencao v;
        CQZMoeda c;
        EXPECT_TRUE(CQZMoeda::DeTexto(ciclos, c));
        v.SetPonteiroPlanoManutencao(plano).SetDataProximaManutencao(Hoje().SomaDias(dias)).SetCiclosContadorProximaManutencao(c);
        CQZDadosGT_Recurso r;
        r.SetCodigo(codigo).SetDescricao(CString("Recurso ") + codigo).SetTipoClassificacao(1).SetTipo(2);
        r.SetPonteiroFilial(m_filial).SetPonteiroTipoRecurso(m_tipo).SetPonteiroUnidadeMedidaContador(m_unidade);
        r.SetUnidadeProdutoServico('P').AdicionaPlanoManutencao(v);
        return Grava(r).GetPosicao();
    }

    static REG_QZDMA Hoje() { return REG_QZDMA(10, 3, 2026); }

    // One run as the scheduler makes it, at 10/03/2026 09:30:00.
    PXLancada Executa(long* pHr = nullptr) {
        relogio.Define(REG_QZDMAHMSUTC(10, 3, 2026, 9, 30, 0));
        CPXEmailAlertaPlano rotina;
        EXPECT_EQ(0, rotina.Inicializa(kEmpresa, 7, 42));
        bool flag = false;
        return PXCaptura([&] {
            const long hr = rotina.OnRun(flag);
            if (pHr)
                *pHr = hr;
            else
                EXPECT_EQ(0, hr);
        });
    }

    REG_QZDMAHMSUTC Carimbo(uint32_t plano, int64_t alerta) {
        CQZDadosPX_Plano p;
        EXPECT_EQ(0, armazem.LePlano(plano, &p));
        return p.GetAlerta(alerta).GetDmaHmsUltimoEnvio();
    }

    // Who got how many messages.
    std::map<std::string, int> PorDestinatario() const {
        std::map<std::string, int> m;
        for (const auto& e : captura.Enviadas()) ++m[e.mensagem.destinatario];
        return m;
    }

    std::string modeloCampos, modeloLista;
    uint16_t m_filial = 0;
    uint32_t m_tipo = 0, m_unidade = 0, m_disciplina = 0;
};

TEST_F(PXGeraEEnviaEmailTest, ABodyCarriesThePlanTheAlertTheTechnicianAndTheResourceInBrazilianForm) {
    const uint32_t t = Tecnico("T1", {"t1@empresa.com.br"});
    auto alerta = Alerta("Troca de óleo", modeloCampos, {t});
    alerta.SetAntesApos(2).SetQtdDias(CQZMoeda());
    const uint32_t plano = Plano("P1", {alerta});
    Recurso("CMP-02", plano, -5, "-12.46");
    ASSERT_FALSE(Executa().lancou);
    const auto enviadas = captura.Enviadas();
    ASSERT_EQ(1u, enviadas.size());
    EXPECT_EQ(CString("Alerta de Manutenção - Troca de óleo"), enviadas[0].mensagem.assunto);
    EXPECT_EQ("t1@empresa.com.br", enviadas[0].mensagem.destinatario);
    EXPECT_EQ(CString("tec=T1|Técnico T1\r\n"
                      "alerta=Troca de óleo|Verificar\r\n"
                      "disc=MEC|Mecânica\r\n"
                      "plano=P1|Plano P1\r\n"
                      "hoje=10/03/2026|10/03/2026 09:30:00\r\n"
                      "rec=CMP-02|Recurso CMP-02\r\n"
                      "tipo=CMP|Compressor\r\n"
                      "serie=[]\r\n"
                      "prox=05/03/2026|-5\r\n"
                      "cont=-12,5|HR\r\n"
                      "filial=3|MATRIZ|Serra Azul|Serra Azul Ltda.\r\n")
                  .str(),
              enviadas[0].mensagem.corpoHtml);
}

TEST_F(PXGeraEEnviaEmailTest, WithoutAListBlockEachDueResourceIsAnEMailAndWithOneEachAddresseeGetsOne) {
    const uint32_t t = Tecnico("T1", {"t1@empresa.com.br", "", "t1@casa.com.br"});
    const uint32_t semLista = Plano("P1", {Alerta("Sem lista", modeloCampos, {t})});
    const uint32_t comLista = Plano("P2", {Alerta("Com lista", modeloLista, {t})});
    for (uint32_t plano : {semLista, comLista}) {
        Recurso("R1", plano, 2);
        Recurso("R2", plano, -1);  // overdue: a before-alert leaves it out
        Recurso("R3", plano, 5);
        Recurso("R4", plano, 60);  // not yet within the ten days
        Recurso("R5", plano, 9);
    }
    ASSERT_FALSE(Executa().lancou);
    std::map<CString, std::vector<std::string>> corpos;
    for (const auto& e : captura.Enviadas()) corpos[e.mensagem.assunto].push_back(e.mensagem.corpoHtml);
    // Two addresses (the empty one skipped), three due resources.
    ASSERT_EQ(6u, corpos["Alerta de Manutenção - Sem lista"].size());
    EXPECT_NE(std::string::npos, corpos["Alerta de Manutenção - Sem lista"][0].find("rec=R1|"));
    EXPECT_NE(std::string::npos, corpos["Alerta de Manutenção - Sem lista"][1].find("rec=R3|"));
    EXPECT_NE(std::string::npos, corpos["Alerta de Manutenção - Sem lista"][2].find("rec=R5|"));
    ASSERT_EQ(2u, corpos["Alerta de Manutenção - Com lista"].size());
    EXPECT_EQ(CString("<html>Técnico T1\r\n"
                      "<table><tr><th>Recurso</th></tr>\r\n"
                      " <tr><td>R1</td>\r\n<td>2</td></tr>\r\n"
                      " <tr><td>R3</td>\r\n<td>5</td></tr>\r\n"
                      " <tr><td>R5</td>\r\n<td>9</td></tr>\r\n"
                      "</table></html>")
                  .str(),
              corpos["Alerta de Manutenção - Com lista"][1]);
    const auto por = PorDestinatario();
    EXPECT_EQ(4, por.at("t1@empresa.com.br"));
    EXPECT_EQ(4, por.at("t1@casa.com.br"));
}

TEST_F(PXGeraEEnviaEmailTest, ATechnicianIsMailedOncePerAlertHoweverHeIsReached) {
    // A group, a sub-group and their members; an inactive member and a
    // member of another group.
    const uint32_t grupo = Tecnico("G", {"grupo@empresa.com.br"}, 0, 2);
    const uint32_t a = Tecnico("A", {"a@empresa.com.br"}, grupo);
    const uint32_t sub = Tecnico("SUB", {}, grupo, 2);
    const uint32_t b = Tecnico("B", {"b@empresa.com.br"}, sub);
    Tecnico("INATIVO", {"inativo@empresa.com.br"}, sub, 1, 1);
    const uint32_t outro = Tecnico("OUTRO", {"outro@empresa.com.br"});
    // A directly, then through the group twice; B reached through the
    // sub-group; the same technicians again under a second alert.
    const uint32_t plano = Plano("P1", {Alerta("Um", modeloLista, {a, grupo, b, a, grupo}),
                                        Alerta("Dois", modeloLista, {outro, b, grupo})});
    Recurso("R1", plano, 1);
    ASSERT_FALSE(Executa().lancou);
    std::map<CString, std::map<std::string, int>> porAlerta;
    for (const auto& e : captura.Enviadas()) ++porAlerta[e.mensagem.assunto][e.mensagem.destinatario];
    const std::map<std::string, int> um{{"a@empresa.com.br", 1}, {"b@empresa.com.br", 1}};
    const std::map<std::string, int> dois{{"outro@empresa.com.br", 1}, {"b@empresa.com.br", 1}, {"a@empresa.com.br", 1}};
    EXPECT_EQ(um, porAlerta["Alerta de Manutenção - Um"]);
    EXPECT_EQ(dois, porAlerta["Alerta de Manutenção - Dois"]);
}

TEST_F(PXGeraEEnviaEmailTest, AnInheritedAlertMailsTheOwnPlansResourcesAndIsStampedOnTheAncestor) {
    const uint32_t t = Tecnico("T1", {"t1@empresa.com.br"});
    const uint32_t avo = Plano("AVO", {Alerta("Herdado", modeloCampos, {t})});
    const uint32_t pai = Plano("PAI", {}, avo);
    const uint32_t proprio = Plano("PROPRIO", {}, pai);
    Recurso("R1", proprio, 3);
    ASSERT_FALSE(Executa().lancou);
    const auto enviadas = captura.Enviadas();
    ASSERT_EQ(1u, enviadas.size());
    // Plan fields are the own plan's.
    EXPECT_NE(std::string::npos, enviadas[0].mensagem.corpoHtml.find("plano=PROPRIO|Plano PROPRIO"));
    EXPECT_EQ(REG_QZDMAHMSUTC(10, 3, 2026, 9, 30, 0), Carimbo(avo, 0));
}

TEST_F(PXGeraEEnviaEmailTest, AnAcceptedAlertIsStampedEvenWithNothingDueAndASentOneWaitsForItsRepeat) {
    const uint32_t t = Tecnico("T1", {"t1@empresa.com.br"});
    struct Caso {
        const char* nome;
        bool jaEnviado;
        uint8_t repetir, tipoRepeticao;
        const char* tempo;
        REG_QZDMAHMSUTC ultimo;
        bool envia;
    };
    const REG_QZDMAHMSUTC ontem(9, 3, 2026, 9, 30, 0);
    const Caso casos[] = {
        {"never sent", false, 0, 0, "0", {}, true},
        {"sent, no repeat", true, 0, 1, "1", ontem, false},
        {"a day ago, every day", true, 1, 1, "1", ontem, true},
        {"a day ago, every 25 hours", true, 1, 2, "25", ontem, false},
        {"a day ago, every 1440 minutes", true, 1, 3, "1440", ontem, true},
        {"a day ago, every 1441 minutes", true, 1, 3, "1441", ontem, false},
        {"a day ago, every 1.5 days", true, 1, 1, "1.5", ontem, false},
        {"a day ago, an unknown unit", true, 1, 9, "100", ontem, true},
        // 400000 days on, the day runs into bit 37, the sign of the
        // comparison: the far future reads as negative and never holds back.
        {"an interval into the sign bit", true, 1, 1, "400000", ontem, true},
    };
    for (const auto& c : casos) {
        SCOPED_TRACE(c.nome);
        auto alerta = Alerta(c.nome, modeloCampos, {t});
        CQZMoeda tempo;
        ASSERT_TRUE(CQZMoeda::DeTexto(c.tempo, tempo));
        alerta.SetRepetirEm(c.repetir).SetTipoRepeticao(c.tipoRepeticao).SetTempoRepeticao(tempo);
        alerta.SetDmaHmsUltimoEnvio(c.ultimo);
        auto nadaVence = Alerta("nada vence", modeloCampos, {t});
        nadaVence.SetQtdDias(CQZMoeda::DeInteiro(1));
        const uint32_t plano = Plano(c.nome, {alerta, nadaVence});
        Recurso("R1", plano, 5);
        const size_t antes = captura.Enviadas().size();
        ASSERT_FALSE(Executa().lancou);
        EXPECT_EQ(c.envia ? 1u : 0u, captura.Enviadas().size() - antes);
        EXPECT_EQ(c.envia ? REG_QZDMAHMSUTC(10, 3, 2026, 9, 30, 0) : c.ultimo, Carimbo(plano, 0));
        EXPECT_EQ(REG_QZDMAHMSUTC(10, 3, 2026, 9, 30, 0), Carimbo(plano, 1));
        // Out of the next cases' runs.
        CQZDadosPX_Plano p;
        ASSERT_EQ(0, armazem.LePlano(plano, &p));
        p.SetInativo(1);
        ASSERT_EQ(0, armazem.Atualiza(p));
    }
}

TEST_F(PXGeraEEnviaEmailTest, AMissingTemplateEndsTheRunWithoutStampsEvenOnAnInactiveAlert) {
    const uint32_t t = Tecnico("T1", {"t1@empresa.com.br"});
    for (bool inativo : {false, true}) {
        SCOPED_TRACE(inativo ? "inactive alert" : "active alert");
        const uint32_t primeiro = Plano(inativo ? "A1" : "B1", {Alerta("Antes", modeloCampos, {t})});
        auto semModelo = Alerta("Sem modelo", ::testing::TempDir() + "pxlreg_nao_ha_modelo.html", {t});
        semModelo.SetInativo(inativo ? 1 : 0);
        const uint32_t segundo = Plano(inativo ? "A2" : "B2", {Alerta("Depois", modeloCampos, {t}), semModelo});
        const uint32_t terceiro = Plano(inativo ? "A3" : "B3", {Alerta("Nunca", modeloCampos, {t})});
        for (uint32_t p : {primeiro, segundo, terceiro}) Recurso("R", p, 1);
        const size_t antes = captura.Enviadas().size();
        long hr = -1;
        ASSERT_FALSE(Executa(&hr).lancou);
        EXPECT_EQ(0, hr);
        // The first plan and the second's first alert were mailed; the third plan never reached.
        EXPECT_EQ(2u, captura.Enviadas().size() - antes);
        EXPECT_TRUE(Carimbo(primeiro, 0).EhVazio());
        EXPECT_TRUE(Carimbo(segundo, 0).EhVazio());
        for (uint32_t p : {primeiro, segundo, terceiro}) {
            CQZDadosPX_Plano plano;
            ASSERT_EQ(0, armazem.LePlano(p, &plano));
            plano.SetInativo(1);
            ASSERT_EQ(0, armazem.Atualiza(plano));
        }
    }
}

TEST_F(PXGeraEEnviaEmailTest, AFailedReadIsLoggedAndThrownWithTheServicesStatusAndNothingIsStamped) {
    const uint32_t grupo = Tecnico("G", {}, 0, 2);
    Tecnico("A", {"a@empresa.com.br"}, grupo);
    const uint32_t primeiro = Plano("P1", {Alerta("Um", modeloCampos, {grupo})});
    const uint32_t segundo = Plano("P2", {Alerta("Dois", modeloCampos, {grupo})});
    Recurso("R1", primeiro, 1);
    Recurso("R2", segundo, 1);
    const char* operacoes[] = {"LePlano", "LeDisciplina", "BuscaPonteirosRecurso", "LePonteirosRecursos",
                               "LeTipoRecurso", "LeFilial", "LeBufferUnidadeMedidaProduto", "LeTecnico",
                               "BuscaPonteirosTecnico", "LeTecnicos", "AtualizaDataHoraEnvioAlerta"};
    for (const char* operacao : operacoes) {
        SCOPED_TRACE(operacao);
        std::remove(m_log.c_str());
        ZeraChamadas();
        // The second plan's call fails (the first stamp for the stamps).
        const bool carimbo = std::string(operacao) == "AtualizaDataHoraEnvioAlerta";
        falhas.FalhaEm(operacao, carimbo ? 1 : 2, QZ_E_BANCO_OCUPADO, "Banco ocupado.");
        const PXLancada l = Executa();
        ASSERT_TRUE(l.lancou);
        EXPECT_EQ(QZ_E_BANCO_OCUPADO, l.codigo);
        EXPECT_EQ(1111, l.id);
        const std::string texto = std::string("Banco ocupado. (") + operacao + ")";
        EXPECT_EQ(CString(texto), l.descricao);
        EXPECT_TRUE(Carimbo(primeiro, 0).EhVazio());
        EXPECT_TRUE(Carimbo(segundo, 0).EhVazio());
        const auto linhas = LinhasLog();
        ASSERT_FALSE(linhas.empty());
        EXPECT_EQ(texto, linhas[0]["mensagem"]);
    }
}

TEST_F(PXGeraEEnviaEmailTest, ASendingThatFailsLeavesWhatWasSentAndStampsNothing) {
    const uint32_t t = Tecnico("T1", {"t1@empresa.com.br", "t1@casa.com.br"});
    const uint32_t plano = Plano("P1", {Alerta("Um", modeloCampos, {t})});
    Recurso("R1", plano, 1);
    Recurso("R2", plano, 2);
    captura.Recusa(554, "554 5.7.1 Recusado", 3);
    const PXLancada l = Executa();
    ASSERT_TRUE(l.lancou);
    EXPECT_EQ(1111, l.id);
    EXPECT_EQ(2u, captura.Enviadas().size());
    EXPECT_TRUE(Carimbo(plano, 0).EhVazio());
    // The delivery log holds the two sent and the refused one.
    std::vector<int64_t> chaves;
    ASSERT_EQ(0, armazem.ListaChaves<CQZDadosGT_EnvioEmail>(chaves));
    ASSERT_EQ(3u, chaves.size());
    CQZDadosGT_EnvioEmail recusado;
    ASSERT_EQ(0, armazem.LeRegistro(chaves[2], recusado));
    EXPECT_EQ(E_GT_SITUACAO_ENVIO_EMAIL_FALHOU, recusado.GetSituacao());
    // Each address gets both lines before the next address.
    EXPECT_EQ(CString("t1@casa.com.br"), recusado.GetEndereco());
    EXPECT_EQ(plano, recusado.GetPonteiroPlano());
    EXPECT_EQ(t, recusado.GetPonteiroTecnico());
}

TEST_F(PXGeraEEnviaEmailTest, AtLeastOnceAgainstARealServerThatRefusesTheThirdMessage) {
    fabrica->DefineTransporteEmail(nullptr);
    PXServidorSmtp servidor({"--recusa-data", "451 4.3.0 Tente mais tarde", "--recusa-so-a", "3"});
    ASSERT_NE(0, servidor.Porta()) << "the local SMTP server (python3-aiosmtpd) did not start";
    CQZDadosGT_ContaEmail conta;
    ASSERT_EQ(0, armazem.LeContaEmail(&conta));
    conta.SetUrl(CString(servidor.Url())).SetTempoLimiteSegundos(20);
    ASSERT_EQ(0, armazem.Grava(conta));
    const uint32_t a = Tecnico("A", {"a@empresa.com.br"});
    const uint32_t b = Tecnico("B", {"b@empresa.com.br"});
    const uint32_t plano = Plano("P1", {Alerta("Um", modeloLista, {a, b}), Alerta("Dois", modeloLista, {a, b})});
    Recurso("R1", plano, 1);

    const PXLancada primeira = Executa();
    ASSERT_TRUE(primeira.lancou);
    EXPECT_EQ(static_cast<long>(static_cast<int32_t>(0x80040A64u)), primeira.codigo);
    EXPECT_TRUE(Carimbo(plano, 0).EhVazio());
    EXPECT_TRUE(Carimbo(plano, 1).EhVazio());
    ASSERT_FALSE(Executa().lancou);
    EXPECT_FALSE(Carimbo(plano, 0).EhVazio());
    EXPECT_FALSE(Carimbo(plano, 1).EhVazio());
    // A third run sends nothing: neither alert repeats.
    ASSERT_FALSE(Executa().lancou);
    std::vector<std::string> recebidas;
    for (const auto& m : servidor.Encerra()) recebidas.push_back(m["para"][0].get<std::string>());
    // Two before the refusal, then all four again.
    EXPECT_EQ((std::vector<std::string>{"a@empresa.com.br", "b@empresa.com.br", "a@empresa.com.br", "b@empresa.com.br",
                                        "a@empresa.com.br", "b@empresa.com.br"}),
              recebidas);
}

TEST_F(PXGeraEEnviaEmailTest, TheStampsOfARunAreWrittenAllOrNone) {
    const uint32_t t = Tecnico("T1", {"t1@empresa.com.br"});
    const uint32_t plano = Plano("P1", {Alerta("Um", modeloLista, {t}), Alerta("Dois", modeloLista, {t})});
    Recurso("R1", plano, 1);
    struct Caso {
        const char* operacao;
        long chamada;
    };
    // The second stamp, the transaction's start, its commit.
    const Caso casos[] = {{"AtualizaDataHoraEnvioAlerta", 2}, {"IniciaEscrita", 1}, {"ConfirmaEscrita", 1}};
    for (const auto& c : casos) {
        SCOPED_TRACE(c.operacao);
        ZeraChamadas();
        falhas.FalhaEm(c.operacao, c.chamada, QZ_E_BANCO_OCUPADO, "Banco ocupado.");
        const PXLancada l = Executa();
        ASSERT_TRUE(l.lancou);
        EXPECT_EQ(QZ_E_BANCO_OCUPADO, l.codigo);
        EXPECT_EQ(1111, l.id);
        EXPECT_EQ(CString(std::string("Banco ocupado. (") + c.operacao + ")"), l.descricao);
        EXPECT_TRUE(Carimbo(plano, 0).EhVazio());
        EXPECT_TRUE(Carimbo(plano, 1).EhVazio());
    }
    ZeraChamadas();
    ASSERT_FALSE(Executa().lancou);
    EXPECT_EQ(REG_QZDMAHMSUTC(10, 3, 2026, 9, 30, 0), Carimbo(plano, 0));
    EXPECT_EQ(REG_QZDMAHMSUTC(10, 3, 2026, 9, 30, 0), Carimbo(plano, 1));
    EXPECT_EQ(8u, captura.Enviadas().size()) << "two for each of the four runs";
}

TEST_F(PXGeraEEnviaEmailTest, MessagesGoInBatchesAndARefusalEndsTheRunWhereverItFalls) {
    // One address more than a batch holds: two batches of one list e-mail each.
    constexpr size_t n = CPXLoteEmails::kMaximoEmails + 1;
    CQZDadosPX_Tecnico tecnico;
    tecnico.SetCodigo("T1").SetNome("Técnico").SetTipoClassificacao(1);
    for (size_t i = 0; i < n; ++i)
        tecnico.AdicionaEmail(CQZDadosPX_TecnicoEmail().SetEndereco(CString::Formatado("t%zu@empresa.com.br", i)));
    const uint32_t t = Grava(tecnico).GetPosicao();
    const uint32_t plano = Plano("P1", {Alerta("Um", modeloLista, {t})});
    Recurso("R1", plano, 1);
    struct Caso {
        const char* nome;
        size_t recusaDesde;  // 1-based; 0: none
        long lotes;          // batches handed to the service
        size_t tentativas;   // messages the transport saw
    };
    // The run that succeeds stamps the alert, and so comes last.
    const Caso casos[] = {
        {"refused in the first batch", 3, 1, 3},
        {"refused in the second", n, 2, n},
        {"none refused", 0, 2, n},
    };
    for (const auto& c : casos) {
        SCOPED_TRACE(c.nome);
        ZeraChamadas();
        CQZTransporteCaptura transporte;
        if (c.recusaDesde) transporte.Recusa(554, "554 5.7.1 Recusado", c.recusaDesde);
        fabrica->DefineTransporteEmail(&transporte);
        std::vector<int64_t> chaves;
        ASSERT_EQ(0, armazem.ListaChaves<CQZDadosGT_EnvioEmail>(chaves));
        const size_t linhasAntes = chaves.size();
        const PXLancada l = Executa();
        EXPECT_EQ(c.recusaDesde != 0, l.lancou);
        EXPECT_EQ(c.lotes, falhas.Chamadas("EnviaEmails"));
        EXPECT_EQ(c.tentativas, transporte.Tentativas());
        EXPECT_EQ(c.recusaDesde ? c.recusaDesde - 1 : n, transporte.Enviadas().size());
        EXPECT_EQ(c.recusaDesde == 0, !Carimbo(plano, 0).EhVazio());
        // One log line per message the transport saw, none for the rest.
        ASSERT_EQ(0, armazem.ListaChaves<CQZDadosGT_EnvioEmail>(chaves));
        EXPECT_EQ(c.tentativas, chaves.size() - linhasAntes);
    }
    fabrica->DefineTransporteEmail(&captura);
}
