#include "platform/QZBaseParaRotinas.h"

#include <map>
#include <mutex>
#include <string>

#include "platform/QZCodigosResultado.h"
#include "platform/QZDiretorioDados.h"

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

long QZAbreConexaoEmpresa(const CString& empresa, CQZServicosEmpresa& servicos,
                          std::unique_ptr<IQZConexaoEmpresa>& conexao, CQZDadosGT_Erro& erro) {
    conexao.reset();
    if (!CQZRegistroServicos::Busca(empresa, servicos) || !servicos.pFabrica) {
        erro.SetErro(QZ_E_SEM_SERVICOS, QZ_MODULO_CONEXAO, 5, "Nenhum serviço de dados registrado para a empresa \"%s\".",
                     empresa.GetString());
        return QZ_E_SEM_SERVICOS;
    }
    long hr = servicos.pFabrica->Abre(conexao, erro);
    if (hr < 0) conexao.reset();
    return hr;
}

CQZBaseParaRotinas::CQZBaseParaRotinas(const CQZBaseParaRotinas& outro)
    : CQZInicializador(outro), CQZUltimoErro(outro), m_bMostrarMensagens(outro.m_bMostrarMensagens) {}

CQZBaseParaRotinas& CQZBaseParaRotinas::operator=(const CQZBaseParaRotinas& outro) {
    if (this == &outro) return *this;
    // The copy keeps its own connection (or none); it never shares the other's.
    CQZInicializador::operator=(outro);
    CQZUltimoErro::operator=(outro);
    m_bMostrarMensagens = outro.m_bMostrarMensagens;
    return *this;
}

CQZBaseParaRotinas::~CQZBaseParaRotinas() { FechaConexao(); }

IQZPX_Disciplina* CQZAcessoServidores::GetIPXDisciplina_deprecated(IQZConexaoEmpresa& conexao) const {
    return conexao.Disciplina();
}

CQZAcessoServidores* CQZBaseParaRotinas::GetAcessoServidores() const {
    if (m_servicos.pServidores) return m_servicos.pServidores;
    static CQZDiretorioDados padrao;
    return &padrao;
}

const IQZRelogio& CQZBaseParaRotinas::GetRelogio() const {
    return m_servicos.pRelogio ? *m_servicos.pRelogio : CQZRelogioSistema::Instancia();
}

CQZDadosGT_Erro& CQZBaseParaRotinas::PassaErroServico(const CQZDadosGT_Erro& erroServico) {
    return SetErro(erroServico);
}

CQZDadosGT_Erro& CQZBaseParaRotinas::PassaErroServico(const CQZDadosGT_Erro& erroServico, long lCodigoCampo) {
    return SetErro(erroServico).SetCodigoCampo(lCodigoCampo);
}

long CQZBaseParaRotinas::OnInicializa() {
    FechaConexao();
    CQZDadosGT_Erro erro;
    long hr = QZAbreConexaoEmpresa(GetEmpresa(), m_servicos, m_conexao, erro);
    // A company that is registered keeps its trace sink and clock for the
    // trace of this failure.
    if (hr < 0) SetErro(erro);
    return hr;
}

long CQZBaseParaRotinas::OnFinaliza() {
    FechaConexao();
    return 0;
}

void CQZBaseParaRotinas::FechaConexao() {
    if (m_conexao && m_servicos.pFabrica) m_servicos.pFabrica->Devolve(std::move(m_conexao));
    m_conexao.reset();
    m_servicos = CQZServicosEmpresa();
}
