#include "rules/PXVerificaArvore.h"

#include "platform/records/PXCriterios.h"

CQZDadosGT_Erro& PXVerificaArvore(CQZDadosGT_Erro& erro, const CQZAcessoManutencao& servico,
                                  const CPXRegraArvore& regra, uint8_t ucTipoGravado, uint8_t ucTipoNovo,
                                  uint32_t ulPaiNovo, const CPXBuscaSubarvore& busca) {
    if (ucTipoGravado == PX_CLASSIFICACAO_ANALITICO) return erro;

    CQZListaClassificacao subarvore;
    if (busca(&subarvore) != 0) {
        erro.SetErro(servico.GetErro());
        if (regra.lCampoFalha) erro.SetCodigoCampo(*regra.lCampoFalha);
        return erro;
    }

    const bool temDescendentes = subarvore.size() > 1;
    if (temDescendentes && ucTipoNovo == PX_CLASSIFICACAO_ANALITICO) return erro.SetAviso(PX_MSG(98), regra.lCampo);

    if (ulPaiNovo != 0) {
        // Entry 0 is the record itself; the rest are its descendants.
        for (size_t i = regra.bComparaProprio ? 0 : 1; i < subarvore.size(); ++i)
            if (subarvore[i].GetPonteiro() == ulPaiNovo) return erro.SetAviso(PX_MSG(99), regra.lCampo);
    }
    return erro;
}
