#include "platform/QZDiretorioDados.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <string>

namespace {

// Sets PXLREG_DADOS for one test and puts the old value back.
class VariavelDados {
public:
    VariavelDados() {
        if (const char* v = std::getenv("PXLREG_DADOS")) m_antigo = v;
    }
    ~VariavelDados() {
        if (m_antigo)
            setenv("PXLREG_DADOS", m_antigo->c_str(), 1);
        else
            unsetenv("PXLREG_DADOS");
    }
    void Define(const char* valor) {
        if (valor)
            setenv("PXLREG_DADOS", valor, 1);
        else
            unsetenv("PXLREG_DADOS");
    }

private:
    std::optional<std::string> m_antigo;
};

}  // namespace

TEST(QZDiretorioDadosTest, CompanyAndModuleFoldersUnderTheRoot) {
    struct Caso {
        const char* raiz;
        const char* empresa;
        QZModulo modulo;
        const char* esperado;
    } casos[] = {
        {"/srv/dados", "EMPRESA01", QZ_MODULO_PX, "/srv/dados/EMPRESA01/PX"},
        {"/srv/dados/", "EMPRESA01", QZ_MODULO_PX, "/srv/dados/EMPRESA01/PX"},
        {"/srv/./dados//", "EMP", QZ_MODULO_GT, "/srv/dados/EMP/GT"},
        {"dados", "EMP", QZ_MODULO_ES, "dados/EMP/ES"},
        {"/srv/dados", "EMP", QZ_MODULO_20, "/srv/dados/EMP/20"},
        {"/srv/dados", "EMP", QZ_MODULO_NENHUM, ""},
    };
    for (const auto& c : casos)
        EXPECT_EQ(CQZDiretorioDados(c.raiz).GetDiretorioDados(c.empresa, c.modulo), c.esperado)
            << c.raiz << " " << c.empresa;
}

TEST(QZDiretorioDadosTest, CompanyNamesThatAreNotAFolderNameGetNoDirectory) {
    CQZDiretorioDados diretorios("/srv/dados");
    for (const char* empresa : {"", ".", "..", "../OUTRA", "A/B", "A\\B", "/etc"})
        EXPECT_EQ(diretorios.GetDiretorioDados(empresa, QZ_MODULO_PX), "") << empresa;
    EXPECT_EQ(diretorios.GetDiretorioDados("..A", QZ_MODULO_PX), "/srv/dados/..A/PX");
}

TEST(QZDiretorioDadosTest, RootFromTheEnvironmentOrTheSystemDefault) {
    VariavelDados variavel;
    variavel.Define("/opt/navor/dados");
    EXPECT_EQ(CQZDiretorioDados().GetRaiz(), "/opt/navor/dados");
    EXPECT_EQ(CQZDiretorioDados("").GetRaiz(), "/opt/navor/dados");
    EXPECT_EQ(CQZDiretorioDados("/outra").GetRaiz(), "/outra");
    variavel.Define("");
    EXPECT_EQ(CQZDiretorioDados().GetRaiz(), "/var/lib/pxlreg");
    variavel.Define(nullptr);
    EXPECT_EQ(CQZDiretorioDados().GetDiretorioDados("EMP", QZ_MODULO_PX), "/var/lib/pxlreg/EMP/PX");
}
