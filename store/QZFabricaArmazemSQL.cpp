#include "store/QZFabricaArmazemSQL.h"

#include <unistd.h>

namespace {

std::atomic<uint64_t> g_memorias{0};

std::string CaminhoDasConexoes(const std::string& caminho) {
    if (caminho != ":memory:") return caminho;
    return "file:pxlreg-memoria-" + std::to_string(getpid()) + "-" + std::to_string(++g_memorias) +
           "?mode=memory&cache=shared";
}

}  // namespace

CQZFabricaArmazemSQL::CQZFabricaArmazemSQL(std::string caminho, QZModoAbertura modo, int esperaMs)
    : m_caminho(std::move(caminho)), m_caminhoConexoes(CaminhoDasConexoes(m_caminho)), m_modo(modo),
      m_esperaMs(esperaMs) {
    if (m_caminho == ":memory:") m_ancora = std::make_unique<CQZArmazemSQL>(m_caminhoConexoes, QZ_ABRE_OU_CRIA, esperaMs);
}

CQZFabricaArmazemSQL::~CQZFabricaArmazemSQL() {
    std::lock_guard<std::mutex> trava(m_mutex);
    m_ociosas.clear();
}

void CQZFabricaArmazemSQL::Configura(CQZArmazemSQL& armazem) const {
    armazem.DefineRelogio(m_pRelogio);
    armazem.DefineGancho(m_pGancho);
    armazem.DefineTempoEspera(m_esperaMs);
    armazem.DefineTransporteEmail(m_pTransporteEmail);
}

std::unique_ptr<CQZArmazemSQL> CQZFabricaArmazemSQL::AbreArmazem(CQZDadosGT_Erro& erro) {
    std::unique_ptr<CQZArmazemSQL> armazem;
    {
        std::lock_guard<std::mutex> trava(m_mutex);
        if (!m_ociosas.empty()) {
            armazem = std::move(m_ociosas.back());
            m_ociosas.pop_back();
        }
    }
    if (!armazem) {
        if (m_ancora && !m_ancora->EstaAberto()) {
            erro.SetErro(m_ancora->GetErro());
            return nullptr;
        }
        // The in-memory store exists already: later connections join it.
        armazem = std::make_unique<CQZArmazemSQL>(m_caminhoConexoes, m_ancora ? QZ_ABRE_OU_CRIA : m_modo, m_esperaMs);
        if (!armazem->EstaAberto()) {
            erro.SetErro(armazem->GetErro());
            return nullptr;
        }
    }
    Configura(*armazem);
    ++m_abertas;
    return armazem;
}

long CQZFabricaArmazemSQL::Abre(std::unique_ptr<IQZConexaoEmpresa>& conexao, CQZDadosGT_Erro& erro) {
    conexao = AbreArmazem(erro);
    return conexao ? 0 : erro.GetUltimoHR();
}

void CQZFabricaArmazemSQL::Devolve(std::unique_ptr<IQZConexaoEmpresa> conexao) {
    if (!conexao) return;
    --m_abertas;
    auto* armazem = dynamic_cast<CQZArmazemSQL*>(conexao.get());
    // A connection left inside a transaction is not handed to anyone else.
    if (!armazem || !armazem->EstaAberto() || armazem->EmTransacaoAberta()) return;
    conexao.release();
    std::unique_ptr<CQZArmazemSQL> devolvida(armazem);
    std::lock_guard<std::mutex> trava(m_mutex);
    if (m_ociosas.size() < kMaximoOciosas) m_ociosas.push_back(std::move(devolvida));
}
