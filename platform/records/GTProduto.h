// Products of the enterprise register. The extended product carries the
// product's own data (kit flag and grid dimensions) with its identification.
// A key names the item and, for products with grids, a grid position per
// dimension (0 = none).
#pragma once

#include <array>
#include <type_traits>

#include "platform/QZRegistro.h"

// The grades (PonteiroGrade1/2) are tables of the product register that this
// store does not hold: no reference is declared.
#define CAMPOS_GT_PRODUTO(CAMPO, LISTA)   \
    CAMPO(uint8_t, Kit, 0)                \
    CAMPO(uint16_t, PonteiroGrade1, 0)    \
    CAMPO(uint16_t, PonteiroGrade2, 0)    \
    CAMPO(uint8_t, Inativo, 0)

class CQZDadosGT_Produto : public TQZBaseParaDados {
    QZ_REGISTRO(CQZDadosGT_Produto, CAMPOS_GT_PRODUTO)
public:
    QZModulo OnGetModulo() const override { return QZ_MODULO_GT; }
};

// The product is stored inside the extended product, one column per field
// ("DadosProduto_Kit", ...). The store types a column as text only when the
// whole field is a string, so the product keeps to numeric fields.
template <>
struct QZCodec<CQZDadosGT_Produto> {
#define QZ_GT_PRODUTO_CONTA_(T, Nome, Opcoes) +1
#define QZ_GT_PRODUTO_SUFIXO_(T, Nome, Opcoes) "_" #Nome,
    static constexpr int N = 0 CAMPOS_GT_PRODUTO(QZ_GT_PRODUTO_CONTA_, QZ_GT_PRODUTO_CONTA_);
    static constexpr std::array<const char*, N> kSufixos{
        CAMPOS_GT_PRODUTO(QZ_GT_PRODUTO_SUFIXO_, QZ_GT_PRODUTO_SUFIXO_)};
#undef QZ_GT_PRODUTO_CONTA_
#undef QZ_GT_PRODUTO_SUFIXO_

    template <class T>
    static constexpr void VerificaParte() {
        static_assert(std::is_integral_v<T>, "a field of the stored product must be a single integer column");
    }
    struct Escreve {
        CQZValor* o;
        template <class T>
        void Campo(const char*, const T& v, unsigned) {
            VerificaParte<T>();
            QZCodec<T>::Para(v, o++);
        }
        template <class E>
        void Lista(const char*, const std::vector<E>&) {}
    };
    // Reads each field from proximo(), the next column's integer.
    template <class F>
    struct Le {
        F& proximo;
        template <class T>
        void Campo(const char*, T& v, unsigned) {
            VerificaParte<T>();
            v = static_cast<T>(proximo());
        }
        template <class E>
        void Lista(const char*, std::vector<E>&) {}
    };
    static void Para(const CQZDadosGT_Produto& v, CQZValor* o) {
        Escreve e{o};
        v.VisitaCampos(e);
    }
    template <class F>
    static void DeColunas(CQZDadosGT_Produto& v, F&& proximo) {
        Le<F> l{proximo};
        v.VisitaCampos(l);
    }
    static void De(CQZDadosGT_Produto& v, const CQZValor* i) {
        DeColunas(v, [&i] { return std::get<int64_t>(*i++); });
    }
};

#define CAMPOS_GT_PRODUTO_EX(CAMPO, LISTA)            \
    CAMPO(CQZDadosGT_Produto, DadosProduto, 0)        \
    CAMPO(CString, CodigoSPED, 0)                     \
    CAMPO(CString, NomeCompleto, 0)                   \
    CAMPO(REG_QZDMAHMSUTC, DmaHmsAtualizacao, QZ_CARIMBO)

class CQZDadosGT_ProdutoEx : public TQZBaseParaDados {
    QZ_REGISTRO(CQZDadosGT_ProdutoEx, CAMPOS_GT_PRODUTO_EX)
public:
    QZModulo OnGetModulo() const override { return QZ_MODULO_GT; }
};
