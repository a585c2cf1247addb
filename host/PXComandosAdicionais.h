// Commands kept in files of their own: each adds its subcommand to the
// command line and runs when that subcommand is the one given.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <iosfwd>

struct CPXComandoAdicional {
    CLI::App* sub = nullptr;
    // Exit status as PXLinhaComando's (0 done, 1 findings or refused, 2 error).
    std::function<int(bool json, std::ostream& saida, std::ostream& erros)> executa;
};

// email-account set|show STORE: the company's e-mail account.
CPXComandoAdicional PXComandoContaEmail(CLI::App& app);
// template check FILE: what an e-mail template will do.
CPXComandoAdicional PXComandoModelo(CLI::App& app);
