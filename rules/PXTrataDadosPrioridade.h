// Rules of priorities. Priorities are not deleted through this handler.
#pragma once

#include "rules/PXTrataDadosRegistro.h"

class CPXTrataDadosPrioridade : public TPXTrataDadosRegistro<CQZDadosPX_Prioridade> {
public:
    explicit CPXTrataDadosPrioridade(bool bInterfaceUsuario = false);
    ~CPXTrataDadosPrioridade() override { Finaliza(); }

protected:
    CQZDadosGT_Erro& Consistir(CQZDadosPX_Prioridade& dados, const CQZDadosPX_Prioridade* pGravado,
                               IQZTrataInconsistencia* pInconsistencia) override;
};
