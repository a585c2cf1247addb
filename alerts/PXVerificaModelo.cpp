#include "alerts/PXVerificaModelo.h"

#include <algorithm>
#include <cctype>

#include "alerts/PXModeloEmail.h"

namespace {

// The names a template may use, longest first (so a name is never taken
// for a shorter one it begins with).
std::vector<std::string_view> NomesConhecidos() {
    std::vector<std::string_view> nomes;
    for (const auto& m : kPXMarcadoresCabecalho) nomes.push_back(m.texto);
    for (const auto& m : kPXMarcadoresLinha) nomes.push_back(m.texto);
    nomes.push_back(kPXInicioLista);
    nomes.push_back(kPXFimLista);
    std::sort(nomes.begin(), nomes.end(), [](auto a, auto b) { return a.size() > b.size(); });
    return nomes;
}

bool EhMarcadorLinha(std::string_view t) {
    return std::any_of(std::begin(kPXMarcadoresLinha), std::end(kPXMarcadoresLinha),
                       [&](const CPXMarcadorModelo& m) { return t == m.texto; });
}

// The placeholder-like word at `p`: "QZ_" and the letters, digits and
// underscores after it.
std::string Palavra(std::string_view t, size_t p) {
    size_t f = p + 3;
    while (f < t.size() && (std::isalnum(static_cast<unsigned char>(t[f])) || t[f] == '_')) ++f;
    return std::string(t.substr(p, f - p));
}

void Acha(CPXDiagnosticoModelo& d, CPXAchadoModelo::Tipo tipo, std::string texto) {
    for (const auto& a : d.achados)
        if (a.tipo == tipo && a.texto == texto) return;
    d.achados.push_back({tipo, std::move(texto)});
}

// Values that hold no "QZ_", so whatever "QZ_" is left after a fill was
// never replaced.
DADOS_CORPO_EMAIL Sentinela() {
    DADOS_CORPO_EMAIL d;
    for (const auto& m : kPXMarcadoresCabecalho) d.*m.campo = "#";
    for (const auto& m : kPXMarcadoresLinha) d.*m.campo = "#";
    return d;
}

}  // namespace

CPXDiagnosticoModelo PXVerificaModeloEmail(std::string_view modelo) {
    CPXDiagnosticoModelo d;
    const auto nomes = NomesConhecidos();
    const CPXBlocoModelo bloco = PXAnalisaBloco(modelo);
    d.blocoEncontrado = bloco.encontrado;
    d.linhas = bloco.linhas;
    if (bloco.encontrado && bloco.linhas.empty()) Acha(d, CPXAchadoModelo::BLOCO_SEM_LINHA, bloco.bloco);
    std::vector<std::string> explicados;
    for (const auto& tokens : bloco.tokens) {
        for (const auto& t : tokens) {
            explicados.push_back(t);
            if (PXEhMarcadorCabecalho(t)) {
                Acha(d, CPXAchadoModelo::CABECALHO_NA_LINHA, t);
                continue;
            }
            d.tokensNumerados.push_back(t);
            if (EhMarcadorLinha(t)) continue;
            const bool comecaComNome = std::any_of(nomes.begin(), nomes.end(), [&](std::string_view n) {
                return t.size() > n.size() && t.compare(0, n.size(), n) == 0;
            });
            Acha(d, comecaComNome ? CPXAchadoModelo::COLADO : CPXAchadoModelo::DESCONHECIDO, t);
        }
    }
    // Fill the template as an alert would and see what is left.
    std::string preenchido(modelo);
    if (bloco.encontrado) {
        PXAtualizaConteudoEmail(preenchido, 2);
        PXSubstituiSequencial(preenchido, Sentinela(), {Sentinela(), Sentinela()});
    } else {
        PXSubstituiSequencial(preenchido, Sentinela());
    }
    for (size_t p = preenchido.find("QZ_"); p != std::string::npos; p = preenchido.find("QZ_", p + 3)) {
        const std::string palavra = Palavra(preenchido, p);
        // Row tokens were told above (numbered: the word carries "_0" or "_1").
        const bool daLinha = std::any_of(explicados.begin(), explicados.end(), [&](const std::string& t) {
            return std::string_view(preenchido).substr(p, t.size()) == t;
        });
        if (daLinha) continue;
        const bool deLinha = std::any_of(std::begin(kPXMarcadoresLinha), std::end(kPXMarcadoresLinha),
                                         [&](const CPXMarcadorModelo& m) { return palavra.rfind(m.texto, 0) == 0; });
        Acha(d, deLinha ? CPXAchadoModelo::NAO_SUBSTITUIDO : CPXAchadoModelo::DESCONHECIDO, palavra);
    }
    return d;
}

const char* PXNomeAchado(CPXAchadoModelo::Tipo tipo) {
    switch (tipo) {
        case CPXAchadoModelo::DESCONHECIDO: return "marcador desconhecido";
        case CPXAchadoModelo::COLADO: return "marcador colado a outro texto (nunca será substituído)";
        case CPXAchadoModelo::CABECALHO_NA_LINHA: return "marcador de cabeçalho na linha (mesmo valor em todas as linhas)";
        case CPXAchadoModelo::NAO_SUBSTITUIDO: return "marcador de linha fora da linha da lista (nunca será substituído)";
        case CPXAchadoModelo::BLOCO_SEM_LINHA: return "bloco de lista sem linha a repetir";
    }
    return "";
}

const char* PXChaveAchado(CPXAchadoModelo::Tipo tipo) {
    switch (tipo) {
        case CPXAchadoModelo::DESCONHECIDO: return "unknown";
        case CPXAchadoModelo::COLADO: return "glued";
        case CPXAchadoModelo::CABECALHO_NA_LINHA: return "header_in_row";
        case CPXAchadoModelo::NAO_SUBSTITUIDO: return "never_replaced";
        case CPXAchadoModelo::BLOCO_SEM_LINHA: return "block_without_row";
    }
    return "";
}
