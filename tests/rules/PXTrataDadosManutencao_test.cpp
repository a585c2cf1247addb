#include "tests/rules/PXTrataDadosManutencaoPlanta.h"

// ---- order of the checks -----------------------------------------------------------

// One way of failing each step of the save. A case gives its step, what it
// does to the order (or which read it fails) and the verdict: a message on a
// field, or the service's own error.
struct CasoPasso {
    int passo;
    const char* nome;
    Mutacao muda;
    const char* falhaLeitura;  // the read failed, or null
    long mensagem, campo;
    long hr;                   // the service's error when not 0
};

TEST_F(PXTrataDadosManutencaoTest, EachStepFailsBeforeEveryLaterOne) {
    auto salvaDe = [this](CQZDadosPX_Manutencao& m) {
        m.SetDmc(gravada.GetDmc()).SetDmaHmsGravacao(gravada.GetDmaHmsGravacao());
    };
    // What only a new order is refused for stays new under a later failure
    // that needs a saved one.
    auto nova = [](CQZDadosPX_Manutencao& m) { m.SetDmc(REG_QZDMC()).SetDmaHmsGravacao(REG_QZDMAHMSUTC()); };
    const std::vector<CasoPasso> casos = {
        {0, "stale stamp", [&](auto& m) { salvaDe(m); m.SetDmaHmsGravacao(Em(1, 1, 1)); }, nullptr, 3, 84, 0},
        {0, "stored copy unreadable", salvaDe, "LeManutencao", 0, 0, QZ_E_BANCO},
        {1, "settings unreadable", nullptr, "LeBufferMestre", 0, 0, QZ_E_BANCO},
        {2, "no resource", [](auto& m) { m.SetPonteiroRecurso(0); }, nullptr, 50, 86, 0},
        {3, "resource unreadable", nullptr, "LeBufferRecurso", 0, 0, QZ_E_BANCO},
        {3, "inactive resource, new order", [&](auto& m) { nova(m); m.SetPonteiroRecurso(RECURSO_INATIVO); }, nullptr, 54, 86, 0},
        {4, "resource of another kind", [](auto& m) { m.SetPonteiroRecurso(RECURSO_OUTRO_TIPO); }, nullptr, 51, 86, 0},
        {6, "unknown maintenance type", [](auto& m) { m.SetTipoManutencao(9); }, nullptr, 52, 87, 0},
        {7, "plan-driven without a plan", [](auto& m) { m.SetPonteiroPlano(0); }, nullptr, 53, 88, 0},
        {7, "plan unreadable", nullptr, "LeBufferPlano", 0, 0, QZ_E_BANCO},
        {7, "inactive plan, new order", [&](auto& m) { nova(m); m.SetPonteiroPlano(PLANO_INATIVO); }, nullptr, 55, 88, 0},
        {7, "plan the resource does not follow", [](auto& m) { m.SetPonteiroPlano(PLANO_SEM_VINCULO); }, nullptr, 0, 0,
         QZ_E_REGISTRO_NAO_ENCONTRADO},
        {7, "link unreadable", nullptr, "BuscarDadosPlanoManutencaoRecurso", 0, 0, QZ_E_BANCO},
        {7, "inactive link, new order", [&](auto& m) { nova(m); m.SetPonteiroPlano(PLANO_VINCULO_INATIVO); }, nullptr, 25, 88, 0},
        {7, "plan-driven without a discipline", [](auto& m) { m.SetPonteiroDisciplina(0); }, nullptr, 19, 96, 0},
        // A new plan-driven order takes the plan's name: a saved one keeps its own.
        {8, "blank description, saved order", [&](auto& m) { salvaDe(m); m.SetDescricao("  "); }, nullptr, 49, 89, 0},
        {9, "no requester", [](auto& m) { m.SetPonteiroRequisitante(0); }, nullptr, 27, 94, 0},
        {10, "no priority", [](auto& m) { m.SetPonteiroPrioridade(0); }, nullptr, 177, 95, 0},
        {11, "requester unreadable", nullptr, "LeRequisitante", 0, 0, QZ_E_BANCO},
        {11, "inactive requester, new order", [&](auto& m) { nova(m); m.SetPonteiroRequisitante(REQUISITANTE_INATIVO); }, nullptr,
         56, 94, 0},
        {11, "requester of another branch, new order",
         [&](auto& m) { nova(m); m.SetPonteiroRequisitante(REQUISITANTE_FILIAL_2); }, nullptr, 127, 94, 0},
        {12, "no technician where one is required", [](auto& m) { m.SetPonteiroTecnico(0); }, nullptr, 28, 97, 0},
        {13, "technician unreadable", nullptr, "LeBufferTecnico", 0, 0, QZ_E_BANCO},
        {13, "inactive technician, saved order",
         [&](auto& m) { salvaDe(m); m.SetPonteiroTecnico(TECNICO_INATIVO); }, nullptr, 29, 97, 0},
        {13, "technician of another branch", [](auto& m) { m.SetPonteiroTecnico(TECNICO_FILIAL_2); }, nullptr, 128, 97, 0},
        {13, "technicians of the discipline unreadable", nullptr, "BuscaPonteirosTecnico", 0, 0, QZ_E_BANCO},
        {13, "technician outside the discipline", [](auto& m) { m.SetPonteiroTecnico(TECNICO_OUTRA_DISCIPLINA); },
         nullptr, 182, 97, 0},
        {14, "situation unreadable", nullptr, "LeBufferSituacao", 0, 0, QZ_E_BANCO},
        {15, "no issue date", [](auto& m) { m.SetDataHoraEmissao(REG_QZDMAHMSUTC()); }, nullptr, 134, 85, 0},
        {15, "issue before the movement period",
         [](auto& m) { m.SetDataHoraEmissao(REG_QZDMAHMSUTC(20, 12, 2025, 8, 0, 0)); }, nullptr, 130, 85, 0},
        {15, "planned start before the issue", [](auto& m) { m.SetDmaHmsPrevInicio(Em(2, 3, 7, 59)); }, nullptr, 135,
         92, 0},
        {15, "work started without a start",
         [](auto& m) { m.SetPonteiroSituacao(SITUACAO_INICIADA).SetDataHoraInicio(REG_QZDMAHMSUTC()); }, nullptr, 136,
         99, 0},
        {15, "rescheduled without a new date",
         [](auto& m) { m.SetPonteiroSituacao(SITUACAO_REPROGRAMADA).SetDataHoraNovaProgramacao(REG_QZDMAHMSUTC()); },
         nullptr, 140, 101, 0},
        {15, "finished without an end",
         [](auto& m) {
             m.SetPonteiroSituacao(SITUACAO_CONCLUIDA).SetDataHoraInicio(Em(3, 3, 8)).SetDataHoraFim(REG_QZDMAHMSUTC());
         },
         nullptr, 141, 103, 0},
        {16, "finished task without its mandatory value", [&](auto& m) { Concluida(m, TAREFA_INF); }, nullptr, 0, 113, 0},
        {16, "configuration unreadable", [&](auto& m) { Concluida(m, TAREFA_INF); }, "LeBDDConfiguracao", 0, 0,
         QZ_E_BANCO},
        {17, "a kit among the materials", [](auto& m) { m.SetMaterial(0, Linha(KIT, 1)); }, nullptr, 112, 114, 0},
        // Step 16 has added custom data to one finished task and taken it from
        // another by then: both are put back.
        {17, "a kit after the tasks' custom data changed",
         [&](auto& m) {
             Concluida(m, TAREFA_INF_OPCIONAL);
             CQZDadosPX_ManutencaoTarefa sem = LinhaTarefa(TAREFA_SIMPLES);
             sem.IncluiApontamentoTarefa().SetTipoAtividade(BDD_ATV_PX_APONTAMENTO_TAREFA);
             m.AdicionaTarefa(sem).SetMaterial(0, Linha(KIT, 1));
         },
         nullptr, 112, 114, 0},
        {18, "time entries on an open order",
         [](auto& m) { m.AdicionaApontamento(Apontamento(Em(3, 3, 8), Em(3, 3, 9), TECNICO)); }, nullptr, 155, 125, 0},
    };

    auto roda = [&](const std::vector<const CasoPasso*>& aplicados) {
        ZeraChamadas();
        CQZDadosPX_Manutencao m = base;
        for (const CasoPasso* c : aplicados) {
            if (c->muda) c->muda(m);
            if (c->falhaLeitura) falhas.FalhaEm(c->falhaLeitura, 0, QZ_E_BANCO);
        }
        EXPECT_EQ(0, Salva(m));
        const CasoPasso& esperado = *aplicados.back();
        if (esperado.hr != 0)
            EXPECT_THAT(handler.GetErro(), TemFalhaServico(esperado.hr, esperado.campo));
        else if (esperado.mensagem == 0)
            EXPECT_EQ(handler.GetCodigoCampo(), esperado.campo) << QZParaUtf8(handler.GetMensagem());
        else
            EXPECT_THAT(handler.GetErro(), TemMensagem(QZ_MODULO_PX, esperado.mensagem, esperado.campo));
        EXPECT_EQ(salva, m) << "the caller's order is left as it was passed";
    };

    ASSERT_EQ(1, Salva(base)) << QZParaUtf8(handler.GetMensagem());
    for (const CasoPasso& cedo : casos) {
        SCOPED_TRACE(cedo.nome);
        roda({&cedo});
        // The later failure is set up first so that the earlier one has the
        // last word on any field both touch.
        for (const CasoPasso& tarde : casos) {
            if (tarde.passo <= cedo.passo) continue;
            SCOPED_TRACE(std::string("with the later ") + tarde.nome);
            roda({&tarde, &cedo});
        }
    }
}

// ---- what the save completes --------------------------------------------------------

TEST_F(PXTrataDadosManutencaoTest, ANewOrderTakesTheResourcesBranchAndCounterAndThePlansNameAndTime) {
    CQZDadosPX_Manutencao m = base;
    m.SetPonteiroFilial(0).SetTempoPrevisto(CQZMoeda::DeInteiro(1)).SetTempoPrevistoEmHoras(0);
    m.SetPonteiroRequisitante(REQUISITANTE);  // branch 1: compared after the branch is copied
    ASSERT_EQ(1, Salva(m)) << QZParaUtf8(handler.GetMensagem());
    EXPECT_EQ(salva.GetPonteiroFilial(), 1);
    EXPECT_EQ(salva.GetContadorPonteiroUnMedida(), 5u);
    EXPECT_EQ(salva.GetContadorNumeroDigitos(), 6);
    EXPECT_EQ(salva.GetContadorProdutoServico(), 'P');
    EXPECT_EQ(salva.GetDescricao(), "Revisão do plano") << "the plan's name, trimmed, over the typed one";
    EXPECT_EQ(salva.GetTempoPrevisto(), CQZMoeda::DeInteiro(6));
    EXPECT_EQ(salva.GetTempoPrevistoEmHoras(), 1);
    EXPECT_EQ(salva.GetSituacao(), 2) << "the base situation of its situation record";
}

TEST_F(PXTrataDadosManutencaoTest, ASavedOrderKeepsItsOwnBranchCounterDescriptionAndTime) {
    CQZDadosPX_Manutencao m = gravada;
    m.SetPonteiroFilial(0).SetContadorNumeroDigitos(9).SetDescricao(" Minha ").SetTempoPrevisto(CQZMoeda::DeInteiro(2));
    m.SetPonteiroTecnico(TECNICO_SEM_FILIAL).SetPonteiroRequisitante(REQUISITANTE_SEM_FILIAL);
    ASSERT_EQ(1, Salva(m)) << QZParaUtf8(handler.GetMensagem());
    EXPECT_EQ(salva.GetPonteiroFilial(), 0);
    EXPECT_EQ(salva.GetContadorNumeroDigitos(), 9);
    EXPECT_EQ(salva.GetDescricao(), "Minha");
    EXPECT_EQ(salva.GetTempoPrevisto(), CQZMoeda::DeInteiro(2));
    EXPECT_EQ(salva.GetSituacao(), 2) << "a base situation already set is kept";

    m.SetSituacao(4).SetPonteiroSituacao(SITUACAO_ABERTA);
    EXPECT_EQ(0, Salva(m)) << "the stored base situation is not derived again";
    EXPECT_THAT(handler.GetErro(), TemMensagem(QZ_MODULO_PX, 136, 99));
}

// What is checked on a new order only, on a changed one only, or on both.
TEST_F(PXTrataDadosManutencaoTest, NewAndSavedOrdersDifferWhereTheRulesSay) {
    struct Caso {
        const char* nome;
        Mutacao muda;
        long novaMensagem, gravadaMensagem;  // 0: allowed
    } casos[] = {
        {"inactive technician", [](auto& m) { m.SetPonteiroTecnico(TECNICO_INATIVO); }, 0, 29},
        {"technician of another branch", [](auto& m) { m.SetPonteiroTecnico(TECNICO_FILIAL_2); }, 128, 128},
        {"technician of no branch", [](auto& m) { m.SetPonteiroTecnico(TECNICO_SEM_FILIAL); }, 0, 0},
        {"requester of another branch", [](auto& m) { m.SetPonteiroRequisitante(REQUISITANTE_FILIAL_2); }, 127, 0},
        {"requester of no branch", [](auto& m) { m.SetPonteiroRequisitante(REQUISITANTE_SEM_FILIAL); }, 0, 0},
        {"inactive requester", [](auto& m) { m.SetPonteiroRequisitante(REQUISITANTE_INATIVO); }, 56, 0},
        {"inactive resource", [](auto& m) { m.SetPonteiroRecurso(RECURSO_INATIVO); }, 54, 0},
        {"inactive plan", [](auto& m) { m.SetPonteiroPlano(PLANO_INATIVO); }, 55, 0},
        {"inactive link of the plan", [](auto& m) { m.SetPonteiroPlano(PLANO_VINCULO_INATIVO); }, 25, 0},
    };
    for (const auto& c : casos) {
        SCOPED_TRACE(c.nome);
        for (bool nova : {true, false}) {
            CQZDadosPX_Manutencao m = nova ? base : gravada;
            c.muda(m);
            const long esperada = nova ? c.novaMensagem : c.gravadaMensagem;
            EXPECT_EQ(esperada == 0 ? 1 : 0, Salva(m)) << (nova ? "new" : "saved");
            if (esperada) {
                EXPECT_EQ(handler.GetMensagemNumero(), esperada) << (nova ? "new" : "saved");
            }
        }
    }
}

TEST_F(PXTrataDadosManutencaoTest, TheTechnicianMustBeListedForTheDiscipline) {
    CQZDadosPX_Manutencao m = base;
    m.SetTipoManutencao(2).SetPonteiroDisciplina(DISCIPLINA_SEM_TECNICOS);
    EXPECT_EQ(0, Salva(m));
    EXPECT_THAT(handler.GetErro(), TemMensagem(QZ_MODULO_PX, 182, 97)) << "a discipline nobody has";
    m.SetPonteiroDisciplina(0);
    EXPECT_EQ(1, Salva(m)) << "no discipline, no test";
    m.SetPonteiroTecnico(0).SetOrigemRProducaoApontamento(1);
    EXPECT_EQ(1, Salva(m)) << "an order from a production time entry needs no technician";
}

// ---- dates and times ----------------------------------------------------------------

TEST_F(PXTrataDadosManutencaoTest, DatesAndTimes) {
    struct Caso {
        const char* nome;
        uint32_t situacao;
        REG_QZDMAHMSUTC previsao, inicio, novaProgramacao, fim;
        long mensagem, campo;  // 0: allowed
    } casos[] = {
        {"planned start at the issue", SITUACAO_ABERTA, Em(2, 3, 8), {}, {}, {}, 0, 0},
        {"planned start before the actual one is fine", SITUACAO_INICIADA, Em(9, 3, 8), Em(3, 3, 8), {}, {}, 0, 0},
        {"start equal to end when finished", SITUACAO_CONCLUIDA, {}, Em(3, 3, 8), {}, Em(3, 3, 8), 0, 0},
        {"start after end", SITUACAO_CONCLUIDA, {}, Em(3, 3, 9), {}, Em(3, 3, 8), 143, 103},
        {"end in a month outside the period", SITUACAO_CONCLUIDA, {}, Em(3, 3, 9), {},
         REG_QZDMAHMSUTC(2, 1, 2027, 8, 0, 0), 130, 85},
        {"an end on an order not finished", SITUACAO_INICIADA, {}, Em(3, 3, 8), {}, Em(3, 3, 9), 142, 103},
        {"an end that is no date on an open order", SITUACAO_ABERTA, {}, {}, {}, REG_QZDMAHMSUTC(1), 142, 103},
        {"new date on an order not rescheduled", SITUACAO_ABERTA, {}, {}, Em(9, 3, 8), {}, 137, 101},
        {"new date equal to the issue", SITUACAO_REPROGRAMADA, {}, {}, Em(2, 3, 8), {}, 138, 101},
        {"new date equal to the start", SITUACAO_REPROGRAMADA, {}, Em(3, 3, 8), Em(3, 3, 8), {}, 139, 101},
        {"new date outside the period", SITUACAO_REPROGRAMADA, {}, {}, REG_QZDMAHMSUTC(4, 1, 2027, 8, 0, 0), {}, 130, 85},
        {"new date after issue and start", SITUACAO_REPROGRAMADA, {}, Em(3, 3, 8), Em(3, 3, 9), {}, 0, 0},
    };
    for (const auto& c : casos) {
        CQZDadosPX_Manutencao m = base;
        m.SetPonteiroSituacao(c.situacao).SetDmaHmsPrevInicio(c.previsao).SetDataHoraInicio(c.inicio);
        m.SetDataHoraNovaProgramacao(c.novaProgramacao).SetDataHoraFim(c.fim);
        EXPECT_EQ(c.mensagem == 0 ? 1 : 0, Salva(m)) << c.nome << ": " << QZParaUtf8(handler.GetMensagem());
        if (c.mensagem) {
            EXPECT_THAT(handler.GetErro(), TemMensagem(QZ_MODULO_PX, c.mensagem, c.campo)) << c.nome;
        }
    }
}

TEST_F(PXTrataDadosManutencaoTest, InstantsCompareInUtc) {
    CQZDadosPX_Manutencao m = base;
    // 07:30 at UTC-03:00 is 10:30 UTC, after the issue at 08:00 UTC.
    m.SetDmaHmsPrevInicio(REG_QZDMAHMSUTC(REG_QZDMA(2, 3, 2026), 7, 30, 0, -12));
    EXPECT_EQ(1, Salva(m)) << QZParaUtf8(handler.GetMensagem());
}

TEST_F(PXTrataDadosManutencaoTest, ComponentsNeedTheIntegrationPeriodOpenToday) {
    CQZDadosGT_PeriodoContabil periodo;
    ASSERT_EQ(0, armazem.LePeriodoContabil(&periodo));
    periodo.SetMesBloqueio(REG_QZMA(3, 2026));
    ASSERT_EQ(0, armazem.Grava(periodo));
    EXPECT_EQ(0, Salva(base));
    EXPECT_THAT(handler.GetErro(), TemMensagem(QZ_MODULO_PX, 185, 85)) << "today is in March";
    CQZDadosPX_Manutencao semComponentes = base;
    semComponentes.RemoveTodosMaterial();
    semComponentes.RemoveTodosEquipamento();
    EXPECT_EQ(1, Salva(semComponentes)) << QZParaUtf8(handler.GetMensagem());
}

// ---- custom task data, kits and time entries --------------------------------------

TEST_F(PXTrataDadosManutencaoTest, AFinishedOrdersTasksGetTheirCustomData) {
    CQZDadosPX_Manutencao m = base;
    Concluida(m, TAREFA_SIMPLES);
    m.GetRefTarefa(0).IncluiApontamentoTarefa().SetTipoAtividade(8);
    m.AdicionaTarefa(LinhaTarefa(TAREFA_INF_SEM_CONFIGURACAO));
    m.GetRefTarefa(1).IncluiApontamentoTarefa();
    m.AdicionaTarefa(LinhaTarefa(TAREFA_INF_OPCIONAL));
    ASSERT_EQ(1, Salva(m)) << QZParaUtf8(handler.GetMensagem());
    EXPECT_FALSE(salva.GetConstRefTarefa(0).PossuiApontamentoTarefa()) << "a task without custom data loses it";
    EXPECT_FALSE(salva.GetConstRefTarefa(1).PossuiApontamentoTarefa()) << "so does one with no configuration";
    ASSERT_TRUE(salva.GetConstRefTarefa(2).PossuiApontamentoTarefa()) << "the configuration's fields, empty";
    const CQZDadosBDD_Registro& dados = *salva.GetConstRefTarefa(2).GetApontamentoTarefa();
    EXPECT_EQ(dados.GetTipoAtividade(), BDD_ATV_PX_APONTAMENTO_TAREFA);
    ASSERT_EQ(dados.GetQuantidadeCampos(), 1);
    EXPECT_EQ(dados.GetConstRefCampos(0).GetTextoDescricao(), "Observações");

    // Not finished: nothing is read or changed.
    CQZDadosPX_Manutencao aberta = base;
    aberta.AdicionaTarefa(LinhaTarefa(TAREFA_SIMPLES));
    aberta.GetRefTarefa(0).IncluiApontamentoTarefa();
    ZeraChamadas();
    ASSERT_EQ(1, Salva(aberta));
    EXPECT_TRUE(salva.GetConstRefTarefa(0).PossuiApontamentoTarefa());
    EXPECT_EQ(falhas.Chamadas("LeBufferTarefa"), 0);
}

TEST_F(PXTrataDadosManutencaoTest, CustomDataIsCheckedFieldByFieldWithTheTexts) {
    struct Caso {
        const char* nome;
        std::vector<CQZDadosBDD_Campo> campos;
        const char* texto;  // null: allowed
    } casos[] = {
        {"all filled", {Campo("Pressão (bar)", true, "140"), Campo("Observações", false)}, nullptr},
        {"a mandatory field disabled may stay empty", {Campo("Lacre", true, "", true)}, nullptr},
        {"blanks are no value", {Campo("Pressão (bar)", true, "  ")},
         "Campo \"Pressão (bar)\" das Configurações da Tarefa INF - Troca de óleo deve ser informado."},
        {"a field without description, counted from one",
         {Campo("Pressão (bar)", true, "140"), Campo(" ", false, "x"), Campo("Lacre", true)},
         "2º campo das Configurações da Tarefa INF - Troca de óleo não possui descrição informada."},
    };
    for (const auto& c : casos) {
        CQZDadosPX_Manutencao m = base;
        Concluida(m, TAREFA_INF);
        m.GetRefTarefa(0).IncluiApontamentoTarefa().SetListaCampos(c.campos);
        ZeraChamadas();
        EXPECT_EQ(c.texto ? 0 : 1, Salva(m)) << c.nome;
        EXPECT_EQ(falhas.Chamadas("LeBDDConfiguracao"), 0) << c.nome << ": a line's own data is not replaced";
        if (c.texto) {
            EXPECT_EQ(handler.GetCodigoCampo(), 113) << c.nome;
            EXPECT_EQ(handler.GetModulo(), QZ_MODULO_PX) << c.nome;
            EXPECT_EQ(QZParaUtf8(handler.GetMensagem()), QZParaUtf8(CString(c.texto))) << c.nome;
        }
    }

    // A line without data gets the configuration's empty fields, whose
    // mandatory one then fails.
    CQZDadosPX_Manutencao m = base;
    Concluida(m, TAREFA_INF);
    EXPECT_EQ(0, Salva(m));
    EXPECT_EQ(QZParaUtf8(handler.GetMensagem()),
              QZParaUtf8("Campo \"Pressão (bar)\" das Configurações da Tarefa INF - Troca de óleo deve ser informado."));
    EXPECT_EQ(rastro.Registros().size(), 0u);
    falhas.FalhaEm("LeBDDConfiguracao", 0, QZ_E_BANCO);
    EXPECT_EQ(0, Salva(m));
    EXPECT_THAT(handler.GetErro(), TemFalhaServico(QZ_E_BANCO, 0));
    EXPECT_EQ(rastro.Registros().size(), 1u) << "the configuration's read is traced";
}

TEST_F(PXTrataDadosManutencaoTest, AnUnusableProductNamesItsListAndLine) {
    struct Caso {
        const char* nome;
        bool equipamento;
        _REG_POSICAO_PRODUTOPS item;
        long mensagem, campo;
    } casos[] = {
        {"kit, second material", false, Item(KIT), 112, 114},
        {"grid of a product without one, second equipment", true, Item(PRODUTO, 1), 41, 118},
        {"no product, second material", false, Item(0), 40, 114},
    };
    for (const auto& c : casos) {
        CQZDadosPX_Manutencao m = base;
        auto linha = Linha(PRODUTO, 1);
        linha.SetProdutoServico(c.item);
        if (c.equipamento)
            m.AdicionaEquipamento(linha);
        else
            m.AdicionaMaterial(linha);
        EXPECT_EQ(0, Salva(m));
        EXPECT_THAT(handler.GetErro(), TemMensagem(QZ_MODULO_PX, c.mensagem, c.campo)) << c.nome;
        EXPECT_EQ(handler.GetItem(), 1) << c.nome;
    }
    CQZDadosPX_Manutencao ambas = base;
    ambas.SetMaterial(0, Linha(KIT, 1)).SetEquipamento(0, Linha(KIT, 1));
    EXPECT_EQ(0, Salva(ambas));
    EXPECT_THAT(handler.GetErro(), TemMensagem(QZ_MODULO_PX, 112, 114)) << "materials first";
    CQZDadosPX_Manutencao grade = base;
    grade.SetMaterial(0, Linha(PRODUTO_GRADE, 1));
    EXPECT_EQ(1, Salva(grade)) << "a product with grids named without a grid position";
}

TEST_F(PXTrataDadosManutencaoTest, TimeEntriesAgainstTheSituation) {
    CQZDadosPX_Mestre mestre;
    ASSERT_EQ(0, armazem.LeMestre(&mestre));
    mestre.SetObrigarApontamentoManutencao(1);
    ASSERT_EQ(0, armazem.Grava(mestre));
    const auto entrada = Apontamento(Em(3, 3, 8), Em(3, 3, 9), TECNICO);
    struct Caso {
        const char* nome;
        uint32_t situacao;
        bool comEntrada;
        long mensagem;
        const char* nomeSituacao;
    } casos[] = {
        {"started without entries", SITUACAO_INICIADA, false, 70, nullptr},
        {"finished without entries", SITUACAO_CONCLUIDA, false, 70, nullptr},
        {"finished with entries", SITUACAO_CONCLUIDA, true, 0, nullptr},
        {"open without entries", SITUACAO_ABERTA, false, 0, nullptr},
        {"rescheduled with entries", SITUACAO_REPROGRAMADA, true, 155, "Reprogramada"},
    };
    for (const auto& c : casos) {
        CQZDadosPX_Manutencao m = base;
        m.SetPonteiroSituacao(c.situacao).SetDataHoraInicio(Em(3, 3, 8));
        if (c.situacao == SITUACAO_CONCLUIDA) m.SetDataHoraFim(Em(3, 3, 10));
        if (c.situacao == SITUACAO_REPROGRAMADA) m.SetDataHoraNovaProgramacao(Em(9, 3, 8));
        if (c.comEntrada) m.AdicionaApontamento(entrada);
        EXPECT_EQ(c.mensagem ? 0 : 1, Salva(m)) << c.nome << ": " << QZParaUtf8(handler.GetMensagem());
        if (!c.mensagem) continue;
        EXPECT_THAT(handler.GetErro(), TemMensagem(QZ_MODULO_PX, c.mensagem, 125)) << c.nome;
        if (c.nomeSituacao) {
            ASSERT_EQ(handler.GetParametros().GetSize(), 1);
            EXPECT_EQ(handler.GetParametros()[0], c.nomeSituacao);
        }
    }
}

// ---- every read failed in turn ------------------------------------------------------

// A saved, finished, plan-driven order whose save makes every read the rules
// know: each failed once gives back the service's own error, and the
// caller's order as it was.
TEST_F(PXTrataDadosManutencaoTest, EveryFailedReadOfASaveIsTheServicesErrorAndChangesNothing) {
    CQZDadosPX_Manutencao m = gravada;
    m.SetSituacao(0).SetPonteiroSituacao(SITUACAO_CONCLUIDA).SetDataHoraInicio(Em(3, 3, 8)).SetDataHoraFim(Em(3, 3, 9));
    m.AdicionaTarefa(LinhaTarefa(TAREFA_INF_OPCIONAL));
    m.AdicionaApontamento(Apontamento(Em(3, 3, 8), Em(3, 3, 9), TECNICO));

    const std::vector<std::string> chamadas = VarreFalhas(
        [] {},
        [&]() -> const CQZDadosGT_Erro& {
            const int ok = Salva(m);
            EXPECT_EQ(ok, handler.GetErro().GetTipoErro() == 0 ? 1 : 0);
            return handler.GetErro();
        },
        [&] {
            // The movement-period check names its field on a failed read, and a
            // product read names its list (the material first, then the equipment).
            const auto& historico = falhas.Historico();
            const std::string& operacao = historico.back();
            long campo = 0;
            if (operacao == "LeBufferPeriodoContabil") campo = 85;
            if (operacao == "LeProdutoEx") campo = std::count(historico.begin(), historico.end(), operacao) == 1 ? 114 : 118;
            EXPECT_EQ(handler.GetCodigoCampo(), campo);
            EXPECT_EQ(salva, m);
            EXPECT_TRUE(salva.OnIgual(m));
        });
    for (const char* esperada : {"LeManutencao", "LeBufferMestre", "LeBufferRecurso", "LeBufferPlano",
                                 "BuscarDadosPlanoManutencaoRecurso", "LeRequisitante", "LeBufferTecnico",
                                 "BuscaPonteirosTecnico", "LeBufferSituacao", "LeBufferPeriodoContabil",
                                 "LeBufferFilial", "LePeriodoContabil", "LeBufferTarefa", "LeBDDConfiguracao",
                                 "LeProdutoEx"})
        EXPECT_NE(std::find(chamadas.begin(), chamadas.end(), esperada), chamadas.end()) << esperada;
}

// ---- component lines ----------------------------------------------------------------

class PXTrataDadosManutencaoComponenteTest : public PXTrataDadosManutencaoTest {
protected:
    using Operacao = CQZDadosGT_Erro& (CPXTrataDadosManutencao::*)(CQZDadosPX_ManutencaoComponente*, int64_t,
                                                                    const CPXTrataDadosManutencao::ListaComponentes&);
    struct Tipo {
        const char* nome;
        Operacao verifica;
        uint32_t item, outroItem;
        _REG_POSICAO_PRODUTOPS invalido;  // fails the kind's verifier
        long invalidoMensagem;
        long semItem, campoItem, campoQuantidade, itemAlterado, campoConsumo, repetido;  // campoConsumo 0: none
    };
    static inline const Tipo kTipos[] = {
        {"materials", &CPXTrataDadosManutencao::TrataAdicionarAlterarMaterial, PRODUTO, PRODUTO_GRADE, Item(KIT), 112, 36, 114, 115,
         118, 116, 97},
        {"equipment", &CPXTrataDadosManutencao::TrataAdicionarAlterarEquipamento, PRODUTO, PRODUTO_GRADE, Item(KIT), 112, 37, 118,
         119, 119, 0, 172},
        {"services", &CPXTrataDadosManutencao::TrataAdicionarAlterarServico, SERVICO, SERVICO_2, Item(SERVICO, 1), 45, 38, 121,
         122, 119, 123, 173},
    };

    CQZDadosGT_Erro& Verifica(const Tipo& t, CQZDadosPX_ManutencaoComponente linha, int64_t index) {
        return (handler.*t.verifica)(&linha, index, lista);
    }

    CPXTrataDadosManutencao::ListaComponentes lista;
};

TEST_F(PXTrataDadosManutencaoComponenteTest, LineChecksByKind) {
    for (const Tipo& t : kTipos) {
        SCOPED_TRACE(t.nome);
        auto linha = [&](int64_t requisitada, uint32_t origem = 0) { return Linha(t.item, requisitada, origem); };
        // Line 1 has a requisition the stock served in part.
        auto requisitada = linha(5, TAREFA_INF_OPCIONAL);
        requisitada.SetChaveRequisicaoInterna(REG_QZDMC(REG_QZMA(3, 2026), 7)).SetQtdAtendida(CQZMoeda::DeInteiro(2));
        lista = {linha(1), requisitada, linha(1, TAREFA_SIMPLES)};

        EXPECT_THAT(Verifica(t, Linha(0, 1), -1), TemMensagem(QZ_MODULO_PX, t.semItem, t.campoItem));
        auto invalida = linha(1);
        invalida.SetProdutoServico(t.invalido);
        EXPECT_THAT(Verifica(t, invalida, -1), TemMensagem(QZ_MODULO_PX, t.invalidoMensagem, t.campoItem));
        EXPECT_THAT(Verifica(t, linha(0), -1), TemMensagem(QZ_MODULO_PX, 68, t.campoQuantidade));

        // Changing line 0.
        auto outroItem = linha(1);
        outroItem.SetProdutoServico(Item(t.outroItem));
        EXPECT_THAT(Verifica(t, outroItem, 0), TemMensagem(QZ_MODULO_PX, t.itemAlterado, t.campoItem));
        EXPECT_THAT(Verifica(t, linha(1), 0), SemErro()) << "line 0 as it is";
        // Changing line 1, served in part.
        EXPECT_THAT(Verifica(t, linha(6), 1), TemMensagem(QZ_MODULO_PX, 26, t.campoQuantidade));
        auto consumida = requisitada;
        consumida.SetQtdConsumida(CQZMoeda::DeBruto(20001));
        if (t.campoConsumo)
            EXPECT_THAT(Verifica(t, consumida, 1), TemMensagem(QZ_MODULO_PX, 95, t.campoConsumo));
        else
            EXPECT_THAT(Verifica(t, consumida, 1), SemErro()) << "equipment has no consumed quantity";
        consumida.SetQtdConsumida(CQZMoeda::DeInteiro(2));
        EXPECT_THAT(Verifica(t, consumida, 1), SemErro()) << "all that was served";

        // A new line with a consumed quantity.
        auto nova = linha(1, TAREFA_INF);
        nova.SetQtdConsumida(CQZMoeda::DeBruto(1));
        if (t.campoConsumo)
            EXPECT_THAT(Verifica(t, nova, -1), TemMensagem(QZ_MODULO_PX, 69, t.campoConsumo));
        else
            EXPECT_THAT(Verifica(t, nova, -1), SemErro());
        nova.SetQtdConsumida(CQZMoeda());
        EXPECT_THAT(Verifica(t, nova, -1), SemErro()) << "under a task the list does not have yet";

        // Repeats.
        EXPECT_THAT(Verifica(t, linha(3), -1), TemMensagem(QZ_MODULO_PX, t.repetido, t.campoItem));
        EXPECT_THAT(Verifica(t, linha(3, TAREFA_SIMPLES), -1), TemMensagem(QZ_MODULO_PX, t.repetido, t.campoItem));
        EXPECT_THAT(Verifica(t, linha(3, TAREFA_SIMPLES), 2), SemErro()) << "line 2 changed into itself";
        EXPECT_THAT(Verifica(t, linha(3, TAREFA_INF_OPCIONAL), -1), SemErro()) << "beside a requisitioned line";
    }
}

TEST_F(PXTrataDadosManutencaoComponenteTest, FailedReadsAndLinesOutsideTheList) {
    for (const Tipo& t : kTipos) {
        SCOPED_TRACE(t.nome);
        ZeraChamadas();
        falhas.FalhaEm(t.item == SERVICO ? "LeServico" : "LeProdutoEx", 0, QZ_E_BANCO);
        EXPECT_THAT(Verifica(t, Linha(t.item, 1), -1), TemFalhaServico(QZ_E_BANCO, t.campoItem));
        lista = {Linha(t.item, 1)};
        const auto& erro = Verifica(t, Linha(t.item, 1), 1);
        EXPECT_NE(erro.GetTipoErro(), 0) << "an index past the list is refused";
        EXPECT_EQ(erro.GetUltimoHR(), QZ_E_ARGUMENTO_INVALIDO);
    }
    CPXTrataDadosManutencao semServicos;
    auto linha = Linha(PRODUTO, 1);
    EXPECT_THAT(semServicos.TrataAdicionarAlterarMaterial(&linha, -1, lista), TemMensagem(QZ_MODULO_PX, 161, 0));
}

// ---- suggestions and warranty dates -------------------------------------------------

class PXTrataDadosManutencaoSugestaoTest : public PXTrataDadosManutencaoTest {
protected:
    void SetUp() override {
        PXTrataDadosManutencaoTest::SetUp();
        // Task 300: two materials, one piece of equipment, one service.
        CQZDadosPX_Tarefa t;
        t.SetPosicao(300);
        t.SetCodigo("REV").SetNome("Revisão").SetTipoClassificacao(1);
        t.AdicionaMaterial(Componente(1, PRODUTO, 2, "Lado A"));
        t.AdicionaMaterial(Componente(1, PRODUTO_GRADE, 4, ""));
        t.AdicionaEquipamento(Componente(2, PRODUTO, 1, ""));
        t.AdicionaServico(Componente(3, SERVICO, 1, "Externo", 'S'));
        Grava(t);
        t.SetPosicao(301);
        t.SetCodigo("LUB").RemoveTodosMaterial();
        t.RemoveTodosEquipamento();
        t.RemoveTodosServico();
        t.AdicionaMaterial(Componente(1, KIT, 1, ""));
        Grava(t);
        ordem.AdicionaTarefa(LinhaTarefa(300));
        ordem.AdicionaTarefa(LinhaTarefa(301));
        ordem.AdicionaTarefa(LinhaTarefa(300));
        ZeraChamadas();
    }
    static CQZDadosPX_TarefaComponente Componente(uint8_t tipo, uint32_t item, int64_t q, const char* complemento,
                                                  uint8_t tipoItem = 'P') {
        CQZDadosPX_TarefaComponente c;
        c.SetTipoComponente(tipo).SetPosicaoProdutoServico(Item(item)).SetQuantidade(CQZMoeda::DeInteiro(q));
        c.SetComplemento(complemento).SetTipoProdutoServico(tipoItem);
        return c;
    }
    static std::vector<std::pair<uint32_t, uint32_t>> OrigemItem(const CPXTrataDadosManutencao::ListaComponentes& l) {
        std::vector<std::pair<uint32_t, uint32_t>> v;
        for (const auto& c : l) v.emplace_back(c.GetPonteiroTarefaOrigem(), c.GetProdutoServico().lPonteiroProduto);
        return v;
    }

    CQZDadosPX_Manutencao ordem;
    CPXTrataDadosManutencao::ListaComponentes lista;
};

TEST_F(PXTrataDadosManutencaoSugestaoTest, EachKindGetsItsTasksComponentsOnce) {
    using V = std::vector<std::pair<uint32_t, uint32_t>>;
    struct Caso {
        _E_PX_MANUTENCOES_COMPONENTES tipo;
        V esperado;
        uint8_t tipoRI;
    } casos[] = {
        {E_PX_MANUTENCOES_COMPONENTES_MATERIAL, V{{300, PRODUTO}, {300, PRODUTO_GRADE}, {301, KIT}}, 2},
        {E_PX_MANUTENCOES_COMPONENTES_EQUIPAMENTO, V{{300, PRODUTO}}, 1},
        {E_PX_MANUTENCOES_COMPONENTES_SERVICO, V{{300, SERVICO}}, 2},
    };
    for (const auto& c : casos) {
        lista.clear();
        EXPECT_THAT(handler.SugerirComponentesConformeTarefas(ordem, lista, c.tipo), SemErro());
        EXPECT_EQ(OrigemItem(lista), c.esperado) << int(c.tipo);
        for (const auto& l : lista) EXPECT_EQ(l.GetTipoRI(), c.tipoRI) << int(c.tipo);
    }
    lista.clear();
    ASSERT_THAT(handler.SugerirComponentesConformeTarefas(ordem, lista, E_PX_MANUTENCOES_COMPONENTES_SERVICO), SemErro());
    const auto& s = lista.at(0);
    EXPECT_EQ(s.GetQtdRequisitada(), CQZMoeda::DeInteiro(1));
    EXPECT_EQ(s.GetComplemento(), "Externo");
    EXPECT_EQ(s.GetTipoProdutoServico(), 'S');
    EXPECT_TRUE(s.GetQtdAtendida().EhZero());
    EXPECT_EQ(handler.SugerirComponentesConformeTarefas(ordem, lista, static_cast<_E_PX_MANUTENCOES_COMPONENTES>(4))
                  .GetUltimoHR(),
              QZ_E_ARGUMENTO_INVALIDO);
    EXPECT_EQ(lista.size(), 1u) << "an unknown kind leaves the list alone";
}

TEST_F(PXTrataDadosManutencaoSugestaoTest, TheListFollowsTheOrdersTasks) {
    // A typed line, a line of task 301 kept by the user, one of a task that
    // left the order.
    lista = {Linha(PRODUTO_GRADE, 9), Linha(PRODUTO, 5, 301), Linha(PRODUTO, 5, 999)};
    EXPECT_THAT(handler.SugerirComponentesConformeTarefas(ordem, lista, E_PX_MANUTENCOES_COMPONENTES_MATERIAL),
                SemErro());
    using V = std::vector<std::pair<uint32_t, uint32_t>>;
    EXPECT_EQ(OrigemItem(lista), (V{{0, PRODUTO_GRADE}, {301, PRODUTO}, {300, PRODUTO}, {300, PRODUTO_GRADE}}))
        << "task 301 already has a line: its kit is not suggested again";
    EXPECT_EQ(lista[1].GetQtdRequisitada(), CQZMoeda::DeInteiro(5));

    // A failed read leaves what was added before it.
    lista.clear();
    ZeraChamadas();
    falhas.FalhaEm("LeBufferTarefa", 2, QZ_E_BANCO);
    EXPECT_THAT(handler.SugerirComponentesConformeTarefas(ordem, lista, E_PX_MANUTENCOES_COMPONENTES_MATERIAL),
                TemFalhaServico(QZ_E_BANCO, 0));
    EXPECT_EQ(OrigemItem(lista), (V{{300, PRODUTO}, {300, PRODUTO_GRADE}}));
}

TEST_F(PXTrataDadosManutencaoSugestaoTest, WarrantyDates) {
    struct TipoPeriodo {
        uint32_t posicao;
        uint16_t unidade, incremento;
    } tipos[] = {{1, 0, 15}, {2, 1, 2}, {3, 2, 1}, {4, 7, 1}};
    for (const auto& t : tipos) {
        CQZDadosGT_TipoPeriodo p;
        p.SetPosicao(t.posicao);
        p.SetTipoPeriodo(t.unidade).SetIncrementoPeriodo(t.incremento);
        Grava(p);
    }
    struct Caso {
        const char* nome;
        uint32_t tipo;
        int64_t quantidadeBruta;
        REG_QZDMA de, ate;
    } casos[] = {
        {"two fortnights", 1, 20000, REG_QZDMA(2, 3, 2026), REG_QZDMA(1, 4, 2026)},
        {"3 periods of 2 months", 2, 30000, REG_QZDMA(2, 3, 2026), REG_QZDMA(2, 9, 2026)},
        {"half a period rounds up: two months from 31 December end on 28 February", 2, 5000, REG_QZDMA(31, 12, 2025), REG_QZDMA(28, 2, 2026)},
        {"2.5 periods round to 3", 2, 25000, REG_QZDMA(2, 3, 2026), REG_QZDMA(2, 9, 2026)},
        {"2.4 periods round to 2", 2, 24999, REG_QZDMA(2, 3, 2026), REG_QZDMA(2, 7, 2026)},
        {"a year from 29 February", 3, 10000, REG_QZDMA(29, 2, 2028), REG_QZDMA(28, 2, 2029)},
        {"an unknown unit", 4, 30000, REG_QZDMA(2, 3, 2026), REG_QZDMA(2, 3, 2026)},
        {"past the calendar's end", 3, 10000000, REG_QZDMA(2, 3, 2026), REG_QZDMA()},
    };
    for (const auto& c : casos) {
        REG_QZDMA data = c.de;
        EXPECT_THAT(handler.SugerirDataGarantia(c.tipo, CQZMoeda::DeBruto(c.quantidadeBruta), data), SemErro()) << c.nome;
        EXPECT_EQ(data, c.ate) << c.nome << ": " << data.Formata().str();
    }
    REG_QZDMA data(2, 3, 2026);
    EXPECT_THAT(handler.SugerirDataGarantia(99, CQZMoeda::DeInteiro(1), data),
                TemFalhaServico(QZ_E_REGISTRO_NAO_ENCONTRADO, 0));
    EXPECT_EQ(data, REG_QZDMA(2, 3, 2026));
}

TEST_F(PXTrataDadosManutencaoSugestaoTest, ACancellationNamesTheFirstLineThatMovedStock) {
    auto servida = Linha(PRODUTO, 2);
    servida.SetQtdAtendida(CQZMoeda::DeInteiro(1));
    auto consumida = Linha(SERVICO, 1);
    consumida.SetTipoProdutoServico('S').SetQtdConsumida(CQZMoeda::DeBruto(1));
    struct Caso {
        const char* nome;
        CPXTrataDadosManutencao::ListaComponentes linhas;
        const char* texto;  // null: allowed
    } casos[] = {
        {"nothing moved", {Linha(PRODUTO, 2), Linha(SERVICO, 1)}, nullptr},
        {"a product served", {Linha(SERVICO, 1), servida, consumida}, "ROL-6205 - Rolamento 6205"},
        {"a service consumed", {Linha(PRODUTO, 2), consumida, servida}, "USI-EXT - Usinagem externa"},
    };
    for (const auto& c : casos) {
        const auto& erro = handler.ConsistirQuantComponentesCancelamento(c.linhas, 118);
        if (!c.texto) {
            EXPECT_THAT(erro, SemErro()) << c.nome;
            continue;
        }
        EXPECT_THAT(erro, TemMensagem(QZ_MODULO_PX, 153, 84)) << c.nome;
        ASSERT_EQ(erro.GetParametros().GetSize(), 2) << c.nome;
        EXPECT_EQ(erro.GetParametros()[0], "Cancelada");
        EXPECT_EQ(erro.GetParametros()[1], c.texto);
    }
    falhas.FalhaEm("LeBufferServico", 0, QZ_E_BANCO);
    const auto& erro = handler.ConsistirQuantComponentesCancelamento({Linha(PRODUTO, 2), consumida}, 121);
    EXPECT_THAT(erro, TemFalhaServico(QZ_E_BANCO, 121));
    EXPECT_EQ(erro.GetItem(), 1);
}
