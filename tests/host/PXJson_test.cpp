// The JSON form of records: every kind of field, exact round trips, and bad
// input refused with the field named.
#include "host/PXJson.h"

#include <gtest/gtest.h>

namespace {

#define CAMPOS_TESTE_ITEM(CAMPO, LISTA)           \
    CAMPO(_REG_POSICAO_PRODUTOPS, Produto, 0)     \
    CAMPO(CQZMoeda, Quantidade, 0)
class CQZTeste_Item : public TQZBaseParaDados {
    QZ_REGISTRO(CQZTeste_Item, CAMPOS_TESTE_ITEM)
};

#define CAMPOS_TESTE_TUDO(CAMPO, LISTA)               \
    CAMPO(CString, Codigo, 0)                         \
    CAMPO(uint8_t, Flag, 0)                           \
    CAMPO(int16_t, Saldo, 0)                          \
    CAMPO(uint32_t, Ponteiro, 0)                      \
    CAMPO(int64_t, Grande, 0)                         \
    CAMPO(bool, Ativo, 0)                             \
    CAMPO(CQZMoeda, Valor, 0)                         \
    CAMPO(REG_QZDMA, Data, 0)                         \
    CAMPO(REG_QZMA, Mes, 0)                           \
    CAMPO(REG_QZDMAHMSUTC, DmaHmsGravacao, QZ_CARIMBO) \
    LISTA(CQZTeste_Item, Item)
class CQZTeste_Tudo : public TQZBaseParaDados {
    QZ_REGISTRO(CQZTeste_Tudo, CAMPOS_TESTE_TUDO)
};

#define CAMPOS_TESTE_MOV(CAMPO, LISTA) \
    CAMPO(REG_QZDMC, Dmc, QZ_CHAVE)    \
    CAMPO(CString, Texto, 0)
class CQZTeste_Mov : public TQZBaseParaDados {
    QZ_REGISTRO(CQZTeste_Mov, CAMPOS_TESTE_MOV)
public:
    static constexpr QZTipoChave kTipoChave = QZ_CHAVE_DMC;
};

using Json = nlohmann::ordered_json;

// JSON is UTF-8; narrow literals here are Windows-1252, so JSON text is
// written as u8 literals.
std::string U8(const char8_t* s) { return reinterpret_cast<const char*>(s); }

CQZTeste_Tudo Exemplo() {
    CQZTeste_Tudo r;
    r.SetPosicao(4294967295u);  // the highest position a record may take
    r.SetCodigo("Ação").SetFlag(255).SetSaldo(-32768).SetPonteiro(4294967295u).SetGrande(-5).SetAtivo(true);
    r.SetValor(CQZMoeda::DeBruto(-125000)).SetData(REG_QZDMA(29, 2, 2024)).SetMes(REG_QZMA(3, 2026));
    r.SetDmaHmsGravacao(REG_QZDMAHMSUTC(REG_QZDMA(10, 3, 2026), 9, 5, 7, -12));
    CQZTeste_Item i;
    i.SetProduto({70000, 2, 0, 1}).SetQuantidade(CQZMoeda::DeBruto(1));
    r.AdicionaItem(i);
    return r;
}

// Reads `texto` as a record and returns the error's field and reason.
template <class R = CQZTeste_Tudo>
std::pair<std::string, std::string> Erro(const std::string& texto) {
    R r;
    try {
        PXRegistroDeJson(Json::parse(texto), r);
    } catch (const CPXErroJson& e) {
        return {e.Campo(), QZParaUtf8(CString(e.what()))};
    }
    return {"(aceito)", ""};
}

}  // namespace

TEST(PXJsonTest, EveryFieldKindHasItsDocumentedForm) {
    Json j = PXRegistroParaJson(Exemplo());
    EXPECT_EQ(j.dump(),
              U8(u8R"({"type":"CQZTeste_Tudo","Posicao":4294967295,"Codigo":"Ação","Flag":255,"Saldo":-32768,)"
              u8R"("Ponteiro":4294967295,"Grande":-5,"Ativo":true,"Valor":"-12.5000","Data":"2024-02-29",)"
              u8R"("Mes":"2026-03","DmaHmsGravacao":"2026-03-10T09:05:07-03:00",)"
              u8R"("Item":[{"Produto":{"Produto":70000,"Grade1":2,"Grade2":0,"Grade3":1},"Quantidade":"0.0001"}]})"));
    CQZTeste_Tudo lido;
    PXRegistroDeJson(Json::parse(j.dump()), lido);
    EXPECT_TRUE(lido.OnIgual(Exemplo()));
    EXPECT_EQ(lido.GetPosicao(), 4294967295u);

    CQZTeste_Mov m;
    m.SetDmc(REG_QZDMC(REG_QZMA(11, 2026), 42)).SetTexto("x");
    EXPECT_EQ(PXRegistroParaJson(m).dump(), R"({"type":"CQZTeste_Mov","Dmc":"2026-11/42","Texto":"x"})");
    CQZTeste_Mov mLido;
    PXRegistroDeJson(Json::parse(R"({"Dmc":"2026-11/0"})"), mLido);
    EXPECT_EQ(mLido.GetDmc(), REG_QZDMC(REG_QZMA(11, 2026), 0));  // a new movement of that month
}

TEST(PXJsonTest, EmptyAndNonCalendarValuesRoundTripExactly) {
    CQZTeste_Tudo vazio;
    Json j = PXRegistroParaJson(vazio);
    EXPECT_EQ(j["Data"], "");
    EXPECT_EQ(j["Mes"], "");
    EXPECT_EQ(j["DmaHmsGravacao"], "");
    EXPECT_EQ(j["Valor"], "0.0000");

    CQZTeste_Tudo estranho;
    estranho.SetData(REG_QZDMA(1u)).SetMes(REG_QZMA(13, 2026)).SetDmaHmsGravacao(REG_QZDMAHMSUTC(uint64_t{1} << 50));
    j = PXRegistroParaJson(estranho);
    EXPECT_EQ(j["Data"], 1);
    EXPECT_EQ(j["Mes"], 2026 * 16 + 13);
    EXPECT_EQ(j["DmaHmsGravacao"], uint64_t{1} << 50);
    CQZTeste_Tudo lido;
    PXRegistroDeJson(Json::parse(j.dump()), lido);
    EXPECT_TRUE(lido.OnIgual(estranho));

    // Currency at both ends of its range, and integers for whole values.
    for (const char* texto : {"922337203685477.5807", "-922337203685477.5808", "0.5", "-0.0001"}) {
        PXRegistroDeJson(Json{{"Valor", texto}}, lido);
        CQZMoeda de;
        pxjson::De(pxjson::Moeda(lido.GetValor()), de, "Valor");
        EXPECT_EQ(de, lido.GetValor()) << texto;
    }
    PXRegistroDeJson(Json::parse(R"({"Valor": 7})"), lido);
    EXPECT_EQ(lido.GetValor(), CQZMoeda::DeInteiro(7));
    PXRegistroDeJson(Json::parse(R"({"Valor": "922337203685477.5807"})"), lido);
    EXPECT_EQ(lido.GetValor().GetBruto(), INT64_MAX);
}

TEST(PXJsonTest, BadInputNamesTheFieldAndTheReason) {
    struct Caso {
        const char8_t* json;
        const char* campo;
        const char* motivo;  // Windows-1252, as the reasons are
    } casos[] = {
        {u8R"({"Flag": 256})", "Flag", "não está entre 0 e 255"},
        {u8R"({"Saldo": -32769})", "Saldo", "não está entre -32768 e 32767"},
        {u8R"({"Ponteiro": -1})", "Ponteiro", "não está entre 0 e 4294967295"},
        {u8R"({"Posicao": 4294967296})", "Posicao", "não está entre"},
        {u8R"({"Flag": 1.5})", "Flag", "esperava um número inteiro"},
        {u8R"({"Flag": "1"})", "Flag", "esperava um número inteiro"},
        {u8R"({"Ativo": 1})", "Ativo", "esperava true ou false"},
        {u8R"({"Codigo": 5})", "Codigo", "esperava um texto"},
        {u8R"({"Codigo": "seta →"})", "Codigo", "sem forma em Windows-1252"},
        {u8R"({"Valor": "1.23456"})", "Valor", "até quatro casas"},
        {u8R"({"Valor": 1.5})", "Valor", "até quatro casas"},
        {u8R"({"Valor": "922337203685477.5808"})", "Valor", "excede a faixa"},
        {u8R"({"Data": "2026-02-29"})", "Data", "valor inválido \"2026-02-29\": esperava AAAA-MM-DD"},
        {u8R"({"Data": 4294967296})", "Data", "fora da faixa"},
        {u8R"({"Data": true})", "Data", "esperava o texto AAAA-MM-DD"},
        {u8R"({"Mes": "2026-13"})", "Mes", "esperava AAAA-MM"},
        {u8R"({"DmaHmsGravacao": "2026-03-10T09:05:07+00:10"})", "DmaHmsGravacao", "fuso em múltiplos de 15"},
        {u8R"({"DmaHmsGravacao": "2026-03-10T24:00:00+00:00"})", "DmaHmsGravacao", "valor inválido"},
        {u8R"({"Cor": "azul"})", "Cor", "campo desconhecido"},
        {u8R"({"type": "CQZDadosPX_Prioridade"})", "type", "esperava \"CQZTeste_Tudo\""},
        {u8R"({"Item": {}})", "Item", "esperava uma lista"},
        {u8R"({"Item": [{}, {"Quantidade": "x"}]})", "Item[1].Quantidade", "até quatro casas"},
        {u8R"({"Item": [{"Produto": {"Grade4": 1}}]})", "Item[0].Produto.Grade4", "campo desconhecido"},
        {u8R"({"Item": [{"Produto": {"Grade1": 65536}}]})", "Item[0].Produto.Grade1", "não está entre 0 e 65535"},
        {u8R"([1, 2])", "(registro)", "esperava um objeto"},
    };
    for (const auto& c : casos) {
        auto [campo, motivo] = Erro(U8(c.json));
        EXPECT_EQ(campo, c.campo) << U8(c.json);
        EXPECT_NE(motivo.find(QZParaUtf8(c.motivo)), std::string::npos) << U8(c.json) << " -> " << motivo;
    }
    EXPECT_EQ(Erro<CQZTeste_Mov>(R"({"Posicao": 1})").first, "Posicao");  // movements have no position
    EXPECT_EQ(Erro<CQZTeste_Mov>(R"({"Dmc": "2026-00/1"})").first, "Dmc");
}

TEST(PXJsonTest, TextFormsAreReadExactlyAndLongDigitRunsEndQuickly) {
    using R = pxjson::ResultadoLeitura;
    const std::string digitos(50000, '9');
    const std::string zeros(50000, '0');
    struct CasoMoeda {
        std::string texto;
        R resultado;
        int64_t bruto;
    } moedas[] = {
        {"0", R::Lido, 0},
        {"-0.0001", R::Lido, -1},
        {"12.5", R::Lido, 125000},
        {"007.25", R::Lido, 72500},
        {zeros + "1.5", R::Lido, 15000},
        {"922337203685477.5807", R::Lido, INT64_MAX},
        {"-922337203685477.5808", R::Lido, INT64_MIN},
        {"922337203685477.5808", R::ForaDaFaixa, 0},
        {"-922337203685477.5809", R::ForaDaFaixa, 0},
        {"18446744073709551616", R::ForaDaFaixa, 0},
        {digitos, R::ForaDaFaixa, 0},
        {"", R::ForaDaForma, 0},
        {"-", R::ForaDaForma, 0},
        {"+1", R::ForaDaForma, 0},
        {".5", R::ForaDaForma, 0},
        {"1.", R::ForaDaForma, 0},
        {"1.23456", R::ForaDaForma, 0},
        {"1,5", R::ForaDaForma, 0},
        {" 1", R::ForaDaForma, 0},
        {"1e3", R::ForaDaForma, 0},
        {"1.2.3", R::ForaDaForma, 0},
        {digitos + "x", R::ForaDaForma, 0},
    };
    for (const auto& c : moedas) {
        CQZMoeda v = CQZMoeda::DeBruto(42);
        EXPECT_EQ(pxjson::LeMoeda(c.texto, v), c.resultado) << c.texto.substr(0, 40);
        EXPECT_EQ(v.GetBruto(), c.resultado == R::Lido ? c.bruto : 42) << c.texto.substr(0, 40);  // kept when refused
    }

    REG_QZDMA d;
    REG_QZMA m;
    REG_QZDMAHMSUTC h;
    REG_QZDMC k;
    struct CasoCalendario {
        std::string texto;
        bool data, mes, carimbo, chave;
    } calendario[] = {
        {"2024-02-29", true, false, false, false},
        {"2026-02-29", false, false, false, false},
        {"0001-01-01", true, false, false, false},
        {"2024-2-29", false, false, false, false},
        {"2024-02-29 ", false, false, false, false},
        {"+024-02-29", false, false, false, false},
        {"2026-12", false, true, false, false},
        {"2026-13", false, false, false, false},
        {"0000-01", false, false, false, false},
        {"2026-03-10T09:05:07-03:00", false, false, true, false},
        {"2026-03-10T23:59:59+14:00", false, false, true, false},
        {"2026-03-10T24:00:00+00:00", false, false, false, false},
        {"2026-03-10T09:05:07+00:10", false, false, false, false},
        {"2026-03-10T09:05:07+32:00", false, false, false, false},
        {"2026-03-10T09:05:07+00:60", false, false, false, false},
        {"2026-03-10T09:05:07Z", false, false, false, false},
        {"2026-03-10T09:05:07+03:00x", false, false, false, false},
        {"2026-04/0", false, false, false, true},
        {"2026-04/4294967295", false, false, false, true},
        {"2026-04/0000000001", false, false, false, true},
        {"2026-04/4294967296", false, false, false, false},
        {"2026-04/00000000001", false, false, false, false},
        {"2026-04/" + std::string(100000, '7'), false, false, false, false},
        {"2026-04/" + zeros, false, false, false, false},
        {"2026-04/", false, false, false, false},
        {"2026-04/-1", false, false, false, false},
        {"2026-00/1", false, false, false, false},
    };
    for (const auto& c : calendario) {
        EXPECT_EQ(pxjson::LeData(c.texto, d), c.data) << c.texto.substr(0, 40);
        EXPECT_EQ(pxjson::LeMesAno(c.texto, m), c.mes) << c.texto.substr(0, 40);
        EXPECT_EQ(pxjson::LeCarimbo(c.texto, h), c.carimbo) << c.texto.substr(0, 40);
        EXPECT_EQ(pxjson::LeChaveMovimento(c.texto, k), c.chave) << c.texto.substr(0, 40);
    }
    ASSERT_TRUE(pxjson::LeCarimbo("2026-03-10T09:05:07-03:45", h));
    EXPECT_EQ(h, REG_QZDMAHMSUTC(REG_QZDMA(10, 3, 2026), 9, 5, 7, -15));
    ASSERT_TRUE(pxjson::LeChaveMovimento("2026-04/0000000001", k));
    EXPECT_EQ(k, REG_QZDMC(REG_QZMA(4, 2026), 1));
}

TEST(PXJsonTest, AMessageQuotesAtMostEightyCharactersOfAValue) {
    EXPECT_EQ(pxjson::Trecho("abc"), "abc");
    EXPECT_EQ(pxjson::Trecho(std::string(80, 'x')), std::string(80, 'x'));
    EXPECT_EQ(pxjson::Trecho(std::string(81, 'x')), std::string(80, 'x') + "...");
    // Characters, not bytes; never half of one; Windows-1252 out.
    std::string acentos;
    for (int i = 0; i < 100; ++i) acentos += U8(u8"ç");
    EXPECT_EQ(pxjson::Trecho(acentos), std::string(80, '\xE7') + "...");
    const std::string controles = U8(u8"a→b") + "\n\x1B[2J";  // outside the macro, which quotes its text
    EXPECT_EQ(pxjson::Trecho(controles), "a?b??[2J");

    const std::string longo(60000, '9');
    for (const Json& j : {Json{{"Data", longo}}, Json{{"Valor", longo}}, Json{{"Valor", "x" + longo}},
                          Json{{"Codigo", Json::array({Json::array({longo})})}}, Json{{"Flag", longo}},
                          Json{{longo, 1}}, Json{{"Item", Json::array({Json{{"Produto", Json{{longo, 1}}}}})}}}) {
        auto [campo, motivo] = Erro(j.dump());
        EXPECT_NE(campo, "(aceito)");
        EXPECT_LT(campo.size() + motivo.size(), 300u) << campo.substr(0, 100) << ": " << motivo.substr(0, 300);
    }
}
