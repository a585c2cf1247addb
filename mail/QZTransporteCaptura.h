// A transport that keeps what it is given (tests): the messages and their
// bytes as they would leave. It can be told to refuse, as a server would.
#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "mail/QZTransporteEmail.h"

class CQZTransporteCaptura : public IQZTransporteEmail {
public:
    struct Enviada {
        CQZMensagemEmail mensagem;
        std::string bytes;  // the whole message, as composed
    };

    [[nodiscard]] long Envia(const CQZMensagemEmail& mensagem, CQZResultadoEnvio& resultado) override;

    // From the Nth sending on (1-based; 0: the next one), refuse with this
    // reply code and text, as a server would.
    void Recusa(long codigoServidor, const std::string& resposta, size_t aPartirDe = 0);
    std::vector<Enviada> Enviadas() const;
    size_t Tentativas() const;

private:
    mutable std::mutex m_mutex;
    std::vector<Enviada> m_enviadas;
    size_t m_tentativas = 0;
    size_t m_recusaDesde = 0;  // 0: never
    long m_codigoRecusa = 0;
    std::string m_respostaRecusa;
};
