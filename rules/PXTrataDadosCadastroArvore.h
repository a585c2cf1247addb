// The save rules shared by disciplines and expense types: one design for two
// tree registers. What differs (record, filter, access operations, field
// codes, the signedness of the read key) is the Cadastro parameter, a
// description of one register such as PXCadastroDisciplina.
#pragma once

#include <type_traits>

#include "rules/PXConsisteCodigoNome.h"
#include "rules/PXTrataDados.h"
#include "rules/PXVerificaArvore.h"

// Field codes of a register's warnings.
struct CPXCamposCadastroArvore {
    long lCodigoNovo;     // code of a new record; also a duplicate code, new or saved
    long lCodigoGravado;  // code of a saved record
    long lNome;
    long lPai;            // parent / classification: messages 98 and 99 of the tree check
    long lPaiProprio;     // message 99 of a saved record named as its own parent
};

// Key type of a read operation of the module's service.
template <class Op>
struct PXChaveDeLeitura;
template <class K, class R, class F>
struct PXChaveDeLeitura<long (CQZAcessoManutencao::*)(K, R*, F)> {
    using Tipo = K;
};

// Cadastro provides:
//   using Registro, Filtro;
//   static constexpr CPXCamposCadastroArvore kCampos;
//   static constexpr auto Le, BuscaPonteiros, BuscaClassificacao: the
//   register's operations of CQZAcessoManutencao; the read's own key type
//   (signed or not) is kept.
template <class Cadastro>
class TPXTrataDadosCadastroArvore : public CPXTrataDados {
public:
    using Registro = typename Cadastro::Registro;
    using Filtro = typename Cadastro::Filtro;

    explicit TPXTrataDadosCadastroArvore(bool bInterfaceUsuario) : CPXTrataDados(bInterfaceUsuario) {}

protected:
    // The record by itself: code, unique code, name, self-parent.
    CQZDadosGT_Erro& ConsisteCadastro(Registro& dados);
    // The save hook: `consistir` (the handler's Consistir), then for a saved
    // record the stale check and the tree check.
    template <class Consistir>
    CQZDadosGT_Erro& TrataGravacaoCadastro(Registro& dados, Consistir&& consistir);
};

template <class Cadastro>
CQZDadosGT_Erro& TPXTrataDadosCadastroArvore<Cadastro>::ConsisteCadastro(Registro& dados) {
    constexpr const CPXCamposCadastroArvore& campos = Cadastro::kCampos;
    LimpaErro();

    // Codes are unique in the whole table, wherever the record sits in the tree.
    const CPXCamposCodigoNome camposCodigoNome{campos.lCodigoNovo, campos.lCodigoGravado, campos.lNome};
    if (PXConsisteCodigoNome(*this, *GetAcessoManutencao(), dados, camposCodigoNome, Filtro(), Cadastro::BuscaPonteiros)
            .GetTipoErro() != 0)
        return *this;

    if (dados.GetPonteiro() != 0 && dados.GetPonteiro() == dados.GetPonteiroPai())
        return SetAviso(QZ_MODULO_PX, 99, campos.lPaiProprio);
    return *this;
}

template <class Cadastro>
template <class Consistir>
CQZDadosGT_Erro& TPXTrataDadosCadastroArvore<Cadastro>::TrataGravacaoCadastro(Registro& dados,
                                                                             Consistir&& consistir) {
    constexpr const CPXCamposCadastroArvore& campos = Cadastro::kCampos;
    LimpaErro();
    if (consistir(&dados).GetTipoErro() != 0) return *this;
    if (dados.GetPonteiro() == 0) return *this;

    using Chave = typename PXChaveDeLeitura<std::remove_const_t<decltype(Cadastro::Le)>>::Tipo;
    Registro gravado;
    if ((GetAcessoManutencao()->*Cadastro::Le)(static_cast<Chave>(dados.GetPonteiro()), &gravado, 0) != 0)
        return PassaErroServico(GetAcessoManutencao()->GetErro());
    if (ValidaRegistroAtualizado(gravado.GetDmaHmsGravacao(), dados.GetDmaHmsGravacao(), campos.lCodigoNovo)
            .GetTipoErro() != 0)
        return *this;

    const CPXRegraArvore regra{campos.lPai, false, std::nullopt};
    return PXVerificaArvore(*this, *GetAcessoManutencao(), regra, gravado, dados,
                            [&](CQZListaClassificacao* pLista) {
                                Filtro filtro;
                                filtro.SetPonteiroPai(gravado.GetPonteiro());
                                return (GetAcessoManutencao()->*Cadastro::BuscaClassificacao)(filtro, pLista);
                            });
}
