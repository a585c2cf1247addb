// The message box of the operating system, as the library sees it. The
// default has no window to open: it writes the text to standard error and a
// line to the routine log. Tests put their own in its place.
#pragma once

#include "platform/CString.h"

// Buttons of a box.
enum QZBotoesCaixa : unsigned { QZ_MB_OK = 0 };

class IQZCaixaMensagem {
public:
    virtual ~IQZCaixaMensagem() = default;
    // Shows the text (Windows-1252) and waits for the answer; returns the button pressed.
    virtual int Mostra(const CString& texto, const CString& titulo, QZBotoesCaixa botoes) = 0;
};

// The process's box (null: back to the default).
void QZDefineCaixaMensagem(IQZCaixaMensagem* caixa);
IQZCaixaMensagem& QZCaixaMensagem();
