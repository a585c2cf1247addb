// The module's handler of the suite's extra information: selects the header
// of a process, reads the link (the extra-information values) of a source
// record and writes it for a target record, so that the values follow a
// record that is copied or saved under a new key.
//
// Calling order: Inicializa, SetFlagProcesso, then any number of
// SetDadosCorvel / GravaCorvel / CopiarCorvel, and Finaliza. Every
// operation returns the service's status unchanged (negative on failure,
// with the text in GetConexaoCorvel().GetErro()) and traces a failure.
#pragma once

#include "platform/QZBaseParaRotinas.h"
#include "platform/QZInfoExtras.h"

class CPXCorvel : public CQZInicializador, public IIEContexto {
public:
    CPXCorvel() = default;
    ~CPXCorvel() override;

    // Keeps the process and selects its first header (inactive ones too);
    // without one the handler reads and writes nothing.
    long SetFlagProcesso(IE_E_PROCESSO eProcesso);
    IE_E_PROCESSO GetFlagProcesso() const { return m_eProcesso; }

    // Reads the link of the source record into GetVinculo().
    long SetDadosCorvel(unsigned long ulChaveOrigem);
    // Writes GetVinculo() for the target record, under the selected header;
    // an inactive header takes nothing and answers 0.
    long GravaCorvel(unsigned long ulChaveDestino);
    // SetDadosCorvel then GravaCorvel; a failed read does not stop the write.
    long CopiarCorvel(unsigned long ulChaveOrigem, unsigned long ulChaveDestino);

    CIEVinculo& GetVinculo() { return m_vinculo; }
    const CIEVinculo& GetVinculo() const { return m_vinculo; }
    CPXCorvel& SetVinculo(const CIEVinculo& vinculo);
    CIEHeader& GetHeaderCorvel() { return m_ieHeader; }
    CConexaoInfoExtras& GetConexaoCorvel() { return m_cnxIE; }

    unsigned long IEGetChave() const override { return 0; }
    CString IEGetEmpresa() const override { return GetEmpresa(); }
    unsigned short IEGetUsuario() const override { return GetUsuario(); }
    long IEGetNumeroSessao() const override { return static_cast<long>(GetNumeroSessao()); }
    IE_E_PROCESSO IEGetProcesso() const override { return m_eProcesso; }

    // The service's failures are its negative statuses; only they are traced.
    bool EhFalha(long hr) const override { return hr < 0; }
    IQZSaidaRastro* GetSaidaRastro() const override { return m_cnxIE.GetSaidaRastro(); }

protected:
    long OnInicializa() override;
    long OnFinaliza() override;

private:
    CConexaoInfoExtras m_cnxIE;
    CIEHeader m_ieHeader;
    CIEVinculo m_vinculo;
    IE_E_PROCESSO m_eProcesso = IE_PROCESSO_NENHUM;
};
