#include "rules/PXTrataDadosTecnico.h"

#include "platform/QZCodigosResultado.h"
#include "tests/rules/PXTesteRegras.h"

namespace {

CQZDadosPX_Tecnico Tecnico(const char* codigo, const char* nome, uint8_t tipo, uint32_t pai = 0, uint16_t filial = 0,
                           uint16_t usuario = 0) {
    CQZDadosPX_Tecnico t;
    t.SetCodigo(codigo).SetNome(nome).SetTipoClassificacao(tipo).SetPonteiroPai(pai).SetPonteiroFilial(filial);
    t.SetPonteiroUsuario(usuario);
    return t;
}

CQZDadosPX_TecnicoDisciplina Disciplina(uint32_t ponteiro) {
    CQZDadosPX_TecnicoDisciplina d;
    d.SetPonteiroDisciplina(ponteiro);
    return d;
}

}  // namespace

class PXTrataDadosTecnicoTest : public PXTesteRegras {
protected:
    // equipe > turno > joao (branch 3, user 20); maria (branch 5, user 30)
    void SetUp() override {
        PXTesteRegras::SetUp();
        Inicializa(handler);
        equipe = Grava(Tecnico("EQ", "Equipe", 2));
        turno = Grava(Tecnico("TU", "Turno", 2, equipe.GetPonteiro()));
        joao = Grava(Tecnico("JO", "João", 1, turno.GetPonteiro(), 3, 20));
        maria = Grava(Tecnico("MA", "Maria", 1, 0, 5, 30));
        ZeraChamadas();
    }

    int Salva(const CQZDadosPX_Tecnico& t) {
        salvo = t;
        return handler.TrataGravacao(&salvo, nullptr);
    }

    CPXTrataDadosTecnico handler;
    CQZDadosPX_Tecnico equipe, turno, joao, maria, salvo;
};

TEST_F(PXTrataDadosTecnicoTest, FieldChecksInOrder) {
    auto semCodigo = maria;
    semCodigo.SetCodigo(" ");
    struct Caso {
        const char* nome;
        CQZDadosPX_Tecnico t;
        long mensagem, campo;
    } casos[] = {
        {"new, blank code", Tecnico("  ", "X", 1), 1, 7},
        {"saved, blank code", semCodigo, 2, 8},
        {"code of another branch's technician, before the name", Tecnico(" MA", "", 1, 0, 3), 10, 7},
        {"blank name", Tecnico("NV", " ", 1), 4, 9},
        {"user of an active leaf of the same branch", Tecnico("NV", "Novo", 1, 0, 3, 20), 121, 12},
        {"branch 0 with the user of a leaf of branch 5", Tecnico("NV", "Novo", 1, 0, 0, 30), 121, 12},
    };
    for (auto& c : casos) {
        EXPECT_EQ(0, Salva(c.t)) << c.nome;
        EXPECT_THAT(handler.GetErro(), TemMensagem(QZ_MODULO_PX, c.mensagem, c.campo)) << c.nome;
    }
}

TEST_F(PXTrataDadosTecnicoTest, UserTieIgnoresOtherBranchesInactiveTechniciansAndGroups) {
    EXPECT_EQ(1, Salva(Tecnico("NV", "Outra filial", 1, 0, 5, 20)));
    EXPECT_EQ(1, Salva(joao)) << "the technician's own tie";

    auto inativo = joao;
    inativo.SetInativo(1);
    ASSERT_EQ(0, armazem.Atualiza(inativo));
    EXPECT_EQ(1, Salva(Tecnico("N2", "Mesma filial", 1, 0, 3, 20)));

    auto grupoComUsuario = Tecnico("GR", "Grupo", 2, 0, 5, 30);
    EXPECT_EQ(1, Salva(grupoComUsuario)) << "a group is not tied";
    grupoComUsuario = Grava(Tecnico("G2", "Grupo", 2, 0, 7, 40));
    EXPECT_EQ(1, Salva(Tecnico("N3", "Usuário do grupo", 1, 0, 0, 40)));
}

TEST_F(PXTrataDadosTecnicoTest, GroupIsNormalisedWithoutWarning) {
    auto t = Tecnico(" GR ", " Grupo novo ", 0, 0, 3, 20);
    t.SetInativo(1);
    for (uint32_t d : {4u, 5u, 6u}) t.AdicionaDisciplina(Disciplina(d));
    EXPECT_EQ(1, Salva(t));
    EXPECT_EQ(salvo.GetTipoClassificacao(), 2);
    EXPECT_EQ(salvo.GetPonteiroFilial(), 0);
    EXPECT_EQ(salvo.GetInativo(), 0);
    EXPECT_EQ(salvo.GetQuantidadeDisciplina(), 0);
    EXPECT_EQ(salvo.GetCodigo(), "GR");
    EXPECT_EQ(salvo.GetNome(), "Grupo novo");
    EXPECT_EQ(salvo.GetPonteiroUsuario(), 20) << "the user stays, unchecked";
}

TEST_F(PXTrataDadosTecnicoTest, TrimmingIsWrittenBackEvenWhenRefused) {
    EXPECT_EQ(0, Salva(Tecnico("  MA ", "  Outra Maria ", 1)));
    EXPECT_EQ(salvo.GetCodigo(), "MA");
    EXPECT_EQ(salvo.GetNome(), "Outra Maria");
}

TEST_F(PXTrataDadosTecnicoTest, AddingDisciplines) {
    auto t = maria;
    auto d4 = Disciplina(4), d0 = Disciplina(0);
    EXPECT_THAT(handler.TrataAdicionarDisciplina(t, d4, nullptr), SemErro());
    EXPECT_THAT(handler.TrataAdicionarDisciplina(t, d0, nullptr), TemMensagem(QZ_MODULO_PX, 86, 14));
    auto d4bis = Disciplina(4);
    EXPECT_THAT(handler.TrataAdicionarDisciplina(t, d4bis, nullptr), TemMensagem(QZ_MODULO_PX, 87, 14));
    ASSERT_EQ(t.GetQuantidadeDisciplina(), 1);
    EXPECT_EQ(t.GetConstRefDisciplina(0).GetPonteiroDisciplina(), 4u);
}

TEST_F(PXTrataDadosTecnicoTest, ConsistirWithoutServicesRefusesWith161) {
    CPXTrataDadosTecnico semServicos;
    auto t = Tecnico(" NV ", "Novo", 1);
    EXPECT_THAT(semServicos.ConsistirTecnico(&t), TemMensagem(QZ_MODULO_PX, 161, 0));
    EXPECT_EQ(t.GetCodigo(), " NV ");
}

// Each call failing in turn: exactly the service's error, no field, no trace.
TEST_F(PXTrataDadosTecnicoTest, EveryCallFailingInTurnPassesItsErrorOn) {
    for (const auto& modelo : {Tecnico("NV", "Novo", 1, 0, 3, 99), equipe, joao})
        VarreGravacao(handler, modelo, salvo, 0, [&] { EXPECT_TRUE(rastro.Registros().empty()); });
}
