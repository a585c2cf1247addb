// A store file in the test's temporary directory, removed with its WAL
// files before and after the test.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <string>

class PXArquivoTemporario {
public:
    explicit PXArquivoTemporario(const std::string& nome)
        : m_caminho(::testing::TempDir() + "qz_" + nome + "_" + std::to_string(getpid()) + ".db") {
        Remove();
    }
    ~PXArquivoTemporario() { Remove(); }
    PXArquivoTemporario(const PXArquivoTemporario&) = delete;
    PXArquivoTemporario& operator=(const PXArquivoTemporario&) = delete;
    const std::string& Caminho() const { return m_caminho; }

private:
    void Remove() {
        for (const char* sufixo : {"", "-wal", "-shm", "-journal"}) std::remove((m_caminho + sufixo).c_str());
    }
    std::string m_caminho;
};
