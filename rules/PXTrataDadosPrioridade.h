// Rules of priorities. Priorities are not deleted through this handler.
#pragma once

#include "rules/PXTrataDados.h"

class CPXTrataDadosPrioridade : public CPXTrataDados {
public:
    explicit CPXTrataDadosPrioridade(bool bInterfaceUsuario = false) : CPXTrataDados(bInterfaceUsuario) {}
    CPXTrataDadosPrioridade(const CPXTrataDadosPrioridade&) = default;
    CPXTrataDadosPrioridade& operator=(const CPXTrataDadosPrioridade&) = default;
    ~CPXTrataDadosPrioridade() override { Finaliza(); }

protected:
    CQZDadosGT_Erro& OnTrataGravacao(TQZBaseParaDados* pDados, IQZTrataInconsistencia* pInconsistencia) override;
};
