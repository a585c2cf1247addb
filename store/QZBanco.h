// The stores' database layer, the same for every engine: a connection that
// keeps its prepared statements by slot, statements that are reset however
// their use ends, and one transaction helper. What differs between engines
// (opening, preparing, stepping, the error mapping, the dialect of the DDL
// and of the catalogue) sits behind IQZMotor / IQZComandoMotor, one class
// pair per engine (QZSQLite.h, QZPostgres.h). Nothing above this layer
// calls an engine's API.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace qzsql {

// A statement's place in every connection's table of kept statements: the
// store's fixed statements and compiled searches are found by slot, without
// hashing their text.
uint32_t NovoSlot();

// A failure inside a store operation, turned into the store's error record
// at its dispatch point.
struct Falha {
    long hr;
    long mensagem;
    std::string texto;
};

// An insert refused because its key is taken (the caller words the message).
struct FalhaChaveDuplicada : Falha {};

// What a connection tells its owner about its transactions.
class IObservadorTransacao {
public:
    virtual ~IObservadorTransacao() = default;
    // The outermost transaction began.
    virtual void AoIniciar() {}
    // The outermost transaction was committed; `linhas` rows were changed in it.
    virtual void AoConfirmar(int64_t /*linhas*/) {}
    // The outermost transaction was rolled back.
    virtual void AoDesfazer() {}
};

// A statement of fixed text with its slot.
struct CQZComandoFixo {
    std::string sql;
    uint32_t slot = NovoSlot();
};

// Sees every statement a connection runs, with the values bound to it
// (benchmarks replay them directly to measure what the store adds).
class IObservadorComandos {
public:
    virtual ~IObservadorComandos() = default;
    struct Valor {
        int indice;
        bool texto;
        int64_t inteiro;
        std::string utf8;
    };
    virtual void AoExecutar(std::string_view sql, const std::vector<Valor>& valores) = 0;
};

enum class EModoTransacao {
    LEITURA,  // one consistent snapshot for a batch of reads
    ESCRITA,  // takes the store's write lock at once, so a read-then-write never loses it
};

enum class EMotor { SQLITE, POSTGRES };

// One prepared statement of an engine. Statements are written with `?` or
// `?N` placeholders; an engine with another syntax translates them when it
// prepares.
class IQZComandoMotor {
public:
    virtual ~IQZComandoMotor() = default;
    virtual void Liga(int indice, int64_t valor) = 0;
    // UTF-8 text; `fixo`: it outlives this use of the statement, no copy needed.
    virtual void LigaTexto(int indice, std::string_view utf8, bool fixo) = 0;
    // True on a row, false when done; throws Falha.
    virtual bool Passo() = 0;
    virtual int64_t Inteiro(int coluna) const = 0;
    virtual std::string_view Texto(int coluna) const = 0;
    virtual bool Nulo(int coluna) const = 0;
    virtual int Colunas() const = 0;
    // Rows the last run inserted, changed or deleted.
    virtual int64_t Alteradas() const = 0;
    // Ready for the next use: results dropped, values unbound.
    virtual void Reinicia() noexcept = 0;
    virtual std::string_view Sql() const = 0;
};

// One connection of an engine, with what its SQL dialect and catalogue need.
class IQZMotor {
public:
    virtual ~IQZMotor() = default;
    virtual EMotor Tipo() const = 0;
    // Throws Falha.
    virtual std::unique_ptr<IQZComandoMotor> Prepara(std::string_view sql) = 0;
    virtual void Executa(const char* sql) = 0;
    // How long a statement waits for another connection's lock.
    virtual void DefineEspera(int ms) = 0;

    // Transactions: the statements that begin and commit one (run as any
    // other, so observers see them), what completes a begin and what checks
    // before a commit (both throw), and the rollback (never throws: a lost
    // connection has rolled back already).
    virtual const char* SqlInicio(EModoTransacao modo) const = 0;
    virtual void AposInicio(EModoTransacao) {}
    virtual void AntesDeConfirmar() {}
    virtual void Desfaz() noexcept = 0;
    // Rows changed through this connection since it opened.
    virtual int64_t TotalAlteradas() const = 0;
    // A number that changes when another connection commits, read inside the
    // current transaction; absent when the engine keeps none.
    virtual std::optional<int64_t> VersaoDados() = 0;

    // The connection broke (the server went away); Reconecta opens it again
    // (throws Falha). Prepared statements do not survive it.
    virtual bool Perdida() const { return false; }
    virtual void Reconecta() {}

    // Refreshes the statistics the planner chooses indexes by.
    virtual void AtualizaEstatisticas() = 0;
    // What the engine advises before a connection closes.
    virtual void AoFechar() noexcept {}
    // The plan of a statement, one line per step.
    virtual std::vector<std::string> Plano(const std::string& sql) = 0;

    // Settings of a store's connection, after its layout was found known.
    virtual void ConfiguraArmazem() {}

    // ---- dialect and catalogue ----
    // The name the engine keeps for a table or index named `nome` (an engine
    // may shorten long names).
    virtual std::string NomeObjeto(const std::string& nome) const { return nome; }
    virtual bool ExisteTabela(const std::string& nome) = 0;
    // True when some table's name starts with `prefixo`.
    virtual bool ExisteTabelaComPrefixo(const std::string& prefixo) = 0;
    virtual std::set<std::string> Colunas(const std::string& tabela) = 0;
    virtual std::set<std::string> Indices(const std::string& tabela) = 0;
    // Column types: an integer holds 64 bits; text compares byte by byte.
    virtual std::string TipoInteiro() const = 0;
    virtual std::string TipoTexto() const = 0;
    // The key column of a table whose keys the caller gives (false) or the
    // engine numbers (true).
    virtual std::string ColunaChave(bool automatica) const = 0;
    // Taken inside a write transaction before a key is chosen for `tabela`,
    // so two writers never choose the same one.
    virtual void ReservaChaves(const std::string& tabela) = 0;
};

class CQZBanco {
public:
    // `nome` names the database in messages (the file or the server, never SQL).
    explicit CQZBanco(std::string nome) : m_nome(std::move(nome)) {}
    ~CQZBanco();
    CQZBanco(const CQZBanco&) = delete;
    CQZBanco& operator=(const CQZBanco&) = delete;

    // Takes an engine's open connection.
    void Abre(std::unique_ptr<IQZMotor> motor, int esperaMs);
    // Closes the database and drops its statements.
    void Fecha() noexcept;
    bool EstaAberto() const { return m_motor != nullptr; }
    IQZMotor& Motor() const { return *m_motor; }
    const std::string& Nome() const { return m_nome; }
    int Espera() const { return m_esperaMs; }
    void DefineEspera(int ms);
    void DefineObservador(IObservadorTransacao* observador) { m_pObservador = observador; }
    void DefineObservadorComandos(IObservadorComandos* observador) { m_pComandos = observador; }
    IObservadorComandos* ObservadorComandos() const { return m_pComandos; }

    // Before an operation outside any transaction: a connection that broke is
    // opened again (throws Falha when it cannot be).
    void Revive();

    // A statement prepared once for this connection and kept by its text.
    IQZComandoMotor* Prepara(std::string_view sql);
    // The same, kept in its slot (NovoSlot); `sql` is always the same text
    // for a slot.
    IQZComandoMotor* Prepara(uint32_t slot, std::string_view sql) {
        if (slot < m_porSlot.size() && m_porSlot[slot]) [[likely]]
            return m_porSlot[slot].get();
        return PreparaNoSlot(slot, sql);
    }
    // Drops every kept statement (after the planner's statistics change).
    void DescartaComandos();
    void Executa(const char* sql) { m_motor->Executa(sql); }

    int NivelTransacao() const { return m_nivel; }
    // A transaction left open for a scope: started when none is open (true),
    // ended by EncerraTransacao (committed; a read transaction writes nothing).
    bool IniciaTransacao(EModoTransacao modo);
    void EncerraTransacao();
    // The same end, told: a commit that fails is rolled back and thrown (Falha).
    void ConfirmaTransacao();
    // Rolls back the open transaction, if any.
    void DesfazTransacao() noexcept;
    // Runs fn (returning a long status) in a transaction; inside an open
    // one it joins it. The outermost transaction commits when fn returns 0
    // and rolls back when it returns anything else or throws.
    template <class F>
    long EmTransacao(EModoTransacao modo, F&& fn);

private:
    void Inicia(EModoTransacao modo);
    void Confirma();
    void Desfaz() noexcept;
    IQZComandoMotor* PreparaNoSlot(uint32_t slot, std::string_view sql);

    std::string m_nome;
    std::unique_ptr<IQZMotor> m_motor;
    int m_esperaMs = 0;
    int m_nivel = 0;
    int64_t m_linhasAntes = 0;
    IObservadorTransacao* m_pObservador = nullptr;
    IObservadorComandos* m_pComandos = nullptr;
    std::unordered_map<std::string, std::unique_ptr<IQZComandoMotor>> m_comandos;
    std::vector<std::unique_ptr<IQZComandoMotor>> m_porSlot;
};

// A kept statement in use: bound, stepped and read here, reset and unbound
// when it goes out of scope, also when a failure is thrown.
class CQZComando {
public:
    CQZComando(CQZBanco& banco, std::string_view sql) : m_banco(banco), m_st(banco.Prepara(sql)) { Vigia(); }
    CQZComando(CQZBanco& banco, const CQZComandoFixo& fixo)
        : m_banco(banco), m_st(banco.Prepara(fixo.slot, fixo.sql)) {
        Vigia();
    }
    // A statement kept in `slot` whose text is the connection's own.
    CQZComando(CQZBanco& banco, uint32_t slot, std::string_view sql)
        : m_banco(banco), m_st(banco.Prepara(slot, sql)) {
        Vigia();
    }
    ~CQZComando() {
        if (m_pValores) m_banco.ObservadorComandos()->AoExecutar(m_st->Sql(), *m_pValores);
        m_st->Reinicia();
    }
    CQZComando(const CQZComando&) = delete;
    CQZComando& operator=(const CQZComando&) = delete;

    CQZComando& Liga(int indice, int64_t valor) {
        m_st->Liga(indice, valor);
        Observa(indice, false, valor, {});
        return *this;
    }
    // UTF-8 text; copied.
    CQZComando& LigaTexto(int indice, std::string_view utf8) {
        m_st->LigaTexto(indice, utf8, false);
        Observa(indice, true, 0, utf8);
        return *this;
    }
    // UTF-8 text that outlives this use of the statement: not copied.
    CQZComando& LigaTextoFixo(int indice, std::string_view utf8) {
        m_st->LigaTexto(indice, utf8, true);
        Observa(indice, true, 0, utf8);
        return *this;
    }
    // True on a row, false when done; throws on an error.
    bool Passo() { return m_st->Passo(); }
    int64_t Inteiro(int coluna) const { return m_st->Inteiro(coluna); }
    std::string_view Texto(int coluna) const { return m_st->Texto(coluna); }
    bool Nulo(int coluna) const { return m_st->Nulo(coluna); }
    int Colunas() const { return m_st->Colunas(); }
    // Rows the statement inserted, changed or deleted.
    int64_t Alteradas() const { return m_st->Alteradas(); }

private:
    void Vigia() {
        if (m_banco.ObservadorComandos()) m_pValores = std::make_unique<std::vector<IObservadorComandos::Valor>>();
    }
    // The check stays inline on every bind; the copy only while watched.
    void Observa(int indice, bool texto, int64_t inteiro, std::string_view utf8) {
        if (m_pValores) [[unlikely]]
            Anota(indice, texto, inteiro, utf8);
    }
    void Anota(int indice, bool texto, int64_t inteiro, std::string_view utf8);

    CQZBanco& m_banco;
    IQZComandoMotor* m_st;
    // The values bound, kept only while an observer watches.
    std::unique_ptr<std::vector<IObservadorComandos::Valor>> m_pValores;
};

template <class F>
long CQZBanco::EmTransacao(EModoTransacao modo, F&& fn) {
    if (m_nivel > 0) return fn();
    Inicia(modo);
    long hr;
    try {
        hr = fn();
    } catch (...) {
        Desfaz();
        throw;
    }
    if (hr != 0) {
        Desfaz();
        return hr;
    }
    Confirma();
    return 0;
}

}  // namespace qzsql
