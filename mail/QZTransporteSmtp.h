// SMTP through libcurl. "smtp://host" talks plain SMTP, upgraded with
// STARTTLS when the server offers it (or refused when TLS is required and
// the server does not offer it); "smtps://host" is TLS from the first byte.
#pragma once

#include <string>

#include "mail/QZTransporteEmail.h"

struct CQZConfiguracaoSmtp {
    std::string url;            // "smtp://host" or "smtps://host"
    unsigned porta = 0;         // 0: the scheme's
    bool exigeTls = false;      // STARTTLS required: never falls back to clear text
    std::string usuario;        // empty: no login
    std::string senha;
    long tempoLimiteSegundos = 60;  // the whole exchange
    long tempoConexaoSegundos = 15;
};

class CQZTransporteSmtp : public IQZTransporteEmail {
public:
    explicit CQZTransporteSmtp(CQZConfiguracaoSmtp configuracao) : m_cfg(std::move(configuracao)) {}
    [[nodiscard]] long Envia(const CQZMensagemEmail& mensagem, CQZResultadoEnvio& resultado) override;

private:
    CQZConfiguracaoSmtp m_cfg;
};
