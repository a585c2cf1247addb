#include "mail/QZTransporteCaixaSaida.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>

#include "mail/QZFormatoEmail.h"
#include "platform/QZCodigosResultado.h"
#include "platform/QZEscrita.h"

namespace {

std::string Errno(const char* acao, const std::string& caminho) {
    return std::string(acao) + " " + caminho + ": " + std::strerror(errno);
}

// "20260310-093000-<pid>-<n>.eml": in the order written, never reused.
std::string NomeArquivo(std::time_t momento) {
    static std::atomic<unsigned long long> contador{0};
    std::tm t{};
    localtime_r(&momento, &t);
    char buf[80];
    std::snprintf(buf, sizeof buf, "%04d%02d%02d-%02d%02d%02d-%d-%06llu.eml", t.tm_year + 1900, t.tm_mon + 1,
                  t.tm_mday, t.tm_hour, t.tm_min, t.tm_sec, static_cast<int>(getpid()), ++contador);
    return buf;
}

}  // namespace

long CQZTransporteCaixaSaida::Envia(const CQZMensagemEmail& mensagem, CQZResultadoEnvio& resultado) {
    resultado = CQZResultadoEnvio();
    auto falha = [&](const std::string& texto) {
        resultado.erro = texto;
        return QZ_E_ENVIO_EMAIL;
    };
    const std::time_t agora = std::time(nullptr);
    std::string bytes, erro;
    if (!QZMontaMensagemEmail(mensagem, agora, bytes, &erro)) return falha(erro);

    std::string modelo = m_pasta + "/.pxlreg-XXXXXX.tmp";
    int fd = ::mkstemps(modelo.data(), 4);
    if (fd < 0) return falha(Errno("não foi possível criar um arquivo na caixa de saída", m_pasta));
    const std::string temporario = modelo;
    std::string problema;
    if (!QZEscreveTudo(fd, bytes))
        problema = Errno("falha ao gravar", temporario);
    else if (::fsync(fd) != 0)
        problema = Errno("falha ao descarregar", temporario);
    if (::close(fd) != 0 && problema.empty()) problema = Errno("falha ao fechar", temporario);
    if (!problema.empty()) {
        ::unlink(temporario.c_str());  // best effort: the failure above is what is reported
        return falha(problema);
    }
    const std::string destino = m_pasta + "/" + NomeArquivo(agora);
    if (::rename(temporario.c_str(), destino.c_str()) != 0) {
        problema = Errno("não foi possível dar nome ao arquivo", destino);
        ::unlink(temporario.c_str());  // best effort: the failure above is what is reported
        return falha(problema);
    }
    // The new name survives a crash only once the folder is on disk.
    int pasta = ::open(m_pasta.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (pasta < 0) return falha(Errno("não foi possível abrir a caixa de saída", m_pasta));
    const bool sincronizou = ::fsync(pasta) == 0;
    if (!sincronizou) problema = Errno("falha ao descarregar a caixa de saída", m_pasta);
    if (::close(pasta) != 0 && problema.empty()) problema = Errno("falha ao fechar a caixa de saída", m_pasta);
    if (!problema.empty()) return falha(problema);
    resultado.resposta = destino;
    return 0;
}
