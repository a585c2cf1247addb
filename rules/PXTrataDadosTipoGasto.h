// Rules of expense types. Deletion is guarded by CPXControleIntegridade, not
// by this handler.
#pragma once

#include "rules/PXTrataDadosRegistro.h"

class CPXTrataDadosTipoGasto : public TPXTrataDadosRegistro<CQZDadosPX_TipoGasto> {
public:
    explicit CPXTrataDadosTipoGasto(bool bInterfaceUsuario = false);
    ~CPXTrataDadosTipoGasto() override { Finaliza(); }

protected:
    // The record by itself: code, unique code, name, self-parent.
    virtual CQZDadosGT_Erro& ConsistirTipoGasto(CQZDadosPX_TipoGasto* pDados);
    CQZDadosGT_Erro& Consistir(CQZDadosPX_TipoGasto& dados, const CQZDadosPX_TipoGasto*,
                               IQZTrataInconsistencia*) override {
        return ConsistirTipoGasto(&dados);
    }
};
