#include "rules/PXTrataDadosTecnico.h"

#include "rules/PXConsisteCodigoNome.h"

namespace {
constexpr long kCampoCodigoNovo = 7;
constexpr long kCampoCodigoGravado = 8;
constexpr long kCampoNome = 9;
constexpr long kCampoPai = 10;
constexpr long kCampoUsuario = 12;
constexpr long kCampoDisciplinas = 14;

constexpr CPXCamposCodigoNome kCamposCodigoNome{kCampoCodigoNovo, kCampoCodigoGravado, kCampoNome};

// The field checks have no self-parent test, so the tree check compares the
// new parent with the record itself too. The read key is signed.
const CPXGravacao<CQZDadosPX_Tecnico> kGravacao{
    .le = PXLeGravado<&CQZAcessoManutencao::LeTecnico>,
    .lCampoAtualizado = kCampoCodigoNovo,
    .arvore = CPXRegraArvore{kCampoPai, true, std::nullopt},
    .subarvore = [](CQZAcessoManutencaoBuffer& servico, const CQZDadosPX_Tecnico& gravado,
                    CQZListaClassificacao* pLista) {
        CQZDadosPX_FiltroTecnico filtro;
        filtro.SetPonteiroPai(gravado.GetPonteiro()).SetTodasFiliais(1);
        return servico.BuscaClassificacaoTecnico(filtro, pLista);
    },
};
}  // namespace

CPXTrataDadosTecnico::CPXTrataDadosTecnico(bool bInterfaceUsuario) : TPXTrataDadosRegistro(kGravacao, bInterfaceUsuario) {}

CQZDadosGT_Erro& CPXTrataDadosTecnico::ConsistirTecnico(CQZDadosPX_Tecnico* pDados) {
    LimpaErro();
    // Called directly by screens: without data services nothing is checked.
    if (!GetAcessoManutencao()) return SetAvisoPersonalizado(PX_MSG(161), 0);
    CQZDadosPX_Tecnico& dados = *pDados;

    // Codes are unique across all branches.
    CQZDadosPX_FiltroTecnico filtroCodigo;
    filtroCodigo.SetTodasFiliais(1);
    if (PXConsisteCodigoNome(*this, *GetAcessoManutencao(), dados, kCamposCodigoNome, filtroCodigo,
                             &CQZAcessoManutencao::BuscaPonteirosTecnico)
            .GetTipoErro() != 0)
        return *this;

    if (dados.GetTipoClassificacao() != PX_CLASSIFICACAO_ANALITICO) {
        // What only a real technician carries is dropped from a group.
        dados.SetTipoClassificacao(PX_CLASSIFICACAO_SINTETICO);
        dados.SetPonteiroFilial(0);
        dados.SetInativo(0);
        dados.RemoveTodosDisciplina();
        return *this;
    }

    if (dados.GetPonteiroUsuario() == 0) return *this;

    // A user is tied to at most one active real technician in the branch (in
    // all branches for a technician of no particular branch).
    CQZDadosPX_FiltroTecnico filtroUsuario;
    filtroUsuario.SetValorUnicoFilial(dados.GetPonteiroFilial())
        .SetTodasFiliais(dados.GetPonteiroFilial() == 0 ? 1 : 0)
        .SetPonteiroUsuario(dados.GetPonteiroUsuario())
        .SetAtivo(1)
        .SetTipoClassificacaoAnalitico(1);
    CQZArray_deprecated<uint32_t> aPonteiros;
    if (GetAcessoManutencao()->BuscaPonteirosTecnico(filtroUsuario, aPonteiros) != 0)
        return PassaErroServico(GetAcessoManutencao()->GetErro());
    const bool soEle = aPonteiros.IsEmpty() || (aPonteiros.GetSize() == 1 && aPonteiros[0] == dados.GetPonteiro());
    if (!soEle) return SetAviso(PX_MSG(121), kCampoUsuario);
    return *this;
}

CQZDadosGT_Erro& CPXTrataDadosTecnico::TrataAdicionarDisciplina(CQZDadosPX_Tecnico& dados,
                                                                CQZDadosPX_TecnicoDisciplina& disciplina,
                                                                IQZTrataInconsistencia*) {
    LimpaErro();
    if (disciplina.GetPonteiroDisciplina() == 0) return SetAviso(PX_MSG(86), kCampoDisciplinas);
    for (int64_t i = 0; i < dados.GetQuantidadeDisciplina(); ++i)
        if (dados.GetConstRefDisciplina(i).GetPonteiroDisciplina() == disciplina.GetPonteiroDisciplina())
            return SetAviso(PX_MSG(87), kCampoDisciplinas);
    dados.AdicionaDisciplina(disciplina);
    return *this;
}
