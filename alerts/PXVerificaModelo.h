// What a template will do before any alert uses it: whether it has a list
// block, its row, the tokens the rows will number, and the placeholders
// that will never be replaced.
#pragma once

#include <string>
#include <string_view>
#include <vector>

struct CPXAchadoModelo {
    enum Tipo {
        DESCONHECIDO,        // "QZ_..." that names no placeholder
        COLADO,              // a row token glued to an entity or other text: numbered whole, never replaced
        CABECALHO_NA_LINHA,  // a header placeholder in the row: not numbered, the same value in every row
        NAO_SUBSTITUIDO,     // a line placeholder the list form never reaches (outside the row)
        BLOCO_SEM_LINHA,     // a list block without the row pattern: no line will be shown
    };
    Tipo tipo;
    std::string texto;  // the token as it stands (Windows-1252)
};

struct CPXDiagnosticoModelo {
    bool blocoEncontrado = false;
    std::vector<std::string> linhas;           // the row templates
    std::vector<std::string> tokensNumerados;  // in order, as the rows number them
    std::vector<CPXAchadoModelo> achados;
    bool Limpo() const { return achados.empty(); }
};

CPXDiagnosticoModelo PXVerificaModeloEmail(std::string_view modelo);

// Name of a finding for people ("desconhecido", ...) and for JSON ("unknown", ...).
const char* PXNomeAchado(CPXAchadoModelo::Tipo tipo);
const char* PXChaveAchado(CPXAchadoModelo::Tipo tipo);
