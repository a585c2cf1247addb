// Situations: type 1 are maintenance situations (each mapped onto a base
// situation of the order), type 2 task situations (a tree of groups and leaves).
#pragma once

#include "platform/QZRegistro.h"

// Read flags of LeSituacao: the header alone.
constexpr uint32_t PX_LER_SITUACAO_CABECALHO = 0;

#define CAMPOS_PX_SITUACAO(CAMPO, LISTA)                               \
    CAMPO(CString, Codigo, QZ_IDX)                                     \
    CAMPO(CString, Descricao, 0)                                       \
    CAMPO(uint8_t, Tipo, QZ_IDX)                                       \
    CAMPO(uint8_t, SituacaoBase, 0)                                    \
    CAMPO(uint8_t, TipoClassificacao, 0)                               \
    CAMPO(uint32_t, PonteiroPai, QZ_IDX | QZ_REF(CQZDadosPX_Situacao)) \
    CAMPO(uint8_t, Inativo, 0)                                         \
    CAMPO(REG_QZDMAHMSUTC, DmaHmsAtualizacao, QZ_CARIMBO)

class CQZDadosPX_Situacao : public TQZBaseParaDados {
    QZ_REGISTRO(CQZDadosPX_Situacao, CAMPOS_PX_SITUACAO)
};

#define CRITERIOS_PX_FILTRO_SITUACAO(CRITERIO)        \
    CRITERIO(CString, Codigo)                         \
    CRITERIO(uint8_t, AtivaVerificacaoCodigoParcial)  \
    CRITERIO(uint8_t, FlagTipo)                       \
    CRITERIO(uint32_t, PonteiroPai)

class CQZDadosPX_FiltroSituacao : public TQZBaseFiltro {
    QZ_FILTRO(CQZDadosPX_FiltroSituacao, CQZDadosPX_Situacao, CRITERIOS_PX_FILTRO_SITUACAO)
public:
    void MontaCondicoes(CQZCondicoes& c, bool classificacao) const override {
        c.Codigo("Codigo", m_critCodigo, m_critAtivaVerificacaoCodigoParcial.value_or(0) != 0);
        c.Igual("Tipo", m_critFlagTipo);
        if (classificacao && m_critPonteiroPai)
            c.Subarvore("PonteiroPai", *m_critPonteiroPai);
        else
            c.Igual("PonteiroPai", m_critPonteiroPai);
    }
};
