// Rules of expense entries: the save validation (which only reads the entry;
// a saved entry stays in the month of its key), the delete, which hands the
// complete stored entry back for the caller to remove, and the check of an
// item, which puts the item into the entry.
#pragma once

#include "rules/PXTrataDadosRegistro.h"

class CPXTrataDadosLancamentoGastos : public TPXTrataDadosRegistro<CQZDadosPX_LancamentoGastos> {
public:
    explicit CPXTrataDadosLancamentoGastos(bool bInterfaceUsuario = false);
    ~CPXTrataDadosLancamentoGastos() override { Finaliza(); }

    // The entry's own checks: a date, a resource, and for a saved entry the
    // month of its key.
    CQZDadosGT_Erro& ConsistirLancamentoGastos(CQZDadosPX_LancamentoGastos* pDados);
    // Checks `item` as the item at `index` of the entry (negative: a new
    // item) and, when it passes, puts it there (or appends it). A failed
    // check changes neither the entry nor the item.
    CQZDadosGT_Erro& TrataAdicionarAlterarItem(CQZDadosPX_LancamentoGastos* pDados,
                                               CQZDadosPX_LancamentoGastosItem* pItem, int64_t index,
                                               IQZTrataInconsistencia* pInconsistencia);

protected:
    CQZDadosGT_Erro& Consistir(CQZDadosPX_LancamentoGastos& dados, const CQZDadosPX_LancamentoGastos*,
                               IQZTrataInconsistencia*) override {
        return ConsistirLancamentoGastos(&dados);
    }
    // Any saved entry may go: `dados` becomes the complete stored entry, for
    // the caller to remove.
    CQZDadosGT_Erro& ConsistirExclusao(CQZDadosPX_LancamentoGastos& dados, IQZTrataInconsistencia*) override;
};
