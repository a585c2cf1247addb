#include "store/QZInjetorFalhas.h"

CQZInjetorFalhas& CQZInjetorFalhas::FalhaEm(const std::string& operacao, long chamada, long hr, const CString& mensagem) {
    m_regras.push_back({operacao, chamada, false, hr, mensagem, false});
    return *this;
}

CQZInjetorFalhas& CQZInjetorFalhas::FalhaSempre(const std::string& operacao, long chamada, long hr,
                                                const CString& mensagem) {
    m_regras.push_back({operacao, chamada, true, hr, mensagem, false});
    return *this;
}

void CQZInjetorFalhas::Limpa() { m_regras.clear(); }

long CQZInjetorFalhas::Chamadas(const std::string& operacao) const {
    auto it = m_chamadas.find(operacao);
    return it == m_chamadas.end() ? 0 : it->second;
}

void CQZInjetorFalhas::ZeraContagem() {
    m_chamadas.clear();
    m_historico.clear();
    m_total = 0;
}

long CQZInjetorFalhas::AntesDaOperacao(const char* operacao, CQZDadosGT_Erro& erro) {
    const long n = ++m_chamadas[operacao];
    ++m_total;
    m_historico.emplace_back(operacao);
    for (Regra& r : m_regras) {
        const bool todas = r.operacao == "*";
        if (!todas && r.operacao != operacao) continue;
        const long numero = todas ? m_total : n;
        bool falha;
        if (r.sempre)
            falha = numero >= r.chamada;
        else
            falha = !r.usada && (r.chamada == 0 || numero == r.chamada);
        if (!falha) continue;
        r.usada = true;
        erro.SetErro(r.hr, QZ_MODULO_CONEXAO, 99, "%s (%s)", r.mensagem.GetString(), operacao);
        return r.hr;
    }
    return 0;
}
