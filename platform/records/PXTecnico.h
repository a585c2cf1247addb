// Technicians: the people (leaves) and groups who carry out maintenance, a
// tree like disciplines. A technician may be tied to a user and a branch and
// holds a list of disciplines.
#pragma once

#include "platform/records/PXCriterios.h"

#define CAMPOS_PX_TECNICO_DISCIPLINA(CAMPO, LISTA) CAMPO(uint32_t, PonteiroDisciplina, QZ_IDX | QZ_REF(CQZDadosPX_Disciplina))

class CQZDadosPX_TecnicoDisciplina : public TQZBaseParaDados {
    QZ_REGISTRO(CQZDadosPX_TecnicoDisciplina, CAMPOS_PX_TECNICO_DISCIPLINA)
};

// One e-mail address of a technician (the alert routine mails each one).
#define CAMPOS_PX_TECNICO_EMAIL(CAMPO, LISTA) CAMPO(CString, Endereco, 0)

class CQZDadosPX_TecnicoEmail : public TQZBaseParaDados {
    QZ_REGISTRO(CQZDadosPX_TecnicoEmail, CAMPOS_PX_TECNICO_EMAIL)
};

#define CAMPOS_PX_TECNICO(CAMPO, LISTA)                                   \
    CAMPO(CString, Codigo, QZ_IDX)                                        \
    CAMPO(CString, Nome, 0)                                               \
    CAMPO(uint32_t, PonteiroPai, QZ_IDX | QZ_REF(CQZDadosPX_Tecnico))     \
    CAMPO(uint8_t, TipoClassificacao, QZ_IDX)                             \
    CAMPO(uint16_t, PonteiroFilial, QZ_IDX | QZ_REF(CQZDadosGT_Filial))   \
    CAMPO(uint16_t, PonteiroUsuario, QZ_IDX | QZ_REF(CQZDadosGT_Usuario)) \
    CAMPO(uint8_t, Inativo, QZ_IDX)                                       \
    CAMPO(REG_QZDMAHMSUTC, DmaHmsGravacao, QZ_CARIMBO)                    \
    LISTA(CQZDadosPX_TecnicoDisciplina, Disciplina)                       \
    LISTA(CQZDadosPX_TecnicoEmail, Email)

class CQZDadosPX_Tecnico : public TQZBaseParaDados {
    QZ_REGISTRO(CQZDadosPX_Tecnico, CAMPOS_PX_TECNICO)
};

// Branch scope as PXCriterios.h says. SetAtivo(1) keeps active technicians,
// SetTipoClassificacaoAnalitico(1) leaves. SetValorUnicoDisciplina keeps the
// technicians whose list holds that very discipline: the store matches the
// discipline itself, never its group or members, so SetFiltrarDisciplinaExata
// states the caller's intent and narrows nothing further.
#define CRITERIOS_PX_FILTRO_TECNICO(CRITERIO)        \
    CRITERIO(CString, Codigo)                        \
    CRITERIO(uint8_t, TodasFiliais)                  \
    CRITERIO(uint16_t, ValorUnicoFilial)             \
    CRITERIO(uint16_t, PonteiroUsuario)              \
    CRITERIO(uint8_t, Ativo)                         \
    CRITERIO(uint8_t, TipoClassificacaoAnalitico)    \
    CRITERIO(uint32_t, PonteiroPai)                  \
    CRITERIO(uint32_t, ValorUnicoDisciplina)         \
    CRITERIO(uint8_t, FiltrarDisciplinaExata)        \
    CRITERIO(uint8_t, Inativo)                       \
    CRITERIO(uint8_t, TodosDescendentes)

class CQZDadosPX_FiltroTecnico : public TQZBaseFiltro {
    QZ_FILTRO(CQZDadosPX_FiltroTecnico, CQZDadosPX_Tecnico, CRITERIOS_PX_FILTRO_TECNICO)
public:
    void MontaCondicoes(CQZCondicoes& c, bool classificacao) const override {
        c.Codigo("Codigo", m_critCodigo, false);
        PXCondicaoFilial(c, m_critTodasFiliais, m_critValorUnicoFilial);
        c.Igual("PonteiroUsuario", m_critPonteiroUsuario);
        if (m_critAtivo.value_or(0) != 0) c.Igual("Inativo", uint8_t{0});
        if (m_critTipoClassificacaoAnalitico.value_or(0) != 0) c.Igual("TipoClassificacao", PX_CLASSIFICACAO_ANALITICO);
        c.Igual("Inativo", m_critInativo);
        // Every technician under the parent, at any depth (the parent itself
        // is not one of them).
        if (m_critTodosDescendentes.value_or(0) != 0 && m_critPonteiroPai && !classificacao)
            c.Descendentes("PonteiroPai", *m_critPonteiroPai);
        else
            PXCondicaoPai(c, m_critPonteiroPai, classificacao);
        if (m_critValorUnicoDisciplina) c.ListaContem("Disciplina", "PonteiroDisciplina", *m_critValorUnicoDisciplina);
    }
};
