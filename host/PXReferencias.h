// Pointers that name no record are bad input. The screens only offer
// records that exist, so the rules never check this; the command line does,
// from the targets the record declarations give (QZ_REF).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/QZRegistro.h"

class CQZArmazemSQL;
class IPXTipoHost;

// A pointer a record holds, 0s left out.
struct CPXReferencia {
    std::string campo;  // "PonteiroFilial", or in a list "Disciplina[2].PonteiroDisciplina"
    const char* alvo;   // the record type it names
    int64_t valor;
};

// Every non-zero pointer of a record, its lists' (at any depth) included.
struct PXVisitanteReferencias {
    std::vector<CPXReferencia>& saida;
    std::string prefixo;
    template <class T>
    void Campo(const char* nome, const T& v, QZOpcoes opcoes) {
        if constexpr (std::is_integral_v<T>)
            if (opcoes.alvo && v != 0) saida.push_back({prefixo + nome, opcoes.alvo, static_cast<int64_t>(v)});
    }
    template <class E>
    void Lista(const char* nome, const std::vector<E>& lista) {
        for (size_t i = 0; i < lista.size(); ++i) {
            PXVisitanteReferencias v{saida, prefixo + nome + "[" + std::to_string(i + 1) + "]."};
            lista[i].VisitaCampos(v);
        }
    }
};

// Save: throws CPXErroEntrada naming the first pointer of `reg` that names
// no stored record (field, value and list entry).
void PXConfereReferencias(CQZArmazemSQL& armazem, const IPXTipoHost& tipo, const TQZBaseParaDados& reg);

// Import, after its records are in and before it commits, so records may
// refer to each other in any order: throws CPXErroEntrada naming the first
// pointer of the store that names no record (the transaction rolls back).
void PXConfereReferenciasImportadas(CQZArmazemSQL& armazem);
