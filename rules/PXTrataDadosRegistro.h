// The save step of every record handler, written once.
//
// A handler of record R derives from TPXTrataDadosRegistro<R>, gives it a
// descriptor (CPXGravacao<R>: how the stored copy is read, the field codes
// of the stale check and of a failed read, the order of the steps, the tree
// rule of tree registers) and writes its field checks (Consistir). The save
// step is then:
//
//   record of another type         -> message 162, nothing read
//   [CAMPOS_ANTES: Consistir]
//   saved record: read the stored copy, stale check (message 3),
//                 tree check of tree registers (messages 98 and 99)
//   [ATUALIZADO_ANTES: Consistir]
//
// A Consistir that completes the record and may still refuse it puts back
// what it completed: the caller's record changes only when the save passes.
//
// A record is saved when it has a position, a valid movement key, or is the
// one record of a one-record table.
#pragma once

#include <optional>
#include <type_traits>

#include "rules/PXTrataDados.h"
#include "rules/PXVerificaArvore.h"

enum class EPXOrdemGravacao {
    ATUALIZADO_ANTES,  // stored copy, stale and tree checks, then the field checks
    CAMPOS_ANTES,      // the field checks, then stored copy, stale and tree checks
};

template <class R>
struct CPXGravacao {
    // Reads the stored copy of `dados` (PXLeGravado names the operation).
    long (*le)(CQZAcessoManutencaoBuffer& servico, const R& dados, R& gravado) = nullptr;
    // Field code of message 3 (the record changed since it was read).
    long lCampoAtualizado = 0;
    // Field code given to the service's error when the read fails; none
    // keeps the service's own.
    std::optional<long> lCampoFalhaLeitura;
    EPXOrdemGravacao ordem = EPXOrdemGravacao::ATUALIZADO_ANTES;
    // Tree registers: the rule of the tree check, the search of the stored
    // copy's subtree and, when it is not GetPonteiroPai, the incoming
    // record's parent.
    std::optional<CPXRegraArvore> arvore;
    long (*subarvore)(CQZAcessoManutencaoBuffer& servico, const R& gravado, CQZListaClassificacao* pLista) = nullptr;
    uint32_t (*pai)(const R& dados) = nullptr;
};

// The read of the stored copy through one operation of the module's
// service, whatever its key: the record's position (the operation's own
// integer type), its movement key, or none for a one-record table.
template <auto Le, class R>
long PXLeGravado(CQZAcessoManutencaoBuffer& servico, const R& dados, R& gravado) {
    if constexpr (requires { (servico.*Le)(&gravado, 0); }) {
        return (servico.*Le)(&gravado, 0);
    } else if constexpr (QZTipoChaveDe<R>() == QZ_CHAVE_DMC) {
        return (servico.*Le)(QZChaveDmcDe(dados), &gravado, 0);
    } else {
        // Signed keys take the position's bits as they are: the store reads
        // them back as the same unsigned position.
        return (servico.*Le)(static_cast<uint32_t>(dados.GetPosicao()), &gravado, 0);
    }
}

// The subtree of a stored tree record whose filter names the parent
// (SetPonteiroPai): the record itself first, then its descendants.
template <class Filtro, auto Busca, class R>
long PXSubarvorePorPai(CQZAcessoManutencaoBuffer& servico, const R& gravado, CQZListaClassificacao* pLista) {
    Filtro filtro;
    filtro.SetPonteiroPai(gravado.GetPonteiro());
    return (servico.*Busca)(filtro, pLista);
}

template <class R>
class TPXTrataDadosRegistro : public CPXTrataDados {
public:
    using Registro = R;

protected:
    TPXTrataDadosRegistro(const CPXGravacao<R>& gravacao, bool bInterfaceUsuario)
        : CPXTrataDados(bInterfaceUsuario), m_pGravacao(&gravacao) {}

    // The record's own checks. pGravado is the stored copy of a saved record
    // when the steps read it before the field checks; null otherwise.
    virtual CQZDadosGT_Erro& Consistir(R& dados, const R* pGravado, IQZTrataInconsistencia* pInconsistencia) = 0;
    // The record's delete rules; without any the record is not deleted here.
    virtual CQZDadosGT_Erro& ConsistirExclusao(R& /*dados*/, IQZTrataInconsistencia* /*pInconsistencia*/) {
        return SetAviso(PX_MSG(162), 0);
    }

    CQZDadosGT_Erro& OnTrataGravacao(TQZBaseParaDados* pDados, IQZTrataInconsistencia* pInconsistencia) final {
        LimpaErro();
        R* pRegistro = dynamic_cast<R*>(pDados);
        if (!pRegistro) return SetAviso(PX_MSG(162), 0);
        R& dados = *pRegistro;
        const CPXGravacao<R>& g = *m_pGravacao;
        const bool camposAntes = g.ordem == EPXOrdemGravacao::CAMPOS_ANTES;

        if (camposAntes && Consistir(dados, nullptr, pInconsistencia).GetTipoErro() != 0) return *this;
        R gravado;
        const bool temGravado = QZEstaGravado(dados);
        if (temGravado && VerificaGravado(dados, gravado).GetTipoErro() != 0) return *this;
        if (camposAntes) return *this;
        return Consistir(dados, temGravado ? &gravado : nullptr, pInconsistencia);
    }

    CQZDadosGT_Erro& OnTrataExclusao(TQZBaseParaDados* pDados, IQZTrataInconsistencia* pInconsistencia) final {
        LimpaErro();
        R* pRegistro = dynamic_cast<R*>(pDados);
        if (!pRegistro) return SetAviso(PX_MSG(162), 0);
        return ConsistirExclusao(*pRegistro, pInconsistencia);
    }

private:
    // The stored copy, current and, for a tree, moved only where the tree
    // allows.
    CQZDadosGT_Erro& VerificaGravado(const R& dados, R& gravado) {
        const CPXGravacao<R>& g = *m_pGravacao;
        CQZAcessoManutencaoBuffer& servico = *GetAcessoManutencao();
        if (g.le(servico, dados, gravado) != 0)
            return g.lCampoFalhaLeitura ? PassaErroServico(servico.GetErro(), *g.lCampoFalhaLeitura)
                                        : PassaErroServico(servico.GetErro());
        if (ValidaRegistroAtualizado(QZCarimboDe(dados), QZCarimboDe(gravado), g.lCampoAtualizado).GetTipoErro() != 0)
            return *this;
        if (!g.arvore) return *this;
        if constexpr (requires { gravado.GetTipoClassificacao(); }) {
            uint32_t ulPaiNovo = 0;
            if (g.pai)
                ulPaiNovo = g.pai(dados);
            else if constexpr (requires { dados.GetPonteiroPai(); })
                ulPaiNovo = dados.GetPonteiroPai();
            return PXVerificaArvore(*this, servico, *g.arvore, gravado.GetTipoClassificacao(),
                                    dados.GetTipoClassificacao(), ulPaiNovo,
                                    [&](CQZListaClassificacao* pLista) { return g.subarvore(servico, gravado, pLista); });
        } else {
            return *this;
        }
    }

    const CPXGravacao<R>* m_pGravacao;
};
