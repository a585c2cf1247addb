// The one SQLite layer of the stores: a connection that owns its handle and
// its prepared statements, statements that are reset however their use
// ends, one mapping of SQLite's errors onto the stores' failures, and one
// transaction helper. Nothing above this layer calls sqlite3_* to open,
// prepare, step or end a transaction.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <memory>
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
    LEITURA,  // BEGIN: a consistent snapshot for a batch of reads
    ESCRITA,  // BEGIN IMMEDIATE: takes the write lock at once, so a read-then-write never loses it
};

class CQZBanco {
public:
    // `nome` names the database in messages (the file, never SQL).
    explicit CQZBanco(std::string nome) : m_nome(std::move(nome)) {}
    ~CQZBanco();
    CQZBanco(const CQZBanco&) = delete;
    CQZBanco& operator=(const CQZBanco&) = delete;

    // Opens the database (flags of sqlite3_open_v2; NOMUTEX is added: a
    // connection is used by one thread at a time). Throws Falha.
    void Abre(const std::string& caminho, int flags, int esperaMs);
    // Closes the database and drops its statements.
    void Fecha() noexcept;
    bool EstaAberto() const { return m_db != nullptr; }
    sqlite3* Db() const { return m_db; }
    const std::string& Nome() const { return m_nome; }
    int Espera() const { return m_esperaMs; }
    void DefineEspera(int ms);
    void DefineObservador(IObservadorTransacao* observador) { m_pObservador = observador; }
    void DefineObservadorComandos(IObservadorComandos* observador) { m_pComandos = observador; }
    IObservadorComandos* ObservadorComandos() const { return m_pComandos; }

    // A statement prepared once for this connection and kept by its text.
    sqlite3_stmt* Prepara(std::string_view sql);
    // The same, kept in its slot (NovoSlot); `sql` is always the same text
    // for a slot.
    sqlite3_stmt* Prepara(uint32_t slot, std::string_view sql);
    // Drops every kept statement (after the planner's statistics change).
    void DescartaComandos();
    void Executa(const char* sql);
    // Throws the Falha that SQLite's last error on this connection means.
    [[noreturn]] void Falha() const;

    int NivelTransacao() const { return m_nivel; }
    // A transaction left open for a scope: started when none is open (true),
    // ended by EncerraTransacao (committed; a read transaction writes nothing).
    bool IniciaTransacao(EModoTransacao modo);
    void EncerraTransacao();
    // Runs fn (returning a long status) in a transaction; inside an open
    // one it joins it. The outermost transaction commits when fn returns 0
    // and rolls back when it returns anything else or throws.
    template <class F>
    long EmTransacao(EModoTransacao modo, F&& fn);

private:
    void Inicia(EModoTransacao modo);
    void Confirma();
    void Desfaz() noexcept;

    std::string m_nome;
    sqlite3* m_db = nullptr;
    int m_esperaMs = 0;
    int m_nivel = 0;
    int64_t m_linhasAntes = 0;
    IObservadorTransacao* m_pObservador = nullptr;
    IObservadorComandos* m_pComandos = nullptr;
    std::unordered_map<std::string, sqlite3_stmt*> m_comandos;
    std::vector<sqlite3_stmt*> m_porSlot;
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
    ~CQZComando() {
        if (m_pValores) m_banco.ObservadorComandos()->AoExecutar(sqlite3_sql(m_st), *m_pValores);
        sqlite3_reset(m_st);
        sqlite3_clear_bindings(m_st);
    }
    CQZComando(const CQZComando&) = delete;
    CQZComando& operator=(const CQZComando&) = delete;

    CQZComando& Liga(int indice, int64_t valor);
    // UTF-8 text; copied by SQLite.
    CQZComando& LigaTexto(int indice, std::string_view utf8);
    // UTF-8 text that outlives this use of the statement: not copied.
    CQZComando& LigaTextoFixo(int indice, std::string_view utf8);
    // True on a row, false when done; throws on an error.
    bool Passo();
    int64_t Inteiro(int coluna) const { return sqlite3_column_int64(m_st, coluna); }
    std::string_view Texto(int coluna) const;
    int Colunas() const { return sqlite3_column_count(m_st); }
    sqlite3_stmt* Stmt() const { return m_st; }

private:
    void Vigia() {
        if (m_banco.ObservadorComandos()) m_pValores = std::make_unique<std::vector<IObservadorComandos::Valor>>();
    }
    void Observa(int indice, bool texto, int64_t inteiro, std::string_view utf8) {
        if (m_pValores) m_pValores->push_back({indice, texto, inteiro, std::string(utf8)});
    }

    CQZBanco& m_banco;
    sqlite3_stmt* m_st;
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
