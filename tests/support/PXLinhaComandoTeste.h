// The command line run inside the test's own process: its exit status and
// what it wrote on standard output and standard error.
#pragma once

#include <nlohmann/json.hpp>

#include <sstream>
#include <string>
#include <vector>

#include "host/PXComandos.h"

struct PXResultadoComando {
    int codigo;
    std::string saida, erros;
    nlohmann::ordered_json json() const { return nlohmann::ordered_json::parse(saida); }
};

// `args` without the program's name; `entrada` is standard input.
inline PXResultadoComando PXRodaComando(std::vector<std::string> args, const std::string& entrada = {}) {
    args.insert(args.begin(), "pxlreg");
    std::istringstream in(entrada);
    std::ostringstream out, err;
    const int codigo = PXLinhaComando(args, in, out, err);
    return {codigo, out.str(), err.str()};
}

// Literals are compiled as Windows-1252; the command speaks UTF-8, so the
// texts expected of it are written as UTF-8 literals.
inline std::string U8(const char8_t* s) { return reinterpret_cast<const char*>(s); }
