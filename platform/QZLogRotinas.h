// The log of the scheduled routines: one JSON object a line (UTF-8), appended
// to the file named by the environment variable PXLREG_LOG, or written to
// standard error when it names none. The variable is read at every line, so
// a host may point the log elsewhere between runs.
#pragma once

#include <cstdint>
#include <string>

#include "platform/CString.h"
#include "platform/QZDatas.h"

struct CQZLinhaLogRotina {
    CString rotina;         // "PXEmailAlertaPlano"
    unsigned short tipo = 0;
    unsigned short nivel = 0;
    CString mensagem;       // Windows-1252
    CString quando;         // "2026-03-10T09:30:00"; empty: now, by the system clock
    CString empresa;
    uint16_t usuario = 0;
    uint32_t sessao = 0;
};

// "2026-03-10T09:30:00": a stamp as the log writes it.
CString QZFormataQuando(const REG_QZDMAHMSUTC& momento);

// The line as it is written (without its line break).
std::string QZFormataLinhaLogRotina(const CQZLinhaLogRotina& linha);

// Appends the line with one write, so lines of concurrent routines never
// mix. Returns 0, or a failure code when the file could not be written; the
// line then goes to standard error, so it is never lost silently.
long QZGravaLogRotina(const CQZLinhaLogRotina& linha);
