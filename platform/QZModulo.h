// Modules of the suite, by their numbers in the message tables.
#pragma once

enum QZModulo : int {
    QZ_MODULO_NENHUM = 0,
    QZ_MODULO_GT = 1,          // enterprise layer
    QZ_MODULO_ES = 3,          // stock
    QZ_MODULO_20 = 20,         // module 20 (shared situation messages)
    QZ_MODULO_PX = 28,         // maintenance management
    QZ_MODULO_CONEXAO = 90,    // data-access services
};

