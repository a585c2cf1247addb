// The pxlreg command line: init, import, export, save, delete and
// permissions, each with --json. main.cpp hands it the process's arguments
// and streams; tests hand it their own.
//
// Exit status: 0 done (or allowed), 1 refused by the rules (the verdict is
// printed), 2 bad input, a store that cannot be used, or a usage error.
#pragma once

#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

#include "host/PXLeituraJson.h"

class CQZArmazemSQL;

[[nodiscard]] int PXLinhaComando(const std::vector<std::string>& argumentos, std::istream& entrada, std::ostream& saida,
                   std::ostream& erros);

// Loads JSON Lines records into the store in one transaction: every line
// or none, each line within `limites`. The input is read and written line
// by line, never held whole. Returns the number of records; on bad input
// throws CPXErroEntrada naming the line and the field. `nome` names the
// input in a read error's message.
[[nodiscard]] size_t PXImportaJsonLinhas(CQZArmazemSQL& armazem, std::istream& entradaUtf8,
                                         const CPXLimitesJson& limites = {},
                                         const std::string& nome = "a entrada padrão");
[[nodiscard]] size_t PXImportaJsonLinhas(CQZArmazemSQL& armazem, std::string_view textoUtf8,
                                         const CPXLimitesJson& limites = {});

// Bad input or an unusable store, in Windows-1252 text; `linha` and `campo`
// locate it in the input when known.
struct CPXErroEntrada {
    std::string texto;
    long linha = 0;
    std::string campo;
};
