#include <cstring>
#include <functional>

#include "platform/QZCodigosResultado.h"
#include "rules/PXTrataDados.h"
#include "tests/support/PXTeste.h"

namespace {

REG_QZDMAHMSUTC Instante(int dia, int mes, int ano, int hora = 12, int minuto = 0, int segundo = 0) {
    return REG_QZDMAHMSUTC(dia, mes, ano, hora, minuto, segundo);
}

_REG_POSICAO_PRODUTOPS Chave(uint32_t item, uint16_t grade1 = 0, uint16_t grade2 = 0, uint16_t grade3 = 0) {
    _REG_POSICAO_PRODUTOPS k;
    k.lPonteiroProduto = item;
    k.usPonteiroGrade1 = grade1;
    k.usPonteiroGrade2 = grade2;
    k.usPonteiroGrade3 = grade3;
    return k;
}

CQZDadosGT_ProdutoEx Produto(const char* codigo, uint8_t kit, uint16_t grade1, uint16_t grade2) {
    CQZDadosGT_Produto dados;
    dados.SetKit(kit).SetPonteiroGrade1(grade1).SetPonteiroGrade2(grade2);
    CQZDadosGT_ProdutoEx p;
    p.SetDadosProduto(dados).SetCodigoSPED(codigo).SetNomeCompleto(CString("Produto ") + codigo);
    return p;
}

CQZDadosPX_Situacao Situacao(const char* codigo, const char* descricao, uint8_t inativo) {
    CQZDadosPX_Situacao s;
    s.SetCodigo(codigo).SetDescricao(descricao).SetTipo(1).SetSituacaoBase(2).SetInativo(inativo);
    return s;
}

}  // namespace

class PXTrataDadosVerificacoesTest : public PXTeste {
protected:
    void SetUp() override {
        PXTeste::SetUp();
        Inicializa(h);

        CQZDadosGT_PeriodoContabil periodo;
        periodo.SetMesBloqueio(REG_QZMA(12, 2025))
            .SetDataInferiorIntegracao(REG_QZDMA(10, 1, 2026))
            .SetDataSuperiorIntegracao(REG_QZDMA(30, 6, 2026))
            .SetDataInferiorMovimentacao(REG_QZDMA(20, 2, 2026))
            .SetDataSuperiorMovimentacao(REG_QZDMA(10, 5, 2026));
        Grava(periodo);

        CQZDadosGT_Filial filial;
        filial.SetCodigo(1).SetNomeFantasia("Matriz").SetMesBloqueioIntegracao(REG_QZMA(3, 2026));
        ponteiroFilial = static_cast<uint16_t>(Grava(filial).GetPosicao());

        simples = Grava(Produto("SIMPLES", 0, 0, 0)).GetPosicao();
        comGrade1 = Grava(Produto("GRADE1", 0, 5, 0)).GetPosicao();
        comGrades = Grava(Produto("GRADE12", 0, 5, 6)).GetPosicao();
        kit = Grava(Produto("KIT", 1, 5, 6)).GetPosicao();

        CQZDadosGT_Servico servico;
        servico.SetCodigo("SV1").SetNome("Lubrificação");
        ponteiroServico = Grava(servico).GetPosicao();

        ativa = Grava(Situacao("AB", "Aberta na oficina", 0));
        inativa = Grava(Situacao("VELHA", "Situação desativada", 1));

        CQZDadosGT_Usuario usuario;
        usuario.SetLogin("ana").SetNome("Ana Souza");
        usuario.SetPosicao(7);
        usuarioAna = Grava(usuario);
        ZeraChamadas();
    }

    // Message `mensagem` on `campo`, or no error when it is 0.
    void EsperaVeredito(long mensagem, long campo, const char* caso) {
        if (mensagem)
            EXPECT_THAT(h.GetErro(), TemMensagem(QZ_MODULO_PX, mensagem, campo)) << caso;
        else
            EXPECT_THAT(h.GetErro(), SemErro()) << caso;
    }

    // A verdict left by an earlier check, to see whether a call clears it.
    void DeixaVeredito() { h.SetAviso(QZ_MODULO_PX, 999, 9); }

    void EsperaRastro(const char* funcao, const char* linha, const char* expressao) {
        auto regs = rastro.Registros();
        ASSERT_EQ(regs.size(), 1u);
        EXPECT_EQ(regs[0].funcao, funcao);
        EXPECT_EQ(regs[0].chaves["Arquivo"], "PXTrataDados");
        EXPECT_EQ(regs[0].chaves["Linha"], linha);
        EXPECT_EQ(regs[0].chaves["Log"].Left(static_cast<int>(strlen(expressao)) + 6), CString("hr = ") + expressao + "\t");
    }

    CPXTrataDados h;
    uint16_t ponteiroFilial = 0;
    uint32_t simples = 0, comGrade1 = 0, comGrades = 0, kit = 0, ponteiroServico = 0;
    CQZDadosPX_Situacao ativa, inativa;
    CQZDadosGT_Usuario usuarioAna;
};

// ---- integration period ----------------------------------------------------

TEST_F(PXTrataDadosVerificacoesTest, IntegrationPeriodBoundaries) {
    // Branch lock 03/2026; period lock 12/2025; integration 10/01/2026 to 30/06/2026.
    struct Caso {
        const char* nome;
        REG_QZDMAHMSUTC data;
        bool comFilial;
        long mensagem;  // 0: passes
    } casos[] = {
        {"branch lock month itself", Instante(31, 3, 2026, 23, 59, 59), true, 184},
        {"month after the branch lock", Instante(1, 4, 2026, 0, 0, 0), true, 0},
        {"earlier year, later month than the branch lock", Instante(15, 12, 2025), true, 184},
        {"no branch: branch lock not applied", Instante(15, 3, 2026), false, 0},
        {"period lock month itself", Instante(31, 12, 2025), false, 185},
        {"month after the period lock, before the lower bound", Instante(9, 1, 2026, 23, 59, 59), false, 186},
        {"lower bound inclusive", Instante(10, 1, 2026, 0, 0, 0), false, 0},
        {"upper bound inclusive", Instante(30, 6, 2026, 23, 59, 59), false, 0},
        {"day after the upper bound", Instante(1, 7, 2026, 0, 0, 0), false, 186},
        {"upper bound through the branch", Instante(30, 6, 2026), true, 0},
        {"after the upper bound through the branch", Instante(1, 7, 2026), true, 186},
    };
    for (const auto& c : casos) {
        h.LimpaErro();
        h.VerificaPeriodoIntegracao(c.data, c.comFilial ? ponteiroFilial : 0, 85);
        EsperaVeredito(c.mensagem, 85, c.nome);
    }
}

TEST_F(PXTrataDadosVerificacoesTest, IntegrationCheckKeepsAnEarlierVerdictAndSkipsBranchZero) {
    DeixaVeredito();
    h.VerificaPeriodoIntegracao(Instante(15, 3, 2026), 0, 85);
    EXPECT_THAT(h.GetErro(), TemMensagem(QZ_MODULO_PX, 999, 9));
    EXPECT_EQ(falhas.Chamadas("LeBufferFilial"), 0);
    EXPECT_EQ(falhas.Chamadas("LePeriodoContabil"), 1);
}

TEST_F(PXTrataDadosVerificacoesTest, UnknownBranchIsAServiceError) {
    h.VerificaPeriodoIntegracao(Instante(15, 4, 2026), 4321, 85);
    EXPECT_THAT(h.GetErro(), TemFalhaServico(QZ_E_REGISTRO_NAO_ENCONTRADO, 0));
}

// ---- movement period --------------------------------------------------------

TEST_F(PXTrataDadosVerificacoesTest, MovementPeriodComparesWholeMonthsAndRefusesInvalidDates) {
    // Movement period 20/02/2026 to 10/05/2026.
    struct Caso {
        const char* nome;
        REG_QZDMA data;
        long mensagem;
    } casos[] = {
        {"packed 0", REG_QZDMA(0u), 129},
        {"packed 1", REG_QZDMA(1u), 129},
        {"packed 2 is a date (outside the period)", REG_QZDMA(2u), 130},
        {"packed 0xFFEB7 is a date (outside the period)", REG_QZDMA(0xFFEB7u), 130},
        {"packed 0xFFEB8", REG_QZDMA(0xFFEB8u), 129},
        {"first day of the lower bound's month", REG_QZDMA(1, 2, 2026), 0},
        {"last day before that month", REG_QZDMA(31, 1, 2026), 130},
        {"last day of the upper bound's month", REG_QZDMA(31, 5, 2026), 0},
        {"first day after that month", REG_QZDMA(1, 6, 2026), 130},
        {"same month a year earlier", REG_QZDMA(15, 3, 2025), 130},
        {"same month a year later", REG_QZDMA(15, 3, 2027), 130},
    };
    for (const auto& c : casos) {
        DeixaVeredito();
        h.VerificaPeriodoMovimentacao(c.data, 85);
        EsperaVeredito(c.mensagem, 85, c.nome);
    }
}

TEST_F(PXTrataDadosVerificacoesTest, AnInvalidMovementDateIsNotRead) {
    h.VerificaPeriodoMovimentacao(REG_QZDMA(0u), 85);
    EXPECT_EQ(falhas.Chamadas("LeBufferPeriodoContabil"), 0);
}

// ---- products and services --------------------------------------------------

TEST_F(PXTrataDadosVerificacoesTest, ProductKeys) {
    struct Caso {
        const char* nome;
        _REG_POSICAO_PRODUTOPS chave;
        long mensagem;
    } casos[] = {
        {"no product", Chave(0, 1, 1), 40},
        {"kit", Chave(kit, 5, 6), 112},
        {"grid 1 position, product without grid 1", Chave(simples, 1), 41},
        {"grid 2 position, product without grid 2", Chave(simples, 0, 2), 42},
        {"grid 2 position, product with grid 1 only", Chave(comGrade1, 1, 2), 42},
        {"product without grids, plain key", Chave(simples), 0},
        {"product with grid 1, no grid position", Chave(comGrade1), 0},
        {"product with grid 1, grid 1 position", Chave(comGrade1, 3), 0},
        {"product with both grids, both positions", Chave(comGrades, 3, 4), 0},
    };
    for (const auto& c : casos) {
        h.LimpaErro();
        h.VerificaProduto(c.chave);
        EsperaVeredito(c.mensagem, 0, c.nome);
    }
}

TEST_F(PXTrataDadosVerificacoesTest, ProductCheckKeepsAnEarlierVerdictWhenItPasses) {
    DeixaVeredito();
    h.VerificaProduto(Chave(comGrades, 1, 1));
    EXPECT_THAT(h.GetErro(), TemMensagem(QZ_MODULO_PX, 999, 9));
    h.VerificaProduto(Chave(0));
    EXPECT_THAT(h.GetErro(), TemMensagem(QZ_MODULO_PX, 40, 0));
    EXPECT_EQ(falhas.Chamadas("LeProdutoEx"), 1);
}

TEST_F(PXTrataDadosVerificacoesTest, ServiceKeys) {
    struct Caso {
        const char* nome;
        _REG_POSICAO_PRODUTOPS chave;
        long mensagem;
    } casos[] = {
        {"no service", Chave(0), 44},
        {"grid 1 position", Chave(ponteiroServico, 1), 45},
        {"grid 2 position", Chave(ponteiroServico, 0, 1), 45},
        {"third position", Chave(ponteiroServico, 0, 0, 1), 45},
        {"plain key", Chave(ponteiroServico), 0},
    };
    for (const auto& c : casos) {
        h.LimpaErro();
        h.VerificaServico(c.chave);
        EsperaVeredito(c.mensagem, 0, c.nome);
    }
    DeixaVeredito();
    h.VerificaServico(Chave(ponteiroServico));
    EXPECT_THAT(h.GetErro(), TemMensagem(QZ_MODULO_PX, 999, 9));
}

// ---- maintenance situation ---------------------------------------------------

TEST_F(PXTrataDadosVerificacoesTest, SituationNotGiven) {
    CQZDadosPX_Situacao lida;
    EXPECT_THAT(h.VerificaSituacaoManutencao(0, lida, 84, true, false), TemMensagem(QZ_MODULO_PX, 145, 84));
    DeixaVeredito();
    EXPECT_THAT(h.VerificaSituacaoManutencao(0, lida, 84, false, false), SemErro());
    EXPECT_EQ(falhas.TotalChamadas(), 0);
}

TEST_F(PXTrataDadosVerificacoesTest, InactiveSituationNamesItselfUnlessAllowed) {
    CQZDadosPX_Situacao lida;
    h.VerificaSituacaoManutencao(inativa.GetPosicao(), lida, 84, true, false);
    EXPECT_THAT(h.GetErro(), TemMensagem(QZ_MODULO_PX, 146, 84));
    ASSERT_EQ(h.GetParametros().GetSize(), 2);
    EXPECT_EQ(h.GetParametros()[0], "VELHA");
    EXPECT_EQ(h.GetParametros()[1], "Situação desativada");

    DeixaVeredito();
    EXPECT_THAT(h.VerificaSituacaoManutencao(inativa.GetPosicao(), lida, 84, true, true), SemErro());
    EXPECT_EQ(lida, inativa);
    EXPECT_THAT(h.VerificaSituacaoManutencao(ativa.GetPosicao(), lida, 84, false, false), SemErro());
    EXPECT_EQ(lida, ativa);
}

// ---- user -------------------------------------------------------------------

TEST_F(PXTrataDadosVerificacoesTest, Users) {
    CQZDadosGT_Usuario lido;
    DeixaVeredito();
    EXPECT_THAT(h.VerificaUsuario(7, &lido), SemErro());
    EXPECT_EQ(lido, usuarioAna);
    EXPECT_THAT(h.VerificaUsuario(8, &lido), TemMensagem(QZ_MODULO_PX, 80, 0));
    EXPECT_THAT(h.VerificaUsuario(0, nullptr), TemMensagem(QZ_MODULO_PX, 80, 0));
    EXPECT_THAT(h.VerificaUsuario(7, nullptr), SemErro());
}

// ---- failed reads --------------------------------------------------------------

// A failed read is the service's error (code and text) and ends the check;
// the shared checks trace it with their line, but for the movement period
// (which names its field) and the user.
TEST_F(PXTrataDadosVerificacoesTest, FailedReadsArePassedOn) {
    CQZDadosPX_Situacao situacao;
    CQZDadosGT_Usuario usuario;
    auto integracao = [&] { h.VerificaPeriodoIntegracao(Instante(15, 4, 2026), ponteiroFilial, 85); };
    struct Caso {
        const char* operacao;  // made to fail; null: the record is not there
        std::function<void()> verifica;
        long hr, campo;
        const char* funcao;  // null: not traced
        const char *linha, *expressao;
    } casos[] = {
        {"LeBufferFilial", integracao, QZ_E_BANCO, 0, "CPXTrataDados::VerificaPeriodoIntegracao", "218",
         "GetAcessoGestavo()->LeBufferFilial(usPonteiroFilial, &dadosFilial)"},
        {"LePeriodoContabil", integracao, QZ_E_BANCO_OCUPADO, 0, "CPXTrataDados::VerificaPeriodoIntegracao", "228",
         "GetAcessoGestavo()->LePeriodoContabil(&dadosPeriodo)"},
        {"LeBufferPeriodoContabil", [&] { h.VerificaPeriodoMovimentacao(REG_QZDMA(1, 3, 2026), 85); }, QZ_E_BANCO, 85,
         nullptr, nullptr, nullptr},
        {nullptr, [&] { h.VerificaProduto(Chave(9999)); }, QZ_E_REGISTRO_NAO_ENCONTRADO, 0, "CPXTrataDados::VerificaProduto",
         "113", "GetAcessoGestavo()->LeProdutoEx(regPosicaoProduto, &dadosProdutoEx)"},
        // The service is read before its grid is checked.
        {"LeServico", [&] { h.VerificaServico(Chave(ponteiroServico, 1)); }, QZ_E_BANCO, 0, "CPXTrataDados::VerificaServico",
         "145", "GetAcessoGestavo()->LeServico(regPosicaoServico.lPonteiroProduto, &dadosServico)"},
        {"LeSituacao", [&] { h.VerificaSituacaoManutencao(ativa.GetPosicao(), situacao, 84, true, false); }, QZ_E_BANCO, 84,
         "CPXTrataDados::VerificaSituacaoManutencao", "255",
         "GetAcessoManutencao()->LeSituacao(ulPonteiro, &dadosSituacao, PX_LER_SITUACAO_CABECALHO)"},
        {"LeBufferUsuario", [&] { h.VerificaUsuario(7, &usuario); }, QZ_E_BANCO, 0, nullptr, nullptr, nullptr},
    };
    for (const auto& c : casos) {
        SCOPED_TRACE(c.operacao ? c.operacao : c.funcao);
        ZeraChamadas();
        if (c.operacao) falhas.FalhaEm(c.operacao, 0, c.hr, "Leitura impossível");
        c.verifica();
        EXPECT_THAT(h.GetErro(), TemFalhaServico(c.hr, c.campo));
        if (c.operacao) {
            EXPECT_EQ(h.GetMensagem(), CString(("Leitura impossível (" + std::string(c.operacao) + ")").c_str()));
            EXPECT_EQ(falhas.Historico().back(), c.operacao) << "nothing is read after the failure";
        }
        if (c.funcao)
            EsperaRastro(c.funcao, c.linha, c.expressao);
        else
            EXPECT_TRUE(rastro.Registros().empty());
    }
}

// ---- handler without services --------------------------------------------------

TEST_F(PXTrataDadosVerificacoesTest, UninitialisedHandlerAnswers161AndReadsNothing) {
    CPXTrataDados semServicos;
    CQZDadosPX_Situacao situacao;
    CQZDadosGT_Usuario usuario;
    const std::pair<const char*, std::function<void()>> chamadas[] = {
        {"integration", [&] { semServicos.VerificaPeriodoIntegracao(Instante(1, 4, 2026), ponteiroFilial, 85); }},
        {"movement", [&] { semServicos.VerificaPeriodoMovimentacao(REG_QZDMA(1, 3, 2026), 85); }},
        {"product", [&] { semServicos.VerificaProduto(Chave(simples)); }},
        {"service", [&] { semServicos.VerificaServico(Chave(ponteiroServico)); }},
        {"situation", [&] { semServicos.VerificaSituacaoManutencao(ativa.GetPosicao(), situacao, 84, true, false); }},
        {"user", [&] { semServicos.VerificaUsuario(7, &usuario); }},
    };
    for (const auto& [nome, chamada] : chamadas) {
        semServicos.LimpaErro();
        chamada();
        EXPECT_THAT(semServicos.GetErro(), TemMensagem(QZ_MODULO_PX, 161, 0)) << nome;
    }
    EXPECT_EQ(falhas.TotalChamadas(), 0);

    // After Finaliza the services are gone again.
    Inicializa(semServicos);
    EXPECT_THAT(semServicos.VerificaUsuario(7, &usuario), SemErro());
    semServicos.Finaliza();
    EXPECT_THAT(semServicos.VerificaUsuario(7, &usuario), TemMensagem(QZ_MODULO_PX, 161, 0));
}
