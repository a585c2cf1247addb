#include "platform/QZPX_Disciplina.h"

#include "rules/PXTrataDadosManutencao.h"
#include "tests/support/PXTeste.h"

namespace {

// Mecânica over Hidráulica (itself over Hidráulica pesada) and Pneumática;
// Elétrica alone; two disciplines written as each other's parent.
enum : uint32_t { MECANICA = 1, HIDRAULICA = 2, PNEUMATICA = 3, HIDRAULICA_PESADA = 4, ELETRICA = 5, LACO_A = 6, LACO_B = 7 };

}  // namespace

class QZPX_DisciplinaTest : public PXTeste {
protected:
    void SetUp() override {
        PXTeste::SetUp();
        for (auto [p, pai] : std::initializer_list<std::pair<uint32_t, uint32_t>>{{MECANICA, 0},
                                                                                   {HIDRAULICA, MECANICA},
                                                                                   {PNEUMATICA, MECANICA},
                                                                                   {HIDRAULICA_PESADA, HIDRAULICA},
                                                                                   {ELETRICA, 0},
                                                                                   {LACO_A, LACO_B},
                                                                                   {LACO_B, LACO_A}}) {
            CQZDadosPX_Disciplina d;
            d.SetPosicao(p);
            d.SetCodigo(CString::Formatado("D%u", p)).SetPonteiroPai(pai);
            Grava(d);
        }
        Inicializa(rotina);
        // As a routine object reaches it: its company's servers service,
        // handed its own connection.
        pDisciplinas = rotina.GetAcessoServidores()->GetIPXDisciplina_deprecated(*rotina.GetConexao());
        ASSERT_NE(pDisciplinas, nullptr);
        ZeraChamadas();
    }

    CPXTrataDadosManutencao rotina;
    IQZPX_Disciplina* pDisciplinas = nullptr;
};

TEST_F(QZPX_DisciplinaTest, ADisciplineServesItselfAndEveryDisciplineBeneathIt) {
    struct Caso {
        const char* nome;
        uint32_t plano, tecnico;
        bool atende;
    } casos[] = {
        {"the same discipline", HIDRAULICA, HIDRAULICA, true},
        {"the group above", HIDRAULICA, MECANICA, true},
        {"two levels above", HIDRAULICA_PESADA, MECANICA, true},
        {"one level above", HIDRAULICA_PESADA, HIDRAULICA, true},
        {"a sibling", PNEUMATICA, HIDRAULICA, false},
        {"a member does not serve its group", MECANICA, HIDRAULICA, false},
        {"a member's member neither", HIDRAULICA, HIDRAULICA_PESADA, false},
        {"another tree", HIDRAULICA, ELETRICA, false},
        {"a root serves only itself", ELETRICA, MECANICA, false},
        {"no discipline on the technician", HIDRAULICA, 0, false},
        {"no discipline on the plan", 0, MECANICA, false},
        {"a parent chain that loops ends", LACO_A, MECANICA, false},
        {"within a loop, the parent serves", LACO_A, LACO_B, true},
    };
    for (const auto& c : casos) {
        bool atende = !c.atende;
        EXPECT_EQ(0, pDisciplinas->DisciplinaAtende(c.plano, c.tecnico, atende)) << c.nome;
        EXPECT_EQ(atende, c.atende) << c.nome;
    }
}

TEST_F(QZPX_DisciplinaTest, AFailedReadIsTheStatusWithTheReasonInTheMaintenanceService) {
    falhas.FalhaEm("LeDisciplina", 2, QZ_E_BANCO_OCUPADO, "Banco ocupado");
    bool atende = true;
    EXPECT_EQ(QZ_E_BANCO_OCUPADO, pDisciplinas->DisciplinaAtende(HIDRAULICA_PESADA, MECANICA, atende));
    EXPECT_FALSE(atende);
    EXPECT_EQ(rotina.GetAcessoManutencao()->GetErro().GetMensagem(), "Banco ocupado (LeDisciplina)");

    // A plan discipline nobody has.
    EXPECT_EQ(QZ_E_REGISTRO_NAO_ENCONTRADO, pDisciplinas->DisciplinaAtende(99, MECANICA, atende));
}
