#include "rules/PXTrataDadosTarefa.h"

#include "files/PXCampos.h"
#include "rules/PXConsisteCodigoNome.h"
#include "rules/PXLinhaComponente.h"

namespace {
constexpr long kCampoQuantPeriodoGarantia = 59;
constexpr long kCampoPai = 61;
constexpr long kCampoInfPersonalizada = 62;
constexpr long kCampoPeriodoGarantia = 63;
constexpr CPXCamposCodigoNome kCamposCodigoNome{.lCodigoNovo = 65, .lCodigoGravado = 66, .lNome = 67};
constexpr long kCampoSituacaoGrupo = 72;
constexpr long kCampoSituacaoInicial = 73;

// The field checks have no self-parent test, so the tree check compares the
// new parent with the task itself too.
const CPXGravacao<CQZDadosPX_Tarefa> kGravacao{
    .le = PXLeGravado<&CQZAcessoManutencao::LeTarefa>,
    .lCampoAtualizado = kCamposCodigoNome.lCodigoNovo,
    .arvore = CPXRegraArvore{kCampoPai, true, std::nullopt},
    .subarvore = [](CQZAcessoManutencaoBuffer& servico, const CQZDadosPX_Tarefa& gravado,
                    CQZListaClassificacao* pLista) {
        CQZDadosPX_FiltroTarefa filtro;
        filtro.GetFiltroClassificacao().SetPonteiroInicial(gravado.GetPonteiro());
        return servico.BuscaClassificacaoTarefa(filtro, pLista);
    },
};
}  // namespace

CPXTrataDadosTarefa::CPXTrataDadosTarefa(bool bInterfaceUsuario) : TPXTrataDadosRegistro(kGravacao, bInterfaceUsuario) {}

CQZDadosGT_Erro& CPXTrataDadosTarefa::ConsistirTarefa(CQZDadosPX_Tarefa* pDados, IQZTrataInconsistencia*) {
    LimpaErro();
    CQZDadosPX_Tarefa& dados = *pDados;

    if (PXConsisteCodigoNome(*this, *GetAcessoManutencao(), dados, kCamposCodigoNome, CQZDadosPX_FiltroTarefa(),
                             &CQZAcessoManutencao::BuscaPonteirosTarefa)
            .GetTipoErro() != 0)
        return *this;

    if (dados.GetTipoClassificacao() != PX_CLASSIFICACAO_ANALITICO) {
        // A group is only a heading: what a task to be done carries is dropped.
        dados.SetTempoPrevisto(CQZMoeda())
            .SetQuantPeriodoGarantia(CQZMoeda())
            .SetPonteiroInfPersonalizada(0)
            .SetPonteiroPeriodoGarantia(0)
            .SetDescricao(CString())
            .SetEfetuarApontTarefa(0)
            .SetGarantia(0);
        dados.RemoveTodosMaterial();
        dados.RemoveTodosEquipamento();
        dados.RemoveTodosServico();
        return *this;
    }

    if (dados.GetEfetuarApontTarefa() != 0 && dados.GetPonteiroInfPersonalizada() == 0)
        return SetAviso(PX_MSG(157), kCampoInfPersonalizada);

    if (dados.GetAtribuirSituacaoTarefa() != 0) {
        if (dados.GetPonteiroSituacaoGrupo() == 0) return SetAviso(PX_MSG(179), kCampoSituacaoGrupo);
        if (dados.GetPonteiroSituacaoInicial() == 0) return SetAviso(PX_MSG(180), kCampoSituacaoInicial);
    }

    if (dados.GetGarantia() != 0) {
        // Only a zero quantity is refused; the quantity's sign is not checked.
        if (dados.GetQuantPeriodoGarantia().EhZero()) return SetAviso(PX_MSG(158), kCampoQuantPeriodoGarantia);
        if (dados.GetPonteiroPeriodoGarantia() == 0) return SetAviso(PX_MSG(159), kCampoPeriodoGarantia);
    }
    return *this;
}

CQZDadosGT_Erro& CPXTrataDadosTarefa::TrataIncluirAlterarComponente(
    CQZDadosPX_TarefaComponente* pComponente, const std::vector<CQZDadosPX_TarefaComponente>& lista, int64_t index) {
    LimpaErro();
    const uint8_t ucTipo = pComponente->GetTipoComponente();
    const CPXMensagensComponente* pMensagens = PXMensagensComponente(ucTipo);
    if (!pMensagens) return SetAvisoPersonalizado(QZ_MODULO_PX, 0, "Tipo do componente não é válido.");

    const long lCampoCodigo = CPXCampos::GetCampoTarefaComponenteCodigo(ucTipo);
    const _REG_POSICAO_PRODUTOPS& posicao = pComponente->GetPosicaoProdutoServico();
    if (posicao.lPonteiroProduto == 0) return SetAviso(pMensagens->semProduto, lCampoCodigo);
    if (pComponente->GetQuantidade() <= CQZMoeda())
        return SetAviso(PX_MSG(39), CPXCampos::GetCampoTarefaComponenteQuantidade(ucTipo));

    auto posicaoDe = [](const CQZDadosPX_TarefaComponente& linha) { return linha.GetPosicaoProdutoServico(); };
    if (PXPosicaoRepetida(lista, index, posicao, posicaoDe))
        return SetAviso(pMensagens->repetido, lCampoCodigo);
    return *this;
}
