// The data services on SQL: one implementation of every access contract,
// generated from the record declarations. SQLite in memory (":memory:") is
// the store of the tests; a SQLite file is the embedded default.
//
// Shape of the database: a table per record type named after the class,
// its key in column "chave" (the position, the packed movement key, or 1 for
// one-record tables) and a column per scalar field (a composite value such as
// a product key takes one column per part). Each list member is a child
// table "<Classe>__<Lista>" (chave, pai -> owner's chave, ordem, fields),
// deleted with its owner. Searched fields are indexed. Text is stored as
// UTF-8 and handed to the rules as Windows-1252.
//
// A file is opened in WAL mode with a busy timeout. Its layout carries a
// version (table QZ_Esquema, one row per applied migration): a file of an
// older version is upgraded when opened (migrations first, then the tables,
// columns and indexes the declarations add), a file of a newer version is
// refused. Every write runs in one BEGIN IMMEDIATE transaction, so a failure
// or a killed process leaves nothing half-written.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/QZAcesso.h"
#include "platform/QZCodigosResultado.h"
#include "platform/QZRelogio.h"

// Sees every operation of a store before it runs; a non-zero code fails the
// operation with that code and whatever the hook left in the error record.
class IQZGanchoAcesso {
public:
    virtual ~IQZGanchoAcesso() = default;
    virtual long AntesDaOperacao(const char* operacao, CQZDadosGT_Erro& erro) = 0;
};

// Sees the query plan (the detail rows of EXPLAIN QUERY PLAN) of every search
// with at least one condition, once per statement and connection. Tests
// install one to prove that no search the rules make scans a whole table.
class IQZAuditorPlanos {
public:
    virtual ~IQZAuditorPlanos() = default;
    virtual void Examina(const std::string& tabela, const std::string& sql, const std::vector<std::string>& plano) = 0;
};

enum QZModoAbertura {
    QZ_ABRE_OU_CRIA,    // a missing file is created
    QZ_ABRE_EXISTENTE,  // a missing file, or a database that is not a store, is refused
};

namespace qzsql {

struct Coluna {
    std::string nome;
    bool texto = false;
    bool indexada = false;
    bool carimbo = false;
};

// Table layout of one record type (or of one list of it).
struct Tabela {
    std::string nome;
    std::vector<Coluna> colunas;
    int carimbo = -1;             // index of the stamp column, -1 when none
    std::vector<Tabela> filhas;   // list members, in declaration order
    std::string sqlSeleciona;     // by chave
    std::string sqlInsere;        // chave first
    std::string sqlAtualiza;      // values, then chave
    std::string sqlFilhas;        // rows of a child table by pai, in order
    std::string sqlInsereFilha;   // pai, ordem, values
    int IndiceColuna(const std::string& campo) const;
};

// A search as the store runs it.
struct Consulta {
    std::string sql;
    std::vector<CQZValor> valores;
    bool temCondicao = false;  // false: the filter lists the whole table
};

// Internal failure, turned into the store's error record at the dispatch point.
struct Falha {
    long hr;
    long mensagem;
    std::string texto;
};

void CompletaSql(Tabela& t);

// ---- visitors over declared records ----------------------------------------

template <class R>
void ColetaEsquema(Tabela& t);

struct VisitanteEsquema {
    Tabela& t;
    template <class T>
    void Campo(const char* nome, const T&, unsigned opcoes) {
        if (opcoes & QZ_CHAVE) return;
        for (int i = 0; i < QZCodec<T>::N; ++i) {
            if (opcoes & QZ_CARIMBO) t.carimbo = static_cast<int>(t.colunas.size());
            t.colunas.push_back({std::string(nome) + QZCodec<T>::kSufixos[static_cast<size_t>(i)],
                                 std::is_same_v<T, CString>, (opcoes & QZ_IDX) != 0, (opcoes & QZ_CARIMBO) != 0});
        }
    }
    template <class E>
    void Lista(const char* nome, const std::vector<E>&) {
        Tabela filha;
        filha.nome = t.nome + "__" + nome;
        ColetaEsquema<E>(filha);
        t.filhas.push_back(std::move(filha));
    }
};

template <class R>
void ColetaEsquema(Tabela& t) {
    R modelo;
    VisitanteEsquema v{t};
    modelo.VisitaCampos(v);
    CompletaSql(t);
}

template <class R>
const Tabela& EsquemaDe() {
    static const Tabela tabela = [] {
        Tabela t;
        t.nome = R::kNomeTipo;
        ColetaEsquema<R>(t);
        return t;
    }();
    return tabela;
}

struct VisitanteExtrai {
    std::vector<CQZValor>& valores;
    template <class T>
    void Campo(const char*, const T& v, unsigned opcoes) {
        if (opcoes & QZ_CHAVE) return;
        CQZValor partes[QZCodec<T>::N];
        QZCodec<T>::Para(v, partes);
        for (auto& p : partes) valores.push_back(std::move(p));
    }
    template <class E>
    void Lista(const char*, const std::vector<E>&) {}
};

struct VisitantePreenche {
    const std::vector<CQZValor>& valores;
    size_t i = 0;
    template <class T>
    void Campo(const char*, T& v, unsigned opcoes) {
        if (opcoes & QZ_CHAVE) return;
        QZCodec<T>::De(v, &valores[i]);
        i += QZCodec<T>::N;
    }
    template <class E>
    void Lista(const char*, std::vector<E>&) {}
};

// The movement key field of a record keyed by REG_QZDMC.
struct VisitanteChaveDmc {
    REG_QZDMC* pChave = nullptr;
    template <class T>
    void Campo(const char*, T& v, unsigned opcoes) {
        if constexpr (std::is_same_v<T, REG_QZDMC>)
            if (opcoes & QZ_CHAVE) pChave = &v;
    }
    template <class E>
    void Lista(const char*, std::vector<E>&) {}
};

}  // namespace qzsql

class CQZArmazemSQL : public CQZAcessoManutencaoBuffer, public CQZAcessoGestavoBuffer {
public:
    // Version of the layout this program writes (QZ_Esquema).
    static constexpr int kVersaoEsquema = 1;
    static constexpr int kEsperaPadraoMs = 5000;
    // A transaction that writes this many rows refreshes the statistics the
    // query planner chooses indexes by.
    static constexpr int64_t kLinhasParaEstatisticas = 1000;

    // ":memory:" opens a private in-memory store; any other path a file.
    // Check EstaAberto / GetErro afterwards.
    explicit CQZArmazemSQL(const std::string& caminho, QZModoAbertura modo = QZ_ABRE_OU_CRIA,
                           int esperaMs = kEsperaPadraoMs);
    ~CQZArmazemSQL() override;
    CQZArmazemSQL(const CQZArmazemSQL&) = delete;
    CQZArmazemSQL& operator=(const CQZArmazemSQL&) = delete;

    bool EstaAberto() const { return m_db != nullptr; }
    const CQZDadosGT_Erro& GetErro() const override { return m_erro; }
    void DefineGancho(IQZGanchoAcesso* gancho) { m_pGancho = gancho; }
    void DefineRelogio(const IQZRelogio* relogio) { m_pRelogio = relogio ? relogio : &CQZRelogioSistema::Instancia(); }
    // How long a write waits for another connection's write to end.
    void DefineTempoEspera(int ms);
    const std::string& GetCaminho() const { return m_sCaminho; }
    // The layout version recorded in the file.
    long LeVersaoEsquema(int& versao);

    static void DefineAuditorPlanos(IQZAuditorPlanos* auditor);
    // The rows of a plan that read a whole table or index.
    static std::vector<std::string> VarredurasCompletas(const std::vector<std::string>& plano);

    // ---- contract operations (listed in platform/acesso/*.def) ----
#define QZ_OP_LE(Nome, Registro, Chave, Flags, SeAusente) long Le##Nome(Chave chave, Registro* pDados, Flags flags = 0) override;
#define QZ_OP_LE_UNICO(Nome, Registro, Flags) long Le##Nome(Registro* pDados, Flags flags = 0) override;
#define QZ_OP_BUSCA(Nome, Filtro, Lista) long BuscaPonteiros##Nome(const Filtro& filtro, Lista& lista) override;
#define QZ_OP_CLASSIFICACAO(Nome, Filtro) \
    long BuscaClassificacao##Nome(const Filtro& filtro, CQZListaClassificacao* pLista) override;
#define QZ_OP_LE_BUFFER(Nome, Registro, Chave, SeAusente) \
    long LeBuffer##Nome(Chave chave, Registro* pDados, uint64_t flags = 0) override;
#define QZ_OP_LE_BUFFER_UNICO(Nome, Registro) long LeBuffer##Nome(Registro* pDados, uint64_t flags = 0) override;
#include "platform/acesso/QZMacrosOperacoes.h"
#include "platform/acesso/Manutencao.def"
#include "platform/acesso/ManutencaoBuffer.def"
#include "platform/acesso/Gestavo.def"
#include "platform/acesso/GestavoBuffer.def"
#include "platform/acesso/QZFimMacrosOperacoes.h"

    // ---- writes, for hosts and tests ----
    // Insert: a record whose key is empty gets a new one (the next position,
    // or the next number of its month); a record with a key is stored there.
    // The stamp field is set to now. The record comes back with key and stamp.
    template <class R>
    long Insere(R& reg);
    // Update of a stored record, accepted only while the stored stamp equals
    // the record's (else QZ_E_REGISTRO_ALTERADO). The new stamp is now, or one
    // second past the stored one when now is not later.
    template <class R>
    long Atualiza(R& reg);
    // Insert when the key is empty (or a one-record table is still empty),
    // update otherwise.
    template <class R>
    long Grava(R& reg);
    // Deletion of a stored record, accepted only while the stored stamp
    // equals the record's (else QZ_E_REGISTRO_ALTERADO).
    template <class R>
    long Remove(const R& reg);
    // Insert exactly as given (imports): the record's key and stamp are
    // kept; an empty key gets a new one and an empty stamp is set to now. A
    // key already taken is refused.
    template <class R>
    long Restaura(R& reg);
    // Read by key outside the contracts (hosts).
    template <class R>
    long LeRegistro(int64_t chave, R& reg);
    template <class R>
    long ListaChaves(std::vector<int64_t>& chaves);
    // The searches behind BuscaPonteiros* and BuscaClassificacao*, for any filter.
    template <class F>
    long BuscaChaves(const F& filtro, std::vector<int64_t>& chaves);
    template <class F>
    long BuscaSubarvore(const F& filtro, std::vector<int64_t>& chaves);
    // The query plan (EXPLAIN QUERY PLAN detail rows) of the search a filter
    // makes, plain or of a classification (tree) view.
    template <class F>
    long PlanoBusca(const F& filtro, bool classificacao, std::vector<std::string>& plano);

    // Runs fn inside one BEGIN IMMEDIATE transaction.
    template <class F>
    long EmTransacao(const char* operacao, F&& fn);

private:
    template <class F>
    long Despacha(const char* operacao, F&& fn);

    // SQL plumbing (QZArmazemSQL.cpp).
    sqlite3_stmt* Prepara(const std::string& sql);
    void Liga(sqlite3_stmt* st, int indice, const CQZValor& valor);
    CQZValor ColunaValor(sqlite3_stmt* st, int indice, bool texto);
    bool Passo(sqlite3_stmt* st);  // true on a row, false when done; throws on error
    void Executa(const std::string& sql);
    [[noreturn]] void FalhaSql(const char* contexto);
    void Inicia(QZModoAbertura modo);
    int VersaoGravada();  // -1 when the file has no version table
    void VerificaVersaoConhecida(int versao);
    // DDL that brings a table (and its list tables) to its declaration.
    void PlanoTabela(const qzsql::Tabela& t, const std::string& tabelaPai, std::vector<std::string>& ddl);
    void ReconciliaTabela(const qzsql::Tabela& t);
    void LimpaCache() { m_cache.clear(); }
    void AtualizaEstatisticas();
    void VerificaVersaoDados();
    int64_t ProximaChave(const qzsql::Tabela& t);
    int64_t ProximoNumeroMes(const qzsql::Tabela& t, const REG_QZMA& ma);
    std::string MontaWhere(const qzsql::Tabela& t, const CQZCondicoes& c, std::vector<CQZValor>& valores,
                           const CQZCondicao** pSubarvore);
    qzsql::Consulta MontaBusca(const qzsql::Tabela& t, const TQZBaseFiltro& filtro);
    qzsql::Consulta MontaClassificacao(const qzsql::Tabela& t, const TQZBaseFiltro& filtro);
    std::vector<int64_t> ExecutaConsulta(const qzsql::Tabela& t, const qzsql::Consulta& c);
    std::vector<int64_t> ExecutaBusca(const qzsql::Tabela& t, const TQZBaseFiltro& filtro) {
        return ExecutaConsulta(t, MontaBusca(t, filtro));
    }
    std::vector<int64_t> ExecutaClassificacao(const qzsql::Tabela& t, const TQZBaseFiltro& filtro) {
        return ExecutaConsulta(t, MontaClassificacao(t, filtro));
    }
    std::vector<std::string> Explica(const std::string& sql);
    REG_QZDMAHMSUTC NovoCarimbo(const REG_QZDMAHMSUTC* anterior) const;

    template <class R>
    void GarantaTabela();
    template <class R>
    bool LeLinha(const qzsql::Tabela& t, int64_t chave, R& reg);
    template <class E>
    void LeFilhas(const qzsql::Tabela& t, int64_t pai, std::vector<E>& lista);
    template <class R>
    void GravaFilhas(const qzsql::Tabela& t, int64_t chave, const R& reg);
    // Insert behind Insere and Restaura.
    template <class R>
    long InsereLinha(R& reg, bool manterCarimbo);
    // The stored stamp of a row, after checking it against the record's;
    // absent for tables without a stamp.
    template <class R>
    std::optional<CQZValor> ConfereCarimbo(const qzsql::Tabela& t, int64_t chave, const R& reg);
    template <class R>
    static int64_t ChaveDe(const R& reg);
    template <class R>
    static void DefineChave(R& reg, int64_t chave);
    template <class R, class K>
    long LeGenerico(const K& chave, R* pDados, bool vazioSeAusente);
    template <class R, class K>
    long LeBufferGenerico(const K& chave, R* pDados, bool vazioSeAusente);
    template <class K>
    bool ChaveDireta(const K& chave, int64_t& valor) const;
    template <class L>
    static void AnexaChave(L& lista, int64_t chave);

    struct VisitanteLeListas;
    struct VisitanteGravaListas;

    sqlite3* m_db = nullptr;
    std::string m_sCaminho;
    int m_esperaMs = kEsperaPadraoMs;
    std::set<std::string> m_planosExaminados;
    CQZDadosGT_Erro m_erro;
    IQZGanchoAcesso* m_pGancho = nullptr;
    const IQZRelogio* m_pRelogio = &CQZRelogioSistema::Instancia();
    std::unordered_map<std::string, sqlite3_stmt*> m_stmts;
    std::set<std::string> m_tabelasCriadas;
    std::unordered_map<std::string, std::shared_ptr<TQZBaseParaDados>> m_cache;
    int64_t m_versaoDados = -1;
    int m_nivelTransacao = 0;
};

#include "store/QZArmazemSQL_impl.h"
