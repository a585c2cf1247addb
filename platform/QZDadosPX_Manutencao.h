// Display names of a maintenance order's base situations and maintenance
// types, as the record library gives them to messages and screens.
#pragma once

#include <cstdint>

#include "platform/CString.h"

namespace QZDadosPX {
namespace Manutencao {

// Base situations of an order, one bit each. 4 and 32 are both work in
// progress: 4 the order whose work has started, 32 the order whose work goes
// on (after further time entries).
enum ESituacao : uint8_t {
    SITUACAO_ABERTA = 2,
    SITUACAO_INICIADA = 4,
    SITUACAO_CONCLUIDA = 8,
    SITUACAO_CANCELADA = 16,
    SITUACAO_EM_ANDAMENTO = 32,
    SITUACAO_REPROGRAMADA = 64,
};

// Maintenance types of an order. 1 is the order a maintenance plan drives.
enum ETipo : uint8_t {
    TIPO_PREVENTIVA = 1,
    TIPO_CORRETIVA = 2,
    TIPO_PREDITIVA = 3,
    TIPO_DETECTIVA = 4,
    TIPO_MELHORIA = 5,
};

// The name of a single base situation; the empty string for anything else
// (0, combinations of bits, undefined bits).
CString GetNomeSituacao(uint8_t situacao);
// The name of a maintenance type; the empty string for an unknown type.
CString GetNomeTipo(uint8_t tipo);

}  // namespace Manutencao
}  // namespace QZDadosPX
