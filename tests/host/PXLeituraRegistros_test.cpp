// Import's reader of records, which fills each record straight from the
// parser's events: every line, good or bad, ends as reading the whole tree
// and then the record would end it (the same record, or the same field, line
// and message), whatever the order of the members, and the first error told
// is the one the tree's reading tells.
#include "host/PXLeituraRegistros.h"

#include <gtest/gtest.h>

#include <optional>

namespace {

using Json = nlohmann::ordered_json;

struct Resultado {
    std::optional<std::string> erroCampo;  // set when the line was refused
    std::string erroMotivo;                // UTF-8
    long linha = 0;
    const IPXTipoHost* tipo = nullptr;
    std::unique_ptr<TQZBaseParaDados> reg;
};

std::string Utf8(const char8_t* s) { return reinterpret_cast<const char*>(s); }
std::string U8(const std::string& cp1252) { return QZParaUtf8(CString(cp1252)); }

// The tree's reading of one import line: the value, its type, its record.
Resultado PelaArvore(std::string_view linha, long numero, const CPXLimitesJson& limites) {
    Resultado r;
    auto recusa = [&](std::string campo, const std::string& motivo) {
        r.erroCampo = std::move(campo);
        r.erroMotivo = U8(motivo);
        r.linha = numero;
        return std::move(r);
    };
    Json j;
    try {
        j = PXLeJson(linha, limites, numero);
    } catch (const CPXErroLeituraJson& e) {
        return recusa(e.Campo(), e.what());
    }
    if (!j.is_object()) return recusa("", "esperava um objeto JSON");
    auto t = j.find("type");
    if (t == j.end() || !t->is_string()) return recusa("type", "falta o tipo do registro");
    const std::string& nome = t->get_ref<const std::string&>();
    const IPXTipoHost* tipo = PXBuscaTipoHost(nome);
    if (!tipo || nome != tipo->Nome())
        return recusa("type", "tipo de registro desconhecido \"" + pxjson::Trecho(nome) + "\"");
    r.reg = tipo->Novo();
    try {
        tipo->DeJson(j, *r.reg);
    } catch (const CPXErroJson& e) {
        return recusa(e.Campo(), e.what());
    }
    r.tipo = tipo;
    return r;
}

Resultado PelosEventos(CPXLeitorRegistrosJson& leitor, std::string_view linha, long numero) {
    Resultado r;
    try {
        r.reg = leitor.Le(linha, numero, r.tipo);
    } catch (const CPXErroLeituraJson& e) {
        r.erroCampo = e.Campo();
        r.erroMotivo = U8(e.what());
        r.linha = e.Linha();
        r.tipo = nullptr;
    }
    return r;
}

const std::string kP = R"("type": "CQZDadosPX_Prioridade")";
const std::string kT = R"("type": "CQZDadosPX_Tecnico")";
const std::string kG = R"("type": "CQZDadosPX_LancamentoGastos")";

struct Caso {
    std::string linha;
    // What the line must end in: empty campo and motivo for a record.
    std::optional<std::string> campo;
    std::string motivo;  // a part of the reason
};

CPXLimitesJson Pequenos() {
    CPXLimitesJson l;
    l.texto = 40;
    l.lista = 8;
    return l;
}

}  // namespace

TEST(PXLeituraRegistrosTest, EveryLineEndsAsTheTreesReadingEndsIt) {
    const std::string fundo = std::string(40, '[') + std::string(40, ']');
    std::string dentro;  // where the 33rd level opens
    for (int i = 0; i < 31; ++i) dentro += "[0]";
    const std::vector<Caso> casos = {
        // Accepted, in any order of members; absent fields stay empty.
        {"{" + kP + R"(, "Posicao": 7, "Codigo": "URG", "Descricao": "A\u00e7\u00e3o j\u00e1", "PrioridadeBase": 9,
           "DmaHmsAtualizacao": "2026-01-02T03:04:05-03:00"})", std::nullopt, ""},
        {R"({"DmaHmsAtualizacao": "", "PrioridadeBase": 100, "Codigo": "B", "Posicao": 2, )" + kP + "}",
         std::nullopt, ""},
        {"{" + kP + "}", std::nullopt, ""},
        {"{" + kP + R"(, "Descricao": ")" + Utf8(u8"Ação já") + "\"}", std::nullopt, ""},
        {"{" + kT + R"(, "Codigo": "T1", "Disciplina": [{"PonteiroDisciplina": 3}, {"PonteiroDisciplina": 4}],
           "Email": [{"Endereco": "a@b.c"}], "Nome": "Z\u00e9"})", std::nullopt, ""},
        {R"({"Email": [], "Codigo": "T2", )" + kT + "}", std::nullopt, ""},
        // Not an object, no type, a type not known (by its full name only).
        {"[1, 2]", "", "esperava um objeto JSON"},
        {"3", "", "esperava um objeto JSON"},
        {R"({"Codigo": "X"})", "type", "falta o tipo do registro"},
        {R"({"type": 5, "Codigo": "X"})", "type", "falta o tipo do registro"},
        {R"({"type": ["CQZDadosPX_Prioridade"]})", "type", "falta o tipo do registro"},
        {R"({"Codigo": "X", "type": "Prioridade"})", "type", "tipo de registro desconhecido \"Prioridade\""},
        {R"({"type": "Nada", "Codigo": 5})", "type", "tipo de registro desconhecido \"Nada\""},
        // Values of the wrong kind or range, named by their field.
        {"{" + kP + R"(, "PrioridadeBase": 256})", "PrioridadeBase", "entre 0 e 255"},
        {"{" + kP + R"(, "PrioridadeBase": 1.5})", "PrioridadeBase", "esperava um número inteiro"},
        {"{" + kP + R"(, "Codigo": 12})", "Codigo", "esperava um texto"},
        {"{" + kP + R"(, "Codigo": "\u20ac"})", std::nullopt, ""},
        {"{" + kP + R"(, "Codigo": "\u4e2d"})", "Codigo", "U+4E2D"},
        {"{" + kP + R"(, "DmaHmsAtualizacao": "2026-02-30T00:00:00+00:00"})", "DmaHmsAtualizacao", "valor inválido"},
        {"{" + kP + R"(, "Posicao": -1})", "Posicao", "entre 0 e 4294967295"},
        {"{" + kP + R"(, "Posicao": 4294967295})", std::nullopt, ""},
        {"{" + kT + R"(, "Posicao": 1, "Disciplina": {"PonteiroDisciplina": 3}})", "Disciplina", "esperava uma lista"},
        {"{" + kT + R"(, "Disciplina": [{"PonteiroDisciplina": 3}, {"Outro": 1}]})", "Disciplina[1].Outro",
         "campo desconhecido"},
        {"{" + kT + R"(, "Email": [{"Endereco": "x"}, 7]})", "Email[1]", "esperava um objeto"},
        {"{" + kP + R"(, "PrioridadeBase": "9"})", "PrioridadeBase", "veio \"9\""},
        {"{" + kT + R"(, "Email": "a@b.c"})", "Email", "esperava uma lista"},
        {"{" + kG + R"(, "Dmc": "2026-04/12", "Data": "2026-04-30", "Item": [{"Quantidade": "1.5", "Valor": 3}]})",
         std::nullopt, ""},
        {"{" + kG + R"(, "Dmc": "2026-13/1"})", "Dmc", "valor inválido"},
        {"{" + kG + R"(, "Dmc": "", "Data": ""})", std::nullopt, ""},
        {"{" + kG + R"(, "Data": "30/04/2026"})", "Data", "AAAA-MM-DD"},
        {"{" + kG + R"(, "Item": [{"Valor": "1.23456"}]})", "Item[0].Valor", "quatro casas"},
        // Unknown members: the first one, after every field's own error.
        {"{" + kP + R"(, "Cor": 1, "Tom": 2})", "Cor", "campo desconhecido"},
        {R"({"Cor": 1, )" + kP + R"(, "Codigo": 5})", "Codigo", "esperava um texto"},
        {"{" + kP + R"(, "Cor": 1, "Codigo": 5})", "Codigo", "esperava um texto"},
        {"{" + kP + R"(, "type": 1})", "type", "campo repetido"},
        // Two bad fields: the first in the record's order, not the line's.
        {"{" + kP + R"(, "PrioridadeBase": -1, "Codigo": 5})", "Codigo", "esperava um texto"},
        {"{" + kP + R"(, "DmaHmsAtualizacao": 1.5, "Posicao": "x"})", "Posicao", "esperava um número inteiro"},
        // A broken line is told before a bad value in it.
        {"{" + kP + R"(, "Codigo": 5, "Descricao": })", "Descricao", "JSON malformado"},
        {"{" + kP + R"(, "Codigo": 5, "Descricao": "a", "Descricao": "b"})", "Descricao", "campo repetido"},
        {R"({"Codigo": 5, "Codigo": 6, )" + kP + "}", "Codigo", "campo repetido"},
        {"{" + kP + R"(, "Cor": 1, "Cor": 2})", "Cor", "campo repetido"},
        {R"({"type": "Nada", "x": 1, "x": 2})", "x", "campo repetido"},
        {"{" + kP + R"(, "Codigo": 5, "Descricao": "a\u0000b"})", "Descricao", "U+0000"},
        {"{" + kP + R"(, "Codigo": 5, "PrioridadeBase": 1e400})", "PrioridadeBase", "número fora da faixa"},
        {"{" + kP + R"(, "Codigo": 5, "Descricao": )" + fundo + "}", "Descricao" + dentro, "aninhados"},
        {"{" + kP + R"(, "Codigo": 5, "Descricao": ")" + std::string(41, 'd') + "\"}", "Descricao", "--max-text"},
        {"{" + kT + R"(, "Codigo": 5, "Email": [1, 2, 3, 4, 5, 6, 7, 8, 9]})", "Email[8]", "--max-list"},
        {"{" + kP + R"(, "Codigo": 5, "a": 1, "b": 2, "c": 3, "d": 4, "e": 5, "f": 6, "g": 7})", "g",
         "--max-list"},
        {"{" + kP + R"(, "Codigo": 5} x)", "", "JSON malformado"},
        {"{" + kP + std::string(", \"Codigo\": 5, \0 \"Descricao\": 1}", 33), "", "byte nulo"},
    };
    CPXLeitorRegistrosJson leitor(Pequenos());
    long numero = 0;
    for (const Caso& c : casos) {
        ++numero;
        SCOPED_TRACE(c.linha);
        const Resultado esperado = PelaArvore(c.linha, numero, Pequenos());
        const Resultado lido = PelosEventos(leitor, c.linha, numero);
        // The table says what the tree's reading does; the events must agree.
        ASSERT_EQ(esperado.erroCampo, c.campo) << esperado.erroMotivo;
        EXPECT_NE(esperado.erroMotivo.find(U8(c.motivo)), std::string::npos) << esperado.erroMotivo;
        EXPECT_EQ(lido.erroCampo, esperado.erroCampo) << lido.erroMotivo;
        EXPECT_EQ(lido.erroMotivo, esperado.erroMotivo);
        EXPECT_EQ(lido.linha, esperado.linha);
        EXPECT_EQ(lido.tipo, esperado.tipo);
        if (esperado.reg && lido.reg) {
            EXPECT_TRUE(lido.reg->OnIgual(*esperado.reg));
            EXPECT_EQ(lido.tipo->ParaJson(*lido.reg), esperado.tipo->ParaJson(*esperado.reg));
        }
    }
}

TEST(PXLeituraRegistrosTest, ALineLeavesNothingToTheNext) {
    CPXLeitorRegistrosJson leitor{CPXLimitesJson{}};
    const IPXTipoHost* tipo = nullptr;
    // A bad line of one type, then good lines of two, then the first again:
    // no field, error or member seen carries over.
    EXPECT_THROW(leitor.Le("{" + kP + R"(, "Codigo": 5, "Cor": 1})", 1, tipo), CPXErroLeituraJson);
    auto a = leitor.Le("{" + kP + R"(, "Descricao": "d"})", 2, tipo);
    EXPECT_STREQ(tipo->Nome(), "CQZDadosPX_Prioridade");
    EXPECT_EQ(tipo->ParaJson(*a)["Codigo"], "");
    EXPECT_EQ(tipo->ParaJson(*a)["Descricao"], "d");
    auto t = leitor.Le("{" + kT + R"(, "Email": [{"Endereco": "e"}]})", 3, tipo);
    EXPECT_STREQ(tipo->Nome(), "CQZDadosPX_Tecnico");
    EXPECT_EQ(tipo->ParaJson(*t)["Email"].size(), 1u);
    auto b = leitor.Le("{" + kP + R"(, "Codigo": "c"})", 4, tipo);
    EXPECT_EQ(tipo->ParaJson(*b)["Descricao"], "");
    EXPECT_EQ(tipo->ParaJson(*b)["Codigo"], "c");
    // Records handed out stay the caller's.
    EXPECT_EQ(tipo->ParaJson(*a)["Descricao"], "d");
}
