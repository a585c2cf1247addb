#include "host/PXLeituraJson.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <unordered_set>
#include <utility>
#include <vector>

namespace {

using pxjson::Json;
using pxjson::Trecho;

// Walks the text for the JSON library and keeps, where the reader can see
// it, how far the library has read: the SAX events carry no position.
class CCursor {
public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = const char&;

    CCursor() = default;
    CCursor(const char* p, const char** lido) : m_p(p), m_lido(lido) {}
    reference operator*() const { return *m_p; }
    CCursor& operator++() {
        *m_lido = ++m_p;
        return *this;
    }
    CCursor operator++(int) {
        CCursor antes = *this;
        ++*this;
        return antes;
    }
    bool operator==(const CCursor& o) const { return m_p == o.m_p; }
    bool operator!=(const CCursor& o) const { return m_p != o.m_p; }

private:
    const char* m_p = nullptr;
    const char** m_lido = nullptr;
};

// The library's English, piece by piece, in Portuguese. Its messages are
// "syntax error while parsing CONTEXT - unexpected TOKEN; expected TOKEN" or
// "... - LEXER ERROR; last read: 'TEXT'; expected TOKEN"; a piece not in the
// tables is left out rather than shown in English.
struct Traducao {
    std::string_view ingles;
    const char* portugues;
};

constexpr Traducao kContextos[] = {
    {"value", "um valor"},
    {"object key", "a chave de um objeto"},
    {"object separator", "o separador ':' de um objeto"},
    {"array", "uma lista"},
    {"object", "um objeto"},
};

constexpr Traducao kSimbolos[] = {
    {"true literal", "true"},
    {"false literal", "false"},
    {"null literal", "null"},
    {"string literal", "um texto"},
    {"number literal", "um número"},
    {"'['", "'['"},
    {"'{'", "'{'"},
    {"']'", "']'"},
    {"'}'", "'}'"},
    {"':'", "':'"},
    {"','", "','"},
    {"end of input", "o fim da entrada"},
    {"'[', '{', or a literal", "um valor"},
};

// By prefix: the control-character messages differ only in the character.
constexpr Traducao kErrosLexicos[] = {
    {"invalid string: ill-formed UTF-8 byte", "texto com UTF-8 inválido"},
    {"invalid string: missing closing quote", "texto sem as aspas de fechamento"},
    {"invalid string: '\\u' must be followed by 4 hex digits", "'\\u' sem os 4 dígitos hexadecimais"},
    {"invalid string: surrogate U+D800..U+DBFF must be followed by U+DC00..U+DFFF",
     "um substituto U+D800..U+DBFF sem o U+DC00..U+DFFF que o completa"},
    {"invalid string: surrogate U+DC00..U+DFFF must follow U+D800..U+DBFF",
     "um substituto U+DC00..U+DFFF sem o U+D800..U+DBFF que o precede"},
    {"invalid string: forbidden character after backslash", "caractere não permitido depois de '\\'"},
    {"invalid string: control character", "caractere de controle sem escape dentro de um texto"},
    {"invalid comment", "comentário, que JSON não tem"},
    {"invalid number; expected digit after '-'", "número sem dígito depois de '-'"},
    {"invalid number; expected digit after '.'", "número sem dígito depois de '.'"},
    {"invalid number; expected digit after exponent sign", "número sem dígito no expoente"},
    {"invalid number; expected '+', '-', or digit after exponent", "número sem dígito no expoente"},
    {"invalid literal", "palavra desconhecida (os valores sem aspas são números, true, false e null)"},
    {"invalid BOM", "marca de ordem de bytes (BOM) inválida"},
};

template <size_t N>
const char* Traduz(const Traducao (&tabela)[N], std::string_view ingles, bool prefixo = false) {
    for (const auto& t : tabela)
        if (prefixo ? ingles.substr(0, t.ingles.size()) == t.ingles : ingles == t.ingles) return t.portugues;
    return nullptr;
}

// `texto` up to the first `fim` (all of it when absent), and what follows it.
std::pair<std::string_view, std::string_view> Corta(std::string_view texto, std::string_view fim) {
    const size_t i = texto.find(fim);
    if (i == std::string_view::npos) return {texto, {}};
    return {texto.substr(0, i), texto.substr(i + fim.size())};
}

std::string MotivoDaBiblioteca(const nlohmann::detail::exception& e, const std::string& lido) {
    if (e.id == 406) return "número fora da faixa: " + Trecho(lido);
    constexpr std::string_view kSintaxe = "syntax error ";
    std::string_view ingles = e.what();
    const size_t i = ingles.find(kSintaxe);
    if (i == std::string_view::npos) return "JSON malformado";
    ingles.remove_prefix(i + kSintaxe.size());

    std::vector<std::string> partes;
    constexpr std::string_view kContexto = "while parsing ";
    if (ingles.substr(0, kContexto.size()) == kContexto) {
        auto [contexto, depois] = Corta(ingles.substr(kContexto.size()), " - ");
        if (const char* pt = Traduz(kContextos, contexto)) partes.push_back(std::string("ao ler ") + pt);
        ingles = depois;
    } else {
        ingles = Corta(ingles, "- ").second;
    }
    constexpr std::string_view kInesperado = "unexpected ", kEsperado = "; expected ";
    std::string_view esperado;
    if (ingles.substr(0, kInesperado.size()) == kInesperado) {
        auto [veio, depois] = Corta(ingles.substr(kInesperado.size()), kEsperado);
        if (const char* pt = Traduz(kSimbolos, veio)) partes.push_back(std::string("veio ") + pt);
        esperado = depois;
    } else {
        // A lexer's error may itself say "; expected": the token expected
        // comes after the text read, which ends the last quote.
        auto [erro, depois] = Corta(ingles, "; last read: '");
        if (const char* pt = Traduz(kErrosLexicos, erro, true)) partes.push_back(pt);
        if (const size_t fimLido = depois.rfind(std::string("'") + std::string(kEsperado));
            fimLido != std::string_view::npos)
            esperado = depois.substr(fimLido + 1 + kEsperado.size());
        // The text read is quoted from the event, which has it whole.
        if (!lido.empty()) partes.push_back("em " + Trecho(lido));
    }
    if (const char* pt = Traduz(kSimbolos, esperado)) partes.push_back(std::string("esperava ") + pt);

    std::string motivo = "JSON malformado";
    for (size_t p = 0; p < partes.size(); ++p) motivo += (p == 0 ? ": " : ", ") + partes[p];
    return motivo;
}

// Builds the value from the library's events, and stops at the first thing
// past the limits or not accepted, with the path of the member being read.
// Given `membros`, an object at the root is not built: its members go there.
class CConstrutor : public nlohmann::json_sax<Json> {
public:
    CConstrutor(const CPXLimitesJson& limites, Json& raiz, pxjson::IPXMembrosJson* membros = nullptr)
        : m_limites(limites), m_raiz(raiz), m_membros(membros) {}

    bool null() override { return Escalar(nullptr); }
    bool boolean(bool v) override { return Escalar(v); }
    bool number_integer(number_integer_t v) override { return Escalar(v); }
    bool number_unsigned(number_unsigned_t v) override { return Escalar(v); }
    bool number_float(number_float_t v, const string_t&) override { return Escalar(v); }
    bool string(string_t& v) override {
        if (!TextoAceito(v)) return false;
        if (!MembroDaRaiz()) return Escalar(std::move(v));
        // Handed over in place: the library's buffer keeps its room.
        m_membros->Texto(v);
        Concluido();
        return true;
    }
    bool binary(binary_t&) override { return Falha("valor binário, que JSON em texto não tem"); }

    bool start_object(std::size_t) override { return Abre(Json::object()); }
    bool start_array(std::size_t) override { return Abre(Json::array()); }
    bool end_object() override { return Fecha(); }
    bool end_array() override { return Fecha(); }

    bool key(string_t& chave) override {
        Nivel& n = m_niveis.back();
        if (MembroDaRaiz()) {
            n.chave = chave;
            if (!TextoAceito(*n.chave)) return false;
            if (m_chavesRaiz >= m_limites.lista)
                return Falha("objeto com mais de " + std::to_string(m_limites.lista) + " campos (--max-list)");
            ++m_chavesRaiz;
            if (!m_membros->Chave(*n.chave)) return Falha("campo repetido no objeto");
            return true;
        }
        n.chave = chave;
        if (!TextoAceito(chave)) return false;
        auto& membros = static_cast<Json::object_t::Container&>(n.valor->get_ref<Json::object_t&>());
        if (membros.size() >= m_limites.lista)
            return Falha("objeto com mais de " + std::to_string(m_limites.lista) + " campos (--max-list)");
        if (Repetida(n, membros, chave)) return Falha("campo repetido no objeto");
        // The key is known to be new: appended without the object's own
        // search for it, which is linear and would make a wide object
        // quadratic.
        membros.emplace_back(std::move(chave), nullptr);
        m_membro = &membros.back().second;
        return true;
    }

    bool parse_error(std::size_t posicao, const std::string& lido, const nlohmann::detail::exception& e) override {
        m_erro = Erro{Caminho(), MotivoDaBiblioteca(e, lido), posicao, true};
        return false;
    }

    struct Erro {
        std::string campo;
        std::string motivo;
        size_t lidos = 0;  // the library's count of what it read, for its own errors
        bool daBiblioteca = false;
    };
    // Why the parse stopped, when it did. For this reader's own errors the
    // caller takes the place from the cursor.
    const std::optional<Erro>& ErroEncontrado() const { return m_erro; }

private:
    struct Nivel {
        Json* valor;
        std::optional<std::string> chave;     // of the member being read (objects); none between members
        size_t indice = std::string::npos;  // of the entry being read (lists); npos between entries
        std::unordered_set<std::string> chaves;  // of a wide object only
    };

    // Records have a few fields: their keys are compared one by one; a wide
    // object's are kept in a set, so that it is not quadratic.
    static constexpr size_t kObjetoLargo = 32;
    static bool Repetida(Nivel& n, const Json::object_t::Container& membros, const std::string& chave) {
        if (membros.size() < kObjetoLargo) {
            for (const auto& m : membros)
                if (m.first == chave) return true;
            return false;
        }
        if (n.chaves.empty())
            for (const auto& m : membros) n.chaves.insert(m.first);
        return !n.chaves.insert(chave).second;
    }

    bool Falha(std::string motivo) {
        m_erro = Erro{Caminho(), std::move(motivo), 0, false};
        return false;
    }

    bool TextoAceito(const std::string& v) {
        if (v.size() > m_limites.texto)
            return Falha("texto de " + std::to_string(v.size()) + " bytes, além do limite de " +
                         std::to_string(m_limites.texto) + " (--max-text)");
        if (v.find('\0') != std::string::npos) return Falha("texto com o caractere U+0000, que não é aceito");
        return true;
    }

    // Places a value where the parse is: the root, the next entry of a list
    // or the member whose key was just read. Null when a limit refuses it.
    Json* Coloca(Json&& v) {
        if (m_niveis.empty()) {
            m_raiz = std::move(v);
            return &m_raiz;
        }
        Nivel& n = m_niveis.back();
        if (n.valor->is_object()) {
            *m_membro = std::move(v);
            return m_membro;
        }
        auto& lista = n.valor->get_ref<Json::array_t&>();
        n.indice = lista.size();
        if (lista.size() >= m_limites.lista) {
            Falha("lista com mais de " + std::to_string(m_limites.lista) + " elementos (--max-list)");
            return nullptr;
        }
        lista.push_back(std::move(v));
        return &lista.back();
    }

    // Whether the parse is at a member of the root object handed over.
    bool MembroDaRaiz() const { return m_membros && m_niveis.size() == 1 && m_niveis[0].valor->is_object(); }

    bool Escalar(Json&& v) {
        if (MembroDaRaiz())
            m_membros->Valor(std::move(v));
        else if (!Coloca(std::move(v)))
            return false;
        Concluido();
        return true;
    }

    // The member or entry being read is whole: what follows is not in it.
    void Concluido() {
        if (m_niveis.empty()) return;
        m_niveis.back().chave.reset();
        m_niveis.back().indice = std::string::npos;
    }

    bool Abre(Json&& vazio) {
        if (m_niveis.size() >= CPXLimitesJson::kProfundidade) {
            // Named where the over-deep value starts.
            if (!m_niveis.empty() && m_niveis.back().valor->is_array())
                m_niveis.back().indice = m_niveis.back().valor->size();
            return Falha("valores aninhados em mais de " + std::to_string(CPXLimitesJson::kProfundidade) + " níveis");
        }
        Json* valor = nullptr;
        if (MembroDaRaiz()) {
            // A member's list or object is built alone, and handed over whole.
            m_membroRaiz = std::move(vazio);
            valor = &m_membroRaiz;
        } else {
            valor = Coloca(std::move(vazio));
        }
        if (!valor) return false;
        m_niveis.push_back(Nivel{valor, std::nullopt, std::string::npos, {}});
        return true;
    }

    bool Fecha() {
        m_niveis.pop_back();
        if (MembroDaRaiz()) m_membros->Valor(std::move(m_membroRaiz));
        Concluido();
        return true;
    }

    // "Item[2].Codigo": the members and entries open where the parse is.
    std::string Caminho() const {
        std::string caminho;
        for (const Nivel& n : m_niveis) {
            if (n.valor->is_object()) {
                if (!n.chave) break;
                caminho += (caminho.empty() ? "" : ".") + Trecho(*n.chave);
            } else {
                if (n.indice == std::string::npos) break;
                caminho += "[" + std::to_string(n.indice) + "]";
            }
        }
        return caminho;
    }

    const CPXLimitesJson& m_limites;
    Json& m_raiz;
    std::vector<Nivel> m_niveis;
    Json* m_membro = nullptr;
    pxjson::IPXMembrosJson* m_membros;
    size_t m_chavesRaiz = 0;
    Json m_membroRaiz;
    std::optional<Erro> m_erro;
};

// The line and column (in characters, from 1) of byte `posicao` of `texto`.
std::pair<long, size_t> LinhaColuna(std::string_view texto, size_t posicao, long primeiraLinha) {
    posicao = std::min(posicao, texto.size());
    long linha = primeiraLinha;
    size_t inicio = 0;
    for (size_t i = 0; i < posicao; ++i)
        if (texto[i] == '\n') {
            ++linha;
            inicio = i + 1;
        }
    size_t coluna = 1;
    for (size_t i = inicio; i < posicao; ++i)
        if ((static_cast<unsigned char>(texto[i]) & 0xC0) != 0x80) ++coluna;
    return {linha, coluna};
}

[[noreturn]] void Lanca(std::string_view texto, long primeiraLinha, const std::string& campo, const std::string& motivo,
                        size_t posicao) {
    auto [linha, coluna] = LinhaColuna(texto, posicao, primeiraLinha);
    throw CPXErroLeituraJson(campo, motivo + " (coluna " + std::to_string(coluna) + ")", linha);
}

void Le(std::string_view texto, const CPXLimitesJson& limites, long primeiraLinha, Json& raiz,
        pxjson::IPXMembrosJson* membros) {
    if (texto.size() > limites.linha)
        throw CPXErroLeituraJson({},
                                 "registro de " + std::to_string(texto.size()) + " bytes, além do limite de " +
                                     std::to_string(limites.linha) + " (--max-line)",
                                 primeiraLinha);
    // The library reads a NUL byte as the end of the text and would accept
    // whatever came before it.
    if (const size_t nulo = texto.find('\0'); nulo != std::string_view::npos)
        Lanca(texto, primeiraLinha, {}, "byte nulo (0x00) na entrada, que não é texto JSON", nulo);

    CConstrutor construtor(limites, raiz, membros);
    const char* lido = texto.data();
    CCursor inicio(texto.data(), &lido), fim(texto.data() + texto.size(), &lido);
    if (Json::sax_parse(inicio, fim, &construtor, nlohmann::detail::input_format_t::json, true, false)) return;
    const auto& erro = construtor.ErroEncontrado();
    if (!erro) Lanca(texto, primeiraLinha, {}, "JSON malformado", static_cast<size_t>(lido - texto.data()));
    // The library counts the character it stopped at; the cursor is past
    // the last one handed over.
    const size_t posicao = erro->daBiblioteca ? (erro->lidos > 0 ? erro->lidos - 1 : 0)
                                              : static_cast<size_t>(lido - texto.data()) - (lido > texto.data());
    Lanca(texto, primeiraLinha, erro->campo, erro->motivo, posicao);
}

}  // namespace

Json PXLeJson(std::string_view texto, const CPXLimitesJson& limites, long primeiraLinha) {
    Json raiz;
    Le(texto, limites, primeiraLinha, raiz, nullptr);
    return raiz;
}

bool PXLeJsonMembros(std::string_view texto, const CPXLimitesJson& limites, long primeiraLinha,
                     pxjson::IPXMembrosJson& membros) {
    Json raiz;
    Le(texto, limites, primeiraLinha, raiz, &membros);
    return raiz.is_object();
}
