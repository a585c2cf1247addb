// Containers of the platform. Position lists returned by searches are
// CQZArray_deprecated or CQZVector; empty means nothing matched.
#pragma once

#include <cstdint>
#include <vector>

template <class T>
class CQZVector : public std::vector<T> {
public:
    using std::vector<T>::vector;
    int64_t GetQuantidade() const { return static_cast<int64_t>(this->size()); }
    void Adiciona(const T& v) { this->push_back(v); }
    void RemoveTodos() { this->clear(); }
};

template <class T>
class CQZArray_deprecated {
public:
    int GetSize() const { return static_cast<int>(m_v.size()); }
    int GetCount() const { return GetSize(); }
    bool IsEmpty() const { return m_v.empty(); }
    int Add(const T& v) { m_v.push_back(v); return GetSize() - 1; }
    const T& GetAt(int i) const { return m_v.at(static_cast<size_t>(i)); }
    T& ElementAt(int i) { return m_v.at(static_cast<size_t>(i)); }
    const T& operator[](int i) const { return GetAt(i); }
    T& operator[](int i) { return ElementAt(i); }
    void RemoveAll() { m_v.clear(); }
    void SetSize(int n) { m_v.resize(static_cast<size_t>(n)); }
    auto begin() const { return m_v.begin(); }
    auto end() const { return m_v.end(); }
    std::vector<T>& Vetor() { return m_v; }

private:
    std::vector<T> m_v;
};
