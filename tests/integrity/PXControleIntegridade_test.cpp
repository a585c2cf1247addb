#include "integrity/PXControleIntegridade.h"

#include "platform/QZCodigosResultado.h"
#include "tests/support/PXTeste.h"

namespace {

using K = CPXControleIntegridade;

template <class R>
R Arvore(const char* codigo, const char* nome, uint8_t tipo, uint32_t pai = 0) {
    R r;
    r.SetCodigo(codigo).SetNome(nome).SetTipoClassificacao(tipo).SetPonteiroPai(pai);
    return r;
}

REG_QZDMC NovaChave(int mes, int ano) { return REG_QZDMC(REG_QZMA(mes, ano), 0); }

}  // namespace

class PXControleIntegridadeTest : public PXTeste {
protected:
    void SetUp() override {
        PXTeste::SetUp();
        Inicializa(controle);
    }

    CQZDadosPX_Tecnico TecnicoCom(const char* codigo, uint32_t disciplina, uint16_t filial) {
        auto t = Arvore<CQZDadosPX_Tecnico>(codigo, "Técnico", 1);
        t.SetPonteiroFilial(filial);
        CQZDadosPX_TecnicoDisciplina d;
        d.SetPonteiroDisciplina(disciplina);
        t.AdicionaDisciplina(d);
        return Grava(t);
    }
    CQZDadosPX_Manutencao Ordem(int mes, uint16_t filial, uint32_t plano, uint32_t tecnico, uint32_t situacao) {
        CQZDadosPX_Manutencao m;
        m.SetDmc(NovaChave(mes, 2026)).SetPonteiroFilial(filial).SetPonteiroPlano(plano).SetPonteiroTecnico(tecnico);
        m.SetPonteiroSituacao(situacao);
        return Grava(m);
    }
    CQZDadosGT_Recurso Recurso(uint8_t tipo, uint32_t plano, uint8_t inativo = 0) {
        CQZDadosGT_Recurso r;
        r.SetCodigo("R").SetDescricao("Recurso").SetTipoClassificacao(tipo);
        CQZDadosGT_RecursoPlanoManutencao link;
        link.SetPonteiroPlanoManutencao(plano).SetInativo(inativo);
        r.AdicionaPlanoManutencao(link);
        return Grava(r);
    }

    // Asks and expects a refusal with exactly this text, field 0.
    void EsperaRecusa(K::RegistroControleIntegridade tipo, uint32_t ponteiro, const char* texto) {
        EXPECT_FALSE(controle.VerificaRelacionamentoPonteiro(tipo, ponteiro));
        EXPECT_EQ(controle.GetModulo(), QZ_MODULO_PX);
        EXPECT_EQ(controle.GetCodigoCampo(), 0);
        EXPECT_EQ(QZParaUtf8(controle.GetMensagem()), QZParaUtf8(texto));
    }

    CPXControleIntegridade controle;
};

TEST_F(PXControleIntegridadeTest, DisciplineDependents) {
    auto grupo = Grava(Arvore<CQZDadosPX_Disciplina>("ELE", "Elétrica", 2));
    auto filha = Grava(Arvore<CQZDadosPX_Disciplina>("AT", "Alta tensão", 1, grupo.GetPonteiro()));
    TecnicoCom("T1", grupo.GetPonteiro(), 1);  // the child is named first
    EsperaRecusa(K::DISCIPLINA, grupo.GetPonteiro(), "Disciplina AT Alta tensão é dependente da disciplina ELE Elétrica");

    // A leaf's children are not searched; a technician of any branch wins over a plan.
    auto plano = Arvore<CQZDadosPX_Plano>("P1", "Preventiva", 1);
    plano.SetPonteiroDisciplina(filha.GetPonteiro());
    Grava(plano);
    EsperaRecusa(K::DISCIPLINA, filha.GetPonteiro(), "Plano de manutenção P1 Preventiva é dependente da disciplina AT Alta tensão");
    TecnicoCom("T9", filha.GetPonteiro(), 9);
    ZeraChamadas();
    EsperaRecusa(K::DISCIPLINA, filha.GetPonteiro(), "Técnico T9 Técnico é dependente da disciplina AT Alta tensão");
    EXPECT_EQ(0, falhas.Chamadas("BuscaPonteirosDisciplina"));
    EXPECT_EQ(0, falhas.Chamadas("BuscaPonteirosPlano"));
}

TEST_F(PXControleIntegridadeTest, TechnicianDependents) {
    auto equipe = Grava(Arvore<CQZDadosPX_Tecnico>("EQ", "Equipe", 2));
    auto membro = Grava(Arvore<CQZDadosPX_Tecnico>("JO", "João", 1, equipe.GetPonteiro()));
    EsperaRecusa(K::TECNICO, equipe.GetPonteiro(), "Técnico JO João é dependente do técnico EQ Equipe");
    Ordem(3, 7, 0, membro.GetPonteiro(), 0);
    EsperaRecusa(K::TECNICO, membro.GetPonteiro(), "A manutenção 03/2026-000001 é dependente do técnico JO João");
}

TEST_F(PXControleIntegridadeTest, PlanDependents) {
    auto grupo = Grava(Arvore<CQZDadosPX_Plano>("PG", "Planos", 2));
    auto plano = Grava(Arvore<CQZDadosPX_Plano>("P1", "Mensal", 1, grupo.GetPonteiro()));
    EsperaRecusa(K::PLANO, grupo.GetPonteiro(), "Plano P1 Mensal é dependente do Plano PG Planos");

    // A group of resources does not count; an order then does.
    Recurso(2, plano.GetPonteiro());
    Ordem(4, 2, plano.GetPonteiro(), 0, 0);
    EsperaRecusa(K::PLANO, plano.GetPonteiro(), "A manutenção 04/2026-000001 é dependente do plano P1 Mensal");
    // A resource linked to the plan, even by an inactive link, wins over the order.
    auto recurso = Recurso(1, plano.GetPonteiro(), 1);
    EsperaRecusa(K::PLANO, plano.GetPonteiro(),
                 CString::Formatado("O Recurso %u é dependente do plano P1 Mensal", recurso.GetPosicao()));
}

TEST_F(PXControleIntegridadeTest, SituationDependents) {
    CQZDadosPX_Situacao situacao;
    situacao.SetCodigo("AB").SetDescricao("Aberta").SetTipo(1).SetSituacaoBase(2);
    situacao = Grava(situacao);
    EXPECT_TRUE(controle.VerificaRelacionamentoPonteiro(K::SITUACAO_MANUTENCAO, situacao.GetPosicao()));
    Ordem(5, 4, 0, 0, situacao.GetPosicao());
    EsperaRecusa(K::SITUACAO_MANUTENCAO, situacao.GetPosicao(), "A manutenção 05/2026-000001 é dependente da situação AB Aberta");
}

TEST_F(PXControleIntegridadeTest, ExpenseTypeDependents) {
    auto grupo = Grava(Arvore<CQZDadosPX_TipoGasto>("MAT", "Materiais", 2));
    auto tipo = Grava(Arvore<CQZDadosPX_TipoGasto>("PEC", "Peças", 1, grupo.GetPonteiro()));
    EsperaRecusa(K::TIPO_GASTO, grupo.GetPonteiro(), "Tipo de gasto PEC Peças é dependente do tipo de gasto MAT Materiais");
    EXPECT_TRUE(controle.VerificaRelacionamentoPonteiro(K::TIPO_GASTO, tipo.GetPonteiro()));
    CQZDadosPX_LancamentoGastos lancamento;
    lancamento.SetDmc(NovaChave(11, 2025)).SetPonteiroTipoGasto(tipo.GetPonteiro());
    Grava(lancamento);
    EsperaRecusa(K::TIPO_GASTO, tipo.GetPonteiro(), "O lançamento de gastos 11/2025-000001 é dependente do tipo de gasto PEC - PEC - Peças");
}

TEST_F(PXControleIntegridadeTest, UnusedRecordsMayBeDeleted) {
    auto disciplina = Grava(Arvore<CQZDadosPX_Disciplina>("D", "Disciplina", 2));
    auto tecnico = Grava(Arvore<CQZDadosPX_Tecnico>("T", "Técnico", 2));
    auto plano = Grava(Arvore<CQZDadosPX_Plano>("P", "Plano", 2));
    Ordem(1, 1, 0, 0, 0);
    for (auto [tipo, ponteiro] : {std::pair{K::DISCIPLINA, disciplina.GetPonteiro()},
                                  std::pair{K::TECNICO, tecnico.GetPonteiro()}, std::pair{K::PLANO, plano.GetPonteiro()}}) {
        EXPECT_TRUE(controle.VerificaRelacionamentoPonteiro(tipo, ponteiro)) << tipo;
        EXPECT_THAT(controle.GetErro(), SemErro()) << tipo;
    }
}

TEST_F(PXControleIntegridadeTest, UnknownKindAnswersTrueWithoutSearching) {
    ZeraChamadas();
    for (int tipo : {0, 6, -1}) {
        EXPECT_TRUE(controle.VerificaRelacionamentoPonteiro(static_cast<K::RegistroControleIntegridade>(tipo), 1));
    }
    EXPECT_EQ(0, falhas.TotalChamadas());
}

TEST_F(PXControleIntegridadeTest, UninitialisedCheckerRefusesWith161) {
    CPXControleIntegridade semServicos;
    EXPECT_FALSE(semServicos.VerificaRelacionamentoPonteiro(K::DISCIPLINA, 1));
    EXPECT_THAT(semServicos.GetErro(), TemMensagem(QZ_MODULO_PX, 161, 0));
}

TEST_F(PXControleIntegridadeTest, MissingRecordPassesTheReadError) {
    EXPECT_FALSE(controle.VerificaRelacionamentoPonteiro(K::TIPO_GASTO, 77));
    EXPECT_THAT(controle.GetErro(), TemFalhaServico(QZ_E_REGISTRO_NAO_ENCONTRADO, 0));
}

// Every call of every kind failing in turn, over records that reach each
// read: the check answers false with the service's own error, no field code
// and no trace.
TEST_F(PXControleIntegridadeTest, EveryCallFailingInTurnPassesItsErrorOn) {
    auto dGrupo = Grava(Arvore<CQZDadosPX_Disciplina>("DG", "Grupo", 2));
    auto dTecnico = Grava(Arvore<CQZDadosPX_Disciplina>("DT", "Com técnico", 1, dGrupo.GetPonteiro()));
    auto dPlano = Grava(Arvore<CQZDadosPX_Disciplina>("DP", "Com plano", 1));
    auto dLivre = Grava(Arvore<CQZDadosPX_Disciplina>("DL", "Livre", 2));
    auto tGrupo = Grava(Arvore<CQZDadosPX_Tecnico>("TG", "Grupo", 2));
    auto tMembro = TecnicoCom("TM", dTecnico.GetPonteiro(), 3);
    tMembro.SetPonteiroPai(tGrupo.GetPonteiro());
    ASSERT_EQ(0, armazem.Atualiza(tMembro));
    auto pGrupo = Grava(Arvore<CQZDadosPX_Plano>("PG", "Grupo", 2));
    auto pRecurso = Arvore<CQZDadosPX_Plano>("PR", "Com recurso", 1, pGrupo.GetPonteiro());
    pRecurso.SetPonteiroDisciplina(dPlano.GetPonteiro());
    pRecurso = Grava(pRecurso);
    auto pOrdem = Grava(Arvore<CQZDadosPX_Plano>("PO", "Com ordem", 1));
    Recurso(1, pRecurso.GetPonteiro());
    CQZDadosPX_Situacao situacao;
    situacao.SetCodigo("S").SetDescricao("Situação").SetTipo(1).SetSituacaoBase(2);
    situacao = Grava(situacao);
    Ordem(2, 1, pOrdem.GetPonteiro(), tMembro.GetPonteiro(), situacao.GetPosicao());
    auto gGrupo = Grava(Arvore<CQZDadosPX_TipoGasto>("GG", "Grupo", 2));
    auto gLancado = Grava(Arvore<CQZDadosPX_TipoGasto>("GL", "Lançado", 1, gGrupo.GetPonteiro()));
    CQZDadosPX_LancamentoGastos lancamento;
    lancamento.SetDmc(NovaChave(2, 2026)).SetPonteiroTipoGasto(gLancado.GetPonteiro());
    Grava(lancamento);

    const std::pair<K::RegistroControleIntegridade, uint32_t> casos[] = {
        {K::DISCIPLINA, dGrupo.GetPonteiro()},   {K::DISCIPLINA, dTecnico.GetPonteiro()},
        {K::DISCIPLINA, dPlano.GetPonteiro()},   {K::DISCIPLINA, dLivre.GetPonteiro()},
        {K::TECNICO, tGrupo.GetPonteiro()},      {K::TECNICO, tMembro.GetPonteiro()},
        {K::PLANO, pGrupo.GetPonteiro()},        {K::PLANO, pRecurso.GetPonteiro()},
        {K::PLANO, pOrdem.GetPonteiro()},        {K::SITUACAO_MANUTENCAO, situacao.GetPosicao()},
        {K::TIPO_GASTO, gGrupo.GetPonteiro()},   {K::TIPO_GASTO, gLancado.GetPonteiro()},
    };
    for (auto [registro, ponteiro] : casos) {
        ZeraChamadas();
        controle.VerificaRelacionamentoPonteiro(registro, ponteiro);
        const long total = falhas.TotalChamadas();
        ASSERT_GT(total, 1) << registro << " " << ponteiro;
        for (long n = 1; n <= total; ++n) {
            ZeraChamadas();
            falhas.FalhaEm("*", n, QZ_E_FALHA_INJETADA);
            EXPECT_FALSE(controle.VerificaRelacionamentoPonteiro(registro, ponteiro)) << registro << " call " << n;
            EXPECT_THAT(controle.GetErro(), TemFalhaServico(QZ_E_FALHA_INJETADA, 0)) << registro << " call " << n;
        }
        EXPECT_TRUE(rastro.Registros().empty());
    }
}
