// The module's master settings: one record per company, read by the rules
// of other records (whether orders need a technician or time entries) and
// by the list screens (the month from which lists are shown). Before the
// first save the store answers with an empty record whose stamp is empty.
#pragma once

#include "platform/QZRegistro.h"

#define CAMPOS_PX_MESTRE(CAMPO, LISTA)                      \
    CAMPO(uint8_t, UsaDataVisualizacao, 0)                  \
    CAMPO(REG_QZMA, MesAnoVisualizacao, 0)                  \
    CAMPO(uint8_t, ObrigarInformarTecnicoManutencao, 0)     \
    CAMPO(uint8_t, ObrigarApontamentoManutencao, 0)         \
    CAMPO(REG_QZDMAHMSUTC, DmaHmsGravacao, QZ_CARIMBO)

class CQZDadosPX_Mestre : public TQZBaseParaDados {
    QZ_REGISTRO(CQZDadosPX_Mestre, CAMPOS_PX_MESTRE)
public:
    static constexpr QZTipoChave kTipoChave = QZ_CHAVE_UNICA;
};
