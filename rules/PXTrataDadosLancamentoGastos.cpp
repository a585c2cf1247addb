#include "rules/PXTrataDadosLancamentoGastos.h"

#include "platform/QZCodigosResultado.h"

namespace {
constexpr long kCampoLancamento = 134;
constexpr long kCampoData = 135;
constexpr long kCampoRecurso = 136;
constexpr long kCampoItemProduto = 141;
constexpr long kCampoItemQuantidade = 143;
constexpr long kCampoItemValor = 144;

constexpr CQZPontoRastro kRastroLeLancamentoGastos{118};

// The delete works on the whole stored entry, its items included.
constexpr uint32_t kLerLancamentoCompleto = 0xFFFF;

// A saved entry is read by its movement key, for the stale check. Its checks
// only read the entry, so they need no working copy.
const CPXGravacao<CQZDadosPX_LancamentoGastos> kGravacao{
    .le = PXLeGravado<&CQZAcessoManutencao::LeLancamentoGastos>,
    .lCampoAtualizado = kCampoLancamento,
};
}  // namespace

CPXTrataDadosLancamentoGastos::CPXTrataDadosLancamentoGastos(bool bInterfaceUsuario)
    : TPXTrataDadosRegistro(kGravacao, bInterfaceUsuario) {}

CQZDadosGT_Erro& CPXTrataDadosLancamentoGastos::ConsistirLancamentoGastos(CQZDadosPX_LancamentoGastos* pDados) {
    LimpaErro();
    if (!pDados) return SetErro(QZ_E_ARGUMENTO_INVALIDO, QZ_MODULO_PX, 0, "Nenhum lançamento informado.");
    const CQZDadosPX_LancamentoGastos& dados = *pDados;
    if (dados.GetData().EhVazia()) return SetAviso(PX_MSG(174), kCampoData);
    if (dados.GetPonteiroRecurso() == 0) return SetAviso(PX_MSG(50), kCampoRecurso);
    if (!dados.GetDmc().EhValido()) return *this;
    // The entry lives in the monthly file of its key: its date stays in that month.
    if (!(REG_QZMA(dados.GetData()) == dados.GetDmc().ma)) return SetAviso(PX_MSG(175), kCampoData);
    return *this;
}

CQZDadosGT_Erro& CPXTrataDadosLancamentoGastos::ConsistirExclusao(CQZDadosPX_LancamentoGastos& dados,
                                                                 IQZTrataInconsistencia*) {
    if (!dados.GetDmc().EhValido()) return SetAviso(PX_MSG(144), kCampoLancamento);
    if (!GetAcessoManutencao()) return SetAvisoPersonalizado(PX_MSG(161), 0);
    CQZDadosPX_LancamentoGastos gravado;
    long hr;
    if (QZ_CHAMA_RASTREADO(hr, kRastroLeLancamentoGastos,
                           GetAcessoManutencao()->LeLancamentoGastos(dados.GetDmc(), &gravado, kLerLancamentoCompleto)))
        return PassaErroServico(GetAcessoManutencao()->GetErro());
    dados = std::move(gravado);
    return *this;
}

CQZDadosGT_Erro& CPXTrataDadosLancamentoGastos::TrataAdicionarAlterarItem(CQZDadosPX_LancamentoGastos* pDados,
                                                                         CQZDadosPX_LancamentoGastosItem* pItem,
                                                                         int64_t index, IQZTrataInconsistencia*) {
    return Protegido([&]() -> CQZDadosGT_Erro& {
        LimpaErro();
        if (!pDados || !pItem)
            return SetErro(QZ_E_ARGUMENTO_INVALIDO, QZ_MODULO_PX, 0, "Nenhum lançamento ou item informado.");
        if (!GetAcessoManutencao() || !GetAcessoGestavo()) return SetAvisoPersonalizado(PX_MSG(161), 0);
        CQZDadosPX_LancamentoGastos& dados = *pDados;
        const CQZDadosPX_LancamentoGastosItem& item = *pItem;
        const int64_t quantidade = dados.GetQuantidadeItem();
        if (index >= quantidade)
            return SetErro(QZ_E_ARGUMENTO_INVALIDO, QZ_MODULO_PX, 0, "Item %lld fora da lista de %lld itens.",
                           static_cast<long long>(index), static_cast<long long>(quantidade));

        const _REG_POSICAO_PRODUTOPS& produto = item.GetProdutoServico();
        if (produto.lPonteiroProduto == 0) return SetAviso(PX_MSG(166), kCampoItemProduto);
        if (VerificaProduto(produto).GetTipoErro() != 0) return SetCodigoCampo(kCampoItemProduto);
        if (item.GetQuantidade() <= CQZMoeda()) return SetAviso(PX_MSG(39), kCampoItemQuantidade);
        if (item.GetValor() <= CQZMoeda()) return SetAviso(PX_MSG(167), kCampoItemValor);
        // A product comes once per entry.
        for (int64_t i = 0; i < quantidade; ++i)
            if (i != index && dados.GetConstRefItem(i).GetProdutoServico() == produto)
                return SetAviso(PX_MSG(168), kCampoItemProduto);

        if (index >= 0)
            dados.SetItem(index, item);
        else
            dados.AdicionaItem(item);
        return *this;
    });
}
