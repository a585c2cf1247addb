#include "store/QZSQLite.h"

#include <sqlite3.h>

#include "platform/QZCodigosResultado.h"

namespace qzsql {

namespace {

class CQZMotorSQLite;

class CQZComandoSQLite final : public IQZComandoMotor {
public:
    CQZComandoSQLite(CQZMotorSQLite& motor, sqlite3_stmt* st) : m_motor(motor), m_st(st) {}
    ~CQZComandoSQLite() override { sqlite3_finalize(m_st); }

    void Liga(int indice, int64_t valor) override;
    void LigaTexto(int indice, std::string_view utf8, bool fixo) override;
    bool Passo() override;
    int64_t Inteiro(int coluna) const override { return sqlite3_column_int64(m_st, coluna); }
    std::string_view Texto(int coluna) const override {
        const auto* p = reinterpret_cast<const char*>(sqlite3_column_text(m_st, coluna));
        return p ? std::string_view(p, static_cast<size_t>(sqlite3_column_bytes(m_st, coluna))) : std::string_view();
    }
    bool Nulo(int coluna) const override { return sqlite3_column_type(m_st, coluna) == SQLITE_NULL; }
    int Colunas() const override { return sqlite3_column_count(m_st); }
    int64_t Alteradas() const override;
    void Reinicia() noexcept override {
        sqlite3_reset(m_st);
        sqlite3_clear_bindings(m_st);
    }
    std::string_view Sql() const override { return sqlite3_sql(m_st); }

private:
    CQZMotorSQLite& m_motor;
    sqlite3_stmt* m_st;
};

class CQZMotorSQLite final : public IQZMotor {
public:
    CQZMotorSQLite(std::string nome, sqlite3* db) : m_nome(std::move(nome)), m_db(db) {}
    ~CQZMotorSQLite() override {
        m_versaoDados.reset();
        sqlite3_close(m_db);
    }

    EMotor Tipo() const override { return EMotor::SQLITE; }
    sqlite3* Db() const { return m_db; }

    std::unique_ptr<IQZComandoMotor> Prepara(std::string_view sql) override {
        sqlite3_stmt* st = nullptr;
        if (sqlite3_prepare_v3(m_db, sql.data(), static_cast<int>(sql.size()), SQLITE_PREPARE_PERSISTENT, &st,
                               nullptr) != SQLITE_OK)
            Falha();
        return std::make_unique<CQZComandoSQLite>(*this, st);
    }
    void Executa(const char* sql) override {
        if (sqlite3_exec(m_db, sql, nullptr, nullptr, nullptr) != SQLITE_OK) Falha();
    }
    void DefineEspera(int ms) override {
        m_esperaMs = ms;
        sqlite3_busy_timeout(m_db, ms);
    }

    // BEGIN IMMEDIATE takes the write lock at once; BEGIN defers it and
    // takes its snapshot at the first read.
    const char* SqlInicio(EModoTransacao modo) const override {
        return modo == EModoTransacao::ESCRITA ? "BEGIN IMMEDIATE" : "BEGIN";
    }
    void Desfaz() noexcept override {
        if (!sqlite3_get_autocommit(m_db)) sqlite3_exec(m_db, "ROLLBACK", nullptr, nullptr, nullptr);
    }
    int64_t TotalAlteradas() const override { return sqlite3_total_changes64(m_db); }
    std::optional<int64_t> VersaoDados() override {
        if (!m_versaoDados) m_versaoDados = Prepara("PRAGMA data_version");
        const int64_t versao = m_versaoDados->Passo() ? m_versaoDados->Inteiro(0) : -1;
        m_versaoDados->Reinicia();
        return versao;
    }

    void ConfiguraArmazem() override {
        Executa("PRAGMA journal_mode = WAL");
        // A committed save survives a power failure too.
        Executa("PRAGMA synchronous = FULL");
        // Statistics from a sample of each index: cheap on large tables.
        Executa("PRAGMA analysis_limit = 1000");
    }
    void AtualizaEstatisticas() override { Executa("ANALYZE"); }
    void AoFechar() noexcept override { sqlite3_exec(m_db, "PRAGMA optimize", nullptr, nullptr, nullptr); }
    std::vector<std::string> Plano(const std::string& sql) override {
        auto st = Prepara("EXPLAIN QUERY PLAN " + sql);
        std::vector<std::string> plano;
        while (st->Passo()) plano.emplace_back(st->Texto(3));
        return plano;
    }

    bool ExisteTabela(const std::string& nome) override {
        auto st = Prepara("SELECT count(*) FROM sqlite_master WHERE type = 'table' AND name = ?1");
        st->LigaTexto(1, nome, true);
        return st->Passo() && st->Inteiro(0) > 0;
    }
    bool ExisteTabelaComPrefixo(const std::string& prefixo) override {
        auto st = Prepara("SELECT count(*) FROM sqlite_master WHERE type = 'table' AND substr(name, 1, ?2) = ?1");
        st->LigaTexto(1, prefixo, true);
        st->Liga(2, static_cast<int64_t>(prefixo.size()));
        return st->Passo() && st->Inteiro(0) > 0;
    }
    std::set<std::string> Colunas(const std::string& tabela) override {
        return Nomes("SELECT name FROM pragma_table_info(?1)", tabela);
    }
    std::set<std::string> Indices(const std::string& tabela) override {
        return Nomes("SELECT name FROM sqlite_master WHERE type = 'index' AND tbl_name = ?1", tabela);
    }
    std::string TipoInteiro() const override { return "INTEGER"; }
    std::string TipoTexto() const override { return "TEXT"; }
    // The rowid itself: numbered by SQLite when not given.
    std::string ColunaChave(bool) const override { return "chave INTEGER PRIMARY KEY"; }
    // BEGIN IMMEDIATE holds the only write lock: nothing more to take.
    void ReservaChaves(const std::string&) override {}

    [[noreturn]] void Falha() const;

private:
    std::set<std::string> Nomes(const char* sql, const std::string& tabela) {
        auto st = Prepara(sql);
        st->LigaTexto(1, tabela, true);
        std::set<std::string> nomes;
        while (st->Passo()) nomes.emplace(st->Texto(0));
        return nomes;
    }

    std::string m_nome;
    sqlite3* m_db;
    int m_esperaMs = 0;
    std::unique_ptr<IQZComandoMotor> m_versaoDados;
};

void CQZMotorSQLite::Falha() const {
    const int estendido = sqlite3_extended_errcode(m_db);
    const std::string motivo = sqlite3_errmsg(m_db);
    switch (estendido & 0xFF) {
        case SQLITE_BUSY:
        case SQLITE_LOCKED:
            throw qzsql::Falha{QZ_E_BANCO_OCUPADO, 4,
                               "O armazém " + m_nome + " está em uso por outra gravação (esperou " +
                                   std::to_string(m_esperaMs) + " ms)."};
        case SQLITE_NOTADB:
        case SQLITE_CORRUPT:
            throw qzsql::Falha{QZ_E_BANCO, 1, "O arquivo " + m_nome + " não é um armazém válido ou está corrompido."};
        case SQLITE_FULL:
            throw qzsql::Falha{QZ_E_BANCO, 1, "Não há espaço em disco para gravar no armazém " + m_nome + "."};
        case SQLITE_READONLY:
            throw qzsql::Falha{QZ_E_BANCO, 1, "O armazém " + m_nome + " só pode ser lido: não foi gravado."};
        case SQLITE_IOERR:
            if (estendido == SQLITE_IOERR_NOMEM) break;
            throw qzsql::Falha{QZ_E_BANCO, 1, "Falha de leitura ou gravação no armazém " + m_nome + ": " + motivo + "."};
        case SQLITE_NOMEM:
            throw qzsql::Falha{QZ_E_SEM_MEMORIA, 1, "Memória insuficiente no armazém " + m_nome + "."};
        case SQLITE_CONSTRAINT: {
            qzsql::Falha f{QZ_E_REGISTRO_INVALIDO, 6, "O armazém " + m_nome + " recusou o registro: " + motivo + "."};
            if (estendido == SQLITE_CONSTRAINT_PRIMARYKEY) throw FalhaChaveDuplicada{std::move(f)};
            throw f;
        }
        default:
            break;
    }
    throw qzsql::Falha{QZ_E_BANCO, 1, "Erro do banco de dados no armazém " + m_nome + ": " + motivo + "."};
}

void CQZComandoSQLite::Liga(int indice, int64_t valor) {
    if (sqlite3_bind_int64(m_st, indice, valor) != SQLITE_OK) m_motor.Falha();
}

void CQZComandoSQLite::LigaTexto(int indice, std::string_view utf8, bool fixo) {
    if (sqlite3_bind_text64(m_st, indice, utf8.data(), utf8.size(), fixo ? SQLITE_STATIC : SQLITE_TRANSIENT,
                            SQLITE_UTF8) != SQLITE_OK)
        m_motor.Falha();
}

bool CQZComandoSQLite::Passo() {
    const int rc = sqlite3_step(m_st);
    if (rc == SQLITE_ROW) return true;
    if (rc == SQLITE_DONE) return false;
    m_motor.Falha();
}

int64_t CQZComandoSQLite::Alteradas() const { return sqlite3_changes64(m_motor.Db()); }

}  // namespace

namespace {

std::unique_ptr<IQZMotor> AbreComFlags(const std::string& nome, const std::string& caminho, int flags) {
    // NOMUTEX: a connection is used by one thread at a time.
    flags |= SQLITE_OPEN_URI | SQLITE_OPEN_NOMUTEX;
    sqlite3* db = nullptr;
    if (sqlite3_open_v2(caminho.c_str(), &db, flags, nullptr) != SQLITE_OK) {
        std::string motivo = db ? sqlite3_errmsg(db) : "sem memória";
        sqlite3_close(db);
        throw qzsql::Falha{QZ_E_BANCO, 1, "Não foi possível abrir o armazém " + nome + ": " + motivo + "."};
    }
    sqlite3_extended_result_codes(db, 1);
    auto motor = std::make_unique<CQZMotorSQLite>(nome, db);
    motor->Executa("PRAGMA foreign_keys = ON");
    return motor;
}

}  // namespace

std::unique_ptr<IQZMotor> AbreSQLite(const std::string& nome, const std::string& caminho, bool cria) {
    return AbreComFlags(nome, caminho, SQLITE_OPEN_READWRITE | (cria ? SQLITE_OPEN_CREATE : 0));
}

std::unique_ptr<IQZMotor> AbreSQLiteLeitura(const std::string& nome, const std::string& caminho) {
    return AbreComFlags(nome, caminho, SQLITE_OPEN_READONLY);
}

}  // namespace qzsql
