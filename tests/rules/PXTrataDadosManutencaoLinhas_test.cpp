// Task lines, time entries and the cancellation of an order, on the order
// rules' plant.
#include "tests/rules/PXTrataDadosManutencaoPlanta.h"

namespace {

enum : uint32_t {
    // Disciplines: a group over the plan's discipline and a sibling of it.
    DISCIPLINA_GRUPO = 43,
    TECNICO_GRUPO = 75,
    SITUACAO_CANCELAMENTO = 84, SITUACAO_CANCELAMENTO_INATIVA = 85, SITUACAO_TAREFA = 86,
    // A group of two (the first under warranty, the second with a situation
    // of its own), a task that demands a situation and has none to start
    // with, a task under warranty, and a group of one.
    GRUPO = 400, GRUPO_GARANTIA = 401, GRUPO_SITUACAO = 402, SEM_SITUACAO = 403, GARANTIA = 404,
    GRUPO_UNICO = 407, UNICO = 408,
    PERIODO_MESES = 2,
};

}  // namespace

class PXTrataDadosManutencaoLinhasTest : public PXTrataDadosManutencaoTest {
protected:
    void SetUp() override {
        PXTrataDadosManutencaoTest::SetUp();
        GravaDisciplina(DISCIPLINA_GRUPO, 0, 2);
        GravaDisciplina(DISCIPLINA, DISCIPLINA_GRUPO, 1);
        GravaDisciplina(OUTRA_DISCIPLINA, DISCIPLINA_GRUPO, 1);
        GravaTecnico(TECNICO_GRUPO, 1, 0, DISCIPLINA_GRUPO);
        GravaSituacao(SITUACAO_CANCELAMENTO, 16);
        CQZDadosPX_Situacao inativa;
        inativa.SetPosicao(SITUACAO_CANCELAMENTO_INATIVA);
        inativa.SetCodigo("S85").SetTipo(1).SetSituacaoBase(16).SetInativo(1);
        Grava(inativa);

        CQZDadosGT_TipoPeriodo meses;
        meses.SetPosicao(PERIODO_MESES);
        meses.SetTipoPeriodo(1).SetIncrementoPeriodo(1);
        Grava(meses);

        GravaTarefaLinha(GRUPO, "G", 0, 2);
        GravaTarefaLinha(GRUPO_GARANTIA, "G1", GRUPO, 1, [](CQZDadosPX_Tarefa& t) {
            t.SetGarantia(1).SetPonteiroPeriodoGarantia(PERIODO_MESES).SetQuantPeriodoGarantia(CQZMoeda::DeInteiro(3));
        });
        GravaTarefaLinha(GRUPO_SITUACAO, "G2", GRUPO, 1, [](CQZDadosPX_Tarefa& t) {
            t.SetAtribuirSituacaoTarefa(1).SetPonteiroSituacaoInicial(SITUACAO_TAREFA);
        });
        GravaTarefaLinha(SEM_SITUACAO, "S", 0, 1, [](CQZDadosPX_Tarefa& t) { t.SetAtribuirSituacaoTarefa(1); });
        GravaTarefaLinha(GARANTIA, "W", 0, 1, [](CQZDadosPX_Tarefa& t) {
            t.SetGarantia(1).SetPonteiroPeriodoGarantia(PERIODO_MESES).SetQuantPeriodoGarantia(CQZMoeda::DeInteiro(1));
            t.SetTempoPrevisto(CQZMoeda::DeInteiro(2)).SetDescricao("Com garantia");
        });
        GravaTarefaLinha(GRUPO_UNICO, "U", 0, 2);
        GravaTarefaLinha(UNICO, "U1", GRUPO_UNICO, 1);

        // The resource remembers two warranties of the group's first task
        // (the first listed is the one an order learns) and none of the others.
        CQZDadosGT_Recurso recurso;
        ASSERT_EQ(0, armazem.LeRegistro(RECURSO, recurso));
        recurso.AdicionaRecursoGarantia(Garantia(GRUPO_GARANTIA, REG_QZDMA(5, 1, 2026), 7));
        recurso.AdicionaRecursoGarantia(Garantia(GRUPO_GARANTIA, REG_QZDMA(9, 2, 2026), 8));
        ASSERT_EQ(0, armazem.Atualiza(recurso));

        ordem = gravada;
        ordem.SetDataHoraInicio(Em(3, 3, 8)).SetDataHoraFim(Em(3, 3, 12));
        ZeraChamadas();
    }

    void GravaDisciplina(uint32_t p, uint32_t pai, uint8_t classificacao) {
        CQZDadosPX_Disciplina d;
        d.SetPosicao(p);
        d.SetCodigo(CString::Formatado("D%u", p)).SetPonteiroPai(pai).SetTipoClassificacao(classificacao);
        Grava(d);
    }
    void GravaTarefaLinha(uint32_t p, const char* codigo, uint32_t pai, uint8_t classificacao,
                          const std::function<void(CQZDadosPX_Tarefa&)>& completa = {}) {
        CQZDadosPX_Tarefa t;
        t.SetPosicao(p);
        t.SetCodigo(codigo).SetNome(CString::Formatado("Tarefa %s", codigo)).SetPonteiroPai(pai);
        t.SetTipoClassificacao(classificacao);
        if (completa) completa(t);
        Grava(t);
    }
    static CQZDadosGT_RecursoGarantia Garantia(uint32_t tarefa, REG_QZDMA data, uint32_t numero) {
        CQZDadosGT_RecursoGarantia g;
        g.SetPonteiroTarefa(tarefa).SetDmaGarantia(data).SetDmcManutencao(REG_QZDMC(REG_QZMA(1, 2026), numero));
        return g;
    }
    static CQZDadosPX_ManutencaoTarefa ComGarantia(uint32_t tarefa, REG_QZDMA ate) {
        CQZDadosPX_ManutencaoTarefa t = LinhaTarefa(tarefa);
        t.SetGarantiaAte(1).SetDataGarantiaAte(ate);
        return t;
    }
    // The task and the warranty date (empty when none) of each line.
    static std::vector<std::pair<uint32_t, REG_QZDMA>> TarefasGarantias(const CPXTrataDadosManutencao::ListaTarefas& l) {
        std::vector<std::pair<uint32_t, REG_QZDMA>> v;
        for (const auto& t : l) v.emplace_back(t.GetPonteiroTarefa(), t.GetGarantiaAte() ? t.GetDataGarantiaAte() : REG_QZDMA());
        return v;
    }

    CQZDadosPX_Manutencao ordem;
};

using TG = std::vector<std::pair<uint32_t, REG_QZDMA>>;

// ---- task lines -----------------------------------------------------------------------

TEST_F(PXTrataDadosManutencaoLinhasTest, AddingTasks) {
    struct Caso {
        const char* nome;
        CPXTrataDadosManutencao::ListaTarefas lista, novas;
        TG esperado;      // the list afterwards
        long mensagem;    // 0: allowed
    } casos[] = {
        {"a task already on the order is skipped", {LinhaTarefa(TAREFA_SIMPLES)}, {LinhaTarefa(TAREFA_SIMPLES)},
         {{TAREFA_SIMPLES, {}}}, 0},
        {"the same task twice in one call comes once", {}, {LinhaTarefa(TAREFA_SIMPLES), LinhaTarefa(TAREFA_SIMPLES)},
         {{TAREFA_SIMPLES, {}}}, 0},
        {"a group brings its tasks, warranties suggested from the issue date", {}, {LinhaTarefa(GRUPO)},
         {{GRUPO_GARANTIA, REG_QZDMA(2, 6, 2026)}, {GRUPO_SITUACAO, {}}}, 0},
        {"a group brings only the tasks the order lacks", {LinhaTarefa(GRUPO_SITUACAO)}, {LinhaTarefa(GRUPO)},
         {{GRUPO_SITUACAO, {}}, {GRUPO_GARANTIA, REG_QZDMA(2, 6, 2026)}}, 0},
        {"a group's line passes nothing typed to its tasks", {}, {ComGarantia(GRUPO_UNICO, REG_QZDMA(9, 9, 2026))},
         {{UNICO, {}}}, 0},
        {"one simple task keeps the warranty typed", {}, {ComGarantia(GARANTIA, REG_QZDMA(15, 5, 2026))},
         {{GARANTIA, REG_QZDMA(15, 5, 2026)}}, 0},
        {"two simple tasks get the suggested warranty",
         {},
         {ComGarantia(GARANTIA, REG_QZDMA(15, 5, 2026)), ComGarantia(TAREFA_SIMPLES, REG_QZDMA(16, 5, 2026))},
         {{GARANTIA, REG_QZDMA(2, 4, 2026)}, {TAREFA_SIMPLES, REG_QZDMA(16, 5, 2026)}}, 0},
        {"a task demanding a situation it has none of adds nothing",
         {LinhaTarefa(TAREFA_INF)},
         {LinhaTarefa(TAREFA_SIMPLES), LinhaTarefa(SEM_SITUACAO)},
         {{TAREFA_INF, {}}}, 181},
        {"a typed warranty without a date adds nothing", {}, {ComGarantia(TAREFA_SIMPLES, REG_QZDMA())}, {}, 165},
    };
    for (const auto& c : casos) {
        CPXTrataDadosManutencao::ListaTarefas lista = c.lista;
        const auto& erro = handler.TrataAdicionarTarefa(ordem, c.novas, lista);
        if (c.mensagem)
            EXPECT_THAT(erro, TemMensagem(QZ_MODULO_PX, c.mensagem, c.mensagem == 181 ? 109 : 112)) << c.nome;
        else
            EXPECT_THAT(erro, SemErro()) << c.nome;
        EXPECT_EQ(TarefasGarantias(lista), c.esperado) << c.nome;
    }
}

// The concatenation works on the list it is given: a refused line leaves the
// lines before it there; adding tasks hands it a copy kept only on success.
TEST_F(PXTrataDadosManutencaoLinhasTest, ARefusedAdditionLeavesTheLinesBeforeItOnlyInTheConcatenatedList) {
    const CPXTrataDadosManutencao::ListaTarefas novas{LinhaTarefa(TAREFA_SIMPLES), LinhaTarefa(SEM_SITUACAO)};
    CPXTrataDadosManutencao::ListaTarefas concatenada{LinhaTarefa(TAREFA_INF)};
    EXPECT_THAT(handler.ConcatenarListaTarefas(ordem, novas, concatenada, false), TemMensagem(QZ_MODULO_PX, 181, 109));
    EXPECT_EQ(TarefasGarantias(concatenada), (TG{{TAREFA_INF, {}}, {TAREFA_SIMPLES, {}}}));

    CPXTrataDadosManutencao::ListaTarefas adicionada{LinhaTarefa(TAREFA_INF)};
    EXPECT_THAT(handler.TrataAdicionarTarefa(ordem, novas, adicionada), TemMensagem(QZ_MODULO_PX, 181, 109));
    EXPECT_EQ(TarefasGarantias(adicionada), (TG{{TAREFA_INF, {}}}));
}

TEST_F(PXTrataDadosManutencaoLinhasTest, ANewLineIsBuiltFromItsTaskMaster) {
    CQZDadosPX_ManutencaoTarefa digitada = LinhaTarefa(GARANTIA);
    digitada.SetTarefa("digitada").SetDetalhamento("digitado").SetPonteiroSituacao(SITUACAO_TAREFA);
    CQZDadosBDD_Registro dadosTarefa;
    dadosTarefa.SetListaCampos({Campo("Pressão (bar)", true, "3")});
    digitada.SetApontamentoTarefa(dadosTarefa);
    CPXTrataDadosManutencao::ListaTarefas lista;
    ASSERT_THAT(handler.TrataAdicionarTarefa(ordem, {digitada, LinhaTarefa(GRUPO_SITUACAO)}, lista), SemErro());
    ASSERT_EQ(lista.size(), 2u);
    const auto& w = lista[0];
    EXPECT_EQ(w.GetTarefa(), "Tarefa W");
    EXPECT_EQ(w.GetDetalhamento(), "Com garantia");
    EXPECT_EQ(w.GetTempoPrevisto(), CQZMoeda::DeInteiro(2));
    EXPECT_EQ(w.GetPonteiroSituacao(), 0u) << "its task does not carry a situation";
    ASSERT_TRUE(w.PossuiApontamentoTarefa());
    EXPECT_EQ(*w.GetApontamentoTarefa(), dadosTarefa);
    EXPECT_EQ(lista[1].GetPonteiroSituacao(), SITUACAO_TAREFA) << "the task's initial situation";
    EXPECT_FALSE(lista[1].PossuiApontamentoTarefa());
}

TEST_F(PXTrataDadosManutencaoLinhasTest, GroupsGiveWayToTheirTasks) {
    struct Caso {
        std::vector<uint32_t> entrada, saida;
        bool varias;
    } casos[] = {
        {{TAREFA_SIMPLES}, {TAREFA_SIMPLES}, false},
        {{TAREFA_SIMPLES, TAREFA_SIMPLES}, {TAREFA_SIMPLES, TAREFA_SIMPLES}, true},
        {{GRUPO_UNICO}, {UNICO}, true},
        {{TAREFA_INF, GRUPO, TAREFA_SIMPLES}, {TAREFA_INF, GRUPO_GARANTIA, GRUPO_SITUACAO, TAREFA_SIMPLES}, true},
        {{}, {}, false},
    };
    for (const auto& c : casos) {
        CPXTrataDadosManutencao::ListaTarefas entrada, saida{LinhaTarefa(999)};
        for (uint32_t t : c.entrada) entrada.push_back(ComGarantia(t, REG_QZDMA(1, 1, 2027)));
        bool varias = !c.varias;
        ASSERT_THAT(handler.SubstituirTarefasTipoGrupo(entrada, saida, &varias), SemErro());
        std::vector<uint32_t> tarefas;
        for (const auto& t : saida) {
            tarefas.push_back(t.GetPonteiroTarefa());
            // What was typed on a group's line does not reach its tasks.
            const bool deGrupo = std::find(c.entrada.begin(), c.entrada.end(), t.GetPonteiroTarefa()) == c.entrada.end();
            EXPECT_EQ(t.GetGarantiaAte(), deGrupo ? 0 : 1) << t.GetPonteiroTarefa();
        }
        EXPECT_EQ(tarefas, c.saida);
        EXPECT_EQ(varias, c.varias) << testing::PrintToString(c.entrada);
    }
    CPXTrataDadosManutencao::ListaTarefas saida;
    EXPECT_THAT(handler.SubstituirTarefasTipoGrupo({LinhaTarefa(GRUPO)}, saida, nullptr), SemErro());
    EXPECT_EQ(saida.size(), 2u);
}

TEST_F(PXTrataDadosManutencaoLinhasTest, ThePlansTasksAlwaysComeWithTheSuggestedWarranty) {
    CQZDadosPX_Plano plano;
    ASSERT_EQ(0, armazem.LeRegistro(PLANO, plano));
    for (uint32_t t : std::initializer_list<uint32_t>{GARANTIA, GRUPO, TAREFA_SIMPLES, GRUPO_GARANTIA}) {
        CQZDadosPX_PlanoTarefa pt;
        pt.SetPonteiroTarefa(t);
        plano.AdicionaTarefa(pt);
    }
    ASSERT_EQ(0, armazem.Atualiza(plano));
    CPXTrataDadosManutencao::ListaTarefas lista{ComGarantia(TAREFA_SIMPLES, REG_QZDMA(1, 1, 2027))};
    ASSERT_THAT(handler.SugerirTarefasConformePlano(ordem, lista), SemErro());
    EXPECT_EQ(TarefasGarantias(lista), (TG{{TAREFA_SIMPLES, REG_QZDMA(1, 1, 2027)},
                                          {GARANTIA, REG_QZDMA(2, 4, 2026)},
                                          {GRUPO_GARANTIA, REG_QZDMA(2, 6, 2026)},
                                          {GRUPO_SITUACAO, {}}}));
    // The line of the group's first task learnt the resource's first warranty of it.
    EXPECT_EQ(lista[2].GetDataUltimaGarantia(), REG_QZDMA(5, 1, 2026));
    EXPECT_EQ(lista[2].GetDmcUltimaManutencao(), REG_QZDMC(REG_QZMA(1, 2026), 7));
    EXPECT_EQ(lista[1].GetDataUltimaGarantia(), REG_QZDMA()) << "no warranty of its task on the resource";
}

// The check of one line: the situation its task demands, then the warranty date.
TEST_F(PXTrataDadosManutencaoLinhasTest, ALineIsCheckedSituationFirst) {
    struct Caso {
        const char* nome;
        CQZDadosPX_ManutencaoTarefa linha;
        long mensagem, campo;
    } casos[] = {
        {"no situation and no warranty date", ComGarantia(SEM_SITUACAO, REG_QZDMA()), 181, 109},
        {"a warranty without a date", ComGarantia(TAREFA_SIMPLES, REG_QZDMA()), 165, 112},
        {"a warranty with a date", ComGarantia(TAREFA_SIMPLES, REG_QZDMA(1, 1, 2027)), 0, 0},
        {"no warranty", LinhaTarefa(TAREFA_SIMPLES), 0, 0},
    };
    for (const auto& c : casos) {
        CQZDadosPX_ManutencaoTarefa linha = c.linha;
        const auto& erro = handler.TrataAlterarTarefa(ordem, &linha);
        if (c.mensagem) {
            EXPECT_THAT(erro, TemMensagem(QZ_MODULO_PX, c.mensagem, c.campo)) << c.nome;
            EXPECT_EQ(linha, c.linha) << c.nome;
        } else {
            EXPECT_THAT(erro, SemErro()) << c.nome;
        }
    }
    auto comSituacao = LinhaTarefa(SEM_SITUACAO);
    comSituacao.SetPonteiroSituacao(SITUACAO_TAREFA);
    EXPECT_THAT(handler.TrataAlterarTarefa(ordem, &comSituacao), SemErro());
    EXPECT_EQ(handler.TrataAlterarTarefa(ordem, nullptr).GetUltimoHR(), QZ_E_ARGUMENTO_INVALIDO);
    EXPECT_EQ(handler.TrataAdicionarAlterarApontamento(ordem, nullptr).GetUltimoHR(), QZ_E_ARGUMENTO_INVALIDO);
}

TEST_F(PXTrataDadosManutencaoLinhasTest, EveryFailedReadOfATaskOperationIsTheServicesErrorAndChangesNothing) {
    const CPXTrataDadosManutencao::ListaTarefas antes{LinhaTarefa(TAREFA_SIMPLES)};
    CPXTrataDadosManutencao::ListaTarefas lista;
    auto lista_inalterada = [&]() { EXPECT_EQ(lista, antes); };
    auto chamadas = VarreFalhas([&]() { lista = antes; },
                                [&]() -> const CQZDadosGT_Erro& {
                                    return handler.TrataAdicionarTarefa(
                                        ordem, {LinhaTarefa(GRUPO), ComGarantia(GARANTIA, REG_QZDMA(1, 1, 2027))}, lista);
                                },
                                lista_inalterada);
    for (const char* esperada : {"LeBufferTarefa", "BuscaClassificacaoTarefa", "LeBufferTipoPeriodo", "LeBufferRecurso"})
        EXPECT_NE(std::find(chamadas.begin(), chamadas.end(), esperada), chamadas.end()) << esperada;

    CQZDadosPX_Plano plano;
    ASSERT_EQ(0, armazem.LeRegistro(PLANO, plano));
    CQZDadosPX_PlanoTarefa pt;
    pt.SetPonteiroTarefa(GRUPO);
    plano.AdicionaTarefa(pt);
    ASSERT_EQ(0, armazem.Atualiza(plano));
    chamadas = VarreFalhas([&]() { lista = antes; },
                           [&]() -> const CQZDadosGT_Erro& { return handler.SugerirTarefasConformePlano(ordem, lista); },
                           lista_inalterada);
    EXPECT_EQ(chamadas.front(), "LeBufferPlano");

    const CQZDadosPX_ManutencaoTarefa linhaAntes = ComGarantia(GRUPO_GARANTIA, REG_QZDMA(1, 1, 2027));
    CQZDadosPX_ManutencaoTarefa linha;
    VarreFalhas([&]() { linha = linhaAntes; },
                [&]() -> const CQZDadosGT_Erro& { return handler.TrataAlterarTarefa(ordem, &linha); },
                [&]() { EXPECT_EQ(linha, linhaAntes); });
}

// ---- time entries -----------------------------------------------------------------------

// A step of the checks of a time entry and one way of failing it; a case
// fails its own step and every later one, so its message is the first.
struct PassoApontamento {
    long mensagem, campo;
    const char* nome;
    std::function<void(CQZDadosPX_ManutencaoApontamento&)> quebra;
};

TEST_F(PXTrataDadosManutencaoLinhasTest, TimeEntryChecksInOrder) {
    using A = CQZDadosPX_ManutencaoApontamento;
    const PassoApontamento passos[] = {
        {105, 99, "start not a date", [](A& a) { a.SetDataHoraInicial(REG_QZDMAHMSUTC()); }},
        {103, 99, "starts before the order", [](A& a) { a.SetDataHoraInicial(Em(3, 3, 7, 59)); }},
        {104, 99, "starts after now", [](A& a) { a.SetDataHoraInicial(Em(10, 3, 9, 31)); }},
        {108, 103, "no end", [](A& a) { a.SetDataHoraFinal(REG_QZDMAHMSUTC()); }},
        {109, 103, "ends after the order", [](A& a) { a.SetDataHoraFinal(Em(3, 3, 12, 1)); }},
        {110, 99, "starts after it ends",
         [](A& a) { a.SetDataHoraInicial(Em(3, 3, 11)).SetDataHoraFinal(Em(3, 3, 10, 59)); }},
        {29, 97, "an inactive technician", [](A& a) { a.SetPonteiroTecnico(TECNICO_INATIVO); }},
        {71, 129, "a technician of a sibling discipline", [](A& a) { a.SetPonteiroTecnico(TECNICO_OUTRA_DISCIPLINA); }},
        {28, 97, "no technician where one is required", [](A& a) { a.SetPonteiroTecnico(0); }},
    };
    const size_t n = std::size(passos);
    // Exactly the order's start and end.
    const A valida = Apontamento(Em(3, 3, 8), Em(3, 3, 12), TECNICO);
    A a = valida;
    EXPECT_THAT(handler.TrataAdicionarAlterarApontamento(ordem, &a), SemErro());
    for (size_t k = 0; k < n; ++k) {
        a = valida;
        for (size_t j = n; j-- > k;) passos[j].quebra(a);
        const A dada = a;
        EXPECT_THAT(handler.TrataAdicionarAlterarApontamento(ordem, &a),
                    TemMensagem(QZ_MODULO_PX, passos[k].mensagem, passos[k].campo))
            << passos[k].nome;
        EXPECT_EQ(a, dada) << passos[k].nome;
    }
}

TEST_F(PXTrataDadosManutencaoLinhasTest, TimeEntriesTheRulesLetThrough) {
    using A = CQZDadosPX_ManutencaoApontamento;
    struct Caso {
        const char* nome;
        std::function<void(CQZDadosPX_Manutencao&, A&)> prepara;
    } casos[] = {
        {"a technician of the group above the plan's discipline", [](auto&, A& a) { a.SetPonteiroTecnico(TECNICO_GRUPO); }},
        {"an order not started takes any start",
         [](CQZDadosPX_Manutencao& m, A& a) {
             m.SetDataHoraInicio(REG_QZDMAHMSUTC()).SetDataHoraFim(REG_QZDMAHMSUTC());
             a.SetDataHoraInicial(Em(1, 1, 0)).SetDataHoraFinal(Em(10, 3, 12));
         }},
        {"an order of another type takes any technician",
         [](CQZDadosPX_Manutencao& m, A& a) {
             m.SetTipoManutencao(2);
             a.SetPonteiroTecnico(TECNICO_OUTRA_DISCIPLINA);
         }},
        {"start and end equal", [](auto&, A& a) { a.SetDataHoraInicial(Em(3, 3, 9)).SetDataHoraFinal(Em(3, 3, 9)); }},
        {"starting now, on an order not ended",
         [](CQZDadosPX_Manutencao& m, A& a) {
             m.SetDataHoraFim(REG_QZDMAHMSUTC());
             a.SetDataHoraInicial(Em(10, 3, 9, 30)).SetDataHoraFinal(Em(10, 3, 10));
         }},
    };
    for (const auto& c : casos) {
        CQZDadosPX_Manutencao m = ordem;
        A a = Apontamento(Em(3, 3, 8), Em(3, 3, 12), TECNICO);
        c.prepara(m, a);
        EXPECT_THAT(handler.TrataAdicionarAlterarApontamento(m, &a), SemErro()) << c.nome;
    }
}

TEST_F(PXTrataDadosManutencaoLinhasTest, EveryFailedReadOfATimeEntryCheckIsTheServicesErrorAndChangesNothing) {
    for (uint32_t tecnico : std::initializer_list<uint32_t>{TECNICO_GRUPO, 0}) {
        SCOPED_TRACE(tecnico);
        if (tecnico == 0) {
            // Settings that let an entry go without a technician: the entry
            // passes when nothing fails (the only test of that allowance).
            CQZDadosPX_Mestre mestre;
            ASSERT_EQ(0, armazem.LeBufferMestre(&mestre, 0));
            mestre.SetObrigarInformarTecnicoManutencao(0);
            ASSERT_EQ(0, armazem.Atualiza(mestre));
        }
        const auto antes = Apontamento(Em(3, 3, 8), Em(3, 3, 12), tecnico);
        CQZDadosPX_ManutencaoApontamento a;
        const auto chamadas = VarreFalhas(
            [&]() { a = antes; },
            [&]() -> const CQZDadosGT_Erro& { return handler.TrataAdicionarAlterarApontamento(ordem, &a); },
            [&]() { EXPECT_EQ(a, antes); });
        const char* esperada = tecnico ? "LeDisciplina" : "LeBufferMestre";
        EXPECT_NE(std::find(chamadas.begin(), chamadas.end(), esperada), chamadas.end()) << esperada;
    }
}

// ---- cancellation ---------------------------------------------------------------------

// A step of the cancellation and one way of failing it: on the request (the
// key and the situation chosen) or on the stored order. A case fails its own
// step and every later one.
struct PassoCancelamento {
    long mensagem;
    const char* nome;
    std::function<void(CQZDadosPX_Manutencao& pedido)> pedido;
    std::function<void(CQZDadosPX_Manutencao& gravada)> gravada;
};

class PXTrataDadosManutencaoCancelamentoTest : public PXTrataDadosManutencaoLinhasTest {
protected:
    void SetUp() override {
        PXTrataDadosManutencaoLinhasTest::SetUp();
        original = gravada;
    }
    // Stores `m` over the saved order, whatever its stamp now.
    void Regrava(CQZDadosPX_Manutencao m) {
        CQZDadosPX_Manutencao atual;
        ASSERT_EQ(0, armazem.LeManutencao(gravada.GetDmc(), &atual, 0xFFFF));
        m.SetDmaHmsGravacao(atual.GetDmaHmsGravacao());
        ASSERT_EQ(0, armazem.Atualiza(m));
        gravada = m;
    }
    CQZDadosPX_Manutencao Pedido() const {
        CQZDadosPX_Manutencao p;
        p.SetDmc(original.GetDmc()).SetPonteiroSituacao(SITUACAO_CANCELAMENTO);
        return p;
    }
    CQZDadosPX_Manutencao original;
};

TEST_F(PXTrataDadosManutencaoCancelamentoTest, ChecksInOrder) {
    using M = CQZDadosPX_Manutencao;
    auto nada = [](M&) {};
    auto servida = Linha(PRODUTO, 2);
    servida.SetQtdAtendida(CQZMoeda::DeInteiro(1));
    const PassoCancelamento passos[] = {
        {144, "never saved", [](M& p) { p.SetDmc(REG_QZDMC()); }, nada},
        {145, "no situation chosen", [](M& p) { p.SetPonteiroSituacao(0); }, nada},
        {146, "an inactive situation", [](M& p) { p.SetPonteiroSituacao(SITUACAO_CANCELAMENTO_INATIVA); }, nada},
        {147, "a situation that does not cancel", [](M& p) { p.SetPonteiroSituacao(SITUACAO_ABERTA); }, nada},
        {148, "the order is not open", nada, [](M& g) { g.SetSituacao(4).SetPonteiroSituacao(SITUACAO_INICIADA); }},
        {149, "started", nada, [](M& g) { g.SetDataHoraInicio(Em(3, 3, 8)); }},
        {150, "ended", nada, [](M& g) { g.SetDataHoraFim(Em(3, 3, 9)); }},
        {151, "rescheduled", nada, [](M& g) { g.SetDataHoraNovaProgramacao(Em(4, 3, 8)); }},
        {152, "with a duration", nada, [](M& g) { g.SetTempoDuracao(CQZMoeda::DeBruto(1)); }},
        {153, "a closing counter", nada, [](M& g) { g.SetContadorEncerramento(CQZMoeda::DeBruto(1)); }},
        {153, "a material served", nada, [&](M& g) { g.AdicionaMaterial(servida); }},
        {155, "time entered", nada, [](M& g) { g.AdicionaApontamento(Apontamento(Em(3, 3, 8), Em(3, 3, 9), TECNICO)); }},
    };
    const size_t n = std::size(passos);
    for (size_t k = 0; k < n; ++k) {
        const PassoCancelamento& passo = passos[k];
        M pedido = Pedido(), armazenada = original;
        for (size_t j = n; j-- > k;) {
            passos[j].pedido(pedido);
            passos[j].gravada(armazenada);
        }
        Regrava(armazenada);
        const M dado = pedido;
        EXPECT_EQ(0, handler.TrataExclusao(&pedido, nullptr)) << passo.nome;
        EXPECT_THAT(handler.GetErro(), TemMensagem(QZ_MODULO_PX, passo.mensagem, 84)) << passo.nome;
        EXPECT_EQ(pedido, dado) << passo.nome << ": the record passed in is left as it was";
        const auto& parametros = handler.GetParametros();
        if (passo.mensagem == 147) {
            EXPECT_EQ(parametros[0], "S80");
        }
        if (passo.mensagem >= 149) {
            ASSERT_GE(parametros.GetSize(), 1) << passo.nome;
            EXPECT_EQ(parametros[0], "Cancelada") << passo.nome;
        }
        if (k == n - 2) {
            EXPECT_EQ(parametros[1], "ROL-6205 - Rolamento 6205");
        }
    }
}

TEST_F(PXTrataDadosManutencaoCancelamentoTest, AnUntouchedOpenOrderBecomesTheStoredOrderCancelled) {
    CQZDadosPX_Manutencao pedido = Pedido();
    ASSERT_EQ(1, handler.TrataExclusao(&pedido, nullptr)) << QZParaUtf8(handler.GetMensagem());
    CQZDadosPX_Manutencao esperada = original;
    esperada.SetPonteiroSituacao(SITUACAO_CANCELAMENTO).SetSituacao(16);
    EXPECT_EQ(pedido, esperada);
    EXPECT_EQ(pedido.GetQuantidadeMaterial(), 1) << "the whole stored order, lists included";

    // Already cancelled, it is no longer open.
    Regrava(pedido);
    pedido = Pedido();
    EXPECT_EQ(0, handler.TrataExclusao(&pedido, nullptr));
    EXPECT_THAT(handler.GetErro(), TemMensagem(QZ_MODULO_PX, 148, 84));

    // A key nobody has is the service's answer.
    pedido = Pedido();
    pedido.SetDmc(REG_QZDMC(REG_QZMA(3, 2026), 99));
    EXPECT_EQ(0, handler.TrataExclusao(&pedido, nullptr));
    EXPECT_EQ(handler.GetUltimoHR(), QZ_E_REGISTRO_NAO_ENCONTRADO);
}

TEST_F(PXTrataDadosManutencaoCancelamentoTest, EveryFailedReadIsTheServicesErrorAndChangesNothing) {
    const CQZDadosPX_Manutencao antes = Pedido();
    CQZDadosPX_Manutencao pedido;
    const auto chamadas = VarreFalhas(
        [&]() { pedido = antes; },
        [&]() -> const CQZDadosGT_Erro& {
            handler.TrataExclusao(&pedido, nullptr);
            return handler.GetErro();
        },
        [&]() { EXPECT_EQ(pedido, antes); });
    for (const char* esperada : {"LeManutencao", "LeSituacao"})
        EXPECT_NE(std::find(chamadas.begin(), chamadas.end(), esperada), chamadas.end()) << esperada;
}
