// Commands kept in files of their own: each adds its subcommand to the
// command line and runs when that subcommand is the one given.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <iosfwd>
#include <string>

struct CPXComandoAdicional {
    CLI::App* sub = nullptr;
    // Exit status as PXLinhaComando's (0 done, 1 findings or refused, 2 error).
    std::function<int(bool json, std::ostream& saida, std::ostream& erros)> executa;
};

// email-account set|show STORE: the company's e-mail account.
CPXComandoAdicional PXComandoContaEmail(CLI::App& app);
// template check FILE: what an e-mail template will do.
CPXComandoAdicional PXComandoModelo(CLI::App& app);
// alerts run|preview|log STORE: the plan-alert routine as a product.
CPXComandoAdicional PXComandoAlertas(CLI::App& app);
// daemon STORE [--company C]...: the alert service until SIGTERM/SIGINT.
CPXComandoAdicional PXComandoDaemon(CLI::App& app);

class CQZArmazemSQL;
struct REG_QZDMA;
// The demo plant's JSON Lines with its dates placed around `hoje`: the file
// writes them relative to the day the demo is created, as ${D+3} (that day
// plus 3 days, "YYYY-MM-DD"), ${M-2} (its month less 2, "YYYY-MM": a date
// "${M-2}-16", a movement key "${M-2}/1") and ${A+10} (a year), so its
// periods, orders and due alerts keep their places in any year. Throws
// CPXErroEntrada.
std::string PXTextoDemoEm(const REG_QZDMA& hoje);
// After the demo plant is imported into the store at `caminhoArmazem`: its
// alert template and outbox folder beside the store. Throws CPXErroEntrada.
void PXPreparaDemoAlertas(CQZArmazemSQL& armazem, const std::string& caminhoArmazem);
// check STORE: SQLite's integrity check of a store.
CPXComandoAdicional PXComandoVerifica(CLI::App& app);
// types: every record type and what the command line does with it.
CPXComandoAdicional PXComandoTipos(CLI::App& app);
// messages [NUMBER] [--module M]: the texts of the numbered messages.
CPXComandoAdicional PXComandoMensagens(CLI::App& app);
// example TYPE: a complete, valid record of the type.
CPXComandoAdicional PXComandoExemplo(CLI::App& app);
