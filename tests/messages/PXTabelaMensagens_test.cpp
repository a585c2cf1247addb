// The message table: its loader, its rendering, and its agreement with the
// list of messages the library is built against.
#include "host/PXTabelaMensagens.h"

#include <gtest/gtest.h>

#include <iterator>

#include "platform/QZMensagem.h"

namespace {

CString Renderiza(const CPXTabelaMensagens& t, QZModulo m, long n, std::initializer_list<const char*> params) {
    CStringArray a;
    for (const char* p : params) a.Add(p);
    CString texto;
    EXPECT_TRUE(t.Renderiza(m, n, a, texto)) << n;
    return texto;
}

// Restores the process's message table when a test that set one ends.
class TabelaGlobal {
public:
    explicit TabelaGlobal(const IQZTabelaMensagens* t) : m_anterior(CQZDadosGT_Erro::GetTabelaMensagens()) {
        CQZDadosGT_Erro::DefineTabelaMensagens(t);
    }
    ~TabelaGlobal() { CQZDadosGT_Erro::DefineTabelaMensagens(m_anterior); }

private:
    const IQZTabelaMensagens* m_anterior;
};

}  // namespace

TEST(PXTabelaMensagensTest, RendersParametersInTheirPlaces) {
    CPXTabelaMensagens t;
    std::string erro;
    // UTF-8 outside ("situação", "ç" as two bytes), Windows-1252 inside.
    ASSERT_TRUE(t.Carrega("# comentário\n\n28\t146\tA situa\xC3\xA7\xC3\xA3o %1 - %2 est\xC3\xA1 inativa.\r\n"
                          "28\t7\t%2 antes de %1: 100%% %3\n20\t125\tOutro m\xC3\xB3""dulo.",
                          &erro))
        << erro;
    EXPECT_EQ(Renderiza(t, QZ_MODULO_PX, 146, {"S1", "Aberta"}), "A situação S1 - Aberta está inativa.");
    EXPECT_EQ(Renderiza(t, QZ_MODULO_PX, 7, {"um", "dois"}), "dois antes de um: 100%");  // %3 not passed
    EXPECT_EQ(Renderiza(t, QZ_MODULO_20, 125, {}), "Outro módulo.");
    EXPECT_EQ(t.MaiorParametro(QZ_MODULO_PX, 7), 3);
    CString texto;
    EXPECT_FALSE(t.Renderiza(QZ_MODULO_PX, 125, CStringArray(), texto));
}

TEST(PXTabelaMensagensTest, ABadFileIsRefusedWholeNamingTheLine) {
    CPXTabelaMensagens t;
    std::string erro;
    ASSERT_TRUE(t.Carrega("28\t1\tUm.", &erro));
    struct Caso {
        const char* texto;
        const char* motivo;
    } casos[] = {
        {"28\t2\tDois.\n28 3 Tr\xC3\xAAs.", "linha 2: esperava"},
        {"28\t2\tDois.\n\n28\t2\tDe novo.", "linha 3: mensagem 28/2 repetida"},
        {"28\tdois\tDois.", "linha 1: módulo ou número inválido"},
        {"28\t2\tSeta \xE2\x86\x92 sem forma.", "linha 1: "},
        {"28\t2\t50% sem n\xC3\xBAmero.", "linha 1: '%'"},
        {"28\t2\t", "linha 1: texto vazio"},
    };
    for (const auto& c : casos) {
        EXPECT_FALSE(t.Carrega(c.texto, &erro)) << c.texto;
        EXPECT_EQ(erro.rfind(c.motivo, 0), 0u) << QZParaUtf8(erro);
    }
    EXPECT_TRUE(t.Tem(QZ_MODULO_PX, 1));  // the table loaded before is kept
    EXPECT_FALSE(t.Tem(QZ_MODULO_PX, 2));
}

TEST(PXTabelaMensagensTest, TheErrorRecordRendersThroughTheLoadedTable) {
    const CPXTabelaMensagens& tabela = CPXTabelaMensagens::Embutida();
    TabelaGlobal global(&tabela);
    CQZDadosGT_Erro erro;
    erro.SetAviso(QZ_MODULO_PX, 176, 3);
    EXPECT_EQ(erro.GetMensagem(), "A prioridade base deve estar entre 0 e 100.");
    erro.SetAvisoPersonalizado(QZ_MODULO_PX, 1, 146L, CString("M1"), CString("Manutenção"));
    EXPECT_EQ(erro.GetMensagem(), "A situação M1 - Manutenção está inativa.");
    erro.SetAviso(QZ_MODULO_20, 125, 1);
    EXPECT_EQ(erro.GetMensagem(), "O tipo da situação não corresponde a este cadastro.");
    // A formatted text and a service's own text are not looked up.
    erro.SetAvisoPersonalizado(QZ_MODULO_PX, 0, "Técnico %s depende", "T1");
    EXPECT_EQ(erro.GetMensagem(), "Técnico T1 depende");
}

// ---- every message the code can set -----------------------------------------

// The rules are checked when they compile against the list generated from
// the table; the loader the host renders with must read the same table.
TEST(PXTabelaMensagensTest, TheBuildsListOfMessagesMatchesTheLoadedTable) {
    const CPXTabelaMensagens& tabela = CPXTabelaMensagens::Embutida();
    EXPECT_EQ(std::size(kQZTabelaMensagens), tabela.Textos().size());
    for (const auto& e : kQZTabelaMensagens) {
        const auto modulo = static_cast<QZModulo>(e.modulo);
        ASSERT_TRUE(tabela.Tem(modulo, e.numero)) << "message " << e.numero << " of module " << e.modulo;
        EXPECT_EQ(tabela.MaiorParametro(modulo, e.numero), e.parametros)
            << "message " << e.numero << " of module " << e.modulo;
    }
}
