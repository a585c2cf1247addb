#include "mail/QZFormatoEmail.h"

#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <random>

namespace {

const char kHex[] = "0123456789ABCDEF";

// Base64 (RFC 4648) of bytes.
std::string Base64(std::string_view bytes) {
    static const char kAlfabeto[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string s;
    s.reserve((bytes.size() + 2) / 3 * 4);
    size_t i = 0;
    for (; i + 3 <= bytes.size(); i += 3) {
        uint32_t v = static_cast<uint32_t>(static_cast<unsigned char>(bytes[i])) << 16 |
                     static_cast<uint32_t>(static_cast<unsigned char>(bytes[i + 1])) << 8 |
                     static_cast<unsigned char>(bytes[i + 2]);
        for (int k = 18; k >= 0; k -= 6) s += kAlfabeto[(v >> k) & 63];
    }
    if (size_t resto = bytes.size() - i) {
        uint32_t v = static_cast<uint32_t>(static_cast<unsigned char>(bytes[i])) << 16;
        if (resto == 2) v |= static_cast<uint32_t>(static_cast<unsigned char>(bytes[i + 1])) << 8;
        s += kAlfabeto[(v >> 18) & 63];
        s += kAlfabeto[(v >> 12) & 63];
        s += resto == 2 ? kAlfabeto[(v >> 6) & 63] : '=';
        s += '=';
    }
    return s;
}

bool TextoSimples(const std::string& s) {
    if (s.size() > 900 || s.find("=?") != std::string::npos) return false;
    for (unsigned char c : s)
        if (c < 0x20 || c > 0x7E) return false;
    return true;
}

}  // namespace

std::string QZCodificaQuotedPrintable(std::string_view b) {
    constexpr size_t kMaximoLinha = 76;
    std::string s;
    s.reserve(b.size() + b.size() / 8 + 16);
    size_t coluna = 0;
    for (size_t i = 0; i < b.size(); ++i) {
        const unsigned char c = static_cast<unsigned char>(b[i]);
        if (c == '\r' && i + 1 < b.size() && b[i + 1] == '\n') {
            s += "\r\n";
            coluna = 0;
            ++i;
            continue;
        }
        // The last byte of the body is followed by a soft break (see below).
        const bool quebraDura = i + 2 < b.size() && b[i + 1] == '\r' && b[i + 2] == '\n';
        const bool fimDeLinha = quebraDura || i + 1 == b.size();
        bool codifica = c == '=' || c > 0x7E || (c < 0x20 && c != '\t') || ((c == ' ' || c == '\t') && fimDeLinha);
        const size_t largura = codifica ? 3 : 1;
        // Room for the token and, unless a hard break follows, a soft break.
        if (coluna + largura > (quebraDura ? kMaximoLinha : kMaximoLinha - 1)) {
            s += "=\r\n";
            coluna = 0;
        }
        // A lone dot opening a line would end the SMTP data early.
        if (c == '.' && coluna == 0) codifica = true;
        if (codifica) {
            s += '=';
            s += kHex[c >> 4];
            s += kHex[c & 15];
            coluna += 3;
        } else {
            s += static_cast<char>(c);
            ++coluna;
        }
    }
    // Text ends in a line break; a body that does not gets a soft one,
    // which decodes to nothing.
    if (coluna > 0) s += "=\r\n";
    return s;
}

bool QZCodificaCabecalho(const CString& texto, std::string& saida, std::string* erro) {
    saida.clear();
    if (TextoSimples(texto.str())) {
        saida = texto.str();
        return true;
    }
    std::string utf8;
    if (!QZCp1252ParaUtf8(texto.str(), utf8, erro)) return false;
    // 45 bytes make 60 base64 characters: a word of 72 with its delimiters.
    constexpr size_t kBytesPorPalavra = 45;
    for (size_t i = 0; i < utf8.size();) {
        size_t n = std::min(kBytesPorPalavra, utf8.size() - i);
        // A word holds whole characters: never cut before a continuation byte.
        while (n > 0 && i + n < utf8.size() && (static_cast<unsigned char>(utf8[i + n]) & 0xC0) == 0x80) --n;
        if (!saida.empty()) saida += "\r\n ";
        saida += "=?UTF-8?B?" + Base64(std::string_view(utf8).substr(i, n)) + "?=";
        i += n;
    }
    return true;
}

bool QZEnderecoValido(std::string_view e) {
    const size_t arroba = e.find('@');
    if (arroba == std::string_view::npos || arroba == 0 || arroba + 1 == e.size() ||
        e.find('@', arroba + 1) != std::string_view::npos || e.size() > 254)
        return false;
    for (unsigned char c : e)
        if (c <= 0x20 || c > 0x7E || std::string_view("<>,;:\"()[]\\").find(static_cast<char>(c)) != std::string_view::npos)
            return false;
    return true;
}

std::string QZDataRfc5322(std::time_t momento) {
    static const char* const kDias[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    static const char* const kMeses[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                         "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    std::tm t{};
    localtime_r(&momento, &t);
    const long fuso = t.tm_gmtoff / 60;
    const long absoluto = fuso < 0 ? -fuso : fuso;
    char buf[64];
    std::snprintf(buf, sizeof buf, "%s, %02d %s %04d %02d:%02d:%02d %c%02ld%02ld", kDias[t.tm_wday % 7], t.tm_mday,
                  kMeses[t.tm_mon % 12], t.tm_year + 1900, t.tm_hour, t.tm_min, t.tm_sec, fuso < 0 ? '-' : '+',
                  absoluto / 60, absoluto % 60);
    return buf;
}

std::string QZNovoIdMensagem(std::string_view dominio) {
    static std::atomic<uint64_t> contador{0};
    uint64_t aleatorio = 0;
    try {
        // Opened once per thread: opening the source costs more than the id.
        static thread_local std::random_device rd;
        aleatorio = static_cast<uint64_t>(rd()) << 32 | rd();
    } catch (...) {
        // Without a random source the process id, time and counter still
        // make the id unique.
    }
    char buf[96];
    std::snprintf(buf, sizeof buf, "<%016llx.%lld.%d.%llu@", static_cast<unsigned long long>(aleatorio),
                  static_cast<long long>(std::time(nullptr)), static_cast<int>(getpid()),
                  static_cast<unsigned long long>(++contador));
    return std::string(buf) + std::string(dominio.empty() ? std::string_view("pxlreg.invalid") : dominio) + ">";
}

bool QZMontaMensagemEmail(const CQZMensagemEmail& m, std::time_t momento, std::string& bytes, std::string* erro) {
    bytes.clear();
    auto falha = [&](const std::string& texto) {
        if (erro) *erro = texto;
        return false;
    };
    if (!QZEnderecoValido(m.remetente)) return falha("endereço de remetente inválido: \"" + m.remetente + "\"");
    if (!QZEnderecoValido(m.destinatario)) return falha("endereço de destinatário inválido: \"" + m.destinatario + "\"");
    std::string de = "<" + m.remetente + ">";
    if (!m.nomeRemetente.IsEmpty()) {
        std::string nome;
        if (TextoSimples(m.nomeRemetente.str())) {
            nome = "\"";
            for (char c : m.nomeRemetente.str()) {
                if (c == '"' || c == '\\') nome += '\\';
                nome += c;
            }
            nome += "\"";
        } else if (!QZCodificaCabecalho(m.nomeRemetente, nome, erro)) {
            return false;
        }
        de = nome + " " + de;
    }
    std::string assunto;
    if (!QZCodificaCabecalho(m.assunto, assunto, erro)) return false;
    const std::string dominio = m.remetente.substr(m.remetente.find('@') + 1);
    bytes = "Date: " + QZDataRfc5322(momento) + "\r\nFrom: " + de + "\r\nTo: <" + m.destinatario +
            ">\r\nSubject: " + assunto + "\r\nMessage-ID: " + QZNovoIdMensagem(dominio) +
            "\r\nMIME-Version: 1.0\r\nContent-Type: text/html; charset=windows-1252"
            "\r\nContent-Transfer-Encoding: quoted-printable\r\n\r\n" +
            QZCodificaQuotedPrintable(m.corpoHtml);
    return true;
}
