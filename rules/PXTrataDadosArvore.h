// The save hook of the tree registers whose saved records are checked for
// their place in the tree before their fields (tasks, custom fields, plans):
// a new record goes straight to the field checks; a saved one is read, must
// be current, may move only where the tree allows, and is then checked.
#pragma once

#include "rules/PXConsisteCodigoNome.h"
#include "rules/PXTrataDados.h"
#include "rules/PXVerificaArvore.h"

class CPXTrataDadosArvore : public CPXTrataDados {
protected:
    using CPXTrataDados::CPXTrataDados;

    // Code and name checks (PXConsisteCodigoNome) over the whole table.
    template <class R, class Filtro, class Lista>
    CQZDadosGT_Erro& ConsistirCodigoNome(R& dados, const CPXCamposCodigoNome& campos,
                                         long (CQZAcessoManutencao::*busca)(const Filtro&, Lista&)) {
        return PXConsisteCodigoNome(*this, *GetAcessoManutencao(), dados, campos, Filtro(), busca);
    }

    // Runs on the caller's record itself: the field checks write the trimmed
    // code and name back before testing them, so a record refused by a later
    // check comes back trimmed too (a group is normalised only when it
    // passes). le(gravado) reads the stored copy; busca(gravado, pLista)
    // fetches its subtree; consistir(dados) runs the field checks. Each
    // returns like the operation it wraps. A failed read or fetch passes the
    // service's error on without a field; a stale record gets message 3 on
    // lCampoAtualizado. ulPaiNovo is the incoming parent (or class) key.
    template <class R, class Le, class Busca, class Consistir>
    CQZDadosGT_Erro& TrataGravacaoArvore(R& dados, uint32_t ulPaiNovo, long lCampoAtualizado,
                                         const CPXRegraArvore& regra, Le&& le, Busca&& busca, Consistir&& consistir) {
        LimpaErro();
        return VerificaGravacaoArvore(dados, ulPaiNovo, lCampoAtualizado, regra, le, busca, consistir);
    }

private:
    template <class R, class Le, class Busca, class Consistir>
    CQZDadosGT_Erro& VerificaGravacaoArvore(R& dados, uint32_t ulPaiNovo, long lCampoAtualizado,
                                            const CPXRegraArvore& regra, Le& le, Busca& busca, Consistir& consistir) {
        if (dados.GetPonteiro() == 0) return consistir(dados);

        R gravado;
        if (le(gravado) != 0) return PassaErroServico(GetAcessoManutencao()->GetErro());
        if (ValidaRegistroAtualizado(gravado.GetDmaHmsGravacao(), dados.GetDmaHmsGravacao(), lCampoAtualizado)
                .GetTipoErro() != 0)
            return *this;
        auto buscaGravado = [&](CQZListaClassificacao* pLista) { return busca(gravado, pLista); };
        if (PXVerificaArvore(*this, *GetAcessoManutencao(), regra, gravado.GetTipoClassificacao(),
                             dados.GetTipoClassificacao(), ulPaiNovo, buscaGravado)
                .GetTipoErro() != 0)
            return *this;
        return consistir(dados);
    }
};
