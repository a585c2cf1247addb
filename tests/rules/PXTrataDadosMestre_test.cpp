#include "rules/PXTrataDadosMestre.h"

#include "platform/QZCodigosResultado.h"
#include "tests/support/PXTeste.h"

namespace {
CQZDadosPX_Mestre Mestre(uint8_t usaData, REG_QZMA mesAno) {
    CQZDadosPX_Mestre m;
    m.SetUsaDataVisualizacao(usaData).SetMesAnoVisualizacao(mesAno).SetObrigarInformarTecnicoManutencao(1);
    return m;
}
}  // namespace

class PXTrataDadosMestreTest : public PXTeste {
protected:
    void SetUp() override {
        PXTeste::SetUp();
        Inicializa(handler);
    }
    CPXTrataDadosMestre handler;
};

// The viewing-month option, on the first save (nothing stored yet) and on a
// later one. The month-year counts as empty when its year is 0.
TEST_F(PXTrataDadosMestreTest, ViewingMonthOption) {
    struct Caso {
        const char* nome;
        uint8_t usa;
        REG_QZMA mesAno;
        long mensagem;  // 0: passes
    } casos[] = {
        {"off, empty", 0, REG_QZMA(), 0},
        {"off, filled", 0, REG_QZMA(3, 2026), 0},
        {"on, empty", 1, REG_QZMA(), 85},
        {"on, month without year", 1, REG_QZMA(5, 0), 85},
        {"on, filled", 1, REG_QZMA(3, 2026), 0},
        {"on as any non-zero value", 2, REG_QZMA(), 85},
    };
    for (bool jaGravado : {false, true}) {
        CQZDadosPX_Mestre gravado;
        if (jaGravado) {
            gravado = Mestre(0, REG_QZMA());
            ASSERT_EQ(0, armazem.Grava(gravado));
        }
        for (const Caso& c : casos) {
            auto m = Mestre(c.usa, c.mesAno);
            m.SetDmaHmsGravacao(gravado.GetDmaHmsGravacao());
            const auto antes = m;
            EXPECT_EQ(c.mensagem == 0 ? 1 : 0, handler.TrataGravacao(&m, nullptr)) << c.nome;
            if (c.mensagem == 0)
                EXPECT_THAT(handler.GetErro(), SemErro()) << c.nome;
            else
                EXPECT_THAT(handler.GetErro(), TemMensagem(QZ_MODULO_PX, c.mensagem, 1)) << c.nome;
            EXPECT_TRUE(m == antes) << c.nome;
        }
    }
}

// Two users load the settings; the second save is refused on field 0, before
// its own options are looked at.
TEST_F(PXTrataDadosMestreTest, SecondOfTwoRacingUsersIsRefused) {
    for (bool primeiroSave : {true, false}) {
        CQZDadosPX_Mestre carregado;
        ASSERT_EQ(0, armazem.LeMestre(&carregado, 0));
        EXPECT_EQ(carregado.GetDmaHmsGravacao().EhVazio(), primeiroSave);

        auto primeiro = carregado;
        auto segundo = carregado;
        primeiro.SetObrigarApontamentoManutencao(1);
        ASSERT_EQ(1, handler.TrataGravacao(&primeiro, nullptr));
        ASSERT_EQ(0, armazem.Grava(primeiro));
        relogio.AvancaSegundo();

        segundo.SetUsaDataVisualizacao(1);
        EXPECT_EQ(0, handler.TrataGravacao(&segundo, nullptr)) << (primeiroSave ? "first save" : "later save");
        EXPECT_THAT(handler.GetErro(), TemMensagem(QZ_MODULO_PX, 3, 0));

        // Reloaded, the second user's change goes through.
        ASSERT_EQ(0, armazem.LeMestre(&segundo, 0));
        segundo.SetUsaDataVisualizacao(1).SetMesAnoVisualizacao(REG_QZMA(1, 2027));
        EXPECT_EQ(1, handler.TrataGravacao(&segundo, nullptr));
        ASSERT_EQ(0, armazem.Grava(segundo));
    }
    CQZDadosPX_Mestre final;
    ASSERT_EQ(0, armazem.LeMestre(&final, 0));
    EXPECT_EQ(final.GetObrigarApontamentoManutencao(), 1);
    EXPECT_EQ(final.GetMesAnoVisualizacao(), REG_QZMA(1, 2027));
}

TEST_F(PXTrataDadosMestreTest, ReadFailurePassesTheServiceErrorWithoutField) {
    falhas.FalhaEm("LeMestre", 0, QZ_E_BANCO, "Disco indisponível");
    auto m = Mestre(1, REG_QZMA());
    EXPECT_EQ(0, handler.TrataGravacao(&m, nullptr));
    EXPECT_THAT(handler.GetErro(), TemFalhaServico(QZ_E_BANCO, 0));
    EXPECT_EQ(handler.GetMensagem(), "Disco indisponível (LeMestre)");
    EXPECT_TRUE(rastro.Registros().empty());
}
