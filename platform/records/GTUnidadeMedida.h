// Units of measure of the enterprise register: product units and service
// units are two registers. A resource's counter is measured in one of them.
#pragma once

#include "platform/QZRegistro.h"

#define CAMPOS_GT_UNIDADE_MEDIDA(CAMPO, LISTA)     \
    CAMPO(CString, Codigo, 0)                      \
    CAMPO(CString, Descricao, 0)                   \
    CAMPO(uint8_t, QuantidadeCasasDecimais, 0)     \
    CAMPO(REG_QZDMAHMSUTC, DmaHmsAtualizacao, QZ_CARIMBO)

class CQZDadosGT_UnidadeMedidaProduto : public TQZBaseParaDados {
    QZ_REGISTRO(CQZDadosGT_UnidadeMedidaProduto, CAMPOS_GT_UNIDADE_MEDIDA)
public:
    QZModulo OnGetModulo() const override { return QZ_MODULO_GT; }
};

class CQZDadosGT_UnidadeMedidaServico : public TQZBaseParaDados {
    QZ_REGISTRO(CQZDadosGT_UnidadeMedidaServico, CAMPOS_GT_UNIDADE_MEDIDA)
public:
    QZModulo OnGetModulo() const override { return QZ_MODULO_GT; }
};
