// The reader of the user's JSON text: hostile input (deep, wide, long, with
// NUL bytes or repeated keys) is refused with the field, line and column, in
// Portuguese, and a message never grows with the input.
#include "host/PXLeituraJson.h"

#include <gtest/gtest.h>

namespace {

using Json = nlohmann::ordered_json;

std::string U8(const char8_t* s) { return reinterpret_cast<const char*>(s); }

struct Falha {
    bool houve = false;
    std::string campo;
    std::string motivo;  // UTF-8
    long linha = 0;
};

Falha Le(std::string_view texto, const CPXLimitesJson& limites = {}, long primeiraLinha = 1) {
    try {
        PXLeJson(texto, limites, primeiraLinha);
    } catch (const CPXErroLeituraJson& e) {
        return {true, e.Campo(), QZParaUtf8(CString(e.what())), e.Linha()};
    }
    return {};
}

// Words of the JSON library's English messages.
bool TemIngles(const std::string& motivo) {
    for (const char* palavra : {"syntax", "parse", "unexpected", "expected", "last read", "literal", "invalid",
                                "overflow", "while", "must", "number", "string"})
        if (motivo.find(palavra) != std::string::npos) return true;
    return false;
}

std::string Aninhado(size_t niveis) { return std::string(niveis, '[') + std::string(niveis, ']'); }

// `texto` followed by blanks up to `tamanho` bytes.
std::string Preenche(std::string texto, size_t tamanho) {
    texto.resize(tamanho, ' ');
    return texto;
}

CPXLimitesJson Pequenos() {
    CPXLimitesJson l;
    l.linha = 200;
    l.texto = 8;
    l.lista = 3;
    return l;
}

}  // namespace

TEST(PXLeituraJsonTest, HostileTextIsRefusedWithItsPlaceAndReason) {
    struct Caso {
        std::string texto;
        std::string campo;
        const char8_t* motivo;  // a part of the reason
        const char* coluna;     // " (coluna N)", where the column is pinned
    } casos[] = {
        // The library would take a NUL byte for the end of the text.
        {std::string("{\"Codigo\": \"A\"}\0{\"x\": 1}", 25), "", u8"byte nulo (0x00)", " (coluna 16)"},
        {std::string("{\"Codigo\": \"A\0B\"}", 17), "", u8"byte nulo", " (coluna 14)"},
        {R"({"Codigo": "A\u0000B"})", "Codigo", u8"U+0000", nullptr},
        {R"({"A\u0000": 1})", "A?", u8"U+0000", nullptr},
        {R"({"Codigo": "A", "Codigo": "B"})", "Codigo", u8"campo repetido", " (coluna 24)"},
        {R"({"Item": [{"Quantidade": 1, "Quantidade": 2}]})", "Item[0].Quantidade", u8"campo repetido", nullptr},
        {R"({"Valor": 1e400})", "Valor", u8"número fora da faixa: 1e400", nullptr},
        {R"({"Valor": -1e400})", "Valor", u8"número fora da faixa: -1e400", nullptr},
        {R"({"Codigo": )", "Codigo", u8"JSON malformado: ao ler um valor, veio o fim da entrada, esperava um valor",
         " (coluna 12)"},
        {R"({"Codigo" "A"})", "Codigo", u8"ao ler o separador ':' de um objeto, veio um texto, esperava ':'", nullptr},
        {R"({"Codigo": "A",})", "", u8"ao ler a chave de um objeto, veio '}', esperava um texto", nullptr},
        {R"({"Codigo": tru})", "Codigo", u8"palavra desconhecida", nullptr},
        {R"({"Codigo": "A)", "Codigo", u8"texto sem as aspas de fechamento, em \"A", nullptr},
        {"{\"Codigo\": \"A\x01\"}", "Codigo", u8"caractere de controle sem escape", nullptr},
        {R"({"Codigo": "\ud800"})", "Codigo", u8"substituto U+D800..U+DBFF", nullptr},
        {R"({"Codigo": "\x"})", "Codigo", u8"caractere não permitido depois de '\\'", nullptr},
        {R"({"Valor": -})", "Valor", u8"número sem dígito depois de '-'", nullptr},
        {R"({"Valor": 1.})", "Valor", u8"número sem dígito depois de '.'", nullptr},
        {R"({"Valor": 1e})", "Valor", u8"número sem dígito no expoente", nullptr},
        {"{\"Codigo\": \"\xC3\x28\"}", "Codigo", u8"UTF-8 inválido", nullptr},
        {R"({} {})", "", u8"veio '{', esperava o fim da entrada", " (coluna 4)"},
        {"", "", u8"veio o fim da entrada", " (coluna 1)"},
    };
    for (const auto& c : casos) {
        const Falha f = Le(c.texto);
        ASSERT_TRUE(f.houve) << c.texto;
        EXPECT_EQ(f.campo, c.campo) << c.texto;
        EXPECT_EQ(f.linha, 1) << c.texto;
        EXPECT_NE(f.motivo.find(U8(c.motivo)), std::string::npos) << c.texto << " -> " << f.motivo;
        if (c.coluna) {
            EXPECT_NE(f.motivo.find(c.coluna), std::string::npos) << c.texto << " -> " << f.motivo;
        }
        EXPECT_FALSE(TemIngles(f.motivo)) << f.motivo;
    }
}

TEST(PXLeituraJsonTest, NestingStopsAtItsLimitWhereverItIs) {
    // Deep enough to overflow any recursive walk of the value.
    Falha f = Le(R"({"Codigo": )" + Aninhado(50000) + R"(, "Descricao": "x"})");
    ASSERT_TRUE(f.houve);
    EXPECT_EQ(f.campo.rfind("Codigo[0][0]", 0), 0u) << f.campo;
    EXPECT_NE(f.motivo.find(U8(u8"aninhados em mais de 32 níveis")), std::string::npos) << f.motivo;
    EXPECT_LT(f.campo.size(), 120u);

    f = Le(std::string(50000, '{'));
    ASSERT_TRUE(f.houve);
    EXPECT_NE(f.motivo.find("JSON malformado"), std::string::npos) << f.motivo;

    // The limit counts the record's own object: 32 levels in all pass.
    EXPECT_FALSE(Le(R"({"a": )" + Aninhado(31) + "}").houve);
    f = Le(R"({"a": [1, )" + Aninhado(31) + "]}");
    ASSERT_TRUE(f.houve);
    std::string campo = "a[1]";
    for (int i = 0; i < 30; ++i) campo += "[0]";
    EXPECT_EQ(f.campo, campo);
}

TEST(PXLeituraJsonTest, LimitsAreCheckedAtTheirBoundaries) {
    const CPXLimitesJson l = Pequenos();
    struct Caso {
        std::string texto;
        bool aceito;
        std::string campo;
        const char8_t* motivo;
    } casos[] = {
        {R"({"Codigo": "12345678"})", true, "", u8""},
        {R"({"Codigo": "123456789"})", false, "Codigo", u8"texto de 9 bytes, além do limite de 8 (--max-text)"},
        // Bytes of UTF-8: two characters of two bytes each.
        {U8(u8R"({"C": "çççç"})"), true, "", u8""},
        {U8(u8R"({"C": "ççççç"})"), false, "C", u8"texto de 10 bytes"},
        {R"({"123456789": 1})", false, "123456789", u8"texto de 9 bytes"},
        {R"({"Item": [1, 2, 3]})", true, "", u8""},
        {R"({"Item": [1, 2, 3, 4]})", false, "Item[3]", u8"lista com mais de 3 elementos (--max-list)"},
        {R"({"Item": [{}, {}, {"a": [[], [], [], []]}]})", false, "Item[2].a[3]", u8"lista com mais de 3"},
        {R"({"a": 1, "b": 2, "c": 3})", true, "", u8""},
        {R"({"a": 1, "b": 2, "c": 3, "d": 4})", false, "d", u8"objeto com mais de 3 campos (--max-list)"},
        {Preenche(R"({"Codigo": "12345678"})", 200), true, "", u8""},
        {Preenche(R"({"Codigo": "12345678"})", 201), false, "", u8"registro de 201 bytes, além do limite de 200 (--max-line)"},
    };
    for (const auto& c : casos) {
        const Falha f = Le(c.texto, l);
        EXPECT_EQ(!f.houve, c.aceito) << c.texto << " -> " << f.motivo;
        if (f.houve) {
            EXPECT_EQ(f.campo, c.campo) << c.texto;
            EXPECT_NE(f.motivo.find(U8(c.motivo)), std::string::npos) << c.texto << " -> " << f.motivo;
        }
    }
}

TEST(PXLeituraJsonTest, TheLineAndColumnAreThoseOfTheInput) {
    // A record of save over several lines.
    const std::string texto = U8(u8"{\n  \"Descrição\": \"Ação\",\n  \"Descrição\": \"B\"\n}");
    Falha f = Le(texto);
    ASSERT_TRUE(f.houve);
    EXPECT_EQ(f.linha, 3);
    EXPECT_EQ(f.campo, "Descrição");  // Windows-1252, as every text of a message
    EXPECT_NE(f.motivo.find("(coluna 13)"), std::string::npos) << f.motivo;  // characters, not bytes
    // A line of import: its number in the file.
    f = Le(R"({"a": 1, "a": 2})", {}, 7);
    EXPECT_EQ(f.linha, 7);
    f = Le("{\"a\": 1,\n\"b\": x}", {}, 7);
    EXPECT_EQ(f.linha, 8);
    EXPECT_EQ(f.campo, "b");
    EXPECT_NE(f.motivo.find("(coluna 6)"), std::string::npos) << f.motivo;
}

TEST(PXLeituraJsonTest, MessagesQuoteAtMostEightyCharacters) {
    const std::string longo(100000, '7');
    for (const std::string& texto : {R"({"Valor": 1)" + longo + "e400}", R"({"Codigo": ")" + longo,
                                     R"({"Codigo": )" + longo + "x}", "{\"" + longo + "\": 1, \"" + longo + "\": 2}"}) {
        CPXLimitesJson l;
        l.texto = 200000;
        const Falha f = Le(texto, l);
        ASSERT_TRUE(f.houve);
        EXPECT_LT(f.motivo.size() + f.campo.size(), 300u) << f.motivo.substr(0, 300);
    }
}

TEST(PXLeituraJsonTest, AcceptedTextKeepsEveryValueAndTheOrderOfKeys) {
    const std::string texto =
        U8(u8R"({"z": "Ação \u00e9", "a": [1, -2, 18446744073709551615, 1.5, true, null, {}], "m": {"k": ""}})");
    const Json j = PXLeJson(texto, {});
    EXPECT_EQ(j.dump(), Json::parse(texto).dump());
    EXPECT_EQ(j.begin().key(), "z");
    // A wide object at the limit: appended without a search per member.
    std::string largo = "{";
    for (int i = 0; i < 100000; ++i) largo += (i ? ",\"k" : "\"k") + std::to_string(i) + "\":" + std::to_string(i);
    largo += "}";
    const Json w = PXLeJson(largo, {});
    EXPECT_EQ(w.size(), 100000u);
    EXPECT_EQ(w["k99999"], 99999);
    EXPECT_EQ(Le(largo.substr(0, largo.size() - 1) + ",\"k100000\":0}").campo, "k100000");
}
