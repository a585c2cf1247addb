#include "host/PXJson.h"

#include <cstdio>
#include <regex>

namespace pxjson {

namespace {

// User input quoted in a message, in the library's Windows-1252 (characters
// without a form there become '?').
std::string Cp(const std::string& utf8) {
    std::string cp1252;
    if (QZUtf8ParaCp1252(utf8, cp1252)) return cp1252;
    std::string ascii;
    for (char c : utf8) ascii += static_cast<unsigned char>(c) < 0x80 ? c : '?';
    return ascii;
}

// A JSON value as the input wrote it, for messages.
std::string Descreve(const Json& j) { return Cp(j.dump()); }

// Parses the decimal digits of `s` into `v`; false on overflow past `maximo`.
bool Digitos(const std::string& s, uint64_t maximo, uint64_t& v) {
    v = 0;
    for (char c : s) {
        uint64_t d = static_cast<uint64_t>(c - '0');
        if (v > (maximo - d) / 10) return false;
        v = v * 10 + d;
    }
    return true;
}

int Int(const std::ssub_match& m) { return std::stoi(m.str()); }

}  // namespace

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
    } else if (j.get<std::string>().empty()) {
        v = T();
    } else if (!deTexto(j.get<std::string>(), v)) {
        Falha(campo, "valor inválido \"" + Cp(j.get<std::string>()) + "\": esperava " + forma);
    }
}

Json Texto(const CString& v) {
    std::string utf8, erro;
    // The store holds only Windows-1252 text; a record made in memory may not.
    if (!QZCp1252ParaUtf8(v.str(), utf8, &erro)) throw CPXErroJson("", "texto inválido: " + erro);
    return utf8;
}

void De(const Json& j, CString& v, const std::string& campo) {
    if (!j.is_string()) Falha(campo, "esperava um texto, veio " + Descreve(j));
    std::string cp1252, erro;
    if (!QZUtf8ParaCp1252(j.get<std::string>(), cp1252, &erro)) Falha(campo, "texto sem forma em Windows-1252: " + erro);
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
    static const std::regex forma("(-?)([0-9]+)(?:\\.([0-9]{1,4}))?");
    std::smatch m;
    std::string s = j.is_string() ? j.get<std::string>() : std::string();
    if (!j.is_string() || !std::regex_match(s, m, forma))
        Falha(campo, "esperava um valor decimal em texto com até quatro casas, como \"12.5\", veio " + Descreve(j));
    std::string digitos = m[2].str() + (m[3].str() + "0000").substr(0, 4);
    const bool negativo = m[1].length() > 0;
    uint64_t bruto = 0;
    if (!Digitos(digitos, negativo ? kMaximo + 1 : kMaximo, bruto))
        Falha(campo, "o valor " + Cp(s) + " excede a faixa da moeda");
    v = CQZMoeda::DeBruto(negativo ? static_cast<int64_t>(0 - bruto) : static_cast<int64_t>(bruto));
}

Json Data(const REG_QZDMA& v) {
    if (v.EhVazia()) return "";
    if (!v.EhValida()) return v.ulValor;
    char texto[16];
    std::snprintf(texto, sizeof texto, "%04d-%02d-%02d", v.GetAno(), v.GetMes(), v.GetDia());
    return texto;
}

// Day, month and year of "YYYY-MM-DD", checked to name a real day.
static bool LeData(const std::string& s, REG_QZDMA& v) {
    static const std::regex forma("([0-9]{4})-([0-9]{2})-([0-9]{2})");
    std::smatch m;
    if (!std::regex_match(s, m, forma)) return false;
    v = REG_QZDMA(Int(m[3]), Int(m[2]), Int(m[1]));
    return v.EhValida();
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

static bool LeMesAno(const std::string& s, REG_QZMA& v) {
    static const std::regex forma("([0-9]{4})-([0-9]{2})");
    std::smatch m;
    if (!std::regex_match(s, m, forma)) return false;
    v = REG_QZMA(Int(m[2]), Int(m[1]));
    return v.EhValido();
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

static bool LeCarimbo(const std::string& s, REG_QZDMAHMSUTC& v) {
    static const std::regex forma("([0-9]{4}-[0-9]{2}-[0-9]{2})T([0-9]{2}):([0-9]{2}):([0-9]{2})([+-])([0-9]{2}):([0-9]{2})");
    std::smatch m;
    REG_QZDMA data;
    if (!std::regex_match(s, m, forma) || !LeData(m[1].str(), data)) return false;
    const int h = Int(m[2]), mi = Int(m[3]), seg = Int(m[4]);
    const int fuso = (Int(m[6]) * 60 + Int(m[7])) * (m[5].str() == "-" ? -1 : 1);
    if (h > 23 || mi > 59 || seg > 59 || fuso % 15 != 0 || fuso / 15 < -128 || fuso / 15 > 127) return false;
    v = REG_QZDMAHMSUTC(data, h, mi, seg, fuso / 15);
    return true;
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

static bool LeChaveMovimento(const std::string& s, REG_QZDMC& v) {
    static const std::regex forma("([0-9]{4}-[0-9]{2})/([0-9]+)");
    std::smatch m;
    REG_QZMA ma;
    uint64_t numero = 0;
    if (!std::regex_match(s, m, forma) || !LeMesAno(m[1].str(), ma) || !Digitos(m[2].str(), 0xFFFFFFFFu, numero))
        return false;
    v = REG_QZDMC(ma, static_cast<uint32_t>(numero));
    return true;
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
        const std::string parte = campo + "." + it.key();
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
