#include "files/PXFuncoesComuns.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "platform/QZDadosPX_Manutencao.h"

TEST(PXFuncoesComunsTest, EachReadTestAnswersExactlyForItsBits) {
    struct Caso {
        const char* nome;
        bool (*teste)(uint16_t);
        uint16_t mascara;
    } casos[] = {
        {"Complemento", CPXFuncoesComuns::FazLeituraManutencaoComplemento, 0x0001},
        {"Descricao", CPXFuncoesComuns::FazLeituraManutencaoDescricao, 0x0002},
        {"Tarefa", CPXFuncoesComuns::FazLeituraManutencaoTarefa, 0x0004},
        {"Material", CPXFuncoesComuns::FazLeituraManutencaoMaterial, 0x0018},
        {"MaterialComplemento", CPXFuncoesComuns::FazLeituraManutencaoMaterialComplemento, 0x0010},
        {"Equipamento", CPXFuncoesComuns::FazLeituraManutencaoEquipamento, 0x0060},
        {"EquipamentoComplemento", CPXFuncoesComuns::FazLeituraManutencaoEquipamentoComplemento, 0x0040},
        {"Servico", CPXFuncoesComuns::FazLeituraManutencaoServico, 0x0180},
        {"ServicoComplemento", CPXFuncoesComuns::FazLeituraManutencaoServicoComplemento, 0x0100},
        {"Apontamento", CPXFuncoesComuns::FazLeituraManutencaoApontamento, 0x0600},
        {"ApontamentoObservacao", CPXFuncoesComuns::FazLeituraManutencaoApontamentoObservacao, 0x0400},
    };
    for (const auto& c : casos) {
        for (int bit = 0; bit < 16; ++bit) {
            const auto flags = static_cast<uint16_t>(1u << bit);
            EXPECT_EQ(c.teste(flags), (c.mascara & flags) != 0) << c.nome << " bit " << bit;
        }
        EXPECT_FALSE(c.teste(0)) << c.nome;
        EXPECT_FALSE(c.teste(static_cast<uint16_t>(~c.mascara))) << c.nome;
        EXPECT_TRUE(c.teste(0xFFFF)) << c.nome;
    }
    // The complement bit alone implies the list.
    EXPECT_TRUE(CPXFuncoesComuns::FazLeituraManutencaoMaterial(0x0010));
}

TEST(PXFuncoesComunsTest, AlertTimeUnits) {
    EXPECT_EQ(CPXFuncoesComuns::GetTempoAlertaPlano(1), "Dia(s)");
    EXPECT_EQ(CPXFuncoesComuns::GetTempoAlertaPlano(2), "Hora(s)");
    EXPECT_EQ(CPXFuncoesComuns::GetTempoAlertaPlano(3), "Minuto(s)");
    for (int t : {0, 4, 255}) EXPECT_EQ(CPXFuncoesComuns::GetTempoAlertaPlano(static_cast<uint8_t>(t)), "") << t;
}

TEST(PXFuncoesComunsTest, OnlyTheSixBaseSituationsHaveNamesAndEachItsOwn) {
    std::set<std::string> nomes;
    for (int s = 0; s < 256; ++s) {
        const CString nome = CPXFuncoesComuns::GetSituacaoManutencao(static_cast<uint8_t>(s));
        EXPECT_EQ(nome, QZDadosPX::Manutencao::GetNomeSituacao(static_cast<uint8_t>(s)));
        const bool base = s == 2 || s == 4 || s == 8 || s == 16 || s == 32 || s == 64;
        EXPECT_EQ(!nome.IsEmpty(), base) << s;
        if (base) nomes.insert(nome.str());
    }
    EXPECT_EQ(nomes.size(), 6u);
}

TEST(PXFuncoesComunsTest, MaintenanceTypes) {
    std::set<std::string> nomes;
    for (int t = 0; t < 256; ++t) {
        const CString nome = CPXFuncoesComuns::GetTipoManutencao(static_cast<uint8_t>(t));
        EXPECT_EQ(nome, QZDadosPX::Manutencao::GetNomeTipo(static_cast<uint8_t>(t)));
        if (!nome.IsEmpty()) nomes.insert(nome.str());
        EXPECT_EQ(!nome.IsEmpty(), t >= 1 && t <= 5) << t;
    }
    EXPECT_EQ(nomes.size(), 5u);
    // Type 1 is the order a maintenance plan drives.
    EXPECT_EQ(CPXFuncoesComuns::GetTipoManutencao(1), "Preventiva");
}
