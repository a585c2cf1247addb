#include "store/QZArmazemSQL.h"

#include <sys/stat.h>

#include <algorithm>
#include <atomic>

#include "store/QZConexaoInfoExtrasSQL.h"

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

namespace {

std::atomic<IQZAuditorPlanos*> g_auditor{nullptr};

// Conversions that the record declarations cannot express (renamed fields,
// moved data), in version order. Tables, columns and indexes that the
// declarations add are reconciled after them at every open. Files made
// before the layout was versioned are version 0.
struct Migracao {
    int64_t versao;
    const char* descricao;
    void (*aplica)(qzsql::CQZBanco& banco);
};
constexpr Migracao kMigracoes[] = {
    {1, "primeiro esquema versionado: uma tabela por registro, listas em tabelas filhas", nullptr},
};
static_assert(kMigracoes[std::size(kMigracoes) - 1].versao == CQZArmazemSQL::kVersaoEsquema);

std::string DefinicaoColuna(const qzsql::Coluna& c) {
    return "\"" + c.nome + "\" " + (c.texto ? "TEXT NOT NULL DEFAULT ''" : "INTEGER NOT NULL DEFAULT 0");
}

bool ArquivoExiste(const std::string& caminho) {
    struct stat st {};
    return ::stat(caminho.c_str(), &st) == 0;
}

// Every record type of the access contracts: their tables exist from the open on.
std::vector<const qzsql::Tabela*> TabelasDeclaradas() {
    std::vector<const qzsql::Tabela*> tabelas;
    auto anota = [&](const qzsql::Tabela& t) {
        if (std::find(tabelas.begin(), tabelas.end(), &t) == tabelas.end()) tabelas.push_back(&t);
    };
#define QZ_OP_LE(Nome, Registro, Chave, Flags, SeAusente) anota(qzsql::EsquemaDe<Registro>());
#define QZ_OP_LE_UNICO(Nome, Registro, Flags) anota(qzsql::EsquemaDe<Registro>());
#define QZ_OP_BUSCA(Nome, Filtro, Lista) anota(qzsql::EsquemaDe<Filtro::TipoRegistro>());
#define QZ_OP_CLASSIFICACAO(Nome, Filtro) anota(qzsql::EsquemaDe<Filtro::TipoRegistro>());
#define QZ_OP_LE_BUFFER(Nome, Registro, Chave, SeAusente) anota(qzsql::EsquemaDe<Registro>());
#define QZ_OP_LE_BUFFER_UNICO(Nome, Registro) anota(qzsql::EsquemaDe<Registro>());
#include "platform/acesso/QZMacrosOperacoes.h"
#include "platform/acesso/Manutencao.def"
#include "platform/acesso/ManutencaoBuffer.def"
#include "platform/acesso/Gestavo.def"
#include "platform/acesso/GestavoBuffer.def"
#include "platform/acesso/QZFimMacrosOperacoes.h"
    return tabelas;
}

}  // namespace

CQZArmazemSQL::CQZArmazemSQL(const std::string& caminho, QZModoAbertura modo, int esperaMs)
    : m_sCaminho(caminho), m_banco(caminho) {
    m_banco.DefineObservador(this);
    const bool memoria = caminho == ":memory:" || caminho.rfind("file:", 0) == 0;
    if (modo == QZ_ABRE_EXISTENTE && !memoria && !ArquivoExiste(caminho)) {
        m_erro.SetErro(QZ_E_BANCO, QZ_MODULO_CONEXAO, 1, "O armazém %s não existe.", caminho.c_str());
        return;
    }
    const int flags =
        SQLITE_OPEN_READWRITE | SQLITE_OPEN_URI | (modo == QZ_ABRE_OU_CRIA ? SQLITE_OPEN_CREATE : 0);
    try {
        m_banco.Abre(caminho, flags, esperaMs);
        Inicia(modo);
    } catch (const qzsql::Falha& f) {
        // A store that failed to open is closed; its error record says why.
        m_erro.SetErro(f.hr, QZ_MODULO_CONEXAO, f.mensagem, "%s", f.texto.c_str());
        m_banco.Fecha();
    } catch (const std::bad_alloc&) {
        m_erro.SetErro(QZ_E_SEM_MEMORIA, QZ_MODULO_CONEXAO, 1, "Memória insuficiente ao abrir %s.", caminho.c_str());
        m_banco.Fecha();
    }
}

CQZArmazemSQL::~CQZArmazemSQL() {
    m_infoExtras.reset();
    // What SQLite advises before closing: refresh statistics that drifted.
    if (m_banco.EstaAberto()) sqlite3_exec(m_banco.Db(), "PRAGMA optimize", nullptr, nullptr, nullptr);
}

IQZArmazemInfoExtras* CQZArmazemSQL::InfoExtras() {
    if (!m_infoExtras && m_banco.EstaAberto()) {
        m_infoExtras = std::make_unique<CQZConexaoInfoExtrasSQL>(m_banco);
        m_infoExtras->DefineGancho(m_pGancho);
    }
    return m_infoExtras.get();
}

void CQZArmazemSQL::DefineGancho(IQZGanchoAcesso* gancho) {
    m_pGancho = gancho;
    if (m_infoExtras) m_infoExtras->DefineGancho(gancho);
}

void CQZArmazemSQL::AtualizaEstatisticas() {
    // Without statistics the planner takes any index of an equality, and a
    // flag's index (Inativo = 0) reads nearly the whole table where a user's
    // or a code's reads one row. The statements are prepared anew to use them.
    m_banco.Executa("ANALYZE");
    m_banco.DescartaComandos();
}

void CQZArmazemSQL::DefineAuditorPlanos(IQZAuditorPlanos* auditor) { g_auditor.store(auditor); }

long CQZArmazemSQL::LeVersaoEsquema(int64_t& versao) {
    return Despacha("LeVersaoEsquema", [&]() -> long {
        versao = VersaoGravada();
        return 0;
    });
}

int64_t CQZArmazemSQL::VersaoGravada() {
    {
        qzsql::CQZComando c(m_banco, "SELECT count(*) FROM sqlite_master WHERE type = 'table' AND name = 'QZ_Esquema'");
        if (!c.Passo() || c.Inteiro(0) == 0) return -1;
    }
    qzsql::CQZComando c(m_banco, "SELECT COALESCE(MAX(versao), 0) FROM QZ_Esquema");
    return c.Passo() ? c.Inteiro(0) : 0;
}

void CQZArmazemSQL::VerificaVersaoConhecida(int64_t versao) {
    if (versao > kVersaoEsquema)
        throw qzsql::Falha{QZ_E_BANCO, 1,
                           "O armazém " + m_sCaminho + " foi gravado por uma versão mais nova do PXLREG (esquema " +
                               std::to_string(versao) + "; esta versão conhece até o esquema " +
                               std::to_string(kVersaoEsquema) + ")."};
}

void CQZArmazemSQL::Inicia(QZModoAbertura modo) {
    m_banco.Executa("PRAGMA foreign_keys = ON");
    // The first read of the file: a file that is not a database fails here.
    int64_t versao = VersaoGravada();
    if (modo == QZ_ABRE_EXISTENTE && versao < 0) {
        qzsql::CQZComando c(m_banco, "SELECT count(*) FROM sqlite_master WHERE type = 'table' AND name LIKE 'CQZ%'");
        if (!c.Passo() || c.Inteiro(0) == 0)
            throw qzsql::Falha{QZ_E_BANCO, 1, "O arquivo " + m_sCaminho + " não é um armazém do PXLREG."};
    }
    VerificaVersaoConhecida(versao);
    m_banco.Executa("PRAGMA journal_mode = WAL");
    // A committed save survives a power failure too.
    m_banco.Executa("PRAGMA synchronous = FULL");
    // Statistics from a sample of each index: cheap on large tables.
    m_banco.Executa("PRAGMA analysis_limit = 1000");

    const auto tabelas = TabelasDeclaradas();
    std::vector<std::string> ddl;
    for (const auto* t : tabelas) PlanoTabela(*t, {}, ddl);
    // An up-to-date file is opened without taking the write lock, so a store
    // opens while another connection writes.
    if (versao != kVersaoEsquema || !ddl.empty()) {
        long hr = m_banco.EmTransacao(qzsql::EModoTransacao::ESCRITA, [&]() -> long {
            versao = VersaoGravada();
            VerificaVersaoConhecida(versao);
            m_banco.Executa("CREATE TABLE IF NOT EXISTS QZ_Esquema (versao INTEGER PRIMARY KEY, descricao TEXT NOT "
                            "NULL, aplicada_em TEXT NOT NULL)");
            for (const Migracao& m : kMigracoes) {
                if (m.versao <= versao) continue;
                if (m.aplica) m.aplica(m_banco);
                qzsql::CQZComando c(
                    m_banco, "INSERT INTO QZ_Esquema (versao, descricao, aplicada_em) VALUES (?, ?, datetime('now'))");
                c.Liga(1, m.versao).LigaTexto(2, m.descricao);
                c.Passo();
            }
            ddl.clear();
            for (const auto* t : tabelas) PlanoTabela(*t, {}, ddl);
            for (const auto& sql : ddl) m_banco.Executa(sql.c_str());
            return 0;
        });
        (void)hr;  // the transaction's work returns 0 or throws
    }
    for (const auto* t : tabelas) m_tabelasCriadas.insert(t->nome);
}

void CQZArmazemSQL::PlanoTabela(const qzsql::Tabela& t, const std::string& tabelaPai, std::vector<std::string>& ddl) {
    std::set<std::string> colunas, indices;
    {
        qzsql::CQZComando c(m_banco, "SELECT name FROM pragma_table_info(?1)");
        c.LigaTexto(1, t.nome);
        while (c.Passo()) colunas.emplace(c.Texto(0));
    }
    {
        qzsql::CQZComando c(m_banco, "SELECT name FROM sqlite_master WHERE type = 'index' AND tbl_name = ?1");
        c.LigaTexto(1, t.nome);
        while (c.Passo()) indices.emplace(c.Texto(0));
    }

    const std::string tab = "\"" + t.nome + "\"";
    if (colunas.empty()) {
        std::string sql = "CREATE TABLE " + tab + " (chave INTEGER PRIMARY KEY";
        if (!tabelaPai.empty())
            sql += ", pai INTEGER NOT NULL REFERENCES \"" + tabelaPai + "\"(chave) ON DELETE CASCADE, ordem INTEGER NOT NULL";
        for (const auto& c : t.colunas) sql += ", " + DefinicaoColuna(c);
        ddl.push_back(sql + ")");
    } else {
        // A field added to the declaration: a column with the field's empty value.
        for (const auto& c : t.colunas)
            if (!colunas.count(c.nome)) ddl.push_back("ALTER TABLE " + tab + " ADD COLUMN " + DefinicaoColuna(c));
    }
    auto indice = [&](const std::string& nome, const std::string& colunasIndice) {
        if (!indices.count(nome)) ddl.push_back("CREATE INDEX \"" + nome + "\" ON " + tab + "(" + colunasIndice + ")");
    };
    if (!tabelaPai.empty()) indice("ix_" + t.nome + "__pai", "pai, ordem");
    for (const auto& c : t.colunas)
        if (c.indexada) indice("ix_" + t.nome + "_" + c.nome, "\"" + c.nome + "\"");
    for (const auto& f : t.filhas) PlanoTabela(f, t.nome, ddl);
}

void CQZArmazemSQL::ReconciliaTabela(const qzsql::Tabela& t) {
    std::vector<std::string> ddl;
    PlanoTabela(t, {}, ddl);
    if (ddl.empty()) return;
    long hr = m_banco.EmTransacao(qzsql::EModoTransacao::ESCRITA, [&]() -> long {
        ddl.clear();
        PlanoTabela(t, {}, ddl);
        for (const auto& sql : ddl) m_banco.Executa(sql.c_str());
        return 0;
    });
    (void)hr;  // the transaction's work returns 0 or throws
}

void CQZArmazemSQL::Liga(qzsql::CQZComando& c, int indice, const CQZValor& valor) {
    if (const int64_t* v = std::get_if<int64_t>(&valor)) {
        c.Liga(indice, *v);
    } else if (const std::string* bruto = std::get_if<std::string>(&valor)) {
        c.LigaTexto(indice, *bruto);
    } else {
        std::string utf8, erro;
        if (!QZCp1252ParaUtf8(std::get<CString>(valor).str(), utf8, &erro))
            throw qzsql::Falha{QZ_E_REGISTRO_INVALIDO, 6, "Texto inválido: " + erro};
        c.LigaTexto(indice, utf8);
    }
}

CQZValor CQZArmazemSQL::ColunaValor(const qzsql::CQZComando& c, int indice, bool texto) {
    if (!texto) return c.Inteiro(indice);
    std::string cp1252, erro;
    if (!QZUtf8ParaCp1252(std::string(c.Texto(indice)), cp1252, &erro))
        throw qzsql::Falha{QZ_E_REGISTRO_INVALIDO, 6, "Texto gravado sem forma em Windows-1252: " + erro};
    return CString(std::move(cp1252));
}

void CQZArmazemSQL::AoIniciar() {
    // Writes of other connections are noticed once per transaction.
    VerificaVersaoDados();
}

void CQZArmazemSQL::AoConfirmar(int64_t linhas) {
    if (linhas >= kLinhasParaEstatisticas) AtualizaEstatisticas();
}

void CQZArmazemSQL::AoDesfazer() {
    // What was read or made inside the transaction is gone with it.
    m_cache.clear();
    m_tabelasCriadas.clear();
}

void CQZArmazemSQL::VerificaVersaoDados() {
    // Inside a transaction the snapshot is fixed: checked when it began.
    if (m_banco.NivelTransacao() > 0 && m_versaoDados >= 0) return;
    qzsql::CQZComando c(m_banco, "PRAGMA data_version");
    const int64_t versao = c.Passo() ? c.Inteiro(0) : -1;
    if (versao != m_versaoDados) {
        m_cache.clear();
        m_versaoDados = versao;
    }
}

int64_t CQZArmazemSQL::ProximaChave(const qzsql::Tabela& t) {
    const std::string tab = "\"" + t.nome + "\"";
    {
        qzsql::CQZComando c(m_banco, "SELECT COALESCE(MAX(chave), 0) + 1 FROM " + tab);
        const int64_t chave = c.Passo() ? c.Inteiro(0) : 1;
        if (chave <= kPosicaoMaxima) return chave;
    }
    // The highest position is taken: the lowest free one, if any is.
    qzsql::CQZComando c(m_banco, "SELECT CASE WHEN NOT EXISTS (SELECT 1 FROM " + tab +
                                     " WHERE chave = 1) THEN 1 ELSE (SELECT a.chave + 1 FROM " + tab +
                                     " AS a WHERE a.chave < ?1 AND NOT EXISTS (SELECT 1 FROM " + tab +
                                     " AS b WHERE b.chave = a.chave + 1) ORDER BY a.chave LIMIT 1) END");
    c.Liga(1, kPosicaoMaxima);
    if (c.Passo() && sqlite3_column_type(c.Stmt(), 0) != SQLITE_NULL) return c.Inteiro(0);
    throw qzsql::Falha{QZ_E_REGISTRO_INVALIDO, 6,
                       "Tabela " + t.nome + " cheia: todas as posições de 1 a 4294967295 estão ocupadas."};
}

int64_t CQZArmazemSQL::ProximoNumeroMes(const qzsql::Tabela& t, const REG_QZMA& ma) {
    const int64_t base = static_cast<int64_t>(REG_QZDMC(ma, 0).GetValor());
    qzsql::CQZComando c(m_banco, "SELECT COALESCE(MAX(chave), ?1) + 1 FROM \"" + t.nome +
                                     "\" WHERE chave BETWEEN ?1 AND ?2");
    c.Liga(1, base).Liga(2, base + kPosicaoMaxima);
    const int64_t chave = c.Passo() ? c.Inteiro(0) : base + 1;
    if (chave > base + kPosicaoMaxima) throw qzsql::Falha{QZ_E_REGISTRO_INVALIDO, 6, "Mês cheio em " + t.nome + "."};
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
                // Through the element's index, then the owners by key.
                termo = "t.chave IN (SELECT f.pai FROM \"" + filha->nome + "\" AS f WHERE f." +
                        coluna(*filha, cond.campo) + " = ?)";
                valores.push_back(cond.valor);
                break;
            }
            case CQZCondicao::REFERENCIADO: {
                const qzsql::Tabela* filha = nullptr;
                for (const qzsql::Tabela* dona : TabelasDeclaradas())
                    if (dona->nome == cond.registro)
                        for (const auto& f : dona->filhas)
                            if (f.nome == dona->nome + "__" + cond.lista) filha = &f;
                if (!filha)
                    throw qzsql::Falha{QZ_E_REGISTRO_INVALIDO, 6,
                                       "Lista " + cond.lista + " desconhecida em " + cond.registro + "."};
                // The elements through the index of their condition, then this
                // table by key.
                termo = "t.chave IN (SELECT r." + coluna(*filha, cond.campo) + " FROM \"" + filha->nome +
                        "\" AS r WHERE r." + coluna(*filha, cond.campoCondicao) + " = ?)";
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

qzsql::Consulta CQZArmazemSQL::MontaBusca(const qzsql::Tabela& t, const TQZBaseFiltro& filtro) {
    CQZCondicoes c;
    filtro.MontaCondicoes(c, false);
    qzsql::Consulta q;
    std::string where = MontaWhere(t, c, q.valores, nullptr);
    q.temCondicao = !where.empty();
    q.sql = "SELECT t.chave FROM \"" + t.nome + "\" AS t" + where + " ORDER BY t.chave";
    return q;
}

qzsql::Consulta CQZArmazemSQL::MontaClassificacao(const qzsql::Tabela& t, const TQZBaseFiltro& filtro) {
    CQZCondicoes c;
    filtro.MontaCondicoes(c, true);
    std::vector<CQZValor> valores;
    const CQZCondicao* sub = nullptr;
    std::string where = MontaWhere(t, c, valores, &sub);
    qzsql::Consulta q;
    if (!sub) {
        q.sql = "SELECT t.chave FROM \"" + t.nome + "\" AS t" + where + " ORDER BY t.chave";
        q.valores = std::move(valores);
        q.temCondicao = !where.empty();
        return q;
    }
    // The record itself first, then its descendants level by level. UNION
    // (not UNION ALL) ends the walk on a record that names itself or a
    // descendant as its parent. The other criteria select among the records
    // of the subtree; they do not stop the walk, so the leaves under a
    // sub-group that does not match are still found.
    q.sql = "WITH RECURSIVE qz_sub(chave) AS (SELECT chave FROM \"" + t.nome +
            "\" WHERE chave = ? UNION SELECT t.chave FROM \"" + t.nome + "\" AS t JOIN qz_sub ON t.\"" + sub->campo +
            "\" = qz_sub.chave) SELECT chave FROM qz_sub";
    if (!where.empty())
        q.sql += " WHERE EXISTS (SELECT 1 FROM \"" + t.nome + "\" AS t WHERE t.chave = qz_sub.chave AND " +
                 where.substr(7) + ")";
    q.valores.push_back(sub->valor);
    q.valores.insert(q.valores.end(), valores.begin(), valores.end());
    q.temCondicao = true;
    return q;
}

std::vector<int64_t> CQZArmazemSQL::ExecutaConsulta(const qzsql::Tabela& t, const qzsql::Consulta& c) {
    if (IQZAuditorPlanos* auditor = g_auditor.load();
        auditor && c.temCondicao && m_planosExaminados.insert(c.sql).second)
        auditor->Examina(t.nome, c.sql, Explica(c.sql));
    qzsql::CQZComando cmd(m_banco, c.sql);
    for (size_t i = 0; i < c.valores.size(); ++i) Liga(cmd, static_cast<int>(i) + 1, c.valores[i]);
    std::vector<int64_t> chaves;
    while (cmd.Passo()) chaves.push_back(cmd.Inteiro(0));
    return chaves;
}

std::vector<std::string> CQZArmazemSQL::Explica(const std::string& sql) {
    qzsql::CQZComando c(m_banco, "EXPLAIN QUERY PLAN " + sql);
    std::vector<std::string> plano;
    while (c.Passo()) plano.emplace_back(c.Texto(3));
    return plano;
}

std::vector<std::string> CQZArmazemSQL::VarredurasCompletas(const std::vector<std::string>& plano) {
    // "SCAN t", "SCAN t USING COVERING INDEX ..." read every row; the walk
    // over the subtree queue (qz_sub) and constant rows do not.
    std::vector<std::string> varreduras;
    for (const auto& linha : plano) {
        if (linha.rfind("SCAN ", 0) != 0) continue;
        if (linha.rfind("SCAN qz_sub", 0) == 0 || linha.rfind("SCAN CONSTANT ROW", 0) == 0) continue;
        varreduras.push_back(linha);
    }
    return varreduras;
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
