// Period types of the enterprise register ("quinzena", "trimestre", ...):
// a period is IncrementoPeriodo units of TipoPeriodo (0 days, 1 months,
// 2 years).
#pragma once

#include "platform/QZRegistro.h"

enum : uint16_t {
    GT_TIPO_PERIODO_DIAS = 0,
    GT_TIPO_PERIODO_MESES = 1,
    GT_TIPO_PERIODO_ANOS = 2,
};

#define CAMPOS_GT_TIPO_PERIODO(CAMPO, LISTA)              \
    CAMPO(CString, Codigo, 0)                             \
    CAMPO(CString, Descricao, 0)                          \
    CAMPO(uint16_t, TipoPeriodo, 0)                       \
    CAMPO(uint16_t, IncrementoPeriodo, 0)                 \
    CAMPO(REG_QZDMAHMSUTC, DmaHmsAtualizacao, QZ_CARIMBO)

class CQZDadosGT_TipoPeriodo : public TQZBaseParaDados {
    QZ_REGISTRO(CQZDadosGT_TipoPeriodo, CAMPOS_GT_TIPO_PERIODO)
public:
    QZModulo OnGetModulo() const override { return QZ_MODULO_GT; }
};
