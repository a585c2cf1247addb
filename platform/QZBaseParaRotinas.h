// The routine base: initialisation state, the session's profile, the
// object's own error record, and the data services of its company.
#pragma once

#include <cstdint>
#include <functional>

#include "platform/QZAcesso.h"
#include "platform/QZDadosGT_Erro.h"
#include "platform/QZRastro.h"

class CQZProfilerEmpresa : public IQZGT_Profiler {
public:
    CString GetEmpresa() const override { return m_sEmpresa; }
    uint16_t GetUsuario() const override { return m_usUsuario; }
    uint32_t GetNumeroSessao() const override { return m_ulSessao; }

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
    bool EstaInicializado() const { return m_bInicializado; }
    // Keeps the session and calls OnInicializa; a success code (>= 0, S_FALSE
    // included) leaves the object initialised. Returns OnInicializa's code.
    long Inicializa(const CString& empresa, uint16_t usuario, uint32_t sessao);
    // Calls OnFinaliza when initialised; returns its code.
    long Finaliza();

protected:
    virtual long OnInicializa() { return 0; }
    virtual long OnFinaliza() { return 0; }

private:
    bool m_bInicializado = false;
};

class CQZUltimoErro : public CQZDadosGT_Erro {};

// What a host or a test registers for a company.
struct CQZServicosEmpresa {
    CQZAcessoManutencaoBuffer* pManutencao = nullptr;
    CQZAcessoGestavoBuffer* pGestavo = nullptr;
    CQZAcessoServidores* pServidores = nullptr;
    // Run at each initialisation of a routine object (a host opens or checks
    // its store there); its code becomes the initialisation's code.
    std::function<long(const CString& empresa, uint16_t usuario, uint32_t sessao)> conectar;
    // Store of the company's extra information (platform/QZInfoExtras.h).
    class IQZArmazemInfoExtras* pInfoExtras = nullptr;
};

// Company -> data services. Filled by the host before routines start.
class CQZRegistroServicos {
public:
    static void Registra(const CString& empresa, const CQZServicosEmpresa& servicos);
    static void Remove(const CString& empresa);
    static bool Busca(const CString& empresa, CQZServicosEmpresa& servicos);
};

class CQZBaseParaRotinas : public CQZInicializador, public CQZUltimoErro {
public:
    CQZBaseParaRotinas() = default;
    CQZBaseParaRotinas(const CQZBaseParaRotinas&) = default;
    CQZBaseParaRotinas& operator=(const CQZBaseParaRotinas&) = default;
    ~CQZBaseParaRotinas() override = default;

    CQZAcessoManutencaoBuffer* GetAcessoManutencao() const { return m_servicos.pManutencao; }
    CQZAcessoGestavoBuffer* GetAcessoGestavo() const { return m_servicos.pGestavo; }
    CQZAcessoServidores* GetAcessoServidores() const { return m_servicos.pServidores; }

    virtual void OnSetMostrarMensagens(bool mostrar) { m_bMostrarMensagens = mostrar; }
    virtual long OnLerParametros() { return 0; }
    virtual void OnResetBuffer() {}
    virtual long FuncaoGenerica(long /*funcao*/, void* /*dados*/) { return 0; }

protected:
    // Connects the object to the services registered for its company.
    long OnInicializa() override;
    long OnFinaliza() override;
    bool MostrarMensagens() const { return m_bMostrarMensagens; }

private:
    CQZServicosEmpresa m_servicos;
    bool m_bMostrarMensagens = false;
};
