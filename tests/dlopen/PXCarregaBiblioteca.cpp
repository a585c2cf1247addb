// The routine as a scheduler sees it: the shared library loaded with
// dlopen, both entry points found by name, a routine created, initialised,
// asked its interval, run and released. The store is registered through
// the registry of the same loaded library (this program links it, and
// dlopen hands back that very instance).
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "alerts/PXEmailAlertaPlano.h"
#include "platform/QZCaixaMensagem.h"
#include "store/QZFabricaArmazemSQL.h"

namespace {

class CaixaCapturada : public IQZCaixaMensagem {
public:
    int Mostra(const CString& texto, const CString&, QZBotoesCaixa botoes) override {
        textos.push_back(texto);
        this->botoes = botoes;
        return 1;
    }
    std::vector<CString> textos;
    QZBotoesCaixa botoes = QZ_MB_OK;
};

std::vector<std::string> Linhas(const std::string& caminho) {
    std::ifstream f(caminho);
    std::vector<std::string> linhas;
    for (std::string l; std::getline(f, l);) linhas.push_back(l);
    return linhas;
}

}  // namespace

TEST(PXCarregaBibliotecaTest, ASchedulerLoadsCreatesRunsAndReleasesTheRoutine) {
    const std::string log = ::testing::TempDir() + "pxlreg_dlopen_" + std::to_string(getpid()) + ".log";
    std::remove(log.c_str());
    ASSERT_EQ(0, setenv("PXLREG_LOG", log.c_str(), 1));

    void* biblioteca = dlopen(PXLREG_BIBLIOTECA, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(nullptr, biblioteca) << dlerror();
    using Cria = CAutoRun* (*)();
    using Configura = long (*)();
    auto cria = reinterpret_cast<Cria>(dlsym(biblioteca, "PXEmailAlertaPlano"));
    auto configura = reinterpret_cast<Configura>(dlsym(biblioteca, "PXEmailAlertaPlano_Config"));
    ASSERT_NE(nullptr, cria) << dlerror();
    ASSERT_NE(nullptr, configura) << dlerror();
    EXPECT_EQ(reinterpret_cast<void*>(cria), reinterpret_cast<void*>(&PXEmailAlertaPlano))
        << "dlopen loaded a second copy of the library";

    auto fabrica = std::make_shared<CQZFabricaArmazemSQL>(":memory:");
    CQZServicosEmpresa servicos;
    servicos.pFabrica = fabrica;
    CQZRegistroServicos::Registra("AGENDADOR", servicos);

    CAutoRun* rotina = cria();
    ASSERT_NE(nullptr, rotina);
    ASSERT_EQ(0, rotina->Inicializa("AGENDADOR", 1, 77));
    int intervalo = 0;
    EXPECT_EQ(0, rotina->OnGetIntervalo(&intervalo));
    EXPECT_EQ(300000, intervalo);
    bool flag = false;
    try {
        rotina->OnRun(flag);
        ADD_FAILURE() << "a run without an e-mail account must throw";
    } catch (const CQZExceptionEx& e) {
        EXPECT_EQ(static_cast<long>(static_cast<int32_t>(0x80040A68u)), e.GetCodigo());
        EXPECT_EQ(1110, e.GetIdMensagem());
        EXPECT_EQ(CString("PXEmailAlertaPlano"), e.GetOrigem());
        EXPECT_EQ(112, e.GetModulo());
    }
    EXPECT_EQ(0, rotina->Finaliza());
    rotina->OnDeleta();
    EXPECT_EQ(0, fabrica->Abertas()) << "the routine's connection was not given back";

    CaixaCapturada caixa;
    QZDefineCaixaMensagem(&caixa);
    EXPECT_EQ(0, configura());
    QZDefineCaixaMensagem(nullptr);
    ASSERT_EQ(1u, caixa.textos.size());
    EXPECT_EQ(CString("A configuração deve ser feita no Cadastro de Planos do Navor Manutenção."), caixa.textos[0]);

    CQZRegistroServicos::Remove("AGENDADOR");
    EXPECT_EQ(0, dlclose(biblioteca)) << dlerror();
    unsetenv("PXLREG_LOG");

    const auto linhas = Linhas(log);
    ASSERT_EQ(1u, linhas.size());
    EXPECT_NE(std::string::npos, linhas[0].find("\"mensagem\":\"Nenhuma conta de e-mail configurada."));
    EXPECT_NE(std::string::npos, linhas[0].find("\"empresa\":\"AGENDADOR\""));
    std::remove(log.c_str());
}
