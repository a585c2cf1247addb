#include "platform/QZCaixaMensagem.h"

#include <atomic>
#include <cstdio>

#include "platform/QZLogRotinas.h"

namespace {

// IDOK, the only answer a box with an OK button gives.
constexpr int kBotaoOk = 1;

class CQZCaixaPadrao : public IQZCaixaMensagem {
public:
    int Mostra(const CString& texto, const CString& titulo, QZBotoesCaixa) override {
        const std::string linha = QZParaUtf8(titulo.IsEmpty() ? texto : titulo + ": " + texto) + "\n";
        std::fwrite(linha.data(), 1, linha.size(), stderr);
        std::fflush(stderr);
        CQZLinhaLogRotina log;
        log.rotina = titulo;
        log.mensagem = texto;
        // The log line is the box's record; when it cannot be written the
        // text has already reached standard error above.
        QZGravaLogRotina(log);
        return kBotaoOk;
    }
};

std::atomic<IQZCaixaMensagem*> g_caixa{nullptr};

}  // namespace

void QZDefineCaixaMensagem(IQZCaixaMensagem* caixa) { g_caixa.store(caixa); }

IQZCaixaMensagem& QZCaixaMensagem() {
    static CQZCaixaPadrao padrao;
    IQZCaixaMensagem* c = g_caixa.load();
    return c ? *c : padrao;
}
