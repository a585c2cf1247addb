#include "rules/PXTrataDadosManutencao.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <set>

#include "files/PXFuncoesComuns.h"
#include "platform/QZCodigosResultado.h"
#include "platform/QZDadosPX_Manutencao.h"
#include "platform/QZPX_Disciplina.h"

using QZDadosPX::Manutencao::SITUACAO_ABERTA;
using QZDadosPX::Manutencao::SITUACAO_CANCELADA;
using QZDadosPX::Manutencao::SITUACAO_CONCLUIDA;
using QZDadosPX::Manutencao::SITUACAO_EM_ANDAMENTO;
using QZDadosPX::Manutencao::SITUACAO_INICIADA;
using QZDadosPX::Manutencao::SITUACAO_REPROGRAMADA;
using QZDadosPX::Manutencao::TIPO_PREVENTIVA;

// Per-kind constants of the line checks. Two asymmetries are the module's
// own and kept: a material whose product changed is message 118 where the
// other lists say 119, and equipment lines have no consumed quantity to check
// (bConsumo false, lCampoConsumo unused).
struct CPXRegrasComponente {
    CQZMensagem<0> semProduto;
    long lCampoProduto;
    bool bServico;  // checked as a service, else as a product
    long lCampoQuantidade;
    CQZMensagem<0> produtoAlterado;
    bool bConsumo;
    long lCampoConsumo;
    CQZMensagem<0> repetido;
};

namespace {

constexpr long kCampoChave = 84;
constexpr long kCampoEmissao = 85;
constexpr long kCampoRecurso = 86;
constexpr long kCampoTipoManutencao = 87;
constexpr long kCampoPlano = 88;
constexpr long kCampoDescricao = 89;
constexpr long kCampoPrevisaoInicio = 92;
constexpr long kCampoRequisitante = 94;
constexpr long kCampoPrioridade = 95;
constexpr long kCampoDisciplina = 96;
constexpr long kCampoTecnico = 97;
constexpr long kCampoInicio = 99;
constexpr long kCampoNovaProgramacao = 101;
constexpr long kCampoFim = 103;
constexpr long kCampoTarefaSituacao = 109;
constexpr long kCampoTarefaGarantia = 112;
constexpr long kCampoInfPersonalizada = 113;
constexpr long kCampoApontamentos = 125;
constexpr long kCampoApontamentoDisciplina = 129;

constexpr CPXRegrasComponente kMaterial{PX_MSG(36), 114, false, 115, PX_MSG(118), true, 116, PX_MSG(97)};
constexpr CPXRegrasComponente kEquipamento{PX_MSG(37), 118, false, 119, PX_MSG(119), false, 0, PX_MSG(172)};
constexpr CPXRegrasComponente kServico{PX_MSG(38), 121, true, 122, PX_MSG(119), true, 123, PX_MSG(173)};

// What the task masters suggest for each kind of list: the task read with
// that one component list, the list, and the requisition type of the lines.
struct CPXSugestaoComponente {
    uint64_t ullFlagsTarefa;
    const std::vector<CQZDadosPX_TarefaComponente>& (CQZDadosPX_Tarefa::*lista)() const;
    uint8_t ucTipoRI;
};
const CPXSugestaoComponente* SugestaoDe(_E_PX_MANUTENCOES_COMPONENTES eTipo) {
    static const CPXSugestaoComponente kSugestoes[] = {
        {4, &CQZDadosPX_Tarefa::GetListaMaterial, 2},
        {16, &CQZDadosPX_Tarefa::GetListaEquipamento, 1},
        {64, &CQZDadosPX_Tarefa::GetListaServico, 2},
    };
    return eTipo >= 1 && eTipo <= 3 ? &kSugestoes[eTipo - 1] : nullptr;
}

constexpr uint8_t kTipoServico = 'S';
// The resource kind maintenance orders are opened for.
constexpr uint8_t kTipoRecursoEquipamento = 2;

// Trace points of this source.
constexpr CQZPontoRastro kRastroLeBufferMestre{120};
constexpr CQZPontoRastro kRastroLeBufferRecurso{131};
constexpr CQZPontoRastro kRastroBuscarPlanoRecurso{160};
constexpr CQZPontoRastro kRastroLeBufferSituacao{212};
constexpr CQZPontoRastro kRastroBuscaTecnicos{244};
constexpr CQZPontoRastro kRastroLeBufferPlano{270};
constexpr CQZPontoRastro kRastroVerificaRecurso{283};
constexpr CQZPontoRastro kRastroLeRequisitante{296};
constexpr CQZPontoRastro kRastroLeBufferTecnico{309};
constexpr CQZPontoRastro kRastroLeBufferTarefa{402};
constexpr CQZPontoRastro kRastroLeBDDConfiguracao{413};
constexpr CQZPontoRastro kRastroTarefaLeBufferPlano{612};
constexpr CQZPontoRastro kRastroTarefaLeBufferTarefa{640};
constexpr CQZPontoRastro kRastroBuscaClassificacaoTarefa{652};
constexpr CQZPontoRastro kRastroConcatenarLeBufferTarefa{688};
constexpr CQZPontoRastro kRastroTarefaLeBufferRecurso{741};
constexpr CQZPontoRastro kRastroApontamentoLeBufferPlano{790};
constexpr CQZPontoRastro kRastroDisciplinaAtende{801};
constexpr CQZPontoRastro kRastroApontamentoLeBufferMestre{815};
constexpr CQZPontoRastro kRastroCancelamentoLeManutencao{842};

// The task master's tree: a group is never a task of an order.
constexpr uint8_t kClassificacaoGrupo = 2;
// What a read of a task master asks for: the record alone in the checks,
// the record as a line is built from it otherwise.
constexpr uint64_t kLerTarefa = 0;
constexpr uint64_t kLerTarefaParaLinha = 1;
// A plan with its task list; a resource with its warranties.
constexpr uint64_t kLerPlanoTarefas = 2;
constexpr uint64_t kLerRecursoGarantias = 4096;
// A cancellation examines the whole stored order.
constexpr uint32_t kLerManutencaoCompleta = 0xFFFF;

bool Preenchido(const REG_QZDMAHMSUTC& v) { return v.EhValido(); }

bool TrabalhoIniciado(uint8_t ucSituacao) {
    return ucSituacao == SITUACAO_INICIADA || ucSituacao == SITUACAO_EM_ANDAMENTO || ucSituacao == SITUACAO_CONCLUIDA;
}

// Whole periods of a quantity: rounded to the nearest, halves away from
// zero, as the currency type rounds everywhere else (2.5 periods are 3).
int64_t PeriodosInteiros(const CQZMoeda& quantidade) {
    const int64_t bruto = quantidade.GetBruto();
    const int64_t inteiro = bruto / CQZMoeda::kEscala;
    const int64_t resto = bruto % CQZMoeda::kEscala;
    if (resto >= CQZMoeda::kEscala / 2) return inteiro + 1;
    if (resto <= -CQZMoeda::kEscala / 2) return inteiro - 1;
    return inteiro;
}

// A saved order is read by its movement key, header only, for the stale
// check.
const CPXGravacao<CQZDadosPX_Manutencao> kGravacao{
    .le = PXLeGravado<&CQZAcessoManutencao::LeManutencao>,
    .lCampoAtualizado = kCampoChave,
};

}  // namespace

// The header fields the steps complete, as they were when the save began,
// and the custom data of each task line the steps added or removed. Keeping
// these instead of a copy of the whole order spares copying its lists on
// every save.
class CPXTrataDadosManutencao::CDesfazer {
public:
    explicit CDesfazer(const CQZDadosPX_Manutencao& dados)
        : m_ulContadorUnMedida(dados.GetContadorPonteiroUnMedida()),
          m_usFilial(dados.GetPonteiroFilial()),
          m_usContadorDigitos(dados.GetContadorNumeroDigitos()),
          m_ucContadorProdutoServico(dados.GetContadorProdutoServico()),
          m_tempoPrevisto(dados.GetTempoPrevisto()),
          m_ucTempoPrevistoEmHoras(dados.GetTempoPrevistoEmHoras()),
          m_ucSituacao(dados.GetSituacao()),
          m_descricao(dados.GetDescricao()) {}

    // Line i, which has no custom data, is about to get some.
    void Inclusao(int64_t i) { m_linhas.emplace_back(i, std::nullopt); }
    // Line i's custom data is about to go: it is kept here instead.
    void Remocao(int64_t i, CQZDadosPX_ManutencaoTarefa& linha) {
        m_linhas.emplace_back(i, std::move(*linha.GetApontamentoTarefa()));
    }

    void Devolve(CQZDadosPX_Manutencao& dados) {
        dados.SetContadorPonteiroUnMedida(m_ulContadorUnMedida)
            .SetPonteiroFilial(m_usFilial)
            .SetContadorNumeroDigitos(m_usContadorDigitos)
            .SetContadorProdutoServico(m_ucContadorProdutoServico)
            .SetTempoPrevisto(m_tempoPrevisto)
            .SetTempoPrevistoEmHoras(m_ucTempoPrevistoEmHoras)
            .SetSituacao(m_ucSituacao)
            .SetDescricao(m_descricao);
        for (auto& [i, apontamento] : m_linhas) {
            CQZDadosPX_ManutencaoTarefa& linha = dados.GetRefTarefa(i);
            if (apontamento)
                linha.IncluiApontamentoTarefa() = std::move(*apontamento);
            else
                linha.RemoveApontamentoTarefa();
        }
    }

private:
    uint32_t m_ulContadorUnMedida;
    uint16_t m_usFilial;
    uint16_t m_usContadorDigitos;
    uint8_t m_ucContadorProdutoServico;
    CQZMoeda m_tempoPrevisto;
    uint8_t m_ucTempoPrevistoEmHoras;
    uint8_t m_ucSituacao;
    CString m_descricao;
    // Each line is noted once, with the custom data it had (none: nullopt).
    std::vector<std::pair<int64_t, std::optional<CQZDadosBDD_Registro>>> m_linhas;
};

CPXTrataDadosManutencao::CPXTrataDadosManutencao(bool bInterfaceUsuario)
    : TPXTrataDadosRegistro(kGravacao, bInterfaceUsuario) {}

bool CPXTrataDadosManutencao::ServicosAusentes() {
    if (GetAcessoManutencao() && GetAcessoGestavo()) return false;
    SetAvisoPersonalizado(PX_MSG(161), 0);
    return true;
}

// ---- the save validation -----------------------------------------------------

CQZDadosGT_Erro& CPXTrataDadosManutencao::Consistir(CQZDadosPX_Manutencao& dados, const CQZDadosPX_Manutencao*,
                                                    IQZTrataInconsistencia*) {
    CDesfazer desfazer(dados);
    if (ValidaManutencao(dados, &desfazer).GetTipoErro() != 0) desfazer.Devolve(dados);
    return *this;
}

CQZDadosGT_Erro& CPXTrataDadosManutencao::ConsistirManutencao(CQZDadosPX_Manutencao* pDados) {
    return ValidaManutencao(*pDados, nullptr);
}

CQZDadosGT_Erro& CPXTrataDadosManutencao::ValidaManutencao(CQZDadosPX_Manutencao& dados, CDesfazer* pDesfazer) {
    return Protegido([&]() -> CQZDadosGT_Erro& {
        LimpaErro();
        if (ServicosAusentes()) return *this;
        return PassosManutencao(dados, pDesfazer);
    });
}

CQZDadosGT_Erro& CPXTrataDadosManutencao::PassosManutencao(CQZDadosPX_Manutencao& dados, CDesfazer* pDesfazer) {
    const bool bNova = !dados.GetDmc().EhValido();
    CQZAcessoManutencaoBuffer& manutencao = *GetAcessoManutencao();
    CQZAcessoGestavoBuffer& gestavo = *GetAcessoGestavo();
    long hr;

    CQZDadosPX_Mestre mestre;
    if (QZ_CHAMA_RASTREADO(hr, kRastroLeBufferMestre, GetAcessoManutencao()->LeBufferMestre(&mestre, 0)))
        return PassaErroServico(manutencao.GetErro());

    if (dados.GetPonteiroRecurso() == 0) return SetAviso(PX_MSG(50), kCampoRecurso);
    CQZDadosGT_Recurso recurso;
    if (QZ_CHAMA_RASTREADO(hr, kRastroLeBufferRecurso,
                           GetAcessoGestavo()->LeBufferRecurso(dados.GetPonteiroRecurso(), &recurso, 1)))
        return PassaErroServico(gestavo.GetErro());
    if (bNova && recurso.GetInativo()) return SetAviso(PX_MSG(54), kCampoRecurso);
    if (recurso.GetTipo() != kTipoRecursoEquipamento) return SetAviso(PX_MSG(51), kCampoRecurso);

    // A saved order keeps the branch and counter it was opened with, even
    // when the resource has changed them since.
    if (bNova) {
        dados.SetContadorPonteiroUnMedida(recurso.GetPonteiroUnidadeMedidaContador());
        dados.SetPonteiroFilial(recurso.GetPonteiroFilial());
        dados.SetContadorNumeroDigitos(recurso.GetNumeroDigitosContador());
        dados.SetContadorProdutoServico(recurso.GetUnidadeProdutoServico());
    }

    if (VerificaTipoManutencao(dados.GetTipoManutencao()).GetTipoErro() != 0) return *this;

    if (dados.GetTipoManutencao() == TIPO_PREVENTIVA) {
        if (dados.GetPonteiroPlano() == 0) return SetAviso(PX_MSG(53), kCampoPlano);
        CQZDadosPX_Plano plano;
        if (VerificaPlano(dados.GetPonteiroPlano(), &plano, bNova).GetTipoErro() != 0) return *this;
        CQZDadosGT_RecursoPlanoManutencao vinculo;
        if (QZ_CHAMA_RASTREADO(hr, kRastroBuscarPlanoRecurso,
                               GetAcessoGestavo()->BuscarDadosPlanoManutencaoRecurso(
                                   dados.GetPonteiroRecurso(), dados.GetPonteiroPlano(), &vinculo)))
            return PassaErroServico(gestavo.GetErro());
        if (bNova && vinculo.GetInativo()) return SetAviso(PX_MSG(25), kCampoPlano);
        if (dados.GetPonteiroDisciplina() == 0) return SetAviso(PX_MSG(19), kCampoDisciplina);
        // A new plan-driven order is the plan's: its name over whatever was
        // typed, and its planned time.
        if (bNova) {
            dados.SetTempoPrevisto(plano.GetTempoPrevisto());
            dados.SetDescricao(plano.GetNome());
            dados.SetTempoPrevistoEmHoras(plano.GetTempoPrevistoEmHoras());
        }
    }

    CString descricao = dados.GetDescricao();
    dados.SetDescricao(descricao.Trim());
    if (descricao.IsEmpty()) return SetAviso(PX_MSG(49), kCampoDescricao);
    if (dados.GetPonteiroRequisitante() == 0) return SetAviso(PX_MSG(27), kCampoRequisitante);
    if (dados.GetPonteiroPrioridade() == 0) return SetAviso(PX_MSG(177), kCampoPrioridade);

    CQZDadosGT_Requisitante requisitante;
    if (VerificaRequisitante(dados.GetPonteiroRequisitante(), &requisitante, bNova).GetTipoErro() != 0) return *this;
    if (bNova && requisitante.GetFilial() != 0 && requisitante.GetFilial() != dados.GetPonteiroFilial())
        return SetAvisoPersonalizado(PX_MSG(127), kCampoRequisitante, requisitante.GetNome(), recurso.GetDescricao());

    if (ConsistirTecnico(dados, mestre, recurso, bNova).GetTipoErro() != 0) return *this;

    if (dados.GetSituacao() == 0 && dados.GetPonteiroSituacao() != 0) {
        CQZDadosPX_Situacao situacao;
        if (QZ_CHAMA_RASTREADO(hr, kRastroLeBufferSituacao,
                               GetAcessoManutencao()->LeBufferSituacao(dados.GetPonteiroSituacao(), &situacao, 0)))
            return PassaErroServico(manutencao.GetErro());
        dados.SetSituacao(situacao.GetSituacaoBase());
    }

    if (VerificaDatasHoras(dados, mestre, bNova).GetTipoErro() != 0) return *this;
    if (PassosInfoPersonalizadaTarefa(dados, pDesfazer).GetTipoErro() != 0) return *this;
    if (ConsistirExistenciaKits(dados).GetTipoErro() != 0) return *this;
    return VerificaApontamentos(dados, mestre);
}

CQZDadosGT_Erro& CPXTrataDadosManutencao::ConsistirTecnico(const CQZDadosPX_Manutencao& dados,
                                                           const CQZDadosPX_Mestre& mestre,
                                                           const CQZDadosGT_Recurso& recurso, bool bNova) {
    if (dados.GetPonteiroTecnico() == 0) {
        // An order opened from another module's production time entry has no
        // technician to name.
        if (!dados.GetOrigemRProducaoApontamento() && mestre.GetObrigarInformarTecnicoManutencao())
            return SetAviso(PX_MSG(28), kCampoTecnico);
        return *this;
    }

    CQZDadosPX_Tecnico tecnico;
    if (VerificaTecnico(dados.GetPonteiroTecnico(), &tecnico, bNova).GetTipoErro() != 0) return *this;
    // Unlike the requester's, checked on every save.
    if (tecnico.GetPonteiroFilial() != 0 && tecnico.GetPonteiroFilial() != dados.GetPonteiroFilial())
        return SetAvisoPersonalizado(PX_MSG(128), kCampoTecnico, tecnico.GetNome(), recurso.GetDescricao());
    if (dados.GetPonteiroDisciplina() == 0) return *this;

    CQZDadosPX_FiltroTecnico filtro;
    filtro.SetValorUnicoDisciplina(dados.GetPonteiroDisciplina()).SetTipoClassificacaoAnalitico(1);
    CQZArray_deprecated<uint32_t> aPonteiros;
    long hr;
    if (QZ_CHAMA_RASTREADO(hr, kRastroBuscaTecnicos, GetAcessoManutencao()->BuscaPonteirosTecnico(filtro, aPonteiros)))
        return PassaErroServico(GetAcessoManutencao()->GetErro());
    for (uint32_t ulPonteiro : aPonteiros)
        if (ulPonteiro == dados.GetPonteiroTecnico()) return *this;
    return SetAviso(PX_MSG(182), kCampoTecnico);
}

CQZDadosGT_Erro& CPXTrataDadosManutencao::VerificaTipoManutencao(uint8_t ucTipo) {
    LimpaErro();
    // A type is known when it has a name.
    if (CPXFuncoesComuns::GetTipoManutencao(ucTipo).IsEmpty()) return SetAviso(PX_MSG(52), kCampoTipoManutencao);
    return *this;
}

CQZDadosGT_Erro& CPXTrataDadosManutencao::VerificaPlano(uint32_t ulPlano, CQZDadosPX_Plano* pPlano,
                                                       bool bVerificaInativo) {
    LimpaErro();
    if (ServicosAusentes()) return *this;
    long hr;
    if (QZ_CHAMA_RASTREADO(hr, kRastroLeBufferPlano, GetAcessoManutencao()->LeBufferPlano(ulPlano, pPlano, 0)))
        return PassaErroServico(GetAcessoManutencao()->GetErro());
    if (bVerificaInativo && pPlano->GetInativo() == 1) return SetAviso(PX_MSG(55), kCampoPlano);
    return *this;
}

CQZDadosGT_Erro& CPXTrataDadosManutencao::VerificaRecurso(uint32_t ulRecurso, CQZDadosGT_Recurso* pRecurso,
                                                         bool bVerificaInativo, bool bAceitaInativo) {
    LimpaErro();
    if (ServicosAusentes()) return *this;
    long hr;
    if (QZ_CHAMA_RASTREADO(hr, kRastroVerificaRecurso, GetAcessoGestavo()->LeBufferRecurso(ulRecurso, pRecurso, 1)))
        return PassaErroServico(GetAcessoGestavo()->GetErro());
    if (bVerificaInativo && pRecurso->GetInativo() && !bAceitaInativo) return SetAviso(PX_MSG(54), kCampoRecurso);
    return *this;
}

CQZDadosGT_Erro& CPXTrataDadosManutencao::VerificaRequisitante(uint32_t ulRequisitante,
                                                              CQZDadosGT_Requisitante* pRequisitante,
                                                              bool bVerificaInativo) {
    LimpaErro();
    if (ServicosAusentes()) return *this;
    long hr;
    if (QZ_CHAMA_RASTREADO(hr, kRastroLeRequisitante,
                           GetAcessoGestavo()->LeRequisitante(ulRequisitante, pRequisitante, 0)))
        return PassaErroServico(GetAcessoGestavo()->GetErro());
    if (bVerificaInativo && pRequisitante->GetInativo() == 1) return SetAviso(PX_MSG(56), kCampoRequisitante);
    return *this;
}

CQZDadosGT_Erro& CPXTrataDadosManutencao::VerificaTecnico(uint32_t ulTecnico, CQZDadosPX_Tecnico* pTecnico,
                                                         bool bNova) {
    LimpaErro();
    if (ServicosAusentes()) return *this;
    long hr;
    // The module's service reads the technician, but the error passed on is
    // the enterprise service's last one, as the module always has. Behind
    // one connection both services keep the same error record.
    if (QZ_CHAMA_RASTREADO(hr, kRastroLeBufferTecnico,
                           GetAcessoManutencao()->LeBufferTecnico(ulTecnico, pTecnico, 0xFFFF)))
        return PassaErroServico(GetAcessoGestavo()->GetErro());
    if (pTecnico->GetInativo() == 1 && !bNova) return SetAviso(PX_MSG(29), kCampoTecnico);
    return *this;
}

CQZDadosGT_Erro& CPXTrataDadosManutencao::VerificaDatasHoras(const CQZDadosPX_Manutencao& dados,
                                                            const CQZDadosPX_Mestre&, bool) {
    LimpaErro();
    if (ServicosAusentes()) return *this;
    const REG_QZDMAHMSUTC& emissao = dados.GetDataHoraEmissao();
    const REG_QZDMAHMSUTC& previsao = dados.GetDmaHmsPrevInicio();
    const REG_QZDMAHMSUTC& inicio = dados.GetDataHoraInicio();
    const REG_QZDMAHMSUTC& novaProgramacao = dados.GetDataHoraNovaProgramacao();
    const REG_QZDMAHMSUTC& fim = dados.GetDataHoraFim();
    const uint8_t ucSituacao = dados.GetSituacao();

    if (!Preenchido(emissao)) return SetAviso(PX_MSG(134), kCampoEmissao);
    if (VerificaPeriodoMovimentacao(emissao.GetData(), kCampoEmissao).GetTipoErro() != 0) return *this;
    // Components move stock, which is booked today.
    if (dados.GetQuantidadeMaterial() + dados.GetQuantidadeEquipamento() > 0 &&
        VerificaPeriodoIntegracao(GetRelogio().Agora(), dados.GetPonteiroFilial(), kCampoEmissao).GetTipoErro() != 0)
        return *this;

    if (Preenchido(previsao) && previsao.GetInstanteUtc() < emissao.GetInstanteUtc())
        return SetAviso(PX_MSG(135), kCampoPrevisaoInicio);
    if (!Preenchido(inicio) && TrabalhoIniciado(ucSituacao)) return SetAviso(PX_MSG(136), kCampoInicio);

    if (Preenchido(novaProgramacao)) {
        if (ucSituacao != SITUACAO_REPROGRAMADA) return SetAviso(PX_MSG(137), kCampoNovaProgramacao);
        if (novaProgramacao.GetInstanteUtc() <= emissao.GetInstanteUtc())
            return SetAviso(PX_MSG(138), kCampoNovaProgramacao);
        if (Preenchido(inicio) && novaProgramacao.GetInstanteUtc() <= inicio.GetInstanteUtc())
            return SetAviso(PX_MSG(139), kCampoNovaProgramacao);
        if (VerificaPeriodoMovimentacao(novaProgramacao.GetData(), kCampoEmissao).GetTipoErro() != 0) return *this;
    } else if (ucSituacao == SITUACAO_REPROGRAMADA) {
        return SetAviso(PX_MSG(140), kCampoNovaProgramacao);
    }

    if (ucSituacao == SITUACAO_CONCLUIDA) {
        if (!Preenchido(fim)) return SetAviso(PX_MSG(141), kCampoFim);
        if (inicio.GetInstanteUtc() > fim.GetInstanteUtc()) return SetAviso(PX_MSG(143), kCampoFim);
        if (VerificaPeriodoMovimentacao(fim.GetData(), kCampoEmissao).GetTipoErro() != 0) return *this;
    } else if (fim.ullValor != 0) {
        // Any value at all, a date that is not one included.
        return SetAviso(PX_MSG(142), kCampoFim);
    }
    return *this;
}

CQZDadosGT_Erro& CPXTrataDadosManutencao::ConsistirExistenciaKits(const CQZDadosPX_Manutencao& dados) {
    LimpaErro();
    if (ServicosAusentes()) return *this;
    struct Lista {
        const ListaComponentes& linhas;
        long lCampo;
    } listas[] = {{dados.GetListaMaterial(), kMaterial.lCampoProduto},
                  {dados.GetListaEquipamento(), kEquipamento.lCampoProduto}};
    for (const Lista& lista : listas)
        for (size_t i = 0; i < lista.linhas.size(); ++i)
            if (VerificaProduto(lista.linhas[i].GetProdutoServico()).GetTipoErro() != 0)
                return SetCodigoCampo(lista.lCampo).SetItem(static_cast<int64_t>(i));
    return *this;
}

CQZDadosGT_Erro& CPXTrataDadosManutencao::VerificaApontamentos(const CQZDadosPX_Manutencao& dados,
                                                              const CQZDadosPX_Mestre& mestre) {
    LimpaErro();
    const uint8_t ucSituacao = dados.GetSituacao();
    if (TrabalhoIniciado(ucSituacao)) {
        if (mestre.GetObrigarApontamentoManutencao() && dados.GetQuantidadeApontamento() == 0)
            return SetAviso(PX_MSG(70), kCampoApontamentos);
        return *this;
    }
    if (dados.GetQuantidadeApontamento() > 0)
        return SetAvisoPersonalizado(PX_MSG(155), kCampoApontamentos,
                                     CPXFuncoesComuns::GetSituacaoManutencao(ucSituacao));
    return *this;
}

CQZDadosGT_Erro& CPXTrataDadosManutencao::ConsistirInfoPersonalizadaTarefa(CQZDadosPX_Manutencao* pDados) {
    return Protegido([&]() -> CQZDadosGT_Erro& {
        LimpaErro();
        if (ServicosAusentes()) return *this;
        return PassosInfoPersonalizadaTarefa(*pDados, nullptr);
    });
}

CQZDadosGT_Erro& CPXTrataDadosManutencao::PassosInfoPersonalizadaTarefa(CQZDadosPX_Manutencao& dados,
                                                                        CDesfazer* pDesfazer) {
    if (dados.GetSituacao() != SITUACAO_CONCLUIDA) return *this;

    // One task record for the whole loop: each read reuses its storage.
    CQZDadosPX_Tarefa tarefa;
    for (int64_t i = 0; i < dados.GetQuantidadeTarefa(); ++i) {
        CQZDadosPX_ManutencaoTarefa& linha = dados.GetRefTarefa(i);
        long hr;
        if (QZ_CHAMA_RASTREADO(hr, kRastroLeBufferTarefa,
                               GetAcessoManutencao()->LeBufferTarefa(linha.GetPonteiroTarefa(), &tarefa, 0)))
            return PassaErroServico(GetAcessoManutencao()->GetErro());
        if (!tarefa.GetEfetuarApontTarefa() || tarefa.GetPonteiroInfPersonalizada() == 0) {
            if (pDesfazer && linha.PossuiApontamentoTarefa()) pDesfazer->Remocao(i, linha);
            linha.RemoveApontamentoTarefa();
            continue;
        }
        if (!linha.PossuiApontamentoTarefa()) {
            CQZDadosBDD_Registro configuracao;
            if (QZ_CHAMA_RASTREADO(hr, kRastroLeBDDConfiguracao,
                                   GetAcessoGestavo()->LeBDDConfiguracao(
                                       REG_BDD_KEY_GERADOR(BDD_ATV_PX_APONTAMENTO_TAREFA,
                                                           tarefa.GetPonteiroInfPersonalizada()),
                                       &configuracao)))
                return PassaErroServico(GetAcessoGestavo()->GetErro());
            if (pDesfazer) pDesfazer->Inclusao(i);
            linha.IncluiApontamentoTarefa()
                .SetListaCampos(configuracao.GetListaCampos())
                .SetTipoAtividade(BDD_ATV_PX_APONTAMENTO_TAREFA);
        }

        const CQZDadosBDD_Registro& apontamento = *linha.GetApontamentoTarefa();
        for (int64_t j = 0; j < apontamento.GetQuantidadeCampos(); ++j) {
            const CQZDadosBDD_Campo& campo = apontamento.GetConstRefCampos(j);
            if (!campo.GetDescricao().TemValorInformado())
                return SetAvisoPersonalizado(QZ_MODULO_PX, kCampoInfPersonalizada,
                                             "%dº campo das Configurações da Tarefa %s não possui descrição "
                                             "informada.",
                                             static_cast<int>(j + 1), tarefa.GetCodigoNome());
            if (campo.GetCampoObrigatorio() && !campo.GetDesabilitarCampo() && !campo.TemValorInformado())
                return SetAvisoPersonalizado(QZ_MODULO_PX, kCampoInfPersonalizada,
                                             "Campo \"%s\" das Configurações da Tarefa %s deve ser informado.",
                                             campo.GetDescricao().GetValorAsString(), tarefa.GetCodigoNome());
        }
    }
    return *this;
}

// ---- component lines -----------------------------------------------------------

CQZDadosGT_Erro& CPXTrataDadosManutencao::TrataAdicionarAlterarMaterial(CQZDadosPX_ManutencaoComponente* pLinha,
                                                                       int64_t index, const ListaComponentes& lista) {
    return TrataAdicionarAlterarComponente(kMaterial, *pLinha, index, lista);
}

CQZDadosGT_Erro& CPXTrataDadosManutencao::TrataAdicionarAlterarEquipamento(CQZDadosPX_ManutencaoComponente* pLinha,
                                                                          int64_t index,
                                                                          const ListaComponentes& lista) {
    return TrataAdicionarAlterarComponente(kEquipamento, *pLinha, index, lista);
}

CQZDadosGT_Erro& CPXTrataDadosManutencao::TrataAdicionarAlterarServico(CQZDadosPX_ManutencaoComponente* pLinha,
                                                                      int64_t index, const ListaComponentes& lista) {
    return TrataAdicionarAlterarComponente(kServico, *pLinha, index, lista);
}

CQZDadosGT_Erro& CPXTrataDadosManutencao::TrataAdicionarAlterarComponente(const CPXRegrasComponente& regras,
                                                                         const CQZDadosPX_ManutencaoComponente& linha,
                                                                         int64_t index,
                                                                         const ListaComponentes& lista) {
    return Protegido([&]() -> CQZDadosGT_Erro& {
        LimpaErro();
        if (ServicosAusentes()) return *this;
        const int64_t quantidade = static_cast<int64_t>(lista.size());
        if (index >= quantidade)
            return SetErro(QZ_E_ARGUMENTO_INVALIDO, QZ_MODULO_PX, 0, "Linha %lld fora da lista de %lld linhas.",
                           static_cast<long long>(index), static_cast<long long>(quantidade));

        const _REG_POSICAO_PRODUTOPS& posicao = linha.GetProdutoServico();
        if (posicao.lPonteiroProduto == 0) return SetAviso(regras.semProduto, regras.lCampoProduto);
        if ((regras.bServico ? VerificaServico(posicao) : VerificaProduto(posicao)).GetTipoErro() != 0)
            return SetCodigoCampo(regras.lCampoProduto);
        if (linha.GetQtdRequisitada() <= CQZMoeda()) return SetAviso(PX_MSG(68), regras.lCampoQuantidade);

        if (index >= 0) {
            const CQZDadosPX_ManutencaoComponente& antiga = lista[static_cast<size_t>(index)];
            if (antiga.GetProdutoServico() != posicao) return SetAviso(regras.produtoAlterado, regras.lCampoProduto);
            // The stock has served part of the requisition: what was asked
            // for is no longer the line's to change.
            if (antiga.TemRequisicaoInterna() && antiga.GetQtdAtendida() > CQZMoeda() &&
                antiga.GetQtdRequisitada() != linha.GetQtdRequisitada())
                return SetAviso(PX_MSG(26), regras.lCampoQuantidade);
            if (regras.bConsumo && linha.GetQtdConsumida() > linha.GetQtdAtendida())
                return SetAviso(PX_MSG(95), regras.lCampoConsumo);
        } else if (regras.bConsumo && !linha.GetQtdConsumida().EhZero()) {
            return SetAviso(PX_MSG(69), regras.lCampoConsumo);
        }

        // The same item may come again under another task, or beside a line
        // whose requisition was already made.
        for (int64_t i = 0; i < quantidade; ++i) {
            if (i == index) continue;
            const CQZDadosPX_ManutencaoComponente& outra = lista[static_cast<size_t>(i)];
            if (outra.GetProdutoServico() == posicao && outra.GetPonteiroTarefaOrigem() == linha.GetPonteiroTarefaOrigem() &&
                !outra.TemRequisicaoInterna())
                return SetAviso(regras.repetido, regras.lCampoProduto);
        }
        return *this;
    });
}

CQZDadosGT_Erro& CPXTrataDadosManutencao::SugerirComponentesConformeTarefas(const CQZDadosPX_Manutencao& dados,
                                                                           ListaComponentes& lista,
                                                                           _E_PX_MANUTENCOES_COMPONENTES eTipo) {
    return Protegido([&]() -> CQZDadosGT_Erro& {
        LimpaErro();
        if (ServicosAusentes()) return *this;
        const CPXSugestaoComponente* pSugestao = SugestaoDe(eTipo);
        if (!pSugestao)
            return SetErro(QZ_E_ARGUMENTO_INVALIDO, QZ_MODULO_PX, 0, "Tipo de lista de componentes %d inválido.",
                           static_cast<int>(eTipo));

        std::set<uint32_t> naManutencao;
        for (const CQZDadosPX_ManutencaoTarefa& t : dados.GetListaTarefa()) naManutencao.insert(t.GetPonteiroTarefa());
        // Suggestions of tasks taken off the order go; typed lines stay.
        std::erase_if(lista, [&](const CQZDadosPX_ManutencaoComponente& linha) {
            return linha.GetPonteiroTarefaOrigem() != 0 && !naManutencao.count(linha.GetPonteiroTarefaOrigem());
        });

        // A task with a line of its own already (even after the user deleted
        // some of its lines) suggests nothing more; a task twice on the
        // order suggests once.
        std::set<uint32_t> sugeridas;
        for (const CQZDadosPX_ManutencaoComponente& linha : lista) sugeridas.insert(linha.GetPonteiroTarefaOrigem());
        for (const CQZDadosPX_ManutencaoTarefa& t : dados.GetListaTarefa()) {
            const uint32_t ulTarefa = t.GetPonteiroTarefa();
            if (sugeridas.count(ulTarefa)) continue;
            CQZDadosPX_Tarefa tarefa;
            if (GetAcessoManutencao()->LeBufferTarefa(ulTarefa, &tarefa, pSugestao->ullFlagsTarefa) != 0)
                return PassaErroServico(GetAcessoManutencao()->GetErro());
            for (const CQZDadosPX_TarefaComponente& c : (tarefa.*pSugestao->lista)()) {
                CQZDadosPX_ManutencaoComponente linha;
                linha.SetPonteiroTarefaOrigem(ulTarefa)
                    .SetProdutoServico(c.GetPosicaoProdutoServico())
                    .SetQtdRequisitada(c.GetQuantidade())
                    .SetComplemento(c.GetComplemento())
                    .SetTipoProdutoServico(c.GetTipoProdutoServico())
                    .SetTipoRI(pSugestao->ucTipoRI);
                lista.push_back(std::move(linha));
            }
            sugeridas.insert(ulTarefa);
        }
        return *this;
    });
}

CQZDadosGT_Erro& CPXTrataDadosManutencao::SugerirDataGarantia(uint32_t ulTipoPeriodo, CQZMoeda quantidade,
                                                             REG_QZDMA& data) {
    LimpaErro();
    if (ServicosAusentes()) return *this;
    CQZDadosGT_TipoPeriodo tipoPeriodo;
    if (GetAcessoGestavo()->LeBufferTipoPeriodo(ulTipoPeriodo, &tipoPeriodo, 0) != 0)
        return PassaErroServico(GetAcessoGestavo()->GetErro());

    int64_t unidades = 0;
    // Past every date of the calendar: the date becomes empty below.
    if (__builtin_mul_overflow(PeriodosInteiros(quantidade), static_cast<int64_t>(tipoPeriodo.GetIncrementoPeriodo()),
                               &unidades))
        unidades = INT64_MAX;
    // A month or year past the end of a shorter month lands on its last day.
    switch (tipoPeriodo.GetTipoPeriodo()) {
        case GT_TIPO_PERIODO_DIAS: data = data.SomaDias(unidades); break;
        case GT_TIPO_PERIODO_MESES: data = data.SomaMeses(unidades); break;
        case GT_TIPO_PERIODO_ANOS: data = data.SomaAnos(unidades); break;
        default: break;
    }
    return *this;
}

CQZDadosGT_Erro& CPXTrataDadosManutencao::ConsistirQuantComponentesCancelamento(const ListaComponentes& lista,
                                                                               int32_t lCampo) {
    return Protegido([&]() -> CQZDadosGT_Erro& {
        LimpaErro();
        if (ServicosAusentes()) return *this;
        for (size_t i = 0; i < lista.size(); ++i) {
            const CQZDadosPX_ManutencaoComponente& linha = lista[i];
            if (linha.GetQtdConsumida().EhZero() && linha.GetQtdAtendida().EhZero()) continue;
            const _REG_POSICAO_PRODUTOPS& posicao = linha.GetProdutoServico();
            CString texto;
            long hr;
            if (linha.GetTipoProdutoServico() == kTipoServico) {
                CQZDadosGT_Servico servico;
                hr = GetAcessoGestavo()->LeBufferServico(posicao.lPonteiroProduto, &servico, 0);
                texto = CString::Formatado("%s - %s", servico.GetCodigo().GetString(), servico.GetNome().GetString());
            } else {
                CQZDadosGT_ProdutoEx produto;
                hr = GetAcessoGestavo()->LeBufferProdutoEx(posicao, &produto, 0);
                texto = CString::Formatado("%s - %s", produto.GetCodigoSPED().GetString(),
                                           produto.GetNomeCompleto().GetString());
            }
            if (hr != 0) return PassaErroServico(GetAcessoGestavo()->GetErro(), lCampo).SetItem(static_cast<int64_t>(i));
            // Message 153 also refuses an order with a closing counter, where
            // there is no line to name: its text takes the situation and a
            // line, and that use passes an empty line.
            return SetAvisoPersonalizado(PX_MSG(153), kCampoChave,
                                         CPXFuncoesComuns::GetSituacaoManutencao(SITUACAO_CANCELADA), texto);
        }
        return *this;
    });
}

// ---- task lines ------------------------------------------------------------------

CQZDadosGT_Erro& CPXTrataDadosManutencao::TrataAdicionarTarefa(const CQZDadosPX_Manutencao& dados,
                                                              const ListaTarefas& novas, ListaTarefas& tarefas) {
    return Protegido([&]() -> CQZDadosGT_Erro& {
        LimpaErro();
        if (ServicosAusentes()) return *this;
        ListaTarefas expandidas;
        bool bVarias = false;
        if (SubstituirTarefasTipoGrupo(novas, expandidas, &bVarias).GetTipoErro() != 0) return *this;
        ListaTarefas copia = tarefas;
        if (ConcatenarListaTarefas(dados, expandidas, copia, bVarias).GetTipoErro() != 0) return *this;
        tarefas = std::move(copia);
        return *this;
    });
}

CQZDadosGT_Erro& CPXTrataDadosManutencao::TrataAlterarTarefa(const CQZDadosPX_Manutencao& dados,
                                                            CQZDadosPX_ManutencaoTarefa* pTarefa) {
    return ConsistirManutencaoTarefa(dados, pTarefa);
}

CQZDadosGT_Erro& CPXTrataDadosManutencao::SugerirTarefasConformePlano(const CQZDadosPX_Manutencao& dados,
                                                                     ListaTarefas& tarefas) {
    return Protegido([&]() -> CQZDadosGT_Erro& {
        LimpaErro();
        if (ServicosAusentes()) return *this;
        CQZDadosPX_Plano plano;
        long hr;
        if (QZ_CHAMA_RASTREADO(hr, kRastroTarefaLeBufferPlano,
                               GetAcessoManutencao()->LeBufferPlano(dados.GetPonteiroPlano(), &plano, kLerPlanoTarefas)))
            return PassaErroServico(GetAcessoManutencao()->GetErro());

        ListaTarefas doPlano;
        doPlano.reserve(std::max<size_t>(100, plano.GetListaTarefa().size()));
        for (const CQZDadosPX_PlanoTarefa& t : plano.GetListaTarefa()) {
            CQZDadosPX_ManutencaoTarefa linha;
            linha.SetPonteiroTarefa(t.GetPonteiroTarefa());
            doPlano.push_back(std::move(linha));
        }
        ListaTarefas expandidas;
        if (SubstituirTarefasTipoGrupo(doPlano, expandidas, nullptr).GetTipoErro() != 0) return *this;
        // What the plan suggests always comes with the suggested warranty.
        ListaTarefas copia = tarefas;
        if (ConcatenarListaTarefas(dados, expandidas, copia, true).GetTipoErro() != 0) return *this;
        tarefas = std::move(copia);
        return *this;
    });
}

CQZDadosGT_Erro& CPXTrataDadosManutencao::SubstituirTarefasTipoGrupo(const ListaTarefas& entrada, ListaTarefas& saida,
                                                                    bool* pVarias) {
    return Protegido([&]() -> CQZDadosGT_Erro& {
        LimpaErro();
        if (ServicosAusentes()) return *this;
        ListaTarefas resultado;
        bool bVarias = false;
        long hr;
        for (const CQZDadosPX_ManutencaoTarefa& linha : entrada) {
            CQZDadosPX_Tarefa tarefa;
            if (QZ_CHAMA_RASTREADO(hr, kRastroTarefaLeBufferTarefa,
                                   GetAcessoManutencao()->LeBufferTarefa(linha.GetPonteiroTarefa(), &tarefa, kLerTarefa)))
                return PassaErroServico(GetAcessoManutencao()->GetErro());
            if (tarefa.GetTipoClassificacao() != kClassificacaoGrupo) {
                resultado.push_back(linha);
                continue;
            }
            // The group gives way to the analytic tasks of its subtree; what
            // was typed on the group's line goes with it.
            CQZDadosPX_FiltroTarefa filtro;
            filtro.SetFlagSituacao(1);
            filtro.GetFiltroClassificacao().SetPonteiroInicial(linha.GetPonteiroTarefa()).SetApenasAnalitico(1);
            CQZListaClassificacao encontradas;
            if (QZ_CHAMA_RASTREADO(hr, kRastroBuscaClassificacaoTarefa,
                                   GetAcessoManutencao()->BuscaClassificacaoTarefa(filtro, &encontradas)))
                return PassaErroServico(GetAcessoManutencao()->GetErro());
            for (const CQZDadosGT_Classificacao& c : encontradas) {
                CQZDadosPX_ManutencaoTarefa nova;
                nova.SetPonteiroTarefa(c.GetPonteiro());
                resultado.push_back(std::move(nova));
            }
            bVarias = true;
        }
        if (resultado.size() >= 2) bVarias = true;
        saida = std::move(resultado);
        if (pVarias) *pVarias = bVarias;
        return *this;
    });
}

CQZDadosGT_Erro& CPXTrataDadosManutencao::ConcatenarListaTarefas(const CQZDadosPX_Manutencao& dados,
                                                                const ListaTarefas& adicoes, ListaTarefas& tarefas,
                                                                bool bSugerirGarantia) {
    return Protegido([&]() -> CQZDadosGT_Erro& {
        LimpaErro();
        if (ServicosAusentes()) return *this;
        // Appends in place: a failure leaves the lines appended so far, and
        // both public callers pass a copy that they keep only on success.
        std::set<uint32_t> presentes;
        for (const CQZDadosPX_ManutencaoTarefa& t : tarefas) presentes.insert(t.GetPonteiroTarefa());

        for (const CQZDadosPX_ManutencaoTarefa& adicao : adicoes) {
            // A task is done once per order: the first occurrence wins, among
            // the additions too.
            if (presentes.count(adicao.GetPonteiroTarefa())) continue;
            CQZDadosPX_Tarefa tarefa;
            long hr;
            if (QZ_CHAMA_RASTREADO(hr, kRastroConcatenarLeBufferTarefa,
                                   GetAcessoManutencao()->LeBufferTarefa(adicao.GetPonteiroTarefa(), &tarefa,
                                                                         kLerTarefaParaLinha)))
                return PassaErroServico(GetAcessoManutencao()->GetErro());

            CQZDadosPX_ManutencaoTarefa linha;
            linha.SetPonteiroTarefa(tarefa.GetPonteiro())
                .SetTempoPrevisto(tarefa.GetTempoPrevisto())
                .SetTarefa(tarefa.GetNome())
                .SetDetalhamento(tarefa.GetDescricao());
            if (tarefa.GetAtribuirSituacaoTarefa()) linha.SetPonteiroSituacao(tarefa.GetPonteiroSituacaoInicial());
            if (adicao.PossuiApontamentoTarefa()) linha.SetApontamentoTarefa(*adicao.GetApontamentoTarefa());

            if (tarefa.GetGarantia() && bSugerirGarantia) {
                REG_QZDMA data = dados.GetDataHoraEmissao().GetData();
                if (SugerirDataGarantia(tarefa.GetPonteiroPeriodoGarantia(), tarefa.GetQuantPeriodoGarantia(), data)
                        .GetTipoErro() != 0)
                    return *this;
                linha.SetGarantiaAte(1).SetDataGarantiaAte(data);
            } else if (adicao.GetGarantiaAte()) {
                linha.SetGarantiaAte(adicao.GetGarantiaAte()).SetDataGarantiaAte(adicao.GetDataGarantiaAte());
            }

            if (ConsistirManutencaoTarefa(dados, &linha).GetTipoErro() != 0) return *this;
            presentes.insert(linha.GetPonteiroTarefa());
            tarefas.push_back(std::move(linha));
        }
        return *this;
    });
}

CQZDadosGT_Erro& CPXTrataDadosManutencao::ConsistirManutencaoTarefa(const CQZDadosPX_Manutencao& dados,
                                                                   CQZDadosPX_ManutencaoTarefa* pTarefa) {
    return Protegido([&]() -> CQZDadosGT_Erro& {
        LimpaErro();
        if (!pTarefa) return SetErro(QZ_E_ARGUMENTO_INVALIDO, QZ_MODULO_PX, 0, "Nenhuma tarefa informada.");
        if (ServicosAusentes()) return *this;
        const CQZDadosPX_ManutencaoTarefa& linha = *pTarefa;
        CQZDadosPX_Tarefa tarefa;
        long hr;
        if (QZ_CHAMA_RASTREADO(hr, kRastroTarefaLeBufferTarefa,
                               GetAcessoManutencao()->LeBufferTarefa(linha.GetPonteiroTarefa(), &tarefa, kLerTarefa)))
            return PassaErroServico(GetAcessoManutencao()->GetErro());
        if (tarefa.GetAtribuirSituacaoTarefa() && linha.GetPonteiroSituacao() == 0)
            return SetAviso(PX_MSG(181), kCampoTarefaSituacao);
        if (!linha.GetGarantiaAte()) return *this;
        if (!linha.GetDataGarantiaAte().EhValida()) return SetAviso(PX_MSG(165), kCampoTarefaGarantia);

        CQZDadosGT_Recurso recurso;
        if (QZ_CHAMA_RASTREADO(hr, kRastroTarefaLeBufferRecurso,
                               GetAcessoGestavo()->LeBufferRecurso(dados.GetPonteiroRecurso(), &recurso,
                                                                   kLerRecursoGarantias)))
            return PassaErroServico(GetAcessoGestavo()->GetErro());
        // The warranty the same task left on the resource last time.
        for (const CQZDadosGT_RecursoGarantia& garantia : recurso.GetListaRecursoGarantia()) {
            if (garantia.GetPonteiroTarefa() != linha.GetPonteiroTarefa()) continue;
            pTarefa->SetDataUltimaGarantia(garantia.GetDmaGarantia()).SetDmcUltimaManutencao(garantia.GetDmcManutencao());
            break;
        }
        return *this;
    });
}

// ---- time entries ----------------------------------------------------------------

CQZDadosGT_Erro& CPXTrataDadosManutencao::TrataAdicionarAlterarApontamento(
    const CQZDadosPX_Manutencao& dados, CQZDadosPX_ManutencaoApontamento* pApontamento) {
    return Protegido([&]() -> CQZDadosGT_Erro& {
        LimpaErro();
        if (!pApontamento) return SetErro(QZ_E_ARGUMENTO_INVALIDO, QZ_MODULO_PX, 0, "Nenhum apontamento informado.");
        if (ServicosAusentes()) return *this;
        const REG_QZDMAHMSUTC& inicio = pApontamento->GetDataHoraInicial();
        const REG_QZDMAHMSUTC& fim = pApontamento->GetDataHoraFinal();
        const REG_QZDMAHMSUTC& inicioManutencao = dados.GetDataHoraInicio();
        const REG_QZDMAHMSUTC& fimManutencao = dados.GetDataHoraFim();

        if (!Preenchido(inicio)) return SetAviso(PX_MSG(105), kCampoInicio);
        // An order not started yet takes any start.
        if (Preenchido(inicioManutencao) && inicio.GetInstanteUtc() < inicioManutencao.GetInstanteUtc())
            return SetAviso(PX_MSG(103), kCampoInicio);
        if (inicio.GetInstanteUtc() > GetRelogio().Agora().GetInstanteUtc()) return SetAviso(PX_MSG(104), kCampoInicio);
        if (!Preenchido(fim)) return SetAviso(PX_MSG(108), kCampoFim);
        if (Preenchido(fimManutencao) && fim.GetInstanteUtc() > fimManutencao.GetInstanteUtc())
            return SetAviso(PX_MSG(109), kCampoFim);
        if (inicio.GetInstanteUtc() > fim.GetInstanteUtc()) return SetAviso(PX_MSG(110), kCampoInicio);

        const uint32_t ulTecnico = pApontamento->GetPonteiroTecnico();
        if (ulTecnico != 0) return ConsistirTecnicoApontamento(dados, ulTecnico);

        CQZDadosPX_Mestre mestre;
        long hr;
        if (QZ_CHAMA_RASTREADO(hr, kRastroApontamentoLeBufferMestre, GetAcessoManutencao()->LeBufferMestre(&mestre, 0)))
            return PassaErroServico(GetAcessoManutencao()->GetErro());
        if (mestre.GetObrigarInformarTecnicoManutencao()) return SetAviso(PX_MSG(28), kCampoTecnico);
        return *this;
    });
}

CQZDadosGT_Erro& CPXTrataDadosManutencao::ConsistirTecnicoApontamento(const CQZDadosPX_Manutencao& dados,
                                                                     uint32_t ulTecnico) {
    // Time is entered on an order already saved: an inactive technician
    // enters none.
    CQZDadosPX_Tecnico tecnico;
    if (VerificaTecnico(ulTecnico, &tecnico, false).GetTipoErro() != 0) return *this;
    if (dados.GetTipoManutencao() != TIPO_PREVENTIVA) return *this;

    CQZDadosPX_Plano plano;
    long hr;
    if (QZ_CHAMA_RASTREADO(hr, kRastroApontamentoLeBufferPlano,
                           GetAcessoManutencao()->LeBufferPlano(dados.GetPonteiroPlano(), &plano, 0)))
        return PassaErroServico(GetAcessoManutencao()->GetErro());
    IQZPX_Disciplina* pDisciplinas = GetAcessoServidores()->GetIPXDisciplina_deprecated(*GetConexao());
    for (const CQZDadosPX_TecnicoDisciplina& d : tecnico.GetListaDisciplina()) {
        if (d.GetPonteiroDisciplina() == plano.GetPonteiroDisciplina()) return *this;
        if (!pDisciplinas)
            return SetErro(QZ_E_SEM_SERVICOS, QZ_MODULO_PX, 0,
                           "A empresa \"%s\" não oferece o serviço de disciplinas.", GetEmpresa().GetString());
        bool bAtende = false;
        if (QZ_CHAMA_RASTREADO(hr, kRastroDisciplinaAtende,
                               pDisciplinas->DisciplinaAtende(plano.GetPonteiroDisciplina(), d.GetPonteiroDisciplina(),
                                                              bAtende)))
            return PassaErroServico(GetAcessoManutencao()->GetErro());
        if (bAtende) return *this;
    }
    return SetAviso(PX_MSG(71), kCampoApontamentoDisciplina);
}

// ---- cancellation ----------------------------------------------------------------

CQZDadosGT_Erro& CPXTrataDadosManutencao::ConsistirExclusao(CQZDadosPX_Manutencao& dados, IQZTrataInconsistencia*) {
    return Protegido([&]() -> CQZDadosGT_Erro& {
        LimpaErro();
        if (ServicosAusentes()) return *this;
        return PassosCancelamento(dados);
    });
}

CQZDadosGT_Erro& CPXTrataDadosManutencao::PassosCancelamento(CQZDadosPX_Manutencao& dados) {
    if (!dados.GetDmc().EhValido()) return SetAviso(PX_MSG(144), kCampoChave);
    CQZDadosPX_Manutencao gravada;
    long hr;
    if (QZ_CHAMA_RASTREADO(hr, kRastroCancelamentoLeManutencao,
                           GetAcessoManutencao()->LeManutencao(dados.GetDmc(), &gravada, kLerManutencaoCompleta)))
        return PassaErroServico(GetAcessoManutencao()->GetErro());

    CQZDadosPX_Situacao situacao;
    if (VerificaSituacaoManutencao(dados.GetPonteiroSituacao(), situacao, kCampoChave, true, false).GetTipoErro() != 0)
        return *this;
    if (situacao.GetSituacaoBase() != SITUACAO_CANCELADA)
        return SetAvisoPersonalizado(PX_MSG(147), kCampoChave, situacao.GetCodigo(), situacao.GetDescricao(),
                                     CPXFuncoesComuns::GetSituacaoManutencao(situacao.GetSituacaoBase()));
    if (gravada.GetSituacao() != SITUACAO_ABERTA) return SetAviso(PX_MSG(148), kCampoChave);

    // Anything recorded of the work keeps the order alive.
    const CString cancelada = CPXFuncoesComuns::GetSituacaoManutencao(SITUACAO_CANCELADA);
    if (gravada.GetDataHoraInicio().ullValor != 0) return SetAvisoPersonalizado(PX_MSG(149), kCampoChave, cancelada);
    if (gravada.GetDataHoraFim().ullValor != 0) return SetAvisoPersonalizado(PX_MSG(150), kCampoChave, cancelada);
    if (gravada.GetDataHoraNovaProgramacao().ullValor != 0)
        return SetAvisoPersonalizado(PX_MSG(151), kCampoChave, cancelada);
    if (!gravada.GetTempoDuracao().EhZero()) return SetAvisoPersonalizado(PX_MSG(152), kCampoChave, cancelada);
    // The message also names a line that moved stock; a closing counter has none.
    if (!gravada.GetContadorEncerramento().EhZero())
        return SetAvisoPersonalizado(PX_MSG(153), kCampoChave, cancelada, CString());

    if (ConsistirQuantComponentesCancelamento(gravada.GetListaMaterial(), kMaterial.lCampoProduto).GetTipoErro() != 0 ||
        ConsistirQuantComponentesCancelamento(gravada.GetListaEquipamento(), kEquipamento.lCampoProduto)
                .GetTipoErro() != 0 ||
        ConsistirQuantComponentesCancelamento(gravada.GetListaServico(), kServico.lCampoProduto).GetTipoErro() != 0)
        return *this;
    if (gravada.GetQuantidadeApontamento() > 0) return SetAvisoPersonalizado(PX_MSG(155), kCampoChave, cancelada);

    dados = std::move(gravada);
    dados.SetPonteiroSituacao(situacao.GetPosicao()).SetSituacao(situacao.GetSituacaoBase());
    return *this;
}
