#include "store/QZSQLite.h"

#include "platform/QZCodigosResultado.h"

#include <atomic>

namespace qzsql {

uint32_t NovoSlot() {
    static std::atomic<uint32_t> proximo{0};
    return proximo++;
}

CQZBanco::~CQZBanco() { Fecha(); }

void CQZBanco::Fecha() noexcept {
    DescartaComandos();
    if (m_db) sqlite3_close(m_db);
    m_db = nullptr;
    m_nivel = 0;
}

void CQZBanco::Abre(const std::string& caminho, int flags, int esperaMs) {
    if (sqlite3_open_v2(caminho.c_str(), &m_db, flags | SQLITE_OPEN_NOMUTEX, nullptr) != SQLITE_OK) {
        std::string motivo = m_db ? sqlite3_errmsg(m_db) : "sem memória";
        sqlite3_close(m_db);
        m_db = nullptr;
        throw qzsql::Falha{QZ_E_BANCO, 1, "Não foi possível abrir o armazém " + m_nome + ": " + motivo + "."};
    }
    sqlite3_extended_result_codes(m_db, 1);
    DefineEspera(esperaMs);
}

void CQZBanco::DefineEspera(int ms) {
    m_esperaMs = ms;
    if (m_db) sqlite3_busy_timeout(m_db, ms);
}

sqlite3_stmt* CQZBanco::Prepara(std::string_view sql) {
    std::string chave(sql);
    if (auto it = m_comandos.find(chave); it != m_comandos.end()) return it->second;
    sqlite3_stmt* st = nullptr;
    if (sqlite3_prepare_v3(m_db, chave.data(), static_cast<int>(chave.size()), SQLITE_PREPARE_PERSISTENT, &st,
                           nullptr) != SQLITE_OK)
        Falha();
    m_comandos.emplace(std::move(chave), st);
    return st;
}

sqlite3_stmt* CQZBanco::Prepara(uint32_t slot, std::string_view sql) {
    if (slot < m_porSlot.size() && m_porSlot[slot]) return m_porSlot[slot];
    sqlite3_stmt* st = nullptr;
    if (sqlite3_prepare_v3(m_db, sql.data(), static_cast<int>(sql.size()), SQLITE_PREPARE_PERSISTENT, &st, nullptr) !=
        SQLITE_OK)
        Falha();
    if (slot >= m_porSlot.size()) m_porSlot.resize(slot + 1, nullptr);
    m_porSlot[slot] = st;
    return st;
}

void CQZBanco::DescartaComandos() {
    for (auto& [sql, st] : m_comandos) sqlite3_finalize(st);
    m_comandos.clear();
    for (sqlite3_stmt* st : m_porSlot) sqlite3_finalize(st);
    m_porSlot.clear();
}

void CQZBanco::Executa(const char* sql) {
    if (sqlite3_exec(m_db, sql, nullptr, nullptr, nullptr) != SQLITE_OK) Falha();
}

void CQZBanco::Falha() const {
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
        case SQLITE_CONSTRAINT:
            throw qzsql::Falha{QZ_E_REGISTRO_INVALIDO, 6, "O armazém " + m_nome + " recusou o registro: " + motivo + "."};
        default:
            break;
    }
    throw qzsql::Falha{QZ_E_BANCO, 1, "Erro do banco de dados no armazém " + m_nome + ": " + motivo + "."};
}

bool CQZBanco::IniciaTransacao(EModoTransacao modo) {
    if (m_nivel > 0 || !m_db) return false;
    Inicia(modo);
    return true;
}

void CQZBanco::EncerraTransacao() {
    if (m_nivel == 0) return;
    try {
        Confirma();
    } catch (...) {
        // Confirma has rolled back what it could not commit.
    }
}

void CQZBanco::Inicia(EModoTransacao modo) {
    static const CQZComandoFixo kLeitura{"BEGIN"}, kEscrita{"BEGIN IMMEDIATE"};
    {
        CQZComando c(*this, modo == EModoTransacao::ESCRITA ? kEscrita : kLeitura);
        c.Passo();
    }
    m_nivel = 1;
    m_linhasAntes = sqlite3_total_changes64(m_db);
    // A deferred transaction takes its snapshot at its first read: the
    // owner reads at once what it checks the transaction by.
    try {
        if (m_pObservador) m_pObservador->AoIniciar();
    } catch (...) {
        Desfaz();
        throw;
    }
}

void CQZBanco::Confirma() {
    static const CQZComandoFixo kConfirma{"COMMIT"};
    try {
        CQZComando c(*this, kConfirma);
        c.Passo();
    } catch (...) {
        // A commit that fails (a full disk) leaves the transaction open.
        Desfaz();
        throw;
    }
    m_nivel = 0;
    if (m_pObservador) m_pObservador->AoConfirmar(sqlite3_total_changes64(m_db) - m_linhasAntes);
}

void CQZBanco::Desfaz() noexcept {
    m_nivel = 0;
    if (!sqlite3_get_autocommit(m_db)) sqlite3_exec(m_db, "ROLLBACK", nullptr, nullptr, nullptr);
    if (m_pObservador) m_pObservador->AoDesfazer();
}

CQZComando& CQZComando::Liga(int indice, int64_t valor) {
    if (sqlite3_bind_int64(m_st, indice, valor) != SQLITE_OK) m_banco.Falha();
    Observa(indice, false, valor, {});
    return *this;
}

CQZComando& CQZComando::LigaTexto(int indice, std::string_view utf8) {
    if (sqlite3_bind_text64(m_st, indice, utf8.data(), utf8.size(), SQLITE_TRANSIENT, SQLITE_UTF8) != SQLITE_OK)
        m_banco.Falha();
    Observa(indice, true, 0, utf8);
    return *this;
}

CQZComando& CQZComando::LigaTextoFixo(int indice, std::string_view utf8) {
    if (sqlite3_bind_text64(m_st, indice, utf8.data(), utf8.size(), SQLITE_STATIC, SQLITE_UTF8) != SQLITE_OK)
        m_banco.Falha();
    Observa(indice, true, 0, utf8);
    return *this;
}

bool CQZComando::Passo() {
    const int rc = sqlite3_step(m_st);
    if (rc == SQLITE_ROW) return true;
    if (rc == SQLITE_DONE) return false;
    m_banco.Falha();
}

std::string_view CQZComando::Texto(int coluna) const {
    const auto* p = reinterpret_cast<const char*>(sqlite3_column_text(m_st, coluna));
    return p ? std::string_view(p, static_cast<size_t>(sqlite3_column_bytes(m_st, coluna))) : std::string_view();
}

}  // namespace qzsql
