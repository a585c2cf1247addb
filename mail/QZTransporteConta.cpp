#include "mail/QZTransporteConta.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "mail/QZTransporteCaixaSaida.h"
#include "mail/QZTransporteSmtp.h"

namespace {

constexpr size_t kMaximoSenha = 4096;

bool LeArquivoSenha(const std::string& caminho, std::string& senha, std::string& erro) {
    // O_NOFOLLOW: the file checked is the file read, not where a link points.
    int fd = ::open(caminho.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
    if (fd < 0) {
        erro = "não foi possível abrir o arquivo de senha " + caminho + ": " + std::strerror(errno);
        return false;
    }
    struct stat st {};
    bool ok = true;
    if (::fstat(fd, &st) != 0) {
        erro = "não foi possível examinar o arquivo de senha " + caminho + ": " + std::strerror(errno);
        ok = false;
    } else if (!S_ISREG(st.st_mode)) {
        erro = "o arquivo de senha " + caminho + " não é um arquivo comum";
        ok = false;
    } else if (st.st_uid != ::geteuid()) {
        erro = "o arquivo de senha " + caminho + " pertence a outro usuário";
        ok = false;
    } else if ((st.st_mode & 077) != 0) {
        erro = "o arquivo de senha " + caminho + " pode ser lido por outros usuários (use chmod 600)";
        ok = false;
    } else if (static_cast<size_t>(st.st_size) > kMaximoSenha) {
        erro = "o arquivo de senha " + caminho + " é grande demais para uma senha";
        ok = false;
    }
    std::string lido;
    if (ok) {
        char buf[512];
        for (;;) {
            ssize_t n = ::read(fd, buf, sizeof buf);
            if (n < 0 && errno == EINTR) continue;
            if (n < 0) {
                erro = "falha ao ler o arquivo de senha " + caminho + ": " + std::strerror(errno);
                ok = false;
                break;
            }
            if (n == 0) break;
            lido.append(buf, static_cast<size_t>(n));
            if (lido.size() > kMaximoSenha) {
                erro = "o arquivo de senha " + caminho + " é grande demais para uma senha";
                ok = false;
                break;
            }
        }
    }
    if (::close(fd) != 0 && ok) {
        erro = "falha ao fechar o arquivo de senha " + caminho + ": " + std::strerror(errno);
        ok = false;
    }
    if (!ok) return false;
    if (!lido.empty() && lido.back() == '\n') lido.pop_back();
    if (!lido.empty() && lido.back() == '\r') lido.pop_back();
    senha = std::move(lido);
    return true;
}

}  // namespace

bool QZLeSenhaConta(const CQZDadosGT_ContaEmail& conta, std::string& senha, std::string& erro) {
    senha.clear();
    const std::string referencia = conta.GetReferenciaSenha().str();
    switch (conta.GetOrigemSenha()) {
        case E_GT_ORIGEM_SENHA_EMAIL_NENHUMA:
            return true;
        case E_GT_ORIGEM_SENHA_EMAIL_AMBIENTE: {
            const char* valor = referencia.empty() ? nullptr : std::getenv(referencia.c_str());
            if (!valor) {
                erro = "a variável de ambiente da senha (" + referencia + ") não está definida";
                return false;
            }
            senha = valor;
            return true;
        }
        case E_GT_ORIGEM_SENHA_EMAIL_ARQUIVO:
            if (referencia.empty()) {
                erro = "o arquivo da senha não foi informado";
                return false;
            }
            return LeArquivoSenha(referencia, senha, erro);
        default:
            erro = "origem de senha desconhecida (" + std::to_string(conta.GetOrigemSenha()) + ")";
            return false;
    }
}

bool QZCriaTransporteConta(const CQZDadosGT_ContaEmail& conta, std::unique_ptr<IQZTransporteEmail>& transporte,
                           std::string& erro) {
    transporte.reset();
    if (conta.GetTransporte() == E_GT_TRANSPORTE_EMAIL_CAIXA_SAIDA) {
        transporte = std::make_unique<CQZTransporteCaixaSaida>(conta.GetPastaSaida().str());
        return true;
    }
    if (conta.GetTransporte() != E_GT_TRANSPORTE_EMAIL_SMTP) {
        erro = "transporte de e-mail desconhecido (" + std::to_string(conta.GetTransporte()) + ")";
        return false;
    }
    CQZConfiguracaoSmtp cfg;
    cfg.url = conta.GetUrl().str();
    cfg.porta = conta.GetPorta();
    cfg.exigeTls = conta.GetExigeStartTls() != 0;
    cfg.usuario = conta.GetUsuario().str();
    if (conta.GetTempoLimiteSegundos() != 0) cfg.tempoLimiteSegundos = conta.GetTempoLimiteSegundos();
    if (!QZLeSenhaConta(conta, cfg.senha, erro)) return false;
    transporte = std::make_unique<CQZTransporteSmtp>(std::move(cfg));
    return true;
}
