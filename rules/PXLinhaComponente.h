// What the component lines of tasks and plans share: the messages of each
// kind of list and the search for a product already in the list.
#pragma once

#include <cstdint>
#include <vector>

#include "platform/QZDatas.h"
#include "platform/QZMensagem.h"

// Messages of a line by the kind of its list (1, 2, 3). Kinds 1 and 2 report
// a repeated product with each other's order (47, 46) against their
// no-product messages (36, 37): kept as the module's message table has it.
struct CPXMensagensComponente {
    CQZMensagem<0> semProduto;
    CQZMensagem<0> repetido;
};

// Null for a kind outside 1 to 3.
inline const CPXMensagensComponente* PXMensagensComponente(uint8_t ucTipo) {
    static constexpr CPXMensagensComponente kMensagens[] = {
        {PX_MSG(36), PX_MSG(47)}, {PX_MSG(37), PX_MSG(46)}, {PX_MSG(38), PX_MSG(48)}};
    return ucTipo >= 1 && ucTipo <= 3 ? &kMensagens[ucTipo - 1] : nullptr;
}

// Does a line of the list other than the one at `index` (the line being
// changed; any value outside the list when adding) name the same position,
// all its parts?
template <class Linha, class Posicao>
bool PXPosicaoRepetida(const std::vector<Linha>& lista, int64_t index, const _REG_POSICAO_PRODUTOPS& posicao,
                       Posicao posicaoDe) {
    for (size_t i = 0; i < lista.size(); ++i)
        if (static_cast<int64_t>(i) != index && posicaoDe(lista[i]) == posicao) return true;
    return false;
}
