#include "store/QZArmazemSQL.h"

#include <algorithm>

namespace qzsql {

int Tabela::IndiceColuna(const std::string& campo) const {
    for (size_t i = 0; i < colunas.size(); ++i)
        if (colunas[i].nome == campo) return static_cast<int>(i);
    return -1;
}

void CompletaSql(Tabela& t) {
    std::string cols, marcas, sets;
    for (size_t i = 0; i < t.colunas.size(); ++i) {
        const std::string q = "\"" + t.colunas[i].nome + "\"";
        cols += (i ? ", " : "") + q;
        marcas += ", ?";
        sets += (i ? ", " : "") + q + " = ?";
    }
    const std::string tab = "\"" + t.nome + "\"";
    t.sqlSeleciona = "SELECT " + (cols.empty() ? std::string("chave") : cols) + " FROM " + tab + " WHERE chave = ?";
    t.sqlInsere = "INSERT INTO " + tab + " (chave" + (cols.empty() ? "" : ", " + cols) + ") VALUES (?" + marcas + ")";
    t.sqlAtualiza = "UPDATE " + tab + " SET " + (sets.empty() ? std::string("chave = chave") : sets) + " WHERE chave = ?";
    t.sqlFilhas = "SELECT chave" + (cols.empty() ? "" : ", " + cols) + " FROM " + tab + " WHERE pai = ? ORDER BY ordem";
    t.sqlInsereFilha = "INSERT INTO " + tab + " (pai, ordem" + (cols.empty() ? "" : ", " + cols) + ") VALUES (?, ?" + marcas + ")";
}

}  // namespace qzsql

namespace {

// Smallest text greater than every text that starts with `prefixo`, or empty
// when there is none (a prefix of 0xFF bytes only).
std::string LimiteSuperiorPrefixo(std::string prefixo) {
    while (!prefixo.empty()) {
        auto& ultimo = reinterpret_cast<unsigned char&>(prefixo.back());
        if (ultimo < 0xFF) {
            ++ultimo;
            return prefixo;
        }
        prefixo.pop_back();
    }
    return prefixo;
}

}  // namespace

CQZArmazemSQL::CQZArmazemSQL(const std::string& caminho) {
    int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX;
    if (sqlite3_open_v2(caminho.c_str(), &m_db, flags, nullptr) != SQLITE_OK) {
        m_erro.SetErro(QZ_E_BANCO, QZ_MODULO_CONEXAO, 1, "Não foi possível abrir o banco de dados %s: %s",
                       caminho.c_str(), m_db ? sqlite3_errmsg(m_db) : "sem memória");
        sqlite3_close(m_db);
        m_db = nullptr;
        return;
    }
    long hr = Despacha("Abre", [&]() -> long {
        Inicia();
        return 0;
    });
    if (hr != 0) {
        for (auto& [sql, st] : m_stmts) sqlite3_finalize(st);
        m_stmts.clear();
        sqlite3_close(m_db);
        m_db = nullptr;
    }
}

CQZArmazemSQL::~CQZArmazemSQL() {
    for (auto& [sql, st] : m_stmts) sqlite3_finalize(st);
    if (m_db) sqlite3_close(m_db);
}

void CQZArmazemSQL::Inicia() {
    sqlite3_busy_timeout(m_db, 5000);
    Executa("PRAGMA foreign_keys = ON");
    Executa("PRAGMA journal_mode = WAL");
    Executa("PRAGMA synchronous = NORMAL");
    Executa("BEGIN IMMEDIATE");
    try {
#define QZ_OP_LE(Nome, Registro, Chave, Flags, SeAusente) GarantaTabela<Registro>();
#define QZ_OP_LE_UNICO(Nome, Registro, Flags) GarantaTabela<Registro>();
#define QZ_OP_LE_BUFFER(Nome, Registro, Chave, SeAusente) GarantaTabela<Registro>();
#define QZ_OP_LE_BUFFER_UNICO(Nome, Registro) GarantaTabela<Registro>();
#include "platform/acesso/QZMacrosOperacoes.h"
#include "platform/acesso/Manutencao.def"
#include "platform/acesso/ManutencaoBuffer.def"
#include "platform/acesso/Gestavo.def"
#include "platform/acesso/GestavoBuffer.def"
#include "platform/acesso/QZFimMacrosOperacoes.h"
        Executa("COMMIT");
    } catch (...) {
        sqlite3_exec(m_db, "ROLLBACK", nullptr, nullptr, nullptr);
        throw;
    }
}

void CQZArmazemSQL::CriaTabela(const qzsql::Tabela& t, const std::string& tabelaPai) {
    std::string sql = "CREATE TABLE IF NOT EXISTS \"" + t.nome + "\" (chave INTEGER PRIMARY KEY";
    if (!tabelaPai.empty())
        sql += ", pai INTEGER NOT NULL REFERENCES \"" + tabelaPai + "\"(chave) ON DELETE CASCADE, ordem INTEGER NOT NULL";
    for (const auto& c : t.colunas)
        sql += ", \"" + c.nome + "\" " + (c.texto ? "TEXT NOT NULL DEFAULT ''" : "INTEGER NOT NULL DEFAULT 0");
    sql += ")";
    Executa(sql);
    if (!tabelaPai.empty())
        Executa("CREATE INDEX IF NOT EXISTS \"ix_" + t.nome + "__pai\" ON \"" + t.nome + "\"(pai, ordem)");
    for (const auto& c : t.colunas)
        if (c.indexada)
            Executa("CREATE INDEX IF NOT EXISTS \"ix_" + t.nome + "_" + c.nome + "\" ON \"" + t.nome + "\"(\"" + c.nome +
                    "\")");
    for (const auto& f : t.filhas) CriaTabela(f, t.nome);
}

[[noreturn]] void CQZArmazemSQL::FalhaSql(const char* contexto) {
    int codigo = sqlite3_errcode(m_db);
    bool ocupado = codigo == SQLITE_BUSY || codigo == SQLITE_LOCKED;
    throw qzsql::Falha{ocupado ? QZ_E_BANCO_OCUPADO : QZ_E_BANCO, ocupado ? 4 : 1,
                       std::string("Erro do banco de dados (") + contexto + "): " + sqlite3_errmsg(m_db)};
}

sqlite3_stmt* CQZArmazemSQL::Prepara(const std::string& sql) {
    if (auto it = m_stmts.find(sql); it != m_stmts.end()) return it->second;
    sqlite3_stmt* st = nullptr;
    if (sqlite3_prepare_v3(m_db, sql.c_str(), -1, SQLITE_PREPARE_PERSISTENT, &st, nullptr) != SQLITE_OK)
        FalhaSql(sql.c_str());
    m_stmts.emplace(sql, st);
    return st;
}

void CQZArmazemSQL::Liga(sqlite3_stmt* st, int indice, const CQZValor& valor) {
    int rc;
    if (const int64_t* v = std::get_if<int64_t>(&valor)) {
        rc = sqlite3_bind_int64(st, indice, *v);
    } else if (const std::string* bruto = std::get_if<std::string>(&valor)) {
        rc = sqlite3_bind_text(st, indice, bruto->data(), static_cast<int>(bruto->size()), SQLITE_TRANSIENT);
    } else {
        std::string utf8, erro;
        if (!QZCp1252ParaUtf8(std::get<CString>(valor).str(), utf8, &erro)) {
            sqlite3_reset(st);
            throw qzsql::Falha{QZ_E_REGISTRO_INVALIDO, 6, "Texto inválido: " + erro};
        }
        rc = sqlite3_bind_text(st, indice, utf8.data(), static_cast<int>(utf8.size()), SQLITE_TRANSIENT);
    }
    if (rc != SQLITE_OK) FalhaSql("bind");
}

CQZValor CQZArmazemSQL::ColunaValor(sqlite3_stmt* st, int indice, bool texto) {
    if (!texto) return static_cast<int64_t>(sqlite3_column_int64(st, indice));
    const auto* p = reinterpret_cast<const char*>(sqlite3_column_text(st, indice));
    std::string cp1252, erro;
    if (p && !QZUtf8ParaCp1252(std::string(p, static_cast<size_t>(sqlite3_column_bytes(st, indice))), cp1252, &erro)) {
        sqlite3_reset(st);
        throw qzsql::Falha{QZ_E_REGISTRO_INVALIDO, 6, "Texto gravado sem forma em Windows-1252: " + erro};
    }
    return CString(std::move(cp1252));
}

bool CQZArmazemSQL::Passo(sqlite3_stmt* st) {
    int rc = sqlite3_step(st);
    if (rc == SQLITE_ROW) return true;
    if (rc == SQLITE_DONE) return false;
    sqlite3_reset(st);
    FalhaSql(sqlite3_sql(st));
}

void CQZArmazemSQL::Executa(const std::string& sql) {
    char* msg = nullptr;
    if (sqlite3_exec(m_db, sql.c_str(), nullptr, nullptr, &msg) != SQLITE_OK) {
        sqlite3_free(msg);
        FalhaSql(sql.c_str());
    }
}

void CQZArmazemSQL::VerificaVersaoDados() {
    // Another connection's commit changes data_version: the cache is stale.
    sqlite3_stmt* st = Prepara("PRAGMA data_version");
    int64_t versao = Passo(st) ? sqlite3_column_int64(st, 0) : -1;
    sqlite3_reset(st);
    if (versao != m_versaoDados) {
        LimpaCache();
        m_versaoDados = versao;
    }
}

int64_t CQZArmazemSQL::ProximaChave(const qzsql::Tabela& t) {
    sqlite3_stmt* st = Prepara("SELECT COALESCE(MAX(chave), 0) + 1 FROM \"" + t.nome + "\"");
    int64_t chave = Passo(st) ? sqlite3_column_int64(st, 0) : 1;
    sqlite3_reset(st);
    if (chave > 0xFFFFFFFFll) throw qzsql::Falha{QZ_E_REGISTRO_INVALIDO, 6, "Tabela " + t.nome + " cheia."};
    return chave;
}

int64_t CQZArmazemSQL::ProximoNumeroMes(const qzsql::Tabela& t, const REG_QZMA& ma) {
    const int64_t base = static_cast<int64_t>(REG_QZDMC(ma, 0).GetValor());
    sqlite3_stmt* st =
        Prepara("SELECT COALESCE(MAX(chave), ?1) + 1 FROM \"" + t.nome + "\" WHERE chave BETWEEN ?1 AND ?2");
    Liga(st, 1, base);
    Liga(st, 2, base + 0xFFFFFFFFll);
    int64_t chave = Passo(st) ? sqlite3_column_int64(st, 0) : base + 1;
    sqlite3_reset(st);
    if (chave > base + 0xFFFFFFFFll) throw qzsql::Falha{QZ_E_REGISTRO_INVALIDO, 6, "Mês cheio em " + t.nome + "."};
    return chave;
}

REG_QZDMAHMSUTC CQZArmazemSQL::NovoCarimbo(const REG_QZDMAHMSUTC* anterior) const {
    REG_QZDMAHMSUTC agora = m_pRelogio->Agora();
    if (anterior && agora.GetDataHora() <= anterior->GetDataHora()) return anterior->MaisUmSegundo();
    return agora;
}

std::string CQZArmazemSQL::MontaWhere(const qzsql::Tabela& t, const CQZCondicoes& c, std::vector<CQZValor>& valores,
                                      const CQZCondicao** pSubarvore) {
    std::string where;
    auto coluna = [&](const qzsql::Tabela& tab, const std::string& campo) {
        if (tab.IndiceColuna(campo) < 0)
            throw qzsql::Falha{QZ_E_REGISTRO_INVALIDO, 6, "Campo " + campo + " desconhecido em " + tab.nome + "."};
        return "\"" + campo + "\"";
    };
    for (const CQZCondicao& cond : c.Lista()) {
        std::string termo;
        switch (cond.op) {
            case CQZCondicao::IGUAL:
                termo = "t." + coluna(t, cond.campo) + " = ?";
                valores.push_back(cond.valor);
                break;
            case CQZCondicao::PREFIXO: {
                const CString& prefixo = std::get<CString>(cond.valor);
                if (prefixo.IsEmpty()) continue;
                // A range on the column keeps the search on its index.
                std::string utf8;
                QZCp1252ParaUtf8(prefixo.str(), utf8);
                std::string limite = LimiteSuperiorPrefixo(utf8);
                termo = "t." + coluna(t, cond.campo) + " >= ?";
                valores.push_back(prefixo);
                if (!limite.empty()) {
                    termo += " AND t." + coluna(t, cond.campo) + " < ?";
                    valores.push_back(limite);  // raw UTF-8 bytes
                }
                break;
            }
            case CQZCondicao::LISTA_CONTEM: {
                const qzsql::Tabela* filha = nullptr;
                for (const auto& f : t.filhas)
                    if (f.nome == t.nome + "__" + cond.lista) filha = &f;
                if (!filha)
                    throw qzsql::Falha{QZ_E_REGISTRO_INVALIDO, 6, "Lista " + cond.lista + " desconhecida em " + t.nome + "."};
                termo = "EXISTS (SELECT 1 FROM \"" + filha->nome + "\" f WHERE f.pai = t.chave AND f." +
                        coluna(*filha, cond.campo) + " = ?)";
                valores.push_back(cond.valor);
                break;
            }
            case CQZCondicao::SUBARVORE:
                if (!pSubarvore)
                    throw qzsql::Falha{QZ_E_REGISTRO_INVALIDO, 6, "Subárvore pedida fora de uma classificação."};
                coluna(t, cond.campo);
                *pSubarvore = &cond;
                continue;
        }
        where += (where.empty() ? " WHERE " : " AND ") + termo;
    }
    return where;
}

std::vector<int64_t> CQZArmazemSQL::ExecutaBusca(const qzsql::Tabela& t, const TQZBaseFiltro& filtro) {
    CQZCondicoes c;
    filtro.MontaCondicoes(c, false);
    std::vector<CQZValor> valores;
    std::string sql = "SELECT t.chave FROM \"" + t.nome + "\" AS t" + MontaWhere(t, c, valores, nullptr) + " ORDER BY t.chave";
    sqlite3_stmt* st = Prepara(sql);
    for (size_t i = 0; i < valores.size(); ++i) Liga(st, static_cast<int>(i) + 1, valores[i]);
    std::vector<int64_t> chaves;
    while (Passo(st)) chaves.push_back(sqlite3_column_int64(st, 0));
    sqlite3_reset(st);
    return chaves;
}

std::vector<int64_t> CQZArmazemSQL::ExecutaClassificacao(const qzsql::Tabela& t, const TQZBaseFiltro& filtro) {
    CQZCondicoes c;
    filtro.MontaCondicoes(c, true);
    std::vector<CQZValor> valores;
    const CQZCondicao* sub = nullptr;
    std::string where = MontaWhere(t, c, valores, &sub);
    std::string sql;
    std::vector<CQZValor> ligados;
    if (!sub) {
        sql = "SELECT t.chave FROM \"" + t.nome + "\" AS t" + where + " ORDER BY t.chave";
        ligados = valores;
    } else {
        // The record itself first, then its descendants level by level. UNION
        // (not UNION ALL) ends the walk on a record that names itself or a
        // descendant as its parent.
        std::string filtroFilhos = where.empty() ? "" : " AND " + where.substr(7);
        sql = "WITH RECURSIVE sub(chave) AS (SELECT chave FROM \"" + t.nome +
              "\" WHERE chave = ? UNION SELECT t.chave FROM \"" + t.nome + "\" AS t JOIN sub ON t.\"" + sub->campo +
              "\" = sub.chave" + filtroFilhos + ") SELECT chave FROM sub";
        ligados.push_back(sub->valor);
        ligados.insert(ligados.end(), valores.begin(), valores.end());
    }
    sqlite3_stmt* st = Prepara(sql);
    for (size_t i = 0; i < ligados.size(); ++i) Liga(st, static_cast<int>(i) + 1, ligados[i]);
    std::vector<int64_t> chaves;
    while (Passo(st)) chaves.push_back(sqlite3_column_int64(st, 0));
    sqlite3_reset(st);
    return chaves;
}

// ---- contract operations ----------------------------------------------------

#define QZ_OP_LE(Nome, Registro, Chave, Flags, SeAusente)                               \
    long CQZArmazemSQL::Le##Nome(Chave chave, Registro* pDados, Flags) {                 \
        return Despacha("Le" #Nome, [&] { return LeGenerico(chave, pDados, SeAusente); }); \
    }
#define QZ_OP_LE_UNICO(Nome, Registro, Flags)                                       \
    long CQZArmazemSQL::Le##Nome(Registro* pDados, Flags) {                         \
        return Despacha("Le" #Nome, [&] { return LeGenerico(1, pDados, true); });   \
    }
#define QZ_OP_BUSCA(Nome, Filtro, Lista)                                                          \
    long CQZArmazemSQL::BuscaPonteiros##Nome(const Filtro& filtro, Lista& lista) {                \
        lista = Lista();                                                                          \
        return Despacha("BuscaPonteiros" #Nome, [&]() -> long {                                   \
            GarantaTabela<Filtro::TipoRegistro>();                                                \
            for (int64_t chave : ExecutaBusca(qzsql::EsquemaDe<Filtro::TipoRegistro>(), filtro))  \
                AnexaChave(lista, chave);                                                         \
            return 0;                                                                             \
        });                                                                                       \
    }
#define QZ_OP_CLASSIFICACAO(Nome, Filtro)                                                                   \
    long CQZArmazemSQL::BuscaClassificacao##Nome(const Filtro& filtro, CQZListaClassificacao* pLista) {     \
        if (pLista) pLista->clear();                                                                        \
        return Despacha("BuscaClassificacao" #Nome, [&]() -> long {                                         \
            GarantaTabela<Filtro::TipoRegistro>();                                                          \
            auto chaves = ExecutaClassificacao(qzsql::EsquemaDe<Filtro::TipoRegistro>(), filtro);           \
            if (pLista)                                                                                     \
                for (int64_t chave : chaves) pLista->push_back(CQZDadosGT_Classificacao(static_cast<uint32_t>(chave))); \
            return 0;                                                                                       \
        });                                                                                                 \
    }
#define QZ_OP_LE_BUFFER(Nome, Registro, Chave, SeAusente)                                          \
    long CQZArmazemSQL::LeBuffer##Nome(Chave chave, Registro* pDados, uint64_t) {                  \
        return Despacha("LeBuffer" #Nome, [&] { return LeBufferGenerico(chave, pDados, SeAusente); }); \
    }
#define QZ_OP_LE_BUFFER_UNICO(Nome, Registro)                                                      \
    long CQZArmazemSQL::LeBuffer##Nome(Registro* pDados, uint64_t) {                               \
        return Despacha("LeBuffer" #Nome, [&] { return LeBufferGenerico(1, pDados, true); });      \
    }
#include "platform/acesso/QZMacrosOperacoes.h"
#include "platform/acesso/Manutencao.def"
#include "platform/acesso/ManutencaoBuffer.def"
#include "platform/acesso/Gestavo.def"
#include "platform/acesso/GestavoBuffer.def"
#include "platform/acesso/QZFimMacrosOperacoes.h"
