// The scheduler's routine base. A scheduler loads a library, creates a
// routine through a plain exported function, initialises it (company, user,
// session), asks its interval, calls OnRun at each interval on its own
// thread, finalises it and releases it through OnDeleta.
#pragma once

#include "platform/QZBaseParaRotinas.h"
#include "platform/QZObjeto.h"

class CAutoRun : public CObject, public CQZBaseParaRotinas {
public:
    // `nomeRotina` names the routine in its log lines.
    explicit CAutoRun(const char* nomeRotina) : m_sNomeRotina(nomeRotina) {}
    ~CAutoRun() override = default;
    CAutoRun(const CAutoRun&) = delete;
    CAutoRun& operator=(const CAutoRun&) = delete;

    // The routine's operations, in the order the scheduler's table has them.
    // One run; a negative status is a failure.
    virtual long OnRun(bool& bFlag) = 0;
    // Writes the interval between runs, in milliseconds.
    virtual long OnGetIntervalo(int* pIntervalo) = 0;
    // Releases the routine; the object must not be used afterwards.
    virtual void OnDeleta() { delete this; }
    // Whether the routine runs on an event of its own instead of the interval.
    virtual bool OnUsarEventoProprio() { return false; }
    virtual long OnCriaEvento() { return 0; }
    virtual long OnMonitoraEvento(bool* pOcorreu) {
        if (pOcorreu) *pOcorreu = false;
        return 0;
    }
    virtual bool OnGetPrecisaSetarResource() { return false; }
    virtual unsigned long OnGetCodigoServico() { return 0; }
    virtual CString OnGetMensagemAmigavel() const { return CString(); }

    // Writes one line to the routine log (platform/QZLogRotinas.h) with the
    // routine's name, session and the company's clock. Returns 0, or the
    // code of a failed write (the line then went to standard error).
    long GravaLog(unsigned short tipo, unsigned short nivel, const char* mensagem);

    const CString& GetNomeRotina() const { return m_sNomeRotina; }

private:
    CString m_sNomeRotina;
};
