// Rules of technicians: the record's own checks (with the normalisation of
// groups and the tie of a user to one technician), the tree checks of a
// saved record, and the addition of a discipline to a technician's list.
// Deletion is guarded by CPXControleIntegridade.
#pragma once

#include "rules/PXTrataDadosRegistro.h"

class CPXTrataDadosTecnico : public TPXTrataDadosRegistro<CQZDadosPX_Tecnico> {
public:
    explicit CPXTrataDadosTecnico(bool bInterfaceUsuario = false);
    ~CPXTrataDadosTecnico() override { Finaliza(); }

    // Checks the record; a group is normalised in place (no branch, active,
    // no disciplines) without a warning.
    CQZDadosGT_Erro& ConsistirTecnico(CQZDadosPX_Tecnico* pDados);
    // Appends the entry to the technician's list unless its discipline is
    // missing (86) or already listed (87).
    CQZDadosGT_Erro& TrataAdicionarDisciplina(CQZDadosPX_Tecnico& dados, CQZDadosPX_TecnicoDisciplina& disciplina,
                                              IQZTrataInconsistencia* pInconsistencia);

protected:
    // A saved technician is checked in the tree before its fields.
    CQZDadosGT_Erro& Consistir(CQZDadosPX_Tecnico& dados, const CQZDadosPX_Tecnico*, IQZTrataInconsistencia*) override {
        return ConsistirTecnico(&dados);
    }
};
