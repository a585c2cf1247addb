#include "servico/PXSugestoesManutencao.h"

#include <exception>

#include "platform/QZCodigosResultado.h"
#include "rules/PXTrataDadosManutencao.h"

namespace {

// The order's lists, in and out of the vectors the rules work on.
using Lista = std::vector<CQZDadosPX_ManutencaoComponente>;

void Substitui(CQZDadosPX_Manutencao& ordem, void (CQZDadosPX_Manutencao::*removeTodos)(),
               CQZDadosPX_Manutencao& (CQZDadosPX_Manutencao::*adiciona)(const CQZDadosPX_ManutencaoComponente&),
               const Lista& lista) {
    (ordem.*removeTodos)();
    for (const auto& linha : lista) (ordem.*adiciona)(linha);
}

}  // namespace

long CPXSugestoesManutencao::Sugere(CQZDadosPX_Manutencao& ordem, bool bTarefas, bool bComponentes, bool& sugerido,
                                    CQZDadosGT_Erro& veredito) {
    m_erro.LimpaErro();
    veredito.LimpaErro();
    sugerido = false;
    try {
        CPXTrataDadosManutencao tratador;
        if (const long hr = tratador.Inicializa(m_sessao.empresa, m_sessao.usuario, m_sessao.sessao); hr < 0) {
            m_erro = tratador.GetErro();
            return hr;
        }
        // One snapshot for every read of the suggestions.
        CQZLeituraConsistente leitura(tratador.GetConexao());
        CQZDadosPX_Manutencao completa = ordem;

        if (bTarefas) {
            CPXTrataDadosManutencao::ListaTarefas tarefas = completa.GetListaTarefa();
            if (tratador.SugerirTarefasConformePlano(completa, tarefas).GetTipoErro() != 0) {
                veredito = tratador.GetErro();
                return 0;
            }
            completa.RemoveTodosTarefa();
            for (const auto& t : tarefas) completa.AdicionaTarefa(t);
        }
        if (bComponentes) {
            const struct {
                _E_PX_MANUTENCOES_COMPONENTES tipo;
                const Lista& (CQZDadosPX_Manutencao::*lista)() const;
                void (CQZDadosPX_Manutencao::*removeTodos)();
                CQZDadosPX_Manutencao& (CQZDadosPX_Manutencao::*adiciona)(const CQZDadosPX_ManutencaoComponente&);
            } tipos[] = {
                {E_PX_MANUTENCOES_COMPONENTES_MATERIAL, &CQZDadosPX_Manutencao::GetListaMaterial,
                 &CQZDadosPX_Manutencao::RemoveTodosMaterial, &CQZDadosPX_Manutencao::AdicionaMaterial},
                {E_PX_MANUTENCOES_COMPONENTES_EQUIPAMENTO, &CQZDadosPX_Manutencao::GetListaEquipamento,
                 &CQZDadosPX_Manutencao::RemoveTodosEquipamento, &CQZDadosPX_Manutencao::AdicionaEquipamento},
                {E_PX_MANUTENCOES_COMPONENTES_SERVICO, &CQZDadosPX_Manutencao::GetListaServico,
                 &CQZDadosPX_Manutencao::RemoveTodosServico, &CQZDadosPX_Manutencao::AdicionaServico},
            };
            for (const auto& t : tipos) {
                Lista lista = (completa.*t.lista)();
                if (tratador.SugerirComponentesConformeTarefas(completa, lista, t.tipo).GetTipoErro() != 0) {
                    veredito = tratador.GetErro();
                    return 0;
                }
                Substitui(completa, t.removeTodos, t.adiciona, lista);
            }
        }
        ordem = std::move(completa);
        sugerido = true;
        return 0;
    } catch (const std::exception& e) {
        m_erro.SetErro(QZ_E_INESPERADO, QZ_MODULO_PX, 0, "Falha inesperada ao sugerir: %s", e.what());
        return QZ_E_INESPERADO;
    }
}
