// Records and filters declared once.
//
// A record is declared by one list of its fields:
//
//   #define CAMPOS_PX_PRIORIDADE(CAMPO, LISTA)
//       CAMPO(CString, Codigo, QZ_IDX)
//       CAMPO(CString, Descricao, 0)
//       CAMPO(uint8_t, PrioridadeBase, 0)
//       CAMPO(REG_QZDMAHMSUTC, DmaHmsAtualizacao, QZ_CARIMBO)
//   (each line continued with a backslash)
//   class CQZDadosPX_Prioridade : public TQZBaseParaDados {
//       QZ_REGISTRO(CQZDadosPX_Prioridade, CAMPOS_PX_PRIORIDADE)
//   };
//
// From the list come GetX/SetX, copy (OnCopiar), equality (OnIgual) and a
// field visitor (VisitaCampos) that the store's SQL mapping and the JSON
// interface walk. LISTA(Elemento, Nome) declares a list member with
// GetQuantidadeNome, GetConstRefNome(i), GetRefNome(i), SetNome(i, e),
// AdicionaNome(e), RemoveNome(i) and RemoveTodosNome; the element is itself a
// declared record. Field options: QZ_IDX (searched: the store indexes it),
// QZ_CARIMBO (last-update stamp, set by the store on save), QZ_CHAVE (the
// record's key, for records not keyed by position), QZ_REF(Tipo) (a pointer:
// the position of a record of type Tipo, 0 when none; combined as
// QZ_IDX | QZ_REF(Tipo)). A pointer whose target the store does not hold, or
// whose type another field decides, declares none and says why.
//
// A record keyed otherwise than by its position says so with
//   static constexpr QZTipoChave kTipoChave = QZ_CHAVE_DMC;   // or QZ_CHAVE_UNICA
//
// A filter is declared the same way with QZ_FILTRO and CRITERIO(T, Nome)
// entries (each a SetNome setter kept as an optional value); it translates
// the criteria that are set into store-neutral conditions in MontaCondicoes.
#pragma once

#include <array>
#include <cstdint>
#include <new>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <variant>
#include <vector>

#include "platform/CString.h"
#include "platform/QZBaseParaDados.h"
#include "platform/QZContainers.h"
#include "platform/QZDatas.h"
#include "platform/QZMoeda.h"

enum QZOpcaoCampo : unsigned {
    QZ_IDX = 1u,
    QZ_CARIMBO = 2u,
    QZ_CHAVE = 4u,
};

enum QZTipoChave { QZ_CHAVE_POSICAO, QZ_CHAVE_DMC, QZ_CHAVE_UNICA };

// The options of a field as its visitors see them: the QZ_* bits and, for a
// pointer field, the record type it names by position (QZ_REF). Visitors
// that only need the bits take them as unsigned.
struct QZOpcoes {
    unsigned bits = 0;
    const char* alvo = nullptr;  // kNomeTipo of the record named; null when not a pointer
    constexpr QZOpcoes(unsigned b = 0, const char* a = nullptr) : bits(b), alvo(a) {}
    constexpr operator unsigned() const { return bits; }
};

// QZ_REF(CQZDadosGT_Filial): the field holds the position of a branch (0:
// none). The type is named by text so a declaration may name a type
// declared after it, its own included.
struct QZReferencia {
    const char* alvo;
};
#define QZ_REF(Registro) (QZReferencia{#Registro})
constexpr QZOpcoes operator|(QZOpcaoCampo o, QZReferencia r) { return {static_cast<unsigned>(o), r.alvo}; }
constexpr QZOpcoes operator|(QZReferencia r, QZOpcaoCampo o) { return o | r; }
constexpr QZOpcoes QZOpcoesDe(QZReferencia r) { return {0, r.alvo}; }
constexpr QZOpcoes QZOpcoesDe(QZOpcoes o) { return o; }
constexpr QZOpcoes QZOpcoesDe(unsigned o) { return {o}; }

template <class T>
constexpr QZTipoChave QZTipoChaveDe() {
    if constexpr (requires { T::kTipoChave; })
        return T::kTipoChave;
    else
        return QZ_CHAVE_POSICAO;
}

// The last-update stamp of a record (its QZ_CARIMBO field); empty for a
// record that has none.
struct QZVisitanteCarimbo {
    REG_QZDMAHMSUTC carimbo;
    template <class T>
    void Campo(const char*, const T& v, unsigned opcoes) {
        if constexpr (std::is_same_v<T, REG_QZDMAHMSUTC>)
            if (opcoes & QZ_CARIMBO) carimbo = v;
    }
    template <class E>
    void Lista(const char*, const std::vector<E>&) {}
};
template <class R>
REG_QZDMAHMSUTC QZCarimboDe(const R& reg) {
    QZVisitanteCarimbo v;
    reg.VisitaCampos(v);
    return v.carimbo;
}

// The movement key (QZ_CHAVE field) of a record keyed by REG_QZDMC; null for
// any other record.
struct QZVisitanteChaveDmc {
    REG_QZDMC* pChave = nullptr;
    template <class T>
    void Campo(const char*, T& v, unsigned opcoes) {
        if constexpr (std::is_same_v<T, REG_QZDMC>)
            if (opcoes & QZ_CHAVE) pChave = &v;
    }
    template <class E>
    void Lista(const char*, std::vector<E>&) {}
};
template <class R>
REG_QZDMC* QZPonteiroChaveDmc(R& reg) {
    QZVisitanteChaveDmc v;
    reg.VisitaCampos(v);
    return v.pChave;
}
template <class R>
REG_QZDMC QZChaveDmcDe(const R& reg) {
    const REG_QZDMC* p = QZPonteiroChaveDmc(const_cast<R&>(reg));
    return p ? *p : REG_QZDMC();
}

// Whether the record was stored: a position, a valid movement key; the one
// record of a one-record table always is (empty until its first save).
template <class R>
bool QZEstaGravado(const R& reg) {
    if constexpr (QZTipoChaveDe<R>() == QZ_CHAVE_POSICAO)
        return reg.GetPosicao() != 0;
    else if constexpr (QZTipoChaveDe<R>() == QZ_CHAVE_DMC)
        return QZChaveDmcDe(reg).EhValido();
    else
        return true;
}

// A stored value: every field type maps onto one or more integers or texts.
// The third form is text already in the store's encoding (search bounds).
using CQZValor = std::variant<int64_t, CString, std::string>;

// How each field type is stored: its columns and their values. A type
// stored in integer columns also reads them straight from the row, without
// a CQZValor: DeColuna for one column, DeColunas for several.
template <class T, class = void>
struct QZCodec;

template <class T>
struct QZCodec<T, std::enable_if_t<std::is_integral_v<T>>> {
    static constexpr int N = 1;
    static constexpr std::array<const char*, 1> kSufixos{""};
    static void Para(const T& v, CQZValor* o) { o[0] = static_cast<int64_t>(v); }
    static void DeColuna(T& v, int64_t i) { v = static_cast<T>(i); }
    static void De(T& v, const CQZValor* i) { DeColuna(v, std::get<int64_t>(i[0])); }
};
template <>
struct QZCodec<CString> {
    static constexpr int N = 1;
    static constexpr std::array<const char*, 1> kSufixos{""};
    static void Para(const CString& v, CQZValor* o) { o[0] = v; }
    static void De(CString& v, const CQZValor* i) { v = std::get<CString>(i[0]); }
};
template <>
struct QZCodec<CQZMoeda> {
    static constexpr int N = 1;
    static constexpr std::array<const char*, 1> kSufixos{""};
    static void Para(const CQZMoeda& v, CQZValor* o) { o[0] = v.GetBruto(); }
    static void DeColuna(CQZMoeda& v, int64_t i) { v = CQZMoeda::DeBruto(i); }
    static void De(CQZMoeda& v, const CQZValor* i) { DeColuna(v, std::get<int64_t>(i[0])); }
};
template <>
struct QZCodec<REG_QZDMA> {
    static constexpr int N = 1;
    static constexpr std::array<const char*, 1> kSufixos{""};
    static void Para(const REG_QZDMA& v, CQZValor* o) { o[0] = static_cast<int64_t>(v.ulValor); }
    static void DeColuna(REG_QZDMA& v, int64_t i) { v.ulValor = static_cast<uint32_t>(i); }
    static void De(REG_QZDMA& v, const CQZValor* i) { DeColuna(v, std::get<int64_t>(i[0])); }
};
template <>
struct QZCodec<REG_QZMA> {
    static constexpr int N = 1;
    static constexpr std::array<const char*, 1> kSufixos{""};
    static void Para(const REG_QZMA& v, CQZValor* o) { o[0] = static_cast<int64_t>(v.GetValor()); }
    static void DeColuna(REG_QZMA& v, int64_t i) { v = REG_QZMA::DeValor(static_cast<uint32_t>(i)); }
    static void De(REG_QZMA& v, const CQZValor* i) { DeColuna(v, std::get<int64_t>(i[0])); }
};
template <>
struct QZCodec<REG_QZDMAHMSUTC> {
    static constexpr int N = 1;
    static constexpr std::array<const char*, 1> kSufixos{""};
    static void Para(const REG_QZDMAHMSUTC& v, CQZValor* o) { o[0] = static_cast<int64_t>(v.ullValor); }
    static void DeColuna(REG_QZDMAHMSUTC& v, int64_t i) { v.ullValor = static_cast<uint64_t>(i); }
    static void De(REG_QZDMAHMSUTC& v, const CQZValor* i) { DeColuna(v, std::get<int64_t>(i[0])); }
};
template <>
struct QZCodec<REG_QZDMC> {
    static constexpr int N = 1;
    static constexpr std::array<const char*, 1> kSufixos{""};
    static void Para(const REG_QZDMC& v, CQZValor* o) { o[0] = static_cast<int64_t>(v.GetValor()); }
    static void DeColuna(REG_QZDMC& v, int64_t i) { v = REG_QZDMC::DeValor(static_cast<uint64_t>(i)); }
    static void De(REG_QZDMC& v, const CQZValor* i) { DeColuna(v, std::get<int64_t>(i[0])); }
};
template <>
struct QZCodec<_REG_POSICAO_PRODUTOPS> {
    static constexpr int N = 4;
    static constexpr std::array<const char*, 4> kSufixos{"_Produto", "_Grade1", "_Grade2", "_Grade3"};
    static void Para(const _REG_POSICAO_PRODUTOPS& v, CQZValor* o) {
        o[0] = static_cast<int64_t>(v.lPonteiroProduto);
        o[1] = static_cast<int64_t>(v.usPonteiroGrade1);
        o[2] = static_cast<int64_t>(v.usPonteiroGrade2);
        o[3] = static_cast<int64_t>(v.usPonteiroGrade3);
    }
    static void De(_REG_POSICAO_PRODUTOPS& v, const CQZValor* i) {
        v.lPonteiroProduto = static_cast<uint32_t>(std::get<int64_t>(i[0]));
        v.usPonteiroGrade1 = static_cast<uint16_t>(std::get<int64_t>(i[1]));
        v.usPonteiroGrade2 = static_cast<uint16_t>(std::get<int64_t>(i[2]));
        v.usPonteiroGrade3 = static_cast<uint16_t>(std::get<int64_t>(i[3]));
    }
};

template <class T>
CQZValor QZValorDe(const T& v) {
    static_assert(QZCodec<T>::N == 1, "conditions compare single-column values");
    CQZValor o[1];
    QZCodec<T>::Para(v, o);
    return o[0];
}

// One criterion of a search, in store-neutral terms.
struct CQZCondicao {
    enum Op {
        IGUAL,         // campo = valor
        PREFIXO,       // text campo starts with valor
        LISTA_CONTEM,  // some element of list `lista` has campo = valor
        SUBARVORE,     // the record at valor and its descendants through parent field `campo`
        REFERENCIADO,  // some element of list `lista` of record type `registro`, whose
                       // `campoCondicao` = valor, names this record's key in its `campo`
        DESCENDENTES,  // the records under the one at valor, at any depth, through parent field `campo`
        A_PARTIR_DE,   // campo >= valor
        ANTES_DE,      // campo < valor
    };
    Op op;
    const char* campo;  // a field's name, as the record declares it
    CQZValor valor;
    const char* lista;                      // LISTA_CONTEM, REFERENCIADO: the list's name
    const char* registro = nullptr;         // REFERENCIADO: the record type whose list refers
    const char* campoCondicao = nullptr;    // REFERENCIADO: the field of that record valor is matched on
};

// The conditions of one search, kept inline: a search is built on every
// call, and no filter has more criteria than fit here.
class CQZCondicoes {
public:
    static constexpr size_t kMaximo = 16;

    CQZCondicoes() = default;
    CQZCondicoes(const CQZCondicoes&) = delete;
    CQZCondicoes& operator=(const CQZCondicoes&) = delete;
    ~CQZCondicoes() {
        for (size_t i = 0; i < m_n; ++i) Em(i)->~CQZCondicao();
    }

    template <class T>
    CQZCondicoes& Igual(const char* campo, const T& valor) {
        return Adiciona(CQZCondicao::IGUAL, campo, QZValorDe(valor), nullptr);
    }
    template <class T>
    CQZCondicoes& Igual(const char* campo, const std::optional<T>& valor) {
        if (valor) Igual(campo, *valor);
        return *this;
    }
    // Exact code, or a prefix when partial matching is on.
    CQZCondicoes& Codigo(const char* campo, const std::optional<CString>& valor, bool parcial) {
        if (valor) Adiciona(parcial ? CQZCondicao::PREFIXO : CQZCondicao::IGUAL, campo, *valor, nullptr);
        return *this;
    }
    template <class T>
    CQZCondicoes& ListaContem(const char* lista, const char* campo, const T& valor) {
        return Adiciona(CQZCondicao::LISTA_CONTEM, campo, QZValorDe(valor), lista);
    }
    template <class T>
    CQZCondicoes& APartirDe(const char* campo, const std::optional<T>& valor) {
        if (valor) Adiciona(CQZCondicao::A_PARTIR_DE, campo, QZValorDe(*valor), nullptr);
        return *this;
    }
    template <class T>
    CQZCondicoes& AntesDe(const char* campo, const T& valor) {
        return Adiciona(CQZCondicao::ANTES_DE, campo, QZValorDe(valor), nullptr);
    }
    CQZCondicoes& Subarvore(const char* campoPai, uint32_t raiz) {
        return Adiciona(CQZCondicao::SUBARVORE, campoPai, static_cast<int64_t>(raiz), nullptr);
    }
    CQZCondicoes& Descendentes(const char* campoPai, uint32_t raiz) {
        return Adiciona(CQZCondicao::DESCENDENTES, campoPai, static_cast<int64_t>(raiz), nullptr);
    }
    template <class T>
    CQZCondicoes& ReferenciadoPor(const char* registro, const char* lista, const char* campo,
                                  const char* campoCondicao, const T& valor) {
        return Adiciona(CQZCondicao::REFERENCIADO, campo, QZValorDe(valor), lista, registro, campoCondicao);
    }
    std::span<const CQZCondicao> Lista() const { return {Em(0), m_n}; }

private:
    CQZCondicoes& Adiciona(CQZCondicao::Op op, const char* campo, CQZValor valor, const char* lista,
                           const char* registro = nullptr, const char* campoCondicao = nullptr) {
        if (m_n == kMaximo) throw std::length_error("mais critérios do que uma busca comporta");
        new (Em(m_n)) CQZCondicao{op, campo, std::move(valor), lista, registro, campoCondicao};
        ++m_n;
        return *this;
    }
    CQZCondicao* Em(size_t i) { return std::launder(reinterpret_cast<CQZCondicao*>(m_memoria)) + i; }
    const CQZCondicao* Em(size_t i) const {
        return std::launder(reinterpret_cast<const CQZCondicao*>(m_memoria)) + i;
    }

    // Built only as conditions are added.
    alignas(CQZCondicao) unsigned char m_memoria[kMaximo * sizeof(CQZCondicao)];
    size_t m_n = 0;
};

// An entry of a classification (tree) view.
class CQZDadosGT_Classificacao {
public:
    CQZDadosGT_Classificacao() = default;
    explicit CQZDadosGT_Classificacao(uint32_t ponteiro) : m_ulPonteiro(ponteiro) {}
    uint32_t GetPonteiro() const { return m_ulPonteiro; }
    void SetPonteiro(uint32_t p) { m_ulPonteiro = p; }
    friend bool operator==(const CQZDadosGT_Classificacao&, const CQZDadosGT_Classificacao&) = default;

private:
    uint32_t m_ulPonteiro = 0;
};
using CQZListaClassificacao = CQZVector<CQZDadosGT_Classificacao>;

// Base of search filters.
class TQZBaseFiltro {
public:
    virtual ~TQZBaseFiltro() = default;
    // classificacao: the conditions of a classification (tree) search, whose
    // root criterion names the subtree instead of the parent of the matches.
    virtual void MontaCondicoes(CQZCondicoes& c, bool classificacao) const = 0;
};

// ---- generation -------------------------------------------------------------

#define QZ_CAMPO_MEMBRO_(T, Nome, Opcoes)                          \
private:                                                           \
    T m_##Nome{};                                                  \
                                                                   \
public:                                                            \
    const T& Get##Nome() const { return m_##Nome; }                \
    auto& Set##Nome(const T& valor) {                              \
        m_##Nome = valor;                                          \
        return *this;                                              \
    }

#define QZ_LISTA_MEMBRO_(E, Nome)                                                                    \
private:                                                                                             \
    std::vector<E> m_lista##Nome;                                                                    \
                                                                                                     \
public:                                                                                              \
    int64_t GetQuantidade##Nome() const { return static_cast<int64_t>(m_lista##Nome.size()); }       \
    const E& GetConstRef##Nome(int64_t i) const { return m_lista##Nome.at(static_cast<size_t>(i)); } \
    E& GetRef##Nome(int64_t i) { return m_lista##Nome.at(static_cast<size_t>(i)); }                  \
    auto& Set##Nome(int64_t i, const E& e) {                                                         \
        m_lista##Nome.at(static_cast<size_t>(i)) = e;                                                \
        return *this;                                                                                \
    }                                                                                                \
    auto& Adiciona##Nome(const E& e) {                                                               \
        m_lista##Nome.push_back(e);                                                                  \
        return *this;                                                                                \
    }                                                                                                \
    void Remove##Nome(int64_t i) { m_lista##Nome.erase(m_lista##Nome.begin() + i); }                 \
    void RemoveTodos##Nome() { m_lista##Nome.clear(); }                                              \
    const std::vector<E>& GetLista##Nome() const { return m_lista##Nome; }

#define QZ_CAMPO_VISITA_(T, Nome, Opcoes) v.Campo(#Nome, m_##Nome, QZOpcoesDe(Opcoes));
#define QZ_LISTA_VISITA_(E, Nome) v.Lista(#Nome, m_lista##Nome);

#define QZ_REGISTRO(Classe, CAMPOS)                                                          \
    CAMPOS(QZ_CAMPO_MEMBRO_, QZ_LISTA_MEMBRO_)                                               \
public:                                                                                      \
    static constexpr const char* kNomeTipo = #Classe;                                        \
    const char* GetNomeTipo() const override { return kNomeTipo; }                           \
    template <class V>                                                                       \
    void VisitaCampos(V& v) {                                                                \
        CAMPOS(QZ_CAMPO_VISITA_, QZ_LISTA_VISITA_)                                           \
    }                                                                                        \
    template <class V>                                                                       \
    void VisitaCampos(V& v) const {                                                          \
        CAMPOS(QZ_CAMPO_VISITA_, QZ_LISTA_VISITA_)                                           \
    }                                                                                        \
    void OnCopiar(const TQZBaseParaDados& outro) override {                                  \
        if (auto p = dynamic_cast<const Classe*>(&outro)) *this = *p;                        \
    }                                                                                        \
    bool OnIgual(const TQZBaseParaDados& outro) const override {                             \
        auto p = dynamic_cast<const Classe*>(&outro);                                        \
        return p && *this == *p;                                                             \
    }                                                                                        \
    friend bool operator==(const Classe&, const Classe&) = default;

#define QZ_CRITERIO_MEMBRO_(T, Nome)                                  \
private:                                                              \
    std::optional<T> m_crit##Nome;                                    \
                                                                      \
public:                                                               \
    auto& Set##Nome(const T& valor) {                                 \
        m_crit##Nome = valor;                                         \
        return *this;                                                 \
    }                                                                 \
    const std::optional<T>& GetCriterio##Nome() const { return m_crit##Nome; }

#define QZ_CRITERIO_VISITA_(T, Nome) v.Criterio(#Nome, m_crit##Nome);

// Filters: each criterion is optional; MontaCondicoes (written by the
// filter) says what the criteria that are set mean.
#define QZ_FILTRO(Classe, Registro, CRITERIOS)                \
    CRITERIOS(QZ_CRITERIO_MEMBRO_)                            \
public:                                                       \
    using TipoRegistro = Registro;                            \
    static constexpr const char* kNomeTipo = #Classe;         \
    template <class V>                                        \
    void VisitaCriterios(V& v) {                              \
        CRITERIOS(QZ_CRITERIO_VISITA_)                        \
    }                                                         \
    template <class V>                                        \
    void VisitaCriterios(V& v) const {                        \
        CRITERIOS(QZ_CRITERIO_VISITA_)                        \
    }
