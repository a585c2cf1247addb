// Date and time values of the suite, and the keys of products and movements.
//
// Packing (values are stored and compared in these forms):
//  - REG_QZDMA: a day number. 0 = empty, 1 = the day before the first valid
//    date, 2 = 1 January 0001, 0xFFEB7 = 31 December 2870 (proleptic
//    Gregorian calendar). Valid exactly when 2 <= value <= 0xFFEB7.
//  - REG_QZMA: year in the leading 16-bit member, month (1..12) after it;
//    empty when the year is 0. Packed as year * 16 + month, so packed values
//    sort in calendar order.
//  - REG_QZDMAHMSUTC: 64 bits. Bits 0..16 hold the second of the day
//    (0..86399), bits 17..37 the REG_QZDMA day number; these 38 bits are the
//    date and time. Bits 38..45 hold the UTC offset of the local time in
//    quarter hours (signed 8-bit); comparisons of stamps ignore them.
//  - REG_QZDMC: key of a movement record: the month file (REG_QZMA) and the
//    record number inside it. Packed as (year * 16 + month) << 32 | number.
#pragma once

#include <compare>
#include <cstdint>

#include "platform/CString.h"

struct REG_QZDMA {
    // How a date is written by the platform's formatter.
    enum TIPO_DATA_DMA {
        TIPO_DATA_DMA_DDMMAAAA = 0,   // "22/11/2026"
        TIPO_DATA_DMA_DDMMAA = 1,     // "22/11/26"
        TIPO_DATA_DMA_MMAAAA = 2,     // "112026"
        TIPO_DATA_DMA_MMAA = 3,       // "1126"
        TIPO_DATA_DMA_AAAAMMDD = 4,   // "20261122"
        TIPO_DATA_DMA_AAAAMM = 5,     // "202611"
    };

    uint32_t ulValor = 0;

    REG_QZDMA() = default;
    explicit REG_QZDMA(uint32_t valor) : ulValor(valor) {}
    REG_QZDMA(int dia, int mes, int ano);

    static constexpr uint32_t kMinimo = 2;
    static constexpr uint32_t kMaximo = 0xFFEB7;

    bool EhValida() const { return ulValor - kMinimo <= kMaximo - kMinimo; }
    bool EhVazia() const { return ulValor == 0; }
    // Day, month and year of a valid date; all 0 otherwise.
    void Decompoe(int& dia, int& mes, int& ano) const;
    int GetDia() const;
    int GetMes() const;
    int GetAno() const;
    CString Formata(TIPO_DATA_DMA tipo = TIPO_DATA_DMA_DDMMAAAA) const;

    // Calendar arithmetic on a valid date; an invalid date stays as it is. A
    // month or year addition that lands past the end of a shorter month takes
    // that month's last day (31 January + 1 month = 28 or 29 February). A
    // result outside the calendar (before 0001 or after 2870) is empty.
    REG_QZDMA SomaDias(int64_t dias) const;
    REG_QZDMA SomaMeses(int64_t meses) const;
    REG_QZDMA SomaAnos(int64_t anos) const;

    friend auto operator<=>(const REG_QZDMA&, const REG_QZDMA&) = default;
};

struct REG_QZMA {
    uint16_t usAno = 0;
    uint16_t usMes = 0;

    REG_QZMA() = default;
    REG_QZMA(int mes, int ano) : usAno(static_cast<uint16_t>(ano)), usMes(static_cast<uint16_t>(mes)) {}
    explicit REG_QZMA(const REG_QZDMA& data);

    bool EhVazio() const { return usAno == 0; }
    bool EhValido() const { return usAno != 0 && usMes >= 1 && usMes <= 12; }
    uint32_t GetValor() const { return static_cast<uint32_t>(usAno) * 16u + usMes; }
    static REG_QZMA DeValor(uint32_t v) { return REG_QZMA(static_cast<int>(v % 16), static_cast<int>(v / 16)); }
    CString Formata(REG_QZDMA::TIPO_DATA_DMA tipo) const;

    friend bool operator==(const REG_QZMA&, const REG_QZMA&) = default;
    friend auto operator<=>(const REG_QZMA& a, const REG_QZMA& b) { return a.GetValor() <=> b.GetValor(); }
};

struct REG_QZDMAHMSUTC {
    uint64_t ullValor = 0;

    static constexpr uint64_t kMascaraDataHora = 0x3FFFFFFFFFull;  // low 38 bits

    REG_QZDMAHMSUTC() = default;
    explicit REG_QZDMAHMSUTC(uint64_t valor) : ullValor(valor) {}
    REG_QZDMAHMSUTC(const REG_QZDMA& data, int hora, int minuto, int segundo, int fusoQuartosHora = 0);
    REG_QZDMAHMSUTC(int dia, int mes, int ano, int hora, int minuto, int segundo)
        : REG_QZDMAHMSUTC(REG_QZDMA(dia, mes, ano), hora, minuto, segundo) {}

    REG_QZDMA GetData() const { return REG_QZDMA(static_cast<uint32_t>((ullValor >> 17) & 0x1FFFFF)); }
    uint32_t GetSegundosDoDia() const { return static_cast<uint32_t>(ullValor & 0x1FFFF); }
    int GetHora() const { return static_cast<int>(GetSegundosDoDia() / 3600); }
    int GetMinuto() const { return static_cast<int>(GetSegundosDoDia() / 60 % 60); }
    int GetSegundo() const { return static_cast<int>(GetSegundosDoDia() % 60); }
    int GetFusoQuartosHora() const { return static_cast<int8_t>((ullValor >> 38) & 0xFF); }
    uint64_t GetDataHora() const { return ullValor & kMascaraDataHora; }
    bool EhVazio() const { return GetDataHora() == 0; }
    // A real instant: a valid date and a second of that day.
    bool EhValido() const { return GetData().EhValida() && GetSegundosDoDia() < 86400; }
    // Seconds since the calendar's first day in UTC (the local time less its
    // offset), so values written under different offsets compare as instants.
    int64_t GetInstanteUtc() const {
        return static_cast<int64_t>(GetData().ulValor) * 86400 + GetSegundosDoDia() -
               static_cast<int64_t>(GetFusoQuartosHora()) * 900;
    }
    // The same instant one second later (for strictly increasing save stamps).
    REG_QZDMAHMSUTC MaisUmSegundo() const;
    CString Formata() const;  // "22/11/2026 14:05:09"

    friend auto operator<=>(const REG_QZDMAHMSUTC&, const REG_QZDMAHMSUTC&) = default;
};

struct REG_QZDMC {
    // How DmcToString writes a key.
    enum TIPO_PONTEIRO_DMC {
        TIPO_PONTEIRO_DMC_PADRAO = 0,   // "11/2026-000042"
        TIPO_PONTEIRO_DMC_NUMERO = 1,   // "42"
    };

    REG_QZMA ma;
    uint32_t ulNumero = 0;

    REG_QZDMC() = default;
    REG_QZDMC(const REG_QZMA& m, uint32_t numero) : ma(m), ulNumero(numero) {}

    bool EhValido() const { return ma.EhValido() && ulNumero != 0; }
    bool EhVazio() const { return !EhValido(); }
    uint64_t GetValor() const { return (static_cast<uint64_t>(ma.GetValor()) << 32) | ulNumero; }
    static REG_QZDMC DeValor(uint64_t v) {
        return REG_QZDMC(REG_QZMA::DeValor(static_cast<uint32_t>(v >> 32)), static_cast<uint32_t>(v));
    }

    friend bool operator==(const REG_QZDMC&, const REG_QZDMC&) = default;
    friend auto operator<=>(const REG_QZDMC& a, const REG_QZDMC& b) { return a.GetValor() <=> b.GetValor(); }
};

CString DmcToString(const REG_QZDMC& chave, REG_QZDMC::TIPO_PONTEIRO_DMC tipo = REG_QZDMC::TIPO_PONTEIRO_DMC_PADRAO);

// Names the rule contracts use for the same values.
using CQZDma = REG_QZDMA;
using CQZMa = REG_QZMA;

// Key of a product or service: the item, then its grid positions.
struct _REG_POSICAO_PRODUTOPS {
    uint32_t lPonteiroProduto = 0;
    uint16_t usPonteiroGrade1 = 0;
    uint16_t usPonteiroGrade2 = 0;
    uint16_t usPonteiroGrade3 = 0;

    friend auto operator<=>(const _REG_POSICAO_PRODUTOPS&, const _REG_POSICAO_PRODUTOPS&) = default;
};
