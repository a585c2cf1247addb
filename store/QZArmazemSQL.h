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
//
// One object is one connection: the data services a routine object reads
// through (IQZConexaoEmpresa), used by one thread at a time. Its statements,
// its cache of buffered reads and its error record are its own. The cache
// drops what a write of this connection changes at once, also inside an
// open transaction, and notices the writes of other connections once per
// transaction (SQLite's data_version).
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/QZAcesso.h"
#include "platform/QZBaseParaRotinas.h"
#include "platform/QZCodigosResultado.h"
#include "platform/QZPX_Disciplina.h"
#include "platform/QZRelogio.h"
#include "store/QZBanco.h"

class CQZConexaoInfoExtrasSQL;
class IQZTransporteEmail;

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
    const char* alvo = nullptr;  // a pointer's target record type (QZ_REF)
};

// Table layout of one record type (or of one list of it).
struct Tabela {
    std::string nome;
    uint32_t id = NovoSlot();     // the table's place in a connection's table of checked tables
    std::vector<Coluna> colunas;
    int carimbo = -1;             // index of the stamp column, -1 when none
    std::vector<Tabela> filhas;   // list members, in declaration order
    CQZComandoFixo seleciona;     // the columns, by chave
    CQZComandoFixo existe;        // whether a row has that chave
    CQZComandoFixo insere;        // chave first
    CQZComandoFixo atualiza;      // values, then chave (then the stamp read, when the table has one)
    CQZComandoFixo remove;        // chave (then the stamp read, when the table has one)
    CQZComandoFixo carimboGravado;  // the stamp column by chave
    CQZComandoFixo filhasDe;      // rows of a child table by pai, in order: chave, then the columns
    CQZComandoFixo insereFilha;   // pai, ordem, values
    CQZComandoFixo apagaFilhas;   // rows of a child table by pai
    CQZComandoFixo chaves;        // every chave, in order
    int IndiceColuna(std::string_view campo) const;
};

// A search compiled once for a shape of conditions (which criteria, in which
// order, on which table and view) and run with each call's values.
struct BuscaCompilada {
    // Where each placeholder's value comes from: a condition's value, or
    // the upper bound of a prefix condition's range.
    struct Ligacao {
        uint16_t condicao;
        bool limite;
    };
    CQZComandoFixo comando;
    std::vector<Ligacao> ligacoes;
    bool temCondicao = false;  // false: the filter lists the whole table
};

// A prefix condition's range: its upper bound, in UTF-8 (empty when the
// prefix has none: only 0xFF bytes).
std::string LimitePrefixo(const CString& prefixo);

// What makes two calls the same search.
struct AssinaturaBusca {
    static constexpr size_t kMaximoCondicoes = 12;
    static constexpr size_t kPartes = 5;  // per condition: its form and the four names it uses
    const Tabela* tabela = nullptr;
    bool classificacao = false;
    uint8_t n = 0;
    std::array<uintptr_t, kPartes * kMaximoCondicoes> partes{};
    friend bool operator==(const AssinaturaBusca&, const AssinaturaBusca&) = default;
};
struct HashAssinaturaBusca {
    size_t operator()(const AssinaturaBusca& a) const noexcept;
};

void CompletaSql(Tabela& t);

// ---- visitors over declared records ----------------------------------------

template <class R>
void ColetaEsquema(Tabela& t);

struct VisitanteEsquema {
    Tabela& t;
    template <class T>
    void Campo(const char* nome, const T&, QZOpcoes opcoes) {
        if (opcoes & QZ_CHAVE) return;
        // A pointer is one integer column, the target's key.
        if (opcoes.alvo && (QZCodec<T>::N != 1 || std::is_same_v<T, CString>))
            throw std::logic_error(std::string("o ponteiro ") + nome + " não é uma coluna inteira");
        for (int i = 0; i < QZCodec<T>::N; ++i) {
            if (opcoes & QZ_CARIMBO) t.carimbo = static_cast<int>(t.colunas.size());
            t.colunas.push_back({std::string(nome) + QZCodec<T>::kSufixos[static_cast<size_t>(i)],
                                 std::is_same_v<T, CString>, (opcoes & QZ_IDX) != 0, (opcoes & QZ_CARIMBO) != 0,
                                 opcoes.alvo});
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

}  // namespace qzsql

class CQZArmazemSQL : public CQZAcessoManutencaoBuffer,
                      public CQZAcessoGestavoBuffer,
                      public IQZConexaoEmpresa,
                      private qzsql::IObservadorTransacao {
public:
    // Version of the layout this program writes (QZ_Esquema).
    static constexpr int64_t kVersaoEsquema = 1;
    static constexpr int kEsperaPadraoMs = 5000;
    // A transaction that writes this many rows refreshes the statistics the
    // query planner chooses indexes by.
    static constexpr int64_t kLinhasParaEstatisticas = 1000;
    // The highest position of a record: positions are unsigned 32-bit.
    static constexpr int64_t kPosicaoMaxima = 0xFFFFFFFFll;

    // ":memory:" opens a private in-memory store; a "file:" URI is taken as
    // SQLite reads it (the factory's shared in-memory stores); any other
    // path is a file. Check EstaAberto / GetErro afterwards.
    explicit CQZArmazemSQL(const std::string& caminho, QZModoAbertura modo = QZ_ABRE_OU_CRIA,
                           int esperaMs = kEsperaPadraoMs);
    ~CQZArmazemSQL() override;
    CQZArmazemSQL(const CQZArmazemSQL&) = delete;
    CQZArmazemSQL& operator=(const CQZArmazemSQL&) = delete;

    bool EstaAberto() const { return m_banco.EstaAberto(); }
    const CQZDadosGT_Erro& GetErro() const override { return m_erro; }
    // The hook of every operation, the extra information's included.
    void DefineGancho(IQZGanchoAcesso* gancho);
    void DefineRelogio(const IQZRelogio* relogio) { m_pRelogio = relogio ? relogio : &CQZRelogioSistema::Instancia(); }
    // How long a write waits for another connection's write to end.
    void DefineTempoEspera(int ms) { m_banco.DefineEspera(ms); }
    // Sees every statement this connection runs (benchmarks).
    void DefineObservadorComandos(qzsql::IObservadorComandos* observador) {
        m_banco.DefineObservadorComandos(observador);
    }
    const std::string& GetCaminho() const { return m_sCaminho; }
    bool EmTransacaoAberta() const { return m_banco.NivelTransacao() > 0; }
    // The layout version recorded in the file.
    [[nodiscard]] long LeVersaoEsquema(int64_t& versao);

    // ---- the connection of a routine object ----
    CQZAcessoManutencaoBuffer& AcessoManutencao() override { return *this; }
    CQZAcessoGestavoBuffer& AcessoGestavo() override { return *this; }
    // The extra information, on this connection (its tables in the same database).
    IQZArmazemInfoExtras* InfoExtras() override;
    // The discipline tree, read through this connection's own reads.
    IQZPX_Disciplina* Disciplina() override { return &m_disciplina; }
    bool IniciaLeitura() override;
    void EncerraLeitura() override { m_banco.EncerraTransacao(); }
    [[nodiscard]] long IniciaEscrita(bool& iniciou) override;
    [[nodiscard]] long EncerraEscrita(bool confirma) override;

    static void DefineAuditorPlanos(IQZAuditorPlanos* auditor);
    // The rows of a plan that read a whole table or index.
    static std::vector<std::string> VarredurasCompletas(const std::vector<std::string>& plano);

    // ---- contract operations (listed in platform/acesso/*.def) ----
#define QZ_OP_LE(Nome, Registro, Chave, Flags, SeAusente) \
    [[nodiscard]] long Le##Nome(Chave chave, Registro* pDados, Flags flags = 0) override;
#define QZ_OP_LE_UNICO(Nome, Registro, Flags) [[nodiscard]] long Le##Nome(Registro* pDados, Flags flags = 0) override;
#define QZ_OP_BUSCA(Nome, Filtro, Lista) \
    [[nodiscard]] long BuscaPonteiros##Nome(const Filtro& filtro, Lista& lista) override;
#define QZ_OP_CLASSIFICACAO(Nome, Filtro) \
    [[nodiscard]] long BuscaClassificacao##Nome(const Filtro& filtro, CQZListaClassificacao* pLista) override;
#define QZ_OP_LE_BUFFER(Nome, Registro, Chave, SeAusente) \
    [[nodiscard]] long LeBuffer##Nome(Chave chave, Registro* pDados, uint64_t flags = 0) override;
#define QZ_OP_LE_BUFFER_UNICO(Nome, Registro) \
    [[nodiscard]] long LeBuffer##Nome(Registro* pDados, uint64_t flags = 0) override;
#define QZ_OP_ITEM_LISTA(Nome, Registro, Chave, Lista, Elemento, Item, Campo) \
    [[nodiscard]] long Buscar##Nome(Chave chave, Item item, Elemento* pDados) override;
#define QZ_OP_LE_VARIOS(Nome, Registro, Chave, Flags)                                                     \
    [[nodiscard]] long Le##Nome(int64_t quantidade, const Chave* pChaves, CQZVector<Registro>& registros, \
                                Flags flags = 0) override;
#include "platform/acesso/QZMacrosOperacoes.h"
#include "platform/acesso/Manutencao.def"
#include "platform/acesso/ManutencaoBuffer.def"
#include "platform/acesso/Gestavo.def"
#include "platform/acesso/GestavoBuffer.def"
#include "platform/acesso/QZFimMacrosOperacoes.h"

    // ---- the alert routine's writes (QZArmazemSQLEmail.cpp) ----
    [[nodiscard]] long AtualizaDataHoraEnvioAlerta(uint32_t ponteiroPlano, uint32_t indiceAlerta) override;

    // ---- e-mail of the company's account (QZArmazemSQLEmail.cpp) ----
    [[nodiscard]] long GetEmailContaConfigurada(uint64_t* pIdConta, QZModulo modulo) override;
    [[nodiscard]] long EnviaEmail(const CQZDadosGT_Email& email, CQZDadosGT_Erro* pDetalhes, QZModulo modulo,
                                  uint64_t idConta) override;
    [[nodiscard]] long EnviaEmails(const CQZVector<CQZDadosGT_Email>& emails, int64_t* pTratadas,
                                   CQZDadosGT_Erro* pDetalhes, QZModulo modulo, uint64_t idConta) override;
    // Sends through this transport instead of the one the account names
    // (null: the account's).
    void DefineTransporteEmail(IQZTransporteEmail* transporte) { m_pTransporteEmail = transporte; }
    // The server's reply to the last message this connection sent or had refused.
    const std::string& GetUltimaRespostaEmail() const { return m_sUltimaRespostaEmail; }

    // ---- writes, for hosts and tests ----
    // Insert: a record whose key is empty gets a new one (the lowest free
    // position after the highest, else the lowest free one; or the next
    // number of its month); a record with a key is stored there. The stamp
    // field is set to now. The record comes back with key and stamp.
    template <class R>
    [[nodiscard]] long Insere(R& reg);
    // Update of a stored record, accepted only while the stored stamp equals
    // the record's (else QZ_E_REGISTRO_ALTERADO). The new stamp is now, or one
    // second past the stored one when now is not later.
    template <class R>
    [[nodiscard]] long Atualiza(R& reg);
    // Insert when the key is empty (or a one-record table is still empty),
    // update otherwise.
    template <class R>
    [[nodiscard]] long Grava(R& reg);
    // Deletion of a stored record, accepted only while the stored stamp
    // equals the record's (else QZ_E_REGISTRO_ALTERADO).
    template <class R>
    [[nodiscard]] long Remove(const R& reg);
    // Insert exactly as given (imports): the record's key and stamp are
    // kept; an empty key gets a new one and an empty stamp is set to now. A
    // key already taken is refused.
    template <class R>
    [[nodiscard]] long Restaura(R& reg);
    // Read by key outside the contracts (hosts).
    template <class R>
    [[nodiscard]] long LeRegistro(int64_t chave, R& reg);
    template <class R>
    [[nodiscard]] long ListaChaves(std::vector<int64_t>& chaves);
    // The searches behind BuscaPonteiros* and BuscaClassificacao*, for any filter.
    template <class F>
    [[nodiscard]] long BuscaChaves(const F& filtro, std::vector<int64_t>& chaves);
    template <class F>
    [[nodiscard]] long BuscaSubarvore(const F& filtro, std::vector<int64_t>& chaves);
    // The query plan (EXPLAIN QUERY PLAN detail rows) of the search a filter
    // makes, plain or of a classification (tree) view.
    template <class F>
    [[nodiscard]] long PlanoBusca(const F& filtro, bool classificacao, std::vector<std::string>& plano);

    // A pointer (a field declared with QZ_REF) that names no stored record.
    struct CQZReferenciaPendente {
        std::string tipo;   // the record type that holds it
        int64_t chave = 0;  // that record's key
        struct Item {
            std::string lista;
            int64_t numero;  // the entry, from 1
        };
        std::vector<Item> itens;  // the list entries that hold it, outermost first; empty in the record itself
        std::string campo;
        std::string alvo;  // the record type it should name
        int64_t valor = 0;
    };
    // The first pointer of any stored record, its lists' included, that
    // names no record of its target type (0 names none and is never one).
    // One query per table and pointer column, each a probe of the target's
    // key per row: nothing is read record by record.
    [[nodiscard]] long BuscaReferenciaPendente(std::optional<CQZReferenciaPendente>& achado);
    // Whether a record of the type named `tipo` (its kNomeTipo) is stored at `chave`.
    [[nodiscard]] long ExisteRegistro(std::string_view tipo, int64_t chave, bool& existe);

    // Runs fn (returning a long status) inside one BEGIN IMMEDIATE
    // transaction, committed when fn returns 0; inside an open transaction
    // it joins it.
    template <class F>
    [[nodiscard]] long EmTransacao(const char* operacao, F&& fn);
    // The same in a read transaction (BEGIN): one snapshot for its reads,
    // without waiting for writers.
    template <class F>
    [[nodiscard]] long EmLeitura(const char* operacao, F&& fn);

private:
    template <class F>
    long Despacha(const char* operacao, F&& fn);

    // The sending behind EnviaEmail and EnviaEmails (QZArmazemSQLEmail.cpp).
    long EnviaLote(const CQZDadosGT_Email* emails, size_t quantidade, int64_t* pTratadas, uint64_t idConta);

    // SQL plumbing (QZArmazemSQL.cpp).
    // Binds a value; text in Windows-1252 that is plain ASCII is bound as it
    // is (the value outlives the statement's use), the rest converted.
    void Liga(qzsql::CQZComando& c, int indice, const CQZValor& valor);
    // A text column into a Windows-1252 string, converting only non-ASCII text.
    void LeTexto(const qzsql::CQZComando& c, int indice, CString& texto);
    void Inicia(QZModoAbertura modo);
    int64_t VersaoGravada();  // -1 when the file has no version table
    void VerificaVersaoConhecida(int64_t versao);
    // DDL that brings a table (and its list tables) to its declaration.
    void PlanoTabela(const qzsql::Tabela& t, const std::string& tabelaPai, std::vector<std::string>& ddl);
    void ReconciliaTabela(const qzsql::Tabela& t);
    void AtualizaEstatisticas();
    // Another connection's commit changes data_version: the cache is stale.
    void VerificaVersaoDados();
    int64_t ProximaChave(const qzsql::Tabela& t);
    int64_t ProximoNumeroMes(const qzsql::Tabela& t, const REG_QZMA& ma);
    // The compiled search for the shape of `c` (compiled on first use); a
    // search about to run (`auditar`) is shown to the plan auditor the first
    // time this connection runs it.
    const qzsql::BuscaCompilada& BuscaPara(const qzsql::Tabela& t, bool classificacao, const CQZCondicoes& c,
                                           bool auditar);
    // Runs a search (a plain one, or of a classification view), handing each
    // key found to `anexa`.
    template <class Anexa>
    void ExecutaBusca(const qzsql::Tabela& t, const TQZBaseFiltro& filtro, bool classificacao, Anexa&& anexa);
    std::vector<std::string> Explica(const std::string& sql);
    REG_QZDMAHMSUTC NovoCarimbo(const REG_QZDMAHMSUTC* anterior) const;

    // The buffered reads of this connection, by table and key.
    struct ChaveCache {
        const qzsql::Tabela* tabela;
        int64_t chave;
        friend bool operator==(const ChaveCache&, const ChaveCache&) = default;
    };
    struct HashChaveCache {
        size_t operator()(const ChaveCache& c) const noexcept {
            return std::hash<const void*>()(c.tabela) ^ (std::hash<int64_t>()(c.chave) * 0x9E3779B97F4A7C15ull);
        }
    };
    // A write of this connection changed the record at (t, chave).
    void Alterou(const qzsql::Tabela& t, int64_t chave) { m_cache.erase(ChaveCache{&t, chave}); }

    // Transactions of the connection.
    void AoIniciar() override;
    void AoConfirmar(int64_t linhas) override;
    void AoDesfazer() override;

    template <class R>
    void GarantaTabela();
    // A row and its lists; `flags` choose the lists (QZLeituraListas<R>).
    template <class R>
    bool LeLinha(const qzsql::Tabela& t, int64_t chave, R& reg, uint64_t flags = QZ_LER_TUDO);
    template <class R>
    bool Existe(const qzsql::Tabela& t, int64_t chave);
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
    std::optional<int64_t> ConfereCarimbo(const qzsql::Tabela& t, int64_t chave, const R& reg);
    // The row at `chave` rewritten with `valores` (its columns, in order) or
    // deleted, where its stored stamp is `carimbo` (none: a table without
    // one); the rows changed, 0 when the row or its stamp differ.
    int64_t AtualizaLinha(const qzsql::Tabela& t, int64_t chave, const std::vector<CQZValor>& valores,
                          std::optional<int64_t> carimbo);
    int64_t RemoveLinha(const qzsql::Tabela& t, int64_t chave, std::optional<int64_t> carimbo);
    template <class R>
    static int64_t ChaveDe(const R& reg);
    template <class R>
    static void DefineChave(R& reg, int64_t chave);
    template <class R, class K>
    long LeGenerico(const K& chave, R* pDados, bool vazioSeAusente, uint64_t flags = QZ_LER_TUDO);
    template <class R, class K>
    long LeBufferGenerico(const K& chave, R* pDados, bool vazioSeAusente);
    template <class K>
    static int64_t ChaveDireta(const K& chave);
    template <class L>
    static void AnexaChave(L& lista, int64_t chave);

    struct VisitanteLeListas;
    struct VisitanteLeColunas;
    struct VisitanteGravaListas;

    std::string m_sCaminho;
    qzsql::CQZBanco m_banco;
    std::unordered_map<qzsql::AssinaturaBusca, const qzsql::BuscaCompilada*, qzsql::HashAssinaturaBusca> m_buscas;
    CQZDadosGT_Erro m_erro;
    IQZGanchoAcesso* m_pGancho = nullptr;
    const IQZRelogio* m_pRelogio = &CQZRelogioSistema::Instancia();
    // The tables this connection found or made as declared, by Tabela::id.
    std::vector<bool> m_tabelasCriadas;
    std::unordered_map<ChaveCache, std::shared_ptr<TQZBaseParaDados>, HashChaveCache> m_cache;
    int64_t m_versaoDados = -1;
    std::unique_ptr<CQZConexaoInfoExtrasSQL> m_infoExtras;
    CQZPX_DisciplinaArvore m_disciplina{*this};
    IQZTransporteEmail* m_pTransporteEmail = nullptr;
    std::string m_sUltimaRespostaEmail;
};

#include "store/QZArmazemSQL_impl.h"
