// Rules of the module's master settings: guards against two users saving
// the settings over each other and checks the viewing-month option.
#pragma once

#include "rules/PXTrataDados.h"

class CPXTrataDadosMestre : public CPXTrataDados {
public:
    explicit CPXTrataDadosMestre(bool bInterfaceUsuario = false) : CPXTrataDados(bInterfaceUsuario) {}
    ~CPXTrataDadosMestre() override { Finaliza(); }

    CQZDadosGT_Erro& OnTrataGravacao(TQZBaseParaDados* pDados, IQZTrataInconsistencia* pInconsistencia) override;

private:
    CQZDadosGT_Erro& ConsistirMestre(CQZDadosPX_Mestre* pDados);
};
