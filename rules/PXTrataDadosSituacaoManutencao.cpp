#include "rules/PXTrataDadosSituacaoManutencao.h"

namespace {
constexpr long kCampoCodigo = 1;
constexpr long kCampoSituacaoBase = 3;
constexpr uint8_t kTipoManutencao = 1;

constexpr CQZPontoRastro kRastroBuscaCodigo{60, "CPXTrataDadosSituacaoManutencao::OnTrataGravacao",
                                             "PXTrataDadosSituacaoManutencao"};

const CPXGravacao<CQZDadosPX_Situacao> kGravacao{
    .le = PXLeGravado<&CQZAcessoManutencao::LeSituacao>,
    .lCampoAtualizado = kCampoCodigo,
    .lCampoFalhaLeitura = kCampoCodigo,
};

// The single-bit base situations of an order: open, started, finished,
// cancelled, in progress, rescheduled.
bool EhSituacaoBase(uint8_t situacao) {
    switch (situacao) {
        case 2: case 4: case 8: case 16: case 32: case 64: return true;
        default: return false;
    }
}
}  // namespace

CPXTrataDadosSituacaoManutencao::CPXTrataDadosSituacaoManutencao(bool bInterfaceUsuario)
    : CPXTrataDadosSituacao(kGravacao, bInterfaceUsuario) {}

CQZDadosGT_Erro& CPXTrataDadosSituacaoManutencao::Consistir(CQZDadosPX_Situacao& dados,
                                                            const CQZDadosPX_Situacao* pGravado,
                                                            IQZTrataInconsistencia*) {
    // Orders already carry the base situation a saved one stood for.
    if (pGravado && dados.GetSituacaoBase() != pGravado->GetSituacaoBase())
        return SetAviso(PX_MSG(123), kCampoCodigo);

    CString codigo = dados.GetCodigo();
    dados.SetCodigo(codigo.Trim());
    if (codigo.IsEmpty()) return SetAviso(PX_MSG(1), kCampoCodigo);

    // A saved situation keeps its code unchecked.
    if (dados.GetPosicao() == 0 && VerificaCodigoLivre(codigo, kTipoManutencao, kRastroBuscaCodigo).GetTipoErro() != 0)
        return *this;

    if (ConsisteDescricao(dados).GetTipoErro() != 0) return *this;
    if (ConsisteTipo(dados, kTipoManutencao).GetTipoErro() != 0) return *this;

    if (dados.GetSituacaoBase() == 0) return SetAviso(PX_MSG(124), kCampoSituacaoBase);
    if (!EhSituacaoBase(dados.GetSituacaoBase())) return SetAviso(PX_MSG(125), kCampoSituacaoBase);
    return *this;
}
