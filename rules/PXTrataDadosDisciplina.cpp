#include "rules/PXTrataDadosDisciplina.h"

#include "rules/PXConsisteCodigoNome.h"

namespace {
constexpr CPXCamposCodigoNome kCamposCodigoNome{.lCodigoNovo = 2, .lCodigoGravado = 3, .lNome = 4};
constexpr long kCampoPai = 5;
// A self-parent is reported on the name field (expense types report it on
// the parent field).
constexpr long kCampoPaiProprio = 4;

// The fields come before the stored copy; the read key is signed.
const CPXGravacao<CQZDadosPX_Disciplina> kGravacao{
    .le = PXLeGravado<&CQZAcessoManutencao::LeDisciplina>,
    .lCampoAtualizado = kCamposCodigoNome.lCodigoNovo,
    .ordem = EPXOrdemGravacao::CAMPOS_ANTES,
    .arvore = CPXRegraArvore{kCampoPai, false, std::nullopt},
    .subarvore = PXSubarvorePorPai<CQZDadosPX_FiltroDisciplina, &CQZAcessoManutencao::BuscaClassificacaoDisciplina>,
};
}  // namespace

CPXTrataDadosDisciplina::CPXTrataDadosDisciplina(bool bInterfaceUsuario)
    : TPXTrataDadosRegistro(kGravacao, bInterfaceUsuario) {}

CQZDadosGT_Erro& CPXTrataDadosDisciplina::ConsistirDisciplina(CQZDadosPX_Disciplina* pDados) {
    LimpaErro();
    return PXConsisteCadastroArvore(*this, *GetAcessoManutencao(), *pDados, kCamposCodigoNome, kCampoPaiProprio,
                                    &CQZAcessoManutencao::BuscaPonteirosDisciplina);
}
