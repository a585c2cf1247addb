// The classification part of the module's tree filters (tasks, custom
// fields): the enterprise classification filter plus the root of the
// subtree wanted.
#pragma once

#include "platform/records/GTRecurso.h"

class CQZDadosPX_FiltroClassificacao : public CQZDadosGT_FiltroClassificacao {
public:
    auto& SetPonteiroInicial(uint32_t ulPonteiro) {
        m_ulPonteiroInicial = ulPonteiro;
        return *this;
    }
    const std::optional<uint32_t>& GetPonteiroInicial() const { return m_ulPonteiroInicial; }

    // A classification search returns the subtree rooted at the initial
    // record (the record itself first) through the register's parent field;
    // a plain search, that record's direct children.
    void MontaCondicoes(CQZCondicoes& c, const char* campoPai, bool classificacao) const {
        CQZDadosGT_FiltroClassificacao::MontaCondicoes(c);
        if (classificacao && m_ulPonteiroInicial)
            c.Subarvore(campoPai, *m_ulPonteiroInicial);
        else
            c.Igual(campoPai, m_ulPonteiroInicial);
    }

private:
    std::optional<uint32_t> m_ulPonteiroInicial;
};

// The classification criterion of a filter, created on first use: what a
// filter's GetFiltroClassificacao gives.
inline CQZDadosPX_FiltroClassificacao& PXFiltroClassificacao(std::optional<CQZDadosPX_FiltroClassificacao>& criterio) {
    if (!criterio) criterio.emplace();
    return *criterio;
}
