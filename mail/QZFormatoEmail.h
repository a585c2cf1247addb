// The bytes of an Internet message (RFC 5322 with MIME): an HTML body in
// Windows-1252, quoted-printable, and the subject and sender's name as
// RFC 2047 encoded words in UTF-8. Every line ends in CR LF.
#pragma once

#include <ctime>
#include <string>
#include <string_view>

#include "mail/QZTransporteEmail.h"

// Quoted-printable (RFC 2045) of bytes whose line breaks are CR LF: each CR
// LF stays a line break; every other byte that is not printable ASCII, "=",
// a blank before a line break, a lone CR or LF and a "." opening a line is
// written =XX; lines are cut at 76 characters with soft breaks, and a body
// that does not end in CR LF ends in a soft break. Decoding gives the bytes
// back exactly.
std::string QZCodificaQuotedPrintable(std::string_view bytes);

// A header text (Windows-1252) as it may stand in a header: itself when it
// is printable ASCII without "=?", otherwise encoded words "=?UTF-8?B?...?="
// of at most 75 characters, folded onto continuation lines. Fails (false,
// with the reason in *erro) on a byte with no Unicode form.
bool QZCodificaCabecalho(const CString& texto, std::string& saida, std::string* erro = nullptr);

// An address fit for a header and an SMTP envelope: one mailbox
// "local@domain" of printable ASCII without blanks, "<", ">", "," or quotes.
bool QZEnderecoValido(std::string_view endereco);

// "Tue, 10 Mar 2026 09:30:00 -0300", in the machine's local time.
std::string QZDataRfc5322(std::time_t momento);
// "<random.time@domain>", unique for every call.
std::string QZNovoIdMensagem(std::string_view dominio);

// The whole message: Date, From, To, Subject, Message-ID, MIME headers, a
// blank line and the encoded body. Fails (false, with the reason in *erro)
// on an invalid address or a text with no Unicode form.
bool QZMontaMensagemEmail(const CQZMensagemEmail& mensagem, std::time_t momento, std::string& bytes,
                          std::string* erro = nullptr);
