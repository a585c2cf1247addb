#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <nlohmann/json.hpp>

#include "platform/QZRastro.h"

TEST(QZRastroTest, LogTextFollowsTheFixedFormat) {
    EXPECT_EQ(QZFormataLogFalha("hr", "GetAcessoManutencao()->LePrioridade(1, &d)", 0x80004005L),
              "hr = GetAcessoManutencao()->LePrioridade(1, &d)\thr = 0X80004005 E_FAIL\tSEVERITY = 1 SEVERITY_ERROR"
              "\tFACILITY = 0 FACILITY_NULL\tCODE = 16389 \tDescrição = Erro não especificado.");
}

TEST(QZRastroTest, NamesComeFromTheCompilerSignatureAndFile) {
    EXPECT_EQ(QZNomeFuncao("virtual CQZDadosGT_Erro& CPXTrataDados::OnTrataGravacao(TQZBaseParaDados*, "
                           "IQZTrataInconsistencia*)"),
              "CPXTrataDados::OnTrataGravacao");
    EXPECT_EQ(QZNomeFuncao("long int CPXTrataDados::OnInicializa()"), "CPXTrataDados::OnInicializa");
    EXPECT_EQ(QZNomeFonte("/src/rules/PXTrataDados.cpp"), "PXTrataDados");
}

namespace {
struct Perfil : IQZGT_Profiler {
    explicit Perfil(IQZSaidaRastro* saida = nullptr) : m_saida(saida) {}
    CString GetEmpresa() const override { return "EMP"; }
    uint16_t GetUsuario() const override { return 3; }
    uint32_t GetNumeroSessao() const override { return 99; }
    IQZSaidaRastro* GetSaidaRastro() const override { return m_saida; }
    IQZSaidaRastro* m_saida;
};
}  // namespace

TEST(QZRastroTest, RecordCarriesKeysProfileAndLevel) {
    CQZSaidaRastroCaptura captura;
    Perfil perfil(&captura);
    QZRastreiaFalha(1, "Conecta()", "long int X::Y()", "dir/Fonte.cpp", 77, &perfil);
    const long esperados[] = {static_cast<long>(0x80004005L), static_cast<long>(0xFFFFFFFFu)};
    QZRastreiaFalha(0x80004005L, "Conecta()", "long int X::Y()", "Fonte.cpp", 78, &perfil, esperados);
    QZRastreiaFalha(0, "Conecta()", "long int X::Y()", "Fonte.cpp", 79, &perfil);
    auto regs = captura.Registros();
    ASSERT_EQ(regs.size(), 1u);  // listed and zero codes are not traced
    const auto& r = regs[0];
    EXPECT_EQ(r.nivel, 3);
    EXPECT_EQ(r.funcao, "X::Y");
    EXPECT_EQ(r.chaves.at("Arquivo"), "Fonte");
    EXPECT_EQ(r.chaves.at("Linha"), "77");
    EXPECT_EQ(r.chaves.at("Log").Left(31), "hr = Conecta()\thr = 0X1 S_FALSE");
    EXPECT_FALSE(r.chaves.at("VersaoNavor").IsEmpty());
    EXPECT_FALSE(r.chaves.at("VersaoSO").IsEmpty());
    EXPECT_GT(r.memoriaPrivada, 0u);
    EXPECT_EQ(r.empresa, "EMP");
    EXPECT_EQ(r.usuario, 3);
    EXPECT_EQ(r.sessao, 99u);
}

TEST(QZRastroTest, JsonLinesSinkAppendsUtf8Records) {
    // The process's own name: other test runs may share the temporary directory.
    std::string caminho = ::testing::TempDir() + "rastro_teste_" + std::to_string(getpid()) + ".jsonl";
    std::remove(caminho.c_str());
    CQZSaidaRastroJsonLinhas saida(caminho);
    Perfil perfil(&saida);
    QZRastreiaFalha(0x80004005L, "A()", "long int X::A()", "F.cpp", 1, &perfil);
    QZRastreiaFalha(0x80004005L, "B()", "long int X::B()", "F.cpp", 2, &perfil);
    std::ifstream f(caminho);
    std::string linha;
    int n = 0;
    while (std::getline(f, linha)) {
        auto j = nlohmann::json::parse(linha);
        EXPECT_EQ(j["nivel"], 3);
        EXPECT_NE(j["Log"].get<std::string>().find("Descri\xC3\xA7\xC3\xA3o = "), std::string::npos);
        ++n;
    }
    EXPECT_EQ(n, 2);
    std::remove(caminho.c_str());
}
