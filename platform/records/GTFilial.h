// Branches of the company. The integration lock month closes accounting
// integration at one branch, on top of the company's accounting period.
#pragma once

#include "platform/QZRegistro.h"

#define CAMPOS_GT_FILIAL(CAMPO, LISTA)                  \
    CAMPO(uint16_t, Codigo, 0)                          \
    CAMPO(CString, Identificacao, 0)                    \
    CAMPO(CString, NomeFantasia, 0)                     \
    CAMPO(CString, RazaoSocial, 0)                      \
    CAMPO(REG_QZMA, MesBloqueioIntegracao, 0)           \
    CAMPO(REG_QZDMAHMSUTC, DmaHmsAtualizacao, QZ_CARIMBO)

class CQZDadosGT_Filial : public TQZBaseParaDados {
    QZ_REGISTRO(CQZDadosGT_Filial, CAMPOS_GT_FILIAL)
public:
    QZModulo OnGetModulo() const override { return QZ_MODULO_GT; }
};
