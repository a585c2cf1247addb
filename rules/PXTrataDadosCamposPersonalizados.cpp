#include "rules/PXTrataDadosCamposPersonalizados.h"

namespace {
constexpr uint8_t kDestinacaoApontamentoTarefa = 1;

constexpr long kCampoCodigoNovo = 15;  // also the destination
constexpr long kCampoCodigoGravado = 16;
constexpr long kCampoDescricao = 17;
constexpr long kCampoClasse = 18;

// The field checks have no self-class test, so the tree check compares the
// new class with the definition itself too.
const CPXRegraArvore kRegraArvore{kCampoClasse, true, std::nullopt};
}  // namespace

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
    if (!GetDestinacaoEhValida(dados.GetDestinacao())) return SetAviso(QZ_MODULO_PX, 164, kCampoCodigoNovo);

    CString codigo = dados.GetCodigo();
    dados.SetCodigo(codigo.Trim());
    CString descricao = dados.GetDescricao();
    dados.SetDescricao(descricao.Trim());

    if (codigo.IsEmpty())
        return dados.GetPonteiro() == 0 ? SetAviso(QZ_MODULO_PX, 1, kCampoCodigoNovo)
                                        : SetAviso(QZ_MODULO_PX, 2, kCampoCodigoGravado);

    // Codes are unique within a destination.
    CQZDadosPX_FiltroCamposPersonalizados filtro;
    filtro.SetCodigo(codigo).SetDestinacao(dados.GetDestinacao());
    CQZVector<uint32_t> aPonteiros;
    if (GetAcessoManutencao()->BuscaPonteirosCamposPersonalizados(filtro, aPonteiros) != 0)
        return PassaErroServico(GetAcessoManutencao()->GetErro());
    if (PXOutroPonteiro(aPonteiros, dados.GetPonteiro())) return SetAviso(QZ_MODULO_PX, 10, kCampoCodigoNovo);

    if (descricao.IsEmpty()) return SetAviso(QZ_MODULO_PX, 49, kCampoDescricao);

    if (dados.GetTipoClassificacao() == PX_CLASSIFICACAO_SINTETICO) {
        // A class is only a heading: it has no detail and is never inactive.
        dados.SetDetalhamento(CString()).SetInativo(0);
    }
    return *this;
}

CQZDadosGT_Erro& CPXTrataDadosCamposPersonalizados::OnTrataGravacao(TQZBaseParaDados* pDados,
                                                                    IQZTrataInconsistencia* pInconsistencia) {
    auto& dados = static_cast<CQZDadosPX_CamposPersonalizados&>(*pDados);
    auto le = [&](CQZDadosPX_CamposPersonalizados& gravado) {
        return GetAcessoManutencao()->LeBufferCamposPersonalizados(dados.GetPonteiro(), &gravado, 0);
    };
    auto busca = [&](const CQZDadosPX_CamposPersonalizados& gravado, CQZListaClassificacao* pLista) {
        CQZDadosPX_FiltroCamposPersonalizados filtro;
        filtro.SetDestinacao(gravado.GetDestinacao());
        filtro.GetFiltroClassificacao().SetPonteiroInicial(gravado.GetPonteiro());
        return GetAcessoManutencao()->BuscaClassificacaoCamposPersonalizados(filtro, pLista);
    };
    auto consistir = [&](CQZDadosPX_CamposPersonalizados& registro) -> CQZDadosGT_Erro& {
        return ConsistirCamposPersonalizados(&registro, pInconsistencia);
    };
    return TrataGravacaoArvore(dados, dados.GetPonteiroClasse(), kCampoCodigoNovo, kRegraArvore, le, busca, consistir);
}
