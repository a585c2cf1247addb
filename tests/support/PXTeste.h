// Fixture shared by the rule tests: an in-memory store registered for one
// company, a settable clock, a capturing trace sink and fault injection.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/QZRastro.h"
#include "store/QZArmazemSQL.h"
#include "store/QZInjetorFalhas.h"

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

class PXTeste : public ::testing::Test {
protected:
    PXTeste() : armazem(":memory:") {}

    void SetUp() override {
        ASSERT_TRUE(armazem.EstaAberto()) << QZParaUtf8(armazem.GetErro().GetMensagem());
        armazem.DefineRelogio(&relogio);
        armazem.DefineGancho(&falhas);
        QZDefineSaidaRastro(&rastro);
        CQZServicosEmpresa servicos;
        servicos.pManutencao = &armazem;
        servicos.pGestavo = &armazem;
        CQZRegistroServicos::Registra(kEmpresa, servicos);
    }

    void TearDown() override {
        QZDefineSaidaRastro(nullptr);
        CQZRegistroServicos::Remove(kEmpresa);
    }

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

    static inline const CString kEmpresa = "EMPRESA01";
    CQZArmazemSQL armazem;
    CQZRelogioFixo relogio{REG_QZDMAHMSUTC(10, 3, 2026, 9, 30, 0)};
    CQZInjetorFalhas falhas;
    CQZSaidaRastroCaptura rastro;
};
