// Rules of maintenance situations (situations of type 1): each maps a
// user-defined situation onto one base situation of an order, which can't
// change once saved. Deletion is guarded by CPXControleIntegridade.
#pragma once

#include "rules/PXTrataDadosSituacao.h"

class CPXTrataDadosSituacaoManutencao : public CPXTrataDadosSituacao {
public:
    explicit CPXTrataDadosSituacaoManutencao(bool bInterfaceUsuario = false)
        : CPXTrataDadosSituacao(bInterfaceUsuario) {}
    CPXTrataDadosSituacaoManutencao(const CPXTrataDadosSituacaoManutencao&) = default;
    CPXTrataDadosSituacaoManutencao& operator=(const CPXTrataDadosSituacaoManutencao&) = default;
    ~CPXTrataDadosSituacaoManutencao() override { Finaliza(); }

protected:
    CQZDadosGT_Erro& OnTrataGravacao(TQZBaseParaDados* pDados, IQZTrataInconsistencia* pInconsistencia) override;
};
