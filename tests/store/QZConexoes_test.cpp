// Connections of a store: each with its own cache of buffered reads, which a
// write of the same connection keeps exact and a write of another connection
// invalidates once per transaction; positions over their whole unsigned
// range; the factory's shared in-memory store and its pool.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>

#include "store/QZFabricaArmazemSQL.h"
#include "tests/support/PXArquivoTemporario.h"

namespace {

std::string Texto(const CQZDadosGT_Erro& e) { return QZParaUtf8(e.GetMensagem()); }

CQZDadosPX_Tecnico Tecnico(const char* codigo, const char* nome) {
    CQZDadosPX_Tecnico t;
    t.SetCodigo(codigo).SetNome(nome).SetTipoClassificacao(1);
    return t;
}

}  // namespace

class QZConexoesTest : public ::testing::Test {
protected:
    void SetUp() override {
        CQZDadosGT_Erro erro;
        a = fabrica.AbreArmazem(erro);
        b = fabrica.AbreArmazem(erro);
        ASSERT_TRUE(a && b) << Texto(erro);
    }

    PXArquivoTemporario arquivo{"conexoes"};
    CQZFabricaArmazemSQL fabrica{arquivo.Caminho(), QZ_ABRE_OU_CRIA};
    std::unique_ptr<CQZArmazemSQL> a, b;
};

TEST_F(QZConexoesTest, ABufferedReadAfterAWriteInTheSameTransactionSeesTheWrite) {
    auto t = Tecnico("T1", "Antes");
    ASSERT_EQ(0, a->Insere(t));
    CQZDadosPX_Tecnico lido;
    const long hr = a->EmTransacao("Teste", [&]() -> long {
        if (long r = a->LeBufferTecnico(t.GetPosicao(), &lido)) return r;
        EXPECT_EQ(lido.GetNome(), "Antes");
        lido.SetNome("Depois");
        if (long r = a->Atualiza(lido)) return r;
        return a->LeBufferTecnico(t.GetPosicao(), &lido);
    });
    ASSERT_EQ(0, hr) << Texto(a->GetErro());
    EXPECT_EQ(lido.GetNome(), "Depois");
    // Outside a transaction too.
    lido.SetNome("Fora");
    ASSERT_EQ(0, a->Atualiza(lido));
    ASSERT_EQ(0, a->LeBufferTecnico(t.GetPosicao(), &lido));
    EXPECT_EQ(lido.GetNome(), "Fora");
    // A removed record is not served from the cache either, and a failed
    // read leaves the caller's record as it was.
    ASSERT_EQ(0, a->Remove(lido));
    EXPECT_EQ(QZ_E_REGISTRO_NAO_ENCONTRADO, a->LeBufferTecnico(t.GetPosicao(), &lido));
    EXPECT_EQ(lido.GetNome(), "Fora");
}

TEST_F(QZConexoesTest, ARolledBackWriteLeavesNothingInTheCache) {
    auto t = Tecnico("T1", "Antes");
    ASSERT_EQ(0, a->Insere(t));
    CQZDadosPX_Tecnico lido;
    const long hr = a->EmTransacao("Desfeita", [&]() -> long {
        auto mudado = t;
        mudado.SetNome("Desfeito");
        if (long r = a->Atualiza(mudado)) return r;
        if (long r = a->LeBufferTecnico(t.GetPosicao(), &lido)) return r;
        return 1;  // the caller gives up: rollback
    });
    EXPECT_EQ(1, hr);
    ASSERT_EQ(0, a->LeBufferTecnico(t.GetPosicao(), &lido));
    EXPECT_EQ(lido.GetNome(), "Antes");
}

TEST_F(QZConexoesTest, AnotherConnectionsWriteIsNoticedOncePerTransaction) {
    auto t = Tecnico("T1", "Antes");
    ASSERT_EQ(0, a->Insere(t));
    CQZDadosPX_Tecnico lido;
    ASSERT_EQ(0, a->LeBufferTecnico(t.GetPosicao(), &lido));  // now cached in a

    auto mudado = t;
    mudado.SetNome("Mudado por b");
    ASSERT_EQ(0, b->Atualiza(mudado));
    // Outside a transaction every read is its own: the next one sees it.
    ASSERT_EQ(0, a->LeBufferTecnico(t.GetPosicao(), &lido));
    EXPECT_EQ(lido.GetNome(), "Mudado por b");

    // Inside a read transaction the snapshot holds, cache included.
    const long hr = a->EmLeitura("Leitura", [&]() -> long {
        if (long r = a->LeBufferTecnico(t.GetPosicao(), &lido)) return r;
        mudado.SetNome("De novo");
        EXPECT_EQ(0, b->Atualiza(mudado)) << Texto(b->GetErro());
        if (long r = a->LeBufferTecnico(t.GetPosicao(), &lido)) return r;
        EXPECT_EQ(lido.GetNome(), "Mudado por b");
        CQZDadosPX_Tecnico semCache;
        if (long r = a->LeTecnico(static_cast<int32_t>(t.GetPosicao()), &semCache)) return r;
        EXPECT_EQ(semCache.GetNome(), "Mudado por b") << "the snapshot, not the cache, decides";
        return 0;
    });
    ASSERT_EQ(0, hr) << Texto(a->GetErro());
    ASSERT_EQ(0, a->LeBufferTecnico(t.GetPosicao(), &lido));
    EXPECT_EQ(lido.GetNome(), "De novo");
}

TEST_F(QZConexoesTest, PositionsAboveTwoToThe31RoundTripThroughSignedKeys) {
    for (uint32_t posicao : {0x7FFFFFFFu, 0x80000000u, 3000000000u, 0xFFFFFFFFu}) {
        auto t = Tecnico(("T" + std::to_string(posicao)).c_str(), "Alto");
        t.SetPosicao(posicao);
        ASSERT_EQ(0, a->Restaura(t)) << Texto(a->GetErro());
        CQZDadosPX_Tecnico lido;
        ASSERT_EQ(0, a->LeTecnico(static_cast<int32_t>(posicao), &lido)) << posicao << ": " << Texto(a->GetErro());
        EXPECT_EQ(lido.GetPosicao(), posicao);
        ASSERT_EQ(0, a->LeBufferTecnico(posicao, &lido));
        lido.SetNome("Alterado");
        ASSERT_EQ(0, a->Atualiza(lido)) << posicao;
        CQZDadosPX_Disciplina d;
        d.SetCodigo("D").SetNome("D").SetPosicao(posicao);
        ASSERT_EQ(0, a->Restaura(d));
        ASSERT_EQ(0, a->LeDisciplina(static_cast<int32_t>(posicao), &d));
        ASSERT_EQ(0, a->Remove(d));
    }
}

TEST_F(QZConexoesTest, TheHighestPositionTakenLeavesTheFreeOnesToNewRecords) {
    auto alto = Tecnico("ALTO", "Última posição");
    alto.SetPosicao(0xFFFFFFFFu);
    ASSERT_EQ(0, a->Restaura(alto));
    auto um = Tecnico("UM", "Primeira");
    ASSERT_EQ(0, a->Insere(um)) << Texto(a->GetErro());
    EXPECT_EQ(um.GetPosicao(), 1u);
    auto dois = Tecnico("DOIS", "Segunda");
    ASSERT_EQ(0, a->Insere(dois));
    EXPECT_EQ(dois.GetPosicao(), 2u);
    ASSERT_EQ(0, a->Remove(um));
    auto outro = Tecnico("OUTRO", "Volta à primeira");
    ASSERT_EQ(0, a->Insere(outro));
    EXPECT_EQ(outro.GetPosicao(), 1u);
}

TEST(QZFabricaArmazemSQLTest, InMemoryConnectionsShareOneStoreAndArePooled) {
    CQZFabricaArmazemSQL fabrica(":memory:");
    CQZDadosGT_Erro erro;
    auto a = fabrica.AbreArmazem(erro);
    ASSERT_TRUE(a) << Texto(erro);
    auto t = Tecnico("T1", "Compartilhado");
    ASSERT_EQ(0, a->Insere(t));

    std::unique_ptr<IQZConexaoEmpresa> c;
    ASSERT_EQ(0, fabrica.Abre(c, erro));
    CQZDadosPX_Tecnico lido;
    ASSERT_EQ(0, c->AcessoManutencao().LeBufferTecnico(t.GetPosicao(), &lido));
    EXPECT_EQ(lido.GetNome(), "Compartilhado");
    EXPECT_EQ(fabrica.Abertas(), 2);

    auto* primeira = c.get();
    fabrica.Devolve(std::move(c));
    EXPECT_EQ(fabrica.Abertas(), 1);
    ASSERT_EQ(0, fabrica.Abre(c, erro));
    EXPECT_EQ(c.get(), primeira) << "a connection given back is reused";

    // Another factory's memory is another store.
    CQZFabricaArmazemSQL outra(":memory:");
    auto x = outra.AbreArmazem(erro);
    ASSERT_TRUE(x);
    EXPECT_NE(0, x->LeBufferTecnico(t.GetPosicao(), &lido));
}
