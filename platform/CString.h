// 8-bit string of the suite's exported interfaces. Holds Windows-1252 bytes;
// conversion to and from UTF-8 happens only at the edges (JSON, terminal).
#pragma once

#include <cstdarg>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

class CString {
public:
    CString() = default;
    CString(const char* psz) : m_s(psz ? psz : "") {}
    CString(const char* p, int n) : m_s(p, static_cast<size_t>(n)) {}
    CString(std::string s) : m_s(std::move(s)) {}
    CString(std::string_view s) : m_s(s) {}
    CString(char ch, int nRepeat = 1) : m_s(static_cast<size_t>(nRepeat), ch) {}

    int GetLength() const { return static_cast<int>(m_s.size()); }
    bool IsEmpty() const { return m_s.empty(); }
    void Empty() { m_s.clear(); }
    const char* GetString() const { return m_s.c_str(); }
    operator const char*() const { return m_s.c_str(); }
    const std::string& str() const { return m_s; }
    std::string& str() { return m_s; }
    char GetAt(int i) const { return m_s.at(static_cast<size_t>(i)); }
    void SetAt(int i, char ch) { m_s.at(static_cast<size_t>(i)) = ch; }
    char operator[](int i) const { return GetAt(i); }

    CString Left(int n) const;
    CString Right(int n) const;
    CString Mid(int first) const;
    CString Mid(int first, int n) const;

    // -1 when not found, as in the framework.
    int Find(char ch, int start = 0) const;
    int Find(const char* sub, int start = 0) const;
    int ReverseFind(char ch) const;

    int Replace(char oldCh, char newCh);
    int Replace(const char* oldText, const char* newText);
    int Remove(char ch);
    int Insert(int index, const char* text);
    int Delete(int index, int count = 1);

    CString& MakeUpper();
    CString& MakeLower();

    // Whitespace is what isspace() calls blank in the C locale.
    CString& Trim();
    CString& TrimLeft();
    CString& TrimRight();
    CString& Trim(const char* chars);
    CString& TrimLeft(const char* chars);
    CString& TrimRight(const char* chars);

    void Format(const char* fmt, ...) __attribute__((format(printf, 2, 3)));
    void AppendFormat(const char* fmt, ...) __attribute__((format(printf, 2, 3)));
    void FormatV(const char* fmt, va_list args);
    static CString Formatado(const char* fmt, ...) __attribute__((format(printf, 1, 2)));

    int Compare(const char* other) const;
    int CompareNoCase(const char* other) const;

    CString& operator+=(const CString& o) { m_s += o.m_s; return *this; }
    CString& operator+=(const char* o) { m_s += (o ? o : ""); return *this; }
    CString& operator+=(char ch) { m_s += ch; return *this; }

    friend CString operator+(const CString& a, const CString& b) { return CString(a.m_s + b.m_s); }
    friend CString operator+(const CString& a, const char* b) { return CString(a.m_s + (b ? b : "")); }
    friend CString operator+(const char* a, const CString& b) { return CString((a ? a : "") + b.m_s); }
    friend bool operator==(const CString& a, const CString& b) { return a.m_s == b.m_s; }
    friend bool operator==(const CString& a, const char* b) { return a.m_s == (b ? b : ""); }
    friend auto operator<=>(const CString& a, const CString& b) { return a.m_s <=> b.m_s; }

private:
    std::string m_s;
};

class CStringArray {
public:
    int GetSize() const { return static_cast<int>(m_a.size()); }
    int GetCount() const { return GetSize(); }
    bool IsEmpty() const { return m_a.empty(); }
    int Add(const CString& s) { m_a.push_back(s); return GetSize() - 1; }
    const CString& GetAt(int i) const { return m_a.at(static_cast<size_t>(i)); }
    CString& ElementAt(int i) { return m_a.at(static_cast<size_t>(i)); }
    void SetAt(int i, const CString& s) { m_a.at(static_cast<size_t>(i)) = s; }
    const CString& operator[](int i) const { return GetAt(i); }
    CString& operator[](int i) { return ElementAt(i); }
    void RemoveAt(int i) { m_a.erase(m_a.begin() + i); }
    void RemoveAll() { m_a.clear(); }
    auto begin() const { return m_a.begin(); }
    auto end() const { return m_a.end(); }
    friend bool operator==(const CStringArray&, const CStringArray&) = default;

private:
    std::vector<CString> m_a;
};

// Windows-1252 <-> UTF-8. Conversions fail (return false, with a message in
// *erro, a Windows-1252 text like the program's others) on the five
// unassigned Windows-1252 bytes and on characters that have no Windows-1252
// form, instead of inventing a replacement.
bool QZCp1252ParaUtf8(const std::string& cp1252, std::string& utf8, std::string* erro = nullptr);
// Writes into cp1252's own buffer, so a reused string does not allocate.
bool QZUtf8ParaCp1252(std::string_view utf8, std::string& cp1252, std::string* erro = nullptr);
// For logs and terminals: never fails, unmappable bytes become U+FFFD.
std::string QZParaUtf8(const CString& s);
