#include "mail/QZTransporteCaptura.h"

#include <ctime>

#include "mail/QZFormatoEmail.h"
#include "platform/QZCodigosResultado.h"

long CQZTransporteCaptura::Envia(const CQZMensagemEmail& mensagem, CQZResultadoEnvio& resultado) {
    resultado = CQZResultadoEnvio();
    std::lock_guard<std::mutex> trava(m_mutex);
    ++m_tentativas;
    std::string bytes, erro;
    if (!QZMontaMensagemEmail(mensagem, std::time(nullptr), bytes, &erro)) {
        resultado.erro = erro;
        return QZ_E_ENVIO_EMAIL;
    }
    if (m_recusaDesde != 0 && m_tentativas >= m_recusaDesde) {
        resultado.codigoServidor = m_codigoRecusa;
        resultado.resposta = m_respostaRecusa;
        resultado.temporaria = m_codigoRecusa >= 400 && m_codigoRecusa < 500;
        resultado.erro = "recusado pelo servidor: " + m_respostaRecusa;
        return QZ_E_ENVIO_EMAIL;
    }
    m_enviadas.push_back({mensagem, std::move(bytes)});
    resultado.codigoServidor = 250;
    resultado.resposta = "250 aceita";
    return 0;
}

void CQZTransporteCaptura::Recusa(long codigoServidor, const std::string& resposta, size_t aPartirDe) {
    std::lock_guard<std::mutex> trava(m_mutex);
    m_codigoRecusa = codigoServidor;
    m_respostaRecusa = resposta;
    m_recusaDesde = aPartirDe == 0 ? m_tentativas + 1 : aPartirDe;
}

std::vector<CQZTransporteCaptura::Enviada> CQZTransporteCaptura::Enviadas() const {
    std::lock_guard<std::mutex> trava(m_mutex);
    return m_enviadas;
}

size_t CQZTransporteCaptura::Tentativas() const {
    std::lock_guard<std::mutex> trava(m_mutex);
    return m_tentativas;
}
