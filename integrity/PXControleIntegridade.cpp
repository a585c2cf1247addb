#include "integrity/PXControleIntegridade.h"

#include <utility>

namespace {
using Verificacao = CQZDadosGT_Erro& (CPXControleIntegridade::*)(const uint32_t&);
}  // namespace

bool CPXControleIntegridade::VerificaRelacionamentoPonteiro(RegistroControleIntegridade eRegistro,
                                                            uint32_t ulPonteiro) {
    static const std::pair<RegistroControleIntegridade, Verificacao> kVerificacoes[] = {
        {DISCIPLINA, &CPXControleIntegridade::ExisteRelacionamentoCadastroDisciplina},
        {TECNICO, &CPXControleIntegridade::ExisteRelacionamentoCadastroTecnico},
        {PLANO, &CPXControleIntegridade::ExisteRelacionamentoCadastroPlano},
        {SITUACAO_MANUTENCAO, &CPXControleIntegridade::ExisteRelacionamentoCadastroSituacaoManutencao},
        {TIPO_GASTO, &CPXControleIntegridade::ExisteRelacionamentoCadastroTipoGasto},
    };
    LimpaErro();
    for (const auto& [registro, verificacao] : kVerificacoes) {
        if (registro != eRegistro) continue;
        // Without its data services the checker can't tell: it refuses as
        // an uninitialised handler does.
        if (!EstaInicializado()) {
            SetAvisoPersonalizado(PX_MSG(161), 0);
            return false;
        }
        (this->*verificacao)(ulPonteiro);
        break;
    }
    return EhErroNenhum() != 0;
}

CQZDadosGT_Erro& CPXControleIntegridade::ExisteRelacionamentoCadastroDisciplina(const uint32_t& ulPonteiro) {
    LimpaErro();
    CQZDadosPX_Disciplina disciplina;
    if (GetAcessoManutencao()->LeDisciplina(static_cast<int32_t>(ulPonteiro), &disciplina, 0) != 0)
        return PassaErroManutencao();
    if (VerificaFilhos(disciplina, ulPonteiro, &CQZAcessoManutencao::BuscaPonteirosDisciplina,
                       &CQZAcessoManutencao::LeDisciplina, "Disciplina %s %s é dependente da disciplina %s %s")
            .GetTipoErro() != 0)
        return *this;

    CQZDadosPX_FiltroTecnico filtroTecnico;
    filtroTecnico.SetValorUnicoDisciplina(ulPonteiro).SetFiltrarDisciplinaExata(1).SetTodasFiliais(1);
    CQZArray_deprecated<uint32_t> aTecnicos;
    if (VerificaCadastroTecnico(filtroTecnico, aTecnicos).GetTipoErro() != 0) return *this;
    if (!aTecnicos.IsEmpty()) {
        CQZDadosPX_Tecnico tecnico;
        if (GetAcessoManutencao()->LeBufferTecnico(aTecnicos[0], &tecnico, 0) != 0) return PassaErroManutencao();
        return SetAvisoPersonalizado(QZ_MODULO_PX, 0, "Técnico %s %s é dependente da disciplina %s %s",
                                     tecnico.GetCodigo(), tecnico.GetNome(), disciplina.GetCodigo(),
                                     disciplina.GetNome());
    }

    CQZDadosPX_FiltroPlano filtroPlano;
    filtroPlano.SetValorUnicoDisciplina(ulPonteiro);
    CQZArray_deprecated<uint32_t> aPlanos;
    if (VerificaCadastroPlano(filtroPlano, aPlanos).GetTipoErro() != 0) return *this;
    if (!aPlanos.IsEmpty()) {
        CQZDadosPX_Plano plano;
        if (GetAcessoManutencao()->LeBufferPlano(aPlanos[0], &plano, 0) != 0) return PassaErroManutencao();
        return SetAvisoPersonalizado(QZ_MODULO_PX, 0, "Plano de manutenção %s %s é dependente da disciplina %s %s",
                                     plano.GetCodigo(), plano.GetNome(), disciplina.GetCodigo(),
                                     disciplina.GetNome());
    }
    return *this;
}

CQZDadosGT_Erro& CPXControleIntegridade::ExisteRelacionamentoCadastroTecnico(const uint32_t& ulPonteiro) {
    LimpaErro();
    CQZDadosPX_Tecnico tecnico;
    if (GetAcessoManutencao()->LeTecnico(static_cast<int32_t>(ulPonteiro), &tecnico, 0) != 0)
        return PassaErroManutencao();
    if (VerificaFilhos(tecnico, ulPonteiro, &CQZAcessoManutencao::BuscaPonteirosTecnico,
                       &CQZAcessoManutencao::LeTecnico, "Técnico %s %s é dependente do técnico %s %s")
            .GetTipoErro() != 0)
        return *this;

    CQZDadosPX_FiltroManutencao filtroManutencao;
    filtroManutencao.SetValorUnicoTecnico(ulPonteiro).SetTodasFiliais(1).SetTodosPeriodos(1);
    return VerificaManutencoes(filtroManutencao, "A manutenção %s é dependente do técnico %s %s", tecnico.GetCodigo(),
                               tecnico.GetNome());
}

CQZDadosGT_Erro& CPXControleIntegridade::ExisteRelacionamentoCadastroPlano(const uint32_t& ulPonteiro) {
    LimpaErro();
    CQZDadosPX_Plano plano;
    if (GetAcessoManutencao()->LePlano(ulPonteiro, &plano, 0) != 0) return PassaErroManutencao();
    if (VerificaFilhos(plano, ulPonteiro, &CQZAcessoManutencao::BuscaPonteirosPlano, &CQZAcessoManutencao::LePlano,
                       "Plano %s %s é dependente do Plano %s %s")
            .GetTipoErro() != 0)
        return *this;

    CQZDadosGT_FiltroClassificacao classificacao;
    classificacao.SetApenasAnalitico(1);
    CQZDadosGT_FiltroRecurso filtroRecurso;
    filtroRecurso.SetPonteiroPlanoManutencao(ulPonteiro).SetFiltroClassificacao(classificacao);
    CQZArray_deprecated<uint32_t> aRecursos;
    if (VerificaCadastroRecurso(filtroRecurso, aRecursos).GetTipoErro() != 0) return *this;
    if (!aRecursos.IsEmpty()) {
        CQZDadosGT_Recurso recurso;
        if (GetAcessoGestavo()->LeRecurso(aRecursos[0], &recurso, 1) != 0)
            return SetErro(GetAcessoGestavo()->GetErro());
        return SetAvisoPersonalizado(QZ_MODULO_PX, 0, "O Recurso %s é dependente do plano %s %s",
                                     CString::Formatado("%u", aRecursos[0]), plano.GetCodigo(), plano.GetNome());
    }

    CQZDadosPX_FiltroManutencao filtroManutencao;
    filtroManutencao.SetValorUnicoPlanoManutencao(ulPonteiro).SetTodasFiliais(1).SetTodosPeriodos(1);
    return VerificaManutencoes(filtroManutencao, "A manutenção %s é dependente do plano %s %s", plano.GetCodigo(),
                               plano.GetNome());
}

CQZDadosGT_Erro& CPXControleIntegridade::ExisteRelacionamentoCadastroSituacaoManutencao(const uint32_t& ulPonteiro) {
    LimpaErro();
    CQZDadosPX_Situacao situacao;
    if (GetAcessoManutencao()->LeSituacao(ulPonteiro, &situacao, 0) != 0) return PassaErroManutencao();

    CQZDadosPX_FiltroManutencao filtroManutencao;
    filtroManutencao.SetValorUnicoSituacao(ulPonteiro).SetTodasFiliais(1).SetTodosPeriodos(1);
    return VerificaManutencoes(filtroManutencao, "A manutenção %s é dependente da situação %s %s",
                               situacao.GetCodigo(), situacao.GetDescricao());
}

CQZDadosGT_Erro& CPXControleIntegridade::ExisteRelacionamentoCadastroTipoGasto(const uint32_t& ulPonteiro) {
    LimpaErro();
    CQZDadosPX_TipoGasto tipo;
    if (GetAcessoManutencao()->LeTipoGasto(ulPonteiro, &tipo, 0) != 0) return PassaErroManutencao();
    if (VerificaFilhos(tipo, ulPonteiro, &CQZAcessoManutencao::BuscaPonteirosTipoGasto,
                       &CQZAcessoManutencao::LeTipoGasto, "Tipo de gasto %s %s é dependente do tipo de gasto %s %s")
            .GetTipoErro() != 0)
        return *this;

    // No all-branches flag here, on purpose: the filter's own branch scope holds.
    CQZDadosPX_FiltroLancamentoGastos filtroLancamento;
    filtroLancamento.SetValorUnicoTipoGasto(ulPonteiro).SetTodosPeriodos(1);
    CQZArray_deprecated<REG_QZDMC> aLancamentos;
    if (VerificaMovimentoLancamentoGastos(filtroLancamento, aLancamentos).GetTipoErro() != 0) return *this;
    if (!aLancamentos.IsEmpty()) {
        CQZDadosPX_LancamentoGastos lancamento;
        if (GetAcessoManutencao()->LeLancamentoGastos(aLancamentos[0], &lancamento, 0) != 0)
            return PassaErroManutencao();
        // The last argument repeats the code: "code - name".
        return SetAvisoPersonalizado(QZ_MODULO_PX, 0, "O lançamento de gastos %s é dependente do tipo de gasto %s - %s",
                                     DmcToString(lancamento.GetDmc(), REG_QZDMC::TIPO_PONTEIRO_DMC_PADRAO),
                                     tipo.GetCodigo(), tipo.GetCodigoNome());
    }
    return *this;
}

// ---- searches of the dependent tables -------------------------------------

CQZDadosGT_Erro& CPXControleIntegridade::VerificaCadastroPlano(CQZDadosPX_FiltroPlano& filtro,
                                                              CQZArray_deprecated<uint32_t>& aPonteiros) {
    return BuscaDependentes(GetAcessoManutencao(), &CQZAcessoManutencao::BuscaPonteirosPlano, filtro, aPonteiros);
}

CQZDadosGT_Erro& CPXControleIntegridade::VerificaCadastroRecurso(CQZDadosGT_FiltroRecurso& filtro,
                                                                CQZArray_deprecated<uint32_t>& aPonteiros) {
    return BuscaDependentes(GetAcessoGestavo(), &CQZAcessoGestavo::BuscaPonteirosRecurso, filtro, aPonteiros);
}

CQZDadosGT_Erro& CPXControleIntegridade::VerificaCadastroTecnico(CQZDadosPX_FiltroTecnico& filtro,
                                                                CQZArray_deprecated<uint32_t>& aPonteiros) {
    return BuscaDependentes(GetAcessoManutencao(), &CQZAcessoManutencao::BuscaPonteirosTecnico, filtro, aPonteiros);
}

CQZDadosGT_Erro& CPXControleIntegridade::VerificaMovimentoLancamentoGastos(CQZDadosPX_FiltroLancamentoGastos& filtro,
                                                                          CQZArray_deprecated<REG_QZDMC>& aChaves) {
    return BuscaDependentes(GetAcessoManutencao(), &CQZAcessoManutencao::BuscaPonteirosLancamentoGastos, filtro,
                            aChaves);
}

CQZDadosGT_Erro& CPXControleIntegridade::VerificaMovimentoManutencao(CQZDadosPX_FiltroManutencao& filtro,
                                                                    CQZArray_deprecated<REG_QZDMC>& aChaves) {
    return BuscaDependentes(GetAcessoManutencao(), &CQZAcessoManutencao::BuscaPonteirosManutencao, filtro, aChaves);
}

// ---- shared steps -----------------------------------------------------------

template <class Servico, class Op, class Filtro, class Lista>
CQZDadosGT_Erro& CPXControleIntegridade::BuscaDependentes(Servico* servico, Op busca, const Filtro& filtro,
                                                          Lista& lista) {
    LimpaErro();
    lista.RemoveAll();
    if ((servico->*busca)(filtro, lista) != 0) return SetErro(servico->GetErro());
    return *this;
}

template <class Filtro, class Registro, class Chave>
CQZDadosGT_Erro& CPXControleIntegridade::VerificaFilhos(
    const Registro& grupo, uint32_t ulPonteiro,
    long (CQZAcessoManutencao::*busca)(const Filtro&, CQZArray_deprecated<uint32_t>&),
    long (CQZAcessoManutencao::*le)(Chave, Registro*, uint32_t), const char* formato) {
    // Only a group can have children.
    if (grupo.GetTipoClassificacao() != PX_CLASSIFICACAO_SINTETICO) return *this;
    Filtro filtro;
    filtro.SetPonteiroPai(ulPonteiro);
    CQZArray_deprecated<uint32_t> aFilhos;
    if (BuscaDependentes(GetAcessoManutencao(), busca, filtro, aFilhos).GetTipoErro() != 0) return *this;
    for (uint32_t ponteiro : aFilhos) {
        Registro filho;
        if ((GetAcessoManutencao()->*le)(static_cast<Chave>(ponteiro), &filho, 0) != 0) return PassaErroManutencao();
        if (filho.GetPonteiroPai() == ulPonteiro)
            return SetAvisoPersonalizado(QZ_MODULO_PX, 0, formato, filho.GetCodigo(), filho.GetNome(),
                                         grupo.GetCodigo(), grupo.GetNome());
    }
    return *this;
}

CQZDadosGT_Erro& CPXControleIntegridade::VerificaManutencoes(CQZDadosPX_FiltroManutencao& filtro, const char* formato,
                                                             const CString& codigo, const CString& nome) {
    CQZArray_deprecated<REG_QZDMC> aManutencoes;
    if (VerificaMovimentoManutencao(filtro, aManutencoes).GetTipoErro() != 0) return *this;
    if (aManutencoes.IsEmpty()) return *this;
    CQZDadosPX_Manutencao manutencao;
    if (GetAcessoManutencao()->LeManutencao(aManutencoes[0], &manutencao, 0) != 0) return PassaErroManutencao();
    return SetAvisoPersonalizado(QZ_MODULO_PX, 0, formato,
                                 DmcToString(manutencao.GetDmc(), REG_QZDMC::TIPO_PONTEIRO_DMC_PADRAO), codigo, nome);
}

CQZDadosGT_Erro& CPXControleIntegridade::PassaErroManutencao() { return SetErro(GetAcessoManutencao()->GetErro()); }
