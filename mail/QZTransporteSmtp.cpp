#include "mail/QZTransporteSmtp.h"

#include <curl/curl.h>

#include <algorithm>
#include <cstring>
#include <ctime>
#include <memory>
#include <mutex>

#include "mail/QZFormatoEmail.h"
#include "platform/QZCodigosResultado.h"

namespace {

// libcurl's global state is set up once, before the first transfer.
CURLcode IniciaCurl() {
    static CURLcode codigo = curl_global_init(CURL_GLOBAL_DEFAULT);
    return codigo;
}

struct Leitura {
    const std::string* dados;
    size_t posicao = 0;
};

size_t LeMensagem(char* destino, size_t tamanho, size_t quantidade, void* usuario) {
    auto* l = static_cast<Leitura*>(usuario);
    const size_t n = std::min(tamanho * quantidade, l->dados->size() - l->posicao);
    std::memcpy(destino, l->dados->data() + l->posicao, n);
    l->posicao += n;
    return n;
}

// Keeps the server's replies: the last one is what the caller is told.
struct Respostas {
    std::string atual;   // lines of the reply being received
    std::string ultima;
};

int Depura(CURL*, curl_infotype tipo, char* dados, size_t tamanho, void* usuario) {
    if (tipo != CURLINFO_HEADER_IN) return 0;
    auto* r = static_cast<Respostas*>(usuario);
    std::string linha(dados, tamanho);
    while (!linha.empty() && (linha.back() == '\n' || linha.back() == '\r')) linha.pop_back();
    r->atual += (r->atual.empty() ? "" : "\n") + linha;
    // "250-..." continues a reply; "250 ..." ends it. The farewell to
    // QUIT tells nothing about the message.
    if (linha.size() < 4 || linha[3] != '-') {
        if (r->atual.rfind("221", 0) != 0) r->ultima = r->atual;
        r->atual.clear();
    }
    return 0;
}

using Curl = std::unique_ptr<CURL, decltype(&curl_easy_cleanup)>;
using ListaCurl = std::unique_ptr<curl_slist, decltype(&curl_slist_free_all)>;

}  // namespace

long CQZTransporteSmtp::Envia(const CQZMensagemEmail& mensagem, CQZResultadoEnvio& resultado) {
    resultado = CQZResultadoEnvio();
    auto falha = [&](const std::string& texto) {
        resultado.erro = texto;
        return QZ_E_ENVIO_EMAIL;
    };
    std::string bytes, erro;
    if (!QZMontaMensagemEmail(mensagem, std::time(nullptr), bytes, &erro)) return falha(erro);
    if (m_cfg.url.rfind("smtp://", 0) != 0 && m_cfg.url.rfind("smtps://", 0) != 0)
        return falha("a URL do servidor deve começar por smtp:// ou smtps://: \"" + m_cfg.url + "\"");
    if (IniciaCurl() != CURLE_OK) return falha("não foi possível iniciar a biblioteca de envio (libcurl)");

    Curl curl(curl_easy_init(), &curl_easy_cleanup);
    if (!curl) return falha("memória insuficiente para o envio");
    const std::string de = "<" + mensagem.remetente + ">";
    ListaCurl para(curl_slist_append(nullptr, ("<" + mensagem.destinatario + ">").c_str()), &curl_slist_free_all);
    if (!para) return falha("memória insuficiente para o envio");
    Leitura leitura{&bytes};
    Respostas respostas;
    char bufErro[CURL_ERROR_SIZE] = {};

    CURL* c = curl.get();
    CURLcode rc = CURLE_OK;
    auto define = [&](CURLcode r) {
        if (rc == CURLE_OK) rc = r;
    };
    define(curl_easy_setopt(c, CURLOPT_ERRORBUFFER, bufErro));
    define(curl_easy_setopt(c, CURLOPT_URL, m_cfg.url.c_str()));
    if (m_cfg.porta) define(curl_easy_setopt(c, CURLOPT_PORT, static_cast<long>(m_cfg.porta)));
    define(curl_easy_setopt(c, CURLOPT_PROTOCOLS_STR, "smtp,smtps"));
    // Required means required: a server without STARTTLS is refused, never
    // used in clear ("try" would fall back silently).
    if (m_cfg.exigeTls) define(curl_easy_setopt(c, CURLOPT_USE_SSL, static_cast<long>(CURLUSESSL_ALL)));
    if (!m_cfg.usuario.empty()) {
        define(curl_easy_setopt(c, CURLOPT_USERNAME, m_cfg.usuario.c_str()));
        define(curl_easy_setopt(c, CURLOPT_PASSWORD, m_cfg.senha.c_str()));
    }
    define(curl_easy_setopt(c, CURLOPT_MAIL_FROM, de.c_str()));
    define(curl_easy_setopt(c, CURLOPT_MAIL_RCPT, para.get()));
    define(curl_easy_setopt(c, CURLOPT_UPLOAD, 1L));
    define(curl_easy_setopt(c, CURLOPT_READFUNCTION, &LeMensagem));
    define(curl_easy_setopt(c, CURLOPT_READDATA, &leitura));
    define(curl_easy_setopt(c, CURLOPT_INFILESIZE_LARGE, static_cast<curl_off_t>(bytes.size())));
    define(curl_easy_setopt(c, CURLOPT_TIMEOUT, m_cfg.tempoLimiteSegundos));
    define(curl_easy_setopt(c, CURLOPT_CONNECTTIMEOUT, std::min(m_cfg.tempoConexaoSegundos, m_cfg.tempoLimiteSegundos)));
    // The scheduler's thread must not be hit by SIGALRM of name lookups.
    define(curl_easy_setopt(c, CURLOPT_NOSIGNAL, 1L));
    define(curl_easy_setopt(c, CURLOPT_DEBUGFUNCTION, &Depura));
    define(curl_easy_setopt(c, CURLOPT_DEBUGDATA, &respostas));
    define(curl_easy_setopt(c, CURLOPT_VERBOSE, 1L));
    if (rc != CURLE_OK) return falha(std::string("opção de envio recusada pela libcurl: ") + curl_easy_strerror(rc));

    rc = curl_easy_perform(c);
    long codigo = 0;
    if (curl_easy_getinfo(c, CURLINFO_RESPONSE_CODE, &codigo) != CURLE_OK) codigo = 0;
    resultado.codigoServidor = codigo;
    resultado.resposta = respostas.ultima;
    if (rc == CURLE_OK) return 0;
    resultado.temporaria = codigo >= 400 && codigo < 500;
    std::string texto = std::string("falha no envio SMTP: ") + (bufErro[0] ? bufErro : curl_easy_strerror(rc));
    if (!respostas.ultima.empty()) texto += " (o servidor respondeu \"" + respostas.ultima + "\")";
    return falha(texto);
}
