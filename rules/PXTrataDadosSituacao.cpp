#include "rules/PXTrataDadosSituacao.h"

CQZDadosGT_Erro& CPXTrataDadosSituacao::LeSituacaoAtual(const CQZDadosPX_Situacao& dados,
                                                        CQZDadosPX_Situacao& gravado) {
    if (GetAcessoManutencao()->LeSituacao(dados.GetPosicao(), &gravado, 0) != 0)
        return PassaErroServico(GetAcessoManutencao()->GetErro(), kCampoCodigo);
    if (!PXCarimbosIguais(dados.GetDmaHmsAtualizacao(), gravado.GetDmaHmsAtualizacao()))
        return SetAviso(QZ_MODULO_PX, 3, kCampoCodigo);
    return *this;
}

CQZDadosGT_Erro& CPXTrataDadosSituacao::VerificaCodigoLivre(const CString& codigo, uint8_t ucTipo,
                                                            const CPontoRastro& ponto) {
    CQZDadosPX_FiltroSituacao dadosFiltro;
    dadosFiltro.SetCodigo(codigo).SetAtivaVerificacaoCodigoParcial(0).SetFlagTipo(ucTipo);
    CQZArray_deprecated<uint32_t> aPonteiros;
    long hr = GetAcessoManutencao()->BuscaPonteirosSituacao(dadosFiltro, aPonteiros);
    if (hr != 0) {
        QZRastreiaFalha(hr, "GetAcessoManutencao()->BuscaPonteirosSituacao(dadosFiltro, aPonteiros)", ponto.pszFuncao,
                        ponto.pszArquivo, ponto.iLinha, this);
        return PassaErroServico(GetAcessoManutencao()->GetErro(), kCampoCodigo);
    }
    if (!aPonteiros.IsEmpty()) return SetAviso(QZ_MODULO_PX, 10, kCampoCodigo);
    return *this;
}

CQZDadosGT_Erro& CPXTrataDadosSituacao::ConsisteDescricao(CQZDadosPX_Situacao& dados) {
    CString descricao = dados.GetDescricao();
    dados.SetDescricao(descricao.Trim());
    if (descricao.IsEmpty()) return SetAviso(QZ_MODULO_PX, 49, kCampoDescricao);
    return *this;
}

CQZDadosGT_Erro& CPXTrataDadosSituacao::ConsisteTipo(const CQZDadosPX_Situacao& dados, uint8_t ucTipo) {
    if (dados.GetTipo() != ucTipo) return SetAviso(QZ_MODULO_20, 125, kCampoCodigo);
    return *this;
}
