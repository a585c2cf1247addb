// The suite's extended exception: the one way the scheduled routines fail.
#pragma once

#include "platform/QZObjeto.h"

class CQZExceptionEx : public CException {
public:
    CQZExceptionEx(long codigo, long idMensagem, long valor, const CString& titulo, const CString& descricao,
                   const CString& origem, int modulo, const CString& compilacao)
        : m_lCodigo(codigo), m_lIdMensagem(idMensagem), m_lValor(valor), m_sTitulo(titulo), m_sDescricao(descricao),
          m_sOrigem(origem), m_iModulo(modulo), m_sCompilacao(compilacao) {}

    long GetCodigo() const { return m_lCodigo; }
    long GetIdMensagem() const { return m_lIdMensagem; }
    long GetValor() const { return m_lValor; }
    const CString& GetTitulo() const { return m_sTitulo; }
    const CString& GetDescricao() const { return m_sDescricao; }
    const CString& GetOrigem() const { return m_sOrigem; }
    int GetModulo() const { return m_iModulo; }
    // Build date and time of the library that threw.
    const CString& GetCompilacao() const { return m_sCompilacao; }

    CString GetMensagem() const override { return m_sDescricao; }

private:
    long m_lCodigo;
    long m_lIdMensagem;
    long m_lValor;
    CString m_sTitulo;
    CString m_sDescricao;
    CString m_sOrigem;
    int m_iModulo;
    CString m_sCompilacao;
};
