#include "store/QZArmazemSQL.h"

#include <sys/stat.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <ctime>
#include <mutex>

#include "store/QZConexaoInfoExtrasSQL.h"
#include "store/QZPostgres.h"
#include "store/QZSQLite.h"

namespace qzsql {

int Tabela::IndiceColuna(std::string_view campo) const {
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
    const std::string carimbo =
        t.carimbo >= 0 ? " AND \"" + t.colunas[static_cast<size_t>(t.carimbo)].nome + "\" = ?" : std::string();
    t.seleciona.sql = "SELECT " + (cols.empty() ? std::string("chave") : cols) + " FROM " + tab + " WHERE chave = ?";
    t.existe.sql = "SELECT 1 FROM " + tab + " WHERE chave = ?";
    t.insere.sql = "INSERT INTO " + tab + " (chave" + (cols.empty() ? "" : ", " + cols) + ") VALUES (?" + marcas + ")";
    t.atualiza.sql = "UPDATE " + tab + " SET " + (sets.empty() ? std::string("chave = chave") : sets) +
                     " WHERE chave = ?" + carimbo;
    t.remove.sql = "DELETE FROM " + tab + " WHERE chave = ?" + carimbo;
    t.carimboGravado.sql =
        "SELECT " + (t.carimbo >= 0 ? "\"" + t.colunas[static_cast<size_t>(t.carimbo)].nome + "\"" : std::string("0")) +
        " FROM " + tab + " WHERE chave = ?";
    t.filhasDe.sql = "SELECT chave" + (cols.empty() ? "" : ", " + cols) + " FROM " + tab + " WHERE pai = ? ORDER BY ordem";
    t.insereFilha.sql = "INSERT INTO " + tab + " (pai, ordem" + (cols.empty() ? "" : ", " + cols) + ") VALUES (?, ?" +
                        marcas + ") RETURNING chave";
    t.apagaFilhas.sql = "DELETE FROM " + tab + " WHERE pai = ?";
    t.chaves.sql = "SELECT chave FROM " + tab + " ORDER BY chave";
}

}  // namespace qzsql

namespace {

// Smallest text greater than every text that starts with `prefixo` (UTF-8),
// or empty when there is none: its last character is the next code point,
// so the bound is valid UTF-8 (a server refuses anything else) and, UTF-8
// sorting as its code points do, nothing between the prefix and the bound
// lacks the prefix.
std::string LimiteSuperiorPrefixo(std::string prefixo) {
    while (!prefixo.empty()) {
        size_t inicio = prefixo.size() - 1;
        while (inicio > 0 && (static_cast<unsigned char>(prefixo[inicio]) & 0xC0) == 0x80) --inicio;
        const auto* p = reinterpret_cast<const unsigned char*>(prefixo.data() + inicio);
        const size_t n = prefixo.size() - inicio;
        uint32_t cp = n == 1 ? p[0]
                    : n == 2 ? ((p[0] & 0x1Fu) << 6) | (p[1] & 0x3Fu)
                    : n == 3 ? ((p[0] & 0x0Fu) << 12) | ((p[1] & 0x3Fu) << 6) | (p[2] & 0x3Fu)
                             : ((p[0] & 0x07u) << 18) | ((p[1] & 0x3Fu) << 12) | ((p[2] & 0x3Fu) << 6) | (p[3] & 0x3Fu);
        prefixo.resize(inicio);
        if (cp >= 0x10FFFF) continue;  // the last code point: carry to the one before
        ++cp;
        if (cp >= 0xD800 && cp <= 0xDFFF) cp = 0xE000;  // no surrogates in UTF-8
        if (cp < 0x80) {
            prefixo += static_cast<char>(cp);
        } else if (cp < 0x800) {
            prefixo += static_cast<char>(0xC0 | (cp >> 6));
            prefixo += static_cast<char>(0x80 | (cp & 0x3F));
        } else if (cp < 0x10000) {
            prefixo += static_cast<char>(0xE0 | (cp >> 12));
            prefixo += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
            prefixo += static_cast<char>(0x80 | (cp & 0x3F));
        } else {
            prefixo += static_cast<char>(0xF0 | (cp >> 18));
            prefixo += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
            prefixo += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
            prefixo += static_cast<char>(0x80 | (cp & 0x3F));
        }
        return prefixo;
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

std::string DefinicaoColuna(const qzsql::IQZMotor& motor, const qzsql::Coluna& c) {
    return "\"" + c.nome + "\" " +
           (c.texto ? motor.TipoTexto() + " NOT NULL DEFAULT ''" : motor.TipoInteiro() + " NOT NULL DEFAULT 0");
}

// Now in UTC, as the version table records when a migration ran.
std::string AgoraUtc() {
    const std::time_t agora = std::time(nullptr);
    std::tm tm{};
    gmtime_r(&agora, &tm);
    char texto[32];
    std::strftime(texto, sizeof texto, "%Y-%m-%d %H:%M:%S", &tm);
    return texto;
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
#define QZ_OP_ITEM_LISTA(Nome, Registro, Chave, Lista, Elemento, Item, Campo) anota(qzsql::EsquemaDe<Registro>());
#define QZ_OP_LE_VARIOS(Nome, Registro, Chave, Flags) anota(qzsql::EsquemaDe<Registro>());
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
    const bool servidor = qzsql::EhUrlPostgres(caminho);
    const bool memoria = caminho == ":memory:" || caminho.rfind("file:", 0) == 0;
    if (modo == QZ_ABRE_EXISTENTE && !memoria && !servidor && !ArquivoExiste(caminho)) {
        m_erro.SetErro(QZ_E_BANCO, QZ_MODULO_CONEXAO, 1, "O armazém %s não existe.", caminho.c_str());
        return;
    }
    try {
        if (servidor)
            m_banco.Abre(qzsql::AbrePostgres(qzsql::NomeUrlPostgres(caminho), caminho), esperaMs);
        else
            m_banco.Abre(qzsql::AbreSQLite(caminho, caminho, modo == QZ_ABRE_OU_CRIA), esperaMs);
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
    if (m_banco.EstaAberto()) m_banco.Motor().AoFechar();
}

IQZArmazemInfoExtras* CQZArmazemSQL::InfoExtras() {
    if (!m_infoExtras && m_banco.EstaAberto()) {
        m_infoExtras = std::make_unique<CQZConexaoInfoExtrasSQL>(m_banco);
        m_infoExtras->DefineGancho(m_pGancho);
    }
    return m_infoExtras.get();
}

bool CQZArmazemSQL::IniciaLeitura() {
    try {
        return m_banco.IniciaTransacao(qzsql::EModoTransacao::LEITURA);
    } catch (const qzsql::Falha&) {
        // Without the transaction each read is its own, and reports its own failure.
        return false;
    }
}

void CQZArmazemSQL::DefineGancho(IQZGanchoAcesso* gancho) {
    m_pGancho = gancho;
    if (m_infoExtras) m_infoExtras->DefineGancho(gancho);
}

void CQZArmazemSQL::AtualizaEstatisticas() {
    // Without statistics the planner takes any index of an equality, and a
    // flag's index (Inativo = 0) reads nearly the whole table where a user's
    // or a code's reads one row. The statements are prepared anew to use them.
    m_banco.Motor().AtualizaEstatisticas();
    m_banco.DescartaComandos();
}

void CQZArmazemSQL::DefineAuditorPlanos(IQZAuditorPlanos* auditor) { g_auditor.store(auditor); }

long CQZArmazemSQL::LeVersaoEsquema(int64_t& versao) {
    return Despacha("LeVersaoEsquema", [&]() -> long {
        versao = VersaoGravada();
        return 0;
    });
}

namespace {

const qzsql::Tabela* TabelaDeclarada(std::string_view nome) {
    static const std::vector<const qzsql::Tabela*> tabelas = TabelasDeclaradas();
    for (const qzsql::Tabela* t : tabelas)
        if (t->nome == nome) return t;
    return nullptr;
}

// A pointer column of a record's table or of one of its list tables, with
// the tables from the record's down to the column's.
struct ColunaReferencia {
    std::vector<const qzsql::Tabela*> caminho;
    const qzsql::Coluna* coluna;
};

void ColunasReferencia(std::vector<const qzsql::Tabela*>& caminho, std::vector<ColunaReferencia>& saida) {
    const qzsql::Tabela& t = *caminho.back();
    for (const auto& c : t.colunas)
        if (c.alvo) saida.push_back({caminho, &c});
    for (const auto& f : t.filhas) {
        caminho.push_back(&f);
        ColunasReferencia(caminho, saida);
        caminho.pop_back();
    }
}

// The rows of the column's table whose pointer names no row of the target:
// the record's key, the entry of each list down to the column's (from 0),
// and the value. The target is probed by its primary key.
std::string SqlReferenciaPendente(const ColunaReferencia& r, const qzsql::Tabela& alvo) {
    const size_t n = r.caminho.size() - 1;  // list levels
    auto apelido = [](size_t i) { return "t" + std::to_string(i); };
    const std::string col = apelido(n) + ".\"" + r.coluna->nome + "\"";
    std::string campos = n == 0 ? apelido(0) + ".chave" : apelido(1) + ".pai";
    for (size_t i = 1; i <= n; ++i) campos += ", " + apelido(i) + ".ordem";
    std::string de = "\"" + r.caminho[n]->nome + "\" " + apelido(n);
    for (size_t i = n; i > 1; --i)
        de += " JOIN \"" + r.caminho[i - 1]->nome + "\" " + apelido(i - 1) + " ON " + apelido(i - 1) +
              ".chave = " + apelido(i) + ".pai";
    return "SELECT " + campos + ", " + col + " FROM " + de + " LEFT JOIN \"" + alvo.nome + "\" u ON u.chave = " +
           col + " WHERE " + col + " <> 0 AND u.chave IS NULL LIMIT 1";
}

}  // namespace

long CQZArmazemSQL::BuscaReferenciaPendente(std::optional<CQZReferenciaPendente>& achado) {
    achado.reset();
    return Despacha("BuscaReferenciaPendente", [&]() -> long {
        static const std::vector<std::pair<ColunaReferencia, std::string>> consultas = [] {
            std::vector<std::pair<ColunaReferencia, std::string>> lista;
            for (const qzsql::Tabela* t : TabelasDeclaradas()) {
                std::vector<const qzsql::Tabela*> caminho{t};
                std::vector<ColunaReferencia> colunas;
                ColunasReferencia(caminho, colunas);
                for (auto& c : colunas) {
                    const qzsql::Tabela* alvo = TabelaDeclarada(c.coluna->alvo);
                    // A declaration naming a type the store does not hold is a
                    // programming error, found by the first check.
                    if (!alvo)
                        throw qzsql::Falha{QZ_E_INESPERADO, 1,
                                           std::string("QZ_REF(") + c.coluna->alvo + ") de " + t->nome +
                                               " não nomeia um registro do armazém."};
                    lista.emplace_back(c, SqlReferenciaPendente(c, *alvo));
                }
            }
            return lista;
        }();
        for (const auto& [ref, sql] : consultas) {
            qzsql::CQZComando c(m_banco, sql);
            if (!c.Passo()) continue;
            CQZReferenciaPendente p;
            p.tipo = ref.caminho.front()->nome;
            p.chave = c.Inteiro(0);
            for (size_t i = 1; i < ref.caminho.size(); ++i) {
                // A list table is named "<Classe>__<Lista>" (nested: "...__<Lista>__<Lista>").
                const std::string& nome = ref.caminho[i]->nome;
                const size_t p0 = ref.caminho[i - 1]->nome.size() + 2;
                p.itens.push_back({nome.substr(p0), c.Inteiro(static_cast<int>(i)) + 1});
            }
            p.campo = ref.coluna->nome;
            p.alvo = ref.coluna->alvo;
            p.valor = c.Inteiro(static_cast<int>(ref.caminho.size()));
            achado = std::move(p);
            return 0;
        }
        return 0;
    });
}

long CQZArmazemSQL::ExisteRegistro(std::string_view tipo, int64_t chave, bool& existe) {
    existe = false;
    return Despacha("ExisteRegistro", [&]() -> long {
        const qzsql::Tabela* t = TabelaDeclarada(tipo);
        if (!t) {
            m_erro.SetErro(QZ_E_ARGUMENTO_INVALIDO, QZ_MODULO_CONEXAO, 1, "O armazém não guarda registros %s.",
                           std::string(tipo).c_str());
            return QZ_E_ARGUMENTO_INVALIDO;
        }
        qzsql::CQZComando c(m_banco, t->existe);
        c.Liga(1, chave);
        existe = c.Passo();
        return 0;
    });
}

int64_t CQZArmazemSQL::VersaoGravada() {
    if (!m_banco.Motor().ExisteTabela("QZ_Esquema")) return -1;
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
    qzsql::IQZMotor& motor = m_banco.Motor();
    // The first read of the file: a file that is not a database fails here.
    int64_t versao = VersaoGravada();
    if (modo == QZ_ABRE_EXISTENTE && versao < 0 && !motor.ExisteTabelaComPrefixo("CQZ"))
        throw qzsql::Falha{QZ_E_BANCO, 1, "O arquivo " + m_sCaminho + " não é um armazém do PXLREG."};
    VerificaVersaoConhecida(versao);
    motor.ConfiguraArmazem();

    const auto tabelas = TabelasDeclaradas();
    std::vector<std::string> ddl;
    for (const auto* t : tabelas) PlanoTabela(*t, {}, ddl);
    // An up-to-date file is opened without taking the write lock, so a store
    // opens while another connection writes.
    if (versao != kVersaoEsquema || !ddl.empty()) {
        long hr = m_banco.EmTransacao(qzsql::EModoTransacao::ESCRITA, [&]() -> long {
            versao = VersaoGravada();
            VerificaVersaoConhecida(versao);
            const std::string ddlVersoes = "CREATE TABLE IF NOT EXISTS QZ_Esquema (versao " + motor.TipoInteiro() +
                                           " PRIMARY KEY, descricao TEXT NOT NULL, aplicada_em TEXT NOT NULL)";
            m_banco.Executa(ddlVersoes.c_str());
            for (const Migracao& m : kMigracoes) {
                if (m.versao <= versao) continue;
                if (m.aplica) m.aplica(m_banco);
                qzsql::CQZComando c(m_banco, "INSERT INTO QZ_Esquema (versao, descricao, aplicada_em) VALUES (?, ?, ?)");
                c.Liga(1, m.versao).LigaTexto(2, m.descricao).LigaTexto(3, AgoraUtc());
                c.Passo();
            }
            ddl.clear();
            for (const auto* t : tabelas) PlanoTabela(*t, {}, ddl);
            for (const auto& sql : ddl) m_banco.Executa(sql.c_str());
            return 0;
        });
        (void)hr;  // the transaction's work returns 0 or throws
    }
    for (const auto* t : tabelas) {
        if (t->id >= m_tabelasCriadas.size()) m_tabelasCriadas.resize(t->id + 1);
        m_tabelasCriadas[t->id] = true;
    }
}

void CQZArmazemSQL::PlanoTabela(const qzsql::Tabela& t, const std::string& tabelaPai, std::vector<std::string>& ddl) {
    qzsql::IQZMotor& motor = m_banco.Motor();
    const std::set<std::string> colunas = motor.Colunas(t.nome);
    const std::set<std::string> indices = motor.Indices(t.nome);

    const std::string tab = "\"" + t.nome + "\"";
    if (colunas.empty()) {
        // A list's rows are numbered by the table; a record's key is given.
        std::string sql = "CREATE TABLE " + tab + " (" + motor.ColunaChave(!tabelaPai.empty());
        if (!tabelaPai.empty())
            sql += ", pai " + motor.TipoInteiro() + " NOT NULL REFERENCES \"" + tabelaPai +
                   "\"(chave) ON DELETE CASCADE, ordem " + motor.TipoInteiro() + " NOT NULL";
        for (const auto& c : t.colunas) sql += ", " + DefinicaoColuna(motor, c);
        ddl.push_back(sql + ")");
    } else {
        // A field added to the declaration: a column with the field's empty value.
        for (const auto& c : t.colunas)
            if (!colunas.count(c.nome))
                ddl.push_back("ALTER TABLE " + tab + " ADD COLUMN " + DefinicaoColuna(motor, c));
    }
    auto indice = [&](const std::string& nomeDeclarado, const std::string& colunasIndice) {
        const std::string nome = motor.NomeObjeto(nomeDeclarado);
        if (!indices.count(nome)) ddl.push_back("CREATE INDEX \"" + nome + "\" ON " + tab + "(" + colunasIndice + ")");
    };
    if (!tabelaPai.empty()) indice("ix_" + t.nome + "__pai", "pai, ordem");
    for (const auto& c : t.colunas)
        if (c.indexada) indice("ix_" + t.nome + "_" + c.nome, "\"" + c.nome + "\"");
    // In a list, a search on one searched field often reads another (which
    // records the active links name): each such index also carries the
    // list's other searched fields and answers it alone, where a field that
    // matches most rows would otherwise be read as a scan of the table.
    if (!tabelaPai.empty())
        for (const auto& c : t.colunas) {
            if (!c.indexada) continue;
            std::string cobertas = "\"" + c.nome + "\"";
            for (const auto& o : t.colunas)
                if (o.indexada && o.nome != c.nome) cobertas += ", \"" + o.nome + "\"";
            if (cobertas.find(',') != std::string::npos) indice("ix_" + t.nome + "_" + c.nome + "__cobre", cobertas);
        }
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

namespace {
// Eight bytes at a time: most stored text is ASCII and is checked on every read.
bool EhAscii(std::string_view s) {
    const char* p = s.data();
    size_t n = s.size();
    uint64_t alto = 0;
    for (; n >= 8; p += 8, n -= 8) {
        uint64_t bloco;
        std::memcpy(&bloco, p, 8);
        alto |= bloco;
    }
    for (; n > 0; ++p, --n) alto |= static_cast<unsigned char>(*p);
    return (alto & 0x8080808080808080ull) == 0;
}
}  // namespace

void CQZArmazemSQL::Liga(qzsql::CQZComando& c, int indice, const CQZValor& valor) {
    if (const int64_t* v = std::get_if<int64_t>(&valor)) {
        c.Liga(indice, *v);
    } else if (const std::string* bruto = std::get_if<std::string>(&valor)) {
        c.LigaTextoFixo(indice, *bruto);
    } else if (const std::string& cp1252 = std::get<CString>(valor).str(); EhAscii(cp1252)) {
        // ASCII is the same in both encodings.
        c.LigaTextoFixo(indice, cp1252);
    } else {
        std::string utf8, erro;
        if (!QZCp1252ParaUtf8(cp1252, utf8, &erro))
            throw qzsql::Falha{QZ_E_REGISTRO_INVALIDO, 6, "Texto inválido: " + erro};
        c.LigaTexto(indice, utf8);
    }
}

int64_t CQZArmazemSQL::AtualizaLinha(const qzsql::Tabela& t, int64_t chave, const std::vector<CQZValor>& valores,
                                     std::optional<int64_t> carimbo) {
    qzsql::CQZComando c(m_banco, t.atualiza);
    int i = 1;
    for (const auto& v : valores) Liga(c, i++, v);
    c.Liga(i++, chave);
    if (carimbo) c.Liga(i, *carimbo);
    c.Passo();
    return c.Alteradas();
}

int64_t CQZArmazemSQL::RemoveLinha(const qzsql::Tabela& t, int64_t chave, std::optional<int64_t> carimbo) {
    qzsql::CQZComando c(m_banco, t.remove);
    c.Liga(1, chave);
    if (carimbo) c.Liga(2, *carimbo);
    c.Passo();
    return c.Alteradas();
}

void CQZArmazemSQL::LeTexto(const qzsql::CQZComando& c, int indice, CString& texto) {
    // Into the field's own buffer: a record read again reuses its strings.
    const std::string_view utf8 = c.Texto(indice);
    std::string& destino = texto.str();
    if (EhAscii(utf8)) {
        destino.assign(utf8);
        return;
    }
    std::string erro;
    if (!QZUtf8ParaCp1252(utf8, destino, &erro))
        throw qzsql::Falha{QZ_E_REGISTRO_INVALIDO, 6, "Texto gravado inválido: " + erro};
}

void CQZArmazemSQL::AoIniciar() {
    // Writes of other connections are noticed once per transaction: the
    // pragma reads the database, so it also takes the transaction's snapshot
    // the cache is checked against. An empty cache has nothing to check: the
    // records it takes in this transaction come from the snapshot itself,
    // and a version left behind only costs a needless clear later.
    if (!m_cache.empty()) VerificaVersaoDados();
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
    // An engine that keeps no such number keeps a cache only inside one
    // transaction: its snapshot is what the cache holds.
    const std::optional<int64_t> lida = m_banco.Motor().VersaoDados();
    const int64_t versao = lida ? *lida : -1;
    if (!lida || versao != m_versaoDados) {
        m_cache.clear();
        m_versaoDados = versao;
    }
}

int64_t CQZArmazemSQL::ProximaChave(const qzsql::Tabela& t) {
    const std::string tab = "\"" + t.nome + "\"";
    m_banco.Motor().ReservaChaves(t.nome);
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
    if (c.Passo() && !c.Nulo(0)) return c.Inteiro(0);
    throw qzsql::Falha{QZ_E_REGISTRO_INVALIDO, 6,
                       "Tabela " + t.nome + " cheia: todas as posições de 1 a 4294967295 estão ocupadas."};
}

int64_t CQZArmazemSQL::ProximoNumeroMes(const qzsql::Tabela& t, const REG_QZMA& ma) {
    const int64_t base = static_cast<int64_t>(REG_QZDMC(ma, 0).GetValor());
    m_banco.Motor().ReservaChaves(t.nome);
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

namespace {

// The compiled searches of the process, shared by its connections (each
// prepares them in its own slot).
std::mutex g_mutexBuscas;
std::unordered_map<qzsql::AssinaturaBusca, std::unique_ptr<qzsql::BuscaCompilada>, qzsql::HashAssinaturaBusca>&
    BuscasCompiladas() {
    static auto* buscas =
        new std::unordered_map<qzsql::AssinaturaBusca, std::unique_ptr<qzsql::BuscaCompilada>,
                               qzsql::HashAssinaturaBusca>;
    return *buscas;
}

// The shape of a call's conditions; false when there are too many to key
// a compiled search by (such a search is compiled for the call alone).
bool Assinatura(const qzsql::Tabela& t, bool classificacao, const CQZCondicoes& c, qzsql::AssinaturaBusca& a) {
    a.tabela = &t;
    a.classificacao = classificacao;
    const auto& lista = c.Lista();
    if (lista.size() > qzsql::AssinaturaBusca::kMaximoCondicoes) return false;
    a.n = static_cast<uint8_t>(lista.size());
    for (size_t i = 0; i < lista.size(); ++i) {
        const CQZCondicao& cond = lista[i];
        uintptr_t forma = static_cast<uintptr_t>(cond.op);
        if (cond.op == CQZCondicao::PREFIXO) {
            // An empty prefix selects everything; one of 0xFF bytes has no upper bound.
            const CString& prefixo = std::get<CString>(cond.valor);
            if (prefixo.IsEmpty())
                forma |= 0x10;
            else if (qzsql::LimitePrefixo(prefixo).empty())
                forma |= 0x20;
        }
        uintptr_t* p = &a.partes[qzsql::AssinaturaBusca::kPartes * i];
        p[0] = forma;
        p[1] = reinterpret_cast<uintptr_t>(cond.campo);
        p[2] = reinterpret_cast<uintptr_t>(cond.lista);
        p[3] = reinterpret_cast<uintptr_t>(cond.registro);
        p[4] = reinterpret_cast<uintptr_t>(cond.campoCondicao);
    }
    return true;
}

// Compiles the search of a shape of conditions: its SQL and where each of
// its values comes from.
std::unique_ptr<qzsql::BuscaCompilada> Compila(const qzsql::Tabela& t, bool classificacao, const CQZCondicoes& c) {
    auto b = std::make_unique<qzsql::BuscaCompilada>();
    auto coluna = [](const qzsql::Tabela& tab, const char* campo) {
        if (tab.IndiceColuna(campo) < 0)
            throw qzsql::Falha{QZ_E_REGISTRO_INVALIDO, 6,
                               std::string("Campo ") + campo + " desconhecido em " + tab.nome + "."};
        return "\"" + std::string(campo) + "\"";
    };
    std::string where, ordem;
    std::vector<qzsql::BuscaCompilada::Ligacao> ligacoes;
    const CQZCondicao* sub = nullptr;
    uint16_t indiceSub = 0;
    const auto& lista = c.Lista();
    for (uint16_t i = 0; i < lista.size(); ++i) {
        const CQZCondicao& cond = lista[i];
        std::string termo;
        switch (cond.op) {
            case CQZCondicao::IGUAL:
                termo = "t." + coluna(t, cond.campo) + " = ?";
                ligacoes.push_back({i, false});
                break;
            case CQZCondicao::PREFIXO: {
                const CString& prefixo = std::get<CString>(cond.valor);
                if (prefixo.IsEmpty()) continue;
                // A range on the column keeps the search on its index.
                termo = "t." + coluna(t, cond.campo) + " >= ?";
                ligacoes.push_back({i, false});
                if (!qzsql::LimitePrefixo(prefixo).empty()) {
                    termo += " AND t." + coluna(t, cond.campo) + " < ?";
                    ligacoes.push_back({i, true});
                }
                break;
            }
            case CQZCondicao::A_PARTIR_DE:
            case CQZCondicao::ANTES_DE:
                termo = "t." + coluna(t, cond.campo) + (cond.op == CQZCondicao::A_PARTIR_DE ? " >= ?" : " < ?");
                ligacoes.push_back({i, false});
                // In the range's order its index gives the rows already
                // sorted: no planner reads the whole table to save a sort.
                if (ordem.empty()) ordem = "t." + coluna(t, cond.campo) + ", ";
                break;
            case CQZCondicao::LISTA_CONTEM: {
                const qzsql::Tabela* filha = nullptr;
                for (const auto& f : t.filhas)
                    if (f.nome == t.nome + "__" + cond.lista) filha = &f;
                if (!filha)
                    throw qzsql::Falha{QZ_E_REGISTRO_INVALIDO, 6,
                                       std::string("Lista ") + cond.lista + " desconhecida em " + t.nome + "."};
                // Through the element's index, then the owners by key.
                termo = "t.chave IN (SELECT f.pai FROM \"" + filha->nome + "\" AS f WHERE f." +
                        coluna(*filha, cond.campo) + " = ?)";
                ligacoes.push_back({i, false});
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
                                       std::string("Lista ") + cond.lista + " desconhecida em " + cond.registro + "."};
                // The elements through the index of their condition, then this
                // table by key.
                termo = "t.chave IN (SELECT r." + coluna(*filha, cond.campo) + " FROM \"" + filha->nome +
                        "\" AS r WHERE r." + coluna(*filha, cond.campoCondicao) + " = ?)";
                ligacoes.push_back({i, false});
                break;
            }
            case CQZCondicao::SUBARVORE:
                if (!classificacao)
                    throw qzsql::Falha{QZ_E_REGISTRO_INVALIDO, 6, "Subárvore pedida fora de uma classificação."};
                [[fallthrough]];
            case CQZCondicao::DESCENDENTES:
                coluna(t, cond.campo);
                sub = &cond;
                indiceSub = i;
                continue;
        }
        where += (where.empty() ? " WHERE " : " AND ") + termo;
    }
    const std::string tab = "\"" + t.nome + "\"";
    if (!sub) {
        b->comando.sql = "SELECT t.chave FROM " + tab + " AS t" + where + " ORDER BY " + ordem + "t.chave";
        b->ligacoes = std::move(ligacoes);
        b->temCondicao = !where.empty();
        return b;
    }
    // The record itself first, then its descendants level by level. UNION
    // (not UNION ALL) ends the walk on a record that names itself or a
    // descendant as its parent. The other criteria select among the records
    // of the subtree; they do not stop the walk, so the leaves under a
    // sub-group that does not match are still found.
    // Descendants only: the walk starts at the root's children.
    const std::string raiz = sub->op == CQZCondicao::DESCENDENTES ? "\"" + std::string(sub->campo) + "\" = ?" : "chave = ?";
    b->comando.sql = "WITH RECURSIVE qz_sub(chave) AS (SELECT chave FROM " + tab +
                     " WHERE " + raiz + " UNION SELECT t.chave FROM " + tab + " AS t JOIN qz_sub ON t.\"" +
                     std::string(sub->campo) + "\" = qz_sub.chave) SELECT chave FROM qz_sub";
    if (!where.empty())
        b->comando.sql += " WHERE EXISTS (SELECT 1 FROM " + tab + " AS t WHERE t.chave = qz_sub.chave AND " +
                          where.substr(7) + ")";
    b->ligacoes.push_back({indiceSub, false});
    b->ligacoes.insert(b->ligacoes.end(), ligacoes.begin(), ligacoes.end());
    b->temCondicao = true;
    return b;
}

}  // namespace

namespace qzsql {
std::string LimitePrefixo(const CString& prefixo) {
    std::string utf8;
    QZCp1252ParaUtf8(prefixo.str(), utf8);
    return LimiteSuperiorPrefixo(utf8);
}

size_t HashAssinaturaBusca::operator()(const AssinaturaBusca& a) const noexcept {
    size_t h = std::hash<const void*>()(a.tabela) ^ (a.classificacao ? 0x9E3779B97F4A7C15ull : 0);
    for (size_t i = 0; i < AssinaturaBusca::kPartes * a.n; ++i) h = (h ^ a.partes[i]) * 0x100000001B3ull;
    return h;
}
}  // namespace qzsql

const qzsql::BuscaCompilada& CQZArmazemSQL::BuscaPara(const qzsql::Tabela& t, bool classificacao,
                                                      const CQZCondicoes& c, bool auditar) {
    qzsql::AssinaturaBusca a;
    if (!Assinatura(t, classificacao, c, a)) {
        // Too many conditions to key: compiled for this call, kept by text.
        static thread_local std::unique_ptr<qzsql::BuscaCompilada> avulsa;
        avulsa = Compila(t, classificacao, c);
        return *avulsa;
    }
    if (auto it = m_buscas.find(a); it != m_buscas.end()) return *it->second;
    const qzsql::BuscaCompilada* b;
    {
        std::lock_guard<std::mutex> trava(g_mutexBuscas);
        auto& registro = BuscasCompiladas();
        auto it = registro.find(a);
        if (it == registro.end()) it = registro.emplace(a, Compila(t, classificacao, c)).first;
        b = it->second.get();
    }
    // The first run of a search on each connection is shown to the auditor.
    if (!auditar) return *b;
    m_buscas.emplace(a, b);
    // A server's plan follows its tables' statistics: a small table is read
    // whole because that is cheaper. Its audit runs on realistic sizes
    // instead (the plan tests), not on every test's handful of rows.
    if (IQZAuditorPlanos* auditor = g_auditor.load();
        auditor && b->temCondicao && m_banco.Motor().Tipo() == qzsql::EMotor::SQLITE)
        auditor->Examina(t.nome, b->comando.sql, Explica(b->comando.sql));
    return *b;
}

std::vector<std::string> CQZArmazemSQL::Explica(const std::string& sql) {
    return m_banco.Motor().Plano(sql);
}

std::vector<std::string> CQZArmazemSQL::VarredurasCompletas(const std::vector<std::string>& plano) {
    // "SCAN t", "SCAN t USING COVERING INDEX ..." read every row; the walk
    // over the subtree queue (qz_sub) and constant rows do not.
    std::vector<std::string> varreduras;
    for (const auto& linha : plano) {
        // PostgreSQL's plans: a "Seq Scan on" node reads every row.
        if (linha.find("Seq Scan on ") != std::string::npos) {
            varreduras.push_back(linha);
            continue;
        }
        if (linha.rfind("SCAN ", 0) != 0) continue;
        if (linha.rfind("SCAN qz_sub", 0) == 0 || linha.rfind("SCAN CONSTANT ROW", 0) == 0) continue;
        varreduras.push_back(linha);
    }
    return varreduras;
}

// ---- contract operations ----------------------------------------------------

#define QZ_OP_LE(Nome, Registro, Chave, Flags, SeAusente)                                        \
    long CQZArmazemSQL::Le##Nome(Chave chave, Registro* pDados, Flags flags) {                    \
        return Despacha("Le" #Nome,                                                               \
                        [&] { return LeGenerico(chave, pDados, SeAusente, static_cast<uint64_t>(flags)); }); \
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
            ExecutaBusca(qzsql::EsquemaDe<Filtro::TipoRegistro>(), filtro, false,                \
                         [&](int64_t chave) { AnexaChave(lista, chave); });                       \
            return 0;                                                                             \
        });                                                                                       \
    }
#define QZ_OP_CLASSIFICACAO(Nome, Filtro)                                                                   \
    long CQZArmazemSQL::BuscaClassificacao##Nome(const Filtro& filtro, CQZListaClassificacao* pLista) {     \
        if (pLista) pLista->clear();                                                                        \
        return Despacha("BuscaClassificacao" #Nome, [&]() -> long {                                         \
            GarantaTabela<Filtro::TipoRegistro>();                                                          \
            ExecutaBusca(qzsql::EsquemaDe<Filtro::TipoRegistro>(), filtro, true, [&](int64_t chave) {      \
                if (pLista) pLista->push_back(CQZDadosGT_Classificacao(static_cast<uint32_t>(chave)));      \
            });                                                                                             \
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
#define QZ_OP_ITEM_LISTA(Nome, Registro, Chave, Lista, Elemento, Item, Campo)                            \
    long CQZArmazemSQL::Buscar##Nome(Chave chave, Item item, Elemento* pDados) {                          \
        return Despacha("Buscar" #Nome, [&]() -> long {                                                 \
            Registro dono;                                                                              \
            if (long hr = LeGenerico(chave, &dono, false)) return hr;                                  \
            for (const Elemento& e : dono.GetLista##Lista())                                            \
                if (e.Get##Campo() == item) {                                                           \
                    *pDados = e;                                                                        \
                    return 0;                                                                           \
                }                                                                                       \
            throw qzsql::Falha{QZ_E_REGISTRO_NAO_ENCONTRADO, 2,                                         \
                               std::string(Registro::kNomeTipo) + " na chave " +                         \
                                   std::to_string(ChaveDireta(chave)) + " não tem " #Lista " com " #Campo \
                                   " " + std::to_string(item) + "."};                                    \
        });                                                                                             \
    }
// One read transaction for the batch (or the caller's open one).
#define QZ_OP_LE_VARIOS(Nome, Registro, Chave, Flags)                                                        \
    long CQZArmazemSQL::Le##Nome(int64_t quantidade, const Chave* pChaves, CQZVector<Registro>& registros,  \
                                 Flags flags) {                                                             \
        registros.clear();                                                                                  \
        return Despacha("Le" #Nome, [&]() -> long {                                                         \
            return m_banco.EmTransacao(qzsql::EModoTransacao::LEITURA, [&]() -> long {                     \
                registros.resize(static_cast<size_t>(std::max<int64_t>(quantidade, 0)));                    \
                for (size_t i = 0; i < registros.size(); ++i)                                               \
                    if (long hr = LeGenerico(pChaves[i], &registros[i], false, static_cast<uint64_t>(flags)))  \
                        return hr;                                                                          \
                return 0;                                                                                   \
            });                                                                                             \
        });                                                                                                 \
    }
#include "platform/acesso/QZMacrosOperacoes.h"
#include "platform/acesso/Manutencao.def"
#include "platform/acesso/ManutencaoBuffer.def"
#include "platform/acesso/Gestavo.def"
#include "platform/acesso/GestavoBuffer.def"
#include "platform/acesso/QZFimMacrosOperacoes.h"
