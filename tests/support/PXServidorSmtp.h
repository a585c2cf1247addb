// A real SMTP server on 127.0.0.1 for the tests (tests/mail/servidor_smtp.py
// on aiosmtpd), started on a free port and stopped with the object.
#pragma once

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

extern char** environ;

class PXServidorSmtp {
public:
    // `argumentos`: "--recusa-rcpt", "554 ..." or "--recusa-data", "451 ...".
    explicit PXServidorSmtp(const std::vector<std::string>& argumentos = {}) {
        int entrada[2], saida[2];
        if (pipe2(entrada, O_CLOEXEC) != 0) return;
        if (pipe2(saida, O_CLOEXEC) != 0) {
            close(entrada[0]);
            close(entrada[1]);
            return;
        }
        std::string script = std::string(PXLREG_FONTES) + "/tests/mail/servidor_smtp.py";
        std::vector<std::string> args = {"/usr/bin/python3", script};
        args.insert(args.end(), argumentos.begin(), argumentos.end());
        std::vector<char*> argv;
        for (auto& a : args) argv.push_back(a.data());
        argv.push_back(nullptr);
        posix_spawn_file_actions_t acoes;
        posix_spawn_file_actions_init(&acoes);
        posix_spawn_file_actions_adddup2(&acoes, entrada[0], 0);
        posix_spawn_file_actions_adddup2(&acoes, saida[1], 1);
        const int rc = posix_spawn(&m_pid, argv[0], &acoes, nullptr, argv.data(), environ);
        posix_spawn_file_actions_destroy(&acoes);
        close(entrada[0]);
        close(saida[1]);
        m_escrita = entrada[1];
        m_leitura = saida[0];
        if (rc != 0) {
            m_pid = -1;
            return;
        }
        if (auto primeira = ProximaLinha(15)) m_porta = primeira->value("porta", 0);
    }
    ~PXServidorSmtp() { Encerra(); }
    PXServidorSmtp(const PXServidorSmtp&) = delete;
    PXServidorSmtp& operator=(const PXServidorSmtp&) = delete;

    int Porta() const { return m_porta; }
    std::string Url() const { return "smtp://127.0.0.1:" + std::to_string(m_porta); }

    // The next message the server accepted, waiting at most `segundos`.
    std::optional<nlohmann::json> Recebida(int segundos = 10) { return ProximaLinha(segundos); }

    // Stops the server; the messages it accepted and were not taken yet.
    std::vector<nlohmann::json> Encerra() {
        std::vector<nlohmann::json> resto;
        if (m_escrita >= 0) {
            close(m_escrita);
            m_escrita = -1;
        }
        if (m_leitura >= 0) {
            while (auto l = ProximaLinha(10)) resto.push_back(*l);
            close(m_leitura);
            m_leitura = -1;
        }
        if (m_pid > 0) {
            int status = 0;
            waitpid(m_pid, &status, 0);
            m_pid = -1;
        }
        return resto;
    }

private:
    std::optional<nlohmann::json> ProximaLinha(int segundos) {
        const auto limite = std::chrono::steady_clock::now() + std::chrono::seconds(segundos);
        for (;;) {
            if (auto fim = m_buffer.find('\n'); fim != std::string::npos) {
                std::string linha = m_buffer.substr(0, fim);
                m_buffer.erase(0, fim + 1);
                return nlohmann::json::parse(linha);
            }
            if (m_leitura < 0) return std::nullopt;
            const auto resta = std::chrono::duration_cast<std::chrono::milliseconds>(limite - std::chrono::steady_clock::now());
            if (resta.count() <= 0) return std::nullopt;
            pollfd p{m_leitura, POLLIN, 0};
            if (poll(&p, 1, static_cast<int>(resta.count())) <= 0) continue;
            char buf[4096];
            const ssize_t n = read(m_leitura, buf, sizeof buf);
            if (n <= 0) return std::nullopt;
            m_buffer.append(buf, static_cast<size_t>(n));
        }
    }

    pid_t m_pid = -1;
    int m_escrita = -1;
    int m_leitura = -1;
    int m_porta = 0;
    std::string m_buffer;
};
