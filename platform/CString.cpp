#include "platform/CString.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstring>

namespace {

bool EhBranco(char ch) { return std::isspace(static_cast<unsigned char>(ch)) != 0; }

size_t Limita(int v, size_t max) {
    if (v < 0) return 0;
    return std::min(static_cast<size_t>(v), max);
}

// Upper half of Windows-1252: the code point of each byte 0x80..0x9F
// (0 where the code page leaves the byte unassigned); 0xA0..0xFF map to
// the same Latin-1 code points.
constexpr char32_t kAlto[32] = {
    0x20AC, 0, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
    0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0, 0x017D, 0,
    0, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
    0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0, 0x017E, 0x0178};

void AnexaUtf8(std::string& out, char32_t cp) {
    if (cp < 0x80) {
        out += static_cast<char>(cp);
    } else if (cp < 0x800) {
        out += static_cast<char>(0xC0 | (cp >> 6));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    } else if (cp < 0x10000) {
        out += static_cast<char>(0xE0 | (cp >> 12));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (cp >> 18));
        out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    }
}

int ByteDe(char32_t cp) {
    if (cp < 0x80 || (cp >= 0xA0 && cp <= 0xFF)) return static_cast<int>(cp);
    for (int i = 0; i < 32; ++i)
        if (kAlto[i] == cp && cp != 0) return 0x80 + i;
    return -1;
}

}  // namespace

CString CString::Left(int n) const { return CString(m_s.substr(0, Limita(n, m_s.size()))); }
CString CString::Right(int n) const {
    size_t k = Limita(n, m_s.size());
    return CString(m_s.substr(m_s.size() - k));
}
CString CString::Mid(int first) const {
    size_t f = Limita(first, m_s.size());
    return CString(m_s.substr(f));
}
CString CString::Mid(int first, int n) const {
    size_t f = Limita(first, m_s.size());
    return CString(m_s.substr(f, Limita(n, m_s.size() - f)));
}

int CString::Find(char ch, int start) const {
    if (start < 0 || static_cast<size_t>(start) > m_s.size()) return -1;
    auto p = m_s.find(ch, static_cast<size_t>(start));
    return p == std::string::npos ? -1 : static_cast<int>(p);
}
int CString::Find(const char* sub, int start) const {
    if (!sub || start < 0 || static_cast<size_t>(start) > m_s.size()) return -1;
    auto p = m_s.find(sub, static_cast<size_t>(start));
    return p == std::string::npos ? -1 : static_cast<int>(p);
}
int CString::ReverseFind(char ch) const {
    auto p = m_s.rfind(ch);
    return p == std::string::npos ? -1 : static_cast<int>(p);
}

int CString::Replace(char oldCh, char newCh) {
    int n = 0;
    for (auto& c : m_s)
        if (c == oldCh) { c = newCh; ++n; }
    return n;
}
int CString::Replace(const char* oldText, const char* newText) {
    if (!oldText || !*oldText) return 0;
    const std::string de(oldText), para(newText ? newText : "");
    std::string out;
    int n = 0;
    size_t pos = 0;
    for (;;) {
        size_t p = m_s.find(de, pos);
        if (p == std::string::npos) break;
        out.append(m_s, pos, p - pos);
        out += para;
        pos = p + de.size();
        ++n;
    }
    if (n) {
        out.append(m_s, pos, std::string::npos);
        m_s.swap(out);
    }
    return n;
}
int CString::Remove(char ch) {
    auto antes = m_s.size();
    m_s.erase(std::remove(m_s.begin(), m_s.end(), ch), m_s.end());
    return static_cast<int>(antes - m_s.size());
}
int CString::Insert(int index, const char* text) {
    m_s.insert(Limita(index, m_s.size()), text ? text : "");
    return GetLength();
}
int CString::Delete(int index, int count) {
    size_t i = Limita(index, m_s.size());
    m_s.erase(i, Limita(count, m_s.size() - i));
    return GetLength();
}

CString& CString::MakeUpper() {
    for (auto& c : m_s) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return *this;
}
CString& CString::MakeLower() {
    for (auto& c : m_s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return *this;
}

CString& CString::TrimLeft() {
    size_t i = 0;
    while (i < m_s.size() && EhBranco(m_s[i])) ++i;
    m_s.erase(0, i);
    return *this;
}
CString& CString::TrimRight() {
    size_t n = m_s.size();
    while (n > 0 && EhBranco(m_s[n - 1])) --n;
    m_s.resize(n);
    return *this;
}
CString& CString::Trim() { return TrimRight().TrimLeft(); }
CString& CString::TrimLeft(const char* chars) {
    auto p = m_s.find_first_not_of(chars ? chars : "");
    m_s.erase(0, p == std::string::npos ? m_s.size() : p);
    return *this;
}
CString& CString::TrimRight(const char* chars) {
    auto p = m_s.find_last_not_of(chars ? chars : "");
    m_s.resize(p == std::string::npos ? 0 : p + 1);
    return *this;
}
CString& CString::Trim(const char* chars) { return TrimRight(chars).TrimLeft(chars); }

void CString::FormatV(const char* fmt, va_list args) {
    va_list copia;
    va_copy(copia, args);
    int n = std::vsnprintf(nullptr, 0, fmt, copia);
    va_end(copia);
    if (n < 0) {
        m_s.clear();
        return;
    }
    std::string out(static_cast<size_t>(n) + 1, '\0');
    std::vsnprintf(out.data(), out.size(), fmt, args);
    out.resize(static_cast<size_t>(n));
    m_s.swap(out);
}
void CString::Format(const char* fmt, ...) {
    va_list a;
    va_start(a, fmt);
    FormatV(fmt, a);
    va_end(a);
}
void CString::AppendFormat(const char* fmt, ...) {
    CString parte;
    va_list a;
    va_start(a, fmt);
    parte.FormatV(fmt, a);
    va_end(a);
    m_s += parte.m_s;
}
CString CString::Formatado(const char* fmt, ...) {
    CString s;
    va_list a;
    va_start(a, fmt);
    s.FormatV(fmt, a);
    va_end(a);
    return s;
}

int CString::Compare(const char* other) const {
    int r = std::strcmp(m_s.c_str(), other ? other : "");
    return r < 0 ? -1 : (r > 0 ? 1 : 0);
}
int CString::CompareNoCase(const char* other) const {
    CString a(*this), b(other);
    return a.MakeLower().Compare(b.MakeLower());
}

bool QZCp1252ParaUtf8(const std::string& in, std::string& out, std::string* erro) {
    out.clear();
    out.reserve(in.size());
    for (size_t i = 0; i < in.size(); ++i) {
        auto b = static_cast<unsigned char>(in[i]);
        char32_t cp = b;
        if (b >= 0x80 && b < 0xA0) {
            cp = kAlto[b - 0x80];
            if (cp == 0) {
                if (erro) {
                    char msg[128];
                    std::snprintf(msg, sizeof msg, "o byte 0x%02X, na posição %zu, não é um caractere do Windows-1252", b, i);
                    *erro = msg;
                }
                return false;
            }
        }
        AnexaUtf8(out, cp);
    }
    return true;
}

bool QZUtf8ParaCp1252(std::string_view in, std::string& out, std::string* erro) {
    out.clear();
    out.reserve(in.size());
    size_t i = 0;
    auto falha = [&](const char* motivo) {
        if (erro) *erro = std::string(motivo) + " na posição " + std::to_string(i);
        return false;
    };
    while (i < in.size()) {
        auto b = static_cast<unsigned char>(in[i]);
        char32_t cp;
        int n;
        if (b < 0x80) { cp = b; n = 1; }
        else if ((b & 0xE0) == 0xC0) { cp = b & 0x1F; n = 2; }
        else if ((b & 0xF0) == 0xE0) { cp = b & 0x0F; n = 3; }
        else if ((b & 0xF8) == 0xF0) { cp = b & 0x07; n = 4; }
        else return falha("UTF-8 inválido");
        if (i + static_cast<size_t>(n) > in.size()) return falha("UTF-8 incompleto");
        for (int k = 1; k < n; ++k) {
            auto c = static_cast<unsigned char>(in[i + static_cast<size_t>(k)]);
            if ((c & 0xC0) != 0x80) return falha("UTF-8 inválido");
            cp = (cp << 6) | (c & 0x3F);
        }
        int byte = ByteDe(cp);
        if (byte < 0) {
            if (erro) {
                char msg[128];
                std::snprintf(msg, sizeof msg, "o caractere U+%04X, na posição %zu, não tem forma em Windows-1252",
                              static_cast<unsigned>(cp), i);
                *erro = msg;
            }
            return false;
        }
        out += static_cast<char>(byte);
        i += static_cast<size_t>(n);
    }
    return true;
}

std::string QZParaUtf8(const CString& s) {
    std::string out;
    for (char c : s.str()) {
        auto b = static_cast<unsigned char>(c);
        char32_t cp = b;
        if (b >= 0x80 && b < 0xA0) cp = kAlto[b - 0x80] ? kAlto[b - 0x80] : 0xFFFD;
        AnexaUtf8(out, cp);
    }
    return out;
}
