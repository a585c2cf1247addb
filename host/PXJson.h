// JSON form of the declared records, walked from their field lists
// (VisitaCampos), for the command line's import, export and save:
//
//   {"type": "CQZDadosPX_Prioridade", "Posicao": 3, "Codigo": "URG", ...}
//
// Fields are named as their accessors without "Get"; a list is an array of
// objects; "Posicao" is present on records keyed by position. The forms of
// the values (README.md, "JSON record format"):
//   integers             JSON integers, checked against the field's range
//   text                 JSON strings; UTF-8 here, Windows-1252 in the record
//   currency (CQZMoeda)  exact decimal text with four decimals: "12.5000"
//                        (a JSON integer is accepted on input)
//   date                 "YYYY-MM-DD"; "" when empty
//   month and year       "YYYY-MM"; "" when empty
//   stamp                "YYYY-MM-DDTHH:MM:SS+HH:MM" (the stored local time
//                        and its UTC offset); "" when empty
//   movement key         "YYYY-MM/N" (the month file and the number in it,
//                        0 = not numbered yet); "" when empty
//   product key          {"Produto": 12, "Grade1": 0, "Grade2": 0, "Grade3": 0}
// A date, month, stamp or movement key with no calendar form (an invalid
// value kept in a record) is written as its packed integer, and read back
// from it, so an export always imports back to the same record.
#pragma once

#include <nlohmann/json.hpp>

#include <algorithm>
#include <limits>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "platform/QZRegistro.h"

// Bad input for a record: the field (a path such as "Disciplina[2].PonteiroDisciplina")
// and why. The reason is Windows-1252 text, like every text of the library.
class CPXErroJson : public std::runtime_error {
public:
    CPXErroJson(std::string campo, const std::string& motivo) : std::runtime_error(motivo), m_campo(std::move(campo)) {}
    const std::string& Campo() const { return m_campo; }

private:
    std::string m_campo;
};

namespace pxjson {

using Json = nlohmann::ordered_json;

// Takes the members of a JSON object one by one, as a reader meets them.
class IPXMembrosJson {
public:
    virtual ~IPXMembrosJson() = default;
    // The key of the next member: false when the object already has it.
    virtual bool Chave(std::string_view chave) = 0;
    // The value of the member whose key came last.
    virtual void Valor(Json&& valor) = 0;
    // The same, when it is a string: its contents, which stay the caller's.
    virtual void Texto(const std::string& valor) { Valor(Json(valor)); }
};

// At most 80 characters of a UTF-8 text given by the user, in Windows-1252
// (characters without a form there, and control characters, become '?'),
// for quoting in a message: a value of any size never makes a message
// larger than this.
std::string Trecho(std::string_view utf8);

// Readers of the text forms, character by character: time linear in the
// text, no recursion, no allocation. The forms are exact: no blanks, no sign
// but a leading '-' on currency.
enum class ResultadoLeitura { Lido, ForaDaForma, ForaDaFaixa };
// "-12.5": digits, then optionally '.' and one to four decimals.
ResultadoLeitura LeMoeda(std::string_view s, CQZMoeda& v);
// "YYYY-MM-DD", a day that exists.
bool LeData(std::string_view s, REG_QZDMA& v);
// "YYYY-MM", month 1 to 12 of a year past 0.
bool LeMesAno(std::string_view s, REG_QZMA& v);
// "YYYY-MM-DDTHH:MM:SS+HH:MM", the offset a multiple of 15 minutes.
bool LeCarimbo(std::string_view s, REG_QZDMAHMSUTC& v);
// "YYYY-MM/N", N of one to ten digits up to 4294967295.
bool LeChaveMovimento(std::string_view s, REG_QZDMC& v);

// Value forms (PXJson.cpp). Each De* throws CPXErroJson naming `campo`.
Json Texto(const CString& v);
void De(const Json& j, CString& v, const std::string& campo);
Json Moeda(const CQZMoeda& v);
void De(const Json& j, CQZMoeda& v, const std::string& campo);
Json Data(const REG_QZDMA& v);
void De(const Json& j, REG_QZDMA& v, const std::string& campo);
Json MesAno(const REG_QZMA& v);
void De(const Json& j, REG_QZMA& v, const std::string& campo);
Json Carimbo(const REG_QZDMAHMSUTC& v);
void De(const Json& j, REG_QZDMAHMSUTC& v, const std::string& campo);
Json ChaveMovimento(const REG_QZDMC& v);
void De(const Json& j, REG_QZDMC& v, const std::string& campo);
Json ChaveProduto(const _REG_POSICAO_PRODUTOPS& v);
void De(const Json& j, _REG_POSICAO_PRODUTOPS& v, const std::string& campo);
// The same, from a text already read (a JSON string's contents).
void DeTexto(const std::string& utf8, CString& v, const std::string& campo);
void DeTexto(const std::string& s, CQZMoeda& v, const std::string& campo);
void DeTexto(const std::string& s, REG_QZDMA& v, const std::string& campo);
void DeTexto(const std::string& s, REG_QZMA& v, const std::string& campo);
void DeTexto(const std::string& s, REG_QZDMAHMSUTC& v, const std::string& campo);
void DeTexto(const std::string& s, REG_QZDMC& v, const std::string& campo);
// Integers of any width, checked against [minimo, maximo].
int64_t Inteiro(const Json& j, int64_t minimo, uint64_t maximo, const std::string& campo, uint64_t* semSinal);
[[noreturn]] void Falha(const std::string& campo, const std::string& motivo);
void ExigeObjeto(const Json& j, const std::string& campo);

template <class T>
Json Valor(const T& v);
template <class T>
void DeValor(const Json& j, T& v, const std::string& campo);

struct Escritor {
    Json& obj;
    template <class T>
    void Campo(const char* nome, const T& v, unsigned) {
        obj[nome] = Valor(v);
    }
    template <class E>
    void Lista(const char* nome, const std::vector<E>& l) {
        Json a = Json::array();
        for (const E& e : l) a.push_back(Valor(e));
        obj[nome] = std::move(a);
    }
};

struct Leitor {
    const Json& obj;
    std::string prefixo;
    // The fields of the record, by their declared names (which outlive it),
    // and how many of them the object has.
    std::vector<const char*> lidos;
    size_t presentes = 0;
    template <class T>
    void Campo(const char* nome, T& v, unsigned) {
        lidos.push_back(nome);
        if (auto it = obj.find(nome); it != obj.end()) {
            ++presentes;
            DeValor(*it, v, prefixo.empty() ? std::string(nome) : prefixo + nome);
        }
    }
    template <class E>
    void Lista(const char* nome, std::vector<E>& l) {
        lidos.push_back(nome);
        l.clear();
        auto it = obj.find(nome);
        if (it == obj.end()) return;
        ++presentes;
        const std::string campo = prefixo + nome;
        if (!it->is_array()) Falha(campo, "esperava uma lista (array JSON)");
        for (size_t i = 0; i < it->size(); ++i) {
            E e;
            DeValor((*it)[i], e, campo + "[" + std::to_string(i) + "]");
            l.push_back(std::move(e));
        }
    }
    // Every member of the object must be a field of the record.
    void ConfereDesconhecidos(const std::set<std::string>& aceitos = {}) const {
        // Keys are unique: when every member was a field there is nothing to look for.
        if (presentes == obj.size()) return;
        for (auto it = obj.begin(); it != obj.end(); ++it) {
            const bool lido = std::any_of(lidos.begin(), lidos.end(), [&](const char* n) { return it.key() == n; });
            if (!lido && !aceitos.count(it.key())) Falha(prefixo + Trecho(it.key()), "campo desconhecido");
        }
    }
};

// A record inside a record (list elements, nested records): its fields only.
template <class R>
Json Campos(const R& r) {
    Json obj = Json::object();
    Escritor e{obj};
    r.VisitaCampos(e);
    return obj;
}

template <class R>
void DeCampos(const Json& j, R& r, const std::string& campo, const std::set<std::string>& aceitos = {}) {
    ExigeObjeto(j, campo);
    Leitor l{j, campo.empty() ? std::string() : campo + ".", {}};
    r.VisitaCampos(l);
    l.ConfereDesconhecidos(aceitos);
}

template <class T>
Json Valor(const T& v) {
    if constexpr (std::is_same_v<T, bool>)
        return v;
    else if constexpr (std::is_integral_v<T>)
        return v;
    else if constexpr (std::is_same_v<T, CString>)
        return Texto(v);
    else if constexpr (std::is_same_v<T, CQZMoeda>)
        return Moeda(v);
    else if constexpr (std::is_same_v<T, REG_QZDMA>)
        return Data(v);
    else if constexpr (std::is_same_v<T, REG_QZMA>)
        return MesAno(v);
    else if constexpr (std::is_same_v<T, REG_QZDMAHMSUTC>)
        return Carimbo(v);
    else if constexpr (std::is_same_v<T, REG_QZDMC>)
        return ChaveMovimento(v);
    else if constexpr (std::is_same_v<T, _REG_POSICAO_PRODUTOPS>)
        return ChaveProduto(v);
    else
        return Campos(v);
}

template <class T>
void DeValor(const Json& j, T& v, const std::string& campo);

// A JSON string's contents into a field: as DeValor of that string, without
// making it a JSON value for the forms that are texts.
template <class T>
void DeValorTexto(const std::string& s, T& v, const std::string& campo) {
    if constexpr (std::is_same_v<T, CString> || std::is_same_v<T, CQZMoeda> || std::is_same_v<T, REG_QZDMA> ||
                  std::is_same_v<T, REG_QZMA> || std::is_same_v<T, REG_QZDMAHMSUTC> || std::is_same_v<T, REG_QZDMC>)
        DeTexto(s, v, campo);
    else
        DeValor(Json(s), v, campo);
}

template <class T>
void DeValor(const Json& j, T& v, const std::string& campo) {
    if constexpr (std::is_same_v<T, bool>) {
        if (!j.is_boolean()) Falha(campo, "esperava true ou false");
        v = j.get<bool>();
    } else if constexpr (std::is_integral_v<T>) {
        uint64_t semSinal = 0;
        int64_t valor = Inteiro(j, static_cast<int64_t>(std::numeric_limits<T>::min()),
                                static_cast<uint64_t>(std::numeric_limits<T>::max()), campo, &semSinal);
        v = std::is_signed_v<T> ? static_cast<T>(valor) : static_cast<T>(semSinal);
    } else if constexpr (std::is_same_v<T, CString> || std::is_same_v<T, CQZMoeda> || std::is_same_v<T, REG_QZDMA> ||
                         std::is_same_v<T, REG_QZMA> || std::is_same_v<T, REG_QZDMAHMSUTC> ||
                         std::is_same_v<T, REG_QZDMC> || std::is_same_v<T, _REG_POSICAO_PRODUTOPS>) {
        De(j, v, campo);
    } else {
        DeCampos(j, v, campo);
    }
}

}  // namespace pxjson

// The JSON object of a record, with its type and (for records keyed by
// position) its position.
template <class R>
nlohmann::ordered_json PXRegistroParaJson(const R& r) {
    pxjson::Json obj = pxjson::Json::object();
    obj["type"] = R::kNomeTipo;
    if constexpr (QZTipoChaveDe<R>() == QZ_CHAVE_POSICAO) obj["Posicao"] = r.GetPosicao();
    pxjson::Escritor e{obj};
    r.VisitaCampos(e);
    return obj;
}

// Fills a record from its JSON object. Missing fields keep their empty
// value; "type", when present, must name the record. Throws CPXErroJson.
template <class R>
void PXRegistroDeJson(const nlohmann::ordered_json& j, R& r) {
    r = R();
    pxjson::ExigeObjeto(j, "");
    if (auto it = j.find("type"); it != j.end() && (!it->is_string() || it->get<std::string>() != R::kNomeTipo))
        pxjson::Falha("type", std::string("esperava \"") + R::kNomeTipo + "\"");
    std::set<std::string> aceitos{"type"};
    if constexpr (QZTipoChaveDe<R>() == QZ_CHAVE_POSICAO) {
        aceitos.insert("Posicao");
        if (auto it = j.find("Posicao"); it != j.end()) {
            uint32_t posicao = 0;
            pxjson::DeValor(*it, posicao, "Posicao");
            r.SetPosicao(posicao);
        }
    }
    pxjson::DeCampos(j, r, "", aceitos);
}

// Fills a record from the members of its JSON object as a reader hands them
// over, without the object's tree, with PXRegistroDeJson's checks and
// messages. A bad value does not stop the reading (a broken line further on
// is told first); Termina then throws the error PXRegistroDeJson would: the
// type, the position, the first bad field in the record's order, and only
// then the first unknown member.
class IPXRegistroMembros : public pxjson::IPXMembrosJson {
public:
    // Starts on `r`, a new record of the type.
    virtual void Inicia(TQZBaseParaDados& r) = 0;
    // Throws CPXErroJson when a member was refused.
    virtual void Termina() = 0;
};

template <class R>
class CPXRegistroMembros final : public IPXRegistroMembros {
public:
    void Inicia(TQZBaseParaDados& r) override {
        m_reg = &static_cast<R&>(r);
        m_enderecos.clear();
        Enderecos e{m_enderecos};
        m_reg->VisitaCampos(e);
        m_vistos.assign(kPrimeiroCampo + Campos().size(), false);
        m_desconhecidos.clear();
        m_temErro = false;
        m_atual = kIgnorado;
    }

    bool Chave(std::string_view chave) override {
        const size_t i = Indice(chave);
        if (i == kIgnorado) {
            for (const std::string& d : m_desconhecidos)
                if (d == chave) return false;
            m_desconhecidos.emplace_back(chave);
            if (!m_temErro) Registra(kIgnorado, pxjson::Trecho(chave), "campo desconhecido");
        } else {
            if (m_vistos[i]) return false;
            m_vistos[i] = true;
            m_proximo = i + 1;
        }
        m_atual = i;
        return true;
    }

    void Valor(pxjson::Json&& v) override {
        // Past the first error in the record's order nothing more is told.
        if (m_atual == kIgnorado || (m_temErro && m_ordemErro <= m_atual)) return;
        try {
            if (m_atual == kTipo) {
                if (!v.is_string() || v.get_ref<const std::string&>() != R::kNomeTipo)
                    pxjson::Falha("type", std::string("esperava \"") + R::kNomeTipo + "\"");
            } else if (m_atual == kPosicao) {
                if constexpr (QZTipoChaveDe<R>() == QZ_CHAVE_POSICAO) {
                    uint32_t posicao = 0;
                    pxjson::DeValor(v, posicao, "Posicao");
                    m_reg->SetPosicao(posicao);
                }
            } else {
                const CampoLido& c = Campos()[m_atual - kPrimeiroCampo];
                c.converte(v, m_enderecos[m_atual - kPrimeiroCampo], c.nome);
            }
        } catch (const CPXErroJson& e) {
            Registra(m_atual, e.Campo(), e.what());
        }
    }

    void Texto(const std::string& v) override {
        if (m_atual < kPrimeiroCampo || m_atual == kIgnorado || (m_temErro && m_ordemErro <= m_atual))
            return IPXRegistroMembros::Texto(v);
        const CampoLido& c = Campos()[m_atual - kPrimeiroCampo];
        try {
            c.converteTexto(v, m_enderecos[m_atual - kPrimeiroCampo], c.nome);
        } catch (const CPXErroJson& e) {
            Registra(m_atual, e.Campo(), e.what());
        }
    }

    void Termina() override {
        if (m_temErro) throw CPXErroJson(m_campoErro, m_motivoErro);
    }

private:
    using Conversor = void (*)(const pxjson::Json&, void*, const std::string&);
    using ConversorTexto = void (*)(const std::string&, void*, const std::string&);
    struct CampoLido {
        std::string nome;
        Conversor converte;
        ConversorTexto converteTexto;
    };
    // Members in the order their errors go: the type, the position, the
    // fields as declared; kIgnorado, an unknown member, last.
    static constexpr size_t kTipo = 0, kPosicao = 1, kPrimeiroCampo = 2;
    static constexpr size_t kIgnorado = std::numeric_limits<size_t>::max();

    template <class T>
    static void ConverteCampo(const pxjson::Json& j, void* v, const std::string& nome) {
        pxjson::DeValor(j, *static_cast<T*>(v), nome);
    }
    template <class T>
    static void ConverteTexto(const std::string& s, void* v, const std::string& nome) {
        pxjson::DeValorTexto(s, *static_cast<T*>(v), nome);
    }
    static void ListaDeTexto(const std::string&, void*, const std::string& nome) {
        pxjson::Falha(nome, "esperava uma lista (array JSON)");
    }
    template <class E>
    static void ConverteLista(const pxjson::Json& j, void* v, const std::string& nome) {
        auto& l = *static_cast<std::vector<E>*>(v);
        l.clear();
        if (!j.is_array()) pxjson::Falha(nome, "esperava uma lista (array JSON)");
        for (size_t i = 0; i < j.size(); ++i) {
            E e;
            pxjson::DeValor(j[i], e, nome + "[" + std::to_string(i) + "]");
            l.push_back(std::move(e));
        }
    }
    struct Tabela {
        std::vector<CampoLido> campos;
        template <class T>
        void Campo(const char* nome, T&, unsigned) {
            campos.push_back({nome, &ConverteCampo<T>, &ConverteTexto<T>});
        }
        template <class E>
        void Lista(const char* nome, std::vector<E>&) {
            campos.push_back({nome, &ConverteLista<E>, &ListaDeTexto});
        }
    };
    struct Enderecos {
        std::vector<void*>& v;
        template <class T>
        void Campo(const char*, T& campo, unsigned) {
            v.push_back(&campo);
        }
        template <class E>
        void Lista(const char*, std::vector<E>& l) {
            v.push_back(&l);
        }
    };
    // The fields of the type, from its declaration, once.
    static const std::vector<CampoLido>& Campos() {
        static const std::vector<CampoLido> campos = [] {
            Tabela t;
            R modelo;
            modelo.VisitaCampos(t);
            return std::move(t.campos);
        }();
        return campos;
    }

    size_t Indice(std::string_view chave) {
        if (chave == "type") return kTipo;
        if constexpr (QZTipoChaveDe<R>() == QZ_CHAVE_POSICAO)
            if (chave == "Posicao") return kPosicao;
        // Members usually come in the record's order: the search starts
        // after the last one found.
        const auto& campos = Campos();
        const size_t n = campos.size();
        for (size_t k = 0; k < n; ++k) {
            size_t i = (m_proximo >= kPrimeiroCampo ? m_proximo - kPrimeiroCampo : 0) + k;
            if (i >= n) i -= n;
            if (campos[i].nome == chave) return kPrimeiroCampo + i;
        }
        return kIgnorado;
    }

    void Registra(size_t ordem, std::string campo, std::string motivo) {
        m_temErro = true;
        m_ordemErro = ordem;
        m_campoErro = std::move(campo);
        m_motivoErro = std::move(motivo);
    }

    R* m_reg = nullptr;
    std::vector<void*> m_enderecos;
    std::vector<bool> m_vistos;
    std::vector<std::string> m_desconhecidos;
    size_t m_atual = kIgnorado, m_proximo = kPrimeiroCampo;
    bool m_temErro = false;
    size_t m_ordemErro = 0;
    std::string m_campoErro, m_motivoErro;
};
