#include "files/ArqManutencao.h"

#include <array>
#include <atomic>

#include "platform/QZDiretorioDados.h"

namespace {

// Base names by value; index 0 is no file. 34 is nine characters long, one
// more than the others, and is kept so: the data files carry that name.
constexpr std::array<const char*, 40> kArquivos{
    "",         "PXMESTRE", "PXVERSAO", "PXLOGC",   "PXLOGT",   "PXSITREG", "PXDISMAN", "PXDMTXTO",
    "PXTECMAN", "PXTMDISC", "PXTMPOSE", "PXTMEMAI", "PXCPSCAB", "PXCPSTXT", "PXTRFCAB", "PXTRFDSC",
    "PXTRFMAT", "PXTRFEQP", "PXTRFSVC", "PXTRFMTX", "PXTRFETX", "PXTRFSTX", "PXPLAMAN", "PXPMTRFA",
    "PXPMALRT", "PXPMALTC", "PXPMALDT", "PXPMALME", "PXPMCOMP", "PXPLTXTO", "PXMN",     "PXMC",
    "PXMF",     "PXMA",     "PXMNTTXTO", "PXTIPGAS", "PXLAGCAB", "PXLAGITE", "PXLAGTXT", "PXPRDMAN",
};
constexpr std::array<const char*, 7> kArquivosVersao{"", "PXPMTXTO", "PXMD", "PXTD", "PXML", "PXCC", "PXMO"};
constexpr std::array<const char*, 4> kExtensoes{"", "dat", "tra", "his"};

template <size_t N>
CString NomeDaTabela(const std::array<const char*, N>& tabela, int valor) {
    return (valor > 0 && static_cast<size_t>(valor) < N) ? CString(tabela[static_cast<size_t>(valor)]) : CString();
}

std::atomic<const CQZAcessoServidores*> g_pServicoDiretorios{nullptr};

const CQZAcessoServidores& ServicoPadrao() {
    static const CQZDiretorioDados servico;
    return servico;
}

// The month and year as a file-name suffix. Kinds that write a separator
// ("11/2026") lose it: a file name cannot hold a path separator.
CString SufixoMes(const REG_QZMA& ma, REG_QZDMA::TIPO_DATA_DMA tipo) {
    CString texto = ma.Formata(tipo);
    texto.Remove('/');
    texto.Remove('\\');
    return texto;
}

}  // namespace

CString CArqManutencao::GetArqManutencao(const E_ARQUIVO_MANUTENCAO& arquivo) {
    return NomeDaTabela(kArquivos, arquivo);
}

CString CArqManutencao::GetArqManutencao(const E_ARQUIVO_MANUTENCAO& arquivo,
                                         const E_EXTENSAO_ARQUIVO_MANUTENCAO& extensao) {
    CString nome = GetArqManutencao(arquivo);
    if (nome.IsEmpty()) return nome;
    const CString ext = GetExtManutencao(extensao);
    return ext.IsEmpty() ? nome : nome + "." + ext;
}

CString CArqManutencao::GetArqManutencaoVersao(const E_ARQUIVO_MANUTENCAO_VERSAO& arquivo) {
    return NomeDaTabela(kArquivosVersao, arquivo);
}

CString CArqManutencao::GetExtManutencao(const E_EXTENSAO_ARQUIVO_MANUTENCAO& extensao) {
    return NomeDaTabela(kExtensoes, extensao);
}

void CArqManutencao::GetArquivosMovimentacao(CStringArray& arquivos) {
    for (int arquivo = ARQ_PX_MN; arquivo <= ARQ_PX_MNTTXTO; ++arquivo)
        arquivos.Add(GetArqManutencao(static_cast<E_ARQUIVO_MANUTENCAO>(arquivo)));
}

void CArqManutencao::SetServicoDiretorios(const CQZAcessoServidores* pServico) { g_pServicoDiretorios.store(pServico); }

const CQZAcessoServidores& CArqManutencao::GetServicoDiretorios() {
    const CQZAcessoServidores* p = g_pServicoDiretorios.load();
    return p ? *p : ServicoPadrao();
}

CString CArqManutencao::GetDiretorioDados(const CString& empresa) {
    return GetServicoDiretorios().GetDiretorioDados(empresa, QZ_MODULO_PX);
}

CString CArqManutencao::MontaArquivo(const CString& empresa, const CString& arquivo) {
    // Without a directory or a name there is no file to point at; a bare name
    // would silently resolve against the working directory.
    const CString diretorio = GetDiretorioDados(empresa);
    if (diretorio.IsEmpty() || arquivo.IsEmpty()) return CString();
    const char ultimo = diretorio[diretorio.GetLength() - 1];
    return (ultimo == '/' ? diretorio : diretorio + "/") + arquivo;
}

CString CArqManutencao::MontaArquivo(const CString& empresa, const CString& arquivo, const REG_QZMA& ma,
                                     REG_QZDMA::TIPO_DATA_DMA tipo) {
    return MontaArquivo(MontaArquivo(empresa, arquivo), ma, tipo);
}

CString CArqManutencao::MontaArquivo(const CString& arquivo, const REG_QZMA& ma, REG_QZDMA::TIPO_DATA_DMA tipo) {
    // Monthly files exist only for a real month of a real year.
    if (arquivo.IsEmpty() || !ma.EhValido()) return CString();
    return CString::Formatado("%s%s.dat", arquivo.GetString(), SufixoMes(ma, tipo).GetString());
}
