// Criteria that several filters of the module share, and what they mean.
//
// Branch scope. A filter with SetTodasFiliais(1) searches every branch. A
// filter without that flag searches the one branch named by
// SetValorUnicoFilial, exactly (records of "no particular branch", 0, are
// not added to another branch's search). A filter naming no branch searches
// every branch: with no session branch in the data layer, a narrower default
// would have to invent one, and a silent narrowing would hide dependents.
//
// Periods. Movement records of every month live in one table and no filter
// names a month yet, so movement searches cover all periods whether or not
// SetTodosPeriodos is set.
#pragma once

#include "platform/QZRegistro.h"

// Classification types of tree records.
constexpr uint8_t PX_CLASSIFICACAO_ANALITICO = 1;  // a leaf: may have no children
constexpr uint8_t PX_CLASSIFICACAO_SINTETICO = 2;  // a group

// The parent criterion of a tree filter. A plain search returns the records
// whose parent is the given one; a classification search returns the subtree
// rooted at it, the record itself first.
inline void PXCondicaoPai(CQZCondicoes& c, const std::optional<uint32_t>& pai, bool classificacao) {
    if (classificacao && pai)
        c.Subarvore("PonteiroPai", *pai);
    else
        c.Igual("PonteiroPai", pai);
}

// The branch scope described above, on the record's PonteiroFilial.
inline void PXCondicaoFilial(CQZCondicoes& c, const std::optional<uint8_t>& todasFiliais,
                             const std::optional<uint16_t>& filial) {
    if (todasFiliais.value_or(0) == 0) c.Igual("PonteiroFilial", filial);
}
