#include "host/PXReferencias.h"

#include "host/PXComandos.h"
#include "host/PXTiposHost.h"
#include "store/QZArmazemSQL.h"

namespace {

[[noreturn]] void Recusa(const std::string& texto, const std::string& campo) {
    throw CPXErroEntrada{texto, 0, campo};
}

std::string Ausente(const std::string& alvo, int64_t valor) {
    return "não há " + alvo + " na posição " + std::to_string(valor) + " (0 quer dizer não informado).";
}

// A stored record as its type's key field shows it: a position, or a
// movement key "YYYY-MM/N".
std::string Chave(const std::string& tipo, int64_t chave) {
    const IPXTipoHost* t = PXBuscaTipoHost(tipo);
    if (t && !t->ChavePorPosicao()) {
        const REG_QZDMC dmc = REG_QZDMC::DeValor(static_cast<uint64_t>(chave));
        return t->CampoChave() + std::string(" ") + pxjson::ChaveMovimento(dmc).get<std::string>();
    }
    return (t ? t->CampoChave() : "Posicao") + std::string(" ") + std::to_string(chave);
}

}  // namespace

void PXConfereReferencias(CQZArmazemSQL& armazem, const IPXTipoHost& tipo, const TQZBaseParaDados& reg) {
    for (const CPXReferencia& r : tipo.Referencias(reg)) {
        bool existe = false;
        if (armazem.ExisteRegistro(r.alvo, r.valor, existe) != 0) Recusa(armazem.GetErro().GetMensagem().str(), {});
        if (!existe) Recusa(Ausente(r.alvo, r.valor), r.campo);
    }
}

void PXConfereReferenciasImportadas(CQZArmazemSQL& armazem) {
    std::optional<CQZArmazemSQL::CQZReferenciaPendente> achado;
    if (armazem.BuscaReferenciaPendente(achado) != 0) Recusa(armazem.GetErro().GetMensagem().str(), {});
    if (!achado) return;
    std::string campo;
    for (const auto& i : achado->itens) campo += i.lista + "[" + std::to_string(i.numero) + "].";
    campo += achado->campo;
    Recusa(achado->tipo + " de " + Chave(achado->tipo, achado->chave) + ": " + Ausente(achado->alvo, achado->valor),
           campo);
}
