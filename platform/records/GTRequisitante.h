// Requesters: the people or departments who ask for maintenance. A
// requester may belong to one branch (0: to none in particular).
#pragma once

#include "platform/QZRegistro.h"

#define CAMPOS_GT_REQUISITANTE(CAMPO, LISTA)           \
    CAMPO(CString, Codigo, 0)                          \
    CAMPO(CString, Nome, 0)                            \
    CAMPO(uint16_t, Filial, QZ_REF(CQZDadosGT_Filial)) \
    CAMPO(uint8_t, Inativo, 0)                         \
    CAMPO(REG_QZDMAHMSUTC, DmaHmsAtualizacao, QZ_CARIMBO)

class CQZDadosGT_Requisitante : public TQZBaseParaDados {
    QZ_REGISTRO(CQZDadosGT_Requisitante, CAMPOS_GT_REQUISITANTE)
public:
    QZModulo OnGetModulo() const override { return QZ_MODULO_GT; }
};
