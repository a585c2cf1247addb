#include "servico/PXLinhasRegistro.h"

#include <algorithm>
#include <utility>

namespace {

bool Recusa(CPXLinhaRecusada& recusa, const char* lista, size_t linha) {
    recusa.lista = lista;
    recusa.linha = static_cast<int64_t>(linha);
    return false;
}

bool Passou(const CQZDadosGT_Erro& erro) { return erro.GetTipoErro() == 0; }

// The lines of one list with change and add checks. `confere(linha, index,
// lista)` checks a copy of line i as the line at `index` of the working list
// (-1: a new line), which holds the stored lines being changed and the lines
// already checked; the working list then takes the line as given.
template <class E, class Confere>
bool ConfereLista(const char* nome, const std::vector<E>& linhas, const std::vector<E>* pGravadas,
                  CPXLinhaRecusada& recusa, Confere&& confere) {
    std::vector<E> lista;
    if (pGravadas) lista.assign(pGravadas->begin(), pGravadas->begin() + std::min(pGravadas->size(), linhas.size()));
    const size_t alteradas = lista.size();
    for (size_t i = 0; i < linhas.size(); ++i) {
        E linha = linhas[i];
        const int64_t index = i < alteradas ? static_cast<int64_t>(i) : -1;
        if (!confere(linha, index, std::as_const(lista))) return Recusa(recusa, nome, i);
        if (index >= 0)
            lista[i] = linhas[i];
        else
            lista.push_back(linhas[i]);
    }
    return true;
}

// The lines of a list whose operation checks one line on its own.
template <class E, class Confere>
bool ConfereCadaLinha(const char* nome, const std::vector<E>& linhas, CPXLinhaRecusada& recusa, Confere&& confere) {
    for (size_t i = 0; i < linhas.size(); ++i) {
        E linha = linhas[i];
        if (!confere(linha)) return Recusa(recusa, nome, i);
    }
    return true;
}

template <class R, class E>
const std::vector<E>* Gravadas(const R* pGravado, const std::vector<E>& (R::*lista)() const) {
    return pGravado ? &(pGravado->*lista)() : nullptr;
}

}  // namespace

bool PXConfereLinhasTecnico(CPXTrataDadosTecnico& tratador, const CQZDadosPX_Tecnico& dados,
                            const CQZDadosPX_Tecnico*, CPXLinhaRecusada& recusa) {
    CQZDadosPX_Tecnico trabalho = dados;
    trabalho.RemoveTodosDisciplina();
    return ConfereCadaLinha("Disciplina", dados.GetListaDisciplina(), recusa, [&](CQZDadosPX_TecnicoDisciplina& d) {
        return Passou(tratador.TrataAdicionarDisciplina(trabalho, d, nullptr));
    });
}

bool PXConfereLinhasPlano(CPXTrataDadosPlano& tratador, const CQZDadosPX_Plano& dados, const CQZDadosPX_Plano* pGravado,
                          CPXLinhaRecusada& recusa) {
    if (!ConfereCadaLinha("Alerta", dados.GetListaAlerta(), recusa, [&](CQZDadosPX_PlanoAlerta& alerta) {
            return Passou(tratador.TrataAdicionarAlterarAlerta(&alerta));
        }))
        return false;

    using Lista = const std::vector<CQZDadosPX_PlanoComponente>& (CQZDadosPX_Plano::*)() const;
    const struct {
        const char* nome;
        Lista lista;
        _E_PX_MANUTENCOES_COMPONENTES tipo;
    } componentes[] = {
        {"Material", &CQZDadosPX_Plano::GetListaMaterial, E_PX_MANUTENCOES_COMPONENTES_MATERIAL},
        {"Equipamento", &CQZDadosPX_Plano::GetListaEquipamento, E_PX_MANUTENCOES_COMPONENTES_EQUIPAMENTO},
        {"Servico", &CQZDadosPX_Plano::GetListaServico, E_PX_MANUTENCOES_COMPONENTES_SERVICO},
    };
    for (const auto& c : componentes)
        if (!ConfereLista(c.nome, (dados.*c.lista)(), Gravadas(pGravado, c.lista), recusa,
                          [&](CQZDadosPX_PlanoComponente& linha, int64_t index,
                              const std::vector<CQZDadosPX_PlanoComponente>& lista) {
                              return Passou(tratador.TrataAdicionarAlterarComponente(&linha, lista, index, c.tipo));
                          }))
            return false;

    std::vector<CQZDadosPX_PlanoTarefa> tarefas;
    return ConfereCadaLinha("Tarefa", dados.GetListaTarefa(), recusa, [&](CQZDadosPX_PlanoTarefa& t) {
        return Passou(tratador.TrataAdicionarTarefa({t.GetPonteiroTarefa()}, tarefas));
    });
}

bool PXConfereLinhasTarefa(CPXTrataDadosTarefa& tratador, const CQZDadosPX_Tarefa& dados,
                           const CQZDadosPX_Tarefa* pGravado, CPXLinhaRecusada& recusa) {
    using Lista = const std::vector<CQZDadosPX_TarefaComponente>& (CQZDadosPX_Tarefa::*)() const;
    const struct {
        const char* nome;
        Lista lista;
    } componentes[] = {
        {"Material", &CQZDadosPX_Tarefa::GetListaMaterial},
        {"Equipamento", &CQZDadosPX_Tarefa::GetListaEquipamento},
        {"Servico", &CQZDadosPX_Tarefa::GetListaServico},
    };
    for (const auto& c : componentes)
        if (!ConfereLista(c.nome, (dados.*c.lista)(), Gravadas(pGravado, c.lista), recusa,
                          [&](CQZDadosPX_TarefaComponente& linha, int64_t index,
                              const std::vector<CQZDadosPX_TarefaComponente>& lista) {
                              return Passou(tratador.TrataIncluirAlterarComponente(&linha, lista, index));
                          }))
            return false;
    return true;
}

bool PXConfereLinhasManutencao(CPXTrataDadosManutencao& tratador, const CQZDadosPX_Manutencao& dados,
                               const CQZDadosPX_Manutencao* pGravado, CPXLinhaRecusada& recusa) {
    // TrataAdicionarTarefa builds lines from the task masters, so it adds
    // tasks; the lines given are checked as they are.
    if (!ConfereCadaLinha("Tarefa", dados.GetListaTarefa(), recusa, [&](CQZDadosPX_ManutencaoTarefa& linha) {
            return Passou(tratador.TrataAlterarTarefa(dados, &linha));
        }))
        return false;

    using Lista = const CPXTrataDadosManutencao::ListaComponentes& (CQZDadosPX_Manutencao::*)() const;
    using Operacao = CQZDadosGT_Erro& (CPXTrataDadosManutencao::*)(CQZDadosPX_ManutencaoComponente*, int64_t,
                                                                    const CPXTrataDadosManutencao::ListaComponentes&);
    const struct {
        const char* nome;
        Lista lista;
        Operacao confere;
    } componentes[] = {
        {"Material", &CQZDadosPX_Manutencao::GetListaMaterial, &CPXTrataDadosManutencao::TrataAdicionarAlterarMaterial},
        {"Equipamento", &CQZDadosPX_Manutencao::GetListaEquipamento,
         &CPXTrataDadosManutencao::TrataAdicionarAlterarEquipamento},
        {"Servico", &CQZDadosPX_Manutencao::GetListaServico, &CPXTrataDadosManutencao::TrataAdicionarAlterarServico},
    };
    for (const auto& c : componentes)
        if (!ConfereLista(c.nome, (dados.*c.lista)(), Gravadas(pGravado, c.lista), recusa,
                          [&](CQZDadosPX_ManutencaoComponente& linha, int64_t index,
                              const CPXTrataDadosManutencao::ListaComponentes& lista) {
                              return Passou((tratador.*c.confere)(&linha, index, lista));
                          }))
            return false;

    return ConfereCadaLinha("Apontamento", dados.GetListaApontamento(), recusa,
                            [&](CQZDadosPX_ManutencaoApontamento& apontamento) {
                                return Passou(tratador.TrataAdicionarAlterarApontamento(dados, &apontamento));
                            });
}

bool PXConfereLinhasLancamentoGastos(CPXTrataDadosLancamentoGastos& tratador, const CQZDadosPX_LancamentoGastos& dados,
                                     const CQZDadosPX_LancamentoGastos* pGravado, CPXLinhaRecusada& recusa) {
    // The operation puts each item into the entry it is given: a working
    // entry holding the stored items being changed and the items checked.
    CQZDadosPX_LancamentoGastos trabalho = dados;
    trabalho.RemoveTodosItem();
    const int64_t alteradas = pGravado ? std::min(pGravado->GetQuantidadeItem(), dados.GetQuantidadeItem()) : 0;
    for (int64_t i = 0; i < alteradas; ++i) trabalho.AdicionaItem(pGravado->GetConstRefItem(i));
    for (int64_t i = 0; i < dados.GetQuantidadeItem(); ++i) {
        CQZDadosPX_LancamentoGastosItem item = dados.GetConstRefItem(i);
        if (!Passou(tratador.TrataAdicionarAlterarItem(&trabalho, &item, i < alteradas ? i : -1, nullptr)))
            return Recusa(recusa, "Item", static_cast<size_t>(i));
    }
    return true;
}
