#include "files/PXCampos.h"

namespace {

struct CamposComponente {
    long lCodigo;
    long lQuantidade;
};

// Index: the component kind. Kind 0 and unknown kinds name no field.
constexpr CamposComponente kCampos[] = {{0, 0}, {75, 76}, {78, 79}, {81, 82}};

const CamposComponente& CamposDe(uint8_t ucTipo) {
    return ucTipo < sizeof(kCampos) / sizeof(kCampos[0]) ? kCampos[ucTipo] : kCampos[0];
}

}  // namespace

long CPXCampos::GetCampoTarefaComponenteCodigo(uint8_t ucTipoComponente) { return CamposDe(ucTipoComponente).lCodigo; }

long CPXCampos::GetCampoTarefaComponenteQuantidade(uint8_t ucTipoComponente) {
    return CamposDe(ucTipoComponente).lQuantidade;
}
