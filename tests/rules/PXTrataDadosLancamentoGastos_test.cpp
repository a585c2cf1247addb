#include "rules/PXTrataDadosLancamentoGastos.h"

#include <algorithm>
#include <functional>

#include "platform/QZCodigosResultado.h"
#include "tests/support/PXTeste.h"

namespace {

enum : uint32_t { RECURSO = 10, PRODUTO = 100, KIT = 101, OUTRO = 102 };

_REG_POSICAO_PRODUTOPS Produto(uint32_t p, uint16_t grade1 = 0) {
    _REG_POSICAO_PRODUTOPS r;
    r.lPonteiroProduto = p;
    r.usPonteiroGrade1 = grade1;
    return r;
}

CQZDadosPX_LancamentoGastosItem Item(uint32_t produto, int64_t quantidade = 1, int64_t valor = 10) {
    CQZDadosPX_LancamentoGastosItem i;
    i.SetProdutoServico(Produto(produto)).SetQuantidade(CQZMoeda::DeInteiro(quantidade)).SetValor(CQZMoeda::DeInteiro(valor));
    return i;
}

std::vector<uint32_t> Produtos(const CQZDadosPX_LancamentoGastos& l) {
    std::vector<uint32_t> v;
    for (const auto& i : l.GetListaItem()) v.push_back(i.GetProdutoServico().lPonteiroProduto);
    return v;
}

}  // namespace

// Three products (one a kit) and an entry saved in March with one item.
class PXTrataDadosLancamentoGastosTest : public PXTeste {
protected:
    void SetUp() override {
        PXTeste::SetUp();
        Inicializa(handler);
        for (uint32_t p : {PRODUTO, KIT, OUTRO}) {
            CQZDadosGT_ProdutoEx produto;
            produto.SetPosicao(p);
            CQZDadosGT_Produto dados;
            dados.SetKit(p == KIT);
            produto.SetDadosProduto(dados).SetCodigoSPED(CString::Formatado("P%u", p));
            Grava(produto);
        }
        novo.SetData(REG_QZDMA(20, 3, 2026)).SetPonteiroRecurso(RECURSO).SetPonteiroTipoGasto(1);
        novo.AdicionaItem(Item(PRODUTO));
        gravado = novo;
        gravado.SetDmc(REG_QZDMC(REG_QZMA(3, 2026), 0));
        gravado = Grava(gravado);
        ZeraChamadas();
    }

    int Salva(const CQZDadosPX_LancamentoGastos& l) {
        salvo = l;
        return handler.TrataGravacao(&salvo, nullptr);
    }

    CPXTrataDadosLancamentoGastos handler;
    CQZDadosPX_LancamentoGastos novo, gravado, salvo;
};

// A step of the save and one way of failing it; a case fails its own step
// and every later one, so its message is the first.
TEST_F(PXTrataDadosLancamentoGastosTest, SaveChecksInOrder) {
    using L = CQZDadosPX_LancamentoGastos;
    const struct {
        long mensagem, campo;
        const char* nome;
        std::function<void(L&)> quebra;
    } passos[] = {
        {3, 134, "saved by somebody else since it was read", [](L& l) { l.SetDmaHmsGravacao(REG_QZDMAHMSUTC(1, 1, 2026, 0, 0, 0)); }},
        {174, 135, "no date", [](L& l) { l.SetData(REG_QZDMA()); }},
        {50, 136, "no resource", [](L& l) { l.SetPonteiroRecurso(0); }},
        {175, 135, "moved to another month", [](L& l) { l.SetData(REG_QZDMA(1, 4, 2026)); }},
    };
    const size_t n = std::size(passos);
    EXPECT_EQ(1, Salva(gravado)) << QZParaUtf8(handler.GetMensagem());
    for (size_t k = 0; k < n; ++k) {
        L l = gravado;
        for (size_t j = n; j-- > k;) passos[j].quebra(l);
        EXPECT_EQ(0, Salva(l)) << passos[k].nome;
        EXPECT_THAT(handler.GetErro(), TemMensagem(QZ_MODULO_PX, passos[k].mensagem, passos[k].campo)) << passos[k].nome;
        EXPECT_EQ(salvo, l) << passos[k].nome;
    }
}

TEST_F(PXTrataDadosLancamentoGastosTest, ANewEntryTakesAnyMonthASavedOneKeepsItsOwn) {
    for (REG_QZDMA data : {REG_QZDMA(1, 1, 2020), REG_QZDMA(31, 12, 2030)}) {
        CQZDadosPX_LancamentoGastos l = novo;
        l.SetData(data);
        EXPECT_EQ(1, Salva(l)) << data.Formata().str();
    }
    for (REG_QZDMA data : {REG_QZDMA(1, 3, 2026), REG_QZDMA(31, 3, 2026)}) {
        CQZDadosPX_LancamentoGastos l = gravado;
        l.SetData(data);
        EXPECT_EQ(1, Salva(l)) << data.Formata().str();
    }
    CQZDadosPX_LancamentoGastos l = gravado;
    l.SetData(REG_QZDMA(20, 3, 2027));
    EXPECT_EQ(0, Salva(l)) << "the same month of another year";
    EXPECT_THAT(handler.GetErro(), TemMensagem(QZ_MODULO_PX, 175, 135));
}

TEST_F(PXTrataDadosLancamentoGastosTest, ADeleteHandsBackTheWholeStoredEntry) {
    CQZDadosPX_LancamentoGastos l;
    EXPECT_EQ(0, handler.TrataExclusao(&l, nullptr));
    EXPECT_THAT(handler.GetErro(), TemMensagem(QZ_MODULO_PX, 144, 134)) << "never saved";

    l.SetDmc(gravado.GetDmc());
    ASSERT_EQ(1, handler.TrataExclusao(&l, nullptr)) << QZParaUtf8(handler.GetMensagem());
    EXPECT_EQ(l, gravado);

    l = CQZDadosPX_LancamentoGastos();
    l.SetDmc(REG_QZDMC(REG_QZMA(3, 2026), 99));
    EXPECT_EQ(0, handler.TrataExclusao(&l, nullptr));
    EXPECT_EQ(handler.GetUltimoHR(), QZ_E_REGISTRO_NAO_ENCONTRADO);
    EXPECT_EQ(l.GetQuantidadeItem(), 0);
}

// A step of an item's check and one way of failing it, on a second item
// (the first is PRODUTO); a case fails its own step and every later one.
TEST_F(PXTrataDadosLancamentoGastosTest, ItemChecksInOrder) {
    using I = CQZDadosPX_LancamentoGastosItem;
    const struct {
        long mensagem, campo;
        const char* nome;
        std::function<void(I&)> quebra;
    } passos[] = {
        {166, 141, "no product", [](I& i) { i.SetProdutoServico(Produto(0)); }},
        {112, 141, "a kit", [](I& i) { i.SetProdutoServico(Produto(KIT)); }},
        {41, 141, "a grid the product has not", [](I& i) { i.SetProdutoServico(Produto(PRODUTO, 2)); }},
        {39, 143, "no quantity", [](I& i) { i.SetQuantidade(CQZMoeda()); }},
        {167, 144, "no value", [](I& i) { i.SetValor(CQZMoeda::DeBruto(-1)); }},
        {168, 141, "the product of the other item", [](I& i) { i.SetProdutoServico(Produto(PRODUTO)); }},
    };
    const size_t n = std::size(passos);
    for (int64_t index : {int64_t{-1}, int64_t{1}}) {
        CQZDadosPX_LancamentoGastos base = gravado;
        if (index == 1) base.AdicionaItem(Item(OUTRO));
        for (size_t k = 0; k < n; ++k) {
            SCOPED_TRACE(testing::Message() << "index " << index << ", " << passos[k].nome);
            I item = Item(OUTRO);
            for (size_t j = n; j-- > k;) passos[j].quebra(item);
            CQZDadosPX_LancamentoGastos l = base;
            const I dado = item;
            EXPECT_THAT(handler.TrataAdicionarAlterarItem(&l, &item, index, nullptr),
                        TemMensagem(QZ_MODULO_PX, passos[k].mensagem, passos[k].campo));
            EXPECT_EQ(l, base);
            EXPECT_EQ(item, dado);
        }
    }
}

TEST_F(PXTrataDadosLancamentoGastosTest, AnItemThatPassesIsPutIntoTheEntry) {
    struct Caso {
        const char* nome;
        std::vector<uint32_t> antes;
        uint32_t produto;
        int64_t index;
        std::vector<uint32_t> depois;  // empty: refused
    } casos[] = {
        {"a new item is appended", {PRODUTO}, OUTRO, -1, {PRODUTO, OUTRO}},
        {"the only item changed into another product", {PRODUTO}, OUTRO, 0, {OUTRO}},
        {"an item changed into itself", {PRODUTO, OUTRO}, OUTRO, 1, {PRODUTO, OUTRO}},
        {"a second item of the same product", {PRODUTO}, PRODUTO, -1, {}},
        {"an item changed into another's product", {PRODUTO, OUTRO}, PRODUTO, 1, {}},
        {"the first item of an empty entry", {}, PRODUTO, -1, {PRODUTO}},
    };
    for (const auto& c : casos) {
        CQZDadosPX_LancamentoGastos l = novo;
        l.RemoveTodosItem();
        for (uint32_t p : c.antes) l.AdicionaItem(Item(p));
        CQZDadosPX_LancamentoGastosItem item = Item(c.produto, 2, 7);
        const auto& erro = handler.TrataAdicionarAlterarItem(&l, &item, c.index, nullptr);
        if (c.depois.empty()) {
            EXPECT_THAT(erro, TemMensagem(QZ_MODULO_PX, 168, 141)) << c.nome;
            EXPECT_EQ(Produtos(l), c.antes) << c.nome;
            continue;
        }
        EXPECT_THAT(erro, SemErro()) << c.nome;
        EXPECT_EQ(Produtos(l), c.depois) << c.nome;
        const int64_t onde = c.index < 0 ? l.GetQuantidadeItem() - 1 : c.index;
        EXPECT_EQ(l.GetConstRefItem(onde), item) << c.nome;
    }

    CQZDadosPX_LancamentoGastos l = novo;
    CQZDadosPX_LancamentoGastosItem item = Item(OUTRO);
    const auto& erro = handler.TrataAdicionarAlterarItem(&l, &item, 1, nullptr);
    EXPECT_EQ(erro.GetUltimoHR(), QZ_E_ARGUMENTO_INVALIDO) << "an index past the list";
    EXPECT_EQ(l, novo);
    EXPECT_EQ(handler.TrataAdicionarAlterarItem(&l, nullptr, -1, nullptr).GetUltimoHR(), QZ_E_ARGUMENTO_INVALIDO);
}

TEST_F(PXTrataDadosLancamentoGastosTest, EveryFailedReadIsTheServicesErrorAndChangesNothing) {
    CQZDadosPX_LancamentoGastos l;
    auto chamadas = VarreFalhas([&]() { l = gravado; },
                                [&]() -> const CQZDadosGT_Erro& {
                                    handler.TrataGravacao(&l, nullptr);
                                    return handler.GetErro();
                                },
                                [&]() { EXPECT_EQ(l, gravado); });
    EXPECT_EQ(chamadas, std::vector<std::string>{"LeLancamentoGastos"});

    CQZDadosPX_LancamentoGastos pedido;
    pedido.SetDmc(gravado.GetDmc());
    chamadas = VarreFalhas([&]() { l = pedido; },
                           [&]() -> const CQZDadosGT_Erro& {
                               handler.TrataExclusao(&l, nullptr);
                               return handler.GetErro();
                           },
                           [&]() { EXPECT_EQ(l, pedido); });
    EXPECT_EQ(chamadas, std::vector<std::string>{"LeLancamentoGastos"});

    CQZDadosPX_LancamentoGastosItem item;
    VarreFalhas(
        [&]() {
            l = gravado;
            item = Item(OUTRO);
        },
        [&]() -> const CQZDadosGT_Erro& { return handler.TrataAdicionarAlterarItem(&l, &item, -1, nullptr); },
        [&]() {
            EXPECT_EQ(l, gravado);
            EXPECT_EQ(item, Item(OUTRO));
            EXPECT_EQ(handler.GetCodigoCampo(), 141);
        });
}
