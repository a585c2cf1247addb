#include "rules/PXTrataDadosCamposPersonalizados.h"

#include "rules/PXConsisteCodigoNome.h"

namespace {
constexpr uint8_t kDestinacaoApontamentoTarefa = 1;

constexpr long kCampoCodigoNovo = 15;  // also the destination
constexpr long kCampoCodigoGravado = 16;
constexpr long kCampoDescricao = 17;
constexpr long kCampoClasse = 18;

// A saved definition is read through the service's cache. The field checks
// have no self-class test, so the tree check compares the new class with the
// definition itself too.
const CPXGravacao<CQZDadosPX_CamposPersonalizados> kGravacao{
    .le = PXLeGravado<&CQZAcessoManutencaoBuffer::LeBufferCamposPersonalizados>,
    .lCampoAtualizado = kCampoCodigoNovo,
    .arvore = CPXRegraArvore{kCampoClasse, true, std::nullopt},
    .subarvore = [](CQZAcessoManutencaoBuffer& servico, const CQZDadosPX_CamposPersonalizados& gravado,
                    CQZListaClassificacao* pLista) {
        CQZDadosPX_FiltroCamposPersonalizados filtro;
        filtro.SetDestinacao(gravado.GetDestinacao());
        filtro.GetFiltroClassificacao().SetPonteiroInicial(gravado.GetPonteiro());
        return servico.BuscaClassificacaoCamposPersonalizados(filtro, pLista);
    },
    .pai = [](const CQZDadosPX_CamposPersonalizados& dados) { return dados.GetPonteiroClasse(); },
};
}  // namespace

CPXTrataDadosCamposPersonalizados::CPXTrataDadosCamposPersonalizados(bool bInterfaceUsuario)
    : TPXTrataDadosRegistro(kGravacao, bInterfaceUsuario) {}

bool CPXTrataDadosCamposPersonalizados::GetDestinacaoEhValida(uint8_t ucDestinacao) {
    return ucDestinacao == kDestinacaoApontamentoTarefa;
}

CString CPXTrataDadosCamposPersonalizados::GetNomeDestinacao(uint8_t ucDestinacao) {
    return ucDestinacao == kDestinacaoApontamentoTarefa ? CString("Apontamentos de Tarefas") : CString();
}

CQZDadosGT_Erro& CPXTrataDadosCamposPersonalizados::ConsistirCamposPersonalizados(
    CQZDadosPX_CamposPersonalizados* pDados, IQZTrataInconsistencia*) {
    LimpaErro();
    CQZDadosPX_CamposPersonalizados& dados = *pDados;
    if (!GetDestinacaoEhValida(dados.GetDestinacao())) return SetAviso(PX_MSG(164), kCampoCodigoNovo);

    CString codigo = dados.GetCodigo();
    dados.SetCodigo(codigo.Trim());
    CString descricao = dados.GetDescricao();
    dados.SetDescricao(descricao.Trim());

    if (codigo.IsEmpty())
        return dados.GetPonteiro() == 0 ? SetAviso(PX_MSG(1), kCampoCodigoNovo)
                                        : SetAviso(PX_MSG(2), kCampoCodigoGravado);

    // Codes are unique within a destination.
    CQZDadosPX_FiltroCamposPersonalizados filtro;
    filtro.SetCodigo(codigo).SetDestinacao(dados.GetDestinacao());
    CQZVector<uint32_t> aPonteiros;
    if (GetAcessoManutencao()->BuscaPonteirosCamposPersonalizados(filtro, aPonteiros) != 0)
        return PassaErroServico(GetAcessoManutencao()->GetErro());
    if (PXOutroPonteiro(aPonteiros, dados.GetPonteiro())) return SetAviso(PX_MSG(10), kCampoCodigoNovo);

    if (descricao.IsEmpty()) return SetAviso(PX_MSG(49), kCampoDescricao);

    if (dados.GetTipoClassificacao() == PX_CLASSIFICACAO_SINTETICO) {
        // A class is only a heading: it has no detail and is never inactive.
        dados.SetDetalhamento(CString()).SetInativo(0);
    }
    return *this;
}
