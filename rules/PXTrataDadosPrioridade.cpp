#include "rules/PXTrataDadosPrioridade.h"

namespace {
constexpr long kCampoCodigo = 1;
constexpr long kCampoDescricao = 2;
constexpr long kCampoPrioridadeBase = 3;

constexpr CQZPontoRastro kRastroBuscaCodigo{52, "CPXTrataDadosPrioridade::OnTrataGravacao"};

// A saved priority is read by its position; its stale stamp and a failed
// read point at the code.
const CPXGravacao<CQZDadosPX_Prioridade> kGravacao{
    .le = PXLeGravado<&CQZAcessoManutencao::LePrioridade>,
    .lCampoAtualizado = kCampoCodigo,
    .lCampoFalhaLeitura = kCampoCodigo,
};
}  // namespace

CPXTrataDadosPrioridade::CPXTrataDadosPrioridade(bool bInterfaceUsuario)
    : TPXTrataDadosRegistro(kGravacao, bInterfaceUsuario) {}

CQZDadosGT_Erro& CPXTrataDadosPrioridade::Consistir(CQZDadosPX_Prioridade& dados, const CQZDadosPX_Prioridade*,
                                                    IQZTrataInconsistencia*) {
    CString codigo = dados.GetCodigo();
    dados.SetCodigo(codigo.Trim());
    if (codigo.IsEmpty()) return SetAviso(PX_MSG(1), kCampoCodigo);

    // A priority already saved keeps its code unchecked against the others.
    if (dados.GetPosicao() == 0) {
        CQZDadosPX_FiltroPrioridade dadosFiltro;
        dadosFiltro.SetCodigo(codigo).SetAtivaVerificacaoCodigoParcial(0);
        CQZArray_deprecated<uint32_t> aPonteiros;
        long hr;
        if (QZ_CHAMA_RASTREADO(hr, kRastroBuscaCodigo,
                               GetAcessoManutencao()->BuscaPonteirosPrioridade(dadosFiltro, aPonteiros)))
            return PassaErroServico(GetAcessoManutencao()->GetErro(), kCampoCodigo);
        if (!aPonteiros.IsEmpty()) return SetAviso(PX_MSG(10), kCampoCodigo);
    }

    CString descricao = dados.GetDescricao();
    dados.SetDescricao(descricao.Trim());
    if (descricao.IsEmpty()) return SetAviso(PX_MSG(49), kCampoDescricao);

    if (dados.GetPrioridadeBase() > 100) return SetAviso(PX_MSG(176), kCampoPrioridadeBase);
    return *this;
}
