#include "rules/PXTrataDados.h"

#include "rules/PXTrataDadosPrioridade.h"
#include "tests/support/PXTeste.h"

namespace {

// A handler with save rules only: deletion falls to the base's refusal.
class TrataSoGravacao : public CPXTrataDados {
public:
    int chamadas = 0;
    using CPXTrataDados::ValidaRegistroAtualizado;

protected:
    CQZDadosGT_Erro& OnTrataGravacao(TQZBaseParaDados*, IQZTrataInconsistencia*) override {
        ++chamadas;
        return *this;
    }
};

}  // namespace

class PXTrataDadosTest : public PXTeste {};

TEST_F(PXTrataDadosTest, UninitialisedHandlerRefusesWith161AndLeavesTheRecord) {
    TrataSoGravacao h;
    CQZDadosPX_Prioridade p;
    p.SetCodigo("  A ");
    EXPECT_EQ(0, h.TrataGravacao(&p, nullptr));
    EXPECT_THAT(h.GetErro(), TemMensagem(QZ_MODULO_PX, 161, 0));
    EXPECT_EQ(0, h.TrataExclusao(&p, nullptr));
    EXPECT_THAT(h.GetErro(), TemMensagem(QZ_MODULO_PX, 161, 0));
    EXPECT_EQ(h.chamadas, 0);
    EXPECT_EQ(p.GetCodigo(), "  A ");
}

TEST_F(PXTrataDadosTest, DefaultDeleteRuleRefusesWith162) {
    TrataSoGravacao h;
    Inicializa(h);
    CQZDadosPX_Prioridade p;
    EXPECT_EQ(1, h.TrataGravacao(&p, nullptr));
    EXPECT_EQ(0, h.TrataExclusao(&p, nullptr));
    EXPECT_THAT(h.GetErro(), TemMensagem(QZ_MODULO_PX, 162, 0));
    EXPECT_EQ(1, h.chamadas);
}

TEST_F(PXTrataDadosTest, EachCallStartsFromAClearErrorRecord) {
    CPXTrataDadosPrioridade h;
    Inicializa(h);
    CQZDadosPX_Prioridade vazia;
    EXPECT_EQ(0, h.TrataGravacao(&vazia, nullptr));
    CQZDadosPX_Prioridade boa;
    boa.SetCodigo("P1").SetDescricao("Urgente");
    EXPECT_EQ(1, h.TrataGravacao(&boa, nullptr));
    EXPECT_THAT(h.GetErro(), SemErro());
    EXPECT_EQ(h.GetMensagemNumero(), 0);
}

TEST_F(PXTrataDadosTest, StampsCompareOnTheLow38BitsOnly) {
    TrataSoGravacao h;
    const REG_QZDMAHMSUTC base(REG_QZDMA(1, 2, 2026), 10, 0, 0, 0);
    const REG_QZDMAHMSUTC soAcima(base.ullValor | (1ull << 38) | (0xFFull << 50));
    const REG_QZDMAHMSUTC bit37(base.ullValor ^ (1ull << 37));
    const REG_QZDMAHMSUTC bit0(base.ullValor ^ 1ull);
    const long campo = 7;
    EXPECT_THAT(h.ValidaRegistroAtualizado(base, soAcima, campo), SemErro());
    EXPECT_THAT(h.ValidaRegistroAtualizado(base, bit37, campo), TemMensagem(QZ_MODULO_PX, 3, 7));
    EXPECT_THAT(h.ValidaRegistroAtualizado(base, bit0, campo), TemMensagem(QZ_MODULO_PX, 3, 7));
    EXPECT_THAT(h.ValidaRegistroAtualizado(base, base, campo), SemErro());
}

TEST_F(PXTrataDadosTest, BaseInitialisationCodesAreTracedAndReturnedUnchanged) {
    // A factory whose connections come with a success code other than 0.
    struct FabricaComAviso : IQZFabricaConexoes {
        std::shared_ptr<CQZFabricaArmazemSQL> real;
        long Abre(std::unique_ptr<IQZConexaoEmpresa>& conexao, CQZDadosGT_Erro& erro) override {
            return real->Abre(conexao, erro) == 0 ? 1 : -1;
        }
        void Devolve(std::unique_ptr<IQZConexaoEmpresa> conexao) override { real->Devolve(std::move(conexao)); }
    };
    auto comAviso = std::make_shared<FabricaComAviso>();
    comAviso->real = fabrica;
    CQZServicosEmpresa servicos = PXServicosTeste(fabrica, &relogio, &rastro);
    servicos.pFabrica = comAviso;
    CQZRegistroServicos::Registra("COM_AVISO", servicos);
    TrataSoGravacao h;
    EXPECT_EQ(1, h.Inicializa("COM_AVISO", 7, 42));
    EXPECT_TRUE(h.EstaInicializado());
    auto regs = rastro.Registros();
    ASSERT_EQ(regs.size(), 1u);
    EXPECT_EQ(regs[0].funcao, "CPXTrataDados::OnInicializa");
    EXPECT_EQ(regs[0].chaves["Arquivo"], "PXTrataDados");
    EXPECT_EQ(regs[0].chaves["Linha"], "26");
    EXPECT_EQ(regs[0].chaves["Log"].Left(40), "hr = __super::OnInicializa()\thr = 0X1 S_");
    EXPECT_EQ(regs[0].empresa, "COM_AVISO");
    EXPECT_EQ(regs[0].usuario, 7);
    EXPECT_EQ(regs[0].sessao, 42u);
    CQZRegistroServicos::Remove("COM_AVISO");
}

TEST_F(PXTrataDadosTest, CompanyWithoutServicesStaysUninitialised) {
    // A company registered with its trace but no data services.
    CQZRegistroServicos::Registra("NINGUEM", PXServicosTeste(nullptr, &relogio, &rastro));
    TrataSoGravacao h;
    long hr = h.Inicializa("NINGUEM", 1, 1);
    CQZRegistroServicos::Remove("NINGUEM");
    EXPECT_EQ(hr, QZ_E_SEM_SERVICOS);
    EXPECT_FALSE(h.EstaInicializado());
    ASSERT_EQ(rastro.Registros().size(), 1u);
    CQZDadosPX_Prioridade p;
    EXPECT_EQ(0, h.TrataGravacao(&p, nullptr));
    EXPECT_THAT(h.GetErro(), TemMensagem(QZ_MODULO_PX, 161, 0));
}

TEST_F(PXTrataDadosTest, InterfaceFlagIsKeptAndCopied) {
    struct Exposto : CPXTrataDados {
        using CPXTrataDados::CPXTrataDados;
        using CPXTrataDados::InterfaceUsuarioEstaHabilitada;
    };
    Exposto com(true), sem;
    EXPECT_TRUE(com.InterfaceUsuarioEstaHabilitada());
    EXPECT_FALSE(sem.InterfaceUsuarioEstaHabilitada());
    sem = com;
    EXPECT_TRUE(sem.InterfaceUsuarioEstaHabilitada());
}
