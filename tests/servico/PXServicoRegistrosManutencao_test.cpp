// Orders through the save/delete service, as the hosts declare them: every
// call the service and its handler make failed in turn.
#include "host/PXTiposHost.h"
#include "servico/PXServicoRegistros.h"
#include "tests/rules/PXTrataDadosManutencaoPlanta.h"

namespace {
constexpr uint32_t SITUACAO_CANCELAMENTO = 84;
}

class PXServicoRegistrosManutencaoTest : public PXTrataDadosManutencaoTest {
protected:
    void SetUp() override {
        PXTrataDadosManutencaoTest::SetUp();
        GravaSituacao(SITUACAO_CANCELAMENTO, 16);
        ZeraChamadas();
    }

    CQZDadosPX_Manutencao Armazenada() {
        ZeraChamadas();
        CQZDadosPX_Manutencao m;
        EXPECT_EQ(0, armazem.LeManutencao(gravada.GetDmc(), &m, 0xFFFF));
        return m;
    }

    // Runs `operacao` with the k-th call failed, k = 1, 2, ... until a run
    // makes fewer than k calls (nothing failed): that run must be allowed.
    // Every failed run must answer with the injected error (as the service's
    // failure or as the verdict) and leave the store as `estado` read it.
    template <class E>
    void VarreServico(const std::function<long(CPXServicoRegistros&, CPXResultadoRegistro&)>& operacao,
                      const std::function<E()>& estado) {
        const E antes = estado();
        for (long k = 1;; ++k) {
            SCOPED_TRACE(testing::Message() << "call " << k);
            CPXServicoRegistros servico(sessao);
            CPXResultadoRegistro resultado;
            ZeraChamadas();
            falhas.FalhaEm("*", k, QZ_E_BANCO_OCUPADO, "Banco ocupado");
            const long hr = operacao(servico, resultado);
            if (falhas.TotalChamadas() < k) {
                EXPECT_EQ(hr, 0) << QZParaUtf8(servico.GetErro().GetMensagem());
                EXPECT_TRUE(resultado.permitido) << QZParaUtf8(resultado.veredito.GetMensagem());
                EXPECT_GT(k, 3) << "the run made the calls expected of it";
                return;
            }
            const CQZDadosGT_Erro& erro = hr != 0 ? servico.GetErro() : resultado.veredito;
            EXPECT_FALSE(resultado.permitido);
            EXPECT_FALSE(resultado.gravado);
            EXPECT_EQ(erro.GetUltimoHR(), QZ_E_BANCO_OCUPADO) << QZParaUtf8(erro.GetMensagem());
            EXPECT_EQ(estado(), antes);
        }
    }

    const IPXTipoHost& tipo = *PXBuscaTipoHost("CQZDadosPX_Manutencao");
    const CPXSessao sessao{kEmpresa, 7, 42};
};

TEST_F(PXServicoRegistrosManutencaoTest, EveryFailedCallOfACancellationIsTheErrorAndWritesNothing) {
    const int64_t chave = tipo.Chave(gravada);
    VarreServico([&](CPXServicoRegistros& servico, CPXResultadoRegistro& resultado) {
        std::unique_ptr<TQZBaseParaDados> registro;
        return servico.Exclui(tipo, chave, registro, resultado, CPXOpcoesExclusao{SITUACAO_CANCELAMENTO});
    }, std::function<CQZDadosPX_Manutencao()>([&]() { return Armazenada(); }));
    const CQZDadosPX_Manutencao cancelada = Armazenada();
    EXPECT_EQ(cancelada.GetSituacao(), 16);
    EXPECT_EQ(cancelada.GetPonteiroSituacao(), SITUACAO_CANCELAMENTO);
}

TEST_F(PXServicoRegistrosManutencaoTest, EveryFailedCallOfASaveWithLinesIsTheErrorAndWritesNothing) {
    CQZDadosPX_Manutencao iniciada = gravada;
    iniciada.SetPonteiroSituacao(SITUACAO_INICIADA).SetSituacao(0).SetDataHoraInicio(Em(3, 3, 8));
    iniciada.AdicionaApontamento(Apontamento(Em(3, 3, 8), Em(3, 3, 9), TECNICO));
    iniciada.AdicionaTarefa(LinhaTarefa(TAREFA_SIMPLES));
    VarreServico([&](CPXServicoRegistros& servico, CPXResultadoRegistro& resultado) {
        CQZDadosPX_Manutencao m = iniciada;
        return servico.Salva(tipo, m, false, resultado);
    }, std::function<CQZDadosPX_Manutencao()>([&]() { return Armazenada(); }));
    const CQZDadosPX_Manutencao salva = Armazenada();
    EXPECT_EQ(salva.GetSituacao(), 4);
    EXPECT_EQ(salva.GetQuantidadeApontamento(), 1);
}

TEST_F(PXServicoRegistrosManutencaoTest, EveryFailedCallOfAnExpenseEntrysDeleteIsTheErrorAndRemovesNothing) {
    CQZDadosPX_LancamentoGastos lancamento;
    lancamento.SetDmc(REG_QZDMC(REG_QZMA(3, 2026), 0)).SetData(REG_QZDMA(4, 3, 2026)).SetPonteiroRecurso(RECURSO);
    CQZDadosPX_LancamentoGastosItem item;
    item.SetProdutoServico(Item(PRODUTO)).SetQuantidade(CQZMoeda::DeInteiro(1)).SetValor(CQZMoeda::DeInteiro(5));
    lancamento.AdicionaItem(item);
    lancamento = Grava(lancamento);
    const IPXTipoHost& gastos = *PXBuscaTipoHost("CQZDadosPX_LancamentoGastos");
    const int64_t chave = gastos.Chave(lancamento);
    // Whether the entry is still there, and as it was.
    auto estado = [&]() {
        ZeraChamadas();
        CQZDadosPX_LancamentoGastos l;
        const long hr = armazem.LeLancamentoGastos(lancamento.GetDmc(), &l, 0xFFFF);
        return std::make_pair(hr, l);
    };
    VarreServico([&](CPXServicoRegistros& servico, CPXResultadoRegistro& resultado) {
        std::unique_ptr<TQZBaseParaDados> registro;
        return servico.Exclui(gastos, chave, registro, resultado);
    }, std::function<std::pair<long, CQZDadosPX_LancamentoGastos>()>(estado));
    EXPECT_EQ(estado().first, QZ_E_REGISTRO_NAO_ENCONTRADO);
}
