// Users of the suite, stored at the position equal to their code. A read of
// a code no user has gives an empty record.
#pragma once

#include "platform/QZRegistro.h"

#define CAMPOS_GT_USUARIO(CAMPO, LISTA)   \
    CAMPO(CString, Login, 0)              \
    CAMPO(CString, Nome, 0)               \
    CAMPO(CString, Email, 0)              \
    CAMPO(uint8_t, Inativo, 0)            \
    CAMPO(REG_QZDMAHMSUTC, DmaHmsAtualizacao, QZ_CARIMBO)

class CQZDadosGT_Usuario : public TQZBaseParaDados {
    QZ_REGISTRO(CQZDadosGT_Usuario, CAMPOS_GT_USUARIO)
public:
    QZModulo OnGetModulo() const override { return QZ_MODULO_GT; }
};
