#include "alerts/PXEmailAlertaPlano.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>

#include "alerts/PXCompilacao.h"
#include "platform/QZCaixaMensagem.h"
#include "platform/QZCodigosResultado.h"

namespace {

// The failure of a file operation, as the framework's file exception tells it.
class CPXExcecaoArquivo : public CException {
public:
    CPXExcecaoArquivo(const char* operacao, int erro) : m_sTexto(CString::Formatado("%s: %s", operacao, std::strerror(erro))) {}
    CString GetMensagem() const override { return m_sTexto; }

private:
    CString m_sTexto;
};

// A text of the routine as a buffer it may write into (AbortaExecucao).
template <size_t N>
void CopiaTexto(char (&destino)[N], const char* texto) {
    std::strncpy(destino, texto, N - 1);
    destino[N - 1] = '\0';
}

}  // namespace

CPXEmailAlertaPlano::CPXEmailAlertaPlano() : CAutoRun(kOrigem) {}

CPXEmailAlertaPlano::~CPXEmailAlertaPlano() { Finaliza(); }

long CPXEmailAlertaPlano::OnGetIntervalo(int* pIntervalo) {
    if (pIntervalo) *pIntervalo = kIntervaloMs;
    return 0;
}

void CPXEmailAlertaPlano::OnDeleta() { delete this; }

long CPXEmailAlertaPlano::OnRun(bool& /*bFlag*/) {
    CQZAcessoGestavoBuffer* pGestavo = GetAcessoGestavo();
    CQZAcessoManutencaoBuffer* pManutencao = GetAcessoManutencao();
    // A routine the scheduler did not initialise has no data to look at.
    if (!pGestavo || !pManutencao) return QZ_E_SEM_SERVICOS;

    uint64_t idConta = 0;
    long hr = pGestavo->GetEmailContaConfigurada(&idConta, QZ_MODULO_GT);
    if (hr < 0) return hr;
    if (idConta == 0) {
        char mensagem[] =
            "Nenhuma conta de e-mail configurada. Para enviar o e-mail é necessário configurar uma conta de e-mail "
            "nas propriedades do Gestavo, no Cadastro de Usuários ou no Cadastro de Empresas e Filiais";
        AbortaExecucao(kCodigoSemConta, mensagem, kIdSemConta, nullptr);
    }

    CQZArray_deprecated<uint32_t> aPonteiros;
    hr = BuscaPlanos(aPonteiros);
    if (hr != 0) return hr;
    return GeraEEnviaEmail(aPonteiros);
}

long CPXEmailAlertaPlano::BuscaPlanos(CQZArray_deprecated<uint32_t>& aPonteiros) {
    CQZDadosPX_FiltroPlano filtro;
    filtro.SetAtivo(1);
    filtro.SetAtivoRecurso(1);
    return GetAcessoManutencao()->BuscaPonteirosPlano(filtro, aPonteiros);
}

long CPXEmailAlertaPlano::Simula(IPXObservadorAlertas& observador) {
    if (!GetAcessoGestavo() || !GetAcessoManutencao()) return QZ_E_SEM_SERVICOS;
    CQZArray_deprecated<uint32_t> aPonteiros;
    if (long hr = BuscaPlanos(aPonteiros)) return hr;
    return GeraEEnviaEmail(aPonteiros, &observador);
}

void CPXEmailAlertaPlano::AbortaExecucao(long codigo, const char* mensagem, int idMensagem, CException* pExcecao) {
    if (codigo == 0) return;
    if (pExcecao) {
        char szErro[500] = {};
        pExcecao->GetErrorMessage(szErro, sizeof szErro);
        CString sExcecao;
        sExcecao.Format("Foi gerada uma exceção. Mensagem: %s", szErro);
        const CString sCombinada = CString(mensagem) + sExcecao;
        delete pExcecao;
        // The combined text begins with the message itself, so the copy
        // leaves the message as it was; it stops at the message's own
        // characters, so a message shorter than 8 keeps its terminator.
        const size_t n = std::min<size_t>(8, std::strlen(mensagem));
        std::memcpy(const_cast<char*>(mensagem), sCombinada.GetString(), n);
    }
    Lanca(codigo, idMensagem == 999999 ? 0 : idMensagem, mensagem);
}

void CPXEmailAlertaPlano::Lanca(long codigo, long idMensagem, const char* texto) {
    // The exception carries the same text: a log that cannot be written
    // loses nothing (its line went to standard error).
    GravaLog(1, 4, texto);
    throw CQZExceptionEx(codigo, idMensagem, 0, CString(), CString(texto), kOrigem, kModulo, PXCarimboCompilacao());
}

long CPXEmailAlertaPlano::LeModeloEmail(const char* caminho, CString& modelo) {
    int fd = ::open(caminho, O_RDONLY | O_CLOEXEC | O_NOCTTY);
    if (fd < 0) Lanca(kCodigoAbrirModelo, kIdAbrirModelo, "Falha ao abrir arquivo modelo de e-mail");
    CException* pFalha = nullptr;
    std::string conteudo;
    struct stat st {};
    if (::fstat(fd, &st) != 0) {
        pFalha = new CPXExcecaoArquivo("fstat", errno);
    } else {
        // The length the file has now, read in one go; a file that shrank
        // meanwhile gives what it still holds.
        conteudo.resize(static_cast<size_t>(st.st_size));
        size_t lido = 0;
        while (lido < conteudo.size()) {
            ssize_t n = ::read(fd, conteudo.data() + lido, conteudo.size() - lido);
            if (n < 0 && errno == EINTR) continue;
            if (n < 0) {
                pFalha = new CPXExcecaoArquivo("read", errno);
                break;
            }
            if (n == 0) break;
            lido += static_cast<size_t>(n);
        }
        conteudo.resize(lido);
        // A directory has a size but no bytes to read.
        if (!pFalha && S_ISDIR(st.st_mode)) pFalha = new CPXExcecaoArquivo("read", EISDIR);
    }
    if (::close(fd) != 0 && !pFalha) pFalha = new CPXExcecaoArquivo("close", errno);
    if (pFalha) {
        char mensagem[64];
        CopiaTexto(mensagem, "Falha ao ler o modelo de e-mail");
        AbortaExecucao(kCodigoLerModelo, mensagem, kIdLerModelo, pFalha);
    }
    modelo = CString(std::move(conteudo));
    return 0;
}

bool CPXEmailAlertaPlano::ModeloEmailExiste(const char* caminho) { return PXModeloEmailExiste(caminho); }

bool CPXEmailAlertaPlano::AtualizaConteudoEmail(CString& modelo, int64_t linhas) {
    std::string texto = modelo.str();
    if (!PXAtualizaConteudoEmail(texto, linhas)) return false;
    modelo = CString(std::move(texto));
    return true;
}

void CPXEmailAlertaPlano::SubstituiMemoriasModeloEmail(CString& modelo, const DADOS_CORPO_EMAIL& registro) {
    std::string texto = modelo.str();
    PXSubstitui(texto, registro);
    modelo = CString(std::move(texto));
}

void CPXEmailAlertaPlano::SubstituiMemoriasModeloEmail(CString& modelo, const DADOS_CORPO_EMAIL& cabecalho,
                                                       const CQZVector<DADOS_CORPO_EMAIL>& linhas) {
    std::string texto = modelo.str();
    PXSubstitui(texto, cabecalho, linhas);
    modelo = CString(std::move(texto));
}

long CPXEmailAlertaPlano::EnviaEmail(const CString& destinatario, CString& corpo, const CString& assunto) {
    return EnviaEmail(destinatario, corpo, assunto, CQZOrigemEmail());
}

namespace {

// A finished e-mail as the enterprise service takes it.
CQZDadosGT_Email MontaEmail(const CString& destinatario, const CString& corpo, const CString& assunto,
                            const CQZOrigemEmail& origem) {
    CQZDadosGT_EmailAnexo anexo;
    anexo.SetTipo(QZ_TIPO_ANEXO_CORPO);
    anexo.Reserva(std::max<size_t>(100, static_cast<size_t>(corpo.GetLength())));
    anexo.SetConteudo(corpo.GetString(), static_cast<size_t>(corpo.GetLength()));
    CQZDadosGT_Email email;
    email.SetAssunto(assunto);
    email.SetDestinatarios(destinatario);
    email.SetCorpo(anexo);
    email.SetOrigem(origem);
    return email;
}

}  // namespace

bool CPXLoteEmails::Adiciona(const CString& destinatario, const CString& corpo, const CString& assunto,
                             const CQZOrigemEmail& origem) {
    bytes += static_cast<size_t>(corpo.GetLength());
    emails.push_back(MontaEmail(destinatario, corpo, assunto, origem));
    return emails.size() >= kMaximoEmails || bytes >= kMaximoBytes;
}

long CPXEmailAlertaPlano::EnviaEmail(const CString& destinatario, CString& corpo, const CString& assunto,
                                     const CQZOrigemEmail& origem) {
    CQZAcessoGestavoBuffer* pGestavo = GetAcessoGestavo();
    const long hr = pGestavo ? pGestavo->EnviaEmail(MontaEmail(destinatario, corpo, assunto, origem), nullptr,
                                                    QZ_MODULO_GT, 0)
                             : QZ_E_SEM_SERVICOS;
    if (hr < 0) Lanca(kCodigoEnvio, kIdEnvio, "Falha ao enviar e-mail.");
    return hr;
}

long CPXEmailAlertaPlano::EnviaEmails(const CQZVector<CQZDadosGT_Email>& emails) {
    CQZAcessoGestavoBuffer* pGestavo = GetAcessoGestavo();
    int64_t tratadas = 0;
    const long hr = pGestavo ? pGestavo->EnviaEmails(emails, &tratadas, nullptr, QZ_MODULO_GT, 0) : QZ_E_SEM_SERVICOS;
    if (hr < 0) Lanca(kCodigoEnvio, kIdEnvio, "Falha ao enviar e-mail.");
    return hr;
}

extern "C" CAutoRun* PXEmailAlertaPlano() {
    try {
        return new CPXEmailAlertaPlano();
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

extern "C" long PXEmailAlertaPlano_Config() {
    try {
        QZCaixaMensagem().Mostra("A configuração deve ser feita no Cadastro de Planos do Navor Manutenção.",
                                 CPXEmailAlertaPlano::kOrigem, QZ_MB_OK);
    } catch (...) {
        // Nothing crosses the exported function; the box has no answer to give.
    }
    return 0;
}
