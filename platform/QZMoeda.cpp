#include "platform/QZMoeda.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>

namespace {

int64_t DivideArredondando(__int128 n, __int128 d) {
    __int128 q = n / d, r = n % d;
    if (r != 0 && 2 * (r < 0 ? -r : r) >= (d < 0 ? -d : d)) q += ((n < 0) == (d < 0)) ? 1 : -1;
    return static_cast<int64_t>(q);
}

}  // namespace

CQZMoeda CQZMoeda::DeDouble(double v) { return DeBruto(static_cast<int64_t>(std::llround(v * kEscala))); }

bool CQZMoeda::DeTexto(const char* texto, CQZMoeda& out) {
    if (!texto || !*texto) return false;
    const char* p = texto;
    bool negativo = false;
    if (*p == '-' || *p == '+') negativo = (*p++ == '-');
    __int128 inteiro = 0;
    int digitos = 0;
    while (*p >= '0' && *p <= '9') {
        inteiro = inteiro * 10 + (*p++ - '0');
        if (++digitos > 15) return false;
    }
    int64_t frac = 0;
    int casas = 0;
    if (*p == '.' || *p == ',') {
        ++p;
        while (*p >= '0' && *p <= '9') {
            if (++casas > 4) return false;
            frac = frac * 10 + (*p++ - '0');
        }
    }
    if (*p != '\0' || (digitos == 0 && casas == 0)) return false;
    while (casas++ < 4) frac *= 10;
    __int128 bruto = inteiro * kEscala + frac;
    if (negativo) bruto = -bruto;
    // Refuse what a 64-bit count of ten-thousandths cannot hold.
    if (bruto > INT64_MAX || bruto < INT64_MIN) return false;
    out = DeBruto(static_cast<int64_t>(bruto));
    return true;
}

CString CQZMoeda::Formata(int decimais) const {
    if (decimais < 0) decimais = 0;
    if (decimais > 4) decimais = 4;
    int64_t fator = 1;
    for (int i = decimais; i < 4; ++i) fator *= 10;
    int64_t v = DivideArredondando(m_llBruto, fator);
    bool negativo = v < 0;
    uint64_t a = negativo ? static_cast<uint64_t>(-(v + 1)) + 1 : static_cast<uint64_t>(v);
    uint64_t div = 1;
    for (int i = 0; i < decimais; ++i) div *= 10;
    CString s;
    if (decimais == 0)
        s.Format("%s%llu", negativo ? "-" : "", static_cast<unsigned long long>(a));
    else
        s.Format("%s%llu.%0*llu", negativo ? "-" : "", static_cast<unsigned long long>(a / div), decimais,
                 static_cast<unsigned long long>(a % div));
    return s;
}

CQZMoeda operator*(CQZMoeda a, CQZMoeda b) {
    return CQZMoeda::DeBruto(DivideArredondando(static_cast<__int128>(a.GetBruto()) * b.GetBruto(), CQZMoeda::kEscala));
}

CQZMoeda operator/(CQZMoeda a, CQZMoeda b) {
    if (b.GetBruto() == 0) return CQZMoeda();
    return CQZMoeda::DeBruto(DivideArredondando(static_cast<__int128>(a.GetBruto()) * CQZMoeda::kEscala, b.GetBruto()));
}
