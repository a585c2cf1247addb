// The tree checks of the registers that form a tree of groups and leaves
// (disciplines, expense types, technicians, task situations, tasks, custom
// fields, plans), written once.
//
// When a saved record is changed, two changes would break its tree:
//  - message 98: a group that still has descendants becomes a leaf
//    (classification type 1);
//  - message 99: the record is moved under one of its own descendants.
// Both need the stored record's subtree, which is fetched only when the
// stored copy is a group: a stored leaf has no descendants.
//
// What differs between the registers is data, in CPXRegraArvore: the field
// code of the two messages, whether the new parent is also compared with
// the record itself (the subtree's first entry), and the field code given
// to a failed fetch. How the subtree is fetched (filter, operation, tracing)
// is the caller's CPXBuscaSubarvore.
//
// Use, in a save hook, after the stored copy was read and found current:
//
//   const CPXRegraArvore kArvore{5, false, std::nullopt};
//   auto busca = [&](CQZListaClassificacao* pLista) {
//       CQZDadosPX_FiltroDisciplina filtro;
//       filtro.SetPonteiroPai(gravado.GetPonteiro());
//       return GetAcessoManutencao()->BuscaClassificacaoDisciplina(filtro, pLista);
//   };
//   if (PXVerificaArvore(*this, *GetAcessoManutencao(), kArvore, gravado, dados, busca).GetTipoErro())
//       return *this;
#pragma once

#include <cstdint>
#include <functional>
#include <optional>

#include "platform/QZAcesso.h"

struct CPXRegraArvore {
    // Field code of messages 98 and 99.
    long lCampo = 0;
    // true: a new parent equal to the record itself is caught as well
    // (message 99), for registers whose field checks lack a self-parent test.
    bool bComparaProprio = false;
    // Field code set on a failed fetch; empty keeps the service's own.
    std::optional<long> lCampoFalha;
};

// Fills the list with the stored record's subtree, the record itself first
// and then all its descendants; returns the data service's result code.
using CPXBuscaSubarvore = std::function<long(CQZListaClassificacao* pLista)>;

// Checks the move of a saved record from its stored copy to the incoming
// one. `erro` is the caller's error record: left as it is when the change
// is allowed; otherwise it holds message 98 or 99 of module 28 on the rule's
// field, or the error of `servico` (after a failed fetch) with the rule's
// failure field. Check GetTipoErro afterwards.
CQZDadosGT_Erro& PXVerificaArvore(CQZDadosGT_Erro& erro, const CQZAcessoManutencao& servico,
                                  const CPXRegraArvore& regra, uint8_t ucTipoGravado, uint8_t ucTipoNovo,
                                  uint32_t ulPaiNovo, const CPXBuscaSubarvore& busca);

// The same, reading GetTipoClassificacao and GetPonteiroPai of the records.
template <class R>
CQZDadosGT_Erro& PXVerificaArvore(CQZDadosGT_Erro& erro, const CQZAcessoManutencao& servico,
                                  const CPXRegraArvore& regra, const R& gravado, const R& novo,
                                  const CPXBuscaSubarvore& busca) {
    return PXVerificaArvore(erro, servico, regra, gravado.GetTipoClassificacao(), novo.GetTipoClassificacao(),
                            novo.GetPonteiroPai(), busca);
}
