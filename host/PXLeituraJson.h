// The reader of JSON text given by the user (a record of save, a line of
// import): it builds the value within limits, so that no input, however
// large or deep, can exhaust the stack or the memory, and it refuses what the
// JSON library would let through silently: a NUL byte (the library takes it
// for the end of the text), U+0000 in a text (it would cut a CString), and a
// key repeated in one object (the library keeps the last one). The library's
// own error texts are English; they are told here in Portuguese.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "host/PXJson.h"

// What one record may hold. The defaults are far above any real record and
// far below what would hurt the process; the command line adjusts them.
struct CPXLimitesJson {
    static constexpr size_t kLinhaPadrao = size_t{16} << 20;  // bytes of one line (of import) or record (of save)
    static constexpr size_t kTextoPadrao = size_t{64} << 10;  // bytes of one text (a value or a key), in UTF-8
    static constexpr size_t kListaPadrao = 100000;            // entries of a list, members of an object
    // Records nest a few levels (record, list, entry, product key); this is
    // fixed, it keeps every recursive walk of a value shallow.
    static constexpr size_t kProfundidade = 32;

    size_t linha = kLinhaPadrao;
    size_t texto = kTextoPadrao;
    size_t lista = kListaPadrao;
};

// Bad JSON text: the field where it was found (a path such as
// "Item[2].Codigo", empty outside any object) and the line of the input.
// The reason (Windows-1252) ends with the column, counted in characters.
class CPXErroLeituraJson : public CPXErroJson {
public:
    CPXErroLeituraJson(std::string campo, const std::string& motivo, long linha)
        : CPXErroJson(std::move(campo), motivo), m_linha(linha) {}
    long Linha() const { return m_linha; }

private:
    long m_linha;
};

// Parses the one JSON value of `texto` (UTF-8). `primeiraLinha` is the line
// of the input where `texto` starts, for the error. Throws CPXErroLeituraJson.
pxjson::Json PXLeJson(std::string_view texto, const CPXLimitesJson& limites, long primeiraLinha = 1);

// The same reading, with the same checks and errors, without the tree of an
// object at the root: each of its members goes to `membros` as soon as it is
// read (a scalar as it comes, a list or object once whole). True when the
// root was an object; false when it was another value, which is dropped.
bool PXLeJsonMembros(std::string_view texto, const CPXLimitesJson& limites, long primeiraLinha,
                     pxjson::IPXMembrosJson& membros);
