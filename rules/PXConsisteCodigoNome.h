// The checks that open the field checks of the tree registers (disciplines,
// expense types, technicians, tasks, plans), written once: code and name
// trimmed and written back; a blank code (message 1 for a new record, 2 for a
// saved one), a code that another record holds anywhere in the table (10), a
// blank name (4).
#pragma once

#include "platform/QZAcesso.h"

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

// `filtro` comes with the register's own scope (technicians: all branches);
// the code is set here. A failed search passes the service's error on
// without a field. Check GetTipoErro of `erro` afterwards.
template <class R, class Filtro, class Lista>
CQZDadosGT_Erro& PXConsisteCodigoNome(CQZDadosGT_Erro& erro, CQZAcessoManutencao& servico, R& dados,
                                      const CPXCamposCodigoNome& campos, Filtro filtro,
                                      long (CQZAcessoManutencao::*busca)(const Filtro&, Lista&)) {
    CString codigo = dados.GetCodigo();
    dados.SetCodigo(codigo.Trim());
    CString nome = dados.GetNome();
    dados.SetNome(nome.Trim());

    if (codigo.IsEmpty())
        return dados.GetPonteiro() == 0 ? erro.SetAviso(PX_MSG(1), campos.lCodigoNovo)
                                        : erro.SetAviso(PX_MSG(2), campos.lCodigoGravado);
    filtro.SetCodigo(codigo);
    Lista aPonteiros;
    if ((servico.*busca)(filtro, aPonteiros) != 0) return erro.SetErro(servico.GetErro());
    if (PXOutroPonteiro(aPonteiros, dados.GetPonteiro())) return erro.SetAviso(PX_MSG(10), campos.lCodigoNovo);

    if (nome.IsEmpty()) return erro.SetAviso(PX_MSG(4), campos.lNome);
    return erro;
}

// The code and name checks of a register whose records may not name
// themselves as their parent: a saved record that does gets message 99 on
// lCampoPaiProprio.
template <class R, class Filtro, class Lista>
CQZDadosGT_Erro& PXConsisteCadastroArvore(CQZDadosGT_Erro& erro, CQZAcessoManutencao& servico, R& dados,
                                          const CPXCamposCodigoNome& campos, long lCampoPaiProprio,
                                          long (CQZAcessoManutencao::*busca)(const Filtro&, Lista&)) {
    // Codes are unique in the whole table, wherever the record sits in the tree.
    if (PXConsisteCodigoNome(erro, servico, dados, campos, Filtro(), busca).GetTipoErro() != 0) return erro;
    if (dados.GetPonteiro() != 0 && dados.GetPonteiro() == dados.GetPonteiroPai())
        return erro.SetAviso(PX_MSG(99), lCampoPaiProprio);
    return erro;
}
