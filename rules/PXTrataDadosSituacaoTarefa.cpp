#include "rules/PXTrataDadosSituacaoTarefa.h"

namespace {
constexpr long kCampoCodigo = 1;
constexpr long kCampoPaiProprio = 3;
constexpr long kCampoCodigoNovo = 130;
constexpr long kCampoCodigoGravado = 131;
constexpr long kCampoPai = 133;
constexpr uint8_t kTipoTarefa = 2;

constexpr CQZPontoRastro kRastroBuscaCodigo{84, "CPXTrataDadosSituacaoTarefa::OnTrataGravacao",
                                             "PXTrataDadosSituacaoTarefa"};

// A saved situation is checked in the tree before its fields: tree messages
// go to the parent field, a failed read or fetch to the code.
const CPXGravacao<CQZDadosPX_Situacao> kGravacao{
    .le = PXLeGravado<&CQZAcessoManutencao::LeSituacao>,
    .lCampoAtualizado = kCampoCodigo,
    .lCampoFalhaLeitura = kCampoCodigo,
    .arvore = CPXRegraArvore{kCampoPai, false, kCampoCodigo},
    .subarvore = PXSubarvorePorPai<CQZDadosPX_FiltroSituacao, &CQZAcessoManutencao::BuscaClassificacaoSituacao>,
};
}  // namespace

CPXTrataDadosSituacaoTarefa::CPXTrataDadosSituacaoTarefa(bool bInterfaceUsuario)
    : CPXTrataDadosSituacao(kGravacao, bInterfaceUsuario) {}

CQZDadosGT_Erro& CPXTrataDadosSituacaoTarefa::Consistir(CQZDadosPX_Situacao& dados, const CQZDadosPX_Situacao*,
                                                        IQZTrataInconsistencia*) {
    // Task situation codes are taken as typed, blanks included.
    const CString& codigo = dados.GetCodigo();
    if (codigo.IsEmpty())
        return dados.GetPosicao() == 0 ? SetAviso(PX_MSG(1), kCampoCodigoNovo)
                                       : SetAviso(PX_MSG(2), kCampoCodigoGravado);

    // A saved situation keeps its code unchecked.
    if (dados.GetPosicao() == 0 && VerificaCodigoLivre(codigo, kTipoTarefa, kRastroBuscaCodigo).GetTipoErro() != 0)
        return *this;

    if (ConsisteDescricao(dados).GetTipoErro() != 0) return *this;

    if (dados.GetPosicao() != 0 && dados.GetPosicao() == dados.GetPonteiroPai())
        return SetAviso(PX_MSG(99), kCampoPaiProprio);

    return ConsisteTipo(dados, kTipoTarefa);
}
