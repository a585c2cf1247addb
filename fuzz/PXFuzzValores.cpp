// The readers of the text forms (currency, date, month, stamp, movement key)
// on any text: none crashes; what one accepts is written back in its form and
// read to the same value; the currency reader agrees with the platform's own
// parser wherever both accept.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "fuzz/PXFuzzComum.h"
#include "host/PXJson.h"

namespace {

using pxjson::Json;

// `s` with the leading zeros of its part after `separador` dropped.
std::string SemZerosDepois(std::string s, char separador) {
    const size_t i = s.find(separador) + 1;
    const size_t primeiro = s.find_first_not_of('0', i);
    s.erase(i, (primeiro == std::string::npos ? s.size() - 1 : primeiro) - i);
    return s;
}

// Every field form read from the JSON text `s`: a refusal names its field
// and stays short.
template <class T>
void PelaFormaJson(const std::string& s) {
    T v{};
    try {
        pxjson::De(Json(s), v, "Campo");
    } catch (const CPXErroJson& e) {
        const std::string motivo = e.what();
        PX_FUZZ_EXIGE(e.Campo() == "Campo", "%s", e.Campo().c_str());
        PX_FUZZ_EXIGE(MensagemCurta(motivo), "%zu bytes", motivo.size());
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* dados, size_t tamanho) {
    const std::string s(reinterpret_cast<const char*>(dados), tamanho);

    const std::string trecho = pxjson::Trecho(s);
    PX_FUZZ_EXIGE(trecho.size() <= 83, "%zu", trecho.size());
    for (char c : trecho) PX_FUZZ_EXIGE(static_cast<unsigned char>(c) >= 0x20 && c != 0x7F, "controle %02X", c);

    CQZMoeda moeda = CQZMoeda::DeBruto(7);
    if (pxjson::LeMoeda(s, moeda) == pxjson::ResultadoLeitura::Lido) {
        CQZMoeda relida;
        const std::string escrita = pxjson::Moeda(moeda).get<std::string>();
        PX_FUZZ_EXIGE(pxjson::LeMoeda(escrita, relida) == pxjson::ResultadoLeitura::Lido && relida == moeda, "%s",
                      escrita.c_str());
        CQZMoeda plataforma;
        if (s.find('\0') == std::string::npos && CQZMoeda::DeTexto(s.c_str(), plataforma))
            PX_FUZZ_EXIGE(plataforma == moeda, "%s: %lld != %lld", s.c_str(),
                          static_cast<long long>(plataforma.GetBruto()), static_cast<long long>(moeda.GetBruto()));
    } else {
        PX_FUZZ_EXIGE(moeda.GetBruto() == 7, "uma recusa alterou o valor");
    }

    REG_QZDMA data;
    if (pxjson::LeData(s, data)) PX_FUZZ_EXIGE(pxjson::Data(data) == s, "%s", s.c_str());
    REG_QZMA mes;
    if (pxjson::LeMesAno(s, mes)) PX_FUZZ_EXIGE(pxjson::MesAno(mes) == s, "%s", s.c_str());
    REG_QZDMAHMSUTC carimbo;
    if (pxjson::LeCarimbo(s, carimbo)) {
        const std::string escrito = pxjson::Carimbo(carimbo).get<std::string>();
        // A zero offset has two spellings; it is written with '+'.
        const bool zeroNegativo = s.size() == 25 && s.compare(19, 6, "-00:00") == 0;
        PX_FUZZ_EXIGE(escrito == (zeroNegativo ? s.substr(0, 19) + "+00:00" : s), "%s -> %s", s.c_str(), escrito.c_str());
    }
    REG_QZDMC chave;
    if (pxjson::LeChaveMovimento(s, chave)) {
        const std::string escrita = pxjson::ChaveMovimento(chave).get<std::string>();
        PX_FUZZ_EXIGE(escrita == SemZerosDepois(s, '/'), "%s -> %s", s.c_str(), escrita.c_str());
    }

    // One field form per input, chosen by its length: a refusal throws, and
    // throwing under the sanitizers costs more than everything else here.
    switch (s.size() % 6) {
        case 0: PelaFormaJson<CQZMoeda>(s); break;
        case 1: PelaFormaJson<REG_QZDMA>(s); break;
        case 2: PelaFormaJson<REG_QZMA>(s); break;
        case 3: PelaFormaJson<REG_QZDMAHMSUTC>(s); break;
        case 4: PelaFormaJson<REG_QZDMC>(s); break;
        default: PelaFormaJson<CString>(s); break;
    }
    return 0;
}
