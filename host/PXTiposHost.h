// The record types the host knows: for each, how its records map to JSON
// and to the store, which rule handler checks a save or a delete, and which
// integrity check guards a delete. The table itself is in PXTiposHost.cpp,
// one line per type.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "host/PXJson.h"
#include "servico/PXTipoRegistro.h"

// What the command line adds to a record type: its JSON form.
class IPXTipoHost : public IPXTipoRegistro {
public:
    // JSON <-> record. DeJson throws CPXErroJson.
    virtual void DeJson(const nlohmann::ordered_json& j, TQZBaseParaDados& r) const = 0;
    virtual nlohmann::ordered_json ParaJson(const TQZBaseParaDados& r) const = 0;
};

template <class R>
class CPXTipoHost : public TPXTipoRegistro<R, IPXTipoHost> {
    using Base = TPXTipoRegistro<R, IPXTipoHost>;

public:
    void DeJson(const nlohmann::ordered_json& j, TQZBaseParaDados& r) const override {
        PXRegistroDeJson(j, Base::Tipado(r));
    }
    nlohmann::ordered_json ParaJson(const TQZBaseParaDados& r) const override {
        return PXRegistroParaJson(Base::Tipado(r));
    }
};

// Every type the host knows, in the order of an export.
const std::vector<std::unique_ptr<IPXTipoHost>>& PXTiposHost();
// By class name ("CQZDadosPX_Prioridade") or by the name after the prefix
// ("Prioridade"); null when unknown or ambiguous.
const IPXTipoHost* PXBuscaTipoHost(const std::string& nome);
