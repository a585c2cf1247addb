#include "rules/PXTrataDadosTarefa.h"

#include "platform/QZCodigosResultado.h"
#include "tests/support/PXTeste.h"

namespace {

CQZDadosPX_Tarefa Tarefa(const char* codigo, const char* nome, uint8_t tipo, uint32_t pai = 0) {
    CQZDadosPX_Tarefa t;
    t.SetCodigo(codigo).SetNome(nome).SetTipoClassificacao(tipo).SetPonteiroPai(pai);
    return t;
}

_REG_POSICAO_PRODUTOPS Posicao(uint32_t item, uint16_t grade1 = 0) {
    _REG_POSICAO_PRODUTOPS p;
    p.lPonteiroProduto = item;
    p.usPonteiroGrade1 = grade1;
    return p;
}

CQZDadosPX_TarefaComponente Componente(uint8_t tipo, _REG_POSICAO_PRODUTOPS posicao, int64_t quantidade) {
    CQZDadosPX_TarefaComponente c;
    c.SetTipoComponente(tipo).SetPosicaoProdutoServico(posicao).SetQuantidade(CQZMoeda::DeInteiro(quantidade));
    return c;
}

}  // namespace

class PXTrataDadosTarefaTest : public PXTeste {
protected:
    void SetUp() override {
        PXTeste::SetUp();
        Inicializa(handler);
        folha = Grava(Tarefa("F", "Folha", 1));
        ZeraChamadas();
    }

    int Salva(const CQZDadosPX_Tarefa& t) {
        salvo = t;
        return handler.TrataGravacao(&salvo, nullptr);
    }

    CPXTrataDadosTarefa handler;
    CQZDadosPX_Tarefa folha, salvo;
};

TEST_F(PXTrataDadosTarefaTest, FieldChecksInOrder) {
    auto semCodigo = folha;
    semCodigo.SetCodigo("  ");
    auto apontSemInf = Tarefa("N", "Nova", 1);
    apontSemInf.SetEfetuarApontTarefa(1).SetAtribuirSituacaoTarefa(1);
    auto fluxoSemNada = Tarefa("N", "Nova", 1);
    fluxoSemNada.SetAtribuirSituacaoTarefa(1).SetGarantia(1);
    auto fluxoSemInicial = Tarefa("N", "Nova", 1);
    fluxoSemInicial.SetAtribuirSituacaoTarefa(1).SetPonteiroSituacaoGrupo(4);
    auto garantiaSemQuant = Tarefa("N", "Nova", 1);
    garantiaSemQuant.SetGarantia(1).SetPonteiroPeriodoGarantia(3);
    auto garantiaSemPeriodo = Tarefa("N", "Nova", 1);
    garantiaSemPeriodo.SetGarantia(1).SetQuantPeriodoGarantia(CQZMoeda::DeInteiro(2));
    struct Caso {
        const char* nome;
        CQZDadosPX_Tarefa t;
        long mensagem, campo;
    } casos[] = {
        {"new, blank code", Tarefa(" ", "X", 1), 1, 65},
        {"saved, blank code", semCodigo, 2, 66},
        {"code of another task, before the name", Tarefa(" F ", "", 1), 10, 65},
        {"blank name", Tarefa("N", "  ", 1), 4, 67},
        {"time entries without custom information, before the flow", apontSemInf, 157, 62},
        {"flow without group nor initial situation, before the warranty", fluxoSemNada, 179, 72},
        {"flow without initial situation", fluxoSemInicial, 180, 73},
        {"warranty of 0 periods, unit given", garantiaSemQuant, 158, 59},
        {"warranty of 2 periods without unit", garantiaSemPeriodo, 159, 63},
    };
    for (auto& c : casos) {
        EXPECT_EQ(0, Salva(c.t)) << c.nome;
        EXPECT_THAT(handler.GetErro(), TemMensagem(QZ_MODULO_PX, c.mensagem, c.campo)) << c.nome;
    }
}

TEST_F(PXTrataDadosTarefaTest, CompleteLeavesPass) {
    auto t = Tarefa(" N ", " Nova ", 1);
    t.SetEfetuarApontTarefa(1).SetPonteiroInfPersonalizada(8);
    t.SetAtribuirSituacaoTarefa(1).SetPonteiroSituacaoGrupo(4).SetPonteiroSituacaoInicial(5);
    t.SetGarantia(1).SetQuantPeriodoGarantia(CQZMoeda::DeInteiro(-1)).SetPonteiroPeriodoGarantia(3);
    EXPECT_EQ(1, Salva(t)) << "a negative warranty quantity is not refused";
    EXPECT_EQ(salvo.GetCodigo(), "N");
    EXPECT_EQ(salvo.GetNome(), "Nova");
}

TEST_F(PXTrataDadosTarefaTest, GroupIsNormalisedWithoutWarning) {
    auto t = Tarefa("GN", "Grupo novo", 2);
    t.SetTempoPrevisto(CQZMoeda::DeInteiro(3)).SetDescricao("Trocar o óleo").SetGarantia(1);
    t.SetQuantPeriodoGarantia(CQZMoeda::DeInteiro(2)).SetPonteiroPeriodoGarantia(3);
    t.SetEfetuarApontTarefa(1).SetPonteiroInfPersonalizada(0);  // would be 157 on a leaf
    t.SetAtribuirSituacaoTarefa(1).SetPonteiroSituacaoGrupo(4);
    t.AdicionaMaterial(Componente(1, Posicao(10), 1));
    t.AdicionaEquipamento(Componente(2, Posicao(11), 1));
    t.AdicionaServico(Componente(3, Posicao(12), 1));
    EXPECT_EQ(1, Salva(t)) << QZParaUtf8(handler.GetMensagem());
    EXPECT_TRUE(salvo.GetTempoPrevisto().EhZero());
    EXPECT_TRUE(salvo.GetQuantPeriodoGarantia().EhZero());
    EXPECT_EQ(salvo.GetPonteiroPeriodoGarantia(), 0u);
    EXPECT_EQ(salvo.GetPonteiroInfPersonalizada(), 0u);
    EXPECT_EQ(salvo.GetDescricao(), "");
    EXPECT_EQ(salvo.GetGarantia(), 0);
    EXPECT_EQ(salvo.GetEfetuarApontTarefa(), 0);
    EXPECT_EQ(salvo.GetQuantidadeMaterial() + salvo.GetQuantidadeEquipamento() + salvo.GetQuantidadeServico(), 0);
    EXPECT_EQ(salvo.GetAtribuirSituacaoTarefa(), 1) << "the situation flow is not a leaf's alone";
    EXPECT_EQ(salvo.GetPonteiroSituacaoGrupo(), 4u);
}

// The checks work on the caller's record: a refused task comes back with
// its code and name trimmed, nothing else changed.
TEST_F(PXTrataDadosTarefaTest, RefusedTaskComesBackTrimmed) {
    auto t = Tarefa("  F ", "  Outra ", 1);
    t.SetGarantia(1).SetDescricao(" Descrição ");
    EXPECT_EQ(0, Salva(t));
    EXPECT_THAT(handler.GetErro(), TemMensagem(QZ_MODULO_PX, 10, 65));
    auto esperado = t;
    esperado.SetCodigo("F").SetNome("Outra");
    EXPECT_EQ(salvo, esperado);

    auto grupo = Tarefa(" GX ", " ", 2);
    grupo.SetTempoPrevisto(CQZMoeda::DeInteiro(3)).AdicionaMaterial(Componente(1, Posicao(10), 1));
    EXPECT_EQ(0, Salva(grupo));
    EXPECT_THAT(handler.GetErro(), TemMensagem(QZ_MODULO_PX, 4, 67));
    EXPECT_EQ(salvo.GetCodigo(), "GX");
    EXPECT_EQ(salvo.GetQuantidadeMaterial(), 1) << "a refused group is not normalised";
    EXPECT_EQ(salvo.GetTempoPrevisto(), CQZMoeda::DeInteiro(3));
}

// The three kinds share one shape; only their messages and fields differ.
TEST_F(PXTrataDadosTarefaTest, ComponentLinesByKind) {
    struct Tipo {
        uint8_t tipo;
        long semProduto, repetido, campoCodigo, campoQuantidade;
    } tipos[] = {{1, 36, 47, 75, 76}, {2, 37, 46, 78, 79}, {3, 38, 48, 81, 82}};
    for (const auto& k : tipos) {
        SCOPED_TRACE(testing::Message() << "kind " << int(k.tipo));
        const std::vector<CQZDadosPX_TarefaComponente> lista{Componente(k.tipo, Posicao(10), 1),
                                                             Componente(k.tipo, Posicao(10, 2), 1),
                                                             Componente(k.tipo, Posicao(20), 1)};
        auto verifica = [&](CQZDadosPX_TarefaComponente c, int64_t index) {
            return handler.TrataIncluirAlterarComponente(&c, lista, index);
        };
        EXPECT_THAT(verifica(Componente(k.tipo, Posicao(0), 0), -1),
                    TemMensagem(QZ_MODULO_PX, k.semProduto, k.campoCodigo));
        EXPECT_THAT(verifica(Componente(k.tipo, Posicao(30), 0), -1), TemMensagem(QZ_MODULO_PX, 39, k.campoQuantidade));
        EXPECT_THAT(verifica(Componente(k.tipo, Posicao(30), -1), -1),
                    TemMensagem(QZ_MODULO_PX, 39, k.campoQuantidade));
        EXPECT_THAT(verifica(Componente(k.tipo, Posicao(10), 5), 3),
                    TemMensagem(QZ_MODULO_PX, k.repetido, k.campoCodigo))
            << "added: index outside the list";
        EXPECT_THAT(verifica(Componente(k.tipo, Posicao(10), 5), 2),
                    TemMensagem(QZ_MODULO_PX, k.repetido, k.campoCodigo))
            << "line 2 changed to the product of line 0";
        EXPECT_THAT(verifica(Componente(k.tipo, Posicao(20), 5), 2), SemErro()) << "line 2 keeps its own product";
        EXPECT_THAT(verifica(Componente(k.tipo, Posicao(10, 3), 5), -1), SemErro()) << "another grid position";
    }
}

TEST_F(PXTrataDadosTarefaTest, ComponentOfAnUnknownKindGetsTheTextAlone) {
    const std::vector<CQZDadosPX_TarefaComponente> lista{Componente(4, Posicao(0), 0)};
    for (uint8_t tipo : {0, 4, 255}) {
        auto c = Componente(tipo, Posicao(0), 0);
        const auto& erro = handler.TrataIncluirAlterarComponente(&c, lista, -1);
        EXPECT_NE(erro.GetTipoErro(), 0) << int(tipo);
        EXPECT_EQ(erro.GetModulo(), QZ_MODULO_PX);
        EXPECT_EQ(erro.GetCodigoCampo(), 0);
        EXPECT_EQ(erro.GetMensagem(), CString("Tipo do componente não é válido.")) << int(tipo);
    }
}

TEST_F(PXTrataDadosTarefaTest, ComponentCheckStartsFromAClearRecord) {
    auto ruim = Componente(1, Posicao(0), 1);
    auto boa = Componente(1, Posicao(7), 1);
    handler.TrataIncluirAlterarComponente(&ruim, {}, -1);
    EXPECT_THAT(handler.TrataIncluirAlterarComponente(&boa, {}, -1), SemErro());
}
