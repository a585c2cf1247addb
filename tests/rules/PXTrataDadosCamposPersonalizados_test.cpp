#include "rules/PXTrataDadosCamposPersonalizados.h"

#include "platform/QZCodigosResultado.h"
#include "tests/support/PXTeste.h"

namespace {

CQZDadosPX_CamposPersonalizados Campo(const char* codigo, const char* descricao, uint8_t tipo, uint32_t classe = 0,
                                      uint8_t destinacao = 1) {
    CQZDadosPX_CamposPersonalizados c;
    c.SetDestinacao(destinacao).SetCodigo(codigo).SetDescricao(descricao).SetTipoClassificacao(tipo);
    c.SetPonteiroClasse(classe);
    return c;
}

}  // namespace

TEST(PXTrataDadosCamposPersonalizadosDestinacao, OnlyTimeEntriesOfTasks) {
    EXPECT_TRUE(CPXTrataDadosCamposPersonalizados::GetDestinacaoEhValida(1));
    for (uint8_t d : {0, 2, 255}) {
        EXPECT_FALSE(CPXTrataDadosCamposPersonalizados::GetDestinacaoEhValida(d)) << int(d);
        EXPECT_EQ(CPXTrataDadosCamposPersonalizados::GetNomeDestinacao(d), "") << int(d);
    }
    EXPECT_EQ(CPXTrataDadosCamposPersonalizados::GetNomeDestinacao(1), CString("Apontamentos de Tarefas"));
    EXPECT_EQ(CPXTrataDadosCamposPersonalizados::GetNomeDestinacao(7), "");
}

class PXTrataDadosCamposPersonalizadosTest : public PXTeste {
protected:
    // avulso, and a definition of destination 2 stored by another program
    void SetUp() override {
        PXTeste::SetUp();
        Inicializa(handler);
        avulso = Grava(Campo("AV", "Avulso", 1));
        outraDestinacao = Grava(Campo("OD", "Outra destinação", 1, 0, 2));
        ZeraChamadas();
    }

    int Salva(const CQZDadosPX_CamposPersonalizados& c) {
        salvo = c;
        return handler.TrataGravacao(&salvo, nullptr);
    }

    CPXTrataDadosCamposPersonalizados handler;
    CQZDadosPX_CamposPersonalizados avulso, outraDestinacao, salvo;
};

TEST_F(PXTrataDadosCamposPersonalizadosTest, FieldChecksInOrder) {
    auto semCodigo = avulso;
    semCodigo.SetCodigo(" ");
    struct Caso {
        const char* nome;
        CQZDadosPX_CamposPersonalizados c;
        long mensagem, campo;
    } casos[] = {
        {"destination 0, before the blank code", Campo("", "", 1, 0, 0), 164, 15},
        {"destination 2", Campo("N", "Novo", 1, 0, 2), 164, 15},
        {"new, blank code", Campo("  ", "Novo", 1), 1, 15},
        {"saved, blank code", semCodigo, 2, 16},
        {"code of another definition, before the description", Campo(" AV ", "", 1), 10, 15},
        {"blank description", Campo("N", " ", 1), 49, 17},
    };
    for (auto& c : casos) {
        EXPECT_EQ(0, Salva(c.c)) << c.nome;
        EXPECT_THAT(handler.GetErro(), TemMensagem(QZ_MODULO_PX, c.mensagem, c.campo)) << c.nome;
    }
}

// The checks work on the caller's record: a refused definition comes back
// with its code and description trimmed.
TEST_F(PXTrataDadosCamposPersonalizadosTest, RefusedDefinitionComesBackTrimmed) {
    auto c = Campo(" AV ", " Outro ", 2);
    c.SetDetalhamento("Detalhe").SetInativo(1);
    EXPECT_EQ(0, Salva(c));
    EXPECT_THAT(handler.GetErro(), TemMensagem(QZ_MODULO_PX, 10, 15));
    auto esperado = c;
    esperado.SetCodigo("AV").SetDescricao("Outro");
    EXPECT_EQ(salvo, esperado) << "a refused class is not normalised";
}

TEST_F(PXTrataDadosCamposPersonalizadosTest, CodesAreUniqueWithinTheDestination) {
    EXPECT_EQ(1, Salva(Campo(" OD ", " Mesmo código, destinação 1 ", 1)));
    EXPECT_EQ(salvo.GetCodigo(), "OD");
    EXPECT_EQ(salvo.GetDescricao(), "Mesmo código, destinação 1");
}

TEST_F(PXTrataDadosCamposPersonalizadosTest, ClassDropsDetailAndInactiveFlag) {
    auto c = Campo("NC", "Nova classe", 2);
    c.SetDetalhamento("Detalhe").SetInativo(1);
    EXPECT_EQ(1, Salva(c));
    EXPECT_EQ(salvo.GetDetalhamento(), "");
    EXPECT_EQ(salvo.GetInativo(), 0);

    auto f = Campo("NF", "Novo campo", 1);
    f.SetDetalhamento("Detalhe").SetInativo(1);
    EXPECT_EQ(1, Salva(f));
    EXPECT_EQ(salvo, f) << "a definition keeps them";
}

TEST_F(PXTrataDadosCamposPersonalizadosTest, SubtreeIsTakenWithinTheStoredDestination) {
    auto soOutraDestinacao = Grava(Campo("CV", "Classe", 2));
    auto filho = outraDestinacao;
    filho.SetPonteiroClasse(soOutraDestinacao.GetPonteiro());
    ASSERT_EQ(0, armazem.Atualiza(filho));
    ZeraChamadas();

    soOutraDestinacao.SetTipoClassificacao(1);
    EXPECT_EQ(1, Salva(soOutraDestinacao)) << "its only member belongs to another destination";
    EXPECT_EQ(1, falhas.Chamadas("BuscaClassificacaoCamposPersonalizados"));
}
