// Custom-configuration records of the enterprise data layer. A
// configuration lists the fields users fill in for one activity of a
// generator record (the custom data of a task, for instance): for each field
// its description and whether it is mandatory or disabled. A filled record
// carries the same fields with their values.
#pragma once

#include "platform/QZRegistro.h"

// Activity of the custom data reported on an order's task.
constexpr uint8_t BDD_ATV_PX_APONTAMENTO_TAREFA = 8;

// Key of a configuration: the activity and the record that generates it
// (for order tasks, the task's custom-data definition). Configurations are
// stored at GetChaveArmazem(): the activity in the high 8 bits, the
// generator in the low 24, so generators are numbered below 16777216.
struct REG_BDD_KEY_GERADOR {
    uint8_t ucTipoAtividade = 0;
    uint32_t ulPonteiroGerador = 0;

    REG_BDD_KEY_GERADOR() = default;
    REG_BDD_KEY_GERADOR(uint8_t tipoAtividade, uint32_t ponteiroGerador)
        : ucTipoAtividade(tipoAtividade), ulPonteiroGerador(ponteiroGerador) {}

    uint32_t GetChaveArmazem() const {
        return (static_cast<uint32_t>(ucTipoAtividade) << 24) | (ulPonteiroGerador & 0xFFFFFFu);
    }
};

// A text of a custom field: informed when it holds more than blanks.
class CQZTextoBDD {
public:
    explicit CQZTextoBDD(CString valor) : m_valor(std::move(valor)) {}
    bool TemValorInformado() const {
        CString aparado = m_valor;
        return !aparado.Trim().IsEmpty();
    }
    const CString& GetValorAsString() const { return m_valor; }

private:
    CString m_valor;
};

// One field: its description (TextoDescricao, read as GetDescricao), its
// flags, and its value, kept in its text form.
#define CAMPOS_BDD_CAMPO(CAMPO, LISTA)     \
    CAMPO(CString, TextoDescricao, 0)      \
    CAMPO(uint8_t, CampoObrigatorio, 0)    \
    CAMPO(uint8_t, DesabilitarCampo, 0)    \
    CAMPO(CString, Valor, 0)

class CQZDadosBDD_Campo : public TQZBaseParaDados {
    QZ_REGISTRO(CQZDadosBDD_Campo, CAMPOS_BDD_CAMPO)
public:
    QZModulo OnGetModulo() const override { return QZ_MODULO_GT; }
    CQZTextoBDD GetDescricao() const { return CQZTextoBDD(GetTextoDescricao()); }
    bool TemValorInformado() const { return CQZTextoBDD(GetValor()).TemValorInformado(); }
};

#define CAMPOS_BDD_REGISTRO(CAMPO, LISTA) \
    CAMPO(uint8_t, TipoAtividade, 0)      \
    LISTA(CQZDadosBDD_Campo, Campos)

class CQZDadosBDD_Registro : public TQZBaseParaDados {
    QZ_REGISTRO(CQZDadosBDD_Registro, CAMPOS_BDD_REGISTRO)
public:
    QZModulo OnGetModulo() const override { return QZ_MODULO_GT; }
    auto& SetListaCampos(const std::vector<CQZDadosBDD_Campo>& campos) {
        m_listaCampos = campos;
        return *this;
    }
};
