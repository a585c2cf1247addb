#include "platform/QZInfoExtras.h"

#include <algorithm>

#include "platform/QZBaseParaRotinas.h"
#include "platform/QZCodigosResultado.h"

CIEVinculo& CIEVinculo::SetValor(uint32_t codigoCampo, const CString& valor) {
    auto it = std::find_if(m_valores.begin(), m_valores.end(),
                           [&](const CIEValorCampo& v) { return v.ulCodigoCampo == codigoCampo; });
    if (it != m_valores.end())
        it->sValor = valor;
    else
        m_valores.push_back({codigoCampo, valor});
    return *this;
}

bool CIEVinculo::GetValor(uint32_t codigoCampo, CString& valor) const {
    for (const CIEValorCampo& v : m_valores)
        if (v.ulCodigoCampo == codigoCampo) {
            valor = v.sValor;
            return true;
        }
    return false;
}

long CConexaoInfoExtras::Inicializa(const CString& empresa, uint16_t /*usuario*/, uint32_t /*sessao*/) {
    Finaliza();
    m_erro.LimpaErro();
    long hr = QZAbreConexaoEmpresa(empresa, m_servicos, m_conexao, m_erro);
    if (hr < 0) return hr;
    m_pArmazem = m_conexao ? m_conexao->InfoExtras() : nullptr;
    if (!m_pArmazem) {
        Finaliza();
        m_erro.SetErro(QZ_E_SEM_SERVICOS, QZ_MODULO_CONEXAO, 5,
                       "Nenhum serviço de informações extras registrado para a empresa \"%s\".", empresa.GetString());
        return QZ_E_SEM_SERVICOS;
    }
    return hr;
}

void CConexaoInfoExtras::Finaliza() {
    m_pArmazem = nullptr;
    if (m_conexao && m_servicos.pFabrica) m_servicos.pFabrica->Devolve(std::move(m_conexao));
    m_conexao.reset();
}

bool CConexaoInfoExtras::SemArmazem() {
    m_erro.LimpaErro();
    if (m_pArmazem) return false;
    m_erro.SetErro(QZ_E_SEM_SERVICOS, QZ_MODULO_CONEXAO, 5, "A conexão de informações extras não está inicializada.");
    return true;
}

long CConexaoInfoExtras::BuscaPtrsIEHeader(const IE_HEADER_FILTRO_PS& filtro, CIEArrayPonteiros& aPtrs) {
    if (SemArmazem()) return m_erro.GetUltimoHR();
    return m_pArmazem->BuscaPtrsIEHeader(filtro, aPtrs, m_erro);
}

long CConexaoInfoExtras::LeIEHeader(unsigned long ulPosicao, CIEHeader& header) {
    if (SemArmazem()) return m_erro.GetUltimoHR();
    if (ulPosicao > UINT32_MAX) {
        m_erro.SetErro(QZ_E_REGISTRO_INVALIDO, QZ_MODULO_CONEXAO, 6, "Posição de cabeçalho inválida: %lu.", ulPosicao);
        return QZ_E_REGISTRO_INVALIDO;
    }
    return m_pArmazem->LeIEHeader(static_cast<uint32_t>(ulPosicao), header, m_erro);
}

long CConexaoInfoExtras::GravaIEHeader(CIEHeader& header) {
    if (SemArmazem()) return m_erro.GetUltimoHR();
    return m_pArmazem->GravaIEHeader(header, m_erro);
}

long CConexaoInfoExtras::BuscaVinculoByOrigem(IE_ORIGEM_VINCULO_PS origem, CIEVinculo& vinculo) {
    if (SemArmazem()) return m_erro.GetUltimoHR();
    return m_pArmazem->BuscaVinculoByOrigem(origem, vinculo, m_erro);
}

long CConexaoInfoExtras::GravaCamposVinculo(CIEVinculo& vinculo) {
    if (SemArmazem()) return m_erro.GetUltimoHR();
    return m_pArmazem->GravaCamposVinculo(vinculo, m_erro);
}
