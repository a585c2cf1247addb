#include <gtest/gtest.h>

#include "platform/QZDadosGT_Erro.h"

TEST(CQZDadosGT_ErroTest, SetAvisoReplacesTheWholeVerdict) {
    CQZDadosGT_Erro e;
    e.SetAvisoPersonalizado(QZ_MODULO_PX, 0, 146L, CString("S1"), "Parada").SetItem(4);
    e.SetAviso(QZ_MODULO_PX, 10, 1);
    EXPECT_EQ(e.GetTipoErro(), CQZDadosGT_Erro::TIPO_ERRO_AVISO);
    EXPECT_EQ(e.GetMensagemNumero(), 10);
    EXPECT_EQ(e.GetCodigoCampo(), 1);
    EXPECT_EQ(e.GetItem(), 0);
    EXPECT_TRUE(e.GetParametros().IsEmpty());
}

TEST(CQZDadosGT_ErroTest, PersonalisedMessagesKeepParametersOrFormatText) {
    CQZDadosGT_Erro numerada;
    numerada.SetAvisoPersonalizado(QZ_MODULO_PX, 3, 163L, CString("T-01"), 7u);
    ASSERT_EQ(numerada.GetParametros().GetSize(), 2);
    EXPECT_EQ(numerada.GetParametros()[0], "T-01");
    EXPECT_EQ(numerada.GetParametros()[1], "7");
    EXPECT_EQ(numerada.GetCodigoCampo(), 3);

    CQZDadosGT_Erro formatada;
    formatada.SetAvisoPersonalizado(QZ_MODULO_PX, 0, "Técnico %s %s é dependente", CString("T1"), "Ana");
    EXPECT_EQ(formatada.GetMensagem(), "Técnico T1 Ana é dependente");
    EXPECT_EQ(formatada.GetMensagemNumero(), 0);
}

TEST(CQZDadosGT_ErroTest, SetErroCopiesAServiceVerdictAndChains) {
    CQZDadosGT_Erro servico;
    servico.SetErro(0x80040A01L, QZ_MODULO_CONEXAO, 2, "Registro %d não encontrado", 9);
    CQZDadosGT_Erro handler;
    handler.SetErro(&servico).SetCodigoCampo(1);
    EXPECT_EQ(handler.GetTipoErro(), CQZDadosGT_Erro::TIPO_ERRO_ERRO);
    EXPECT_EQ(handler.GetModulo(), QZ_MODULO_CONEXAO);
    EXPECT_EQ(handler.GetUltimoHR(), 0x80040A01L);
    EXPECT_EQ(handler.GetCodigoCampo(), 1);
    EXPECT_EQ(handler.GetMensagem(), "Registro 9 não encontrado");
    EXPECT_EQ(servico.GetCodigoCampo(), 0);
    EXPECT_TRUE(handler.LimpaErro().EhErroNenhum());
    EXPECT_EQ(handler.GetUltimoHR(), 0);
}

namespace {
class TabelaTeste : public IQZTabelaMensagens {
public:
    bool Renderiza(QZModulo m, long n, const CStringArray& p, CString& texto) const override {
        if (m != QZ_MODULO_PX || n != 146) return false;
        texto = "Situação " + p[0] + " inativa";
        return true;
    }
};
}  // namespace

TEST(CQZDadosGT_ErroTest, GetMensagemUsesTheLoadedTableAndFallsBackToAReference) {
    CQZDadosGT_Erro e;
    e.SetAvisoPersonalizado(QZ_MODULO_PX, 5, 146L, CString("S1"));
    EXPECT_EQ(e.GetMensagem(), "Mensagem 146 do módulo 28: S1");
    TabelaTeste tabela;
    CQZDadosGT_Erro::DefineTabelaMensagens(&tabela);
    EXPECT_EQ(e.GetMensagem(), "Situação S1 inativa");
    CQZDadosGT_Erro::DefineTabelaMensagens(nullptr);
    EXPECT_TRUE(CQZDadosGT_Erro().GetMensagem().IsEmpty());
}
