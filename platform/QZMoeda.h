// Fixed-point currency: a 64-bit count of ten-thousandths, like the
// framework's CURRENCY. Quantities and values of the records use it.
#pragma once

#include <compare>
#include <cstdint>

#include "platform/CString.h"

class CQZMoeda {
public:
    static constexpr int64_t kEscala = 10000;

    constexpr CQZMoeda() = default;
    static constexpr CQZMoeda DeBruto(int64_t bruto) { CQZMoeda m; m.m_llBruto = bruto; return m; }
    static constexpr CQZMoeda DeInteiro(int64_t v) { return DeBruto(v * kEscala); }
    // Rounds half away from zero to four decimals.
    static CQZMoeda DeDouble(double v);
    // Parses "-12.3456" (point or comma as decimal separator); false on bad text
    // or more than four decimals.
    static bool DeTexto(const char* texto, CQZMoeda& out);

    constexpr int64_t GetBruto() const { return m_llBruto; }
    // Whole part, truncated toward zero.
    constexpr int64_t GetInteiro() const { return m_llBruto / kEscala; }
    double GetDouble() const { return static_cast<double>(m_llBruto) / kEscala; }
    // Text with n decimals (0..4), rounded half away from zero, point separator.
    CString Formata(int decimais = 2) const;

    constexpr bool EhZero() const { return m_llBruto == 0; }

    friend constexpr auto operator<=>(const CQZMoeda&, const CQZMoeda&) = default;
    friend constexpr CQZMoeda operator+(CQZMoeda a, CQZMoeda b) { return DeBruto(a.m_llBruto + b.m_llBruto); }
    friend constexpr CQZMoeda operator-(CQZMoeda a, CQZMoeda b) { return DeBruto(a.m_llBruto - b.m_llBruto); }
    friend constexpr CQZMoeda operator-(CQZMoeda a) { return DeBruto(-a.m_llBruto); }
    // Products and quotients keep four decimals, rounding half away from zero.
    friend CQZMoeda operator*(CQZMoeda a, CQZMoeda b);
    friend CQZMoeda operator/(CQZMoeda a, CQZMoeda b);
    friend constexpr CQZMoeda operator*(CQZMoeda a, int64_t n) { return DeBruto(a.m_llBruto * n); }
    CQZMoeda& operator+=(CQZMoeda o) { m_llBruto += o.m_llBruto; return *this; }
    CQZMoeda& operator-=(CQZMoeda o) { m_llBruto -= o.m_llBruto; return *this; }

private:
    int64_t m_llBruto = 0;
};
