// The scheduled routine that e-mails the technicians the due alerts of the
// maintenance plans. A scheduler creates it through the exported
// PXEmailAlertaPlano, runs it every five minutes on its own thread and
// releases it through OnDeleta.
//
// Every failure of the routine but the two quiet ones of a run (the account
// query and the plan search, whose status is returned) is written to the
// routine log and thrown as a CQZExceptionEx; the routine never catches its
// own exceptions.
#pragma once

#include <cstdint>

#include "alerts/PXModeloEmail.h"
#include "platform/QZAutoRun.h"
#include "platform/QZContainers.h"
#include "platform/QZExcecao.h"

struct CPXAvaliacaoVencimento;
struct CPXLeiturasSubordinadas;

// Watches a run as it decides (the preview of a run). With Simula() true
// the messages are handed here instead of being sent, and no alert is
// stamped.
class IPXObservadorAlertas {
public:
    virtual ~IPXObservadorAlertas() = default;
    virtual bool Simula() const { return false; }
    // An alert accepted for the own plan; the alert plan is the own plan or
    // the ancestor it inherits its alerts from.
    virtual void AlertaAceito(const CQZDadosPX_Plano& /*planoProprio*/, const CQZDadosPX_Plano& /*planoAlerta*/,
                              uint32_t /*indiceAlerta*/) {}
    // The template of an alert is not there: the run ends here, with 0.
    virtual void ModeloAusente(const CQZDadosPX_Plano& /*planoAlerta*/, uint32_t /*indiceAlerta*/) {}
    // A resource link due under the last alert accepted.
    virtual void RecursoVencido(const CQZDadosGT_Recurso& /*recurso*/,
                                const CQZDadosGT_RecursoPlanoManutencao& /*vinculo*/,
                                const CPXAvaliacaoVencimento& /*avaliacao*/, uint8_t /*tipoControle*/) {}
    // A message the run would send (only when Simula()); 0 or the status a
    // sending would have returned.
    virtual long Mensagem(const CString& /*destinatario*/, const CString& /*corpo*/, const CString& /*assunto*/,
                          const CQZOrigemEmail& /*origem*/) {
        return 0;
    }
};

// The messages of a run waiting to be sent together.
struct CPXLoteEmails {
    // A batch goes when it has this many messages or bytes of bodies.
    static constexpr size_t kMaximoEmails = 500;
    static constexpr size_t kMaximoBytes = 8u << 20;

    CQZVector<CQZDadosGT_Email> emails;
    size_t bytes = 0;

    // Takes a message; true when the batch is full and must go.
    bool Adiciona(const CString& destinatario, const CString& corpo, const CString& assunto, const CQZOrigemEmail& origem);
    void Limpa() {
        emails.clear();
        bytes = 0;
    }
};

class CPXEmailAlertaPlano : public CAutoRun {
public:
    // Codes and message ids of the routine's failures.
    static constexpr long kCodigoSemConta = static_cast<long>(static_cast<int32_t>(0x80040A68u));
    static constexpr long kIdSemConta = 1110;
    static constexpr long kCodigoEnvio = static_cast<long>(static_cast<int32_t>(0x80040A64u));
    static constexpr long kIdEnvio = 1111;
    static constexpr long kCodigoAbrirModelo = static_cast<long>(static_cast<int32_t>(0x80040A66u));
    static constexpr long kIdAbrirModelo = 1112;
    static constexpr long kCodigoLerModelo = static_cast<long>(static_cast<int32_t>(0x80040A65u));
    static constexpr long kIdLerModelo = 1113;
    // What the routine's exceptions name as their source and module.
    static constexpr const char* kOrigem = "PXEmailAlertaPlano";
    static constexpr int kModulo = 112;
    static constexpr int kIntervaloMs = 300000;

    CPXEmailAlertaPlano();
    ~CPXEmailAlertaPlano() override;

    // One run: the company's e-mail account, then the active plans that
    // resources follow, then their alerts. The flag is neither read nor written.
    long OnRun(bool& bFlag) override;
    // Five minutes.
    long OnGetIntervalo(int* pIntervalo) override;
    // delete this.
    void OnDeleta() override;

    // The single way the routine fails: nothing when `codigo` is 0;
    // otherwise logs `mensagem` and throws it. An exception given is read
    // and deleted; its text reaches neither the log nor the thrown
    // exception. `mensagem` must be a writable buffer: its first characters
    // are copied over with the combined text, which begins with them.
    // Message id 999999 is thrown as 0.
    void AbortaExecucao(long codigo, const char* mensagem, int idMensagem, CException* pExcecao);

    // Reads a whole template, as it is (no conversion of code page or line
    // breaks). Throws when the file cannot be opened or read.
    long LeModeloEmail(const char* caminho, CString& modelo);
    // Whether a template file is there (see PXModeloEmailExiste).
    static bool ModeloEmailExiste(const char* caminho);
    // The list block prepared for `linhas` lines; false when there is none.
    static bool AtualizaConteudoEmail(CString& modelo, int64_t linhas);
    // One record into a template without list block (list markers stay).
    static void SubstituiMemoriasModeloEmail(CString& modelo, const DADOS_CORPO_EMAIL& registro);
    // The header and every line into a prepared template.
    static void SubstituiMemoriasModeloEmail(CString& modelo, const DADOS_CORPO_EMAIL& cabecalho,
                                             const CQZVector<DADOS_CORPO_EMAIL>& linhas);

    // Hands one finished e-mail to the enterprise service; the service's
    // status when it is not negative (0: sent). A negative one is thrown.
    long EnviaEmail(const CString& destinatario, CString& corpo, const CString& assunto);
    // Hands a batch of finished e-mails to the enterprise service, in
    // order, up to the first one not sent: its status when it is not
    // negative (0: all sent). A negative one is thrown, as EnviaEmail's.
    long EnviaEmails(const CQZVector<CQZDadosGT_Email>& emails);

    // The alerts of the plans found by a run: selection, message data,
    // sending, and at the end the stamps of every alert accepted. 0 on
    // success (a missing template ends it with 0 and no stamps), a sending's
    // non-zero status, or a throw.
    long GeraEEnviaEmail(CQZArray_deprecated<uint32_t>& aPonteirosPlano);
    // The same, watched; a simulating observer gets the messages instead of
    // the enterprise service, and nothing is stamped.
    long GeraEEnviaEmail(CQZArray_deprecated<uint32_t>& aPonteirosPlano, IPXObservadorAlertas* pObservador);
    // What a run would do now (the company's clock), without the account
    // check, without sending and without stamping.
    long Simula(IPXObservadorAlertas& observador);

    // The subject of an alert's e-mails.
    static CString AssuntoEmail(const CQZDadosPX_PlanoAlerta& alerta);

private:
    // EnviaEmail, telling the service what the message is about.
    long EnviaEmail(const CString& destinatario, CString& corpo, const CString& assunto, const CQZOrigemEmail& origem);
    // Fields 11-23 of a due resource line; 0, or the run's end after a
    // failed read.
    long SetDadosCorpoEmailSubordinados(DADOS_CORPO_EMAIL& d, const CQZDadosGT_Recurso& recurso,
                                        const CQZDadosGT_RecursoPlanoManutencao& vinculo,
                                        const CPXAvaliacaoVencimento& avaliacao, CPXLeiturasSubordinadas& lidas);
    // The plan pointers a run looks at; the search's status.
    long BuscaPlanos(CQZArray_deprecated<uint32_t>& aPonteiros);

    // Logs `texto` and throws it with `codigo` and `idMensagem`.
    [[noreturn]] void Lanca(long codigo, long idMensagem, const char* texto);
};

extern "C" {
// A new routine, owned by the caller (released through OnDeleta); null when
// it cannot be allocated.
__attribute__((visibility("default"))) CAutoRun* PXEmailAlertaPlano();
// The routine has no settings of its own: says where alerts are configured
// and returns 0.
__attribute__((visibility("default"))) long PXEmailAlertaPlano_Config();
}
