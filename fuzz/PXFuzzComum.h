// What the fuzz targets share: a finding stops the run with its reason.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

// A property that does not hold: libFuzzer keeps the input that broke it.
#define PX_FUZZ_EXIGE(condicao, ...)                                            \
    do {                                                                         \
        if (!(condicao)) {                                                       \
            std::fprintf(stderr, "propriedade violada: %s\n", #condicao);        \
            std::fprintf(stderr, __VA_ARGS__);                                   \
            std::fprintf(stderr, "\n");                                          \
            std::abort();                                                        \
        }                                                                        \
    } while (0)

// A message shown to the user never grows with the input: a value is quoted
// in at most 80 characters, a field path has at most 32 parts.
inline bool MensagemCurta(const std::string& motivo) { return motivo.size() <= 400; }

// The JSON library's English words never reach the user, unless the input
// itself holds them (a value is quoted as given).
inline bool SemIngles(const std::string& motivo, std::string_view entrada) {
    for (const char* palavra : {"syntax error", "parse error", "unexpected", "expected", "last read", "overflow"})
        if (motivo.find(palavra) != std::string::npos && entrada.find(palavra) == std::string_view::npos) return false;
    return true;
}
