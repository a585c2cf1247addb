// An outbox: every message becomes one .eml file in a folder, for
// demonstrations and dry runs. A file appears whole or not at all: it is
// written under a temporary name, flushed to disk and renamed.
#pragma once

#include <string>

#include "mail/QZTransporteEmail.h"

class CQZTransporteCaixaSaida : public IQZTransporteEmail {
public:
    explicit CQZTransporteCaixaSaida(std::string pasta) : m_pasta(std::move(pasta)) {}
    // The file of the message is named in resultado.resposta.
    [[nodiscard]] long Envia(const CQZMensagemEmail& mensagem, CQZResultadoEnvio& resultado) override;

private:
    std::string m_pasta;
};
