// The company's accounting period: one record. Months up to the lock month
// are closed; integration and movements are accepted inside their ranges.
#pragma once

#include "platform/QZRegistro.h"

#define CAMPOS_GT_PERIODO_CONTABIL(CAMPO, LISTA)        \
    CAMPO(REG_QZMA, MesBloqueio, 0)                     \
    CAMPO(REG_QZDMA, DataInferiorIntegracao, 0)         \
    CAMPO(REG_QZDMA, DataSuperiorIntegracao, 0)         \
    CAMPO(REG_QZDMA, DataInferiorMovimentacao, 0)       \
    CAMPO(REG_QZDMA, DataSuperiorMovimentacao, 0)       \
    CAMPO(REG_QZDMAHMSUTC, DmaHmsAtualizacao, QZ_CARIMBO)

class CQZDadosGT_PeriodoContabil : public TQZBaseParaDados {
    QZ_REGISTRO(CQZDadosGT_PeriodoContabil, CAMPOS_GT_PERIODO_CONTABIL)
public:
    static constexpr QZTipoChave kTipoChave = QZ_CHAVE_UNICA;
    QZModulo OnGetModulo() const override { return QZ_MODULO_GT; }
};
