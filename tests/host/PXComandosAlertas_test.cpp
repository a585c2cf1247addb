// The alert service as a new user meets it: the demo plant previewed, run,
// run again and logged; a failed run's exit; the daemon's scheduler.
#include <sys/stat.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <map>
#include <fstream>
#include <mutex>
#include <nlohmann/json.hpp>
#include <sstream>
#include <thread>

#include "host/PXAgendador.h"
#include "store/QZArmazemSQL.h"
#include "tests/support/PXLinhaComandoTeste.h"
#include "tests/support/PXPastaTeste.h"

class PXComandosAlertasTest : public PXComandosTeste {
protected:
    void SetUp() override {
        PXComandosTeste::SetUp();
        ASSERT_EQ(0, setenv("PXLREG_LOG", Extra(".log").c_str(), 1));
        m_base = m_arquivo.substr(0, m_arquivo.size() - 3);
        Limpa();
    }
    void TearDown() override {
        Limpa();
        unsetenv("PXLREG_LOG");
        PXComandosTeste::TearDown();
    }
    void Limpa() {
        for (const char* s : {".db.saida", ".db.modelos", ".corpos"}) PXApagaPasta(m_base + s);
    }
    std::string Armazem() const { return m_arquivo; }
    std::string m_base;
};

TEST_F(PXComandosAlertasTest, TheDemoPlantIsPreviewedRunOnceAndThenHasNothingLeftToSend) {
    ASSERT_EQ(0, Roda({"init", "--demo", Armazem()}).codigo);
    const std::string corpos = m_base + ".corpos";
    auto r = Roda({"--json", "alerts", "preview", Armazem(), "--out", corpos});
    ASSERT_EQ(0, r.codigo) << r.erros << r.saida;
    // Which alerts are due is the demo suite's (PXDemo_test); here, what a
    // run of them sends and logs.
    const auto previa = r.json();
    size_t mensagens = 0;
    for (const auto& a : previa["alerts"]) {
        for (const auto& d : a["due"]) EXPECT_FALSE(d["reason"].get<std::string>().empty());
        mensagens += a["messages"].size();
    }
    // The mechanics' group and Ana named again: João once, Ana once (her
    // empty address skipped), per alert that names them.
    EXPECT_EQ(9u, mensagens);
    EXPECT_EQ(9u, PXArquivosDaPasta(corpos).size());
    EXPECT_TRUE(PXArquivosDaPasta(Armazem() + ".saida").empty());

    r = Roda({"--json", "alerts", "run", Armazem()});
    ASSERT_EQ(0, r.codigo) << r.erros << r.saida;
    EXPECT_TRUE(r.json()["ok"].get<bool>());
    EXPECT_EQ(9u, r.json()["messages"].size());
    const auto eml = PXArquivosDaPasta(Armazem() + ".saida");
    ASSERT_EQ(9u, eml.size());
    for (const auto& n : eml) EXPECT_EQ(".eml", n.substr(n.size() - 4)) << n;
    std::ifstream primeiro(Armazem() + ".saida/" + eml[0], std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(primeiro)), {});
    EXPECT_NE(std::string::npos, bytes.find("Subject: =?"));
    EXPECT_NE(std::string::npos, bytes.find("charset=windows-1252"));

    // Nothing repeats yet: a second run at once sends nothing.
    r = Roda({"--json", "alerts", "run", Armazem()});
    ASSERT_EQ(0, r.codigo) << r.erros;
    EXPECT_TRUE(r.json()["messages"].empty());
    EXPECT_EQ(9u, PXArquivosDaPasta(Armazem() + ".saida").size());
    r = Roda({"--json", "alerts", "preview", Armazem()});
    ASSERT_EQ(0, r.codigo);
    EXPECT_TRUE(r.json()["alerts"].empty());

    // The log holds the nine, and none from before today.
    r = Roda({"alerts", "log", Armazem(), "--since", "2000-01-01"});
    ASSERT_EQ(0, r.codigo) << r.erros;
    EXPECT_EQ(9, std::count(r.saida.begin(), r.saida.end(), '\n'));
    r = Roda({"--json", "alerts", "log", Armazem(), "--since", "2800-01-01 00:00"});
    ASSERT_EQ(0, r.codigo) << r.erros;
    EXPECT_TRUE(r.saida.empty());
}

TEST_F(PXComandosAlertasTest, AFailedRunExitsOneWithTheRoutinesCodeAndText) {
    ASSERT_EQ(0, Roda({"init", Armazem()}).codigo);
    auto r = Roda({"--json", "alerts", "run", Armazem()});
    ASSERT_EQ(1, r.codigo) << r.erros;
    const auto j = r.json();
    EXPECT_FALSE(j["ok"].get<bool>());
    EXPECT_EQ("0x80040A68", j["error"]["code"]);
    EXPECT_EQ(1110, j["error"]["id"]);
    EXPECT_NE(std::string::npos, j["error"]["text"].get<std::string>().find("Nenhuma conta de e-mail configurada"));

    struct Caso {
        std::vector<std::string> args;
        int codigo;
    };
    const Caso casos[] = {
        {{"alerts", "preview", Armazem(), "--at", "2026-02-30 10:00"}, 2},
        {{"alerts", "preview", Armazem(), "--at", "amanhã"}, 2},
        {{"alerts", "log", Armazem(), "--since", "10/03/2026"}, 2},
        {{"alerts", "run", m_base + ".nao-existe.db"}, 2},
        {{"alerts", "preview", Armazem(), "--at", "2026-03-10 10:00"}, 0},
        {{"alerts", "log", Armazem(), "--since", "2026-03-10"}, 0},
    };
    for (const auto& c : casos) EXPECT_EQ(c.codigo, Roda(c.args).codigo) << ::testing::PrintToString(c.args);
}

TEST_F(PXComandosAlertasTest, TheLogSinceADateComparesLocalTimesWhateverTheirZone) {
    ASSERT_EQ(0, Roda({"init", Armazem()}).codigo);
    {
        CQZArmazemSQL armazem(Armazem(), QZ_ABRE_EXISTENTE);
        ASSERT_TRUE(armazem.EstaAberto());
        struct Linha {
            const char* para;
            REG_QZDMAHMSUTC quando;
            uint8_t situacao;
        };
        // Zones in quarters of an hour: Brasília, UTC, one hour east.
        const Linha linhas[] = {
            {"a@x.com", REG_QZDMAHMSUTC(REG_QZDMA(9, 3, 2026), 23, 0, 0, -12), E_GT_SITUACAO_ENVIO_EMAIL_ENVIADO},
            {"b@x.com", REG_QZDMAHMSUTC(REG_QZDMA(10, 3, 2026), 8, 0, 0, -12), E_GT_SITUACAO_ENVIO_EMAIL_FALHOU},
            {"c@x.com", REG_QZDMAHMSUTC(REG_QZDMA(10, 3, 2026), 9, 0, 0, 0), E_GT_SITUACAO_ENVIO_EMAIL_PENDENTE},
            {"d@x.com", REG_QZDMAHMSUTC(REG_QZDMA(10, 3, 2026), 10, 0, 0, 4), E_GT_SITUACAO_ENVIO_EMAIL_ENVIADO},
            {"e@x.com", REG_QZDMAHMSUTC(REG_QZDMA(11, 3, 2026), 0, 0, 0, -12), E_GT_SITUACAO_ENVIO_EMAIL_ENVIADO},
        };
        for (const auto& l : linhas) {
            CQZDadosGT_EnvioEmail e;
            e.SetEndereco(l.para).SetDmaHmsEnvio(l.quando).SetSituacao(l.situacao);
            ASSERT_EQ(0, armazem.Insere(e)) << QZParaUtf8(armazem.GetErro().GetMensagem());
        }
    }
    struct Caso {
        const char* desde;
        std::vector<std::string> para;
    };
    const Caso casos[] = {
        {"2000-01-01", {"a@x.com", "b@x.com", "c@x.com", "d@x.com", "e@x.com"}},
        {"2026-03-10", {"b@x.com", "c@x.com", "d@x.com", "e@x.com"}},
        {"2026-03-10 08:30", {"c@x.com", "d@x.com", "e@x.com"}},
        {"2026-03-10 10:00:00", {"d@x.com", "e@x.com"}},
        {"2026-03-11", {"e@x.com"}},
        {"2026-03-12", {}},
    };
    for (const auto& c : casos) {
        SCOPED_TRACE(c.desde);
        const auto r = Roda({"--json", "alerts", "log", Armazem(), "--since", c.desde});
        ASSERT_EQ(0, r.codigo) << r.erros;
        std::vector<std::string> para;
        std::istringstream linhas(r.saida);
        for (std::string l; std::getline(linhas, l);) {
            const auto j = nlohmann::json::parse(l);
            para.push_back(j["to"]);
            EXPECT_EQ(para.back() == "c@x.com" ? "pending" : j["status"].get<std::string>(), j["status"]);
        }
        EXPECT_EQ(c.para, para);
    }
}

class PXAgendadorTest : public PXComandosAlertasTest {
protected:
    std::vector<nlohmann::json> Linhas() {
        std::lock_guard<std::mutex> trava(m_mutex);
        std::vector<nlohmann::json> j;
        for (const auto& l : m_linhas) j.push_back(nlohmann::json::parse(l));
        return j;
    }
    std::function<void(const std::string&)> Coleta() {
        return [this](const std::string& l) {
            std::lock_guard<std::mutex> trava(m_mutex);
            m_linhas.push_back(l);
        };
    }
    std::mutex m_mutex;
    std::vector<std::string> m_linhas;
};

TEST_F(PXAgendadorTest, EachCompanyRunsOnItsOwnAThrowIsLoggedAndTheNextRunProceedsUntilStopped) {
    ASSERT_EQ(0, Roda({"init", "--demo", Armazem()}).codigo);
    // The demo plant's account serves every company of the store; a run
    // that throws is what a broken template folder gives.
    PXApagaPasta(Armazem() + ".modelos");
    ASSERT_EQ(0, mkdir((Armazem() + ".modelos").c_str(), 0755));
    ASSERT_EQ(0, mkdir((Armazem() + ".modelos/alerta-plano.html").c_str(), 0755));
    CPXAgendador agendador(Armazem(), {"A", "B"}, Coleta());
    agendador.DefineIntervalo(50);
    ASSERT_TRUE(agendador.Inicia());
    const auto limite = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (agendador.Execucoes() < 6 && std::chrono::steady_clock::now() < limite)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    const auto antes = std::chrono::steady_clock::now();
    agendador.Para();
    EXPECT_LT(std::chrono::steady_clock::now() - antes, std::chrono::seconds(2));
    ASSERT_GE(agendador.Execucoes(), 6);
    std::map<std::string, std::vector<std::string>> eventos;
    for (const auto& l : Linhas()) {
        eventos[l["empresa"]].push_back(l["evento"]);
        if (l["evento"] == "falha") {
            EXPECT_EQ("0x80040A65", l["codigo"]);
            EXPECT_EQ(1113, l["id"]);
            EXPECT_EQ("Falha ao ler o modelo de e-mail", l["texto"]);
        }
    }
    for (const char* empresa : {"A", "B"}) {
        SCOPED_TRACE(empresa);
        const auto& e = eventos[empresa];
        ASSERT_GE(e.size(), 3u);
        EXPECT_EQ("inicio", e.front());
        EXPECT_EQ("fim", e.back());
        EXPECT_GE(std::count(e.begin(), e.end(), "falha"), 2);
    }
}

TEST_F(PXAgendadorTest, AStopDuringTheWaitEndsAtOnce) {
    ASSERT_EQ(0, Roda({"init", "--demo", Armazem()}).codigo);
    CPXAgendador agendador(Armazem(), {"EMPRESA"}, Coleta());
    ASSERT_TRUE(agendador.Inicia());
    const auto limite = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (agendador.Execucoes() < 1 && std::chrono::steady_clock::now() < limite)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    ASSERT_EQ(1, agendador.Execucoes());
    // Now inside the routine's five minutes.
    const auto antes = std::chrono::steady_clock::now();
    agendador.Para();
    EXPECT_LT(std::chrono::steady_clock::now() - antes, std::chrono::seconds(2));
    const auto linhas = Linhas();
    ASSERT_EQ(3u, linhas.size());
    EXPECT_EQ(300000, linhas[0]["intervalo_ms"]);
    EXPECT_EQ("0x00000000", linhas[1]["status"]);
    EXPECT_EQ(9u, PXArquivosDaPasta(Armazem() + ".saida").size());
}
