// The JSON reader against the library it is built on: what the reader
// accepts the library parses to the same value; what the library refuses the
// reader refuses; a refusal is short and in Portuguese. Small limits here, so
// that every limit is reached by inputs of a few hundred bytes.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "fuzz/PXFuzzComum.h"
#include "host/PXLeituraJson.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* dados, size_t tamanho) {
    const std::string_view texto(reinterpret_cast<const char*>(dados), tamanho);
    CPXLimitesJson pequenos;
    pequenos.linha = 2048;
    pequenos.texto = 16;
    pequenos.lista = 8;
    for (const CPXLimitesJson& limites : {CPXLimitesJson{}, pequenos}) {
        bool aceito = false;
        pxjson::Json lido;
        try {
            lido = PXLeJson(texto, limites);
            aceito = true;
        } catch (const CPXErroLeituraJson& e) {
            const std::string motivo = e.what();
            PX_FUZZ_EXIGE(MensagemCurta(motivo), "%zu bytes: %.400s", motivo.size(), motivo.c_str());
            PX_FUZZ_EXIGE(SemIngles(motivo, texto), "%s", motivo.c_str());
            PX_FUZZ_EXIGE(e.Campo().size() <= CPXLimitesJson::kProfundidade * 100, "%zu", e.Campo().size());
            PX_FUZZ_EXIGE(e.Linha() >= 1, "%ld", e.Linha());
        }
        // The library, told to return a discarded value instead of throwing.
        const pxjson::Json biblioteca = pxjson::Json::parse(texto.begin(), texto.end(), nullptr, false);
        if (biblioteca.is_discarded()) {
            PX_FUZZ_EXIGE(!aceito, "o leitor aceitou o que a biblioteca recusa");
        } else if (aceito) {
            PX_FUZZ_EXIGE(lido == biblioteca, "%s != %s", lido.dump().c_str(), biblioteca.dump().c_str());
        }
    }
    return 0;
}
