// What the current user may do in one screen or function of the module:
// thirteen flags, non-zero when allowed. Filled by CPXControlePermissoes.
#pragma once

#include "platform/QZRegistro.h"

// "Fical" is the name the screens already use; it stays.
#define CAMPOS_PX_DADOS_PERMISSAO_USUARIO(CAMPO, LISTA)  \
    CAMPO(int, TemPermissaoConfigurar, 0)                \
    CAMPO(int, TemPermissaoIncluir, 0)                   \
    CAMPO(int, TemPermissaoAlterar, 0)                   \
    CAMPO(int, TemPermissaoExcluir, 0)                   \
    CAMPO(int, TemPermissaoCancelar, 0)                  \
    CAMPO(int, TemPermissaoConsultar, 0)                 \
    CAMPO(int, TemPermissaoEmitir, 0)                    \
    CAMPO(int, TemPermissaoEncerrar, 0)                  \
    CAMPO(int, TemPermissaoAgrupar, 0)                   \
    CAMPO(int, TemPermissaoImportar, 0)                  \
    CAMPO(int, TemPermissaoConsultarSaldo, 0)            \
    CAMPO(int, TemPermissaoConsultarSaldoFilial, 0)      \
    CAMPO(int, TemPermissaoAlterarItemInfDocFical, 0)

class CPXDadosPermissaoUsuario : public TQZBaseParaDados {
    QZ_REGISTRO(CPXDadosPermissaoUsuario, CAMPOS_PX_DADOS_PERMISSAO_USUARIO)
public:
    // Every flag back to 0.
    void OnLimpar();
    // 1 when any flag is set, else 0.
    int GetTemAlgumaPermissao() const;
};
