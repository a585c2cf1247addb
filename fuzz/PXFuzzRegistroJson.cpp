// JSON records of every type the command line knows, read as import and
// save read them: no input crashes the reader or makes a long message, and a
// record the reader accepts is written back to JSON that reads to the same
// record and the same JSON. Import's own reader, which fills the record from
// the parser's events without the tree, ends every input as the tree's
// reading ends it: the same record, or the same field and message.
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "fuzz/PXFuzzComum.h"
#include "host/PXLeituraJson.h"
#include "host/PXLeituraRegistros.h"
#include "host/PXTiposHost.h"

namespace {

struct Desfecho {
    bool aceito = false;
    std::string campo, motivo;
    const IPXTipoHost* tipo = nullptr;
    std::unique_ptr<TQZBaseParaDados> reg;
};

// Import's steps over the tree: the value, an object, its type by full name, the record.
Desfecho PelaArvore(std::string_view texto) {
    Desfecho d;
    pxjson::Json j;
    try {
        j = PXLeJson(texto, CPXLimitesJson{});
    } catch (const CPXErroLeituraJson& e) {
        d.campo = e.Campo();
        d.motivo = e.what();
        return d;
    }
    auto t = j.is_object() ? j.find("type") : j.end();
    if (!j.is_object()) {
        d.motivo = "esperava um objeto JSON";
    } else if (t == j.end() || !t->is_string()) {
        d.campo = "type";
        d.motivo = "falta o tipo do registro";
    } else if (const IPXTipoHost* tipo = PXBuscaTipoHost(t->get<std::string>());
               !tipo || t->get<std::string>() != tipo->Nome()) {
        d.campo = "type";
        d.motivo = "tipo de registro desconhecido \"" + pxjson::Trecho(t->get<std::string>()) + "\"";
    } else {
        d.reg = tipo->Novo();
        try {
            tipo->DeJson(j, *d.reg);
            d.aceito = true;
            d.tipo = tipo;
        } catch (const CPXErroJson& e) {
            d.campo = e.Campo();
            d.motivo = e.what();
        }
    }
    return d;
}

void ConfereLeitorDeImportacao(std::string_view texto) {
    // One reader for every input, as import keeps one for every line.
    static CPXLeitorRegistrosJson leitor{CPXLimitesJson{}};
    const Desfecho arvore = PelaArvore(texto);
    Desfecho eventos;
    try {
        eventos.reg = leitor.Le(texto, 1, eventos.tipo);
        eventos.aceito = true;
    } catch (const CPXErroLeituraJson& e) {
        eventos.campo = e.Campo();
        eventos.motivo = e.what();
    }
    PX_FUZZ_EXIGE(eventos.aceito == arvore.aceito, "eventos: %s: %s; árvore: %s: %s", eventos.campo.c_str(),
                  eventos.motivo.c_str(), arvore.campo.c_str(), arvore.motivo.c_str());
    if (!arvore.aceito) {
        PX_FUZZ_EXIGE(eventos.campo == arvore.campo && eventos.motivo == arvore.motivo, "%s: %s != %s: %s",
                      eventos.campo.c_str(), eventos.motivo.c_str(), arvore.campo.c_str(), arvore.motivo.c_str());
        return;
    }
    PX_FUZZ_EXIGE(eventos.tipo == arvore.tipo, "%s != %s", eventos.tipo->Nome(), arvore.tipo->Nome());
    PX_FUZZ_EXIGE(eventos.reg->OnIgual(*arvore.reg), "%s: %s", arvore.tipo->Nome(),
                  arvore.tipo->ParaJson(*arvore.reg).dump().c_str());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* dados, size_t tamanho) {
    const std::string_view texto(reinterpret_cast<const char*>(dados), tamanho);
    ConfereLeitorDeImportacao(texto);
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
