#include "host/PXTiposHost.h"

#include "platform/records/Registros.h"
#include "rules/PXTrataDadosPrioridade.h"

namespace {

template <class R>
CPXTipoHost<R>& Tipo(std::vector<std::unique_ptr<IPXTipoHost>>& tipos) {
    auto tipo = std::make_unique<CPXTipoHost<R>>();
    auto& ref = *tipo;
    tipos.push_back(std::move(tipo));
    return ref;
}

std::vector<std::unique_ptr<IPXTipoHost>> MontaTipos() {
    std::vector<std::unique_ptr<IPXTipoHost>> t;
    // Enterprise records: loaded by import, read by the rules.
    Tipo<CQZDadosGT_Filial>(t);
    Tipo<CQZDadosGT_PeriodoContabil>(t);
    Tipo<CQZDadosGT_Usuario>(t);
    Tipo<CQZDadosGT_ProdutoEx>(t);
    Tipo<CQZDadosGT_Servico>(t);
    // The module's registers, with their handlers.
    Tipo<CQZDadosPX_Prioridade>(t).Com<CPXTrataDadosPrioridade>();
    Tipo<CQZDadosPX_Situacao>(t);
    return t;
}

}  // namespace

const std::vector<std::unique_ptr<IPXTipoHost>>& PXTiposHost() {
    static const auto tipos = MontaTipos();
    return tipos;
}

const IPXTipoHost* PXBuscaTipoHost(const std::string& nome) {
    const IPXTipoHost* achado = nullptr;
    for (const auto& t : PXTiposHost()) {
        const std::string completo = t->Nome();
        if (completo == nome) return t.get();
        const auto sub = completo.find('_');
        if (sub != std::string::npos && completo.substr(sub + 1) == nome) {
            if (achado) return nullptr;
            achado = t.get();
        }
    }
    return achado;
}
