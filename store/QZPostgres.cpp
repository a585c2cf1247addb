#include "store/QZPostgres.h"

#include <libpq-fe.h>

#include <cctype>
#include <charconv>
#include <cstring>
#include <map>

#include "platform/QZCodigosResultado.h"

namespace qzsql {

namespace {

// The longest name PostgreSQL keeps (NAMEDATALEN - 1); longer ones are cut.
constexpr size_t kMaximoNome = 63;

struct Resultado {
    PGresult* r = nullptr;
    explicit Resultado(PGresult* res) : r(res) {}
    ~Resultado() { PQclear(r); }
    Resultado(const Resultado&) = delete;
    Resultado& operator=(const Resultado&) = delete;
};

bool Ok(const PGresult* r) {
    const ExecStatusType s = PQresultStatus(r);
    return s == PGRES_COMMAND_OK || s == PGRES_TUPLES_OK;
}

std::string SemQuebraFinal(const char* texto) {
    std::string s = texto ? texto : "";
    while (!s.empty() && (s.back() == '\n' || s.back() == ' ')) s.pop_back();
    return s;
}

class CQZMotorPostgres;

class CQZComandoPostgres final : public IQZComandoMotor {
public:
    CQZComandoPostgres(CQZMotorPostgres& motor, std::string nome, std::string sql, int parametros)
        : m_motor(motor), m_nome(std::move(nome)), m_sql(std::move(sql)),
          m_valores(static_cast<size_t>(parametros)), m_ponteiros(static_cast<size_t>(parametros), nullptr) {}
    ~CQZComandoPostgres() override;

    void Liga(int indice, int64_t valor) override {
        std::string& v = Valor(indice);
        char texto[24];
        const auto fim = std::to_chars(texto, texto + sizeof texto, valor).ptr;
        v.assign(texto, fim);
        m_ponteiros[static_cast<size_t>(indice - 1)] = v.c_str();
    }
    void LigaTexto(int indice, std::string_view utf8, bool) override {
        // Text parameters travel zero-terminated: always copied.
        std::string& v = Valor(indice);
        v.assign(utf8);
        m_ponteiros[static_cast<size_t>(indice - 1)] = v.c_str();
    }
    bool Passo() override;
    int64_t Inteiro(int coluna) const override {
        const char* p = PQgetvalue(m_res, m_linha, coluna);
        int64_t v = 0;
        std::from_chars(p, p + PQgetlength(m_res, m_linha, coluna), v);
        return v;
    }
    std::string_view Texto(int coluna) const override {
        return std::string_view(PQgetvalue(m_res, m_linha, coluna),
                                static_cast<size_t>(PQgetlength(m_res, m_linha, coluna)));
    }
    bool Nulo(int coluna) const override { return PQgetisnull(m_res, m_linha, coluna) != 0; }
    int Colunas() const override { return m_res ? PQnfields(m_res) : 0; }
    int64_t Alteradas() const override { return m_alteradas; }
    void Reinicia() noexcept override {
        PQclear(m_res);
        m_res = nullptr;
        m_linha = -1;
        m_linhas = 0;
        std::fill(m_ponteiros.begin(), m_ponteiros.end(), nullptr);
    }
    std::string_view Sql() const override { return m_sql; }

private:
    std::string& Valor(int indice);

    CQZMotorPostgres& m_motor;
    std::string m_nome;
    std::string m_sql;
    std::vector<std::string> m_valores;
    std::vector<const char*> m_ponteiros;  // null: SQL NULL (a value not bound)
    PGresult* m_res = nullptr;
    int m_linha = -1;
    int m_linhas = 0;
    int64_t m_alteradas = 0;
};

class CQZMotorPostgres final : public IQZMotor {
public:
    CQZMotorPostgres(std::string nome, PGconn* conn) : m_nome(std::move(nome)), m_conn(conn) { Configura(); }
    ~CQZMotorPostgres() override { PQfinish(m_conn); }

    EMotor Tipo() const override { return EMotor::POSTGRES; }
    PGconn* Conn() const { return m_conn; }
    const std::string& Nome() const { return m_nome; }

    std::unique_ptr<IQZComandoMotor> Prepara(std::string_view sql) override {
        int n = 0;
        std::string traduzido = TraduzMarcadores(sql, n);
        std::string nome = "qz" + std::to_string(++m_comandos);
        Resultado r(PQprepare(m_conn, nome.c_str(), traduzido.c_str(), 0, nullptr));
        if (!Ok(r.r)) Falha(r.r);
        return std::make_unique<CQZComandoPostgres>(*this, std::move(nome), std::string(sql), n);
    }
    void Executa(const char* sql) override {
        // Tables and indexes may change: the catalogue is read again.
        m_catalogoLido = false;
        Roda(sql);
    }
    void DefineEspera(int ms) override { m_esperaMs = ms; }

    const char* SqlInicio(EModoTransacao modo) const override {
        return modo == EModoTransacao::ESCRITA ? "BEGIN ISOLATION LEVEL READ COMMITTED"
                                               : "BEGIN ISOLATION LEVEL REPEATABLE READ";
    }
    void AposInicio(EModoTransacao modo) override {
        if (modo != EModoTransacao::ESCRITA) return;
        // The store's write lock, waited for as long as the store waits.
        Roda(("SET LOCAL lock_timeout = " + std::to_string(m_esperaMs) +
              "; SELECT pg_advisory_xact_lock(hashtext(current_schema()))")
                 .c_str());
    }
    void AntesDeConfirmar() override {
        // A transaction a failed statement aborted would end in a rollback
        // reported as a commit.
        if (PQtransactionStatus(m_conn) == PQTRANS_INERROR)
            throw qzsql::Falha{QZ_E_BANCO, 1, "A transação no armazém " + m_nome + " foi desfeita pelo servidor."};
    }
    void Desfaz() noexcept override {
        if (PQstatus(m_conn) != CONNECTION_OK || PQtransactionStatus(m_conn) == PQTRANS_IDLE) return;
        PQclear(PQexec(m_conn, "ROLLBACK"));
    }
    int64_t TotalAlteradas() const override { return m_alteradas; }
    void SomaAlteradas(int64_t n) { m_alteradas += n; }
    // No number that moves with every commit: a counter row would add a
    // write to every save and a round trip to every transaction.
    std::optional<int64_t> VersaoDados() override { return std::nullopt; }

    // Closing ends the session: its statements go with it.
    void AoFechar() noexcept override { m_fechando = true; }
    bool Fechando() const { return m_fechando; }

    bool Perdida() const override { return PQstatus(m_conn) != CONNECTION_OK; }
    void Reconecta() override {
        PQreset(m_conn);
        if (PQstatus(m_conn) != CONNECTION_OK)
            throw qzsql::Falha{QZ_E_BANCO, 1,
                               "Não foi possível reconectar ao armazém " + m_nome + ": " +
                                   SemQuebraFinal(PQerrorMessage(m_conn)) + "."};
        m_catalogoLido = false;
        Configura();
    }

    void AtualizaEstatisticas() override {
        // Only the store's own tables (the schema of the connection).
        LeCatalogo();
        for (const auto& [tabela, colunas] : m_colunas) Roda(("ANALYZE \"" + tabela + "\"").c_str());
    }
    std::vector<std::string> Plano(const std::string& sql) override {
        // The plan the server keeps for any values (the generic plan).
        int n = 0;
        const std::string traduzido = TraduzMarcadores(sql, n);
        std::string execucao = "EXPLAIN EXECUTE qz_plano";
        for (int i = 0; i < n; ++i) execucao += i ? ", NULL" : "(NULL";
        if (n) execucao += ")";
        Roda(("PREPARE qz_plano AS " + traduzido).c_str());
        std::vector<std::string> plano;
        try {
            Roda("SET plan_cache_mode = force_generic_plan");
            Resultado r(PQexec(m_conn, execucao.c_str()));
            if (!Ok(r.r)) Falha(r.r);
            for (int i = 0; i < PQntuples(r.r); ++i) plano.emplace_back(PQgetvalue(r.r, i, 0));
        } catch (...) {
            PQclear(PQexec(m_conn, "DEALLOCATE qz_plano"));
            PQclear(PQexec(m_conn, "RESET plan_cache_mode"));
            throw;
        }
        Roda("DEALLOCATE qz_plano");
        Roda("RESET plan_cache_mode");
        return plano;
    }

    bool ExisteTabela(const std::string& nome) override {
        LeCatalogo();
        // A name written without quotes in DDL is kept in lower case.
        std::string minusculo = NomeObjeto(nome);
        for (char& c : minusculo) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        return m_colunas.count(NomeObjeto(nome)) > 0 || m_colunas.count(minusculo) > 0;
    }
    bool ExisteTabelaComPrefixo(const std::string& prefixo) override {
        LeCatalogo();
        auto it = m_colunas.lower_bound(prefixo);
        return it != m_colunas.end() && it->first.compare(0, prefixo.size(), prefixo) == 0;
    }
    std::set<std::string> Colunas(const std::string& tabela) override {
        LeCatalogo();
        auto it = m_colunas.find(NomeObjeto(tabela));
        return it == m_colunas.end() ? std::set<std::string>() : it->second;
    }
    std::set<std::string> Indices(const std::string& tabela) override {
        LeCatalogo();
        auto it = m_indices.find(NomeObjeto(tabela));
        return it == m_indices.end() ? std::set<std::string>() : it->second;
    }
    std::string NomeObjeto(const std::string& nome) const override { return nome.substr(0, kMaximoNome); }
    std::string TipoInteiro() const override { return "BIGINT"; }
    // Byte order (UTF-8 in code point order): what a prefix's range relies on.
    std::string TipoTexto() const override { return "TEXT COLLATE \"C\""; }
    std::string ColunaChave(bool automatica) const override {
        return automatica ? "chave BIGINT GENERATED BY DEFAULT AS IDENTITY PRIMARY KEY" : "chave BIGINT PRIMARY KEY";
    }
    // The write lock: already held by a write transaction (taking it again is
    // free), taken here by a write joined to a read transaction.
    void ReservaChaves(const std::string&) override { Roda("SELECT pg_advisory_xact_lock(hashtext(current_schema()))"); }

    [[noreturn]] void Falha(const PGresult* r) const;

private:
    void Configura() {
        PQsetNoticeProcessor(m_conn, [](void*, const char*) {}, nullptr);
        if (PQsetClientEncoding(m_conn, "UTF8") != 0)
            throw qzsql::Falha{QZ_E_BANCO, 1, "O armazém " + m_nome + " não aceitou a codificação UTF-8."};
    }
    void Roda(const char* sql) {
        Resultado r(PQexec(m_conn, sql));
        if (!Ok(r.r)) Falha(r.r);
    }
    // Every table of the schema with its columns and indexes, in one round
    // trip each: a store checks all its tables when it opens.
    void LeCatalogo() {
        if (m_catalogoLido) return;
        m_colunas.clear();
        m_indices.clear();
        {
            Resultado r(PQexec(m_conn,
                               "SELECT c.relname, a.attname FROM pg_catalog.pg_class c JOIN pg_catalog.pg_attribute a "
                               "ON a.attrelid = c.oid WHERE c.relnamespace = current_schema()::regnamespace AND "
                               "c.relkind IN ('r', 'p') AND a.attnum > 0 AND NOT a.attisdropped"));
            if (!Ok(r.r)) Falha(r.r);
            for (int i = 0; i < PQntuples(r.r); ++i)
                m_colunas[PQgetvalue(r.r, i, 0)].emplace(PQgetvalue(r.r, i, 1));
        }
        {
            Resultado r(PQexec(m_conn,
                               "SELECT tablename, indexname FROM pg_catalog.pg_indexes WHERE schemaname = "
                               "current_schema()"));
            if (!Ok(r.r)) Falha(r.r);
            for (int i = 0; i < PQntuples(r.r); ++i)
                m_indices[PQgetvalue(r.r, i, 0)].emplace(PQgetvalue(r.r, i, 1));
        }
        m_catalogoLido = true;
    }

    std::string m_nome;
    PGconn* m_conn;
    int m_esperaMs = 0;
    uint64_t m_comandos = 0;
    int64_t m_alteradas = 0;
    bool m_catalogoLido = false;
    bool m_fechando = false;
    std::map<std::string, std::set<std::string>> m_colunas, m_indices;
};

void CQZMotorPostgres::Falha(const PGresult* r) const {
    const std::string motivo = SemQuebraFinal(r ? PQresultErrorMessage(r) : PQerrorMessage(m_conn));
    const char* estado = r ? PQresultErrorField(r, PG_DIAG_SQLSTATE) : nullptr;
    const std::string sqlstate = estado ? estado : "";
    if (PQstatus(m_conn) != CONNECTION_OK || sqlstate.rfind("08", 0) == 0 || sqlstate.rfind("57P", 0) == 0)
        throw qzsql::Falha{QZ_E_BANCO, 1,
                           "A conexão com o armazém " + m_nome + " foi perdida (a próxima operação reconecta): " +
                               motivo};
    if (sqlstate == "55P03" || sqlstate == "40P01" || sqlstate == "40001")
        throw qzsql::Falha{QZ_E_BANCO_OCUPADO, 4,
                           "O armazém " + m_nome + " está em uso por outra gravação (esperou " +
                               std::to_string(m_esperaMs) + " ms)."};
    if (sqlstate == "53100")
        throw qzsql::Falha{QZ_E_BANCO, 1, "Não há espaço em disco para gravar no armazém " + m_nome + "."};
    if (sqlstate == "53200") throw qzsql::Falha{QZ_E_SEM_MEMORIA, 1, "Memória insuficiente no armazém " + m_nome + "."};
    if (sqlstate == "25006")
        throw qzsql::Falha{QZ_E_BANCO, 1, "O armazém " + m_nome + " só pode ser lido: não foi gravado."};
    if (sqlstate.rfind("23", 0) == 0) {
        qzsql::Falha f{QZ_E_REGISTRO_INVALIDO, 6, "O armazém " + m_nome + " recusou o registro: " + motivo};
        if (sqlstate == "23505") throw FalhaChaveDuplicada{std::move(f)};
        throw f;
    }
    throw qzsql::Falha{QZ_E_BANCO, 1, "Erro do banco de dados no armazém " + m_nome + ": " + motivo};
}

CQZComandoPostgres::~CQZComandoPostgres() {
    PQclear(m_res);
    // The server keeps a prepared statement until the session ends: a
    // statement dropped while the session goes on is dropped there too.
    PGconn* conn = m_motor.Conn();
    if (!m_motor.Fechando() && PQstatus(conn) == CONNECTION_OK && PQtransactionStatus(conn) != PQTRANS_INERROR)
        PQclear(PQexec(conn, ("DEALLOCATE " + m_nome).c_str()));
}

std::string& CQZComandoPostgres::Valor(int indice) {
    if (indice < 1 || static_cast<size_t>(indice) > m_valores.size())
        throw qzsql::Falha{QZ_E_BANCO, 1,
                           "Parâmetro " + std::to_string(indice) + " fora do comando no armazém " + m_motor.Nome() +
                               "."};
    return m_valores[static_cast<size_t>(indice - 1)];
}

bool CQZComandoPostgres::Passo() {
    if (!m_res) {
        m_res = PQexecPrepared(m_motor.Conn(), m_nome.c_str(), static_cast<int>(m_ponteiros.size()),
                               m_ponteiros.data(), nullptr, nullptr, 0);
        if (!Ok(m_res)) {
            PGresult* r = m_res;
            m_res = nullptr;
            Resultado dono(r);
            m_motor.Falha(r);
        }
        m_linhas = PQntuples(m_res);
        m_linha = -1;
        const char* tuplas = PQcmdTuples(m_res);
        m_alteradas = 0;
        if (tuplas && *tuplas && PQresultStatus(m_res) == PGRES_COMMAND_OK)
            std::from_chars(tuplas, tuplas + std::strlen(tuplas), m_alteradas);
        // INSERT ... RETURNING reports its rows too.
        else if (tuplas && *tuplas && std::strncmp(PQcmdStatus(m_res), "INSERT", 6) == 0)
            std::from_chars(tuplas, tuplas + std::strlen(tuplas), m_alteradas);
        m_motor.SomaAlteradas(m_alteradas);
    }
    return ++m_linha < m_linhas;
}

}  // namespace

bool EhUrlPostgres(const std::string& caminho) {
    return caminho.rfind("postgresql://", 0) == 0 || caminho.rfind("postgres://", 0) == 0;
}

std::string NomeUrlPostgres(const std::string& url) {
    const size_t inicio = url.find("://");
    if (inicio == std::string::npos) return url;
    const size_t usuario = inicio + 3;
    const size_t arroba = url.find('@', usuario);
    const size_t barra = url.find('/', usuario);
    if (arroba == std::string::npos || (barra != std::string::npos && arroba > barra)) return url;
    const size_t doisPontos = url.find(':', usuario);
    if (doisPontos == std::string::npos || doisPontos > arroba) return url;
    return url.substr(0, doisPontos) + url.substr(arroba);
}

std::unique_ptr<IQZMotor> AbrePostgres(const std::string& nome, const std::string& url) {
    PGconn* conn = PQconnectdb(url.c_str());
    if (!conn) throw qzsql::Falha{QZ_E_SEM_MEMORIA, 1, "Memória insuficiente ao abrir o armazém " + nome + "."};
    if (PQstatus(conn) != CONNECTION_OK) {
        const std::string motivo = SemQuebraFinal(PQerrorMessage(conn));
        PQfinish(conn);
        throw qzsql::Falha{QZ_E_BANCO, 1, "Não foi possível abrir o armazém " + nome + ": " + motivo};
    }
    try {
        return std::make_unique<CQZMotorPostgres>(nome, conn);
    } catch (...) {
        PQfinish(conn);
        throw;
    }
}

std::string TraduzMarcadores(std::string_view sql, int& n) {
    std::string saida;
    saida.reserve(sql.size() + 16);
    n = 0;
    char aspas = 0;
    for (size_t i = 0; i < sql.size(); ++i) {
        const char c = sql[i];
        if (aspas) {
            if (c == aspas) aspas = 0;
            saida += c;
            continue;
        }
        if (c == '\'' || c == '"') {
            aspas = c;
            saida += c;
            continue;
        }
        if (c != '?') {
            saida += c;
            continue;
        }
        size_t j = i + 1;
        int numero = 0;
        while (j < sql.size() && sql[j] >= '0' && sql[j] <= '9') numero = numero * 10 + (sql[j++] - '0');
        // A bare `?` takes the number after the highest used so far.
        if (j == i + 1) numero = n + 1;
        n = std::max(n, numero);
        saida += '$' + std::to_string(numero);
        i = j - 1;
    }
    return saida;
}

}  // namespace qzsql
