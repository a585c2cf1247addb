// One run's alerts: for each active plan, the alerts it has or inherits,
// the resources due under each, the e-mails to each technician, and at the
// end the stamps of every alert accepted.
#include <map>
#include <string>
#include <unordered_map>

#include "alerts/PXEmailAlertaPlano.h"
#include "alerts/PXVencimentoAlerta.h"
#include "platform/QZCodigosResultado.h"
#include "platform/QZTextosGT.h"

namespace {

// Trace points of the run's data-service calls.
constexpr CQZPontoRastro kRastroLePlano{210, "CPXEmailAlertaPlano::GeraEEnviaEmail"};
constexpr CQZPontoRastro kRastroLePlanoPai{221, "CPXEmailAlertaPlano::GeraEEnviaEmail"};
constexpr CQZPontoRastro kRastroLeDisciplina{232, "CPXEmailAlertaPlano::GeraEEnviaEmail"};
constexpr CQZPontoRastro kRastroBuscaRecursos{241, "CPXEmailAlertaPlano::GeraEEnviaEmail"};
constexpr CQZPontoRastro kRastroLeRecursos{249, "CPXEmailAlertaPlano::GeraEEnviaEmail"};
constexpr CQZPontoRastro kRastroLeTipoRecurso{301, "CPXEmailAlertaPlano::SetDadosCorpoEmailSubordinados"};
constexpr CQZPontoRastro kRastroLeFilial{309, "CPXEmailAlertaPlano::SetDadosCorpoEmailSubordinados"};
constexpr CQZPontoRastro kRastroLeUnidade{318, "CPXEmailAlertaPlano::SetDadosCorpoEmailSubordinados"};
constexpr CQZPontoRastro kRastroLeTecnico{352, "CPXEmailAlertaPlano::GeraEEnviaEmail"};
constexpr CQZPontoRastro kRastroBuscaTecnicos{366, "CPXEmailAlertaPlano::GeraEEnviaEmail"};
constexpr CQZPontoRastro kRastroLeTecnicos{371, "CPXEmailAlertaPlano::GeraEEnviaEmail"};
constexpr CQZPontoRastro kRastroCarimbo{420, "CPXEmailAlertaPlano::GeraEEnviaEmail"};

// What an abort that did not throw leaves a run with.
constexpr long kFalhaGenerica = static_cast<long>(static_cast<int32_t>(0x80004005u));  // E_FAIL

// Fields 1-10: the header of an e-mail to one addressee.
void SetDadosCorpoEmailCabecalho(DADOS_CORPO_EMAIL& d, const CQZDadosPX_Plano& plano,
                                 const CQZDadosPX_Disciplina& disciplina, const CQZDadosPX_PlanoAlerta& alerta,
                                 const CQZDadosPX_Tecnico& tecnico, REG_QZDMA hoje, REG_QZDMAHMSUTC agora) {
    d.sCodigoPlano = plano.GetCodigo();
    d.sNomePlano = plano.GetNome();
    d.sCodigoDisciplina = disciplina.GetCodigo();
    d.sNomeDisciplina = disciplina.GetNome();
    d.sDescricaoAlerta = alerta.GetDescricao();
    d.sDetalhamentoAlerta = alerta.GetDetalhamento();
    d.sCodigoTecnico = tecnico.GetCodigo();
    d.sNomeTecnico = tecnico.GetNome();
    d.sDataAtual = DataToString(hoje, true);
    d.sDataHoraAtual = DmaHmsToString(agora, false);
}

}  // namespace

// What the lines of one alert read about their resources, kept for the
// alert's snapshot: inside it a record read twice is the same record, and
// most lines share their type, branch and unit.
struct CPXLeiturasSubordinadas {
    struct Unidade {
        CString codigo;
        int decimais = 0;
    };
    std::unordered_map<uint32_t, CQZDadosGT_TipoRecurso> tipos;
    struct Filial {
        CQZDadosGT_Filial registro;
        CString codigo;  // as the body shows it
    };
    std::unordered_map<uint16_t, Filial> filiais;
    // By pointer, products' units apart from services'.
    std::unordered_map<uint32_t, Unidade> unidadesProduto, unidadesServico;
};

CString CPXEmailAlertaPlano::AssuntoEmail(const CQZDadosPX_PlanoAlerta& alerta) {
    return CString("Alerta de Manutenção - ") + alerta.GetDescricao();
}

long CPXEmailAlertaPlano::GeraEEnviaEmail(CQZArray_deprecated<uint32_t>& aPonteirosPlano) {
    return GeraEEnviaEmail(aPonteirosPlano, nullptr);
}

long CPXEmailAlertaPlano::GeraEEnviaEmail(CQZArray_deprecated<uint32_t>& aPonteirosPlano,
                                          IPXObservadorAlertas* pObservador) {
    CQZAcessoManutencaoBuffer* pManutencao = GetAcessoManutencao();
    CQZAcessoGestavoBuffer* pGestavo = GetAcessoGestavo();
    if (!pManutencao || !pGestavo) return QZ_E_SEM_SERVICOS;
    const bool simula = pObservador && pObservador->Simula();
    long hr = 0;

    // A failed read of the plans, the discipline or the resource search is
    // logged and thrown with the service's own status and text.
    auto falhaLeitura = [&](long status) { Lanca(status, kIdEnvio, pManutencao->GetErro().GetMensagem().GetString()); };
    auto falhaLeituraGestavo = [&](long status) {
        Lanca(status, kIdEnvio, pGestavo->GetErro().GetMensagem().GetString());
    };
    // The later reads go through Abort, as the other failures of the routine.
    auto aborta = [&](long status, const CQZDadosGT_Erro& erro) {
        const CString texto = erro.GetMensagem();
        AbortaExecucao(status, texto.GetString(), kIdEnvio, nullptr);
        return kFalhaGenerica;
    };

    // (alert plan, alert index) of every alert accepted, in order.
    CQZVector<std::pair<uint32_t, uint32_t>> aMarcar;
    // Messages wait here and go out in batches: the delivery log is written
    // once per batch rather than once per message. A run that fails before
    // a batch goes drops it unsent, and stamps nothing either, so the next
    // run sends it.
    CPXLoteEmails lote;
    // The templates read by this run, prepared for a number of lines.
    struct Preparado {
        CString texto;
        bool temLista = false;
    };
    std::map<std::pair<std::string, int64_t>, Preparado> preparados;
    auto enviaLote = [&]() -> long {
        const long r = EnviaEmails(lote.emails);
        lote.Limpa();
        return r;
    };

    for (const uint32_t ponteiroPlano : aPonteirosPlano) {
        CQZDadosPX_Plano plano, planoAlerta;
        CQZDadosPX_Disciplina disciplina;
        CQZArray_deprecated<uint32_t> aPonteirosRecurso;
        CQZVector<CQZDadosGT_Recurso> recursos;
        {
            // One snapshot for the plan's own reads.
            CQZLeituraConsistente leitura(GetConexao());
            if (QZ_CHAMA_RASTREADO(hr, kRastroLePlano, pManutencao->LePlano(ponteiroPlano, &plano, 0x700)))
                falhaLeitura(hr);
            // Alerts come from the nearest plan up the tree that has any.
            planoAlerta = plano;
            while (planoAlerta.GetQuantidadeAlerta() == 0 && planoAlerta.GetPonteiroPai() != 0) {
                const uint32_t pai = planoAlerta.GetPonteiroPai();
                if (QZ_CHAMA_RASTREADO(hr, kRastroLePlanoPai, pManutencao->LePlano(pai, &planoAlerta, 0x700)))
                    falhaLeitura(hr);
            }
            if (planoAlerta.GetQuantidadeAlerta() == 0) continue;
            if (QZ_CHAMA_RASTREADO(hr, kRastroLeDisciplina,
                                   pManutencao->LeDisciplina(static_cast<int32_t>(plano.GetPonteiroDisciplina()),
                                                             &disciplina, 0)))
                falhaLeitura(hr);
            CQZDadosGT_FiltroRecurso filtro;
            filtro.SetPonteiroPlanoManutencao(plano.GetPonteiro());
            filtro.SetFlagAtivoInativo(1);
            if (QZ_CHAMA_RASTREADO(hr, kRastroBuscaRecursos, pGestavo->BuscaPonteirosRecurso(filtro, aPonteirosRecurso)))
                falhaLeituraGestavo(hr);
            if (aPonteirosRecurso.IsEmpty()) continue;
            if (QZ_CHAMA_RASTREADO(hr, kRastroLeRecursos,
                                   pGestavo->LePonteirosRecursos(aPonteirosRecurso.GetSize(),
                                                                 aPonteirosRecurso.Vetor().data(), recursos,
                                                                 GT_LER_RECURSO_PLANOS)))
                return aborta(hr, pGestavo->GetErro());
        }
        const REG_QZDMAHMSUTC agora = GetRelogio().Agora();
        const REG_QZDMA hoje = agora.GetData();

        for (int64_t iAlerta = 0; iAlerta < planoAlerta.GetQuantidadeAlerta(); ++iAlerta) {
            const CQZDadosPX_PlanoAlerta& alerta = planoAlerta.GetAlerta(iAlerta);
            const CString& modelo = alerta.GetModeloEmail();
            // A template that is not there stops the whole run, quietly and
            // without stamps; an inactive alert's template counts too.
            if (!ModeloEmailExiste(modelo.GetString())) {
                if (pObservador) pObservador->ModeloAusente(planoAlerta, static_cast<uint32_t>(iAlerta));
                // What was mailed before the gap still goes.
                if (!lote.emails.empty())
                    if (long r = enviaLote()) return r;
                return 0;
            }
            if (alerta.GetInativo()) continue;
            if (!alerta.GetDmaHmsUltimoEnvio().EhVazio() && !PXAlertaPodeRepetir(alerta, agora)) continue;
            // Accepted, and so stamped at the end, whatever is due.
            const uint32_t indice = static_cast<uint32_t>(iAlerta);
            aMarcar.Adiciona({planoAlerta.GetPonteiro(), indice});
            if (pObservador) pObservador->AlertaAceito(plano, planoAlerta, indice);

            CQZVector<DADOS_CORPO_EMAIL> linhas;
            {
                CQZLeituraConsistente leitura(GetConexao());
                CPXLeiturasSubordinadas lidas;
                for (const CQZDadosGT_Recurso& recurso : recursos) {
                    if (recurso.GetInativo()) continue;
                    for (int64_t iVinculo = 0; iVinculo < recurso.GetQuantidadePlanoManutencao(); ++iVinculo) {
                        const CQZDadosGT_RecursoPlanoManutencao& vinculo = recurso.GetPlanoManutencao(iVinculo);
                        if (vinculo.GetInativo() || vinculo.GetPonteiroPlanoManutencao() != plano.GetPonteiro())
                            continue;
                        const CPXAvaliacaoVencimento avaliacao =
                            PXAvaliaVencimento(alerta, vinculo, plano.GetTipoControle(), hoje);
                        if (!avaliacao.vence) continue;
                        DADOS_CORPO_EMAIL& linha = linhas.emplace_back();
                        if (long r = SetDadosCorpoEmailSubordinados(linha, recurso, vinculo, avaliacao, lidas)) return r;
                        if (pObservador) pObservador->RecursoVencido(recurso, vinculo, avaliacao, plano.GetTipoControle());
                    }
                }
            }
            if (linhas.empty()) continue;

            // Alerts of one template and as many lines share its preparation.
            auto [itModelo, novo] = preparados.try_emplace({modelo.str(), linhas.GetQuantidade()});
            if (novo) {
                try {
                    LeModeloEmail(modelo.GetString(), itModelo->second.texto);
                } catch (...) {
                    preparados.erase(itModelo);
                    throw;
                }
                itModelo->second.temLista = AtualizaConteudoEmail(itModelo->second.texto, linhas.GetQuantidade());
            }
            const CString& preparado = itModelo->second.texto;
            const bool temLista = itModelo->second.temLista;
            const CString assunto = AssuntoEmail(alerta);

            CPXConjuntoTecnicos enviados;
            for (int64_t iTecnico = 0; iTecnico < alerta.GetQuantidadeTecnicos(); ++iTecnico) {
                const uint32_t ponteiroTecnico = alerta.GetTecnicos(iTecnico).GetPonteiro();
                CQZDadosPX_Tecnico tecnico;
                if (QZ_CHAMA_RASTREADO(hr, kRastroLeTecnico,
                                       pManutencao->LeTecnico(static_cast<int32_t>(ponteiroTecnico), &tecnico, 2)))
                    return aborta(hr, pManutencao->GetErro());
                if (enviados.Contem(tecnico.GetPonteiro())) continue;
                CQZVector<CQZDadosPX_Tecnico> destinatarios;
                if (tecnico.GetTipoClassificacao() == 1) {
                    destinatarios.Adiciona(tecnico);
                } else {
                    // A group is mailed through its active members, at any depth.
                    CQZDadosPX_FiltroTecnico filtro;
                    filtro.SetAtivo(1).SetInativo(0).SetPonteiroPai(tecnico.GetPonteiro()).SetTodosDescendentes(1);
                    CQZArray_deprecated<uint32_t> aMembros;
                    if (QZ_CHAMA_RASTREADO(hr, kRastroBuscaTecnicos, pManutencao->BuscaPonteirosTecnico(filtro, aMembros)))
                        return aborta(hr, pManutencao->GetErro());
                    if (!aMembros.IsEmpty() &&
                        QZ_CHAMA_RASTREADO(hr, kRastroLeTecnicos,
                                           pManutencao->LeTecnicos(aMembros.GetSize(), aMembros.Vetor().data(),
                                                                   destinatarios, 2)))
                        return aborta(hr, pManutencao->GetErro());
                }
                for (const CQZDadosPX_Tecnico& destinatario : destinatarios) {
                    if (!enviados.Adiciona(destinatario.GetPonteiro())) continue;
                    const CQZOrigemEmail origem{planoAlerta.GetPonteiro(), indice, destinatario.GetPonteiro()};
                    for (int64_t iEmail = 0; iEmail < destinatario.GetQuantidadeEmail(); ++iEmail) {
                        const CString& endereco = destinatario.GetConstRefEmail(iEmail).GetEndereco();
                        if (endereco.IsEmpty()) continue;
                        auto envia = [&](CString& corpo) -> long {
                            if (simula) return pObservador->Mensagem(endereco, corpo, assunto, origem);
                            if (lote.Adiciona(endereco, corpo, assunto, origem)) return enviaLote();
                            return 0;
                        };
                        if (temLista) {
                            DADOS_CORPO_EMAIL cabecalho;
                            SetDadosCorpoEmailCabecalho(cabecalho, plano, disciplina, alerta, destinatario, hoje, agora);
                            CString corpo = preparado;
                            SubstituiMemoriasModeloEmail(corpo, cabecalho, linhas);
                            if (long r = envia(corpo)) return r;
                        } else {
                            for (DADOS_CORPO_EMAIL& linha : linhas) {
                                SetDadosCorpoEmailCabecalho(linha, plano, disciplina, alerta, destinatario, hoje, agora);
                                CString corpo = preparado;
                                SubstituiMemoriasModeloEmail(corpo, linha);
                                if (long r = envia(corpo)) return r;
                            }
                        }
                    }
                }
            }
        }
    }

    if (simula) return 0;
    if (!lote.emails.empty())
        if (long r = enviaLote()) return r;
    // Only a run that got this far stamps, all its alerts or none: an
    // inherited alert on the ancestor that owns it.
    CQZEscritaAtomica escrita(GetConexao());
    if (QZ_CHAMA_RASTREADO(hr, kRastroCarimbo, escrita.Inicia())) return aborta(hr, pManutencao->GetErro());
    for (const auto& [ponteiro, indice] : aMarcar)
        if (QZ_CHAMA_RASTREADO(hr, kRastroCarimbo, pManutencao->AtualizaDataHoraEnvioAlerta(ponteiro, indice)))
            return aborta(hr, pManutencao->GetErro());
    if (QZ_CHAMA_RASTREADO(hr, kRastroCarimbo, escrita.Confirma())) return aborta(hr, pManutencao->GetErro());
    return 0;
}

long CPXEmailAlertaPlano::SetDadosCorpoEmailSubordinados(DADOS_CORPO_EMAIL& d, const CQZDadosGT_Recurso& recurso,
                                                         const CQZDadosGT_RecursoPlanoManutencao& vinculo,
                                                         const CPXAvaliacaoVencimento& avaliacao,
                                                         CPXLeiturasSubordinadas& lidas) {
    CQZAcessoGestavoBuffer* pGestavo = GetAcessoGestavo();
    long hr = 0;
    auto aborta = [&](long status) {
        const CString texto = pGestavo->GetErro().GetMensagem();
        AbortaExecucao(status, texto.GetString(), kIdEnvio, nullptr);
        return kFalhaGenerica;
    };
    auto itTipo = lidas.tipos.find(recurso.GetPonteiroTipoRecurso());
    if (itTipo == lidas.tipos.end()) {
        CQZDadosGT_TipoRecurso tipo;
        if (QZ_CHAMA_RASTREADO(hr, kRastroLeTipoRecurso,
                               pGestavo->LeTipoRecurso(recurso.GetPonteiroTipoRecurso(), &tipo, 0)))
            return aborta(hr);
        itTipo = lidas.tipos.emplace(recurso.GetPonteiroTipoRecurso(), std::move(tipo)).first;
    }
    const CQZDadosGT_TipoRecurso& tipo = itTipo->second;
    auto itFilial = lidas.filiais.find(recurso.GetPonteiroFilial());
    if (itFilial == lidas.filiais.end()) {
        CQZDadosGT_Filial filial;
        if (QZ_CHAMA_RASTREADO(hr, kRastroLeFilial, pGestavo->LeFilial(recurso.GetPonteiroFilial(), &filial, 0)))
            return aborta(hr);
        CString codigo = CString::Formatado("%u", static_cast<unsigned>(filial.GetCodigo()));
        itFilial = lidas.filiais.emplace(recurso.GetPonteiroFilial(),
                                         CPXLeiturasSubordinadas::Filial{std::move(filial), std::move(codigo)})
                       .first;
    }
    const CQZDadosGT_Filial& filial = itFilial->second.registro;
    CString unidade;
    int decimais = 0;
    if (const uint32_t ponteiroUnidade = recurso.GetPonteiroUnidadeMedidaContador(); ponteiroUnidade != 0) {
        const bool produto = recurso.GetUnidadeProdutoServico() == 'P';
        auto& unidades = produto ? lidas.unidadesProduto : lidas.unidadesServico;
        auto it = unidades.find(ponteiroUnidade);
        if (it == unidades.end()) {
            CPXLeiturasSubordinadas::Unidade lida;
            if (produto) {
                CQZDadosGT_UnidadeMedidaProduto u;
                if (QZ_CHAMA_RASTREADO(hr, kRastroLeUnidade,
                                       pGestavo->LeBufferUnidadeMedidaProduto(ponteiroUnidade, &u, 0)))
                    return aborta(hr);
                lida = {u.GetCodigo(), u.GetQuantidadeCasasDecimais()};
            } else {
                CQZDadosGT_UnidadeMedidaServico u;
                if (QZ_CHAMA_RASTREADO(hr, kRastroLeUnidade,
                                       pGestavo->LeBufferUnidadeMedidaServico(ponteiroUnidade, &u, 0)))
                    return aborta(hr);
                lida = {u.GetCodigo(), u.GetQuantidadeCasasDecimais()};
            }
            it = unidades.emplace(ponteiroUnidade, std::move(lida)).first;
        }
        unidade = it->second.codigo;
        decimais = it->second.decimais;
    }
    d.sCodigoRecurso = recurso.GetCodigo();
    d.sDescricaoRecurso = recurso.GetDescricao();
    d.sCodigoTipoRecurso = tipo.GetCodigo();
    d.sDescricaoTipoRecurso = tipo.GetDescricao();
    d.sNumeroSerieRecurso = CString();
    d.sDataProximaManutencao = DataToString(vinculo.GetDataProximaManutencao(), true);
    d.sDiasProximaManutencao = avaliacao.temDataProxima ? DiasToString(avaliacao.diasParaProxima) : CString();
    d.sContadorProximaManutencao = MoedaToString(vinculo.GetCiclosContadorProximaManutencao(), decimais);
    d.sUnidadeContador = unidade;
    d.sCodigoFilial = itFilial->second.codigo;
    d.sIdentificacaoFilial = filial.GetIdentificacao();
    d.sNomeFantasiaFilial = filial.GetNomeFantasia();
    d.sRazaoSocial = filial.GetRazaoSocial();
    return 0;
}
