#include "rules/PXTrataDadosSituacaoManutencao.h"

namespace {
constexpr long kCampoSituacaoBase = 3;
constexpr uint8_t kTipoManutencao = 1;

// The single-bit base situations of an order: open, started, finished,
// cancelled, in progress, rescheduled.
bool EhSituacaoBase(uint8_t situacao) {
    switch (situacao) {
        case 2: case 4: case 8: case 16: case 32: case 64: return true;
        default: return false;
    }
}
}  // namespace

CQZDadosGT_Erro& CPXTrataDadosSituacaoManutencao::OnTrataGravacao(TQZBaseParaDados* pDados,
                                                                  IQZTrataInconsistencia*) {
    LimpaErro();
    auto& dados = static_cast<CQZDadosPX_Situacao&>(*pDados);

    if (dados.GetPosicao() != 0) {
        CQZDadosPX_Situacao gravado;
        if (LeSituacaoAtual(dados, gravado).GetTipoErro() != 0) return *this;
        // Orders already carry the base situation this one stood for.
        if (dados.GetSituacaoBase() != gravado.GetSituacaoBase()) return SetAviso(QZ_MODULO_PX, 123, kCampoCodigo);
    }

    CString codigo = dados.GetCodigo();
    dados.SetCodigo(codigo.Trim());
    if (codigo.IsEmpty()) return SetAviso(QZ_MODULO_PX, 1, kCampoCodigo);

    // A saved situation keeps its code unchecked.
    if (dados.GetPosicao() == 0 &&
        VerificaCodigoLivre(codigo, kTipoManutencao, {__PRETTY_FUNCTION__, __FILE__, 60}).GetTipoErro() != 0)
        return *this;

    if (ConsisteDescricao(dados).GetTipoErro() != 0) return *this;
    if (ConsisteTipo(dados, kTipoManutencao).GetTipoErro() != 0) return *this;

    if (dados.GetSituacaoBase() == 0) return SetAviso(QZ_MODULO_PX, 124, kCampoSituacaoBase);
    if (!EhSituacaoBase(dados.GetSituacaoBase())) return SetAviso(QZ_MODULO_PX, 125, kCampoSituacaoBase);
    return *this;
}
