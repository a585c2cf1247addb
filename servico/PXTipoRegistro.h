// What the save/delete service knows of one record type: how its records
// are stored, which rule handler checks a save or a delete, how each line of
// its lists is checked before the save, how a delete goes, and which
// integrity check guards a delete. A host describes each type it serves
// once (TPXTipoRegistro<R>), adding what it needs on top (the command line
// adds the JSON form).
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "integrity/PXControleIntegridade.h"
#include "rules/PXTrataDados.h"
#include "store/QZArmazemSQL.h"

// Who asks: the company, user and session routines are initialised with.
struct CPXSessao {
    CString empresa;
    uint16_t usuario = 1;
    uint32_t sessao = 1;
};

// Where the check of a record's lines refused it: the list (its name in the
// record's declaration) and the line's index in it.
struct CPXLinhaRecusada {
    std::string lista;
    int64_t linha = -1;
};

// How a record of the type is deleted.
enum class EPXExclusao {
    // The handler's delete rules (TrataExclusao), after the integrity check
    // where the type has one; allowed, the record they hand back is removed.
    REGRAS,
    // A register: it has no delete rules of its own, so its handler is not
    // asked; the integrity check, where the type has one, then the removal.
    CADASTRO,
    // An order: its delete rules are a cancellation, which hands back the
    // stored record in the chosen situation; that record is written, and no
    // row is ever removed.
    CANCELAMENTO,
};

// What a delete is asked with.
struct CPXOpcoesExclusao {
    // The situation a record is cancelled into; 0: none chosen.
    uint32_t ulSituacaoCancelamento = 0;
};

class IPXTipoRegistro {
public:
    virtual ~IPXTipoRegistro() = default;
    virtual const char* Nome() const = 0;
    virtual bool ChavePorPosicao() const = 0;
    virtual std::unique_ptr<TQZBaseParaDados> Novo() const = 0;

    // The store: the write of an import (key and stamp kept), the write of a
    // save (insert when the key is empty, else an update carrying the stamp
    // read), a delete carrying the stamp read, a read by key, every key.
    [[nodiscard]] virtual long Restaura(CQZArmazemSQL& a, TQZBaseParaDados& r) const = 0;
    [[nodiscard]] virtual long Grava(CQZArmazemSQL& a, TQZBaseParaDados& r) const = 0;
    [[nodiscard]] virtual long Remove(CQZArmazemSQL& a, const TQZBaseParaDados& r) const = 0;
    [[nodiscard]] virtual long Le(CQZArmazemSQL& a, int64_t chave, TQZBaseParaDados& r) const = 0;
    [[nodiscard]] virtual long Chaves(CQZArmazemSQL& a, std::vector<int64_t>& chaves) const = 0;

    // The record's key as the store takes it (Le), whether the record has
    // one, and a key as users write it (a position, or "YYYY-MM/N").
    virtual int64_t Chave(const TQZBaseParaDados& r) const = 0;
    virtual bool EstaGravado(const TQZBaseParaDados& r) const = 0;
    virtual CString TextoChave(int64_t chave) const = 0;

    // The handler that checks this record (null when the type has none).
    virtual std::unique_ptr<CPXTrataDados> Tratador(const TQZBaseParaDados& r) const = 0;
    // Whether the lines of the type's lists are checked one by one before a
    // save, and the check itself, through `tratador` (the record's handler,
    // initialised) against `gravado`, the stored record (null for a new
    // one): false at the first line refused, with the verdict in `tratador`.
    virtual bool TemLinhas() const = 0;
    virtual bool ConfereLinhas(CPXTrataDados& tratador, const TQZBaseParaDados& r, const TQZBaseParaDados* gravado,
                               CPXLinhaRecusada& recusa) const = 0;
    virtual EPXExclusao Exclusao() const = 0;
    // Puts into the record what a cancellation was asked with.
    virtual void PreparaCancelamento(TQZBaseParaDados& r, const CPXOpcoesExclusao& opcoes) const = 0;
    // Whether the type has an integrity check before a delete.
    virtual bool TemIntegridade(const TQZBaseParaDados& r) const = 0;
    // The integrity check that must pass before the record is deleted, where
    // the type has one: false with the verdict in `veredito`.
    virtual bool VerificaIntegridade(const TQZBaseParaDados& r, const CPXSessao& sessao,
                                     CQZDadosGT_Erro& veredito) const = 0;
};

// One record type R; Base is IPXTipoRegistro or a host's extension of it.
template <class R, class Base = IPXTipoRegistro>
class TPXTipoRegistro : public Base {
public:
    using FabricaTratador = std::function<std::unique_ptr<CPXTrataDados>(const R&)>;
    using RegraIntegridade = std::function<bool(const R&, const CPXSessao&, CQZDadosGT_Erro&)>;
    using FiltroIntegridade = std::function<bool(const R&)>;
    using ConferenciaLinhas = std::function<bool(CPXTrataDados&, const R&, const R*, CPXLinhaRecusada&)>;

    // The handler of every record of the type.
    template <class H>
    TPXTipoRegistro& Com() {
        m_tratador = [](const R&) { return std::make_unique<H>(); };
        return *this;
    }
    // A handler chosen by the record (one record class, several handlers).
    TPXTipoRegistro& ComTratadorPor(FabricaTratador f) {
        m_tratador = std::move(f);
        return *this;
    }
    // An integrity check, for every record or for those `aplica` chooses.
    TPXTipoRegistro& ComIntegridade(RegraIntegridade r, FiltroIntegridade aplica = nullptr) {
        m_integridade = std::move(r);
        m_aplicaIntegridade = std::move(aplica);
        return *this;
    }
    // The check of the record's lines, through its handler H (servico/
    // PXLinhasRegistro.h); a record whose handler is another one has none.
    template <class H>
    TPXTipoRegistro& ComLinhas(bool (*confere)(H&, const R&, const R*, CPXLinhaRecusada&)) {
        m_linhas = [confere](CPXTrataDados& t, const R& r, const R* g, CPXLinhaRecusada& recusa) {
            H* h = dynamic_cast<H*>(&t);
            return !h || confere(*h, r, g, recusa);
        };
        return *this;
    }
    // A register: deleted without asking its handler.
    TPXTipoRegistro& ComExclusaoCadastro() {
        m_exclusao = EPXExclusao::CADASTRO;
        return *this;
    }
    // Deleted by cancelling: `situacao` puts the chosen situation into the
    // record its rules are given.
    TPXTipoRegistro& ComCancelamento(std::function<void(R&, uint32_t)> situacao) {
        m_exclusao = EPXExclusao::CANCELAMENTO;
        m_situacaoCancelamento = std::move(situacao);
        return *this;
    }
    // Movements: the month a new record is numbered in, taken from the
    // record when it is first written (its key "YYYY-MM/N" is that month and
    // the next number in it).
    TPXTipoRegistro& ComMesDaChave(std::function<REG_QZMA(const R&)> mes) {
        m_mesDaChave = std::move(mes);
        return *this;
    }

    const char* Nome() const override { return R::kNomeTipo; }
    bool ChavePorPosicao() const override { return QZTipoChaveDe<R>() == QZ_CHAVE_POSICAO; }
    std::unique_ptr<TQZBaseParaDados> Novo() const override { return std::make_unique<R>(); }
    long Restaura(CQZArmazemSQL& a, TQZBaseParaDados& r) const override { return a.Restaura(Tipado(r)); }
    long Grava(CQZArmazemSQL& a, TQZBaseParaDados& r) const override {
        R& reg = Tipado(r);
        if constexpr (QZTipoChaveDe<R>() == QZ_CHAVE_DMC) {
            REG_QZDMC* pChave = QZPonteiroChaveDmc(reg);
            if (m_mesDaChave && pChave && !pChave->EhValido()) {
                const REG_QZDMC vazia = *pChave;
                *pChave = REG_QZDMC(m_mesDaChave(reg), 0);
                const long hr = a.Grava(reg);
                if (hr != 0) *pChave = vazia;
                return hr;
            }
        }
        return a.Grava(reg);
    }
    long Remove(CQZArmazemSQL& a, const TQZBaseParaDados& r) const override { return a.Remove(Tipado(r)); }
    long Le(CQZArmazemSQL& a, int64_t chave, TQZBaseParaDados& r) const override {
        return a.LeRegistro(chave, Tipado(r));
    }
    long Chaves(CQZArmazemSQL& a, std::vector<int64_t>& chaves) const override { return a.ListaChaves<R>(chaves); }
    int64_t Chave(const TQZBaseParaDados& r) const override {
        if constexpr (QZTipoChaveDe<R>() == QZ_CHAVE_DMC)
            return static_cast<int64_t>(QZChaveDmcDe(Tipado(r)).GetValor());
        else if constexpr (QZTipoChaveDe<R>() == QZ_CHAVE_UNICA)
            return 1;
        else
            return static_cast<int64_t>(Tipado(r).GetPosicao());
    }
    bool EstaGravado(const TQZBaseParaDados& r) const override { return QZEstaGravado(Tipado(r)); }
    CString TextoChave(int64_t chave) const override {
        if constexpr (QZTipoChaveDe<R>() == QZ_CHAVE_DMC) {
            const REG_QZDMC dmc = REG_QZDMC::DeValor(static_cast<uint64_t>(chave));
            return CString::Formatado("%04u-%02u/%u", static_cast<unsigned>(dmc.ma.usAno),
                                      static_cast<unsigned>(dmc.ma.usMes), static_cast<unsigned>(dmc.ulNumero));
        } else {
            return CString::Formatado("%lld", static_cast<long long>(chave));
        }
    }
    std::unique_ptr<CPXTrataDados> Tratador(const TQZBaseParaDados& r) const override {
        return m_tratador ? m_tratador(Tipado(r)) : nullptr;
    }
    bool TemLinhas() const override { return static_cast<bool>(m_linhas); }
    bool ConfereLinhas(CPXTrataDados& tratador, const TQZBaseParaDados& r, const TQZBaseParaDados* gravado,
                       CPXLinhaRecusada& recusa) const override {
        return !m_linhas || m_linhas(tratador, Tipado(r), gravado ? &Tipado(*gravado) : nullptr, recusa);
    }
    EPXExclusao Exclusao() const override { return m_exclusao; }
    void PreparaCancelamento(TQZBaseParaDados& r, const CPXOpcoesExclusao& opcoes) const override {
        if (m_situacaoCancelamento) m_situacaoCancelamento(Tipado(r), opcoes.ulSituacaoCancelamento);
    }
    bool TemIntegridade(const TQZBaseParaDados& r) const override {
        return m_integridade && (!m_aplicaIntegridade || m_aplicaIntegridade(Tipado(r)));
    }
    bool VerificaIntegridade(const TQZBaseParaDados& r, const CPXSessao& sessao,
                             CQZDadosGT_Erro& veredito) const override {
        return !TemIntegridade(r) || m_integridade(Tipado(r), sessao, veredito);
    }

protected:
    // Records reach a type only through Novo(): a record of another class
    // is a programming error of the host, caught here rather than cast blindly.
    static R& Tipado(TQZBaseParaDados& r) { return dynamic_cast<R&>(r); }
    static const R& Tipado(const TQZBaseParaDados& r) { return dynamic_cast<const R&>(r); }

private:
    FabricaTratador m_tratador;
    ConferenciaLinhas m_linhas;
    EPXExclusao m_exclusao = EPXExclusao::REGRAS;
    std::function<void(R&, uint32_t)> m_situacaoCancelamento;
    RegraIntegridade m_integridade;
    FiltroIntegridade m_aplicaIntegridade;
    std::function<REG_QZMA(const R&)> m_mesDaChave;
};

// The integrity check of a kind of register, run for the record's position
// by a checker of the session (TPXTipoRegistro::ComIntegridade).
inline auto PXRegraIntegridade(CPXControleIntegridade::RegistroControleIntegridade tipo) {
    return [tipo](const auto& r, const CPXSessao& s, CQZDadosGT_Erro& veredito) {
        CPXControleIntegridade controle;
        if (controle.Inicializa(s.empresa, s.usuario, s.sessao) < 0 ||
            !controle.VerificaRelacionamentoPonteiro(tipo, r.GetPosicao())) {
            veredito = controle;
            return false;
        }
        return true;
    };
}
