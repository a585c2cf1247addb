// Rules of custom-field definitions: the record's own checks (a class drops
// what only a definition carries), the tree checks of a saved definition, and
// the destinations where custom fields are filled in.
#pragma once

#include "rules/PXTrataDadosArvore.h"

class CPXTrataDadosCamposPersonalizados : public CPXTrataDadosArvore {
public:
    explicit CPXTrataDadosCamposPersonalizados(bool bInterfaceUsuario = false)
        : CPXTrataDadosArvore(bInterfaceUsuario) {}
    CPXTrataDadosCamposPersonalizados(const CPXTrataDadosCamposPersonalizados&) = default;
    CPXTrataDadosCamposPersonalizados& operator=(const CPXTrataDadosCamposPersonalizados&) = default;
    ~CPXTrataDadosCamposPersonalizados() override { Finaliza(); }

    // Destination 1 (time entries of tasks) is the only one.
    static bool GetDestinacaoEhValida(uint8_t ucDestinacao);
    // The destination's name; empty for one that does not exist.
    static CString GetNomeDestinacao(uint8_t ucDestinacao);

protected:
    // Checks the caller's record in place: code and description come back
    // trimmed even when a later check refuses the definition; a class is
    // normalised only when it passes.
    CQZDadosGT_Erro& OnTrataGravacao(TQZBaseParaDados* pDados, IQZTrataInconsistencia* pInconsistencia) override;

private:
    CQZDadosGT_Erro& ConsistirCamposPersonalizados(CQZDadosPX_CamposPersonalizados* pDados,
                                                   IQZTrataInconsistencia* pInconsistencia);
};
