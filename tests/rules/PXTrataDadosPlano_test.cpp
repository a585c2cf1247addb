#include "rules/PXTrataDadosPlano.h"

#include "platform/QZCodigosResultado.h"
#include "tests/support/PXTeste.h"

namespace {

// A leaf plan of type 1 controlled by period, complete.
CQZDadosPX_Plano Plano(const char* codigo, const char* nome, uint8_t tipoClassificacao = 1, uint32_t pai = 0) {
    CQZDadosPX_Plano p;
    p.SetCodigo(codigo).SetNome(nome).SetTipoClassificacao(tipoClassificacao).SetPonteiroPai(pai);
    if (tipoClassificacao == 1)
        p.SetTipo(1).SetPonteiroDisciplina(3).SetPonteiroPrioridade(4).SetPonteiroTipoPeriodo(5);
    return p;
}

CQZDadosPX_Plano Recorrente(uint8_t tipoControle, uint16_t tipoPeriodo, int64_t ciclo) {
    auto p = Plano("N", "Novo");
    p.SetTipoControle(tipoControle).SetPonteiroTipoPeriodo(tipoPeriodo);
    p.SetContadorCicloManutencao(CQZMoeda::DeInteiro(ciclo));
    return p;
}

CQZDadosPX_PlanoAlerta Alerta(const char* descricao, uint8_t antesApos, uint8_t repetir, int64_t tempo, int tecnicos) {
    CQZDadosPX_PlanoAlerta a;
    a.SetDescricao(descricao).SetAntesApos(antesApos).SetRepetirEm(repetir);
    a.SetTempoRepeticao(CQZMoeda::DeInteiro(tempo));
    for (int i = 0; i < tecnicos; ++i) {
        CQZDadosPX_PlanoAlertaTecnico t;
        t.SetPonteiro(static_cast<uint32_t>(10 + i));
        a.AdicionaTecnicos(t);
    }
    return a;
}

_REG_POSICAO_PRODUTOPS Posicao(uint32_t item, uint16_t grade1 = 0) {
    _REG_POSICAO_PRODUTOPS p;
    p.lPonteiroProduto = item;
    p.usPonteiroGrade1 = grade1;
    return p;
}

CQZDadosPX_PlanoComponente Componente(_REG_POSICAO_PRODUTOPS posicao, int64_t quantidade, uint8_t tipo = 'P') {
    CQZDadosPX_PlanoComponente c;
    c.SetPosicaoProduto(posicao).SetQuantidade(CQZMoeda::DeInteiro(quantidade)).SetTipoProdutoServico(tipo);
    return c;
}

CQZDadosPX_PlanoTarefa EntradaTarefa(uint32_t tarefa) {
    CQZDadosPX_PlanoTarefa t;
    t.SetPonteiroTarefa(tarefa);
    return t;
}

std::vector<uint32_t> TarefasDe(const std::vector<CQZDadosPX_PlanoTarefa>& lista) {
    std::vector<uint32_t> v;
    for (const auto& t : lista) v.push_back(t.GetPonteiroTarefa());
    return v;
}

}  // namespace

class PXTrataDadosPlanoTest : public PXTeste {
protected:
    void SetUp() override {
        PXTeste::SetUp();
        Inicializa(handler);
        folha = Grava(Plano("F", "Folha"));
        ZeraChamadas();
    }

    int Salva(const CQZDadosPX_Plano& p) {
        salvo = p;
        return handler.TrataGravacao(&salvo, nullptr);
    }

    CPXTrataDadosPlano handler;
    CQZDadosPX_Plano folha, salvo;
};

TEST_F(PXTrataDadosPlanoTest, FieldChecksInOrder) {
    auto semCodigo = folha;
    semCodigo.SetCodigo(" ");
    auto grupoTipo2 = Plano("GN", "Grupo", 2);
    grupoTipo2.SetTipo(2);
    auto folhaTipo0 = Plano("N", "Novo");
    folhaTipo0.SetTipo(0).SetPonteiroDisciplina(0);
    auto folhaTipo3 = Plano("N", "Novo");
    folhaTipo3.SetTipo(3);
    auto semDisciplina = Plano("N", "Novo");
    semDisciplina.SetPonteiroDisciplina(0).SetPonteiroPrioridade(0);
    auto semPrioridade = Plano("N", "Novo");
    semPrioridade.SetPonteiroPrioridade(0).SetPonteiroTipoPeriodo(0);
    struct Caso {
        const char* nome;
        CQZDadosPX_Plano p;
        long mensagem, campo;
    } casos[] = {
        {"new, blank code", Plano(" ", "Novo"), 1, 21},
        {"saved, blank code", semCodigo, 2, 22},
        {"code of another plan, before the name", Plano(" F ", ""), 10, 21},
        {"blank name", Plano("N", " "), 4, 23},
        {"group of type 2", grupoTipo2, 183, 25},
        {"leaf of type 0, before the discipline", folhaTipo0, 183, 25},
        {"leaf of type 3", folhaTipo3, 183, 25},
        {"no discipline, before the priority", semDisciplina, 19, 26},
        {"no priority, before the period", semPrioridade, 177, 27},
        {"by period without period type", Recorrente(0, 0, 0), 22, 29},
        {"by both without period type nor cycle: the period first", Recorrente(2, 0, 0), 22, 29},
        {"either, period type but no cycle", Recorrente(3, 5, 0), 23, 30},
        {"by counter without cycle", Recorrente(1, 0, 0), 23, 30},
    };
    for (auto& c : casos) {
        EXPECT_EQ(0, Salva(c.p)) << c.nome;
        EXPECT_THAT(handler.GetErro(), TemMensagem(QZ_MODULO_PX, c.mensagem, c.campo)) << c.nome;
    }
}

TEST_F(PXTrataDadosPlanoTest, RecurrenceThatPasses) {
    auto tipo2 = Recorrente(2, 0, 0);
    tipo2.SetTipo(2);
    struct Caso {
        const char* nome;
        CQZDadosPX_Plano p;
    } casos[] = {
        {"by counter needs no period type", Recorrente(1, 0, 7)},
        {"by period needs no cycle", Recorrente(0, 5, 0)},
        {"by both with both", Recorrente(2, 5, 7)},
        {"control type 4 needs neither", Recorrente(4, 0, 0)},
        {"type 2 needs neither", tipo2},
        {"its own code", folha},
    };
    for (auto& c : casos) EXPECT_EQ(1, Salva(c.p)) << c.nome << ": " << QZParaUtf8(handler.GetMensagem());
}

TEST_F(PXTrataDadosPlanoTest, GroupIsNormalisedWithoutWarning) {
    auto p = Plano(" GN ", " Grupo novo ", 2);
    p.SetTipoControle(2).SetPonteiroTipoPeriodo(5).SetContadorCicloManutencao(CQZMoeda::DeInteiro(9));
    p.SetInativarAposRealManut(1);
    p.AdicionaAlerta(Alerta("Aviso", 1, 0, 0, 1));
    p.AdicionaMaterial(Componente(Posicao(7), 1));
    p.AdicionaTarefa(EntradaTarefa(8));
    EXPECT_EQ(1, Salva(p)) << QZParaUtf8(handler.GetMensagem());
    EXPECT_EQ(salvo.GetCodigo(), "GN");
    EXPECT_EQ(salvo.GetNome(), "Grupo novo");
    EXPECT_EQ(salvo.GetTipoControle(), 0);
    EXPECT_EQ(salvo.GetPonteiroTipoPeriodo(), 0);
    EXPECT_TRUE(salvo.GetContadorCicloManutencao().EhZero());
    EXPECT_EQ(salvo.GetInativarAposRealManut(), 0);
    EXPECT_EQ(salvo.GetQuantidadeAlerta(), 0);
    EXPECT_EQ(salvo.GetQuantidadeMaterial(), 1) << "components and tasks stay";
    EXPECT_EQ(salvo.GetQuantidadeTarefa(), 1);
}

// The checks work on the caller's record: a refused plan comes back with its
// code and name trimmed, and a refused group keeps its alerts.
TEST_F(PXTrataDadosPlanoTest, RefusedPlanComesBackTrimmed) {
    auto p = Plano("  F ", "  Outro ", 2);
    p.AdicionaAlerta(Alerta("Aviso", 1, 0, 0, 1));
    EXPECT_EQ(0, Salva(p));
    EXPECT_THAT(handler.GetErro(), TemMensagem(QZ_MODULO_PX, 10, 21));
    auto esperado = p;
    esperado.SetCodigo("F").SetNome("Outro");
    EXPECT_EQ(salvo, esperado);

    auto grupoTipo2 = Plano(" GN ", " Grupo ", 2);
    grupoTipo2.SetTipo(2).SetTipoControle(1).AdicionaAlerta(Alerta("Aviso", 1, 0, 0, 1));
    EXPECT_EQ(0, Salva(grupoTipo2));
    EXPECT_THAT(handler.GetErro(), TemMensagem(QZ_MODULO_PX, 183, 25));
    esperado = grupoTipo2;
    esperado.SetCodigo("GN").SetNome("Grupo");
    EXPECT_EQ(salvo, esperado);
}

TEST_F(PXTrataDadosPlanoTest, AlertChecksInOrder) {
    struct Caso {
        const char* nome;
        CQZDadosPX_PlanoAlerta a;
        long mensagem, campo;
    } casos[] = {
        {"no description nor technicians", Alerta("  ", 0, 1, 0, 0), 49, 44},
        {"before/after not chosen", Alerta("Aviso", 0, 1, 0, 0), 113, 45},
        {"repeats without interval", Alerta("Aviso", 2, 1, 0, 0), 116, 52},
        {"no technician", Alerta("Aviso", 1, 0, 0, 0), 117, 54},
    };
    for (auto& c : casos)
        EXPECT_THAT(handler.TrataAdicionarAlterarAlerta(&c.a), TemMensagem(QZ_MODULO_PX, c.mensagem, c.campo))
            << c.nome;

    auto a = Alerta(" Aviso ", 1, 0, 0, 2);
    EXPECT_THAT(handler.TrataAdicionarAlterarAlerta(&a), SemErro()) << "no repetition needs no interval";
    EXPECT_EQ(a.GetDescricao(), "Aviso");
    auto repete = Alerta("Aviso", 2, 1, 3, 1);
    EXPECT_THAT(handler.TrataAdicionarAlterarAlerta(&repete), SemErro());
}

// Products and services the component lines name.
class PXTrataDadosPlanoComponenteTest : public PXTrataDadosPlanoTest {
protected:
    void SetUp() override {
        PXTrataDadosPlanoTest::SetUp();
        CQZDadosGT_ProdutoEx produto;
        produto.SetCodigoSPED("P1");
        simples = Grava(produto).GetPosicao();
        CQZDadosGT_Produto dadosKit;
        dadosKit.SetKit(1);
        produto.SetDadosProduto(dadosKit).SetCodigoSPED("KIT");
        kit = Grava(produto).GetPosicao();
        CQZDadosGT_Servico s;
        s.SetCodigo("S1");
        s.SetPosicao(50);  // apart from the products' items: lines compare positions only
        servico = Grava(s).GetPosicao();
        ZeraChamadas();
    }

    CQZDadosGT_Erro& Verifica(CQZDadosPX_PlanoComponente c, int64_t index, uint8_t tipo) {
        return handler.TrataAdicionarAlterarComponente(&c, lista, index,
                                                       static_cast<_E_PX_MANUTENCOES_COMPONENTES>(tipo));
    }

    uint32_t simples = 0, kit = 0, servico = 0;
    std::vector<CQZDadosPX_PlanoComponente> lista;
};

// The three kinds share one shape; only their messages and fields differ.
TEST_F(PXTrataDadosPlanoComponenteTest, LinesByKind) {
    struct Tipo {
        uint8_t tipo;
        long semProduto, repetido, campoProduto, campoQuantidade;
    } tipos[] = {{1, 36, 47, 34, 35}, {2, 37, 46, 37, 38}, {3, 38, 48, 40, 41}};
    lista = {Componente(Posicao(simples), 1), Componente(Posicao(servico), 1, 'S')};
    for (const auto& k : tipos) {
        SCOPED_TRACE(testing::Message() << "kind " << int(k.tipo));
        EXPECT_THAT(Verifica(Componente(Posicao(0), 1), -1, k.tipo),
                    TemMensagem(QZ_MODULO_PX, k.semProduto, k.campoProduto));
        EXPECT_THAT(Verifica(Componente(Posicao(0), 1, 'S'), -1, k.tipo),
                    TemMensagem(QZ_MODULO_PX, k.semProduto, k.campoProduto))
            << "before the service check";
        EXPECT_THAT(Verifica(Componente(Posicao(servico, 1), 1, 'S'), -1, k.tipo), TemMensagem(QZ_MODULO_PX, 45, 40))
            << "a service check points at field 40 in every list";
        EXPECT_THAT(Verifica(Componente(Posicao(simples), 0), -1, k.tipo),
                    TemMensagem(QZ_MODULO_PX, 39, k.campoQuantidade));
        EXPECT_THAT(Verifica(Componente(Posicao(simples), 2), 5, k.tipo),
                    TemMensagem(QZ_MODULO_PX, k.repetido, k.campoProduto));
        EXPECT_THAT(Verifica(Componente(Posicao(servico), 2, 'S'), 0, k.tipo),
                    TemMensagem(QZ_MODULO_PX, k.repetido, k.campoProduto))
            << "line 0 changed to the service of line 1";
        EXPECT_THAT(Verifica(Componente(Posicao(simples), 2), 0, k.tipo), SemErro()) << "line 0 keeps its product";
    }
}

TEST_F(PXTrataDadosPlanoComponenteTest, FailedProductCheckStopsMaterialsAndEquipmentOnly) {
    EXPECT_THAT(Verifica(Componente(Posicao(kit), 0), -1, 1), TemMensagem(QZ_MODULO_PX, 112, 34));
    EXPECT_THAT(Verifica(Componente(Posicao(kit), 0), -1, 2), TemMensagem(QZ_MODULO_PX, 112, 37));

    // Services: the product error stays without a field, and a later warning
    // replaces it.
    EXPECT_THAT(Verifica(Componente(Posicao(kit), 1), -1, 3), TemMensagem(QZ_MODULO_PX, 112, 0));
    EXPECT_THAT(Verifica(Componente(Posicao(kit), 0), -1, 3), TemMensagem(QZ_MODULO_PX, 39, 41));
    lista = {Componente(Posicao(kit), 1)};
    EXPECT_THAT(Verifica(Componente(Posicao(kit), 1), -1, 3), TemMensagem(QZ_MODULO_PX, 48, 40));
}

TEST_F(PXTrataDadosPlanoComponenteTest, KindOutsideTheListsGetsNoWarningOfItsOwn) {
    lista = {Componente(Posicao(simples), 1)};
    EXPECT_THAT(Verifica(Componente(Posicao(simples), 0), 5, 4), SemErro()) << "no quantity, repeated: passes";
    EXPECT_THAT(Verifica(Componente(Posicao(0), 0), -1, 4), TemMensagem(QZ_MODULO_PX, 40, 0))
        << "only the product check speaks";
    EXPECT_THAT(Verifica(Componente(Posicao(0), 0, 'S'), -1, 0), TemMensagem(QZ_MODULO_PX, 44, 40));
}

TEST_F(PXTrataDadosPlanoComponenteTest, FailedReadsOfProductsAndServices) {
    struct Caso {
        const char* operacao;
        uint8_t tipoProduto, tipoLista;
        long quantidade, campo;
    } casos[] = {
        {"LeProdutoEx", 'P', 1, 1, 34}, {"LeProdutoEx", 'P', 2, 1, 37}, {"LeProdutoEx", 'P', 3, 1, 0},
        {"LeServico", 'S', 1, 1, 40},   {"LeServico", 'S', 3, 1, 40},
    };
    for (const auto& c : casos) {
        ZeraChamadas();
        falhas.FalhaEm(c.operacao, 0, QZ_E_BANCO);
        const uint32_t item = c.tipoProduto == 'S' ? servico : simples;
        EXPECT_THAT(Verifica(Componente(Posicao(item), c.quantidade, c.tipoProduto), -1, c.tipoLista),
                    TemFalhaServico(QZ_E_BANCO, c.campo))
            << c.operacao << " in list " << int(c.tipoLista);
        EXPECT_EQ(rastro.Registros().size(), 1u) << "the shared check traces its read";
    }
    ZeraChamadas();
    falhas.FalhaEm("LeProdutoEx", 0, QZ_E_BANCO);
    EXPECT_THAT(Verifica(Componente(Posicao(simples), 0), -1, 3), TemMensagem(QZ_MODULO_PX, 39, 41));
}

TEST_F(PXTrataDadosPlanoComponenteTest, WithoutServicesNothingIsChecked) {
    CPXTrataDadosPlano semServicos;
    auto c = Componente(Posicao(simples), 1);
    EXPECT_THAT(semServicos.TrataAdicionarAlterarComponente(&c, lista, -1, E_PX_MANUTENCOES_COMPONENTES_MATERIAL),
                TemMensagem(QZ_MODULO_PX, 161, 0));
    std::vector<CQZDadosPX_PlanoTarefa> tarefas;
    EXPECT_THAT(semServicos.TrataAdicionarTarefa({1}, tarefas), TemMensagem(QZ_MODULO_PX, 161, 0));
    EXPECT_TRUE(tarefas.empty());
}

class PXTrataDadosPlanoTarefaTest : public PXTrataDadosPlanoTest {
protected:
    void SetUp() override {
        PXTrataDadosPlanoTest::SetUp();
        CQZDadosPX_Tarefa t;
        t.SetCodigo("TROCA").SetNome("Troca de óleo").SetTipoClassificacao(1);
        troca = Grava(t).GetPonteiro();
        tarefas = {EntradaTarefa(troca), EntradaTarefa(90)};
        ZeraChamadas();
    }

    uint32_t troca = 0;
    std::vector<CQZDadosPX_PlanoTarefa> tarefas;
};

TEST_F(PXTrataDadosPlanoTarefaTest, AllKeysAreAddedInOrder) {
    EXPECT_THAT(handler.TrataAdicionarTarefa({7, 5, 7}, tarefas), SemErro());
    EXPECT_EQ(TarefasDe(tarefas), (std::vector<uint32_t>{troca, 90, 7, 5, 7})) << "a key repeated in one call twice";
    EXPECT_EQ(0, falhas.TotalChamadas()) << "tasks are read only to name a repeated one";
}

TEST_F(PXTrataDadosPlanoTarefaTest, OneBadKeyAddsNothing) {
    const std::vector<uint32_t> antes = TarefasDe(tarefas);
    EXPECT_THAT(handler.TrataAdicionarTarefa({5, 0, 7}, tarefas), TemMensagem(QZ_MODULO_PX, 160, 33));
    EXPECT_EQ(TarefasDe(tarefas), antes);

    const auto& erro = handler.TrataAdicionarTarefa({5, troca}, tarefas);
    EXPECT_THAT(erro, TemMensagem(QZ_MODULO_PX, 163, 33));
    ASSERT_EQ(erro.GetParametros().GetSize(), 1);
    EXPECT_EQ(erro.GetParametros()[0], "TROCA");
    EXPECT_EQ(TarefasDe(tarefas), antes);

    EXPECT_THAT(handler.TrataAdicionarTarefa({troca, 0}, tarefas), TemMensagem(QZ_MODULO_PX, 163, 33))
        << "keys are taken in order";
}

TEST_F(PXTrataDadosPlanoTarefaTest, FailedReadOfTheRepeatedTaskPassesItsErrorOn) {
    falhas.FalhaEm("LeBufferTarefa", 0, QZ_E_BANCO);
    EXPECT_THAT(handler.TrataAdicionarTarefa({5, troca}, tarefas), TemFalhaServico(QZ_E_BANCO, 0));
    EXPECT_EQ(tarefas.size(), 2u);
    EXPECT_TRUE(rastro.Registros().empty());

    EXPECT_THAT(handler.TrataAdicionarTarefa({90}, tarefas), TemFalhaServico(QZ_E_REGISTRO_NAO_ENCONTRADO, 0))
        << "a listed key whose task is gone";
}
