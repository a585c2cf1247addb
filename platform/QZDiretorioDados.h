// The default server directory: every company's data under one root, one
// folder per company and, inside it, one per module:
//   <root>/<company>/<module code>      e.g. /var/lib/pxlreg/EMPRESA01/PX
#pragma once

#include "platform/QZAcesso.h"

class CQZDiretorioDados : public CQZAcessoServidores {
public:
    // The root named by the environment variable PXLREG_DADOS, else
    // "/var/lib/pxlreg".
    static CString GetRaizPadrao();
    // The module's code in folder names: "PX", "GT", "ES"; the module number
    // for the others; empty for QZ_MODULO_NENHUM.
    static CString GetCodigoModulo(QZModulo modulo);

    // An empty root means the default one.
    explicit CQZDiretorioDados(const CString& raiz = GetRaizPadrao());

    const CString& GetRaiz() const { return m_sRaiz; }

    // The empty string when the company is not a plain folder name (empty,
    // "." or "..", or holding a path separator), so that a bad name never
    // points outside the root, or when the module has no code.
    CString GetDiretorioDados(const CString& empresa, QZModulo modulo) const override;

private:
    CString m_sRaiz;
};
