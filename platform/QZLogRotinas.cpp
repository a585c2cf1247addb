#include "platform/QZLogRotinas.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <nlohmann/json.hpp>

#include "platform/QZEscrita.h"
#include "platform/QZRelogio.h"

namespace {

// E_FAIL, or the Win32-facility form of the few write errors worth telling apart.
long CodigoDeErrno(int erro) {
    switch (erro) {
        case EACCES:
        case EPERM: return static_cast<long>(static_cast<int32_t>(0x80070005u));   // access denied
        case ENOENT:
        case ENOTDIR: return static_cast<long>(static_cast<int32_t>(0x80070003u));  // path not found
        case ENOSPC: return static_cast<long>(static_cast<int32_t>(0x80070070u));   // disk full
        default: return static_cast<long>(static_cast<int32_t>(0x80004005u));
    }
}

}  // namespace

CString QZFormataQuando(const REG_QZDMAHMSUTC& m) {
    const REG_QZDMA d = m.GetData();
    return CString::Formatado("%04d-%02d-%02dT%02d:%02d:%02d", d.GetAno(), d.GetMes(), d.GetDia(), m.GetHora(),
                              m.GetMinuto(), m.GetSegundo());
}

std::string QZFormataLinhaLogRotina(const CQZLinhaLogRotina& l) {
    nlohmann::ordered_json j;
    j["quando"] = QZParaUtf8(l.quando.IsEmpty() ? QZFormataQuando(CQZRelogioSistema::Instancia().Agora()) : l.quando);
    j["rotina"] = QZParaUtf8(l.rotina);
    j["tipo"] = l.tipo;
    j["nivel"] = l.nivel;
    j["mensagem"] = QZParaUtf8(l.mensagem);
    j["empresa"] = QZParaUtf8(l.empresa);
    j["usuario"] = l.usuario;
    j["sessao"] = l.sessao;
    return j.dump();
}

long QZGravaLogRotina(const CQZLinhaLogRotina& linha) {
    const std::string texto = QZFormataLinhaLogRotina(linha) + "\n";
    const char* caminho = std::getenv("PXLREG_LOG");
    long hr = 0;
    if (caminho && *caminho) {
        int fd = ::open(caminho, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644);
        if (fd < 0) {
            hr = CodigoDeErrno(errno);
        } else {
            if (!QZEscreveTudo(fd, texto)) hr = CodigoDeErrno(errno);
            if (::close(fd) != 0 && hr == 0) hr = CodigoDeErrno(errno);
        }
        if (hr == 0) return 0;
    }
    if (!QZEscreveTudo(STDERR_FILENO, texto) && hr == 0) hr = CodigoDeErrno(errno);
    return hr;
}
