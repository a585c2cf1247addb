// A store left behind by a writer that died mid-transaction: priorities A, B
// and C are saved, then a child process inserts in one transaction and is
// killed with SIGKILL after 2,000 inserts. Call it inside
// ASSERT_NO_FATAL_FAILURE.
#pragma once

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>

#include "store/QZArmazemSQL.h"

// A priority as the store tests save them.
inline CQZDadosPX_Prioridade PXPrioridadeTeste(const char* codigo) {
    CQZDadosPX_Prioridade p;
    p.SetCodigo(codigo).SetDescricao("Prioridade").SetPrioridadeBase(10);
    return p;
}

inline void PXDeixaEscritorMorto(const std::string& caminho) {
    {
        CQZArmazemSQL armazem(caminho);
        for (const char* c : {"A", "B", "C"}) {
            CQZDadosPX_Prioridade p = PXPrioridadeTeste(c);
            ASSERT_EQ(0, armazem.Insere(p)) << QZParaUtf8(armazem.GetErro().GetMensagem());
        }
    }
    int canal[2];
    ASSERT_EQ(0, pipe(canal));
    const pid_t filho = fork();
    ASSERT_GE(filho, 0);
    if (filho == 0) {
        close(canal[0]);
        CQZArmazemSQL armazem(caminho);
        const long hr = armazem.EmTransacao("Carga", [&]() -> long {
            for (long i = 0;; ++i) {
                CQZDadosPX_Prioridade p = PXPrioridadeTeste("NOVA");
                if (armazem.Insere(p) != 0) return 1;
                if (i == 2000 && write(canal[1], "x", 1) != 1) _exit(3);
            }
        });
        _exit(hr == 0 ? 0 : 4);
    }
    close(canal[1]);
    char sinal = 0;
    ASSERT_EQ(1, read(canal[0], &sinal, 1));
    close(canal[0]);
    ASSERT_EQ(0, kill(filho, SIGKILL));
    int estado = 0;
    ASSERT_EQ(filho, waitpid(filho, &estado, 0));
    ASSERT_TRUE(WIFSIGNALED(estado));
}
