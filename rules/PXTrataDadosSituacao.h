// What the handlers of maintenance situations (type 1) and task situations
// (type 2) share: both check one record, CQZDadosPX_Situacao, and report a
// failed read or search on the code (field 1).
#pragma once

#include "rules/PXTrataDados.h"

class CPXTrataDadosSituacao : public CPXTrataDados {
public:
    CPXTrataDadosSituacao(const CPXTrataDadosSituacao&) = default;
    CPXTrataDadosSituacao& operator=(const CPXTrataDadosSituacao&) = default;
    ~CPXTrataDadosSituacao() override { Finaliza(); }

protected:
    explicit CPXTrataDadosSituacao(bool bInterfaceUsuario) : CPXTrataDados(bInterfaceUsuario) {}

    // Where a failed search is traced: the handler's own function, source
    // and line id (pass __PRETTY_FUNCTION__ and __FILE__).
    struct CPontoRastro {
        const char* pszFuncao;
        const char* pszArquivo;
        int iLinha;
    };

    // Reads the stored copy of a saved situation into `gravado` and refuses
    // it when somebody saved it since it was read (message 3).
    CQZDadosGT_Erro& LeSituacaoAtual(const CQZDadosPX_Situacao& dados, CQZDadosPX_Situacao& gravado);
    // The code of a new situation must be free among the situations of its
    // type (message 10); partial matching is off.
    CQZDadosGT_Erro& VerificaCodigoLivre(const CString& codigo, uint8_t ucTipo, const CPontoRastro& ponto);
    // Trims the description and writes it back; message 49 when empty.
    CQZDadosGT_Erro& ConsisteDescricao(CQZDadosPX_Situacao& dados);
    // A situation of another type: message 125 of module 20, on purpose.
    CQZDadosGT_Erro& ConsisteTipo(const CQZDadosPX_Situacao& dados, uint8_t ucTipo);

    static constexpr long kCampoCodigo = 1;
    static constexpr long kCampoDescricao = 2;
};
