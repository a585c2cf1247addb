#include "files/ArqManutencao.h"

#include <gtest/gtest.h>

#include <cstring>
#include <iterator>

#include "platform/QZDiretorioDados.h"

namespace {

// A directory service that answers from a fixed root and remembers what it
// was asked.
class DiretoriosTeste : public CQZAcessoServidores {
public:
    CString GetDiretorioDados(const CString& empresa, QZModulo modulo) const override {
        ultimaEmpresa = empresa;
        ultimoModulo = modulo;
        return empresa == "RECUSADA" ? CString() : "/dados/" + empresa + "/PX";
    }
    mutable CString ultimaEmpresa;
    mutable QZModulo ultimoModulo = QZ_MODULO_NENHUM;
};

}  // namespace

class ArqManutencaoTest : public ::testing::Test {
protected:
    void TearDown() override { CArqManutencao::SetServicoDiretorios(nullptr); }
};

TEST_F(ArqManutencaoTest, EveryFileHasItsName) {
    const char* esperados[] = {
        "PXMESTRE", "PXVERSAO", "PXLOGC",   "PXLOGT",   "PXSITREG", "PXDISMAN",  "PXDMTXTO", "PXTECMAN",
        "PXTMDISC", "PXTMPOSE", "PXTMEMAI", "PXCPSCAB", "PXCPSTXT", "PXTRFCAB",  "PXTRFDSC", "PXTRFMAT",
        "PXTRFEQP", "PXTRFSVC", "PXTRFMTX", "PXTRFETX", "PXTRFSTX", "PXPLAMAN",  "PXPMTRFA", "PXPMALRT",
        "PXPMALTC", "PXPMALDT", "PXPMALME", "PXPMCOMP", "PXPLTXTO", "PXMN",      "PXMC",     "PXMF",
        "PXMA",     "PXMNTTXTO", "PXTIPGAS", "PXLAGCAB", "PXLAGITE", "PXLAGTXT", "PXPRDMAN",
    };
    ASSERT_EQ(std::size(esperados), 39u);
    for (int valor = 1; valor <= 39; ++valor)
        EXPECT_EQ(CArqManutencao::GetArqManutencao(static_cast<E_ARQUIVO_MANUTENCAO>(valor)), esperados[valor - 1])
            << "file " << valor;
    EXPECT_EQ(CArqManutencao::GetArqManutencao(ARQ_PX_MNTTXTO).GetLength(), 9);
}

TEST_F(ArqManutencaoTest, ValuesOutsideTheTablesHaveNoName) {
    for (int valor : {0, 40, -1, 1000}) {
        const auto arquivo = static_cast<E_ARQUIVO_MANUTENCAO>(valor);
        EXPECT_EQ(CArqManutencao::GetArqManutencao(arquivo), "") << valor;
        EXPECT_EQ(CArqManutencao::GetArqManutencao(arquivo, EXT_PX_DADOS), "") << valor;
    }
    for (int valor : {0, 7, -1})
        EXPECT_EQ(CArqManutencao::GetArqManutencaoVersao(static_cast<E_ARQUIVO_MANUTENCAO_VERSAO>(valor)), "")
            << valor;
    for (int valor : {0, 4, -1})
        EXPECT_EQ(CArqManutencao::GetExtManutencao(static_cast<E_EXTENSAO_ARQUIVO_MANUTENCAO>(valor)), "") << valor;
}

TEST_F(ArqManutencaoTest, OldVersionFilesAndExtensions) {
    const char* versoes[] = {"PXPMTXTO", "PXMD", "PXTD", "PXML", "PXCC", "PXMO"};
    for (int valor = 1; valor <= 6; ++valor)
        EXPECT_EQ(CArqManutencao::GetArqManutencaoVersao(static_cast<E_ARQUIVO_MANUTENCAO_VERSAO>(valor)),
                  versoes[valor - 1]);
    EXPECT_EQ(CArqManutencao::GetExtManutencao(EXT_PX_DADOS), "dat");
    EXPECT_EQ(CArqManutencao::GetExtManutencao(EXT_PX_TRANSACAO), "tra");
    EXPECT_EQ(CArqManutencao::GetExtManutencao(EXT_PX_HISTORICO), "his");
}

TEST_F(ArqManutencaoTest, NameWithExtension) {
    EXPECT_EQ(CArqManutencao::GetArqManutencao(ARQ_PX_MESTRE, EXT_PX_TRANSACAO), "PXMESTRE.tra");
    EXPECT_EQ(CArqManutencao::GetArqManutencao(ARQ_PX_MNTTXTO, EXT_PX_HISTORICO), "PXMNTTXTO.his");
    EXPECT_EQ(CArqManutencao::GetArqManutencao(ARQ_PX_PRDMAN, static_cast<E_EXTENSAO_ARQUIVO_MANUTENCAO>(0)),
              "PXPRDMAN");
    EXPECT_EQ(CArqManutencao::GetArqManutencao(ARQ_PX_PRDMAN, static_cast<E_EXTENSAO_ARQUIVO_MANUTENCAO>(4)),
              "PXPRDMAN");
}

TEST_F(ArqManutencaoTest, MovementFilesAreAppended) {
    CStringArray arquivos;
    arquivos.Add("JA_ESTAVA");
    CArqManutencao::GetArquivosMovimentacao(arquivos);
    CArqManutencao::GetArquivosMovimentacao(arquivos);
    ASSERT_EQ(arquivos.GetSize(), 11);
    EXPECT_EQ(arquivos[0], "JA_ESTAVA");
    const char* movimento[] = {"PXMN", "PXMC", "PXMF", "PXMA", "PXMNTTXTO"};
    for (int i = 0; i < 10; ++i) EXPECT_EQ(arquivos[i + 1], movimento[i % 5]) << i;
}

TEST_F(ArqManutencaoTest, DataDirectoryComesFromTheDirectoryService) {
    DiretoriosTeste diretorios;
    CArqManutencao::SetServicoDiretorios(&diretorios);
    EXPECT_EQ(CArqManutencao::GetDiretorioDados("EMPRESA01"), "/dados/EMPRESA01/PX");
    EXPECT_EQ(diretorios.ultimaEmpresa, "EMPRESA01");
    EXPECT_EQ(diretorios.ultimoModulo, QZ_MODULO_PX);
    EXPECT_EQ(CArqManutencao::MontaArquivo("EMPRESA01", "PXMESTRE.dat"), "/dados/EMPRESA01/PX/PXMESTRE.dat");

    // Without a directory there is no path, never a bare name.
    EXPECT_EQ(CArqManutencao::MontaArquivo("RECUSADA", "PXMESTRE.dat"), "");
    EXPECT_EQ(CArqManutencao::MontaArquivo("RECUSADA", "PXMN", REG_QZMA(11, 2026), REG_QZDMA::TIPO_DATA_DMA_MMAAAA),
              "");
    EXPECT_EQ(CArqManutencao::MontaArquivo("EMPRESA01", ""), "");
}

TEST_F(ArqManutencaoTest, DefaultDirectoryServiceIsThePlatformOne) {
    CArqManutencao::SetServicoDiretorios(nullptr);
    EXPECT_NE(dynamic_cast<const CQZDiretorioDados*>(&CArqManutencao::GetServicoDiretorios()), nullptr);
    const CString dir = CArqManutencao::GetDiretorioDados("EMPRESA01");
    EXPECT_EQ(dir.Right(static_cast<int>(strlen("/EMPRESA01/PX"))), "/EMPRESA01/PX");
}

TEST_F(ArqManutencaoTest, MonthlyFileNamesForEachDateKind) {
    DiretoriosTeste diretorios;
    CArqManutencao::SetServicoDiretorios(&diretorios);
    struct Caso {
        REG_QZDMA::TIPO_DATA_DMA tipo;
        const char* sufixo;
    } casos[] = {
        {REG_QZDMA::TIPO_DATA_DMA_DDMMAAAA, "032026"}, {REG_QZDMA::TIPO_DATA_DMA_DDMMAA, "0326"},
        {REG_QZDMA::TIPO_DATA_DMA_MMAAAA, "032026"},   {REG_QZDMA::TIPO_DATA_DMA_MMAA, "0326"},
        {REG_QZDMA::TIPO_DATA_DMA_AAAAMMDD, "202603"}, {REG_QZDMA::TIPO_DATA_DMA_AAAAMM, "202603"},
    };
    const REG_QZMA marco(3, 2026);
    for (const auto& c : casos) {
        EXPECT_EQ(CArqManutencao::MontaArquivo("PXMN", marco, c.tipo), CString("PXMN") + c.sufixo + ".dat") << c.tipo;
        EXPECT_EQ(CArqManutencao::MontaArquivo("EMP", "PXMNTTXTO", marco, c.tipo),
                  CString("/dados/EMP/PX/PXMNTTXTO") + c.sufixo + ".dat")
            << c.tipo;
    }
}

TEST_F(ArqManutencaoTest, MonthlyFileNeedsANameAndARealMonth) {
    const auto tipo = REG_QZDMA::TIPO_DATA_DMA_MMAAAA;
    EXPECT_EQ(CArqManutencao::MontaArquivo("PXMN", REG_QZMA(12, 2026), tipo), "PXMN122026.dat");
    EXPECT_EQ(CArqManutencao::MontaArquivo("PXMN", REG_QZMA(13, 2026), tipo), "");
    EXPECT_EQ(CArqManutencao::MontaArquivo("PXMN", REG_QZMA(0, 2026), tipo), "");
    EXPECT_EQ(CArqManutencao::MontaArquivo("PXMN", REG_QZMA(), tipo), "");
    EXPECT_EQ(CArqManutencao::MontaArquivo("", REG_QZMA(12, 2026), tipo), "");
}
