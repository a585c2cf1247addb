#include "permissions/PXDadosPermissaoUsuario.h"

namespace {

struct VisitanteZera {
    void Campo(const char*, int& flag, unsigned) { flag = 0; }
};

struct VisitanteAlguma {
    bool alguma = false;
    void Campo(const char*, const int& flag, unsigned) { alguma = alguma || flag != 0; }
};

}  // namespace

void CPXDadosPermissaoUsuario::OnLimpar() {
    VisitanteZera v;
    VisitaCampos(v);
}

int CPXDadosPermissaoUsuario::GetTemAlgumaPermissao() const {
    VisitanteAlguma v;
    VisitaCampos(v);
    return v.alguma ? 1 : 0;
}
