#include "extrainfo/PXCorvel.h"

#include <functional>

#include "platform/QZCodigosResultado.h"
#include "store/QZConexaoInfoExtrasSQL.h"
#include "tests/support/PXTeste.h"

namespace {
constexpr auto kProcesso = static_cast<IE_E_PROCESSO>(41);
constexpr auto kProcessoInativo = static_cast<IE_E_PROCESSO>(42);
constexpr auto kProcessoSemHeader = static_cast<IE_E_PROCESSO>(43);

CIEVinculo Vinculo(std::initializer_list<std::pair<uint32_t, const char*>> valores) {
    CIEVinculo v;
    for (const auto& [campo, valor] : valores) v.SetValor(campo, valor);
    return v;
}
}  // namespace

class PXCorvelTest : public PXTeste {
protected:
    void SetUp() override {
        PXTeste::SetUp();
        ASSERT_TRUE(IE().EstaAberto()) << QZParaUtf8(IE().GetErroAbertura().GetMensagem());

        outroProcesso = Header(static_cast<IE_E_PROCESSO>(40), false);
        header = Header(kProcesso, false);
        segundo = Header(kProcesso, false);
        inativo = Header(kProcessoInativo, false);
        Inicializa(corvel);
        ZeraChamadas();
    }

    // The extra information on the test's own connection.
    CQZConexaoInfoExtrasSQL& IE() { return dynamic_cast<CQZConexaoInfoExtrasSQL&>(*armazem.InfoExtras()); }

    CIEHeader Header(IE_E_PROCESSO processo, bool bInativo) {
        CIEHeader h;
        h.SetProcesso(processo).SetDescricao("Dados técnicos").SetInativo(bInativo);
        h.AdicionaCampo(1, "Cor").AdicionaCampo(2, "Voltagem").AdicionaCampo(3, "Observação");
        CQZDadosGT_Erro erro;
        EXPECT_EQ(0, IE().GravaIEHeader(h, erro)) << QZParaUtf8(erro.GetMensagem());
        return h;
    }

    // What the service holds for a record under a header.
    CIEVinculo Gravado(uint32_t posicaoHeader, uint32_t chave) {
        CIEVinculo v;
        CQZDadosGT_Erro erro;
        EXPECT_EQ(0, IE().BuscaVinculoByOrigem({posicaoHeader, chave}, v, erro)) << QZParaUtf8(erro.GetMensagem());
        return v;
    }

    void GravaDireto(uint32_t posicaoHeader, uint32_t chave, CIEVinculo v) {
        v.SetPosicaoHeader(posicaoHeader).SetChave(chave);
        CQZDadosGT_Erro erro;
        ASSERT_EQ(0, IE().GravaCamposVinculo(v, erro)) << QZParaUtf8(erro.GetMensagem());
    }

    CIEHeader outroProcesso, header, segundo, inativo;
    CPXCorvel corvel;
};

TEST_F(PXCorvelTest, ContextOfTheSessionAndKeyAlwaysZero) {
    EXPECT_EQ(corvel.IEGetChave(), 0u);
    EXPECT_EQ(corvel.IEGetEmpresa(), kEmpresa);
    EXPECT_EQ(corvel.IEGetUsuario(), 7);
    EXPECT_EQ(corvel.IEGetNumeroSessao(), 42);
    ASSERT_EQ(0, corvel.SetFlagProcesso(kProcesso));
    EXPECT_EQ(corvel.IEGetProcesso(), kProcesso);
    EXPECT_EQ(corvel.GetFlagProcesso(), kProcesso);
    corvel.SetVinculo(Vinculo({{1, "Azul"}}));
    ASSERT_EQ(0, corvel.CopiarCorvel(10, 11));
    EXPECT_EQ(corvel.IEGetChave(), 0u);
    corvel.Finaliza();
    EXPECT_EQ(corvel.IEGetChave(), 0u);
}

TEST_F(PXCorvelTest, FirstHeaderOfTheProcessIsSelected) {
    ASSERT_EQ(0, corvel.SetFlagProcesso(kProcesso));
    EXPECT_EQ(corvel.GetHeaderCorvel(), header);
    EXPECT_NE(header.GetPosicao(), segundo.GetPosicao());
}

// Without a header nothing is read or written, and every operation answers 0.
TEST_F(PXCorvelTest, WithoutHeaderNothingIsReadOrWritten) {
    GravaDireto(header.GetPosicao(), 10, Vinculo({{1, "Azul"}}));
    ASSERT_EQ(0, corvel.SetFlagProcesso(kProcesso));
    ASSERT_EQ(0, corvel.SetFlagProcesso(kProcessoSemHeader));  // replaces the earlier selection
    EXPECT_EQ(corvel.GetHeaderCorvel().GetPosicao(), 0u);

    const auto vinculo = Vinculo({{2, "220 V"}});
    corvel.SetVinculo(vinculo);
    ZeraChamadas();
    EXPECT_EQ(0, corvel.SetDadosCorvel(10));
    EXPECT_EQ(0, corvel.GravaCorvel(11));
    EXPECT_EQ(0, corvel.CopiarCorvel(10, 12));
    EXPECT_EQ(corvel.GetVinculo(), vinculo);
    EXPECT_EQ(falhas.TotalChamadas(), 0);
    EXPECT_TRUE(rastro.Registros().empty());
}

TEST_F(PXCorvelTest, SetVinculoThenGravaCorvelWritesWithHeaderAndTargetKey) {
    ASSERT_EQ(0, corvel.SetFlagProcesso(kProcesso));
    EXPECT_EQ(0, corvel.SetVinculo(Vinculo({{2, "110 V"}, {1, "Preto"}})).GravaCorvel(25));

    auto esperado = Vinculo({{2, "110 V"}, {1, "Preto"}});
    esperado.SetPosicaoHeader(header.GetPosicao()).SetChave(25);
    EXPECT_EQ(corvel.GetVinculo(), esperado);
    EXPECT_EQ(Gravado(header.GetPosicao(), 25), esperado);

    // Writing again replaces the record's values as a whole.
    corvel.SetVinculo(Vinculo({{3, "Revisado em março"}}));
    ASSERT_EQ(0, corvel.GravaCorvel(25));
    EXPECT_EQ(Gravado(header.GetPosicao(), 25).GetValores(), Vinculo({{3, "Revisado em março"}}).GetValores());
}

TEST_F(PXCorvelTest, CopiarCorvelCopiesTheSourceValuesOrNone) {
    GravaDireto(header.GetPosicao(), 10, Vinculo({{1, "Azul"}, {3, "Motor novo"}}));
    GravaDireto(header.GetPosicao(), 12, Vinculo({{2, "380 V"}}));
    ASSERT_EQ(0, corvel.SetFlagProcesso(kProcesso));

    EXPECT_EQ(0, corvel.CopiarCorvel(10, 11));
    EXPECT_EQ(Gravado(header.GetPosicao(), 11).GetValores(), Vinculo({{1, "Azul"}, {3, "Motor novo"}}).GetValores());
    EXPECT_EQ(Gravado(header.GetPosicao(), 10).GetValores().size(), 2u);

    // A source without extra information leaves the target without any.
    EXPECT_EQ(0, corvel.CopiarCorvel(99, 12));
    EXPECT_TRUE(Gravado(header.GetPosicao(), 12).GetValores().empty());
}

// An inactive header is still read from, but takes nothing.
TEST_F(PXCorvelTest, InactiveHeaderReadsButDoesNotWrite) {
    GravaDireto(inativo.GetPosicao(), 10, Vinculo({{1, "Verde"}}));
    inativo.SetInativo(true);
    CQZDadosGT_Erro erro;
    ASSERT_EQ(0, IE().GravaIEHeader(inativo, erro));

    ASSERT_EQ(0, corvel.SetFlagProcesso(kProcessoInativo));
    EXPECT_TRUE(corvel.GetHeaderCorvel().IsInativo());
    ZeraChamadas();
    EXPECT_EQ(0, corvel.SetDadosCorvel(10));
    EXPECT_EQ(corvel.GetVinculo().GetValores(), Vinculo({{1, "Verde"}}).GetValores());
    EXPECT_EQ(0, corvel.GravaCorvel(11));
    EXPECT_EQ(0, corvel.CopiarCorvel(10, 12));
    EXPECT_EQ(falhas.Chamadas("BuscaVinculoByOrigem"), 2);
    EXPECT_EQ(falhas.Chamadas("GravaCamposVinculo"), 0);
    EXPECT_TRUE(Gravado(inativo.GetPosicao(), 11).GetValores().empty());
    EXPECT_TRUE(Gravado(inativo.GetPosicao(), 12).GetValores().empty());
}

// A failed read is traced and ignored: the target gets what the link held.
TEST_F(PXCorvelTest, CopiarCorvelWritesOnAfterAFailedRead) {
    GravaDireto(header.GetPosicao(), 10, Vinculo({{1, "Azul"}}));
    ASSERT_EQ(0, corvel.SetFlagProcesso(kProcesso));
    corvel.SetVinculo(Vinculo({{2, "12 V"}}));
    ZeraChamadas();
    falhas.FalhaEm("BuscaVinculoByOrigem", 1, QZ_E_FALHA_INJETADA);

    EXPECT_EQ(0, corvel.CopiarCorvel(10, 11));
    EXPECT_EQ(Gravado(header.GetPosicao(), 11).GetValores(), Vinculo({{2, "12 V"}}).GetValores());
    auto regs = rastro.Registros();
    ASSERT_EQ(regs.size(), 1u);
    EXPECT_EQ(regs[0].funcao, "CPXCorvel::SetDadosCorvel");
    EXPECT_EQ(regs[0].chaves["Arquivo"], "PXCorvel");
    EXPECT_THAT(regs[0].chaves["Log"].str(),
                ::testing::StartsWith("hr = GetConexaoCorvel().BuscaVinculoByOrigem(origem, GetVinculo())\thr = "));
}

// Each failing service call: its status comes back unchanged and the trace
// names the function and the call (a failed write of a copy twice: in
// GravaCorvel and in CopiarCorvel).
TEST_F(PXCorvelTest, FailuresAreReturnedAndTraced) {
    struct Caso {
        const char* operacao;
        std::function<long(CPXCorvel&)> acao;
        std::vector<std::pair<const char*, const char*>> rastros;  // function, expression
    } casos[] = {
        {"BuscaPtrsIEHeader", [](CPXCorvel& c) { return c.SetFlagProcesso(kProcesso); },
         {{"CPXCorvel::SetFlagProcesso", "m_cnxIE.BuscaPtrsIEHeader(filtroIE, aPtrs)"}}},
        {"LeIEHeader", [](CPXCorvel& c) { return c.SetFlagProcesso(kProcesso); },
         {{"CPXCorvel::SetFlagProcesso", "m_cnxIE.LeIEHeader(aPtrs.pPtrs[0], m_ieHeader)"}}},
        {"BuscaVinculoByOrigem", [](CPXCorvel& c) { return c.SetDadosCorvel(10); },
         {{"CPXCorvel::SetDadosCorvel", "GetConexaoCorvel().BuscaVinculoByOrigem(origem, GetVinculo())"}}},
        {"GravaCamposVinculo", [](CPXCorvel& c) { return c.GravaCorvel(11); },
         {{"CPXCorvel::GravaCorvel", "GetConexaoCorvel().GravaCamposVinculo(GetVinculo())"}}},
        {"GravaCamposVinculo", [](CPXCorvel& c) { return c.CopiarCorvel(10, 11); },
         {{"CPXCorvel::GravaCorvel", "GetConexaoCorvel().GravaCamposVinculo(GetVinculo())"},
          {"CPXCorvel::CopiarCorvel", "GravaCorvel(ulChaveDestino)"}}},
    };
    for (const Caso& c : casos) {
        SCOPED_TRACE(c.operacao);
        ASSERT_EQ(0, corvel.SetFlagProcesso(kProcesso));
        ZeraChamadas();
        falhas.FalhaEm(c.operacao, 1, QZ_E_BANCO, "Disco indisponível");
        EXPECT_EQ(QZ_E_BANCO, c.acao(corvel));
        EXPECT_EQ(corvel.GetConexaoCorvel().GetErro().GetMensagem(),
                  CString("Disco indisponível (") + c.operacao + ")");
        auto regs = rastro.Registros();
        ASSERT_EQ(regs.size(), c.rastros.size());
        for (size_t i = 0; i < regs.size(); ++i) {
            EXPECT_EQ(regs[i].funcao, c.rastros[i].first);
            EXPECT_EQ(regs[i].chaves["Arquivo"], "PXCorvel");
            EXPECT_THAT(regs[i].chaves["Log"].str(),
                        ::testing::StartsWith(std::string("hr = ") + c.rastros[i].second + "\thr = 0X80040A03"));
        }
    }
    // A failed selection leaves no header behind.
    falhas.FalhaEm("LeIEHeader", 0);
    EXPECT_LT(corvel.SetFlagProcesso(kProcesso), 0);
    EXPECT_EQ(corvel.GetHeaderCorvel().GetPosicao(), 0u);
}

TEST_F(PXCorvelTest, InitialisationWithoutTheServiceFailsAndIsTraced) {
    CQZServicosEmpresa servicos;
    ASSERT_TRUE(CQZRegistroServicos::Busca(kEmpresa, servicos));
    servicos.pFabrica = nullptr;
    CQZRegistroServicos::Registra(kEmpresa, servicos);

    CPXCorvel outro;
    EXPECT_EQ(QZ_E_SEM_SERVICOS, outro.Inicializa(kEmpresa, 7, 42));
    EXPECT_FALSE(outro.EstaInicializado());
    auto regs = rastro.Registros();
    ASSERT_EQ(regs.size(), 1u);
    EXPECT_EQ(regs[0].funcao, "CPXCorvel::OnInicializa");
    EXPECT_THAT(regs[0].chaves["Log"].str(),
                ::testing::StartsWith("hr = m_cnxIE.Inicializa(GetEmpresa(), GetUsuario(), GetNumeroSessao())\t"));
    EXPECT_LT(outro.SetFlagProcesso(kProcesso), 0);
}

TEST_F(PXCorvelTest, FinalisationClearsHeaderAndLinkAndClosesTheConnection) {
    ASSERT_EQ(0, corvel.SetFlagProcesso(kProcesso));
    corvel.SetVinculo(Vinculo({{1, "Azul"}}));
    EXPECT_EQ(0, corvel.Finaliza());
    EXPECT_EQ(corvel.GetHeaderCorvel(), CIEHeader());
    EXPECT_EQ(corvel.GetVinculo(), CIEVinculo());
    EXPECT_FALSE(corvel.GetConexaoCorvel().EstaInicializada());
    EXPECT_EQ(QZ_E_SEM_SERVICOS, corvel.SetFlagProcesso(kProcesso));
}

TEST_F(PXCorvelTest, KeysWiderThan32BitsAreRefusedUnwritten) {
    if constexpr (sizeof(unsigned long) > 4) {
        ASSERT_EQ(0, corvel.SetFlagProcesso(kProcesso));
        corvel.SetVinculo(Vinculo({{1, "Azul"}}));
        ZeraChamadas();
        const unsigned long larga = (1ul << 32) + 11;
        EXPECT_LT(corvel.GravaCorvel(larga), 0);
        EXPECT_LT(corvel.SetDadosCorvel(larga), 0);
        EXPECT_EQ(falhas.TotalChamadas(), 0);
        EXPECT_TRUE(Gravado(header.GetPosicao(), 11).GetValores().empty());
    }
}
