// The ways a finished e-mail leaves the enterprise service: SMTP, an outbox
// folder, or a capturing double. The message is composed once
// (mail/QZFormatoEmail.h) and handed to a transport as it is.
#pragma once

#include <string>

#include "platform/CString.h"

// One message to one recipient. Addresses are plain ASCII; the sender's name
// and the subject are Windows-1252 text, the body Windows-1252 HTML bytes.
struct CQZMensagemEmail {
    std::string remetente;
    CString nomeRemetente;
    std::string destinatario;
    CString assunto;
    std::string corpoHtml;
};

// What became of a sending.
struct CQZResultadoEnvio {
    long codigoServidor = 0;  // the server's last reply code (0: no server reached)
    std::string resposta;     // the server's last reply, as received (ASCII)
    std::string erro;         // why it was not sent (Windows-1252)
    bool temporaria = false;  // the server asked to try again later (4xx)
};

class IQZTransporteEmail {
public:
    virtual ~IQZTransporteEmail() = default;
    // 0 when the message was handed over; QZ_E_ENVIO_EMAIL otherwise, with
    // the reason in `resultado`. Never throws.
    [[nodiscard]] virtual long Envia(const CQZMensagemEmail& mensagem, CQZResultadoEnvio& resultado) = 0;
};
