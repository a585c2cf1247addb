// Rules of maintenance orders: the save validation (whose completions reach
// the caller only when every check passes), the checks of task,
// component and time-entry lines while the order is edited, the suggestion
// of tasks from the order's plan and of components from its tasks, warranty
// dates, and the cancellation (the order's delete rules).
//
// The operations on a list of the caller's change that list only when they
// succeed as a whole; a line passed in and out changes only when its check
// passes.
#pragma once

#include <vector>

#include "rules/PXTrataDadosRegistro.h"

// The constants of one kind of component list (materials, equipment,
// services): PXTrataDadosManutencao.cpp keeps the three as a table.
struct CPXRegrasComponente;

class CPXTrataDadosManutencao : public TPXTrataDadosRegistro<CQZDadosPX_Manutencao> {
public:
    using ListaComponentes = std::vector<CQZDadosPX_ManutencaoComponente>;
    using ListaTarefas = std::vector<CQZDadosPX_ManutencaoTarefa>;

    explicit CPXTrataDadosManutencao(bool bInterfaceUsuario = false);
    ~CPXTrataDadosManutencao() override { Finaliza(); }

    // Every check of an order, in order, stopping at the first failure. It
    // completes the order it is given (branch and counter data of a new
    // order, the plan's description and planned time, the base situation,
    // custom task data of a finished order), also when a later check fails:
    // the save puts back what it completed when a check refuses the order.
    CQZDadosGT_Erro& ConsistirManutencao(CQZDadosPX_Manutencao* pDados);

    // The single checks of ConsistirManutencao. Each clears this object's
    // error record first and reads into the record given.
    CQZDadosGT_Erro& VerificaTipoManutencao(uint8_t ucTipo);
    CQZDadosGT_Erro& VerificaPlano(uint32_t ulPlano, CQZDadosPX_Plano* pPlano, bool bVerificaInativo);
    CQZDadosGT_Erro& VerificaRecurso(uint32_t ulRecurso, CQZDadosGT_Recurso* pRecurso, bool bVerificaInativo,
                                     bool bAceitaInativo);
    CQZDadosGT_Erro& VerificaRequisitante(uint32_t ulRequisitante, CQZDadosGT_Requisitante* pRequisitante,
                                          bool bVerificaInativo);
    // An inactive technician is refused only when bNova is false: a new
    // order may still name one, a saved order being changed may not.
    CQZDadosGT_Erro& VerificaTecnico(uint32_t ulTecnico, CQZDadosPX_Tecnico* pTecnico, bool bNova);
    CQZDadosGT_Erro& VerificaDatasHoras(const CQZDadosPX_Manutencao& dados, const CQZDadosPX_Mestre& mestre,
                                        bool bNova);
    // Every material and equipment line names a usable product; a failure
    // names the list's product field and the line's index.
    CQZDadosGT_Erro& ConsistirExistenciaKits(const CQZDadosPX_Manutencao& dados);
    CQZDadosGT_Erro& VerificaApontamentos(const CQZDadosPX_Manutencao& dados, const CQZDadosPX_Mestre& mestre);
    // A finished order's tasks carry the custom data their task masters ask
    // for, its descriptions and mandatory values filled in. Lines get empty
    // custom data from the configuration when they have none, and lose it
    // when their task asks for none.
    CQZDadosGT_Erro& ConsistirInfoPersonalizadaTarefa(CQZDadosPX_Manutencao* pDados);

    // Check a line before it is added to (index negative) or changed at
    // `index` in `lista`, the order's list of that kind. Neither the line nor
    // the list is changed.
    CQZDadosGT_Erro& TrataAdicionarAlterarMaterial(CQZDadosPX_ManutencaoComponente* pLinha, int64_t index,
                                                   const ListaComponentes& lista);
    CQZDadosGT_Erro& TrataAdicionarAlterarEquipamento(CQZDadosPX_ManutencaoComponente* pLinha, int64_t index,
                                                      const ListaComponentes& lista);
    CQZDadosGT_Erro& TrataAdicionarAlterarServico(CQZDadosPX_ManutencaoComponente* pLinha, int64_t index,
                                                  const ListaComponentes& lista);

    // Brings `lista` (the order's list of kind eTipo) in line with the
    // order's tasks: lines suggested by tasks no longer on the order go,
    // typed lines stay, and each task with no line of its own yet adds its
    // components of that kind. On a failed read the lines added so far stay.
    CQZDadosGT_Erro& SugerirComponentesConformeTarefas(const CQZDadosPX_Manutencao& dados, ListaComponentes& lista,
                                                       _E_PX_MANUTENCOES_COMPONENTES eTipo);
    // Moves `data` ahead by `quantidade` periods of the period type.
    CQZDadosGT_Erro& SugerirDataGarantia(uint32_t ulTipoPeriodo, CQZMoeda quantidade, REG_QZDMA& data);
    // Refuses a cancellation while a line of the list has stock served or
    // consumed, naming the first such line.
    CQZDadosGT_Erro& ConsistirQuantComponentesCancelamento(const ListaComponentes& lista, int32_t lCampo);

    // ---- task lines ----

    // Adds the tasks the user chose to `tarefas`, the order's task list:
    // groups bring the analytic tasks beneath them, a task already on the
    // order is skipped, and each new line is built from its task master. A
    // single simple task keeps the warranty typed on its line; several get
    // the warranty their task masters suggest.
    CQZDadosGT_Erro& TrataAdicionarTarefa(const CQZDadosPX_Manutencao& dados, const ListaTarefas& novas,
                                          ListaTarefas& tarefas);
    // Checks a task line the user changed (ConsistirManutencaoTarefa).
    CQZDadosGT_Erro& TrataAlterarTarefa(const CQZDadosPX_Manutencao& dados, CQZDadosPX_ManutencaoTarefa* pTarefa);
    // Adds the tasks of the order's plan to `tarefas`, with the warranty
    // dates their task masters suggest.
    CQZDadosGT_Erro& SugerirTarefasConformePlano(const CQZDadosPX_Manutencao& dados, ListaTarefas& tarefas);
    // `saida` is `entrada` with each group task replaced by the analytic
    // tasks beneath it, in the order the search returns them; *pVarias (when
    // given) says whether a group was expanded or two or more lines result.
    CQZDadosGT_Erro& SubstituirTarefasTipoGrupo(const ListaTarefas& entrada, ListaTarefas& saida, bool* pVarias);
    // Appends to `tarefas` a line built from the task master of each
    // addition whose task is not on the list yet (the first occurrence
    // wins), each line checked by ConsistirManutencaoTarefa.
    CQZDadosGT_Erro& ConcatenarListaTarefas(const CQZDadosPX_Manutencao& dados, const ListaTarefas& adicoes,
                                            ListaTarefas& tarefas, bool bSugerirGarantia);
    // A line whose task asks for a situation has one; a line under warranty
    // has a valid warranty date, and learns the last warranty its task left
    // on the order's resource.
    CQZDadosGT_Erro& ConsistirManutencaoTarefa(const CQZDadosPX_Manutencao& dados,
                                               CQZDadosPX_ManutencaoTarefa* pTarefa);

    // ---- time entries ----

    // Checks a technician's time entry before it is added to or changed on
    // the order: its start and end against the order's and the clock, and
    // the technician, who on a plan's order must hold a discipline that
    // serves the plan's.
    CQZDadosGT_Erro& TrataAdicionarAlterarApontamento(const CQZDadosPX_Manutencao& dados,
                                                      CQZDadosPX_ManutencaoApontamento* pApontamento);

protected:
    // ConsistirManutencao, undone when it refuses the order: the caller's
    // order changes only when every check passes.
    CQZDadosGT_Erro& Consistir(CQZDadosPX_Manutencao& dados, const CQZDadosPX_Manutencao*,
                               IQZTrataInconsistencia*) override;
    // A delete is a cancellation: `dados` names the order (its key) and the
    // cancellation situation chosen (its situation pointer). Only an open
    // order nobody worked on may go; then `dados` becomes the stored order in
    // that situation, for the caller to write.
    CQZDadosGT_Erro& ConsistirExclusao(CQZDadosPX_Manutencao& dados, IQZTrataInconsistencia*) override;

private:
    // What the steps change in the order, kept by the save to put it back:
    // the header fields they complete, taken when it is made, and the task
    // lines' custom data, noted before each change.
    class CDesfazer;

    // ConsistirManutencao, noting the task lines' changes in pDesfazer when
    // one is given.
    CQZDadosGT_Erro& ValidaManutencao(CQZDadosPX_Manutencao& dados, CDesfazer* pDesfazer);
    // The steps. Only these two change the order: the other steps take it
    // const.
    CQZDadosGT_Erro& PassosManutencao(CQZDadosPX_Manutencao& dados, CDesfazer* pDesfazer);
    CQZDadosGT_Erro& PassosInfoPersonalizadaTarefa(CQZDadosPX_Manutencao& dados, CDesfazer* pDesfazer);
    CQZDadosGT_Erro& ConsistirTecnico(const CQZDadosPX_Manutencao& dados, const CQZDadosPX_Mestre& mestre,
                                      const CQZDadosGT_Recurso& recurso, bool bNova);
    CQZDadosGT_Erro& TrataAdicionarAlterarComponente(const CPXRegrasComponente& regras,
                                                     const CQZDadosPX_ManutencaoComponente& linha, int64_t index,
                                                     const ListaComponentes& lista);
    CQZDadosGT_Erro& PassosCancelamento(CQZDadosPX_Manutencao& dados);
    CQZDadosGT_Erro& ConsistirTecnicoApontamento(const CQZDadosPX_Manutencao& dados, uint32_t ulTecnico);
    // Message 161 when there are no data services to read through.
    bool ServicosAusentes();
};
