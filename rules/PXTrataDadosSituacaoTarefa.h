// Rules of task situations (situations of type 2), a tree of groups and
// leaves. Deletion is guarded by CPXControleIntegridade.
#pragma once

#include "rules/PXTrataDadosSituacao.h"

class CPXTrataDadosSituacaoTarefa : public CPXTrataDadosSituacao {
public:
    explicit CPXTrataDadosSituacaoTarefa(bool bInterfaceUsuario = false) : CPXTrataDadosSituacao(bInterfaceUsuario) {}
    CPXTrataDadosSituacaoTarefa(const CPXTrataDadosSituacaoTarefa&) = default;
    CPXTrataDadosSituacaoTarefa& operator=(const CPXTrataDadosSituacaoTarefa&) = default;
    ~CPXTrataDadosSituacaoTarefa() override { Finaliza(); }

protected:
    CQZDadosGT_Erro& OnTrataGravacao(TQZBaseParaDados* pDados, IQZTrataInconsistencia* pInconsistencia) override;
};
