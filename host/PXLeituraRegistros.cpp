#include "host/PXLeituraRegistros.h"

std::unique_ptr<TQZBaseParaDados> CPXLeitorRegistrosJson::Le(std::string_view linha, long numero,
                                                            const IPXTipoHost*& tipo) {
    m_tipoLido = m_lendoTipo = m_tipoTexto = false;
    m_tipo = nullptr;
    m_destino = nullptr;
    m_reg.reset();
    m_pendentes.clear();
    if (!PXLeJsonMembros(linha, m_limites, numero, *this))
        throw CPXErroLeituraJson({}, "esperava um objeto JSON", numero);
    if (!m_tipoTexto) throw CPXErroLeituraJson("type", "falta o tipo do registro", numero);
    if (!m_destino)
        throw CPXErroLeituraJson("type", "tipo de registro desconhecido \"" + pxjson::Trecho(m_nomeTipo) + "\"",
                                 numero);
    try {
        m_destino->Termina();
    } catch (const CPXErroJson& e) {
        throw CPXErroLeituraJson(e.Campo(), e.what(), numero);
    }
    tipo = m_tipo;
    return std::move(m_reg);
}

bool CPXLeitorRegistrosJson::Chave(std::string_view chave) {
    if (chave == "type") {
        if (m_tipoLido) return false;
        m_tipoLido = m_lendoTipo = true;
        return true;
    }
    if (m_destino) return m_destino->Chave(chave);
    for (const auto& p : m_pendentes)
        if (p.first == chave) return false;
    m_pendentes.emplace_back(std::string(chave), pxjson::Json());
    return true;
}

void CPXLeitorRegistrosJson::Valor(pxjson::Json&& valor) {
    if (m_lendoTipo) {
        m_lendoTipo = false;
        DefineTipo(valor);
    } else if (m_destino) {
        m_destino->Valor(std::move(valor));
    } else {
        m_pendentes.back().second = std::move(valor);
    }
}

void CPXLeitorRegistrosJson::Texto(const std::string& valor) {
    if (m_destino && !m_lendoTipo)
        m_destino->Texto(valor);
    else
        Valor(pxjson::Json(valor));
}

void CPXLeitorRegistrosJson::DefineTipo(const pxjson::Json& valor) {
    if (!valor.is_string()) return;
    m_tipoTexto = true;
    m_nomeTipo = valor.get_ref<const std::string&>();
    // Lines of one type usually come together.
    const IPXTipoHost* tipo = m_ultimo && m_nomeTipo == m_ultimo->Nome() ? m_ultimo : PXBuscaTipoHost(m_nomeTipo);
    // Import takes a type by its full name only.
    if (!tipo || m_nomeTipo != tipo->Nome()) return;
    m_ultimo = m_tipo = tipo;
    auto& leitor = m_leitores[tipo];
    if (!leitor) leitor = tipo->LeitorMembros();
    m_destino = leitor.get();
    m_reg = tipo->Novo();
    m_destino->Inicia(*m_reg);
    // What came before the type, in its order.
    for (auto& [chave, v] : m_pendentes) {
        m_destino->Chave(chave);
        m_destino->Valor(std::move(v));
    }
    m_pendentes.clear();
}
