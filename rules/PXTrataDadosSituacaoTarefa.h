// Rules of task situations (situations of type 2), a tree of groups and
// leaves. Deletion is guarded by CPXControleIntegridade.
#pragma once

#include "rules/PXTrataDadosSituacao.h"

class CPXTrataDadosSituacaoTarefa : public CPXTrataDadosSituacao {
public:
    explicit CPXTrataDadosSituacaoTarefa(bool bInterfaceUsuario = false);
    ~CPXTrataDadosSituacaoTarefa() override { Finaliza(); }

protected:
    CQZDadosGT_Erro& Consistir(CQZDadosPX_Situacao& dados, const CQZDadosPX_Situacao* pGravado,
                               IQZTrataInconsistencia* pInconsistencia) override;
};
