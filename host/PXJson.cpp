#include "host/PXJson.h"

#include <charconv>
#include <cstdio>

namespace pxjson {

namespace {

constexpr size_t kCaracteresCitados = 80;

bool Continuacao(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

// User input quoted in a message, in the library's Windows-1252: a character
// without a form there (or a byte that is not UTF-8) becomes one '?'.
std::string Cp(std::string_view utf8) {
    std::string cp1252, um;
    if (QZUtf8ParaCp1252(utf8, cp1252)) return cp1252;
    cp1252.clear();
    for (size_t i = 0; i < utf8.size();) {
        size_t fim = i + 1;
        while (fim < utf8.size() && Continuacao(utf8[fim])) ++fim;
        cp1252 += QZUtf8ParaCp1252(utf8.substr(i, fim - i), um) ? um : "?";
        i = fim;
    }
    return cp1252;
}

// A JSON value for a message: scalars as written (a number's text is short),
// texts cut, containers by kind only.
std::string DescreveTexto(const std::string& s) { return "\"" + Trecho(s) + "\""; }
std::string Descreve(const Json& j) {
    if (j.is_string()) return DescreveTexto(j.get_ref<const std::string&>());
    if (j.is_array()) return "uma lista";
    if (j.is_object()) return "um objeto";
    return j.dump();
}

bool SoDigitos(std::string_view s) {
    for (char c : s)
        if (c < '0' || c > '9') return false;
    return !s.empty();
}

// Exactly `n` digits at the start of `s`, consumed.
bool Numero(std::string_view& s, size_t n, int& v) {
    if (s.size() < n || !SoDigitos(s.substr(0, n))) return false;
    std::from_chars(s.data(), s.data() + n, v);
    s.remove_prefix(n);
    return true;
}

bool Caractere(std::string_view& s, char c) {
    if (s.empty() || s.front() != c) return false;
    s.remove_prefix(1);
    return true;
}

}  // namespace

std::string Trecho(std::string_view utf8) {
    size_t fim = 0;
    for (size_t caracteres = 0; fim < utf8.size(); ++caracteres) {
        if (caracteres == kCaracteresCitados) break;
        ++fim;
        while (fim < utf8.size() && Continuacao(utf8[fim])) ++fim;
    }
    std::string trecho = Cp(utf8.substr(0, fim));
    // Control characters would act on the terminal, or cut the text.
    for (char& c : trecho)
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) c = '?';
    if (fim < utf8.size()) trecho += "...";
    return trecho;
}

ResultadoLeitura LeMoeda(std::string_view s, CQZMoeda& v) {
    constexpr uint64_t kMaximo = static_cast<uint64_t>(std::numeric_limits<int64_t>::max());
    const bool negativo = Caractere(s, '-');
    const size_t ponto = s.find('.');
    const std::string_view inteira = s.substr(0, ponto);
    const std::string_view decimais = ponto == std::string_view::npos ? std::string_view() : s.substr(ponto + 1);
    if (!SoDigitos(inteira) || (ponto != std::string_view::npos && (decimais.size() > 4 || !SoDigitos(decimais))))
        return ResultadoLeitura::ForaDaForma;
    uint64_t unidades = 0, fracao = 0;
    if (std::from_chars(inteira.data(), inteira.data() + inteira.size(), unidades).ec != std::errc())
        return ResultadoLeitura::ForaDaFaixa;
    std::from_chars(decimais.data(), decimais.data() + decimais.size(), fracao);
    for (size_t casas = decimais.size(); casas < 4; ++casas) fracao *= 10;
    // The most negative amount has no positive counterpart.
    const uint64_t limite = negativo ? kMaximo + 1 : kMaximo;
    if (unidades > (limite - fracao) / CQZMoeda::kEscala) return ResultadoLeitura::ForaDaFaixa;
    const uint64_t bruto = unidades * CQZMoeda::kEscala + fracao;
    v = CQZMoeda::DeBruto(negativo ? static_cast<int64_t>(0 - bruto) : static_cast<int64_t>(bruto));
    return ResultadoLeitura::Lido;
}

// The date at the start of `s`, consumed.
static bool DataNoInicio(std::string_view& s, REG_QZDMA& v) {
    int ano = 0, mes = 0, dia = 0;
    if (!Numero(s, 4, ano) || !Caractere(s, '-') || !Numero(s, 2, mes) || !Caractere(s, '-') || !Numero(s, 2, dia))
        return false;
    v = REG_QZDMA(dia, mes, ano);
    return v.EhValida();
}

bool LeData(std::string_view s, REG_QZDMA& v) {
    REG_QZDMA lida;
    if (!DataNoInicio(s, lida) || !s.empty()) return false;
    v = lida;
    return true;
}

static bool MesAnoNoInicio(std::string_view& s, REG_QZMA& v) {
    int ano = 0, mes = 0;
    if (!Numero(s, 4, ano) || !Caractere(s, '-') || !Numero(s, 2, mes)) return false;
    v = REG_QZMA(mes, ano);
    return v.EhValido();
}

bool LeMesAno(std::string_view s, REG_QZMA& v) {
    REG_QZMA lido;
    if (!MesAnoNoInicio(s, lido) || !s.empty()) return false;
    v = lido;
    return true;
}

bool LeCarimbo(std::string_view s, REG_QZDMAHMSUTC& v) {
    REG_QZDMA data;
    int h = 0, mi = 0, seg = 0, fusoH = 0, fusoM = 0;
    if (!DataNoInicio(s, data) || !Caractere(s, 'T') || !Numero(s, 2, h) || !Caractere(s, ':') ||
        !Numero(s, 2, mi) || !Caractere(s, ':') || !Numero(s, 2, seg))
        return false;
    const bool negativo = Caractere(s, '-');
    if ((!negativo && !Caractere(s, '+')) || !Numero(s, 2, fusoH) || !Caractere(s, ':') || !Numero(s, 2, fusoM) ||
        !s.empty())
        return false;
    const int fuso = (fusoH * 60 + fusoM) * (negativo ? -1 : 1);
    if (h > 23 || mi > 59 || seg > 59 || fusoM > 59 || fuso % 15 != 0 || fuso / 15 < -128 || fuso / 15 > 127)
        return false;
    v = REG_QZDMAHMSUTC(data, h, mi, seg, fuso / 15);
    return true;
}

bool LeChaveMovimento(std::string_view s, REG_QZDMC& v) {
    REG_QZMA ma;
    uint32_t numero = 0;
    if (!MesAnoNoInicio(s, ma) || !Caractere(s, '/') || s.size() > 10 || !SoDigitos(s) ||
        std::from_chars(s.data(), s.data() + s.size(), numero).ec != std::errc())
        return false;
    v = REG_QZDMC(ma, numero);
    return true;
}

void Falha(const std::string& campo, const std::string& motivo) { throw CPXErroJson(campo, motivo); }

void ExigeObjeto(const Json& j, const std::string& campo) {
    if (!j.is_object()) Falha(campo.empty() ? std::string("(registro)") : campo, "esperava um objeto JSON");
}

int64_t Inteiro(const Json& j, int64_t minimo, uint64_t maximo, const std::string& campo, uint64_t* semSinal) {
    const std::string faixa = "entre " + std::to_string(minimo) + " e " + std::to_string(maximo);
    if (j.is_number_unsigned()) {
        uint64_t v = j.get<uint64_t>();
        if (v > maximo) Falha(campo, "o valor " + Descreve(j) + " não está " + faixa);
        if (semSinal) *semSinal = v;
        return static_cast<int64_t>(v);
    }
    if (j.is_number_integer()) {
        int64_t v = j.get<int64_t>();
        if (v < minimo || (v >= 0 && static_cast<uint64_t>(v) > maximo))
            Falha(campo, "o valor " + Descreve(j) + " não está " + faixa);
        if (semSinal) *semSinal = static_cast<uint64_t>(v);
        return v;
    }
    Falha(campo, "esperava um número inteiro " + faixa + ", veio " + Descreve(j));
}

template <class T, class DeTexto>
void DeForma(const std::string& s, T& v, const std::string& campo, const char* forma, DeTexto deTexto) {
    if (s.empty())
        v = T();
    else if (!deTexto(s, v))
        Falha(campo, "valor inválido " + DescreveTexto(s) + ": esperava " + forma);
}

// A value written in its calendar form, as "" when empty, or as its packed
// integer when it has no calendar form. `deInteiro` and `deTexto` answer
// false on a value out of range or a text not in the form.
template <class T, class DeInteiro, class DeTexto>
void DeFormaOuInteiro(const Json& j, T& v, const std::string& campo, const char* forma, DeInteiro deInteiro,
                      DeTexto deTexto) {
    if (j.is_number_integer() || j.is_number_unsigned()) {
        uint64_t inteiro = 0;
        Inteiro(j, 0, std::numeric_limits<uint64_t>::max(), campo, &inteiro);
        if (!deInteiro(inteiro, v)) Falha(campo, "o valor " + Descreve(j) + " está fora da faixa");
    } else if (!j.is_string()) {
        Falha(campo, std::string("esperava o texto ") + forma + " (ou o valor inteiro gravado)");
    } else {
        DeForma(j.get_ref<const std::string&>(), v, campo, forma, deTexto);
    }
}

Json Texto(const CString& v) {
    std::string utf8;
    // The store holds only Windows-1252 text; a record made in memory may not.
    if (!QZCp1252ParaUtf8(v.str(), utf8)) {
        for (size_t i = 0; i < v.str().size(); ++i) {
            if (!QZCp1252ParaUtf8(v.str().substr(i, 1), utf8)) {
                char byte[8];
                std::snprintf(byte, sizeof byte, "0x%02X", static_cast<unsigned char>(v.str()[i]));
                throw CPXErroJson("", std::string("texto inválido: o byte ") + byte + ", na posição " +
                                          std::to_string(i + 1) + ", não é um caractere Windows-1252");
            }
        }
    }
    return utf8;
}

void De(const Json& j, CString& v, const std::string& campo) {
    if (!j.is_string()) Falha(campo, "esperava um texto, veio " + Descreve(j));
    DeTexto(j.get_ref<const std::string&>(), v, campo);
}

void DeTexto(const std::string& utf8, CString& v, const std::string& campo) {
    // ASCII is the same text in both encodings.
    if (std::all_of(utf8.begin(), utf8.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; })) {
        v = CString(utf8);
        return;
    }
    std::string cp1252;
    if (!QZUtf8ParaCp1252(utf8, cp1252)) {
        // Name the first character that has no form.
        size_t caractere = 0;
        for (size_t i = 0; i < utf8.size(); ++caractere) {
            size_t fim = i + 1;
            while (fim < utf8.size() && Continuacao(utf8[fim])) ++fim;
            const std::string um = utf8.substr(i, fim - i);
            const auto lider = static_cast<unsigned char>(um[0]);
            const size_t bytes = lider < 0x80 ? 1 : (lider & 0xE0) == 0xC0 ? 2 : (lider & 0xF0) == 0xE0 ? 3 : 4;
            if (bytes != um.size() || (lider >= 0x80 && (lider & 0xC0) != 0xC0) || lider >= 0xF8)
                Falha(campo, "texto que não é UTF-8, na posição " + std::to_string(caractere + 1));
            if (!QZUtf8ParaCp1252(um, cp1252)) {
                char32_t cp = static_cast<unsigned char>(um[0]) & (um.size() == 2 ? 0x1F : um.size() == 3 ? 0x0F : 0x07);
                for (size_t k = 1; k < um.size(); ++k) cp = (cp << 6) | (static_cast<unsigned char>(um[k]) & 0x3F);
                char nome[16];
                std::snprintf(nome, sizeof nome, "U+%04X", static_cast<unsigned>(cp));
                Falha(campo, std::string("texto sem forma em Windows-1252: o caractere ") + nome + ", na posição " +
                                 std::to_string(caractere + 1));
            }
            i = fim;
        }
        Falha(campo, "texto sem forma em Windows-1252");
    }
    v = CString(std::move(cp1252));
}

Json Moeda(const CQZMoeda& v) {
    const int64_t bruto = v.GetBruto();
    const uint64_t absoluto = bruto < 0 ? 0 - static_cast<uint64_t>(bruto) : static_cast<uint64_t>(bruto);
    char texto[40];
    std::snprintf(texto, sizeof texto, "%s%llu.%04llu", bruto < 0 ? "-" : "",
                  static_cast<unsigned long long>(absoluto / 10000), static_cast<unsigned long long>(absoluto % 10000));
    return texto;
}

void De(const Json& j, CQZMoeda& v, const std::string& campo) {
    constexpr uint64_t kMaximo = static_cast<uint64_t>(std::numeric_limits<int64_t>::max());
    if (j.is_number_integer() || j.is_number_unsigned()) {
        int64_t inteiro = Inteiro(j, std::numeric_limits<int64_t>::min() / 10000, kMaximo / 10000, campo, nullptr);
        v = CQZMoeda::DeInteiro(inteiro);
        return;
    }
    if (!j.is_string())
        Falha(campo, "esperava um valor decimal em texto com até quatro casas, como \"12.5\", veio " + Descreve(j));
    DeTexto(j.get_ref<const std::string&>(), v, campo);
}

void DeTexto(const std::string& s, CQZMoeda& v, const std::string& campo) {
    const ResultadoLeitura r = LeMoeda(s, v);
    if (r == ResultadoLeitura::ForaDaForma)
        Falha(campo,
              "esperava um valor decimal em texto com até quatro casas, como \"12.5\", veio " + DescreveTexto(s));
    if (r == ResultadoLeitura::ForaDaFaixa) Falha(campo, "o valor " + DescreveTexto(s) + " excede a faixa da moeda");
}

Json Data(const REG_QZDMA& v) {
    if (v.EhVazia()) return "";
    if (!v.EhValida()) return v.ulValor;
    char texto[16];
    std::snprintf(texto, sizeof texto, "%04d-%02d-%02d", v.GetAno(), v.GetMes(), v.GetDia());
    return texto;
}

void DeTexto(const std::string& s, REG_QZDMA& v, const std::string& campo) {
    DeForma(s, v, campo, "AAAA-MM-DD, um dia entre 0001-01-01 e 2870-12-31", LeData);
}

void De(const Json& j, REG_QZDMA& v, const std::string& campo) {
    DeFormaOuInteiro(
        j, v, campo, "AAAA-MM-DD, um dia entre 0001-01-01 e 2870-12-31",
        [](uint64_t i, REG_QZDMA& d) { return i <= 0xFFFFFFFFu && (d = REG_QZDMA(static_cast<uint32_t>(i)), true); },
        LeData);
}

Json MesAno(const REG_QZMA& v) {
    if (v.usAno == 0 && v.usMes == 0) return "";
    if (!v.EhValido() || v.usAno > 9999) return v.GetValor();
    char texto[16];
    std::snprintf(texto, sizeof texto, "%04u-%02u", static_cast<unsigned>(v.usAno), static_cast<unsigned>(v.usMes));
    return texto;
}

void DeTexto(const std::string& s, REG_QZMA& v, const std::string& campo) {
    DeForma(s, v, campo, "AAAA-MM", LeMesAno);
}

void De(const Json& j, REG_QZMA& v, const std::string& campo) {
    // The packed value is year * 16 + month, both 16-bit.
    DeFormaOuInteiro(
        j, v, campo, "AAAA-MM",
        [](uint64_t i, REG_QZMA& m) { return i <= 0xFFFFFu && (m = REG_QZMA::DeValor(static_cast<uint32_t>(i)), true); },
        LeMesAno);
}

Json Carimbo(const REG_QZDMAHMSUTC& v) {
    if (v.ullValor == 0) return "";
    // Only bits 0..45 carry the instant and its offset.
    if (!v.GetData().EhValida() || v.GetSegundosDoDia() >= 86400 || (v.ullValor >> 46) != 0) return v.ullValor;
    const int fuso = v.GetFusoQuartosHora() * 15;
    const int fusoAbs = fuso < 0 ? -fuso : fuso;
    char texto[40];
    std::snprintf(texto, sizeof texto, "%sT%02d:%02d:%02d%c%02d:%02d", Data(v.GetData()).get<std::string>().c_str(),
                  v.GetHora(), v.GetMinuto(), v.GetSegundo(), fuso < 0 ? '-' : '+', fusoAbs / 60, fusoAbs % 60);
    return texto;
}

void DeTexto(const std::string& s, REG_QZDMAHMSUTC& v, const std::string& campo) {
    DeForma(s, v, campo, "AAAA-MM-DDTHH:MM:SS+HH:MM, com o fuso em múltiplos de 15 minutos", LeCarimbo);
}

void De(const Json& j, REG_QZDMAHMSUTC& v, const std::string& campo) {
    DeFormaOuInteiro(
        j, v, campo, "AAAA-MM-DDTHH:MM:SS+HH:MM, com o fuso em múltiplos de 15 minutos",
        [](uint64_t i, REG_QZDMAHMSUTC& c) { return c = REG_QZDMAHMSUTC(i), true; }, LeCarimbo);
}

Json ChaveMovimento(const REG_QZDMC& v) {
    if (v.GetValor() == 0) return "";
    if (!v.ma.EhValido() || v.ma.usAno > 9999) return v.GetValor();
    return MesAno(v.ma).get<std::string>() + "/" + std::to_string(v.ulNumero);
}

void DeTexto(const std::string& s, REG_QZDMC& v, const std::string& campo) {
    DeForma(s, v, campo, "AAAA-MM/N", LeChaveMovimento);
}

void De(const Json& j, REG_QZDMC& v, const std::string& campo) {
    DeFormaOuInteiro(
        j, v, campo, "AAAA-MM/N",
        [](uint64_t i, REG_QZDMC& c) { return (i >> 32) <= 0xFFFFFu && (c = REG_QZDMC::DeValor(i), true); },
        LeChaveMovimento);
}

Json ChaveProduto(const _REG_POSICAO_PRODUTOPS& v) {
    return Json{{"Produto", v.lPonteiroProduto},
                {"Grade1", v.usPonteiroGrade1},
                {"Grade2", v.usPonteiroGrade2},
                {"Grade3", v.usPonteiroGrade3}};
}

void De(const Json& j, _REG_POSICAO_PRODUTOPS& v, const std::string& campo) {
    ExigeObjeto(j, campo);
    v = _REG_POSICAO_PRODUTOPS();
    for (auto it = j.begin(); it != j.end(); ++it) {
        const std::string parte = campo + "." + Trecho(it.key());
        if (it.key() == "Produto")
            DeValor(*it, v.lPonteiroProduto, parte);
        else if (it.key() == "Grade1")
            DeValor(*it, v.usPonteiroGrade1, parte);
        else if (it.key() == "Grade2")
            DeValor(*it, v.usPonteiroGrade2, parte);
        else if (it.key() == "Grade3")
            DeValor(*it, v.usPonteiroGrade3, parte);
        else
            Falha(parte, "campo desconhecido (a chave tem Produto, Grade1, Grade2 e Grade3)");
    }
}

}  // namespace pxjson
