#include "rules/PXTrataDadosSituacaoTarefa.h"

#include "rules/PXVerificaArvore.h"

namespace {
constexpr long kCampoPaiProprio = 3;
constexpr long kCampoCodigoNovo = 130;
constexpr long kCampoCodigoGravado = 131;
constexpr uint8_t kTipoTarefa = 2;

// Tree messages go to the parent field, a failed fetch to the code.
const CPXRegraArvore kRegraArvore{133, false, 1};
}  // namespace

CQZDadosGT_Erro& CPXTrataDadosSituacaoTarefa::OnTrataGravacao(TQZBaseParaDados* pDados, IQZTrataInconsistencia*) {
    LimpaErro();
    auto& dados = static_cast<CQZDadosPX_Situacao&>(*pDados);

    if (dados.GetPosicao() != 0) {
        CQZDadosPX_Situacao gravado;
        if (LeSituacaoAtual(dados, gravado).GetTipoErro() != 0) return *this;
        auto busca = [&](CQZListaClassificacao* pLista) {
            CQZDadosPX_FiltroSituacao filtro;
            filtro.SetPonteiroPai(gravado.GetPosicao());
            return GetAcessoManutencao()->BuscaClassificacaoSituacao(filtro, pLista);
        };
        if (PXVerificaArvore(*this, *GetAcessoManutencao(), kRegraArvore, gravado, dados, busca).GetTipoErro() != 0)
            return *this;
    }

    // Task situation codes are taken as typed, blanks included.
    const CString& codigo = dados.GetCodigo();
    if (codigo.IsEmpty())
        return dados.GetPosicao() == 0 ? SetAviso(QZ_MODULO_PX, 1, kCampoCodigoNovo)
                                       : SetAviso(QZ_MODULO_PX, 2, kCampoCodigoGravado);

    // A saved situation keeps its code unchecked.
    if (dados.GetPosicao() == 0 &&
        VerificaCodigoLivre(codigo, kTipoTarefa, {__PRETTY_FUNCTION__, __FILE__, 84}).GetTipoErro() != 0)
        return *this;

    if (ConsisteDescricao(dados).GetTipoErro() != 0) return *this;

    if (dados.GetPosicao() != 0 && dados.GetPosicao() == dados.GetPonteiroPai())
        return SetAviso(QZ_MODULO_PX, 99, kCampoPaiProprio);

    return ConsisteTipo(dados, kTipoTarefa);
}
