// Rules of maintenance plans: the record's own checks (plan type, control
// type and its period and counter; a group drops its recurrence and alerts),
// the tree checks of a saved plan, and the checks of alerts, component lines
// and task entries while the plan's lists are edited. Deletion is guarded by
// CPXControleIntegridade.
#pragma once

#include <vector>

#include "rules/PXTrataDadosRegistro.h"

class CPXTrataDadosPlano : public TPXTrataDadosRegistro<CQZDadosPX_Plano> {
public:
    explicit CPXTrataDadosPlano(bool bInterfaceUsuario = false);
    ~CPXTrataDadosPlano() override { Finaliza(); }

    // Checks an alert before it is added or changed; its description comes
    // back trimmed.
    CQZDadosGT_Erro& TrataAdicionarAlterarAlerta(CQZDadosPX_PlanoAlerta* pAlerta);
    // Checks a line about to enter `lista`, the plan's list of kind eTipo.
    // `index` is the line's own place when it is changed (skipped in the
    // search for a repeated product), any value outside the list when added.
    CQZDadosGT_Erro& TrataAdicionarAlterarComponente(CQZDadosPX_PlanoComponente* pComponente,
                                                     const std::vector<CQZDadosPX_PlanoComponente>& lista,
                                                     int64_t index, _E_PX_MANUTENCOES_COMPONENTES eTipo);
    // Appends an entry per key to the plan's task list, in order, when every
    // key names a task not yet on the list; otherwise changes nothing. Keys
    // are compared with the list as it was before the call only.
    CQZDadosGT_Erro& TrataAdicionarTarefa(const std::vector<uint32_t>& aPonteirosTarefa,
                                          std::vector<CQZDadosPX_PlanoTarefa>& aTarefas);

protected:
    // Checks the caller's record in place: code and name come back trimmed
    // even when refused; a group is normalised only when it passes.
    CQZDadosGT_Erro& Consistir(CQZDadosPX_Plano& dados, const CQZDadosPX_Plano*, IQZTrataInconsistencia*) override {
        return ConsistirPlano(&dados);
    }

private:
    CQZDadosGT_Erro& ConsistirPlano(CQZDadosPX_Plano* pDados);
    CQZDadosGT_Erro& ConsistirCamposTarefa(CQZDadosPX_PlanoTarefa* pTarefa);
};
