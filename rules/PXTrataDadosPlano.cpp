#include "rules/PXTrataDadosPlano.h"

#include "rules/PXConsisteCodigoNome.h"
#include "rules/PXLinhaComponente.h"

namespace {
constexpr CPXCamposCodigoNome kCamposCodigoNome{.lCodigoNovo = 21, .lCodigoGravado = 22, .lNome = 23};
constexpr long kCampoPai = 24;
constexpr long kCampoTipo = 25;
constexpr long kCampoDisciplina = 26;
constexpr long kCampoPrioridade = 27;
constexpr long kCampoTipoPeriodo = 29;
constexpr long kCampoContadorCiclo = 30;
constexpr long kCampoTarefas = 33;
constexpr long kCampoAlertaDescricao = 44;
constexpr long kCampoAlertaAntesApos = 45;
constexpr long kCampoAlertaTempoRepeticao = 52;
constexpr long kCampoAlertaTecnicos = 54;
// A service that fails its check is pointed at here, whatever the list.
constexpr long kCampoServico = 40;

// Product and quantity fields of the component lists, by kind (1, 2, 3).
struct CamposComponente {
    long lProduto;
    long lQuantidade;
};
constexpr CamposComponente kCamposComponente[] = {{34, 35}, {37, 38}, {40, 41}};

// Plan types: 1 recurs and its recurrence is checked; 2 is a leaf plan
// without that check; a group has type 0.
constexpr uint8_t kTipoRecorrente = 1;
constexpr uint8_t kTipoSemRecorrencia = 2;
constexpr uint8_t kTipoGrupo = 0;

// Control types: 0 by period, 1 by counter, 2 and 3 by both.
constexpr bool ControlaPorPeriodo(uint8_t ucTipoControle) {
    return ucTipoControle == 0 || ucTipoControle == 2 || ucTipoControle == 3;
}
constexpr bool ControlaPorContador(uint8_t ucTipoControle) { return ucTipoControle >= 1 && ucTipoControle <= 3; }

constexpr uint8_t kTipoServico = 'S';

// The field checks have no self-parent test, so the tree check compares the
// new parent with the plan itself too.
const CPXGravacao<CQZDadosPX_Plano> kGravacao{
    .le = PXLeGravado<&CQZAcessoManutencao::LePlano>,
    .lCampoAtualizado = kCamposCodigoNome.lCodigoNovo,
    .arvore = CPXRegraArvore{kCampoPai, true, std::nullopt},
    .subarvore = PXSubarvorePorPai<CQZDadosPX_FiltroPlano, &CQZAcessoManutencao::BuscaClassificacaoPlano>,
};
}  // namespace

CPXTrataDadosPlano::CPXTrataDadosPlano(bool bInterfaceUsuario) : TPXTrataDadosRegistro(kGravacao, bInterfaceUsuario) {}

CQZDadosGT_Erro& CPXTrataDadosPlano::ConsistirPlano(CQZDadosPX_Plano* pDados) {
    LimpaErro();
    CQZDadosPX_Plano& dados = *pDados;

    if (PXConsisteCodigoNome(*this, *GetAcessoManutencao(), dados, kCamposCodigoNome, CQZDadosPX_FiltroPlano(),
                             &CQZAcessoManutencao::BuscaPonteirosPlano)
            .GetTipoErro() != 0)
        return *this;

    if (dados.GetTipoClassificacao() != PX_CLASSIFICACAO_ANALITICO) {
        if (dados.GetTipo() != kTipoGrupo) return SetAviso(PX_MSG(183), kCampoTipo);
        // A group does not recur and warns nobody.
        dados.SetTipoControle(0)
            .SetPonteiroTipoPeriodo(0)
            .SetContadorCicloManutencao(CQZMoeda())
            .SetInativarAposRealManut(0);
        dados.RemoveTodosAlerta();
        return *this;
    }

    if (dados.GetTipo() != kTipoRecorrente && dados.GetTipo() != kTipoSemRecorrencia)
        return SetAviso(PX_MSG(183), kCampoTipo);
    if (dados.GetPonteiroDisciplina() == 0) return SetAviso(PX_MSG(19), kCampoDisciplina);
    if (dados.GetPonteiroPrioridade() == 0) return SetAviso(PX_MSG(177), kCampoPrioridade);
    if (dados.GetTipo() != kTipoRecorrente) return *this;

    // Other control types recur by neither, so they need neither.
    const uint8_t ucTipoControle = dados.GetTipoControle();
    if (ControlaPorPeriodo(ucTipoControle) && dados.GetPonteiroTipoPeriodo() == 0)
        return SetAviso(PX_MSG(22), kCampoTipoPeriodo);
    if (ControlaPorContador(ucTipoControle) && dados.GetContadorCicloManutencao().EhZero())
        return SetAviso(PX_MSG(23), kCampoContadorCiclo);
    return *this;
}

CQZDadosGT_Erro& CPXTrataDadosPlano::ConsistirCamposTarefa(CQZDadosPX_PlanoTarefa* pTarefa) {
    if (pTarefa->GetPonteiroTarefa() == 0) return SetAviso(PX_MSG(160), kCampoTarefas);
    return *this;
}

CQZDadosGT_Erro& CPXTrataDadosPlano::TrataAdicionarAlterarAlerta(CQZDadosPX_PlanoAlerta* pAlerta) {
    LimpaErro();
    CString descricao = pAlerta->GetDescricao();
    pAlerta->SetDescricao(descricao.Trim());

    if (descricao.IsEmpty()) return SetAviso(PX_MSG(49), kCampoAlertaDescricao);
    if (pAlerta->GetAntesApos() == 0) return SetAviso(PX_MSG(113), kCampoAlertaAntesApos);
    if (pAlerta->GetRepetirEm() != 0 && pAlerta->GetTempoRepeticao().EhZero())
        return SetAviso(PX_MSG(116), kCampoAlertaTempoRepeticao);
    if (pAlerta->GetQuantidadeTecnicos() == 0) return SetAviso(PX_MSG(117), kCampoAlertaTecnicos);
    return *this;
}

CQZDadosGT_Erro& CPXTrataDadosPlano::TrataAdicionarAlterarComponente(
    CQZDadosPX_PlanoComponente* pComponente, const std::vector<CQZDadosPX_PlanoComponente>& lista, int64_t index,
    _E_PX_MANUTENCOES_COMPONENTES eTipo) {
    LimpaErro();
    // Called directly by screens: without data services nothing is checked.
    if (!GetAcessoManutencao() || !GetAcessoGestavo()) return SetAvisoPersonalizado(PX_MSG(161), 0);

    // A kind outside 1 to 3 gets none of the kind's warnings; its line is
    // still checked as a product or service.
    const CPXMensagensComponente* pMensagens = PXMensagensComponente(eTipo);
    const CamposComponente* pCampos = pMensagens ? &kCamposComponente[eTipo - 1] : nullptr;
    const _REG_POSICAO_PRODUTOPS& posicao = pComponente->GetPosicaoProduto();

    if (posicao.lPonteiroProduto == 0 && pMensagens)
        return SetAviso(pMensagens->semProduto, pCampos->lProduto);

    if (pComponente->GetTipoProdutoServico() == kTipoServico) {
        if (VerificaServico(posicao).GetTipoErro() != 0) return SetCodigoCampo(kCampoServico);
    } else if (VerificaProduto(posicao).GetTipoErro() != 0) {
        // Materials and equipment stop on their product field. Any other
        // kind keeps the product's error, without a field, and goes on: a
        // later warning replaces it, and otherwise it is the answer.
        if (eTipo == E_PX_MANUTENCOES_COMPONENTES_MATERIAL || eTipo == E_PX_MANUTENCOES_COMPONENTES_EQUIPAMENTO)
            return SetCodigoCampo(pCampos->lProduto);
    }

    if (!pMensagens) return *this;
    if (pComponente->GetQuantidade() <= CQZMoeda()) return SetAviso(PX_MSG(39), pCampos->lQuantidade);

    auto posicaoDe = [](const CQZDadosPX_PlanoComponente& linha) { return linha.GetPosicaoProduto(); };
    if (PXPosicaoRepetida(lista, index, posicao, posicaoDe))
        return SetAviso(pMensagens->repetido, pCampos->lProduto);
    return *this;
}

CQZDadosGT_Erro& CPXTrataDadosPlano::TrataAdicionarTarefa(const std::vector<uint32_t>& aPonteirosTarefa,
                                                          std::vector<CQZDadosPX_PlanoTarefa>& aTarefas) {
    LimpaErro();
    if (!GetAcessoManutencao()) return SetAvisoPersonalizado(PX_MSG(161), 0);

    std::vector<CQZDadosPX_PlanoTarefa> aNovas;
    for (uint32_t ulPonteiroTarefa : aPonteirosTarefa) {
        CQZDadosPX_PlanoTarefa entrada;
        entrada.SetPonteiroTarefa(ulPonteiroTarefa);
        LimpaErro();
        if (ConsistirCamposTarefa(&entrada).GetTipoErro() != 0) return *this;

        // Only the entries the plan held before the call: a key given twice
        // in one call is added twice.
        for (const CQZDadosPX_PlanoTarefa& existente : aTarefas) {
            if (existente.GetPonteiroTarefa() != ulPonteiroTarefa) continue;
            CQZDadosPX_Tarefa tarefa;
            if (GetAcessoManutencao()->LeBufferTarefa(ulPonteiroTarefa, &tarefa, 0) != 0)
                return PassaErroServico(GetAcessoManutencao()->GetErro());
            return SetAvisoPersonalizado(PX_MSG(163), kCampoTarefas, tarefa.GetCodigo());
        }
        aNovas.push_back(entrada);
    }
    aTarefas.insert(aTarefas.end(), aNovas.begin(), aNovas.end());
    return *this;
}
