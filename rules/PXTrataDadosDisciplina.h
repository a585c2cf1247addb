// Rules of disciplines. Deletion is guarded by CPXControleIntegridade, not
// by this handler.
#pragma once

#include "rules/PXTrataDadosRegistro.h"

class CPXTrataDadosDisciplina : public TPXTrataDadosRegistro<CQZDadosPX_Disciplina> {
public:
    explicit CPXTrataDadosDisciplina(bool bInterfaceUsuario = false);
    ~CPXTrataDadosDisciplina() override { Finaliza(); }

protected:
    // The record by itself: code, unique code, name, self-parent.
    virtual CQZDadosGT_Erro& ConsistirDisciplina(CQZDadosPX_Disciplina* pDados);
    CQZDadosGT_Erro& Consistir(CQZDadosPX_Disciplina& dados, const CQZDadosPX_Disciplina*,
                               IQZTrataInconsistencia*) override {
        return ConsistirDisciplina(&dados);
    }
};
