// Failure trace: one record for every failed data-service call or base
// initialisation, written before the failure is handled. Tracing never
// changes a result.
#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "platform/CString.h"

class IQZSaidaRastro;

// What a routine object tells the trace about its session.
class IQZGT_Profiler {
public:
    virtual ~IQZGT_Profiler() = default;
    virtual CString GetEmpresa() const = 0;
    virtual uint16_t GetUsuario() const = 0;
    virtual uint32_t GetNumeroSessao() const = 0;
    // Where the company traces its failures; null: the process's default.
    virtual IQZSaidaRastro* GetSaidaRastro() const { return nullptr; }
};

struct CQZRegistroRastro {
    int nivel = 3;
    CString funcao;                         // "CPXTrataDados::OnInicializa"
    std::map<std::string, CString> chaves;  // VersaoNavor, VersaoSO, Arquivo, Linha, Log
    uint64_t memoriaPrivada = 0;            // bytes
    CString empresa;
    uint16_t usuario = 0;
    uint32_t sessao = 0;
};

class IQZSaidaRastro {
public:
    virtual ~IQZSaidaRastro() = default;
    virtual void Grava(const CQZRegistroRastro& registro) = 0;
};

// Appends one JSON object a line (UTF-8) to a file, or to standard error
// when no path is given. Safe to share between threads.
class CQZSaidaRastroJsonLinhas : public IQZSaidaRastro {
public:
    explicit CQZSaidaRastroJsonLinhas(std::string caminho = {}) : m_caminho(std::move(caminho)) {}
    void Grava(const CQZRegistroRastro& registro) override;

private:
    std::string m_caminho;
    std::mutex m_mutex;
};

// Keeps the records in memory (tests).
class CQZSaidaRastroCaptura : public IQZSaidaRastro {
public:
    void Grava(const CQZRegistroRastro& registro) override;
    std::vector<CQZRegistroRastro> Registros() const;
    void Limpa();

private:
    mutable std::mutex m_mutex;
    std::vector<CQZRegistroRastro> m_registros;
};

// The process's default trace sink, for companies that name none: the file
// named by the environment variable PXLREG_LOG, or standard error.
IQZSaidaRastro& QZSaidaRastroPadrao();

// The "Log" text of a failure: the call's expression, the code and its parts.
CString QZFormataLogFalha(const char* nomeVariavel, const char* expressao, long hr);

// Writes one trace record for a non-zero code, unless the code is in
// `naoRastrear` (a list ending with 0xFFFFFFFF), to the profiler's sink (the
// default sink without one). `funcao` may be the compiler's full signature;
// it is reduced to "Classe::Metodo".
void QZRastreiaFalha(long hr, const char* expressao, const char* funcao, const char* arquivo, int linha,
                     const IQZGT_Profiler* profiler, const long* naoRastrear = nullptr);

// "Classe::Metodo" out of __PRETTY_FUNCTION__; source name without folder
// and extension out of __FILE__.
CString QZNomeFuncao(const char* assinatura);
CString QZNomeFonte(const char* arquivo);

// A trace point: a fixed line id, and the function and source the trace
// names (null: the calling function and source). They are fixed so that the
// support team's log analysis keeps matching them whatever happens to the
// source around them.
struct CQZPontoRastro {
    int linha;
    const char* funcao = nullptr;
    const char* fonte = nullptr;
};
