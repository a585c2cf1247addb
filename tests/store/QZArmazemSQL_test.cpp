#include "store/QZArmazemSQL.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <set>

#include "store/QZInjetorFalhas.h"
#include "tests/support/PXPostgresTeste.h"

// Record types that exist only here: they exercise the mapping (lists in
// lists, movement keys, one-record tables) independently of the module's records.
namespace {

#define CAMPOS_TESTE_NETO(CAMPO, LISTA) CAMPO(CString, Nota, 0)
class CQZTeste_Neto : public TQZBaseParaDados {
    QZ_REGISTRO(CQZTeste_Neto, CAMPOS_TESTE_NETO)
};

#define CAMPOS_TESTE_FILHO(CAMPO, LISTA)             \
    CAMPO(uint32_t, Referencia, QZ_IDX)              \
    CAMPO(_REG_POSICAO_PRODUTOPS, Produto, 0)        \
    CAMPO(CQZMoeda, Quantidade, 0)                   \
    LISTA(CQZTeste_Neto, Neto)
class CQZTeste_Filho : public TQZBaseParaDados {
    QZ_REGISTRO(CQZTeste_Filho, CAMPOS_TESTE_FILHO)
};

#define CAMPOS_TESTE_PAI(CAMPO, LISTA)              \
    CAMPO(CString, Codigo, QZ_IDX)                  \
    CAMPO(uint32_t, PonteiroPai, QZ_IDX)            \
    CAMPO(REG_QZDMA, Data, 0)                       \
    CAMPO(REG_QZDMAHMSUTC, DmaHmsGravacao, QZ_CARIMBO) \
    LISTA(CQZTeste_Filho, Filho)
class CQZTeste_Pai : public TQZBaseParaDados {
    QZ_REGISTRO(CQZTeste_Pai, CAMPOS_TESTE_PAI)
};

#define CRITERIOS_TESTE_PAI(CRITERIO) \
    CRITERIO(CString, Codigo)         \
    CRITERIO(uint8_t, Parcial)        \
    CRITERIO(uint32_t, PonteiroPai)   \
    CRITERIO(uint32_t, Referencia)
class CQZTeste_FiltroPai : public TQZBaseFiltro {
    QZ_FILTRO(CQZTeste_FiltroPai, CQZTeste_Pai, CRITERIOS_TESTE_PAI)
public:
    void MontaCondicoes(CQZCondicoes& c, bool classificacao) const override {
        c.Codigo("Codigo", m_critCodigo, m_critParcial.value_or(0) != 0);
        if (classificacao && m_critPonteiroPai)
            c.Subarvore("PonteiroPai", *m_critPonteiroPai);
        else
            c.Igual("PonteiroPai", m_critPonteiroPai);
        if (m_critReferencia) c.ListaContem("Filho", "Referencia", *m_critReferencia);
    }
};

#define CAMPOS_TESTE_MOV(CAMPO, LISTA) \
    CAMPO(REG_QZDMC, Dmc, QZ_CHAVE)    \
    CAMPO(CString, Texto, 0)
class CQZTeste_Movimento : public TQZBaseParaDados {
    QZ_REGISTRO(CQZTeste_Movimento, CAMPOS_TESTE_MOV)
public:
    static constexpr QZTipoChave kTipoChave = QZ_CHAVE_DMC;
};

#define CAMPOS_TESTE_UNICO(CAMPO, LISTA) \
    CAMPO(uint8_t, Opcao, 0)             \
    CAMPO(REG_QZDMAHMSUTC, DmaHmsGravacao, QZ_CARIMBO)
class CQZTeste_Unico : public TQZBaseParaDados {
    QZ_REGISTRO(CQZTeste_Unico, CAMPOS_TESTE_UNICO)
public:
    static constexpr QZTipoChave kTipoChave = QZ_CHAVE_UNICA;
};

CQZTeste_Pai Pai(const char* codigo, uint32_t pai = 0) {
    CQZTeste_Pai p;
    p.SetCodigo(codigo).SetPonteiroPai(pai).SetData(REG_QZDMA(2, 1, 2026));
    return p;
}

}  // namespace

// Every case runs on the in-memory store, on a file and on the test
// server: one implementation, the same answers.
enum class EArmazemTeste { MEMORIA, ARQUIVO, POSTGRES };

class QZArmazemSQLTest : public ::testing::TestWithParam<EArmazemTeste> {
protected:
    QZArmazemSQLTest() : caminho(Caminho()), armazem((Remove(), caminho)) {}
    ~QZArmazemSQLTest() override { Remove(); }
    void SetUp() override {
        if (GetParam() == EArmazemTeste::POSTGRES && esquema.Url().empty())
            GTEST_SKIP() << "PXLREG_TESTE_PG names no PostgreSQL server (scripts/test.sh postgres starts one)";
        ASSERT_TRUE(armazem.EstaAberto()) << QZParaUtf8(armazem.GetErro().GetMensagem());
        armazem.DefineRelogio(&relogio);
        armazem.DefineGancho(&falhas);
    }
    std::string Caminho() const {
        switch (GetParam()) {
            case EArmazemTeste::ARQUIVO:
                return ::testing::TempDir() + "armazem_param_" + std::to_string(getpid()) + ".db";
            case EArmazemTeste::POSTGRES:
                if (!esquema.Url().empty()) return esquema.Url();
                break;
            case EArmazemTeste::MEMORIA:
                break;
        }
        return ":memory:";
    }
    void Remove() const {
        if (GetParam() != EArmazemTeste::ARQUIVO) return;
        for (const char* s : {"", "-wal", "-shm"}) std::remove((caminho + s).c_str());
    }
    PXEsquemaPostgres esquema;
    std::string caminho;
    CQZArmazemSQL armazem;
    CQZRelogioFixo relogio{REG_QZDMAHMSUTC(5, 5, 2026, 12, 0, 0)};
    CQZInjetorFalhas falhas;
};

INSTANTIATE_TEST_SUITE_P(MemoriaArquivoEServidor, QZArmazemSQLTest,
                         ::testing::Values(EArmazemTeste::MEMORIA, EArmazemTeste::ARQUIVO, EArmazemTeste::POSTGRES),
                         [](const ::testing::TestParamInfo<EArmazemTeste>& i) {
                             switch (i.param) {
                                 case EArmazemTeste::ARQUIVO: return "Arquivo";
                                 case EArmazemTeste::POSTGRES: return "Postgres";
                                 case EArmazemTeste::MEMORIA: break;
                             }
                             return "Memoria";
                         });

TEST_P(QZArmazemSQLTest, NestedListsAndCompositeValuesRoundTrip) {
    CQZTeste_Pai p = Pai("A-ção");
    CQZTeste_Filho f1, f2;
    _REG_POSICAO_PRODUTOPS prod{70000, 2, 3, 4};
    f1.SetReferencia(11).SetProduto(prod).SetQuantidade(CQZMoeda::DeBruto(-15));
    CQZTeste_Neto n;
    n.SetNota("primeira");
    f1.AdicionaNeto(n);
    n.SetNota("segunda");
    f1.AdicionaNeto(n);
    f2.SetReferencia(12);
    p.AdicionaFilho(f1).AdicionaFilho(f2);
    ASSERT_EQ(0, armazem.Insere(p));
    EXPECT_EQ(p.GetPosicao(), 1u);
    EXPECT_EQ(p.GetDmaHmsGravacao(), relogio.Agora());

    CQZTeste_Pai lido;
    ASSERT_EQ(0, armazem.LeRegistro(1, lido));
    EXPECT_TRUE(lido.OnIgual(p));
    ASSERT_EQ(lido.GetQuantidadeFilho(), 2);
    EXPECT_EQ(lido.GetConstRefFilho(0).GetConstRefNeto(1).GetNota(), "segunda");

    // An update replaces the lists whole.
    lido.RemoveTodosFilho();
    lido.AdicionaFilho(f2);
    ASSERT_EQ(0, armazem.Atualiza(lido));
    CQZTeste_Pai relido;
    ASSERT_EQ(0, armazem.LeRegistro(1, relido));
    ASSERT_EQ(relido.GetQuantidadeFilho(), 1);
    EXPECT_EQ(relido.GetConstRefFilho(0).GetReferencia(), 12u);
}

TEST_P(QZArmazemSQLTest, UpdateNeedsTheStampThatWasReadAndNeverRepeatsOne) {
    CQZTeste_Pai p = Pai("A");
    ASSERT_EQ(0, armazem.Insere(p));
    CQZTeste_Pai outro = p;
    ASSERT_EQ(0, armazem.Atualiza(p));  // same clock second: one second later
    EXPECT_EQ(p.GetDmaHmsGravacao(), relogio.Agora().MaisUmSegundo());
    outro.SetCodigo("B");
    EXPECT_EQ(QZ_E_REGISTRO_ALTERADO, armazem.Atualiza(outro));
    CQZTeste_Pai lido;
    ASSERT_EQ(0, armazem.LeRegistro(1, lido));
    EXPECT_EQ(lido.GetCodigo(), "A");
    CQZTeste_Pai fantasma = Pai("X");
    fantasma.SetPosicao(99);
    EXPECT_EQ(QZ_E_REGISTRO_NAO_ENCONTRADO, armazem.Atualiza(fantasma));
}

TEST_P(QZArmazemSQLTest, MovementKeysAreNumberedPerMonth) {
    CQZTeste_Movimento m;
    m.SetDmc(REG_QZDMC(REG_QZMA(3, 2026), 0));
    ASSERT_EQ(0, armazem.Insere(m));
    CQZTeste_Movimento m2 = m;
    m2.SetDmc(REG_QZDMC(REG_QZMA(3, 2026), 0));
    ASSERT_EQ(0, armazem.Insere(m2));
    CQZTeste_Movimento m3;
    m3.SetDmc(REG_QZDMC(REG_QZMA(4, 2026), 0));
    ASSERT_EQ(0, armazem.Insere(m3));
    EXPECT_EQ(m.GetDmc(), REG_QZDMC(REG_QZMA(3, 2026), 1));
    EXPECT_EQ(m2.GetDmc(), REG_QZDMC(REG_QZMA(3, 2026), 2));
    EXPECT_EQ(m3.GetDmc(), REG_QZDMC(REG_QZMA(4, 2026), 1));
    CQZTeste_Movimento semMes;
    EXPECT_EQ(QZ_E_REGISTRO_INVALIDO, armazem.Insere(semMes));
}

TEST_P(QZArmazemSQLTest, OneRecordTableIsInsertedThenUpdated) {
    CQZTeste_Unico u;
    u.SetOpcao(1);
    ASSERT_EQ(0, armazem.Grava(u));
    CQZTeste_Unico v = u;
    v.SetOpcao(2);
    ASSERT_EQ(0, armazem.Grava(v));
    EXPECT_EQ(QZ_E_REGISTRO_ALTERADO, armazem.Grava(u));
    CQZTeste_Unico lido;
    ASSERT_EQ(0, armazem.LeRegistro(1, lido));
    EXPECT_EQ(lido.GetOpcao(), 2);
}

TEST_P(QZArmazemSQLTest, SearchesByCodeParentAndListElement) {
    for (const char* c : {"AB", "ABC", "AC", "B\xFF", "B\xFF\xFF"}) {
        CQZTeste_Pai p = Pai(c);
        ASSERT_EQ(0, armazem.Insere(p));
    }
    CQZTeste_Pai comFilho = Pai("Z", 2);
    CQZTeste_Filho f;
    f.SetReferencia(77);
    comFilho.AdicionaFilho(f);
    ASSERT_EQ(0, armazem.Insere(comFilho));

    struct Caso {
        const char* nome;
        CQZTeste_FiltroPai filtro;
        std::vector<int64_t> esperado;
    };
    std::vector<Caso> casos(6);
    casos[0] = {"exact code", {}, {1}};
    casos[0].filtro.SetCodigo("AB");
    casos[1] = {"prefix", {}, {1, 2}};
    casos[1].filtro.SetCodigo("AB").SetParcial(1);
    casos[2] = {"prefix ending in the last character", {}, {4, 5}};
    casos[2].filtro.SetCodigo("B\xFF").SetParcial(1);
    casos[3] = {"children of 2", {}, {6}};
    casos[3].filtro.SetPonteiroPai(2);
    casos[4] = {"element of a list", {}, {6}};
    casos[4].filtro.SetReferencia(77);
    casos[5] = {"no criterion", {}, {1, 2, 3, 4, 5, 6}};
    for (const auto& c : casos) {
        std::vector<int64_t> chaves;
        ASSERT_EQ(0, armazem.BuscaChaves(c.filtro, chaves)) << c.nome;
        EXPECT_EQ(chaves, c.esperado) << c.nome;
    }
}

TEST_P(QZArmazemSQLTest, SubtreeListsTheRootFirstAndEndsOnCycles) {
    // 1 <- 2 <- 3, 1 <- 4; 5 names itself as parent.
    for (auto [c, pai] : {std::pair{"R", 0u}, {"F1", 1u}, {"N1", 2u}, {"F2", 1u}}) {
        CQZTeste_Pai p = Pai(c, pai);
        ASSERT_EQ(0, armazem.Insere(p));
    }
    CQZTeste_Pai proprio = Pai("S");
    proprio.SetPosicao(5);
    proprio.SetPonteiroPai(5);
    ASSERT_EQ(0, armazem.Insere(proprio));
    std::vector<int64_t> chaves;
    CQZTeste_FiltroPai filtro;
    filtro.SetPonteiroPai(1);
    ASSERT_EQ(0, armazem.BuscaSubarvore(filtro, chaves));
    ASSERT_EQ(chaves.size(), 4u);
    EXPECT_EQ(chaves[0], 1);
    EXPECT_EQ(std::set<int64_t>(chaves.begin(), chaves.end()), (std::set<int64_t>{1, 2, 3, 4}));
    filtro.SetPonteiroPai(5);
    ASSERT_EQ(0, armazem.BuscaSubarvore(filtro, chaves));
    EXPECT_EQ(chaves, std::vector<int64_t>{5});
    filtro.SetPonteiroPai(3);
    ASSERT_EQ(0, armazem.BuscaSubarvore(filtro, chaves));
    EXPECT_EQ(chaves, std::vector<int64_t>{3});
}

// Criteria pick records of the subtree without cutting the walk: the leaf
// under a sub-group that does not match is still found.
TEST_P(QZArmazemSQLTest, SubtreeCriteriaSelectWithoutStoppingTheWalk) {
    // G-R (1) <- G-1 (2) <- L-1 (3); G-R <- L-2 (4)
    for (auto [c, pai] : {std::pair{"G-R", 0u}, {"G-1", 1u}, {"L-1", 2u}, {"L-2", 1u}}) {
        CQZTeste_Pai p = Pai(c, pai);
        ASSERT_EQ(0, armazem.Insere(p));
    }
    CQZTeste_FiltroPai filtro;
    filtro.SetPonteiroPai(1).SetCodigo("L").SetParcial(1);
    std::vector<int64_t> chaves;
    ASSERT_EQ(0, armazem.BuscaSubarvore(filtro, chaves));
    EXPECT_EQ(chaves, (std::vector<int64_t>{4, 3}));  // level by level
}

TEST_P(QZArmazemSQLTest, InjectedFailuresHitTheChosenCall) {
    CQZTeste_Pai p = Pai("A");
    falhas.FalhaEm("Insere", 2, 0x80004005L, "sem espaço");
    ASSERT_EQ(0, armazem.Insere(p));
    CQZTeste_Pai q = Pai("B");
    EXPECT_EQ(0x80004005L, armazem.Insere(q));
    EXPECT_EQ(armazem.GetErro().GetMensagem(), "sem espaço (Insere)");
    EXPECT_EQ(0, armazem.Insere(q));  // once only
    falhas.FalhaSempre("LeRegistro", 2);
    CQZTeste_Pai lido;
    EXPECT_EQ(0, armazem.LeRegistro(1, lido));
    EXPECT_EQ(QZ_E_FALHA_INJETADA, armazem.LeRegistro(1, lido));
    EXPECT_EQ(QZ_E_FALHA_INJETADA, armazem.LeRegistro(1, lido));
    EXPECT_EQ(falhas.Chamadas("Insere"), 3);
}

TEST_P(QZArmazemSQLTest, TextWithoutWindows1252FormIsRefusedWhole) {
    CQZTeste_Pai p = Pai("ok");
    CQZTeste_Filho f;
    p.AdicionaFilho(f);
    p.SetCodigo(CString(std::string("\x81", 1)));
    EXPECT_EQ(QZ_E_REGISTRO_INVALIDO, armazem.Insere(p));
    std::vector<int64_t> chaves;
    ASSERT_EQ(0, armazem.ListaChaves<CQZTeste_Pai>(chaves));
    EXPECT_TRUE(chaves.empty());
}
