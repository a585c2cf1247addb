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
#include "host/PXReferencias.h"
#include "servico/PXTipoRegistro.h"

// What the command line adds to a record type: its JSON form.
class IPXTipoHost : public IPXTipoRegistro {
public:
    // JSON <-> record. DeJson throws CPXErroJson.
    virtual void DeJson(const nlohmann::ordered_json& j, TQZBaseParaDados& r) const = 0;
    virtual nlohmann::ordered_json ParaJson(const TQZBaseParaDados& r) const = 0;
    // A reader of the type's records straight from a reader's members (import).
    virtual std::unique_ptr<IPXRegistroMembros> LeitorMembros() const = 0;
    // The stored record a record names (its position or movement key; 0 for
    // a new one, and for one-record tables), and the field that names it.
    virtual int64_t ChaveInformada(const TQZBaseParaDados& r) const = 0;
    virtual const char* CampoChave() const = 0;
    // The non-zero pointers the record holds (QZ_REF fields, its lists' too).
    virtual std::vector<CPXReferencia> Referencias(const TQZBaseParaDados& r) const = 0;
};

// The name of a record's key field (the position, unless it declares one).
struct PXVisitanteNomeChave {
    const char* nome = "Posicao";
    template <class T>
    void Campo(const char* n, const T&, unsigned opcoes) {
        if (opcoes & QZ_CHAVE) nome = n;
    }
    template <class E>
    void Lista(const char*, const std::vector<E>&) {}
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
    std::unique_ptr<IPXRegistroMembros> LeitorMembros() const override {
        return std::make_unique<CPXRegistroMembros<R>>();
    }
    int64_t ChaveInformada(const TQZBaseParaDados& r) const override {
        if constexpr (QZTipoChaveDe<R>() == QZ_CHAVE_POSICAO) {
            return Base::Tipado(r).GetPosicao();
        } else if constexpr (QZTipoChaveDe<R>() == QZ_CHAVE_DMC) {
            const REG_QZDMC chave = QZChaveDmcDe(Base::Tipado(r));
            return chave.EhValido() ? static_cast<int64_t>(chave.GetValor()) : 0;
        } else {
            return 0;
        }
    }
    std::vector<CPXReferencia> Referencias(const TQZBaseParaDados& r) const override {
        std::vector<CPXReferencia> referencias;
        PXVisitanteReferencias v{referencias, {}};
        Base::Tipado(r).VisitaCampos(v);
        return referencias;
    }
    const char* CampoChave() const override {
        PXVisitanteNomeChave v;
        R modelo;
        modelo.VisitaCampos(v);
        return v.nome;
    }
};

// Every type the host knows, in the order of an export.
const std::vector<std::unique_ptr<IPXTipoHost>>& PXTiposHost();
// By class name ("CQZDadosPX_Prioridade") or by the name after the prefix
// ("Prioridade"); null when unknown or ambiguous.
const IPXTipoHost* PXBuscaTipoHost(const std::string& nome);
