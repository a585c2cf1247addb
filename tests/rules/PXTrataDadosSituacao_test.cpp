// Maintenance situations (type 1) and task situations (type 2): two handlers
// over one record.
#include "platform/QZCodigosResultado.h"
#include "rules/PXTrataDadosSituacaoManutencao.h"
#include "rules/PXTrataDadosSituacaoTarefa.h"
#include "tests/rules/PXTesteRegras.h"

namespace {

CQZDadosPX_Situacao Manutencao(const char* codigo, const char* descricao, uint8_t base) {
    CQZDadosPX_Situacao s;
    s.SetCodigo(codigo).SetDescricao(descricao).SetTipo(1).SetSituacaoBase(base);
    return s;
}

CQZDadosPX_Situacao Tarefa(const char* codigo, const char* descricao, uint8_t classificacao, uint32_t pai = 0) {
    CQZDadosPX_Situacao s;
    s.SetCodigo(codigo).SetDescricao(descricao).SetTipo(2).SetTipoClassificacao(classificacao).SetPonteiroPai(pai);
    return s;
}

const char* const kLogBusca =
    "hr = GetAcessoManutencao()->BuscaPonteirosSituacao(dadosFiltro, aPonteiros)\thr = 0X80004005 "
    "E_FAIL\tSEVERITY = 1 SEVERITY_ERROR\tFACILITY = 0 FACILITY_NULL\tCODE = 16389 \tDescrição = Erro "
    "não especificado.";

}  // namespace

class PXTrataDadosSituacaoTest : public PXTesteRegras {
protected:
    void SetUp() override {
        PXTesteRegras::SetUp();
        Inicializa(manutencao);
        Inicializa(tarefa);
        aberta = Grava(Manutencao("A1", "Aberta", 2));
        iniciada = Grava(Manutencao("IN", "Iniciada", 4));
        grupo = Grava(Tarefa("GT", "Grupo", 2));
        filho = Grava(Tarefa("FT", "Filho", 2, grupo.GetPosicao()));
        neto = Grava(Tarefa("NT", "Neto", 1, filho.GetPosicao()));
        branco = Grava(Tarefa(" ", "Código em branco", 1));
        ZeraChamadas();
    }

    struct Recusa {
        const char* nome;
        CQZDadosPX_Situacao s;
        QZModulo modulo;
        long mensagem, campo;
    };
    template <size_t N>
    void EsperaRecusas(CPXTrataDados& handler, const Recusa (&casos)[N]) {
        for (const auto& c : casos) {
            salvo = c.s;
            EXPECT_EQ(0, handler.TrataGravacao(&salvo, nullptr)) << c.nome;
            EXPECT_THAT(handler.GetErro(), TemMensagem(c.modulo, c.mensagem, c.campo)) << c.nome;
        }
    }

    int SalvaManutencao(CQZDadosPX_Situacao s) {
        salvo = s;
        return manutencao.TrataGravacao(&salvo, nullptr);
    }
    int SalvaTarefa(CQZDadosPX_Situacao s) {
        salvo = s;
        return tarefa.TrataGravacao(&salvo, nullptr);
    }

    CPXTrataDadosSituacaoManutencao manutencao;
    CPXTrataDadosSituacaoTarefa tarefa;
    CQZDadosPX_Situacao aberta, iniciada, grupo, filho, neto, branco, salvo;
};

TEST_F(PXTrataDadosSituacaoTest, MaintenanceSituationRefusals) {
    auto mudaBase = iniciada;
    mudaBase.SetSituacaoBase(8).SetCodigo("");
    auto tipoTarefa = Manutencao("T9", "Tipo errado", 2);
    tipoTarefa.SetTipo(2);
    auto tipoTarefaSemBase = Manutencao("T9", "Tipo errado", 0);
    tipoTarefaSemBase.SetTipo(2);
    const Recusa casos[] = {
        {"base changed, before the code", mudaBase, QZ_MODULO_PX, 123, 1},
        {"blank code", Manutencao("  ", "X", 2), QZ_MODULO_PX, 1, 1},
        {"code of a maintenance situation", Manutencao("  A1 ", "", 2), QZ_MODULO_PX, 10, 1},
        {"blank description", Manutencao("NV", " ", 2), QZ_MODULO_PX, 49, 2},
        {"not a maintenance situation", tipoTarefa, QZ_MODULO_20, 125, 1},
        {"type checked before the base situation", tipoTarefaSemBase, QZ_MODULO_20, 125, 1},
        {"no base situation", Manutencao("NV", "X", 0), QZ_MODULO_PX, 124, 3},
        {"base 1", Manutencao("NV", "X", 1), QZ_MODULO_PX, 125, 3},
        {"base 128", Manutencao("NV", "X", 128), QZ_MODULO_PX, 125, 3},
        {"two bits", Manutencao("NV", "X", 6), QZ_MODULO_PX, 125, 3},
    };
    EsperaRecusas(manutencao, casos);
}

TEST_F(PXTrataDadosSituacaoTest, MaintenanceSituationPasses) {
    for (uint8_t base : {2, 4, 8, 16, 32, 64}) {
        EXPECT_EQ(1, SalvaManutencao(Manutencao("  NV ", " Nova  ", base))) << int(base);
    }
    EXPECT_EQ(salvo.GetCodigo(), "NV");
    EXPECT_EQ(salvo.GetDescricao(), "Nova");
    // Codes are unique per type: the task group's code is free here.
    EXPECT_EQ(1, SalvaManutencao(Manutencao("GT", "Mesmo código de tarefa", 2)));
}

TEST_F(PXTrataDadosSituacaoTest, SavedMaintenanceSituationKeepsItsCodeUnchecked) {
    auto s = iniciada;
    s.SetCodigo(" A1").SetDescricao("Outra");
    EXPECT_EQ(1, SalvaManutencao(s));
    EXPECT_EQ(salvo.GetCodigo(), "A1");
    EXPECT_EQ(0, falhas.Chamadas("BuscaPonteirosSituacao"));
}

TEST_F(PXTrataDadosSituacaoTest, TrimmingIsWrittenBackEvenWhenRefused) {
    EXPECT_EQ(0, SalvaManutencao(Manutencao(" NV ", "  Nova ", 0)));
    EXPECT_EQ(salvo.GetCodigo(), "NV");
    EXPECT_EQ(salvo.GetDescricao(), "Nova");
    EXPECT_EQ(0, SalvaTarefa(Tarefa(" NV ", "  Nova ", 1, 0).SetTipo(1)));
    EXPECT_EQ(salvo.GetCodigo(), " NV ");
    EXPECT_EQ(salvo.GetDescricao(), "Nova");
}

TEST_F(PXTrataDadosSituacaoTest, StaleSituationIsRefusedOnField1) {
    auto outro = iniciada;
    outro.SetDescricao("Mudou");
    ASSERT_EQ(0, armazem.Atualiza(outro));
    EXPECT_EQ(0, SalvaManutencao(iniciada));
    EXPECT_THAT(manutencao.GetErro(), TemMensagem(QZ_MODULO_PX, 3, 1));
    auto mudaBase = iniciada;
    mudaBase.SetSituacaoBase(8);
    EXPECT_EQ(0, SalvaManutencao(mudaBase));
    EXPECT_THAT(manutencao.GetErro(), TemMensagem(QZ_MODULO_PX, 3, 1)) << "stale before the base change";
    auto outroGrupo = grupo;
    outroGrupo.SetDescricao("Mudou");
    ASSERT_EQ(0, armazem.Atualiza(outroGrupo));
    EXPECT_EQ(0, SalvaTarefa(grupo));
    EXPECT_THAT(tarefa.GetErro(), TemMensagem(QZ_MODULO_PX, 3, 1));
}

TEST_F(PXTrataDadosSituacaoTest, TaskSituationRefusals) {
    auto comFilhosViraFolha = grupo;
    comFilhosViraFolha.SetTipoClassificacao(1).SetCodigo("");
    auto sobNeto = grupo;
    sobNeto.SetPonteiroPai(neto.GetPosicao());
    auto salvoSemCodigo = neto;
    salvoSemCodigo.SetCodigo("");
    auto proprioPai = neto;
    proprioPai.SetPonteiroPai(neto.GetPosicao());
    auto proprioPaiSemDescricao = proprioPai;
    proprioPaiSemDescricao.SetDescricao(" ");
    auto proprioPaiOutroTipo = proprioPai;
    proprioPaiOutroTipo.SetTipo(1);
    const Recusa casos[] = {
        {"group with children made a leaf, before the code", comFilhosViraFolha, QZ_MODULO_PX, 98, 133},
        {"moved under its grandchild", sobNeto, QZ_MODULO_PX, 99, 133},
        {"new, empty code", Tarefa("", "X", 1), QZ_MODULO_PX, 1, 130},
        {"saved, empty code", salvoSemCodigo, QZ_MODULO_PX, 2, 131},
        {"code of a task situation", Tarefa("NT", "X", 1), QZ_MODULO_PX, 10, 1},
        {"a single blank is a code, and taken", Tarefa(" ", "X", 1), QZ_MODULO_PX, 10, 1},
        {"blank description", Tarefa("NV", "  ", 1), QZ_MODULO_PX, 49, 2},
        {"its own parent", proprioPai, QZ_MODULO_PX, 99, 3},
        {"description before the own-parent test", proprioPaiSemDescricao, QZ_MODULO_PX, 49, 2},
        {"own-parent test before the type", proprioPaiOutroTipo, QZ_MODULO_PX, 99, 3},
        {"not a task situation", Tarefa("NV", "X", 1).SetTipo(1), QZ_MODULO_20, 125, 1},
    };
    EsperaRecusas(tarefa, casos);
}

TEST_F(PXTrataDadosSituacaoTest, TaskSituationPasses) {
    EXPECT_EQ(1, SalvaTarefa(Tarefa("A1", "Mesmo código de manutenção", 1)));
    EXPECT_EQ(1, SalvaTarefa(Tarefa("  ", "Outro branco", 1)));
    EXPECT_EQ(salvo.GetCodigo(), "  ");
    auto folhaMuda = neto;
    folhaMuda.SetPonteiroPai(grupo.GetPosicao());
    ZeraChamadas();
    EXPECT_EQ(1, SalvaTarefa(folhaMuda));
    EXPECT_EQ(0, falhas.Chamadas("BuscaClassificacaoSituacao"));
}

TEST_F(PXTrataDadosSituacaoTest, FailedCodeSearchIsTracedWithEachHandlersLine) {
    struct Caso {
        std::function<int()> salva;
        const CQZDadosGT_Erro& erro;
        const char* funcao;
        const char* fonte;
        const char* linha;
    } casos[] = {
        {[&] { return SalvaManutencao(Manutencao("NV", "X", 2)); }, manutencao,
         "CPXTrataDadosSituacaoManutencao::OnTrataGravacao", "PXTrataDadosSituacaoManutencao", "60"},
        {[&] { return SalvaTarefa(Tarefa("NV", "X", 1)); }, tarefa, "CPXTrataDadosSituacaoTarefa::OnTrataGravacao",
         "PXTrataDadosSituacaoTarefa", "84"},
    };
    for (auto& c : casos) {
        ZeraChamadas();
        falhas.FalhaEm("BuscaPonteirosSituacao", 0, 0x80004005L);
        EXPECT_EQ(0, c.salva());
        EXPECT_THAT(c.erro, TemFalhaServico(0x80004005L, 1));
        auto regs = rastro.Registros();
        ASSERT_EQ(regs.size(), 1u);
        EXPECT_EQ(regs[0].funcao, c.funcao);
        EXPECT_EQ(regs[0].chaves["Arquivo"], c.fonte);
        EXPECT_EQ(regs[0].chaves["Linha"], c.linha);
        EXPECT_EQ(regs[0].chaves["Log"], kLogBusca);
    }
}

// Each call of a save failing in turn: the service's error on field 1; only
// the code search is traced.
TEST_F(PXTrataDadosSituacaoTest, EveryCallFailingInTurnPassesItsErrorOnField1) {
    auto soBuscaRastreada = [&] {
        const bool busca = falhas.Historico().back() == "BuscaPonteirosSituacao";
        EXPECT_EQ(rastro.Registros().size(), busca ? 1u : 0u);
    };
    for (const auto& modelo : {Manutencao("NV", "X", 2), iniciada})
        VarreGravacao(manutencao, modelo, salvo, 1, soBuscaRastreada);
    for (const auto& modelo : {Tarefa("NV", "X", 1), grupo}) VarreGravacao(tarefa, modelo, salvo, 1, soBuscaRastreada);
}
