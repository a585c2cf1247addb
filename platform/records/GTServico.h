// Services of the enterprise register. A service has no grid: it is named
// by its item position alone.
#pragma once

#include "platform/QZRegistro.h"

#define CAMPOS_GT_SERVICO(CAMPO, LISTA)   \
    CAMPO(CString, Codigo, 0)             \
    CAMPO(CString, Nome, 0)               \
    CAMPO(uint8_t, Inativo, 0)            \
    CAMPO(REG_QZDMAHMSUTC, DmaHmsAtualizacao, QZ_CARIMBO)

class CQZDadosGT_Servico : public TQZBaseParaDados {
    QZ_REGISTRO(CQZDadosGT_Servico, CAMPOS_GT_SERVICO)
public:
    QZModulo OnGetModulo() const override { return QZ_MODULO_GT; }
};
