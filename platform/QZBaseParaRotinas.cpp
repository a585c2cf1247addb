#include "platform/QZBaseParaRotinas.h"

#include <map>
#include <mutex>
#include <string>

#include "platform/QZCodigosResultado.h"

namespace {

std::mutex g_mutex;
std::map<std::string, CQZServicosEmpresa>& Registro() {
    static std::map<std::string, CQZServicosEmpresa> registro;
    return registro;
}

}  // namespace

long CQZInicializador::Inicializa(const CString& empresa, uint16_t usuario, uint32_t sessao) {
    if (m_bInicializado) Finaliza();
    DefinePerfil(empresa, usuario, sessao);
    long hr = OnInicializa();
    m_bInicializado = hr >= 0;
    return hr;
}

long CQZInicializador::Finaliza() {
    if (!m_bInicializado) return 0;
    m_bInicializado = false;
    return OnFinaliza();
}

void CQZRegistroServicos::Registra(const CString& empresa, const CQZServicosEmpresa& servicos) {
    std::lock_guard<std::mutex> trava(g_mutex);
    Registro()[empresa.str()] = servicos;
}

void CQZRegistroServicos::Remove(const CString& empresa) {
    std::lock_guard<std::mutex> trava(g_mutex);
    Registro().erase(empresa.str());
}

bool CQZRegistroServicos::Busca(const CString& empresa, CQZServicosEmpresa& servicos) {
    std::lock_guard<std::mutex> trava(g_mutex);
    auto it = Registro().find(empresa.str());
    if (it == Registro().end()) return false;
    servicos = it->second;
    return true;
}

long CQZBaseParaRotinas::OnInicializa() {
    CQZServicosEmpresa servicos;
    if (!CQZRegistroServicos::Busca(GetEmpresa(), servicos) || !servicos.pManutencao || !servicos.pGestavo) {
        SetErro(QZ_E_SEM_SERVICOS, QZ_MODULO_CONEXAO, 5, "Nenhum serviço de dados registrado para a empresa \"%s\".",
                GetEmpresa().GetString());
        return QZ_E_SEM_SERVICOS;
    }
    m_servicos = servicos;
    if (m_servicos.conectar) {
        long hr = m_servicos.conectar(GetEmpresa(), GetUsuario(), GetNumeroSessao());
        if (hr < 0) m_servicos = CQZServicosEmpresa();
        return hr;
    }
    return 0;
}

long CQZBaseParaRotinas::OnFinaliza() {
    m_servicos = CQZServicosEmpresa();
    return 0;
}
