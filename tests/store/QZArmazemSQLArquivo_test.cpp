// The store as a file: versioned layout and upgrades, refusal of files it
// cannot use, concurrent connections, and what a failure or a killed writer
// leaves behind.
#include <gtest/gtest.h>
#include <signal.h>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>

#include "store/QZArmazemSQL.h"
#include "tests/support/PXArquivoTemporario.h"
#include "tests/support/PXEscritorMorto.h"

namespace {

// A plain SQLite connection, to build old files and look at what the store wrote.
class Sql {
public:
    explicit Sql(const std::string& caminho) { sqlite3_open(caminho.c_str(), &m_db); }
    ~Sql() { sqlite3_close(m_db); }
    void Executa(const std::string& sql) {
        char* erro = nullptr;
        ASSERT_EQ(SQLITE_OK, sqlite3_exec(m_db, sql.c_str(), nullptr, nullptr, &erro)) << (erro ? erro : "") << sql;
    }
    std::string Valor(const std::string& sql) {
        sqlite3_stmt* st = nullptr;
        std::string v;
        if (sqlite3_prepare_v2(m_db, sql.c_str(), -1, &st, nullptr) == SQLITE_OK && sqlite3_step(st) == SQLITE_ROW &&
            sqlite3_column_text(st, 0))
            v = reinterpret_cast<const char*>(sqlite3_column_text(st, 0));
        sqlite3_finalize(st);
        return v;
    }

private:
    sqlite3* m_db = nullptr;
};

std::string Texto(const CQZDadosGT_Erro& erro) { return QZParaUtf8(erro.GetMensagem()); }
// The error's text holds `trecho` (both Windows-1252, as the literals here are).
bool Contem(const CQZDadosGT_Erro& erro, const char* trecho) { return erro.GetMensagem().Find(trecho) >= 0; }

}  // namespace

TEST(QZArmazemSQLEsquemaTest, FileOfTheUnversionedLayoutIsUpgradedKeepingItsData) {
    PXArquivoTemporario arquivo("antigo");
    {
        // The layout before versioning, and before priorities had a base value.
        Sql sql(arquivo.Caminho());
        sql.Executa(
            "CREATE TABLE \"CQZDadosPX_Prioridade\" (chave INTEGER PRIMARY KEY, \"Codigo\" TEXT NOT NULL DEFAULT '', "
            "\"Descricao\" TEXT NOT NULL DEFAULT '', \"DmaHmsAtualizacao\" INTEGER NOT NULL DEFAULT 0)");
        // The file holds UTF-8: "Urgência".
        sql.Executa("INSERT INTO \"CQZDadosPX_Prioridade\" VALUES (4, 'URG', 'Urg\xC3\xAAncia', 123456)");
    }
    CQZArmazemSQL armazem(arquivo.Caminho(), QZ_ABRE_EXISTENTE);
    ASSERT_TRUE(armazem.EstaAberto()) << Texto(armazem.GetErro());
    int64_t versao = -2;
    ASSERT_EQ(0, armazem.LeVersaoEsquema(versao));
    EXPECT_EQ(versao, CQZArmazemSQL::kVersaoEsquema);

    CQZDadosPX_Prioridade lida;
    ASSERT_EQ(0, armazem.LePrioridade(4, &lida));
    EXPECT_EQ(lida.GetCodigo(), "URG");
    EXPECT_EQ(lida.GetDescricao(), "Urgência");
    EXPECT_EQ(lida.GetPrioridadeBase(), 0);  // the added column holds the field's empty value
    EXPECT_EQ(lida.GetDmaHmsAtualizacao().ullValor, 123456u);
    lida.SetPrioridadeBase(90);
    ASSERT_EQ(0, armazem.Atualiza(lida));

    // The code search of the upgraded file is served by the index it gained.
    CQZDadosPX_FiltroPrioridade filtro;
    filtro.SetCodigo("URG");
    CQZArray_deprecated<uint32_t> posicoes;
    ASSERT_EQ(0, armazem.BuscaPonteirosPrioridade(filtro, posicoes));
    ASSERT_EQ(posicoes.GetSize(), 1);
    std::vector<std::string> plano;
    ASSERT_EQ(0, armazem.PlanoBusca(filtro, false, plano));
    EXPECT_TRUE(CQZArmazemSQL::VarredurasCompletas(plano).empty()) << ::testing::PrintToString(plano);

    CQZArmazemSQL reaberto(arquivo.Caminho(), QZ_ABRE_EXISTENTE);
    ASSERT_EQ(0, reaberto.LePrioridade(4, &lida));
    EXPECT_EQ(lida.GetPrioridadeBase(), 90);
    Sql sql(arquivo.Caminho());
    EXPECT_EQ(sql.Valor("SELECT count(*) FROM QZ_Esquema"), std::to_string(CQZArmazemSQL::kVersaoEsquema));
}

TEST(QZArmazemSQLEsquemaTest, FilesItCannotUseAreRefusedUntouched) {
    PXArquivoTemporario novo("novo"), lixo("lixo"), alheio("alheio"), ausente("ausente");
    {
        Sql sql(novo.Caminho());
        sql.Executa("CREATE TABLE QZ_Esquema (versao INTEGER PRIMARY KEY, descricao TEXT NOT NULL, aplicada_em TEXT NOT NULL)");
        sql.Executa("INSERT INTO QZ_Esquema VALUES (99, 'futuro', '2030-01-01')");
    }
    {
        std::ofstream f(lixo.Caminho(), std::ios::binary);
        f << std::string(4096, 'x');
    }
    {
        Sql sql(alheio.Caminho());
        sql.Executa("CREATE TABLE clientes (id INTEGER)");
    }
    struct Caso {
        const PXArquivoTemporario& arquivo;
        QZModoAbertura modo;
        const char* trecho;
    } casos[] = {
        {novo, QZ_ABRE_OU_CRIA, "versão mais nova"},
        {lixo, QZ_ABRE_OU_CRIA, "corrompido"},
        {alheio, QZ_ABRE_EXISTENTE, "não é um armazém do PXLREG"},
        {ausente, QZ_ABRE_EXISTENTE, "não existe"},
    };
    for (const auto& c : casos) {
        CQZArmazemSQL armazem(c.arquivo.Caminho(), c.modo);
        EXPECT_FALSE(armazem.EstaAberto()) << c.trecho;
        EXPECT_EQ(armazem.GetErro().GetUltimoHR(), QZ_E_BANCO) << c.trecho;
        EXPECT_TRUE(Contem(armazem.GetErro(), c.trecho)) << Texto(armazem.GetErro());
    }
    Sql sql(novo.Caminho());
    EXPECT_EQ(sql.Valor("SELECT count(*) FROM sqlite_master WHERE name LIKE 'CQZ%'"), "0");
    EXPECT_EQ(sql.Valor("SELECT max(versao) FROM QZ_Esquema"), "99");
    Sql outro(alheio.Caminho());
    EXPECT_EQ(outro.Valor("SELECT count(*) FROM sqlite_master"), "1");
    EXPECT_EQ(access(ausente.Caminho().c_str(), F_OK), -1);
    // A file that cannot be created.
    CQZArmazemSQL semPasta("/nonexistent-dir/x/y.db");
    EXPECT_FALSE(semPasta.EstaAberto());
    EXPECT_EQ(semPasta.GetErro().GetUltimoHR(), QZ_E_BANCO);
}

TEST(QZArmazemSQLEsquemaTest, NewFileIsVersionedAndInWalMode) {
    PXArquivoTemporario arquivo("wal");
    {
        CQZArmazemSQL armazem(arquivo.Caminho());
        ASSERT_TRUE(armazem.EstaAberto());
    }
    Sql sql(arquivo.Caminho());
    EXPECT_EQ(sql.Valor("PRAGMA journal_mode"), "wal");
    EXPECT_EQ(sql.Valor("SELECT max(versao) FROM QZ_Esquema"), std::to_string(CQZArmazemSQL::kVersaoEsquema));
    EXPECT_EQ(sql.Valor("SELECT count(*) FROM sqlite_master WHERE name = 'CQZDadosPX_Prioridade'"), "1");
}

TEST(QZArmazemSQLConcorrenciaTest, AWriterWaitsForAnotherThenGivesUpWithAClearError) {
    PXArquivoTemporario arquivo("ocupado");
    CQZArmazemSQL a(arquivo.Caminho());
    ASSERT_TRUE(a.EstaAberto());
    long hrB = 0;
    CQZDadosGT_Erro erroB;
    ASSERT_EQ(0, a.EmTransacao("Segura", [&]() -> long {
        CQZDadosPX_Prioridade p = PXPrioridadeTeste("A");
        if (long hr = a.Insere(p)) return hr;
        // An up-to-date store opens while another connection writes...
        CQZArmazemSQL b(arquivo.Caminho(), QZ_ABRE_EXISTENTE, 50);
        EXPECT_TRUE(b.EstaAberto()) << Texto(b.GetErro());
        // ...and reads what was committed before that write began.
        std::vector<int64_t> chaves;
        EXPECT_EQ(0, b.ListaChaves<CQZDadosPX_Prioridade>(chaves));
        EXPECT_TRUE(chaves.empty());
        CQZDadosPX_Prioridade q = PXPrioridadeTeste("B");
        hrB = b.Insere(q);
        erroB = b.GetErro();
        return 0;
    }));
    EXPECT_EQ(hrB, QZ_E_BANCO_OCUPADO);
    EXPECT_TRUE(Contem(erroB, "em uso por outra gravação")) << Texto(erroB);

    CQZArmazemSQL b(arquivo.Caminho(), QZ_ABRE_EXISTENTE, 50);
    CQZDadosPX_Prioridade q = PXPrioridadeTeste("B");
    EXPECT_EQ(0, b.Insere(q));
    std::vector<int64_t> chaves;
    ASSERT_EQ(0, a.ListaChaves<CQZDadosPX_Prioridade>(chaves));
    EXPECT_EQ(chaves, (std::vector<int64_t>{1, 2}));
}

TEST(QZArmazemSQLConcorrenciaTest, DeletionNeedsTheStampThatWasRead) {
    CQZArmazemSQL armazem(":memory:");
    CQZRelogioFixo relogio;
    armazem.DefineRelogio(&relogio);
    CQZDadosPX_Prioridade p = PXPrioridadeTeste("A");
    ASSERT_EQ(0, armazem.Insere(p));
    CQZDadosPX_Prioridade antiga = p;
    ASSERT_EQ(0, armazem.Atualiza(p));
    EXPECT_EQ(QZ_E_REGISTRO_ALTERADO, armazem.Remove(antiga));
    CQZDadosPX_Prioridade lida;
    ASSERT_EQ(0, armazem.LeRegistro(1, lida));
    EXPECT_EQ(0, armazem.Remove(p));
    EXPECT_EQ(QZ_E_REGISTRO_NAO_ENCONTRADO, armazem.LeRegistro(1, lida));
    EXPECT_EQ(QZ_E_REGISTRO_NAO_ENCONTRADO, armazem.Remove(p));
}

TEST(QZArmazemSQLConcorrenciaTest, RestoreKeepsKeyAndStampAndRefusesATakenKey) {
    CQZArmazemSQL armazem(":memory:");
    CQZRelogioFixo relogio(REG_QZDMAHMSUTC(2, 2, 2026, 10, 0, 0));
    armazem.DefineRelogio(&relogio);
    CQZDadosPX_Prioridade p = PXPrioridadeTeste("A");
    p.SetPosicao(7);
    p.SetDmaHmsAtualizacao(REG_QZDMAHMSUTC(1, 1, 2020, 8, 0, 0));
    ASSERT_EQ(0, armazem.Restaura(p));
    CQZDadosPX_Prioridade lida;
    ASSERT_EQ(0, armazem.LeRegistro(7, lida));
    EXPECT_TRUE(lida.OnIgual(p));

    CQZDadosPX_Prioridade outra = PXPrioridadeTeste("B");
    outra.SetPosicao(7);
    EXPECT_EQ(QZ_E_REGISTRO_INVALIDO, armazem.Restaura(outra));
    EXPECT_TRUE(Contem(armazem.GetErro(), "Já existe")) << Texto(armazem.GetErro());
    outra.SetPosicao(0);
    ASSERT_EQ(0, armazem.Restaura(outra));
    EXPECT_EQ(outra.GetPosicao(), 8u);
    EXPECT_EQ(outra.GetDmaHmsAtualizacao(), relogio.Agora());  // no stamp given: now
}

TEST(QZArmazemSQLFalhaTest, AFailedTransactionLeavesNothingOfItsWrites) {
    CQZArmazemSQL armazem(":memory:");
    long hr = armazem.EmTransacao("Carga", [&]() -> long {
        for (const char* c : {"A", "B"}) {
            CQZDadosPX_Prioridade p = PXPrioridadeTeste(c);
            if (long r = armazem.Insere(p)) return r;
        }
        CQZDadosPX_Prioridade ruim = PXPrioridadeTeste("C");
        ruim.SetDescricao(CString(std::string("\x90", 1)));  // no Windows-1252 character
        return armazem.Insere(ruim);
    });
    EXPECT_EQ(hr, QZ_E_REGISTRO_INVALIDO);
    std::vector<int64_t> chaves;
    ASSERT_EQ(0, armazem.ListaChaves<CQZDadosPX_Prioridade>(chaves));
    EXPECT_TRUE(chaves.empty());
}

TEST(QZArmazemSQLFalhaTest, AWriterKilledMidTransactionLeavesAConsistentFile) {
    PXArquivoTemporario arquivo("morto");
    ASSERT_NO_FATAL_FAILURE(PXDeixaEscritorMorto(arquivo.Caminho()));

    {
        Sql sql(arquivo.Caminho());
        EXPECT_EQ(sql.Valor("PRAGMA integrity_check"), "ok");
    }
    CQZArmazemSQL armazem(arquivo.Caminho(), QZ_ABRE_EXISTENTE, 1000);
    ASSERT_TRUE(armazem.EstaAberto()) << Texto(armazem.GetErro());
    std::vector<int64_t> chaves;
    ASSERT_EQ(0, armazem.ListaChaves<CQZDadosPX_Prioridade>(chaves));
    EXPECT_EQ(chaves, (std::vector<int64_t>{1, 2, 3}));
    CQZDadosPX_Prioridade p = PXPrioridadeTeste("D");
    EXPECT_EQ(0, armazem.Insere(p));  // the dead writer's lock went with it
    EXPECT_EQ(p.GetPosicao(), 4u);
}
