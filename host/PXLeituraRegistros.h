// The records of an import, one JSON line each, read straight into the
// record of the type the line names, with no tree of the line in between.
// Each line is refused as the tree's reading would refuse it, with the same
// field, line and message.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "host/PXLeituraJson.h"
#include "host/PXTiposHost.h"

class CPXLeitorRegistrosJson : private pxjson::IPXMembrosJson {
public:
    explicit CPXLeitorRegistrosJson(const CPXLimitesJson& limites) : m_limites(limites) {}

    // The record of `linha`, line `numero` of the input, and its type.
    // Throws CPXErroLeituraJson.
    std::unique_ptr<TQZBaseParaDados> Le(std::string_view linha, long numero, const IPXTipoHost*& tipo);

private:
    bool Chave(std::string_view chave) override;
    void Valor(pxjson::Json&& valor) override;
    void Texto(const std::string& valor) override;
    void DefineTipo(const pxjson::Json& valor);

    const CPXLimitesJson m_limites;
    // The line being read.
    bool m_tipoLido = false, m_lendoTipo = false, m_tipoTexto = false;
    std::string m_nomeTipo;
    const IPXTipoHost* m_tipo = nullptr;
    std::unique_ptr<TQZBaseParaDados> m_reg;
    IPXRegistroMembros* m_destino = nullptr;
    // Members met before the type, kept until it is known.
    std::vector<std::pair<std::string, pxjson::Json>> m_pendentes;
    // One reader per type met, kept across lines.
    std::unordered_map<const IPXTipoHost*, std::unique_ptr<IPXRegistroMembros>> m_leitores;
    const IPXTipoHost* m_ultimo = nullptr;
};
