// The save/delete use case, below every host (the command line, the
// daemon): a record is saved or deleted only through its type's rules, and
// the rules and the write run in one write transaction of the handler's own
// connection, whose write carries the stamp the rules validated. Of two
// writers racing on one record exactly one wins; the other is refused with
// message 3, as a stale record is.
#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "servico/PXTipoRegistro.h"

// The outcome of a save or a delete the rules were asked about.
struct CPXResultadoRegistro {
    bool permitido = false;
    bool gravado = false;
    // The rules' verdict when refused.
    CQZDadosGT_Erro veredito;
    // When a line of a list was refused: the list and the line's index (the
    // verdict's item too); empty and -1 otherwise.
    std::string lista;
    int64_t linha = -1;
    // Non-blocking inconsistencies the handler reported.
    std::vector<CQZDadosGT_Erro> inconsistencias;
};

class CPXServicoRegistros {
public:
    explicit CPXServicoRegistros(CPXSessao sessao) : m_sessao(std::move(sessao)) {}

    // Asks the type's handler whether `registro` may be saved and, when it
    // may (and this is not a dry run), writes it: an insert when it has no
    // key, else an update. Where the type says so, each line of the record's
    // lists is first checked by the handler's per-line operation, as a
    // screen adds and changes lines: a line at an index the stored record's
    // list has is checked as a change of that line, any other as an
    // addition; the first line refused is the verdict. Lines are checked,
    // not rebuilt: what reaches TrataGravacao is the record as given. On
    // success `registro` is the record as saved (trimmed, completed, with its
    // key and stamp). Returns 0 when the rules answered (the verdict is in
    // `resultado`), or the failure (no handler, the store) with its reason
    // in GetErro(). `confere`, when given, checks the record before the
    // rules, inside the same write transaction: what it reads cannot change
    // before the write commits. What it throws reaches the caller as thrown,
    // after the transaction is rolled back.
    [[nodiscard]] long Salva(const IPXTipoRegistro& tipo, TQZBaseParaDados& registro, bool simulacao,
                             CPXResultadoRegistro& resultado,
                             const std::function<void(CQZArmazemSQL&)>& confere = {});
    // Reads the record at `chave` into `registro` and deletes it as its type
    // says (EPXExclusao): a register after its integrity check, a record
    // with delete rules when they allow it. A type deleted by cancelling is
    // written instead, as its rules hand it back (`registro` is then the
    // record as written). Returns like Salva (QZ_E_REGISTRO_NAO_ENCONTRADO
    // when no record has that key, named as users write it).
    [[nodiscard]] long Exclui(const IPXTipoRegistro& tipo, int64_t chave, std::unique_ptr<TQZBaseParaDados>& registro,
                              CPXResultadoRegistro& resultado, const CPXOpcoesExclusao& opcoes = {});

    const CQZDadosGT_Erro& GetErro() const { return m_erro; }
    const CPXSessao& Sessao() const { return m_sessao; }

private:
    // The handler of the record, initialised, with its connection as a store.
    long PreparaTratador(const IPXTipoRegistro& tipo, const TQZBaseParaDados& registro,
                         std::unique_ptr<CPXTrataDados>& tratador, CQZArmazemSQL*& armazem);
    long Falha(long hr, const CQZDadosGT_Erro& erro);
    long ConcluiExclusao(long hr, bool conflito, const CQZDadosGT_Erro& erroArmazem, CPXResultadoRegistro& resultado);
    // A delete without rules: the integrity check and the removal, on a
    // connection of the service's own.
    long ExcluiCadastro(const IPXTipoRegistro& tipo, int64_t chave, TQZBaseParaDados& registro,
                        CPXResultadoRegistro& resultado);

    CPXSessao m_sessao;
    CQZDadosGT_Erro m_erro;
};
