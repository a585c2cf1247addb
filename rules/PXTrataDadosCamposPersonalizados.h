// Rules of custom-field definitions: the record's own checks (a class drops
// what only a definition carries), the tree checks of a saved definition, and
// the destinations where custom fields are filled in.
#pragma once

#include "rules/PXTrataDadosRegistro.h"

class CPXTrataDadosCamposPersonalizados : public TPXTrataDadosRegistro<CQZDadosPX_CamposPersonalizados> {
public:
    explicit CPXTrataDadosCamposPersonalizados(bool bInterfaceUsuario = false);
    ~CPXTrataDadosCamposPersonalizados() override { Finaliza(); }

    // Destination 1 (time entries of tasks) is the only one.
    static bool GetDestinacaoEhValida(uint8_t ucDestinacao);
    // The destination's name; empty for one that does not exist.
    static CString GetNomeDestinacao(uint8_t ucDestinacao);

protected:
    // Checks the caller's record in place: code and description come back
    // trimmed even when a later check refuses the definition; a class is
    // normalised only when it passes.
    CQZDadosGT_Erro& Consistir(CQZDadosPX_CamposPersonalizados& dados, const CQZDadosPX_CamposPersonalizados*,
                               IQZTrataInconsistencia* pInconsistencia) override {
        return ConsistirCamposPersonalizados(&dados, pInconsistencia);
    }

private:
    CQZDadosGT_Erro& ConsistirCamposPersonalizados(CQZDadosPX_CamposPersonalizados* pDados,
                                                   IQZTrataInconsistencia* pInconsistencia);
};
