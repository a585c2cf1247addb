// The save/delete service: the rules and the write in one transaction of the
// handler's own connection, threads that each use their own objects on one
// store file, and positions over the whole unsigned range.
#include "servico/PXServicoRegistros.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <thread>

#include "integrity/PXControleIntegridade.h"
#include "rules/PXTrataDadosDisciplina.h"
#include "rules/PXTrataDadosPrioridade.h"
#include "rules/PXTrataDadosTecnico.h"
#include "store/QZFabricaArmazemSQL.h"

namespace {

std::string Texto(const CQZDadosGT_Erro& e) { return QZParaUtf8(e.GetMensagem()); }

template <class R>
using Tipo = TPXTipoRegistro<R>;


class PXServicoRegistrosTest : public ::testing::Test {
protected:
    void SetUp() override {
        for (const char* sufixo : {"", "-wal", "-shm"}) std::remove((m_caminho + sufixo).c_str());
        CQZDadosGT_Erro erro;
        m_armazem = std::make_unique<CQZArmazemSQL>(m_caminho, QZ_ABRE_OU_CRIA);
        ASSERT_TRUE(m_armazem->EstaAberto()) << Texto(m_armazem->GetErro());
        auto fabrica = std::make_shared<CQZFabricaArmazemSQL>(m_caminho);
        // Writers queue behind each other's commits: let them wait their turn.
        fabrica->DefineTempoEspera(60000);
        CQZServicosEmpresa servicos;
        servicos.pFabrica = fabrica;
        CQZRegistroServicos::Registra(kEmpresa, servicos);
        prioridades.Com<CPXTrataDadosPrioridade>();
        disciplinas.Com<CPXTrataDadosDisciplina>().ComIntegridade(
            PXRegraIntegridade(CPXControleIntegridade::DISCIPLINA));
        tecnicos.Com<CPXTrataDadosTecnico>().ComIntegridade(
            PXRegraIntegridade(CPXControleIntegridade::TECNICO));
    }
    void TearDown() override {
        CQZRegistroServicos::Remove(kEmpresa);
        m_armazem.reset();
        for (const char* sufixo : {"", "-wal", "-shm"}) std::remove((m_caminho + sufixo).c_str());
    }


    static inline const CString kEmpresa = "SERVICO";
    const CPXSessao sessao{kEmpresa, 1, 1};
    // In memory-backed storage where there is one: these tests are about
    // the rules and the threads, not about the disk's flushes.
    std::string m_caminho =
        (access("/dev/shm", W_OK) == 0 ? std::string("/dev/shm/") : ::testing::TempDir()) + "pxs_" +
        std::to_string(getpid()) + ".db";
    std::unique_ptr<CQZArmazemSQL> m_armazem;
    Tipo<CQZDadosPX_Prioridade> prioridades;
    Tipo<CQZDadosPX_Disciplina> disciplinas;
    Tipo<CQZDadosPX_Tecnico> tecnicos;
};

}  // namespace

TEST_F(PXServicoRegistrosTest, ASaveIsTheRulesAndTheWriteAndARefusalWritesNothing) {
    CPXServicoRegistros servico(sessao);
    CQZDadosPX_Prioridade p;
    p.SetCodigo(" P1 ").SetDescricao("Primeira");
    CPXResultadoRegistro r;
    ASSERT_EQ(0, servico.Salva(prioridades, p, false, r)) << Texto(servico.GetErro());
    EXPECT_TRUE(r.permitido && r.gravado);
    EXPECT_EQ(p.GetCodigo(), "P1");
    ASSERT_NE(p.GetPosicao(), 0u);

    CQZDadosPX_Prioridade repetida;
    repetida.SetCodigo("P1").SetDescricao("Outra");
    ASSERT_EQ(0, servico.Salva(prioridades, repetida, false, r));
    EXPECT_FALSE(r.permitido || r.gravado);
    EXPECT_EQ(r.veredito.GetMensagemNumero(), 10);
    std::vector<int64_t> chaves;
    ASSERT_EQ(0, m_armazem->ListaChaves<CQZDadosPX_Prioridade>(chaves));
    EXPECT_EQ(chaves.size(), 1u);

    // A dry run asks and writes nothing.
    CQZDadosPX_Prioridade nova;
    nova.SetCodigo("P2").SetDescricao("Segunda");
    ASSERT_EQ(0, servico.Salva(prioridades, nova, true, r));
    EXPECT_TRUE(r.permitido);
    EXPECT_FALSE(r.gravado);
    ASSERT_EQ(0, m_armazem->ListaChaves<CQZDadosPX_Prioridade>(chaves));
    EXPECT_EQ(chaves.size(), 1u);

    // A record of a type without rules is not saved.
    Tipo<CQZDadosGT_Filial> filiais;
    CQZDadosGT_Filial f;
    EXPECT_EQ(QZ_E_SEM_REGRAS, servico.Salva(filiais, f, false, r));
}

// A check given to the save reads in the save's own write transaction: no
// other writer gets in between. What it throws reaches the caller as thrown,
// and nothing is written.
TEST_F(PXServicoRegistrosTest, ASavesCheckRunsInItsWriteTransaction) {
    CQZArmazemSQL outro(m_caminho, QZ_ABRE_EXISTENTE, 0);
    ASSERT_TRUE(outro.EstaAberto()) << Texto(outro.GetErro());
    CPXServicoRegistros servico(sessao);
    CPXResultadoRegistro r;
    CQZDadosPX_Prioridade p;
    p.SetCodigo("P1").SetDescricao("Primeira");
    long escritaDeFora = 0;
    ASSERT_EQ(0, servico.Salva(prioridades, p, false, r, [&](CQZArmazemSQL&) {
        CQZDadosPX_Prioridade intrusa;
        intrusa.SetCodigo("P9").SetDescricao("De fora");
        escritaDeFora = outro.Insere(intrusa);
    })) << Texto(servico.GetErro());
    EXPECT_TRUE(r.gravado);
    EXPECT_EQ(escritaDeFora, QZ_E_BANCO_OCUPADO);

    struct Recusada {};
    CQZDadosPX_Prioridade q;
    q.SetCodigo("P2").SetDescricao("Segunda");
    EXPECT_THROW((void)servico.Salva(prioridades, q, false, r, [](CQZArmazemSQL&) { throw Recusada{}; }), Recusada);
    EXPECT_FALSE(r.gravado);
    std::vector<int64_t> chaves;
    ASSERT_EQ(0, m_armazem->ListaChaves<CQZDadosPX_Prioridade>(chaves));
    EXPECT_EQ(chaves.size(), 1u);
}

TEST_F(PXServicoRegistrosTest, PositionsAtOrAbove2To31AreSavedCheckedAndDeleted) {
    CQZDadosPX_Disciplina d;
    d.SetCodigo("ALTA").SetNome("Disciplina alta").SetTipoClassificacao(1).SetPosicao(3000000000u);
    ASSERT_EQ(0, m_armazem->Restaura(d)) << Texto(m_armazem->GetErro());
    CQZDadosPX_Tecnico t;
    t.SetCodigo("TA").SetNome("Técnico alto").SetTipoClassificacao(1).SetPosicao(3000000001u);
    t.AdicionaDisciplina(CQZDadosPX_TecnicoDisciplina().SetPonteiroDisciplina(3000000000u));
    ASSERT_EQ(0, m_armazem->Restaura(t));

    CPXServicoRegistros servico(sessao);
    CPXResultadoRegistro r;
    auto copia = d;
    ASSERT_EQ(0, servico.Salva(disciplinas, copia, true, r)) << Texto(servico.GetErro());
    EXPECT_TRUE(r.permitido) << Texto(r.veredito);
    auto copiaTecnico = t;
    ASSERT_EQ(0, servico.Salva(tecnicos, copiaTecnico, false, r)) << Texto(servico.GetErro());
    EXPECT_TRUE(r.permitido && r.gravado) << Texto(r.veredito);

    // The discipline is found, and so is the technician that depends on it.
    std::unique_ptr<TQZBaseParaDados> lido;
    ASSERT_EQ(0, servico.Exclui(disciplinas, 3000000000ll, lido, r)) << Texto(servico.GetErro());
    EXPECT_FALSE(r.permitido);
    EXPECT_EQ(r.veredito.GetMensagem(), "Técnico TA Técnico alto é dependente da disciplina ALTA Disciplina alta");
    ASSERT_TRUE(lido);
    EXPECT_EQ(lido->GetPosicao(), 3000000000u);
}

// Eight threads, each with its own service and handlers, save on one store
// file at once: every save is answered, allowed and written exactly once.
TEST_F(PXServicoRegistrosTest, EightThreadsSavingAtOnceEachAccountedFor) {
    constexpr int kThreads = 8;
    constexpr int kSalvas = 500;
    std::atomic<int> gravadas{0}, falhas{0};
    std::vector<std::thread> threads;
    for (int n = 0; n < kThreads; ++n)
        threads.emplace_back([&, n] {
            CPXServicoRegistros servico(CPXSessao{kEmpresa, 1, static_cast<uint32_t>(n + 1)});
            for (int i = 0; i < kSalvas; ++i) {
                CQZDadosPX_Prioridade p;
                p.SetCodigo(("T" + std::to_string(n) + "-" + std::to_string(i)).c_str()).SetDescricao("Concorrente");
                CPXResultadoRegistro r;
                const long hr = servico.Salva(prioridades, p, false, r);
                if (hr != 0) ADD_FAILURE() << Texto(servico.GetErro());
                if (hr == 0 && r.gravado)
                    ++gravadas;
                else
                    ++falhas;
            }
        });
    for (auto& t : threads) t.join();
    EXPECT_EQ(falhas.load(), 0);
    EXPECT_EQ(gravadas.load(), kThreads * kSalvas);
    std::vector<int64_t> chaves;
    ASSERT_EQ(0, m_armazem->ListaChaves<CQZDadosPX_Prioridade>(chaves));
    EXPECT_EQ(chaves.size(), static_cast<size_t>(kThreads * kSalvas));
}
