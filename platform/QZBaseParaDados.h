// Base of every data record, and the caller's sink for non-blocking
// inconsistencies.
#pragma once

#include <cstdint>

#include "platform/QZDadosGT_Erro.h"

class TQZBase {
public:
    virtual ~TQZBase() = default;
};

class TQZBaseParaDados : public TQZBase {
public:
    TQZBaseParaDados() = default;
    TQZBaseParaDados(const TQZBaseParaDados&) = default;
    TQZBaseParaDados& operator=(const TQZBaseParaDados&) = default;

    // Place of the record in its data file; 0 for a record never stored.
    uint32_t GetPosicao() const { return m_ulPosicao; }
    uint32_t GetPonteiro() const { return m_ulPosicao; }
    void SetPosicao(uint32_t posicao) { m_ulPosicao = posicao; }
    void SetPonteiro(uint32_t posicao) { m_ulPosicao = posicao; }

    // Name of the concrete record type ("CQZDadosPX_Prioridade").
    virtual const char* GetNomeTipo() const = 0;
    virtual void OnCopiar(const TQZBaseParaDados& outro) = 0;
    virtual bool OnIgual(const TQZBaseParaDados& outro) const = 0;
    virtual QZModulo OnGetModulo() const { return QZ_MODULO_PX; }

    friend bool operator==(const TQZBaseParaDados& a, const TQZBaseParaDados& b) {
        return a.m_ulPosicao == b.m_ulPosicao;
    }

private:
    uint32_t m_ulPosicao = 0;
};

class IQZTrataInconsistencia {
public:
    virtual ~IQZTrataInconsistencia() = default;
    // A non-blocking inconsistency found while a record is checked.
    virtual void AdicionaInconsistencia(const CQZDadosGT_Erro& inconsistencia) = 0;
};
