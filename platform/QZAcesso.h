// Data-access contracts. Every operation returns a `long` result code: 0 is
// success; anything else is a failure, and the service keeps it in its own
// error record (GetErro) until its next operation. A failed read leaves the
// caller's record unspecified; a failed search leaves the list empty.
// The operations are listed once, in the .def files beside this header.
#pragma once

#include <cstdint>

#include "platform/QZRegistro.h"
#include "platform/records/Registros.h"

class IQZConexaoEmpresa;
class IQZPX_Disciplina;

#define QZ_AUSENTE_ERRO false
#define QZ_AUSENTE_VAZIO true

class CQZAcessoManutencao {
public:
    virtual ~CQZAcessoManutencao() = default;
    virtual const CQZDadosGT_Erro& GetErro() const = 0;

#include "platform/acesso/QZDeclaraOperacoes.h"
#include "platform/acesso/Manutencao.def"
#include "platform/acesso/QZFimMacrosOperacoes.h"

    // Stamps alert `indiceAlerta` (0-based, in the plan's list) as sent now,
    // by the service's clock. The plan's own save stamp is left as it is: a
    // send is not an edit, and must not make an open edit of the plan stale.
    [[nodiscard]] virtual long AtualizaDataHoraEnvioAlerta(uint32_t ponteiroPlano, uint32_t indiceAlerta) = 0;
};

class CQZAcessoManutencaoBuffer : public CQZAcessoManutencao {
public:
#include "platform/acesso/QZDeclaraOperacoes.h"
#include "platform/acesso/ManutencaoBuffer.def"
#include "platform/acesso/QZFimMacrosOperacoes.h"
};

class CQZAcessoGestavo {
public:
    virtual ~CQZAcessoGestavo() = default;
    virtual const CQZDadosGT_Erro& GetErro() const = 0;

#include "platform/acesso/QZDeclaraOperacoes.h"
#include "platform/acesso/Gestavo.def"
#include "platform/acesso/QZFimMacrosOperacoes.h"

    // The company's e-mail account for a module: its id, 0 when none is
    // configured.
    [[nodiscard]] virtual long GetEmailContaConfigurada(uint64_t* pIdConta, QZModulo modulo) = 0;
    // Sends a message through an account (0: the configured one). A
    // negative status: not sent, with the reason in the service's error
    // record and in *pDetalhes when given.
    [[nodiscard]] virtual long EnviaEmail(const CQZDadosGT_Email& email, CQZDadosGT_Erro* pDetalhes, QZModulo modulo,
                                          uint64_t idConta) = 0;
    // Sends messages in order, each as EnviaEmail does, and stops at the
    // first one not sent: its status is returned (0 when all were sent).
    // `*pTratadas`: how many reached the transport, that one included when
    // it got there (a stop of the service comes before it).
    [[nodiscard]] virtual long EnviaEmails(const CQZVector<CQZDadosGT_Email>& emails, int64_t* pTratadas,
                                           CQZDadosGT_Erro* pDetalhes, QZModulo modulo, uint64_t idConta) = 0;
};

class CQZAcessoGestavoBuffer : public CQZAcessoGestavo {
public:
#include "platform/acesso/QZDeclaraOperacoes.h"
#include "platform/acesso/GestavoBuffer.def"
#include "platform/acesso/QZFimMacrosOperacoes.h"
};

// The server directory: where each company's data lives.
class CQZAcessoServidores {
public:
    virtual ~CQZAcessoServidores() = default;
    // Data directory of a module for a company, ending without a separator.
    virtual CString GetDiretorioDados(const CString& empresa, QZModulo modulo) const = 0;
    // The discipline service of the company's data on `conexao`, the
    // connection of the routine object that asks (QZPX_Disciplina.h says why
    // it lives there); null when that connection serves none.
    virtual IQZPX_Disciplina* GetIPXDisciplina_deprecated(IQZConexaoEmpresa& conexao) const;
};
