// Which lists of a record a read loads.
//
// A read operation names the optional parts it wants with its flags. The
// header of a record (its scalar fields) is one row and always comes whole;
// flags choose among its lists only. A record type whose flags mean
// something specialises QZLeituraListas; for every other type a read loads
// every list whatever its flags (their bits are the service's business and
// no rule depends on leaving a list out). Buffered reads load every list
// too, so the cache behind them never hands out a record with a list
// missing.
#pragma once

#include <cstdint>

// The flags of a read that wants everything (hosts' reads, buffered reads).
constexpr uint64_t QZ_LER_TUDO = ~0ull;

template <class R>
struct QZLeituraListas {
    static bool LeLista(uint64_t /*flags*/, const char* /*lista*/) { return true; }
};
