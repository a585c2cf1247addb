#include "rules/PXTrataDadosDisciplina.h"

CQZDadosGT_Erro& CPXTrataDadosDisciplina::ConsistirDisciplina(CQZDadosPX_Disciplina* pDados) {
    return ConsisteCadastro(*pDados);
}

CQZDadosGT_Erro& CPXTrataDadosDisciplina::OnTrataGravacao(TQZBaseParaDados* pDados, IQZTrataInconsistencia*) {
    return TrataGravacaoCadastro(static_cast<CQZDadosPX_Disciplina&>(*pDados),
                                 [this](CQZDadosPX_Disciplina* p) -> CQZDadosGT_Erro& { return ConsistirDisciplina(p); });
}
