#include "rules/PXTrataDadosPrioridade.h"

namespace {
constexpr long kCampoCodigo = 1;
constexpr long kCampoDescricao = 2;
constexpr long kCampoPrioridadeBase = 3;
}  // namespace

CQZDadosGT_Erro& CPXTrataDadosPrioridade::OnTrataGravacao(TQZBaseParaDados* pDados, IQZTrataInconsistencia*) {
    LimpaErro();
    auto& dados = static_cast<CQZDadosPX_Prioridade&>(*pDados);

    if (dados.GetPosicao() != 0) {
        CQZDadosPX_Prioridade gravado;
        if (GetAcessoManutencao()->LePrioridade(dados.GetPosicao(), &gravado, 0) != 0)
            return PassaErroServico(GetAcessoManutencao()->GetErro(), kCampoCodigo);
        if (!PXCarimbosIguais(dados.GetDmaHmsAtualizacao(), gravado.GetDmaHmsAtualizacao()))
            return SetAviso(QZ_MODULO_PX, 3, kCampoCodigo);
    }

    CString codigo = dados.GetCodigo();
    dados.SetCodigo(codigo.Trim());
    if (codigo.IsEmpty()) return SetAviso(QZ_MODULO_PX, 1, kCampoCodigo);

    // A priority already saved keeps its code unchecked against the others.
    if (dados.GetPosicao() == 0) {
        CQZDadosPX_FiltroPrioridade dadosFiltro;
        dadosFiltro.SetCodigo(codigo).SetAtivaVerificacaoCodigoParcial(0);
        CQZArray_deprecated<uint32_t> aPonteiros;
        long hr;
        if (PX_CHAMA_RASTREADO(hr, 52, GetAcessoManutencao()->BuscaPonteirosPrioridade(dadosFiltro, aPonteiros)))
            return PassaErroServico(GetAcessoManutencao()->GetErro(), kCampoCodigo);
        if (!aPonteiros.IsEmpty()) return SetAviso(QZ_MODULO_PX, 10, kCampoCodigo);
    }

    CString descricao = dados.GetDescricao();
    dados.SetDescricao(descricao.Trim());
    if (descricao.IsEmpty()) return SetAviso(QZ_MODULO_PX, 49, kCampoDescricao);

    if (dados.GetPrioridadeBase() > 100) return SetAviso(QZ_MODULO_PX, 176, kCampoPrioridadeBase);
    return *this;
}
