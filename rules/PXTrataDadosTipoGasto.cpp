#include "rules/PXTrataDadosTipoGasto.h"

CQZDadosGT_Erro& CPXTrataDadosTipoGasto::ConsistirTipoGasto(CQZDadosPX_TipoGasto* pDados) {
    return ConsisteCadastro(*pDados);
}

CQZDadosGT_Erro& CPXTrataDadosTipoGasto::OnTrataGravacao(TQZBaseParaDados* pDados, IQZTrataInconsistencia*) {
    return TrataGravacaoCadastro(static_cast<CQZDadosPX_TipoGasto&>(*pDados),
                                 [this](CQZDadosPX_TipoGasto* p) -> CQZDadosGT_Erro& { return ConsistirTipoGasto(p); });
}
