// Rules of maintenance situations (situations of type 1): each maps a
// user-defined situation onto one base situation of an order, which can't
// change once saved. Deletion is guarded by CPXControleIntegridade.
#pragma once

#include "rules/PXTrataDadosSituacao.h"

class CPXTrataDadosSituacaoManutencao : public CPXTrataDadosSituacao {
public:
    explicit CPXTrataDadosSituacaoManutencao(bool bInterfaceUsuario = false);
    ~CPXTrataDadosSituacaoManutencao() override { Finaliza(); }

protected:
    CQZDadosGT_Erro& Consistir(CQZDadosPX_Situacao& dados, const CQZDadosPX_Situacao* pGravado,
                               IQZTrataInconsistencia* pInconsistencia) override;
};
