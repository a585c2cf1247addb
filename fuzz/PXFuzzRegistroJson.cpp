// JSON records of every type the command line knows, read as import and
// save read them: no input crashes the reader or makes a long message, and a
// record the reader accepts is written back to JSON that reads to the same
// record and the same JSON.
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "fuzz/PXFuzzComum.h"
#include "host/PXLeituraJson.h"
#include "host/PXTiposHost.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* dados, size_t tamanho) {
    const std::string_view texto(reinterpret_cast<const char*>(dados), tamanho);
    pxjson::Json j;
    try {
        j = PXLeJson(texto, CPXLimitesJson{});
    } catch (const CPXErroLeituraJson&) {
        return 0;  // the reader's own target checks its refusals
    }
    // The type the record names, as import reads it; every type when it
    // names none, as save reads it.
    std::vector<const IPXTipoHost*> tipos;
    if (auto t = j.is_object() ? j.find("type") : j.end(); t != j.end() && t->is_string())
        if (const IPXTipoHost* tipo = PXBuscaTipoHost(t->get<std::string>())) tipos.push_back(tipo);
    if (tipos.empty())
        for (const auto& tipo : PXTiposHost()) tipos.push_back(tipo.get());
    for (const IPXTipoHost* tipo : tipos) {
        auto registro = tipo->Novo();
        try {
            tipo->DeJson(j, *registro);
        } catch (const CPXErroJson& e) {
            const std::string motivo = e.what();
            PX_FUZZ_EXIGE(MensagemCurta(motivo), "%s: %zu bytes: %.400s", tipo->Nome(), motivo.size(), motivo.c_str());
            PX_FUZZ_EXIGE(e.Campo().size() <= 200, "%s: campo de %zu bytes", tipo->Nome(), e.Campo().size());
            continue;
        }
        pxjson::Json escrito;
        try {
            escrito = tipo->ParaJson(*registro);
        } catch (const CPXErroJson& e) {
            PX_FUZZ_EXIGE(false, "%s: um registro lido não se escreve: %s", tipo->Nome(), e.what());
        }
        auto relido = tipo->Novo();
        try {
            tipo->DeJson(escrito, *relido);
        } catch (const CPXErroJson& e) {
            PX_FUZZ_EXIGE(false, "%s: o que se escreveu não se lê: %s: %s", tipo->Nome(), e.Campo().c_str(), e.what());
        }
        PX_FUZZ_EXIGE(relido->OnIgual(*registro), "%s: %s", tipo->Nome(), escrito.dump().c_str());
        PX_FUZZ_EXIGE(tipo->ParaJson(*relido) == escrito, "%s: %s", tipo->Nome(), escrito.dump().c_str());
    }
    return 0;
}
