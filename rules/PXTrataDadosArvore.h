// The save hook of the tree registers whose saved records are checked for
// their place in the tree before their fields (tasks, custom fields, plans):
// a new record goes straight to the field checks; a saved one is read, must
// be current, may move only where the tree allows, and is then checked.
#pragma once

#include "rules/PXTrataDados.h"
#include "rules/PXVerificaArvore.h"

// Does a code search find a record other than the one being saved?
template <class Lista>
bool PXOutroPonteiro(const Lista& aPonteiros, uint32_t ulProprio) {
    for (uint32_t ulPonteiro : aPonteiros)
        if (ulPonteiro != ulProprio) return true;
    return false;
}

// Field codes of the code and name checks.
struct CPXCamposCodigoNome {
    long lCodigoNovo;     // code of a new record; also a code another record holds
    long lCodigoGravado;  // code of a saved record
    long lNome;
};

class CPXTrataDadosArvore : public CPXTrataDados {
protected:
    using CPXTrataDados::CPXTrataDados;

    // The checks that open a record's field checks: code and name trimmed and
    // written back; a blank code (message 1 for a new record, 2 for a saved
    // one), a code that another record holds anywhere in the table (10,
    // searched with `busca`), a blank name (4).
    template <class R, class Filtro, class Lista>
    CQZDadosGT_Erro& ConsistirCodigoNome(R& dados, const CPXCamposCodigoNome& campos,
                                         long (CQZAcessoManutencao::*busca)(const Filtro&, Lista&)) {
        CString codigo = dados.GetCodigo();
        dados.SetCodigo(codigo.Trim());
        CString nome = dados.GetNome();
        dados.SetNome(nome.Trim());

        if (codigo.IsEmpty())
            return dados.GetPonteiro() == 0 ? SetAviso(QZ_MODULO_PX, 1, campos.lCodigoNovo)
                                            : SetAviso(QZ_MODULO_PX, 2, campos.lCodigoGravado);
        Filtro filtro;
        filtro.SetCodigo(codigo);
        Lista aPonteiros;
        if ((GetAcessoManutencao()->*busca)(filtro, aPonteiros) != 0)
            return PassaErroServico(GetAcessoManutencao()->GetErro());
        if (PXOutroPonteiro(aPonteiros, dados.GetPonteiro())) return SetAviso(QZ_MODULO_PX, 10, campos.lCodigoNovo);

        if (nome.IsEmpty()) return SetAviso(QZ_MODULO_PX, 4, campos.lNome);
        return *this;
    }

    // Runs on a working copy of `dados`, which takes the copy (trimmed,
    // normalised) only when the record passes. le(gravado) reads the stored
    // copy; busca(gravado, pLista) fetches its subtree; consistir(copia) runs
    // the field checks. Each returns like the operation it wraps. A failed
    // read or fetch passes the service's error on without a field; a stale
    // record gets message 3 on lCampoAtualizado. ulPaiNovo is the incoming
    // parent (or class) key.
    template <class R, class Le, class Busca, class Consistir>
    CQZDadosGT_Erro& TrataGravacaoArvore(R& dados, uint32_t ulPaiNovo, long lCampoAtualizado,
                                         const CPXRegraArvore& regra, Le&& le, Busca&& busca, Consistir&& consistir) {
        LimpaErro();
        R copia(dados);
        if (VerificaGravacaoArvore(copia, ulPaiNovo, lCampoAtualizado, regra, le, busca, consistir).EhErroNenhum())
            dados = copia;
        return *this;
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
