#include "host/PXAgendador.h"

#include <unistd.h>

#include <chrono>
#include <nlohmann/json.hpp>

#include "alerts/PXEmailAlertaPlano.h"
#include "platform/QZCodigosResultado.h"
#include "platform/QZLogRotinas.h"

namespace {

// What a data-service call answers once the service is stopping.
constexpr long kParando = static_cast<long>(static_cast<int32_t>(0x80040A6Fu));

std::string Hex(long codigo) {
    char buf[16];
    std::snprintf(buf, sizeof buf, "0x%08X", static_cast<unsigned>(codigo));
    return buf;
}

}  // namespace

CPXAgendador::CPXAgendador(std::string armazem, std::vector<std::string> empresas,
                           std::function<void(const std::string&)> log)
    : m_armazem(std::move(armazem)), m_empresas(std::move(empresas)), m_log(std::move(log)) {}

CPXAgendador::~CPXAgendador() {
    Para();
    for (const auto& e : m_empresas) CQZRegistroServicos::Remove(CString(e));
}

void CPXAgendador::Registra(const std::string& empresa, const char* evento, const std::string& extraJson) {
    nlohmann::ordered_json j{{"quando", QZFormataQuando(CQZRelogioSistema::Instancia().Agora()).str()},
                             {"empresa", QZParaUtf8(CString(empresa))},
                             {"evento", evento}};
    if (!extraJson.empty()) {
        const nlohmann::ordered_json extra = nlohmann::ordered_json::parse(extraJson);
        for (auto it = extra.cbegin(); it != extra.cend(); ++it) j[it.key()] = it.value();
    }
    std::lock_guard<std::mutex> trava(m_mutexLog);
    m_log(j.dump());
}

long CPXAgendador::AntesDaOperacao(const char*, CQZDadosGT_Erro& erro) {
    if (!m_parar.load()) return 0;
    erro.SetErro(kParando, QZ_MODULO_CONEXAO, 1, "Execução interrompida: o serviço de alertas está parando.");
    return kParando;
}

bool CPXAgendador::Inicia() {
    m_fabrica = std::make_shared<CQZFabricaArmazemSQL>(m_armazem, QZ_ABRE_EXISTENTE);
    CQZDadosGT_Erro erro;
    if (!m_fabrica->AbreArmazem(erro)) {
        for (const auto& e : m_empresas)
            Registra(e, "erro", nlohmann::ordered_json{{"texto", QZParaUtf8(erro.GetMensagem())}}.dump());
        return false;
    }
    m_fabrica->DefineGancho(this);
    for (const auto& e : m_empresas) {
        CQZServicosEmpresa servicos;
        servicos.pFabrica = m_fabrica;
        CQZRegistroServicos::Registra(CString(e), servicos);
    }
    for (const auto& e : m_empresas) m_threads.emplace_back([this, e] { Laco(e); });
    return true;
}

void CPXAgendador::Para() {
    {
        std::lock_guard<std::mutex> trava(m_mutex);
        m_parar = true;
    }
    m_cv.notify_all();
    for (auto& t : m_threads)
        if (t.joinable()) t.join();
    m_threads.clear();
}

void CPXAgendador::Laco(const std::string& empresa) {
    CAutoRun* rotina = PXEmailAlertaPlano();
    if (!rotina) {
        Registra(empresa, "erro",
                 nlohmann::ordered_json{{"texto", QZParaUtf8(CString("sem memória para criar a rotina"))}}.dump());
        return;
    }
    if (long hr = rotina->Inicializa(CString(empresa), 0, static_cast<uint32_t>(getpid())); hr < 0) {
        Registra(empresa, "erro",
                 nlohmann::ordered_json{{"codigo", Hex(hr)}, {"texto", QZParaUtf8(rotina->GetMensagem())}}.dump());
        rotina->OnDeleta();
        return;
    }
    int intervalo = 0;
    rotina->OnGetIntervalo(&intervalo);
    if (m_intervaloMs > 0) intervalo = m_intervaloMs;
    Registra(empresa, "inicio", nlohmann::ordered_json{{"intervalo_ms", intervalo}}.dump());
    while (!m_parar.load()) {
        const auto inicio = std::chrono::steady_clock::now();
        try {
            bool flag = false;
            const long hr = rotina->OnRun(flag);
            const auto ms =
                std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - inicio).count();
            Registra(empresa, "execucao", nlohmann::ordered_json{{"status", Hex(hr)}, {"ms", ms}}.dump());
        } catch (const CQZExceptionEx& e) {
            Registra(empresa, "falha",
                     nlohmann::ordered_json{{"codigo", Hex(e.GetCodigo())},
                                            {"id", e.GetIdMensagem()},
                                            {"texto", QZParaUtf8(e.GetDescricao())}}
                         .dump());
        } catch (const std::exception& e) {
            Registra(empresa, "falha", nlohmann::ordered_json{{"texto", e.what()}}.dump());
        }
        ++m_execucoes;
        std::unique_lock<std::mutex> trava(m_mutex);
        m_cv.wait_for(trava, std::chrono::milliseconds(intervalo), [this] { return m_parar.load(); });
    }
    rotina->Finaliza();
    rotina->OnDeleta();
    Registra(empresa, "fim");
}
