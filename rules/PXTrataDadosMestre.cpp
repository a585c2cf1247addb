#include "rules/PXTrataDadosMestre.h"

namespace {
constexpr long kCampoUsaDataVisualizacao = 1;

// The settings always exist for the store: before the first save it
// answers with an empty record, whose empty stamp matches a new one's. They
// have no field of their own to point the user at when stale.
const CPXGravacao<CQZDadosPX_Mestre> kGravacao{
    .le = PXLeGravado<&CQZAcessoManutencao::LeMestre>,
    .lCampoAtualizado = 0,
};
}  // namespace

CPXTrataDadosMestre::CPXTrataDadosMestre(bool bInterfaceUsuario) : TPXTrataDadosRegistro(kGravacao, bInterfaceUsuario) {}

CQZDadosGT_Erro& CPXTrataDadosMestre::ConsistirMestre(CQZDadosPX_Mestre* pDados) {
    LimpaErro();
    if (pDados->GetUsaDataVisualizacao() != 0 && pDados->GetMesAnoVisualizacao().EhVazio())
        return SetAviso(PX_MSG(85), kCampoUsaDataVisualizacao);
    return *this;
}
