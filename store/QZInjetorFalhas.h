// Makes chosen operations of a store fail: a named operation (or "*" for
// any), on every call or from its Nth call, once or from then on, with a
// chosen result code and message. Also counts the calls of each operation.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "store/QZArmazemSQL.h"

class CQZInjetorFalhas : public IQZGanchoAcesso {
public:
    struct Regra {
        std::string operacao;      // "LePrioridade", or "*" for every operation
        long chamada = 0;          // 1-based call of that operation; 0 = any call
        bool sempre = false;       // keep failing after the first failure
        long hr = QZ_E_FALHA_INJETADA;
        CString mensagem = "Falha injetada.";
        bool usada = false;
    };

    // The operation fails at its Nth call (0: at its next call).
    CQZInjetorFalhas& FalhaEm(const std::string& operacao, long chamada = 0, long hr = QZ_E_FALHA_INJETADA,
                              const CString& mensagem = "Falha injetada.");
    // The operation fails from its Nth call on (0: from now on).
    CQZInjetorFalhas& FalhaSempre(const std::string& operacao, long chamada = 0, long hr = QZ_E_FALHA_INJETADA,
                                  const CString& mensagem = "Falha injetada.");
    void Limpa();

    long Chamadas(const std::string& operacao) const;
    long TotalChamadas() const { return m_total; }
    // The names of the operations called, in order.
    const std::vector<std::string>& Historico() const { return m_historico; }
    void ZeraContagem();

    long AntesDaOperacao(const char* operacao, CQZDadosGT_Erro& erro) override;

private:
    std::vector<Regra> m_regras;
    std::map<std::string, long> m_chamadas;
    std::vector<std::string> m_historico;
    long m_total = 0;
};
