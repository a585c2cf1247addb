#include "rules/PXTrataDadosMestre.h"

namespace {
constexpr long kCampoUsaDataVisualizacao = 1;
}  // namespace

CQZDadosGT_Erro& CPXTrataDadosMestre::OnTrataGravacao(TQZBaseParaDados* pDados, IQZTrataInconsistencia*) {
    LimpaErro();
    auto* pMestre = static_cast<CQZDadosPX_Mestre*>(pDados);

    // The settings always exist for the store: before the first save it
    // answers with an empty record, whose empty stamp matches a new one's.
    CQZDadosPX_Mestre gravado;
    if (GetAcessoManutencao()->LeMestre(&gravado, 0) != 0) return PassaErroServico(GetAcessoManutencao()->GetErro());

    // The settings have no field of their own to point the user at.
    if (ValidaRegistroAtualizado(pMestre->GetDmaHmsGravacao(), gravado.GetDmaHmsGravacao(), 0).GetTipoErro() != 0)
        return *this;

    return ConsistirMestre(pMestre);
}

CQZDadosGT_Erro& CPXTrataDadosMestre::ConsistirMestre(CQZDadosPX_Mestre* pDados) {
    LimpaErro();
    if (pDados->GetUsaDataVisualizacao() != 0 && pDados->GetMesAnoVisualizacao().EhVazio())
        return SetAviso(QZ_MODULO_PX, 85, kCampoUsaDataVisualizacao);
    return *this;
}
