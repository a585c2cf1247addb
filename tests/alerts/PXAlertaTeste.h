// Fixture of the alert routine's tests: the routine's log in a file of the
// test's own, e-mails captured instead of sent, scratch files removed after.
#pragma once

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <nlohmann/json.hpp>

#include "alerts/PXEmailAlertaPlano.h"
#include "mail/QZTransporteCaptura.h"
#include "tests/support/PXTeste.h"

// What a thrown routine exception carried.
struct PXLancada {
    bool lancou = false;
    long codigo = 0, id = -1, valor = -1;
    CString titulo, descricao, origem;
    int modulo = 0;
};

template <class F>
PXLancada PXCaptura(F&& f) {
    PXLancada l;
    try {
        f();
    } catch (const CQZExceptionEx& e) {
        l = {true, e.GetCodigo(), e.GetIdMensagem(), e.GetValor(), e.GetTitulo(), e.GetDescricao(), e.GetOrigem(),
             e.GetModulo()};
        EXPECT_FALSE(e.GetCompilacao().IsEmpty());
    }
    return l;
}

class PXAlertaTeste : public PXTeste {
protected:
    void SetUp() override {
        PXTeste::SetUp();
        m_log = Temporario("log");
        std::remove(m_log.c_str());
        ASSERT_EQ(0, setenv("PXLREG_LOG", m_log.c_str(), 1));
        fabrica->DefineTransporteEmail(&captura);
    }
    void TearDown() override {
        unsetenv("PXLREG_LOG");
        std::remove(m_log.c_str());
        for (const auto& f : m_arquivos) std::remove(f.c_str());
        PXTeste::TearDown();
    }

    static std::string Temporario(const std::string& nome) {
        return ::testing::TempDir() + "pxlreg_alerta_" + nome + "_" + std::to_string(getpid());
    }

    std::vector<nlohmann::json> LinhasLog() const {
        std::vector<nlohmann::json> linhas;
        std::ifstream f(m_log);
        for (std::string l; std::getline(f, l);) linhas.push_back(nlohmann::json::parse(l));
        return linhas;
    }

    void ConfiguraConta() {
        CQZDadosGT_ContaEmail conta;
        conta.SetUrl("smtp://127.0.0.1").SetEnderecoRemetente("alertas@empresa.com.br").SetNomeRemetente("Manutenção");
        ASSERT_EQ(0, armazem.Grava(conta)) << QZParaUtf8(armazem.GetErro().GetMensagem());
    }

    // A file of `conteudo`, removed after the test.
    std::string Arquivo(const std::string& nome, const std::string& conteudo) {
        const std::string caminho = Temporario(nome);
        std::ofstream(caminho, std::ios::binary) << conteudo;
        m_arquivos.push_back(caminho);
        return caminho;
    }

    CQZTransporteCaptura captura;
    std::string m_log;
    std::vector<std::string> m_arquivos;
};
