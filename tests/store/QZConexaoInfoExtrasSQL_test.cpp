#include "store/QZConexaoInfoExtrasSQL.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/QZCodigosResultado.h"
#include "tests/support/PXArquivoTemporario.h"

namespace {

constexpr auto kP1 = static_cast<IE_E_PROCESSO>(1);
constexpr auto kP2 = static_cast<IE_E_PROCESSO>(2);

std::string Texto(const CQZDadosGT_Erro& erro) { return QZParaUtf8(erro.GetMensagem()); }

class QZConexaoInfoExtrasSQLTest : public ::testing::Test {
protected:
    CIEHeader NovoHeader(IE_E_PROCESSO processo, std::initializer_list<uint32_t> campos) {
        CIEHeader h;
        h.SetProcesso(processo).SetDescricao("Ficha");
        for (uint32_t c : campos) h.AdicionaCampo(c, CString::Formatado("Campo %u", c));
        EXPECT_EQ(0, ie.GravaIEHeader(h, erro)) << Texto(erro);
        return h;
    }
    std::vector<uint32_t> Busca(IE_HEADER_FILTRO_PS filtro) {
        CIEArrayPonteiros a;
        EXPECT_EQ(0, ie.BuscaPtrsIEHeader(filtro, a, erro)) << Texto(erro);
        return a.pPtrs;
    }
    CIEVinculo Le(uint32_t header, uint32_t chave) {
        CIEVinculo v;
        EXPECT_EQ(0, ie.BuscaVinculoByOrigem({header, chave}, v, erro)) << Texto(erro);
        return v;
    }
    long Grava(uint32_t header, uint32_t chave, const std::vector<std::pair<uint32_t, CString>>& valores) {
        CIEVinculo v;
        v.SetPosicaoHeader(header).SetChave(chave);
        for (const auto& [c, s] : valores) v.SetValor(c, s);
        return ie.GravaCamposVinculo(v, erro);
    }

    CQZConexaoInfoExtrasSQL ie{":memory:"};
    CQZDadosGT_Erro erro;
};

}  // namespace

TEST_F(QZConexaoInfoExtrasSQLTest, HeaderSearchByProcessInPositionOrder) {
    const auto a = NovoHeader(kP1, {1});
    const auto b = NovoHeader(kP2, {1});
    const auto c = NovoHeader(kP1, {1});
    const auto d = NovoHeader(kP1, {1});
    EXPECT_EQ(Busca({IE_FILTRO_HEADER_PROCESSO, kP1, 0, 0}),
              (std::vector<uint32_t>{a.GetPosicao(), c.GetPosicao(), d.GetPosicao()}));
    EXPECT_EQ(Busca({IE_FILTRO_HEADER_PROCESSO, kP1, a.GetPosicao(), 1}), (std::vector<uint32_t>{c.GetPosicao()}));
    EXPECT_EQ(Busca({IE_FILTRO_HEADER_TODOS, 0, c.GetPosicao(), 0}), (std::vector<uint32_t>{d.GetPosicao()}));
    EXPECT_EQ(Busca({IE_FILTRO_HEADER_PROCESSO, 99, 0, 0}), std::vector<uint32_t>{});
    EXPECT_EQ(Busca({IE_FILTRO_HEADER_TODOS, 0, 0, 0}).size(), 4u);
    (void)b;

    CIEArrayPonteiros saida;
    saida.pPtrs = {77};
    EXPECT_EQ(QZ_E_REGISTRO_INVALIDO, ie.BuscaPtrsIEHeader({7, kP1, 0, 0}, saida, erro));
    EXPECT_EQ(saida.pPtrs, std::vector<uint32_t>{77});
}

TEST_F(QZConexaoInfoExtrasSQLTest, HeadersRoundTripAndUnknownOnesAreErrors) {
    CIEHeader h;
    h.SetProcesso(kP1).SetDescricao("Informações técnicas").SetInativo(true);
    h.AdicionaCampo(5, "Tensão").AdicionaCampo(2, "Cor");
    ASSERT_EQ(0, ie.GravaIEHeader(h, erro));
    EXPECT_EQ(h.GetPosicao(), 1u);
    CIEHeader lido;
    ASSERT_EQ(0, ie.LeIEHeader(h.GetPosicao(), lido, erro));
    EXPECT_EQ(lido, h);

    EXPECT_EQ(QZ_E_REGISTRO_NAO_ENCONTRADO, ie.LeIEHeader(9, lido, erro));
    EXPECT_EQ(lido, h);
    CIEHeader inventado = h;
    inventado.SetPosicao(9);
    EXPECT_EQ(QZ_E_REGISTRO_NAO_ENCONTRADO, ie.GravaIEHeader(inventado, erro));

    for (auto campos : {std::vector<uint32_t>{0}, std::vector<uint32_t>{3, 4, 3}}) {
        CIEHeader ruim;
        for (uint32_t c : campos) ruim.AdicionaCampo(c, "X");
        EXPECT_EQ(QZ_E_REGISTRO_INVALIDO, ie.GravaIEHeader(ruim, erro));
        EXPECT_EQ(ruim.GetPosicao(), 0u);
    }
    EXPECT_EQ(Busca({IE_FILTRO_HEADER_TODOS, 0, 0, 0}).size(), 1u);
}

TEST_F(QZConexaoInfoExtrasSQLTest, LinksReplaceValuesAndAbsentOnesAreEmpty) {
    const auto h = NovoHeader(kP1, {1, 2, 3});
    ASSERT_EQ(0, Grava(h.GetPosicao(), 10, {{3, "Três"}, {1, "Um"}}));
    auto v = Le(h.GetPosicao(), 10);
    EXPECT_EQ(v.GetPosicaoHeader(), h.GetPosicao());
    EXPECT_EQ(v.GetChave(), 10u);
    ASSERT_EQ(v.GetValores().size(), 2u);
    EXPECT_EQ(v.GetValores()[0], (CIEValorCampo{3, "Três"}));
    EXPECT_EQ(v.GetValores()[1], (CIEValorCampo{1, "Um"}));

    ASSERT_EQ(0, Grava(h.GetPosicao(), 10, {{2, "Dois"}}));
    EXPECT_EQ(Le(h.GetPosicao(), 10).GetValores(), (std::vector<CIEValorCampo>{{2, "Dois"}}));
    ASSERT_EQ(0, Grava(h.GetPosicao(), 10, {}));
    EXPECT_TRUE(Le(h.GetPosicao(), 10).GetValores().empty());
    EXPECT_TRUE(Le(h.GetPosicao(), 11).GetValores().empty());

    CIEVinculo saida;
    saida.SetChave(5);
    EXPECT_EQ(QZ_E_REGISTRO_NAO_ENCONTRADO, ie.BuscaVinculoByOrigem({99, 10}, saida, erro));
    EXPECT_EQ(saida.GetChave(), 5u);
}

// A refused write leaves the record's values as they were.
TEST_F(QZConexaoInfoExtrasSQLTest, RefusedWritesChangeNothing) {
    auto h = NovoHeader(kP1, {1, 2});
    ASSERT_EQ(0, Grava(h.GetPosicao(), 10, {{1, "Antes"}}));
    const CString semForma("\x81", 1);  // a byte Windows-1252 leaves undefined
    struct Caso {
        const char* nome;
        uint32_t header, chave;
        std::vector<std::pair<uint32_t, CString>> valores;
        long hr;
    } casos[] = {
        {"unknown header", 99, 10, {{1, "X"}}, QZ_E_REGISTRO_NAO_ENCONTRADO},
        {"no header", 0, 10, {{1, "X"}}, QZ_E_REGISTRO_INVALIDO},
        {"no key", h.GetPosicao(), 0, {{1, "X"}}, QZ_E_REGISTRO_INVALIDO},
        {"field the header lacks", h.GetPosicao(), 10, {{1, "X"}, {7, "Y"}}, QZ_E_REGISTRO_INVALIDO},
        {"text without a Windows-1252 form", h.GetPosicao(), 10, {{1, "X"}, {2, semForma}}, QZ_E_REGISTRO_INVALIDO},
    };
    for (const Caso& c : casos) {
        EXPECT_EQ(c.hr, Grava(c.header, c.chave, c.valores)) << c.nome;
        EXPECT_FALSE(Texto(erro).empty()) << c.nome;
        EXPECT_EQ(Le(h.GetPosicao(), 10).GetValores(), (std::vector<CIEValorCampo>{{1, "Antes"}})) << c.nome;
    }
    h.SetInativo(true);
    ASSERT_EQ(0, ie.GravaIEHeader(h, erro));
    EXPECT_EQ(QZ_E_REGISTRO_INVALIDO, Grava(h.GetPosicao(), 10, {{1, "Depois"}}));
    EXPECT_THAT(Texto(erro), ::testing::HasSubstr("inativo"));
    EXPECT_EQ(Le(h.GetPosicao(), 10).GetValores(), (std::vector<CIEValorCampo>{{1, "Antes"}}));
}

TEST_F(QZConexaoInfoExtrasSQLTest, FieldsDroppedFromAHeaderTakeTheirValuesAlong) {
    auto h = NovoHeader(kP1, {1, 2, 3});
    ASSERT_EQ(0, Grava(h.GetPosicao(), 10, {{1, "Um"}, {2, "Dois"}, {3, "Três"}}));
    h.RemoveTodosCampos();
    h.AdicionaCampo(3, "Terceiro").AdicionaCampo(1, "Primeiro").AdicionaCampo(4, "Quarto");
    ASSERT_EQ(0, ie.GravaIEHeader(h, erro)) << Texto(erro);
    CIEHeader lido;
    ASSERT_EQ(0, ie.LeIEHeader(h.GetPosicao(), lido, erro));
    EXPECT_EQ(lido, h);
    EXPECT_EQ(Le(h.GetPosicao(), 10).GetValores(), (std::vector<CIEValorCampo>{{1, "Um"}, {3, "Três"}}));
}

TEST(QZConexaoInfoExtrasSQLArquivoTest, FileKeepsHeadersAndLinksAcrossConnections) {
    PXArquivoTemporario arquivo("ie");
    const std::string& caminho = arquivo.Caminho();
    CQZDadosGT_Erro erro;
    CIEHeader h;
    {
        CQZConexaoInfoExtrasSQL ie(caminho);
        ASSERT_TRUE(ie.EstaAberto()) << Texto(ie.GetErroAbertura());
        h.SetProcesso(kP1).AdicionaCampo(1, "Cor");
        ASSERT_EQ(0, ie.GravaIEHeader(h, erro));
        CIEVinculo v;
        v.SetPosicaoHeader(h.GetPosicao()).SetChave(3).SetValor(1, "Lilás");
        ASSERT_EQ(0, ie.GravaCamposVinculo(v, erro));
    }
    CQZConexaoInfoExtrasSQL ie(caminho);
    ASSERT_TRUE(ie.EstaAberto());
    CIEVinculo v;
    ASSERT_EQ(0, ie.BuscaVinculoByOrigem({h.GetPosicao(), 3}, v, erro));
    EXPECT_EQ(v.GetValores(), (std::vector<CIEValorCampo>{{1, "Lilás"}}));
}

TEST(QZConexaoInfoExtrasSQLArquivoTest, UnopenableFileIsReportedAndEveryOperationFails) {
    CQZConexaoInfoExtrasSQL ie("/nonexistent-dir/ie.db");
    EXPECT_FALSE(ie.EstaAberto());
    EXPECT_EQ(ie.GetErroAbertura().GetUltimoHR(), QZ_E_BANCO);
    CQZDadosGT_Erro erro;
    CIEHeader h;
    EXPECT_EQ(QZ_E_BANCO, ie.GravaIEHeader(h, erro));
    EXPECT_EQ(QZ_E_BANCO, ie.LeIEHeader(1, h, erro));
}
