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
#include "rules/PXTrataDados.h"
#include "store/QZArmazemSQL.h"

// Who asks: the company, user and session the host initialises routines with.
struct CPXSessaoHost {
    CString empresa;
    uint16_t usuario = 1;
    uint32_t sessao = 1;
};

class IPXTipoHost {
public:
    virtual ~IPXTipoHost() = default;
    virtual const char* Nome() const = 0;
    virtual bool ChavePorPosicao() const = 0;
    virtual std::unique_ptr<TQZBaseParaDados> Novo() const = 0;

    // JSON <-> record. DeJson throws CPXErroJson.
    virtual void DeJson(const nlohmann::ordered_json& j, TQZBaseParaDados& r) const = 0;
    virtual nlohmann::ordered_json ParaJson(const TQZBaseParaDados& r) const = 0;

    // The store: the write of an import (key and stamp kept), the write of a
    // save (insert when the key is empty, else an update carrying the stamp
    // read), a delete carrying the stamp read, a read by key, every key.
    virtual long Restaura(CQZArmazemSQL& a, TQZBaseParaDados& r) const = 0;
    virtual long Grava(CQZArmazemSQL& a, TQZBaseParaDados& r) const = 0;
    virtual long Remove(CQZArmazemSQL& a, const TQZBaseParaDados& r) const = 0;
    virtual long Le(CQZArmazemSQL& a, int64_t chave, TQZBaseParaDados& r) const = 0;
    virtual long Chaves(CQZArmazemSQL& a, std::vector<int64_t>& chaves) const = 0;

    // The handler that checks this record (null when the type has none).
    virtual std::unique_ptr<CPXTrataDados> Tratador(const TQZBaseParaDados& r) const = 0;
    // The integrity check that must pass before the record is deleted, where
    // the type has one: false with the verdict in `veredito`.
    virtual bool VerificaIntegridade(const TQZBaseParaDados& r, const CPXSessaoHost& sessao,
                                     CQZDadosGT_Erro& veredito) const = 0;
};

template <class R>
class CPXTipoHost : public IPXTipoHost {
public:
    using FabricaTratador = std::function<std::unique_ptr<CPXTrataDados>(const R&)>;
    using RegraIntegridade = std::function<bool(const R&, const CPXSessaoHost&, CQZDadosGT_Erro&)>;

    // The handler of every record of the type.
    template <class H>
    CPXTipoHost& Com() {
        m_tratador = [](const R&) { return std::make_unique<H>(); };
        return *this;
    }
    // A handler chosen by the record (one record class, several handlers).
    CPXTipoHost& ComTratadorPor(FabricaTratador f) {
        m_tratador = std::move(f);
        return *this;
    }
    CPXTipoHost& ComIntegridade(RegraIntegridade r) {
        m_integridade = std::move(r);
        return *this;
    }

    const char* Nome() const override { return R::kNomeTipo; }
    bool ChavePorPosicao() const override { return QZTipoChaveDe<R>() == QZ_CHAVE_POSICAO; }
    std::unique_ptr<TQZBaseParaDados> Novo() const override { return std::make_unique<R>(); }
    void DeJson(const nlohmann::ordered_json& j, TQZBaseParaDados& r) const override {
        PXRegistroDeJson(j, static_cast<R&>(r));
    }
    nlohmann::ordered_json ParaJson(const TQZBaseParaDados& r) const override {
        return PXRegistroParaJson(static_cast<const R&>(r));
    }
    long Restaura(CQZArmazemSQL& a, TQZBaseParaDados& r) const override { return a.Restaura(static_cast<R&>(r)); }
    long Grava(CQZArmazemSQL& a, TQZBaseParaDados& r) const override { return a.Grava(static_cast<R&>(r)); }
    long Remove(CQZArmazemSQL& a, const TQZBaseParaDados& r) const override {
        return a.Remove(static_cast<const R&>(r));
    }
    long Le(CQZArmazemSQL& a, int64_t chave, TQZBaseParaDados& r) const override {
        return a.LeRegistro(chave, static_cast<R&>(r));
    }
    long Chaves(CQZArmazemSQL& a, std::vector<int64_t>& chaves) const override { return a.ListaChaves<R>(chaves); }
    std::unique_ptr<CPXTrataDados> Tratador(const TQZBaseParaDados& r) const override {
        return m_tratador ? m_tratador(static_cast<const R&>(r)) : nullptr;
    }
    bool VerificaIntegridade(const TQZBaseParaDados& r, const CPXSessaoHost& sessao,
                             CQZDadosGT_Erro& veredito) const override {
        return !m_integridade || m_integridade(static_cast<const R&>(r), sessao, veredito);
    }

private:
    FabricaTratador m_tratador;
    RegraIntegridade m_integridade;
};

// Every type the host knows, in the order of an export.
const std::vector<std::unique_ptr<IPXTipoHost>>& PXTiposHost();
// By class name ("CQZDadosPX_Prioridade") or by the name after the prefix
// ("Prioridade"); null when unknown or ambiguous.
const IPXTipoHost* PXBuscaTipoHost(const std::string& nome);
