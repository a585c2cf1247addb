// Names of the maintenance module's data files: the base name of each file,
// its extension, its place in the company's data directory, and the names of
// the monthly movement files. Stateless; every operation is static.
#pragma once

#include "platform/CString.h"
#include "platform/QZAcesso.h"
#include "platform/QZDatas.h"

enum E_ARQUIVO_MANUTENCAO : int {
    ARQ_PX_MESTRE = 1,
    ARQ_PX_VERSAO = 2,
    ARQ_PX_LOGC = 3,
    ARQ_PX_LOGT = 4,
    ARQ_PX_SITREG = 5,
    ARQ_PX_DISMAN = 6,
    ARQ_PX_DMTXTO = 7,
    ARQ_PX_TECMAN = 8,
    ARQ_PX_TMDISC = 9,
    ARQ_PX_TMPOSE = 10,
    ARQ_PX_TMEMAI = 11,
    ARQ_PX_CPSCAB = 12,
    ARQ_PX_CPSTXT = 13,
    ARQ_PX_TRFCAB = 14,
    ARQ_PX_TRFDSC = 15,
    ARQ_PX_TRFMAT = 16,
    ARQ_PX_TRFEQP = 17,
    ARQ_PX_TRFSVC = 18,
    ARQ_PX_TRFMTX = 19,
    ARQ_PX_TRFETX = 20,
    ARQ_PX_TRFSTX = 21,
    ARQ_PX_PLAMAN = 22,
    ARQ_PX_PMTRFA = 23,
    ARQ_PX_PMALRT = 24,
    ARQ_PX_PMALTC = 25,
    ARQ_PX_PMALDT = 26,
    ARQ_PX_PMALME = 27,
    ARQ_PX_PMCOMP = 28,
    ARQ_PX_PLTXTO = 29,
    ARQ_PX_MN = 30,  // movement files, split by month: 30 to 34
    ARQ_PX_MC = 31,
    ARQ_PX_MF = 32,
    ARQ_PX_MA = 33,
    ARQ_PX_MNTTXTO = 34,
    ARQ_PX_TIPGAS = 35,
    ARQ_PX_LAGCAB = 36,
    ARQ_PX_LAGITE = 37,
    ARQ_PX_LAGTXT = 38,
    ARQ_PX_PRDMAN = 39,
};

// Files of earlier data versions.
enum E_ARQUIVO_MANUTENCAO_VERSAO : int {
    ARQ_PX_VERSAO_PMTXTO = 1,
    ARQ_PX_VERSAO_MD = 2,
    ARQ_PX_VERSAO_TD = 3,
    ARQ_PX_VERSAO_ML = 4,
    ARQ_PX_VERSAO_CC = 5,
    ARQ_PX_VERSAO_MO = 6,
};

enum E_EXTENSAO_ARQUIVO_MANUTENCAO : int {
    EXT_PX_DADOS = 1,       // "dat"
    EXT_PX_TRANSACAO = 2,   // "tra"
    EXT_PX_HISTORICO = 3,   // "his"
};

class CArqManutencao {
public:
    CArqManutencao() = default;
    CArqManutencao(const CArqManutencao&) = default;
    CArqManutencao& operator=(const CArqManutencao&) = default;
    virtual ~CArqManutencao() = default;

    // The base name, or the empty string for a value outside the enumeration.
    static CString GetArqManutencao(const E_ARQUIVO_MANUTENCAO& arquivo);
    // "NAME.ext"; the base name alone when the extension is unknown; the
    // empty string when the file is.
    static CString GetArqManutencao(const E_ARQUIVO_MANUTENCAO& arquivo, const E_EXTENSAO_ARQUIVO_MANUTENCAO& extensao);
    static CString GetArqManutencaoVersao(const E_ARQUIVO_MANUTENCAO_VERSAO& arquivo);
    static CString GetExtManutencao(const E_EXTENSAO_ARQUIVO_MANUTENCAO& extensao);
    // Appends the base names of the monthly movement files (30 to 34, in
    // that order); what the array already holds stays.
    static void GetArquivosMovimentacao(CStringArray& arquivos);

    // The module's data directory for the company, from the directory
    // service in use; empty when the service cannot name one.
    static CString GetDiretorioDados(const CString& empresa);
    // The company's data directory joined with the file name; empty when
    // there is no directory.
    static CString MontaArquivo(const CString& empresa, const CString& arquivo);
    // "%s%s.dat": the file's path in the company's data directory, then the
    // month and year as the date formatter writes them for that kind.
    static CString MontaArquivo(const CString& empresa, const CString& arquivo, const REG_QZMA& ma,
                                REG_QZDMA::TIPO_DATA_DMA tipo);
    // "%s%s.dat" with the file name alone.
    static CString MontaArquivo(const CString& arquivo, const REG_QZMA& ma, REG_QZDMA::TIPO_DATA_DMA tipo);

    // The directory service of the process (null: back to the default one,
    // rooted where CQZDiretorioDados says). The caller keeps it alive.
    static void SetServicoDiretorios(const CQZAcessoServidores* pServico);
    static const CQZAcessoServidores& GetServicoDiretorios();
};
