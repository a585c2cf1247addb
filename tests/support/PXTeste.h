// Fixture shared by the rule tests: an in-memory store registered for one
// company (every routine object opens its own connection to it; `armazem`
// is the test's own), a settable clock, a capturing trace sink and fault
// injection on every connection.
#pragma once

#include <gmock/gmock.h>
#include <functional>
#include <string>
#include <vector>
#include <gtest/gtest.h>

#include "platform/QZRastro.h"
#include "store/QZArmazemSQL.h"
#include "store/QZFabricaArmazemSQL.h"
#include "store/QZInjetorFalhas.h"
#include "tests/support/PXPostgresTeste.h"

// The error record holds message `mensagem` of `modulo` on field `campo`.
MATCHER_P3(TemMensagem, modulo, mensagem, campo,
           std::string("has message ") + std::to_string(mensagem) + " of module " + std::to_string(modulo) +
               " on field " + std::to_string(campo)) {
    *result_listener << "type " << arg.GetTipoErro() << ", module " << arg.GetModulo() << ", message "
                     << arg.GetMensagemNumero() << ", field " << arg.GetCodigoCampo();
    return arg.GetTipoErro() != 0 && arg.GetModulo() == modulo && arg.GetMensagemNumero() == mensagem &&
           arg.GetCodigoCampo() == campo;
}

MATCHER(SemErro, "has no error") {
    *result_listener << "type " << arg.GetTipoErro() << ", module " << arg.GetModulo() << ", message "
                     << arg.GetMensagemNumero() << ", field " << arg.GetCodigoCampo() << ", text \""
                     << QZParaUtf8(arg.GetMensagem()) << "\"";
    return arg.EhErroNenhum() != 0;
}

// The error record is the injected failure of the store (code and text),
// on field `campo`.
MATCHER_P2(TemFalhaServico, hr, campo, "") {
    *result_listener << "hr " << arg.GetUltimoHR() << ", module " << arg.GetModulo() << ", field "
                     << arg.GetCodigoCampo();
    return arg.GetTipoErro() != 0 && arg.GetUltimoHR() == hr && arg.GetModulo() == QZ_MODULO_CONEXAO &&
           arg.GetCodigoCampo() == campo;
}

// The services of a company on `fabrica`, with the test's clock and trace.
inline CQZServicosEmpresa PXServicosTeste(std::shared_ptr<CQZFabricaArmazemSQL> fabrica, const IQZRelogio* relogio,
                                          IQZSaidaRastro* rastro) {
    CQZServicosEmpresa servicos;
    servicos.pFabrica = std::move(fabrica);
    servicos.pRelogio = relogio;
    servicos.pRastro = rastro;
    return servicos;
}

class PXTeste : public ::testing::Test {
protected:
    // In memory; on its own schema of the test server when there is one.
    PXTeste()
        : fabrica(esquema.Url().empty() ? std::make_shared<CQZFabricaArmazemSQL>(":memory:")
                                        : std::make_shared<CQZFabricaArmazemSQL>(esquema.Url(), QZ_ABRE_OU_CRIA)),
          pArmazem(AbrePrimeira(*fabrica)), armazem(*pArmazem) {}

    void SetUp() override {
        ASSERT_TRUE(armazem.EstaAberto()) << QZParaUtf8(armazem.GetErro().GetMensagem());
        fabrica->DefineRelogio(&relogio);
        fabrica->DefineGancho(&falhas);
        armazem.DefineRelogio(&relogio);
        armazem.DefineGancho(&falhas);
        CQZRegistroServicos::Registra(kEmpresa, PXServicosTeste(fabrica, &relogio, &rastro));
    }

    void TearDown() override { CQZRegistroServicos::Remove(kEmpresa); }

    template <class H>
    void Inicializa(H& handler) {
        ASSERT_EQ(0, handler.Inicializa(kEmpresa, 7, 42));
    }

    // Stores a record as the host would and returns it with key and stamp.
    template <class R>
    R Grava(R reg) {
        long hr = armazem.Insere(reg);
        EXPECT_EQ(0, hr) << QZParaUtf8(armazem.GetErro().GetMensagem());
        relogio.AvancaSegundo();
        return reg;
    }

    // Starts counting and failing from a clean slate (after the fixture's writes).
    void ZeraChamadas() {
        falhas.Limpa();
        falhas.ZeraContagem();
        rastro.Limpa();
    }

    // Every data-service call of `operacao` (run each time from the state
    // `prepara` sets up) failed in turn, once: each time the service's own
    // error must come back, and `inalterado` checks that the caller's record
    // and lists are as they were passed. Returns the operations called by
    // the run without failures, in order.
    std::vector<std::string> VarreFalhas(const std::function<void()>& prepara,
                                         const std::function<const CQZDadosGT_Erro&()>& operacao,
                                         const std::function<void()>& inalterado) {
        prepara();
        ZeraChamadas();
        EXPECT_EQ(operacao().GetTipoErro(), 0) << "the run without failures passes";
        const std::vector<std::string> chamadas = falhas.Historico();
        EXPECT_FALSE(chamadas.empty());
        for (size_t k = 1; k <= chamadas.size(); ++k) {
            SCOPED_TRACE(testing::Message() << "call " << k << ", " << chamadas[k - 1]);
            prepara();
            ZeraChamadas();
            falhas.FalhaEm("*", static_cast<long>(k), QZ_E_BANCO_OCUPADO, "Banco ocupado");
            const CQZDadosGT_Erro& erro = operacao();
            EXPECT_EQ(erro.GetUltimoHR(), QZ_E_BANCO_OCUPADO);
            EXPECT_EQ(erro.GetModulo(), QZ_MODULO_CONEXAO);
            EXPECT_EQ(erro.GetMensagem(), CString(("Banco ocupado (" + chamadas[k - 1] + ")").c_str()));
            inalterado();
        }
        return chamadas;
    }

    static std::unique_ptr<CQZArmazemSQL> AbrePrimeira(CQZFabricaArmazemSQL& f) {
        CQZDadosGT_Erro erro;
        auto a = f.AbreArmazem(erro);
        return a ? std::move(a) : std::make_unique<CQZArmazemSQL>(":memory:");
    }

    static inline const CString kEmpresa = "EMPRESA01";
    PXEsquemaPostgres esquema;
    std::shared_ptr<CQZFabricaArmazemSQL> fabrica;
    std::unique_ptr<CQZArmazemSQL> pArmazem;
    CQZArmazemSQL& armazem;
    CQZRelogioFixo relogio{REG_QZDMAHMSUTC(10, 3, 2026, 9, 30, 0)};
    CQZInjetorFalhas falhas;
    CQZSaidaRastroCaptura rastro;
};
