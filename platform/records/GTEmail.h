// E-mail of the enterprise layer: the company's sending account (one per
// company) and the message handed to the enterprise service to send.
#pragma once

#include <string>

#include "platform/QZRegistro.h"

// How the account's messages leave.
enum _E_GT_TRANSPORTE_EMAIL : uint8_t {
    E_GT_TRANSPORTE_EMAIL_SMTP = 0,          // to the SMTP server of Url
    E_GT_TRANSPORTE_EMAIL_CAIXA_SAIDA = 1,   // one .eml file per message in PastaSaida (dry runs, demonstrations)
};

// Where the SMTP password comes from. The password itself is never stored.
enum _E_GT_ORIGEM_SENHA_EMAIL : uint8_t {
    E_GT_ORIGEM_SENHA_EMAIL_NENHUMA = 0,     // the server takes no login
    E_GT_ORIGEM_SENHA_EMAIL_AMBIENTE = 1,    // ReferenciaSenha names an environment variable
    E_GT_ORIGEM_SENHA_EMAIL_ARQUIVO = 2,     // ReferenciaSenha is a file readable by its owner only
};

// Url is "smtp://host" or "smtps://host" (TLS from the first byte); Porta 0
// takes the scheme's port. ExigeStartTls refuses a server that will not
// start TLS on a plain connection, instead of sending in clear.
// TempoLimiteSegundos 0 takes the transport's default.
#define CAMPOS_GT_CONTA_EMAIL(CAMPO, LISTA)              \
    CAMPO(uint8_t, Transporte, 0)                        \
    CAMPO(CString, Url, 0)                               \
    CAMPO(uint16_t, Porta, 0)                            \
    CAMPO(uint8_t, ExigeStartTls, 0)                     \
    CAMPO(CString, Usuario, 0)                           \
    CAMPO(uint8_t, OrigemSenha, 0)                       \
    CAMPO(CString, ReferenciaSenha, 0)                   \
    CAMPO(CString, EnderecoRemetente, 0)                 \
    CAMPO(CString, NomeRemetente, 0)                     \
    CAMPO(CString, PastaSaida, 0)                        \
    CAMPO(uint16_t, TempoLimiteSegundos, 0)              \
    CAMPO(REG_QZDMAHMSUTC, DmaHmsAtualizacao, QZ_CARIMBO)

class CQZDadosGT_ContaEmail : public TQZBaseParaDados {
    QZ_REGISTRO(CQZDadosGT_ContaEmail, CAMPOS_GT_CONTA_EMAIL)
public:
    static constexpr QZTipoChave kTipoChave = QZ_CHAVE_UNICA;
    // The id the enterprise service gives the company's one account.
    static constexpr uint64_t kIdConta = 1;
    QZModulo OnGetModulo() const override { return QZ_MODULO_GT; }
    // A sender and somewhere to send to.
    bool EstaConfigurada() const {
        if (m_EnderecoRemetente.IsEmpty()) return false;
        return m_Transporte == E_GT_TRANSPORTE_EMAIL_CAIXA_SAIDA ? !m_PastaSaida.IsEmpty() : !m_Url.IsEmpty();
    }
};

// Kinds of content part.
constexpr char QZ_TIPO_ANEXO_CORPO = 5;  // the body of the message (HTML text)

// One content part of a message: a kind and its bytes (no terminator).
class CQZDadosGT_EmailAnexo {
public:
    void SetTipo(char tipo) { m_cTipo = tipo; }
    char GetTipo() const { return m_cTipo; }
    void Reserva(size_t bytes) { m_conteudo.reserve(bytes); }
    void SetConteudo(const char* dados, size_t tamanho) { m_conteudo.assign(dados, tamanho); }
    const std::string& GetConteudo() const { return m_conteudo; }

private:
    char m_cTipo = 0;
    std::string m_conteudo;
};

// What a message is about, for the delivery log: the plan, the alert (its
// index in the plan's list) and the technician it warns; 0 when not known.
struct CQZOrigemEmail {
    uint32_t ulPonteiroPlano = 0;
    uint32_t ulIndiceAlerta = 0;
    uint32_t ulPonteiroTecnico = 0;
};

// A message: subject and recipients as text (Windows-1252), and its body.
class CQZDadosGT_Email {
public:
    void SetOrigem(const CQZOrigemEmail& origem) { m_origem = origem; }
    const CQZOrigemEmail& GetOrigem() const { return m_origem; }
    void SetAssunto(const CString& assunto) { m_sAssunto = assunto; }
    const CString& GetAssunto() const { return m_sAssunto; }
    void SetDestinatarios(const CString& destinatarios) { m_sDestinatarios = destinatarios; }
    const CString& GetDestinatarios() const { return m_sDestinatarios; }
    void SetCorpo(const CQZDadosGT_EmailAnexo& corpo) { m_corpo = corpo; }
    const CQZDadosGT_EmailAnexo& GetCorpo() const { return m_corpo; }

private:
    CString m_sAssunto;
    CString m_sDestinatarios;
    CQZDadosGT_EmailAnexo m_corpo;
    CQZOrigemEmail m_origem;
};

// Situations of a message in the delivery log.
enum _E_GT_SITUACAO_ENVIO_EMAIL : uint8_t {
    E_GT_SITUACAO_ENVIO_EMAIL_ENVIADO = 1,  // the transport took it
    E_GT_SITUACAO_ENVIO_EMAIL_FALHOU = 2,   // refused or not delivered to the transport
    // Logged before the hand-over and not settled since: the sending was
    // cut short there, and the message may or may not have gone.
    E_GT_SITUACAO_ENVIO_EMAIL_PENDENTE = 3,
};

// The delivery log: one line per message handed to a transport, written by
// the enterprise service as it sends. The server's reply is kept as text
// (the SMTP answer, or the file an outbox wrote).
// A log: it keeps the plan and technician it mailed after they are deleted,
// so its pointers declare no reference.
#define CAMPOS_GT_ENVIO_EMAIL(CAMPO, LISTA)      \
    CAMPO(REG_QZDMAHMSUTC, DmaHmsEnvio, QZ_IDX)  \
    CAMPO(uint32_t, PonteiroPlano, 0)            \
    CAMPO(uint32_t, IndiceAlerta, 0)             \
    CAMPO(uint32_t, PonteiroTecnico, 0)          \
    CAMPO(CString, Endereco, 0)                  \
    CAMPO(CString, Assunto, 0)                   \
    CAMPO(CString, RespostaTransporte, 0)        \
    CAMPO(uint8_t, Situacao, 0)                  \
    CAMPO(CString, Erro, 0)

class CQZDadosGT_EnvioEmail : public TQZBaseParaDados {
    QZ_REGISTRO(CQZDadosGT_EnvioEmail, CAMPOS_GT_ENVIO_EMAIL)
public:
    QZModulo OnGetModulo() const override { return QZ_MODULO_GT; }
};

// The delivery log's lines from a moment on, through the index of the time.
// A stored time orders by local time only among times of one zone (the zone
// sits above the date in its bits): Desde selects the lines of its own zone.
#define CRITERIOS_GT_FILTRO_ENVIO_EMAIL(CRITERIO) CRITERIO(REG_QZDMAHMSUTC, Desde)

class CQZDadosGT_FiltroEnvioEmail : public TQZBaseFiltro {
    QZ_FILTRO(CQZDadosGT_FiltroEnvioEmail, CQZDadosGT_EnvioEmail, CRITERIOS_GT_FILTRO_ENVIO_EMAIL)
public:
    void MontaCondicoes(CQZCondicoes& c, bool) const override {
        if (!m_critDesde) return;
        const uint64_t zona = m_critDesde->ullValor >> 38;
        c.APartirDe("DmaHmsEnvio", m_critDesde).AntesDe("DmaHmsEnvio", REG_QZDMAHMSUTC((zona + 1) << 38));
    }
};
