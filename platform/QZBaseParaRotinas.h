// The routine base: initialisation state, the session's profile, the
// object's own error record, and its own connection to the data services of
// its company.
//
// Each routine object (handler, checker, permission reader, alert routine)
// opens its own connection when it is initialised and gives it back when it
// is finalised, so two objects used by two threads never share a connection,
// a prepared statement, a cache or an error record.
#pragma once

#include <cstdint>
#include <memory>

#include "platform/QZAcesso.h"
#include "platform/QZDadosGT_Erro.h"
#include "platform/QZRastro.h"
#include "platform/QZRelogio.h"

class IQZArmazemInfoExtras;

class CQZProfilerEmpresa : public IQZGT_Profiler {
public:
    CString GetEmpresa() const override { return m_sEmpresa; }
    uint16_t GetUsuario() const override { return m_usUsuario; }
    uint32_t GetNumeroSessao() const override { return m_ulSessao; }

    // Whether a result code is a failure of a call; a failure is traced
    // (QZ_CHAMA_RASTREADO). Every non-zero code is one, positive ones too.
    virtual bool EhFalha(long hr) const { return hr != 0; }
    // Traces `hr` when it is a failure and says whether it is one. The point
    // names the function and source unless it leaves them to the caller's.
    bool RastreiaSeFalha(long hr, const char* expressao, const CQZPontoRastro& ponto, const char* funcao,
                         const char* arquivo) const {
        if (!EhFalha(hr)) return false;
        QZRastreiaFalha(hr, expressao, ponto.funcao ? ponto.funcao : funcao, ponto.fonte ? ponto.fonte : arquivo,
                        ponto.linha, this);
        return true;
    }

protected:
    void DefinePerfil(const CString& empresa, uint16_t usuario, uint32_t sessao) {
        m_sEmpresa = empresa;
        m_usUsuario = usuario;
        m_ulSessao = sessao;
    }

private:
    CString m_sEmpresa;
    uint16_t m_usUsuario = 0;
    uint32_t m_ulSessao = 0;
};

class CQZInicializador : public TQZBase, public CQZProfilerEmpresa {
public:
    CQZInicializador() = default;
    // A copy carries the session, not the initialisation: it has no
    // connection of its own until it is initialised.
    CQZInicializador(const CQZInicializador& outro) : TQZBase(outro), CQZProfilerEmpresa(outro) {}
    CQZInicializador& operator=(const CQZInicializador& outro) {
        CQZProfilerEmpresa::operator=(outro);
        return *this;
    }

    bool EstaInicializado() const { return m_bInicializado; }
    // Keeps the session and calls OnInicializa; a success code (>= 0, S_FALSE
    // included) leaves the object initialised. Returns OnInicializa's code.
    [[nodiscard]] long Inicializa(const CString& empresa, uint16_t usuario, uint32_t sessao);
    // Calls OnFinaliza when initialised; returns its code.
    long Finaliza();

protected:
    virtual long OnInicializa() { return 0; }
    virtual long OnFinaliza() { return 0; }

private:
    bool m_bInicializado = false;
};

class CQZUltimoErro : public CQZDadosGT_Erro {};

// One connection to a company's data: the services a routine object reads
// through. Used by one thread at a time.
class IQZConexaoEmpresa {
public:
    virtual ~IQZConexaoEmpresa() = default;
    virtual CQZAcessoManutencaoBuffer& AcessoManutencao() = 0;
    virtual CQZAcessoGestavoBuffer& AcessoGestavo() = 0;
    // The company's extra information on this connection; null when the
    // company keeps none.
    virtual IQZArmazemInfoExtras* InfoExtras() = 0;
    // The discipline service of the company's data on this connection (see
    // QZPX_Disciplina.h); null when the connection serves none.
    virtual IQZPX_Disciplina* Disciplina() { return nullptr; }
    // Starts a read transaction (one snapshot for a batch of reads) when none
    // is open; true when it started one, which EncerraLeitura then ends.
    virtual bool IniciaLeitura() { return false; }
    virtual void EncerraLeitura() {}
    // Starts a write transaction when none is open (`iniciou`: this call
    // started it): the writes until EncerraEscrita are kept or dropped
    // together. 0, or the failure in the services' error record.
    [[nodiscard]] virtual long IniciaEscrita(bool& iniciou) {
        iniciou = false;
        return 0;
    }
    // Ends the write transaction IniciaEscrita started: commits it
    // (`confirma`) or rolls it back. A commit that fails is rolled back and
    // its failure returned, as IniciaEscrita's.
    [[nodiscard]] virtual long EncerraEscrita(bool /*confirma*/) { return 0; }
};

// The reads of a scope in one read transaction of the connection, when the
// caller has none open: one snapshot, and one transaction instead of one
// per read.
class CQZLeituraConsistente {
public:
    explicit CQZLeituraConsistente(IQZConexaoEmpresa* conexao)
        : m_conexao(conexao), m_iniciou(conexao && conexao->IniciaLeitura()) {}
    ~CQZLeituraConsistente() {
        if (m_iniciou) m_conexao->EncerraLeitura();
    }
    CQZLeituraConsistente(const CQZLeituraConsistente&) = delete;
    CQZLeituraConsistente& operator=(const CQZLeituraConsistente&) = delete;

private:
    IQZConexaoEmpresa* m_conexao;
    bool m_iniciou;
};

// The writes of a scope in one write transaction of the connection: all of
// them or none. Rolled back unless Confirma is called and succeeds, also
// when a failure is thrown.
class CQZEscritaAtomica {
public:
    explicit CQZEscritaAtomica(IQZConexaoEmpresa* conexao) : m_conexao(conexao) {}
    ~CQZEscritaAtomica() {
        if (m_iniciou) (void)m_conexao->EncerraEscrita(false);
    }
    CQZEscritaAtomica(const CQZEscritaAtomica&) = delete;
    CQZEscritaAtomica& operator=(const CQZEscritaAtomica&) = delete;

    [[nodiscard]] long Inicia() { return m_conexao ? m_conexao->IniciaEscrita(m_iniciou) : 0; }
    [[nodiscard]] long Confirma() {
        if (!m_iniciou) return 0;
        m_iniciou = false;
        return m_conexao->EncerraEscrita(true);
    }

private:
    IQZConexaoEmpresa* m_conexao;
    bool m_iniciou = false;
};

// Opens the connections of one company; may keep closed-over connections in
// a pool. Shared by every thread of the process: its operations take turns.
class IQZFabricaConexoes {
public:
    virtual ~IQZFabricaConexoes() = default;
    // A new (or pooled) connection; on failure the code is returned and
    // `erro` says why. A success code other than 0 is passed on too.
    [[nodiscard]] virtual long Abre(std::unique_ptr<IQZConexaoEmpresa>& conexao, CQZDadosGT_Erro& erro) = 0;
    // Takes a connection back when its routine object is done with it.
    virtual void Devolve(std::unique_ptr<IQZConexaoEmpresa> conexao) = 0;
};

// What a host or a test registers for a company.
struct CQZServicosEmpresa {
    std::shared_ptr<IQZFabricaConexoes> pFabrica;
    CQZAcessoServidores* pServidores = nullptr;
    // The company's clock; null: the system clock.
    const IQZRelogio* pRelogio = nullptr;
    // Where failures of the company's routines are traced; null: the
    // process's default (the file named by PXLREG_LOG, or standard error).
    IQZSaidaRastro* pRastro = nullptr;
};

// Company -> data services. Filled by the host before routines start.
class CQZRegistroServicos {
public:
    static void Registra(const CString& empresa, const CQZServicosEmpresa& servicos);
    static void Remove(const CString& empresa);
    static bool Busca(const CString& empresa, CQZServicosEmpresa& servicos);
};

// Opens a connection of a company's registered factory: the connection
// (or the code and, in `erro`, the reason it could not be opened) and the
// company's services.
[[nodiscard]] long QZAbreConexaoEmpresa(const CString& empresa, CQZServicosEmpresa& servicos,
                                        std::unique_ptr<IQZConexaoEmpresa>& conexao, CQZDadosGT_Erro& erro);

class CQZBaseParaRotinas : public CQZInicializador, public CQZUltimoErro {
public:
    CQZBaseParaRotinas() = default;
    CQZBaseParaRotinas(const CQZBaseParaRotinas& outro);
    CQZBaseParaRotinas& operator=(const CQZBaseParaRotinas& outro);
    ~CQZBaseParaRotinas() override;

    CQZAcessoManutencaoBuffer* GetAcessoManutencao() const {
        return m_conexao ? &m_conexao->AcessoManutencao() : nullptr;
    }
    CQZAcessoGestavoBuffer* GetAcessoGestavo() const { return m_conexao ? &m_conexao->AcessoGestavo() : nullptr; }
    // The company's servers service; the default server directory when the
    // company registered none.
    CQZAcessoServidores* GetAcessoServidores() const;
    // The connection this object opened (null when not initialised); the
    // host runs its writes on it, in the transaction of the rules.
    IQZConexaoEmpresa* GetConexao() const { return m_conexao.get(); }
    // The company's clock.
    const IQZRelogio& GetRelogio() const;
    IQZSaidaRastro* GetSaidaRastro() const override { return m_servicos.pRastro; }

    virtual void OnSetMostrarMensagens(bool mostrar) { m_bMostrarMensagens = mostrar; }
    virtual long OnLerParametros() { return 0; }
    virtual void OnResetBuffer() {}
    virtual long FuncaoGenerica(long /*funcao*/, void* /*dados*/) { return 0; }

    // Passes a data service's failure on: its own error, with this object's
    // field code when one is given.
    CQZDadosGT_Erro& PassaErroServico(const CQZDadosGT_Erro& erroServico);
    CQZDadosGT_Erro& PassaErroServico(const CQZDadosGT_Erro& erroServico, long lCodigoCampo);

protected:
    // Opens this object's own connection to the services of its company.
    long OnInicializa() override;
    long OnFinaliza() override;
    bool MostrarMensagens() const { return m_bMostrarMensagens; }

private:
    void FechaConexao();

    CQZServicosEmpresa m_servicos;
    std::unique_ptr<IQZConexaoEmpresa> m_conexao;
    bool m_bMostrarMensagens = false;
};

// Runs a data-service call of a routine object (or any object with a
// company profile), keeping its code in `hr`; a code the object counts as a
// failure is traced with the call's own text at the trace point `ponto` (a
// named CQZPontoRastro constant), and the expression is true.
#define QZ_CHAMA_RASTREADO(hr, ponto, chamada) QZ_RASTREIA_SE_FALHA(((hr) = (chamada)), (ponto), #chamada)
// The same for a code already at hand, traced with the given expression text.
#define QZ_RASTREIA_SE_FALHA(hr, ponto, expressao) \
    (this->RastreiaSeFalha((hr), (expressao), (ponto), __PRETTY_FUNCTION__, __FILE__))
