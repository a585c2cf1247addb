#include "rules/PXTrataDadosSituacao.h"

CQZDadosGT_Erro& CPXTrataDadosSituacao::VerificaCodigoLivre(const CString& codigo, uint8_t ucTipo,
                                                            const CQZPontoRastro& ponto) {
    CQZDadosPX_FiltroSituacao dadosFiltro;
    dadosFiltro.SetCodigo(codigo).SetAtivaVerificacaoCodigoParcial(0).SetFlagTipo(ucTipo);
    CQZArray_deprecated<uint32_t> aPonteiros;
    long hr;
    if (QZ_CHAMA_RASTREADO(hr, ponto, GetAcessoManutencao()->BuscaPonteirosSituacao(dadosFiltro, aPonteiros)))
        return PassaErroServico(GetAcessoManutencao()->GetErro(), kCampoCodigo);
    if (!aPonteiros.IsEmpty()) return SetAviso(PX_MSG(10), kCampoCodigo);
    return *this;
}

CQZDadosGT_Erro& CPXTrataDadosSituacao::ConsisteDescricao(CQZDadosPX_Situacao& dados) {
    CString descricao = dados.GetDescricao();
    dados.SetDescricao(descricao.Trim());
    if (descricao.IsEmpty()) return SetAviso(PX_MSG(49), kCampoDescricao);
    return *this;
}

CQZDadosGT_Erro& CPXTrataDadosSituacao::ConsisteTipo(const CQZDadosPX_Situacao& dados, uint8_t ucTipo) {
    if (dados.GetTipo() != ucTipo) return SetAviso(QZ_MSG(QZ_MODULO_20, 125), kCampoCodigo);
    return *this;
}
