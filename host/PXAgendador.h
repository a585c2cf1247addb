// The scheduler of `pxlreg daemon`: one alert routine per company, each
// created through the exported function and run on a thread of its own at
// the interval it asks for, so runs of one company never overlap. A run
// that throws is logged (code, id, text) and the next one proceeds.
//
// Stopping: Para() wakes every thread. A run under way is cut at its next
// data-service call (the message being sent finishes; the run fails and
// stamps nothing, so its alerts are sent again at the next start).
#pragma once

#include <atomic>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "store/QZFabricaArmazemSQL.h"

class CPXAgendador : private IQZGanchoAcesso {
public:
    // `log` receives one JSON line (UTF-8, without line break) per event;
    // it is called from the companies' threads, one call at a time.
    CPXAgendador(std::string armazem, std::vector<std::string> empresas, std::function<void(const std::string&)> log);
    ~CPXAgendador() override;
    CPXAgendador(const CPXAgendador&) = delete;
    CPXAgendador& operator=(const CPXAgendador&) = delete;

    // Registers the companies and starts their threads; false (with the
    // reason logged) when the store cannot be opened.
    bool Inicia();
    // Asks every thread to stop and waits for them.
    void Para();
    // Runs every `ms` instead of the routine's own interval (tests); before Inicia.
    void DefineIntervalo(int ms) { m_intervaloMs = ms; }
    // Runs finished so far, all companies together (tests).
    long Execucoes() const { return m_execucoes.load(); }

private:
    long AntesDaOperacao(const char* operacao, CQZDadosGT_Erro& erro) override;
    void Laco(const std::string& empresa);
    void Registra(const std::string& empresa, const char* evento, const std::string& extraJson = {});

    std::string m_armazem;
    std::vector<std::string> m_empresas;
    std::function<void(const std::string&)> m_log;
    std::shared_ptr<CQZFabricaArmazemSQL> m_fabrica;
    std::vector<std::thread> m_threads;
    std::mutex m_mutex;
    std::condition_variable m_cv;
    std::atomic<bool> m_parar{false};
    std::atomic<long> m_execucoes{0};
    int m_intervaloMs = 0;
    std::mutex m_mutexLog;
};
