#include "rules/PXTrataDadosTipoGasto.h"

#include "rules/PXConsisteCodigoNome.h"

namespace {
constexpr CPXCamposCodigoNome kCamposCodigoNome{.lCodigoNovo = 130, .lCodigoGravado = 131, .lNome = 132};
// A self-parent is reported on the parent field (disciplines report it on
// the name field).
constexpr long kCampoPai = 133;

// The fields come before the stored copy; the read key is unsigned.
const CPXGravacao<CQZDadosPX_TipoGasto> kGravacao{
    .le = PXLeGravado<&CQZAcessoManutencao::LeTipoGasto>,
    .lCampoAtualizado = kCamposCodigoNome.lCodigoNovo,
    .ordem = EPXOrdemGravacao::CAMPOS_ANTES,
    .arvore = CPXRegraArvore{kCampoPai, false, std::nullopt},
    .subarvore = PXSubarvorePorPai<CQZDadosPX_FiltroTipoGasto, &CQZAcessoManutencao::BuscaClassificacaoTipoGasto>,
};
}  // namespace

CPXTrataDadosTipoGasto::CPXTrataDadosTipoGasto(bool bInterfaceUsuario)
    : TPXTrataDadosRegistro(kGravacao, bInterfaceUsuario) {}

CQZDadosGT_Erro& CPXTrataDadosTipoGasto::ConsistirTipoGasto(CQZDadosPX_TipoGasto* pDados) {
    LimpaErro();
    return PXConsisteCadastroArvore(*this, *GetAcessoManutencao(), *pDados, kCamposCodigoNome, kCampoPai,
                                    &CQZAcessoManutencao::BuscaPonteirosTipoGasto);
}
