// The screens behind the permission kinds, as the command line uses them:
// which kind guards the saves and deletes of each record type, and the name
// of every kind. The one table of record type -> kind is here (and in the
// README); a type without a kind has no rules to save or delete it with.
#pragma once

#include <optional>
#include <string>

#include "permissions/PXControlePermissoes.h"

// The kind (screen) of a record type; 0 when it has none.
int PXTipoPermissaoDoRegistro(const std::string& nomeTipo);
// "tarefas", "ordem de manutenção", "relatório 15"...; empty outside 1 to 29.
std::string PXNomeTipoPermissao(int tipoPermissao);

enum class EPXAcaoRegistro { INCLUIR, ALTERAR, EXCLUIR };

// The flag an action needs on a kind's flags, by name ("Incluir",
// "Cancelar", "Incluir e Alterar"...), empty when the flags allow it.
// Registers get no delete flag from the reader: deleting one needs
// include-and-change; deleting an order cancels it.
std::string PXPermissaoQueFalta(int tipoPermissao, EPXAcaoRegistro acao, const CPXDadosPermissaoUsuario& flags);
