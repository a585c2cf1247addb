// What the store reads of an order for each read flag, the search of one
// plan link inside a resource, and configurations by activity and generator.
#include <gtest/gtest.h>

#include "store/QZArmazemSQL.h"

namespace {

CQZDadosPX_Manutencao OrdemCompleta() {
    CQZDadosPX_Manutencao m;
    m.SetDmc(REG_QZDMC(REG_QZMA(3, 2026), 0)).SetDescricao("Revisão").SetComplemento("Parada de linha");
    CQZDadosPX_ManutencaoTarefa t;
    t.SetPonteiroTarefa(9);
    CQZDadosBDD_Campo campo;
    campo.SetTextoDescricao("Pressão").SetValor("140");
    t.IncluiApontamentoTarefa().SetTipoAtividade(8).AdicionaCampos(campo);
    m.AdicionaTarefa(t);
    CQZDadosPX_ManutencaoComponente c;
    c.SetComplemento("Lado A").SetQtdRequisitada(CQZMoeda::DeInteiro(2));
    m.AdicionaMaterial(c).AdicionaEquipamento(c).AdicionaServico(c);
    CQZDadosPX_ManutencaoApontamento a;
    a.SetPonteiroTecnico(3).SetObservacao("Sem ocorrências");
    m.AdicionaApontamento(a);
    return m;
}

}  // namespace

TEST(QZLeituraManutencaoTest, EachFlagReadsItsListsAndTheHeaderAlwaysComes) {
    CQZArmazemSQL armazem(":memory:");
    ASSERT_TRUE(armazem.EstaAberto());
    CQZDadosPX_Manutencao gravada = OrdemCompleta();
    ASSERT_EQ(0, armazem.Insere(gravada));

    struct Caso {
        uint32_t flags;
        bool tarefa, material, equipamento, servico, apontamento;
    } casos[] = {
        {0, false, false, false, false, false},
        {PX_LER_MANUTENCAO_COMPLEMENTO | PX_LER_MANUTENCAO_DESCRICAO, false, false, false, false, false},
        {PX_LER_MANUTENCAO_TAREFA, true, false, false, false, false},
        {PX_LER_MANUTENCAO_MATERIAL, false, true, false, false, false},
        {PX_LER_MANUTENCAO_MATERIAL_COMPLEMENTO, false, true, false, false, false},
        {PX_LER_MANUTENCAO_EQUIPAMENTO_COMPLEMENTO, false, false, true, false, false},
        {PX_LER_MANUTENCAO_SERVICO, false, false, false, true, false},
        {PX_LER_MANUTENCAO_APONTAMENTO_OBSERVACAO, false, false, false, false, true},
        {0xFFFF, true, true, true, true, true},
    };
    for (const auto& c : casos) {
        SCOPED_TRACE(testing::Message() << "flags 0x" << std::hex << c.flags);
        CQZDadosPX_Manutencao lida;
        ASSERT_EQ(0, armazem.LeManutencao(gravada.GetDmc(), &lida, c.flags));
        EXPECT_EQ(lida.GetDescricao(), "Revisão");
        EXPECT_EQ(lida.GetComplemento(), "Parada de linha");
        EXPECT_EQ(lida.GetDmaHmsGravacao(), gravada.GetDmaHmsGravacao());
        EXPECT_EQ(lida.GetListaTarefa(), c.tarefa ? gravada.GetListaTarefa() : std::vector<CQZDadosPX_ManutencaoTarefa>());
        EXPECT_EQ(lida.GetQuantidadeMaterial(), c.material ? 1 : 0);
        EXPECT_EQ(lida.GetQuantidadeEquipamento(), c.equipamento ? 1 : 0);
        EXPECT_EQ(lida.GetQuantidadeServico(), c.servico ? 1 : 0);
        EXPECT_EQ(lida.GetListaApontamento(),
                  c.apontamento ? gravada.GetListaApontamento() : std::vector<CQZDadosPX_ManutencaoApontamento>());
    }
    // Reads outside the contract, and records of other types, are whole.
    CQZDadosPX_Manutencao inteira;
    ASSERT_EQ(0, armazem.LeRegistro(static_cast<int64_t>(gravada.GetDmc().GetValor()), inteira));
    EXPECT_EQ(inteira, gravada);
}

TEST(QZLeituraManutencaoTest, APlanLinkIsFoundInsideItsResource) {
    CQZArmazemSQL armazem(":memory:");
    CQZDadosGT_Recurso r;
    r.SetPosicao(4);
    for (uint32_t plano : {7u, 8u, 7u}) {
        CQZDadosGT_RecursoPlanoManutencao v;
        v.SetPonteiroPlanoManutencao(plano).SetInativo(plano == 8).SetCiclosContadorProximaManutencao(
            CQZMoeda::DeInteiro(plano));
        r.AdicionaPlanoManutencao(v);
    }
    ASSERT_EQ(0, armazem.Insere(r));

    CQZDadosGT_RecursoPlanoManutencao v;
    ASSERT_EQ(0, armazem.BuscarDadosPlanoManutencaoRecurso(4, 8, &v));
    EXPECT_EQ(v, r.GetPlanoManutencao(1));
    ASSERT_EQ(0, armazem.BuscarDadosPlanoManutencaoRecurso(4, 7, &v));
    EXPECT_EQ(v, r.GetPlanoManutencao(0)) << "the first link of the plan";
    EXPECT_EQ(QZ_E_REGISTRO_NAO_ENCONTRADO, armazem.BuscarDadosPlanoManutencaoRecurso(4, 9, &v))
        << "a plan the resource does not follow";
    EXPECT_EQ(QZ_E_REGISTRO_NAO_ENCONTRADO, armazem.BuscarDadosPlanoManutencaoRecurso(5, 7, &v));
}

TEST(QZLeituraManutencaoTest, AConfigurationIsReadByActivityAndGenerator) {
    CQZArmazemSQL armazem(":memory:");
    for (uint8_t atividade : {8, 9}) {
        CQZDadosBDD_Registro r;
        r.SetPosicao(REG_BDD_KEY_GERADOR(atividade, 5).GetChaveArmazem());
        r.SetTipoAtividade(atividade);
        ASSERT_EQ(0, armazem.Insere(r));
    }
    CQZDadosBDD_Registro lido;
    ASSERT_EQ(0, armazem.LeBDDConfiguracao(REG_BDD_KEY_GERADOR(9, 5), &lido));
    EXPECT_EQ(lido.GetTipoAtividade(), 9);
    EXPECT_EQ(QZ_E_REGISTRO_NAO_ENCONTRADO, armazem.LeBDDConfiguracao(REG_BDD_KEY_GERADOR(8, 6), &lido));
}
