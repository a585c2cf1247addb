#include "rules/PXTrataDadosPrioridade.h"

#include "platform/QZCodigosResultado.h"
#include "tests/rules/PXTesteRegras.h"

namespace {
CQZDadosPX_Prioridade Prioridade(const char* codigo, const char* descricao, uint8_t base = 50) {
    CQZDadosPX_Prioridade p;
    p.SetCodigo(codigo).SetDescricao(descricao).SetPrioridadeBase(base);
    return p;
}
}  // namespace

class PXTrataDadosPrioridadeTest : public PXTesteRegras {
protected:
    void SetUp() override {
        PXTesteRegras::SetUp();
        Inicializa(handler);
        urgente = Grava(Prioridade("URG", "Urgente", 90));
        baixa = Grava(Prioridade("BX", "Baixa", 10));
        ZeraChamadas();
    }
    CPXTrataDadosPrioridade handler;
    CQZDadosPX_Prioridade urgente, baixa;
};

TEST_F(PXTrataDadosPrioridadeTest, NewRecordRefusals) {
    struct Caso {
        const char* nome;
        CQZDadosPX_Prioridade p;
        long mensagem, campo;
    } casos[] = {
        {"blank code", Prioridade("   ", "X"), 1, 1},
        {"code taken once trimmed", Prioridade("  URG ", "X"), 10, 1},
        {"blank description", Prioridade("NOVA", " \t "), 49, 2},
        {"base above 100", Prioridade("NOVA", "X", 101), 176, 3},
        {"code checked before description", Prioridade("URG", ""), 10, 1},
        {"description checked before the base", Prioridade("NOVA", " ", 101), 49, 2},
    };
    for (auto& c : casos) {
        EXPECT_EQ(0, handler.TrataGravacao(&c.p, nullptr)) << c.nome;
        EXPECT_THAT(handler.GetErro(), TemMensagem(QZ_MODULO_PX, c.mensagem, c.campo)) << c.nome;
    }
    EXPECT_EQ(casos[0].p.GetCodigo(), "");
}

TEST_F(PXTrataDadosPrioridadeTest, PassingRecordComesBackTrimmed) {
    auto p = Prioridade("  NOVA ", "  Média prioridade ", 100);
    EXPECT_EQ(1, handler.TrataGravacao(&p, nullptr));
    EXPECT_EQ(p.GetCodigo(), "NOVA");
    EXPECT_EQ(p.GetDescricao(), "Média prioridade");
}

TEST_F(PXTrataDadosPrioridadeTest, SavedRecordIsNotCheckedForDuplicates) {
    auto p = baixa;
    p.SetCodigo("URG");
    EXPECT_EQ(1, handler.TrataGravacao(&p, nullptr));
    EXPECT_EQ(0, falhas.Chamadas("BuscaPonteirosPrioridade"));
}

TEST_F(PXTrataDadosPrioridadeTest, StaleRecordIsRefusedBeforeAnyOtherCheck) {
    auto meu = urgente;
    auto outro = urgente;
    outro.SetDescricao("Muito urgente");
    ASSERT_EQ(0, armazem.Atualiza(outro));
    meu.SetCodigo("");
    EXPECT_EQ(0, handler.TrataGravacao(&meu, nullptr));
    EXPECT_THAT(handler.GetErro(), TemMensagem(QZ_MODULO_PX, 3, 1));
    EXPECT_EQ(meu.GetCodigo(), "");
}

TEST_F(PXTrataDadosPrioridadeTest, SearchFailureIsTracedOnceAndPassedOnField1) {
    falhas.FalhaEm("BuscaPonteirosPrioridade", 0, 0x80004005L);
    auto p = Prioridade("NOVA", "Nova");
    EXPECT_EQ(0, handler.TrataGravacao(&p, nullptr));
    EXPECT_THAT(handler.GetErro(), TemFalhaServico(0x80004005L, 1));
    auto regs = rastro.Registros();
    ASSERT_EQ(regs.size(), 1u);
    EXPECT_EQ(regs[0].funcao, "CPXTrataDadosPrioridade::OnTrataGravacao");
    EXPECT_EQ(regs[0].chaves["Arquivo"], "PXTrataDadosPrioridade");
    EXPECT_EQ(regs[0].chaves["Linha"], "52");
    EXPECT_EQ(regs[0].chaves["Log"],
              "hr = GetAcessoManutencao()->BuscaPonteirosPrioridade(dadosFiltro, aPonteiros)\thr = 0X80004005 "
              "E_FAIL\tSEVERITY = 1 SEVERITY_ERROR\tFACILITY = 0 FACILITY_NULL\tCODE = 16389 \tDescrição = Erro "
              "não especificado.");
}

// Every data-service call of a save, failing in turn: exactly that failure
// on field 1; only the code search is traced.
TEST_F(PXTrataDadosPrioridadeTest, EveryCallFailingInTurnPassesItsErrorOn) {
    CQZDadosPX_Prioridade p;
    for (auto modelo : {Prioridade("NOVA", "Nova"), urgente}) {
        VarreGravacao(handler, modelo, p, 1, [&] {
            const bool busca = falhas.Historico().back() == "BuscaPonteirosPrioridade";
            EXPECT_EQ(rastro.Registros().size(), busca ? 1u : 0u);
        });
    }
}
