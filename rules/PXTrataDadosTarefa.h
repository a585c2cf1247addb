// Rules of tasks: the record's own checks (with the normalisation of groups),
// the tree checks of a saved task, and the check of a component line before
// it enters one of the task's lists. Deletion is guarded by
// CPXControleIntegridade.
#pragma once

#include <vector>

#include "rules/PXTrataDadosRegistro.h"

class CPXTrataDadosTarefa : public TPXTrataDadosRegistro<CQZDadosPX_Tarefa> {
public:
    explicit CPXTrataDadosTarefa(bool bInterfaceUsuario = false);
    ~CPXTrataDadosTarefa() override { Finaliza(); }

    // Checks a line about to enter `lista`, the list of its kind. `index` is
    // the line's own place when it is changed (that place is skipped in the
    // search for a repeated product), any value outside the list when it is
    // added. The line and the list are not changed.
    CQZDadosGT_Erro& TrataIncluirAlterarComponente(CQZDadosPX_TarefaComponente* pComponente,
                                                   const std::vector<CQZDadosPX_TarefaComponente>& lista,
                                                   int64_t index);

protected:
    // Checks the caller's record in place: code and name come back trimmed
    // even when refused; a group is normalised only when it passes.
    CQZDadosGT_Erro& Consistir(CQZDadosPX_Tarefa& dados, const CQZDadosPX_Tarefa*,
                               IQZTrataInconsistencia* pInconsistencia) override {
        return ConsistirTarefa(&dados, pInconsistencia);
    }

private:
    CQZDadosGT_Erro& ConsistirTarefa(CQZDadosPX_Tarefa* pDados, IQZTrataInconsistencia* pInconsistencia);
};
