// What the handlers of maintenance situations (type 1) and task situations
// (type 2) share: both check one record, CQZDadosPX_Situacao, and report a
// failed read or search on the code (field 1).
#pragma once

#include "rules/PXTrataDadosRegistro.h"

class CPXTrataDadosSituacao : public TPXTrataDadosRegistro<CQZDadosPX_Situacao> {
public:
    ~CPXTrataDadosSituacao() override { Finaliza(); }

protected:
    CPXTrataDadosSituacao(const CPXGravacao<CQZDadosPX_Situacao>& gravacao, bool bInterfaceUsuario)
        : TPXTrataDadosRegistro(gravacao, bInterfaceUsuario) {}

    // The code of a new situation must be free among the situations of its
    // type (message 10); partial matching is off. A failed search is traced
    // at the handler's own trace point.
    CQZDadosGT_Erro& VerificaCodigoLivre(const CString& codigo, uint8_t ucTipo, const CQZPontoRastro& ponto);
    // Trims the description and writes it back; message 49 when empty.
    CQZDadosGT_Erro& ConsisteDescricao(CQZDadosPX_Situacao& dados);
    // A situation of another type: message 125 of module 20, on purpose.
    CQZDadosGT_Erro& ConsisteTipo(const CQZDadosPX_Situacao& dados, uint8_t ucTipo);

    static constexpr long kCampoCodigo = 1;
    static constexpr long kCampoDescricao = 2;
};
