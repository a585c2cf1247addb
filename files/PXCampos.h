// Field ids of task-component lines, for the error record's field code, so
// that the user interface focuses the column in error.
#pragma once

#include <cstdint>

class CPXCampos {
public:
    CPXCampos() = default;
    CPXCampos(const CPXCampos&) = default;
    CPXCampos& operator=(const CPXCampos&) = default;
    virtual ~CPXCampos() = default;

    // By the component's kind (1, 2 or 3); 0 for any other kind.
    static long GetCampoTarefaComponenteCodigo(uint8_t ucTipoComponente);
    static long GetCampoTarefaComponenteQuantidade(uint8_t ucTipoComponente);
};
