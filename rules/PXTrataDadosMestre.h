// Rules of the module's master settings: guards against two users saving
// the settings over each other and checks the viewing-month option.
#pragma once

#include "rules/PXTrataDadosRegistro.h"

class CPXTrataDadosMestre : public TPXTrataDadosRegistro<CQZDadosPX_Mestre> {
public:
    explicit CPXTrataDadosMestre(bool bInterfaceUsuario = false);
    ~CPXTrataDadosMestre() override { Finaliza(); }

protected:
    CQZDadosGT_Erro& Consistir(CQZDadosPX_Mestre& dados, const CQZDadosPX_Mestre*, IQZTrataInconsistencia*) override {
        return ConsistirMestre(&dados);
    }

private:
    CQZDadosGT_Erro& ConsistirMestre(CQZDadosPX_Mestre* pDados);
};
