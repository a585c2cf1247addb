// pxlreg daemon STORE [--company C]...: the alert service. One routine per
// company at the interval it asks for; SIGTERM or SIGINT stop it, letting a
// message being sent finish. Logs are JSON lines on standard output (the
// routine's own lines go to PXLREG_LOG, or standard error).
#include <signal.h>

#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>

#include "host/PXAgendador.h"
#include "host/PXComandosAdicionais.h"

namespace {

struct OpcoesDaemon {
    std::string armazem;
    std::vector<std::string> empresas;
};

int Daemon(const OpcoesDaemon& o, std::ostream& saida) {
    // The signals are taken by this thread alone: the companies' threads,
    // started after, inherit the mask.
    sigset_t sinais, anterior;
    sigemptyset(&sinais);
    sigaddset(&sinais, SIGTERM);
    sigaddset(&sinais, SIGINT);
    if (pthread_sigmask(SIG_BLOCK, &sinais, &anterior) != 0) {
        std::cerr << "pxlreg: erro: não foi possível bloquear os sinais\n";
        return 2;
    }
    std::vector<std::string> empresas = o.empresas.empty() ? std::vector<std::string>{"EMPRESA"} : o.empresas;
    CPXAgendador agendador(o.armazem, empresas, [&saida](const std::string& linha) {
        saida << linha << "\n";
        saida.flush();
    });
    int codigo = 0;
    if (agendador.Inicia()) {
        int sinal = 0;
        sigwait(&sinais, &sinal);
        saida << nlohmann::ordered_json{{"evento", "parada"}, {"sinal", sinal == SIGTERM ? "SIGTERM" : "SIGINT"}}.dump()
              << "\n";
        agendador.Para();
    } else {
        codigo = 2;
    }
    pthread_sigmask(SIG_SETMASK, &anterior, nullptr);
    return codigo;
}

}  // namespace

CPXComandoAdicional PXComandoDaemon(CLI::App& app) {
    auto o = std::make_shared<OpcoesDaemon>();
    auto* daemon = app.add_subcommand("daemon", QZParaUtf8(CString("o serviço de alertas: uma rotina por empresa até SIGTERM")));
    daemon->add_option("STORE", o->armazem, QZParaUtf8(CString("arquivo do armazém")))->required();
    daemon->add_option("--company", o->empresas, QZParaUtf8(CString("empresa (repetível; EMPRESA quando nenhuma)")));
    return {daemon, [o](bool, std::ostream& saida, std::ostream&) { return Daemon(*o, saida); }};
}
