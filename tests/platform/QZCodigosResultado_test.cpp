#include "platform/QZCodigosResultado.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace {

// Codes written as they appear in a trace (unsigned 32-bit); the library sees
// them sign-extended into a 64-bit long, as a data service returns them.
long HR(uint32_t v) { return static_cast<long>(static_cast<int32_t>(v)); }

TEST(QZCodigosResultado, PartesDoCodigo) {
    struct Caso {
        long hr;
        int severidade, facility, codigo;
        const char* nomeSeveridade;
        const char* nomeFacility;
        const char* nomeCodigo;
    };
    const Caso casos[] = {
        {HR(0x80070002u), 1, 7, 2, "SEVERITY_ERROR", "FACILITY_WIN32", "ERROR_FILE_NOT_FOUND"},
        // Same code handed over without sign extension, or with junk above bit 31.
        {0x80070002L, 1, 7, 2, "SEVERITY_ERROR", "FACILITY_WIN32", "ERROR_FILE_NOT_FOUND"},
        {static_cast<long>(0x1234567880070002uLL), 1, 7, 2, "SEVERITY_ERROR", "FACILITY_WIN32", "ERROR_FILE_NOT_FOUND"},
        {HR(0x800705B4u), 1, 7, 1460, "SEVERITY_ERROR", "FACILITY_WIN32", "ERROR_TIMEOUT"},
        {HR(0x800706BAu), 1, 7, 1722, "SEVERITY_ERROR", "FACILITY_WIN32", "RPC_S_SERVER_UNAVAILABLE"},
        {1, 0, 0, 1, "SEVERITY_SUCCESS", "FACILITY_NULL", "ERROR_INVALID_FUNCTION"},
        {0, 0, 0, 0, "SEVERITY_SUCCESS", "FACILITY_NULL", "ERROR_SUCCESS"},
        {HR(0x8000FFFFu), 1, 0, 0xFFFF, "SEVERITY_ERROR", "FACILITY_NULL", ""},
        {HR(0x80010108u), 1, 1, 0x0108, "SEVERITY_ERROR", "FACILITY_RPC", ""},
        {HR(0x80020005u), 1, 2, 5, "SEVERITY_ERROR", "FACILITY_DISPATCH", ""},
        // Low word 2 outside WIN32/NULL is not ERROR_FILE_NOT_FOUND.
        {HR(0x80030002u), 1, 3, 2, "SEVERITY_ERROR", "FACILITY_STORAGE", ""},
        {QZ_E_BANCO, 1, 4, 0x0A03, "SEVERITY_ERROR", "FACILITY_ITF", ""},
        {HR(0x80080005u), 1, 8, 5, "SEVERITY_ERROR", "FACILITY_WINDOWS", ""},
        // Facility spans 13 bits: bit 28 belongs to it, so this is no longer WIN32.
        {HR(0x90070002u), 1, 0x1007, 2, "SEVERITY_ERROR", "", ""},
        {HR(0x7FFF0002u), 0, 0x1FFF, 2, "SEVERITY_SUCCESS", "", ""},
    };
    for (const Caso& c : casos) {
        SCOPED_TRACE(testing::Message() << std::hex << "hr=0x" << c.hr);
        EXPECT_EQ(QZSeveridade(c.hr), c.severidade);
        EXPECT_EQ(QZFacility(c.hr), c.facility);
        EXPECT_EQ(QZCodigo(c.hr), c.codigo);
        EXPECT_STREQ(QZNomeSeveridade(QZSeveridade(c.hr)), c.nomeSeveridade);
        EXPECT_STREQ(QZNomeFacility(QZFacility(c.hr)), c.nomeFacility);
        EXPECT_STREQ(QZNomeCodigoParte(c.hr), c.nomeCodigo);
    }
    EXPECT_STREQ(QZNomeSeveridade(2), "");
    EXPECT_STREQ(QZNomeSeveridade(-1), "");
}

TEST(QZCodigosResultado, CodigosConhecidos) {
    struct Caso {
        long hr;
        const char* nome;
        const char* descricao;
    };
    const Caso casos[] = {
        {0, "S_OK", "Operação concluída com êxito."},
        {1, "S_FALSE", "Operação concluída com êxito; o resultado é falso."},
        {HR(0x80004005u), "E_FAIL", "Erro não especificado."},
        {HR(0x8000FFFFu), "E_UNEXPECTED", "Falha catastrófica."},
        {HR(0x80040154u), "REGDB_E_CLASSNOTREG", "Classe não registrada."},
        // The COM name wins over the Win32 form of the same value.
        {HR(0x80070005u), "E_ACCESSDENIED", "Erro geral de acesso negado."},
        // HRESULT_FROM_WIN32 forms read like their Win32 error.
        {HR(0x80070002u), "HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND)",
         "O sistema não pode encontrar o arquivo especificado."},
        {HR(0x800706BAu), "HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE)", "O servidor RPC não está disponível."},
        {QZ_E_REGISTRO_ALTERADO, "QZ_E_REGISTRO_ALTERADO",
         "O registro foi alterado por outro usuário depois de ter sido lido."},
        {QZ_E_BANCO_OCUPADO, "QZ_E_BANCO_OCUPADO", "O banco de dados está bloqueado ou ocupado."},
    };
    for (const Caso& c : casos) {
        SCOPED_TRACE(c.nome);
        const QZInfoCodigo info = QZBuscaCodigo(c.hr);
        EXPECT_STREQ(info.nome, c.nome);
        EXPECT_STREQ(info.descricao, c.descricao);
        EXPECT_STREQ(QZDescricaoCodigo(c.hr), c.descricao);
    }
}

// Every code this library raises must show up in the trace under its own name.
TEST(QZCodigosResultado, CodigosDaBibliotecaTemNomeEDescricao) {
#define QZ_CASO(c) {c, #c}
    struct Caso {
        long hr;
        const char* nome;
    };
    const Caso casos[] = {
        QZ_CASO(QZ_E_REGISTRO_NAO_ENCONTRADO), QZ_CASO(QZ_E_REGISTRO_ALTERADO), QZ_CASO(QZ_E_BANCO),
        QZ_CASO(QZ_E_BANCO_OCUPADO), QZ_CASO(QZ_E_SEM_SERVICOS), QZ_CASO(QZ_E_REGISTRO_INVALIDO),
        QZ_CASO(QZ_E_FALHA_INJETADA), QZ_CASO(QZ_E_ENVIO_EMAIL), QZ_CASO(QZ_E_MODELO_LEITURA),
        QZ_CASO(QZ_E_MODELO_INEXISTENTE), QZ_CASO(QZ_E_CONTA_EMAIL),
    };
#undef QZ_CASO
    for (const Caso& c : casos) {
        SCOPED_TRACE(c.nome);
        const QZInfoCodigo info = QZBuscaCodigo(c.hr);
        EXPECT_STREQ(info.nome, c.nome);
        EXPECT_STRNE(info.descricao, "");
        EXPECT_STRNE(QZDescricaoCodigo(c.hr), "Erro desconhecido");
        // Unsigned spelling of the same code finds the same entry.
        EXPECT_STREQ(QZBuscaCodigo(static_cast<long>(static_cast<uint32_t>(c.hr))).nome, c.nome);
    }
}

TEST(QZCodigosResultado, Win32ForaDaTabelaUsaDescricaoWin32) {
    struct Caso {
        long hr;
        const char* nomeCodigo;
        const char* descricao;
    };
    const Caso casos[] = {
        {HR(0x800700AAu), "ERROR_BUSY", "O recurso solicitado está em uso."},
        {HR(0x80070102u), "WAIT_TIMEOUT", "A operação de espera atingiu o tempo limite."},
        {HR(0x800704CFu), "ERROR_NETWORK_UNREACHABLE", "O local de rede não pode ser acessado."},
    };
    for (const Caso& c : casos) {
        SCOPED_TRACE(c.nomeCodigo);
        const QZInfoCodigo info = QZBuscaCodigo(c.hr);
        EXPECT_STREQ(info.nome, "");
        EXPECT_STREQ(info.descricao, "");
        EXPECT_STREQ(QZNomeCodigoParte(c.hr), c.nomeCodigo);
        EXPECT_STREQ(QZDescricaoCodigo(c.hr), c.descricao);
    }
}

TEST(QZCodigosResultado, CodigoDesconhecido) {
    const long casos[] = {
        HR(0x80040A09u),  // right after the library's block
        HR(0x80040A00u),  // right before it
        HR(0x80070FFFu),  // WIN32 facility, unknown Win32 number
        2,                // known Win32 number, but not in FACILITY_WIN32
        HR(0x80030003u),
        HR(0xFFFFFFFFu),
        HR(0x7FFFFFFFu),
    };
    for (long hr : casos) {
        SCOPED_TRACE(testing::Message() << std::hex << "hr=0x" << hr);
        const QZInfoCodigo info = QZBuscaCodigo(hr);
        EXPECT_STREQ(info.nome, "");
        EXPECT_STREQ(info.descricao, "");
        EXPECT_STREQ(QZDescricaoCodigo(hr), "Erro desconhecido");
    }
}

}  // namespace
