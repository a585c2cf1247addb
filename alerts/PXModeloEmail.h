// E-mail templates of the plan alerts: HTML text (Windows-1252) with
// placeholders beginning with "QZ_" and an optional list block, the part of
// a table that holds the row repeated once per resource line.
//
// The three patterns are ECMAScript expressions whose "." is any character
// but CR and LF. They run on RE2 in Latin-1 mode with "." written
// "[^\r\n]": RE2 finds the same leftmost match in linear time, where a
// backtracking engine takes quadratic time (and libstdc++'s recursion runs
// out of stack) on large templates.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/CString.h"
#include "platform/QZContainers.h"

// The values of one e-mail body: fields 1-10 are the header, 11-23 one
// resource line.
struct DADOS_CORPO_EMAIL {
    CString sCodigoPlano;
    CString sNomePlano;
    CString sCodigoDisciplina;
    CString sNomeDisciplina;
    CString sDescricaoAlerta;
    CString sDetalhamentoAlerta;
    CString sCodigoTecnico;
    CString sNomeTecnico;
    CString sDataAtual;
    CString sDataHoraAtual;
    CString sCodigoRecurso;
    CString sDescricaoRecurso;
    CString sCodigoTipoRecurso;
    CString sDescricaoTipoRecurso;
    CString sNumeroSerieRecurso;  // never filled: the placeholder is replaced by nothing
    CString sDataProximaManutencao;
    CString sDiasProximaManutencao;
    CString sContadorProximaManutencao;
    CString sUnidadeContador;
    CString sCodigoFilial;
    CString sIdentificacaoFilial;
    CString sNomeFantasiaFilial;
    CString sRazaoSocial;
};

struct CPXMarcadorModelo {
    const char* texto;
    CString DADOS_CORPO_EMAIL::*campo;
};
// In the order they are replaced.
extern const CPXMarcadorModelo kPXMarcadoresCabecalho[10];
extern const CPXMarcadorModelo kPXMarcadoresLinha[13];
constexpr const char* kPXInicioLista = "QZ_INICIO_LISTA";
constexpr const char* kPXFimLista = "QZ_FIM_LISTA";

// The patterns, as ECMAScript writes them.
constexpr const char* kPXPadraoBloco = "QZ_INICIO_LISTA[^*]+QZ_FIM_LISTA.*\r\n.*\r\n.*</tr>";
constexpr const char* kPXPadraoLinha = "</tr>.*\r\n <tr[^*]+</tr>";
constexpr const char* kPXPadraoToken = "QZ_[^ <*]+";

// A regular-expression engine holding one of the patterns: the first match
// at or after `inicio`.
class IPXBuscaPadrao {
public:
    virtual ~IPXBuscaPadrao() = default;
    virtual bool Busca(std::string_view texto, size_t inicio, size_t& posicao, size_t& tamanho) const = 0;
};
struct CPXPadroesModelo {
    const IPXBuscaPadrao& bloco;
    const IPXBuscaPadrao& linha;
    const IPXBuscaPadrao& token;
};
// The three patterns on RE2 (compiled once; safe to share between threads).
const CPXPadroesModelo& PXPadroesRe2();

// Every occurrence of `de` replaced by `para`, left to right, the
// replacement never scanned again; an empty `de` replaces nothing. Bytes
// are bytes: a NUL is text like any other.
size_t PXSubstituiTodos(std::string& texto, std::string_view de, std::string_view para);

// What the preparation of a list block finds in a template.
struct CPXBlocoModelo {
    bool encontrado = false;
    std::string bloco;               // the list block as found (B)
    std::vector<std::string> linhas; // the row templates (R), one per row match
    std::vector<std::vector<std::string>> tokens;  // the tokens of each row, in order
};
CPXBlocoModelo PXAnalisaBloco(std::string_view modelo, const CPXPadroesModelo& padroes = PXPadroesRe2());

// The list block prepared for `linhas` resource lines; false (and the
// template unchanged) when there is no list block.
bool PXAtualizaConteudoEmail(std::string& modelo, int64_t linhas, const CPXPadroesModelo& padroes = PXPadroesRe2());

// Whether `token` is one of the ten header placeholders.
bool PXEhMarcadorCabecalho(std::string_view token);

// The substitutions. The sequential forms are the definition: one
// replace-all per placeholder (and per line), in table order. The others
// give the same bytes in one pass over the template, and take the
// sequential way themselves when a value could form a placeholder with the
// text beside it.
void PXSubstituiSequencial(std::string& modelo, const DADOS_CORPO_EMAIL& registro);
void PXSubstituiSequencial(std::string& modelo, const DADOS_CORPO_EMAIL& cabecalho,
                           const std::vector<DADOS_CORPO_EMAIL>& linhas);
// `usouSequencial`, when given, tells whether the fast way gave up.
void PXSubstitui(std::string& modelo, const DADOS_CORPO_EMAIL& registro, bool* usouSequencial = nullptr);
void PXSubstitui(std::string& modelo, const DADOS_CORPO_EMAIL& cabecalho, const std::vector<DADOS_CORPO_EMAIL>& linhas,
                 bool* usouSequencial = nullptr);

// Whether the open of a template for read and write failed with an error
// that means the file is not there: ENOENT and ENOTDIR (file or path not
// found); EHOSTDOWN, EHOSTUNREACH, ENETUNREACH, ENOTCONN and ESTALE (the
// network path is gone); ENXIO, ENODEV and ENOMEDIUM (the device is not
// ready). Any other error (EACCES, EISDIR, EROFS, ...) means a file is there.
bool PXErroSignificaAusente(int erro);
// The existence test of a template: open for read and write an existing
// file only; missing only on the errors above.
bool PXModeloEmailExiste(const char* caminho);
