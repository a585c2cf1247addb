// The lines of a record's lists checked one by one before it is saved, as
// the record's screen checks them while the user adds and changes lines:
// each through its handler's per-line operation, each list in the screen's
// order, stopping at the first line refused (its verdict is in the handler;
// `recusa` names the list and the line).
//
// A line at an index the stored record's list has is checked as a change of
// that stored line (its index); any other line as an addition to the lines
// before it. Lists whose screens only add (a technician's disciplines, a
// plan's tasks) replay every line as an addition to the lines before it.
// Lines are checked, not rebuilt: what the operations complete on a line is
// not kept, and the record goes to the save as it was given.
//
// A host declares these once per type (TPXTipoRegistro::ComLinhas).
#pragma once

#include "rules/PXTrataDadosLancamentoGastos.h"
#include "rules/PXTrataDadosManutencao.h"
#include "rules/PXTrataDadosPlano.h"
#include "rules/PXTrataDadosTarefa.h"
#include "rules/PXTrataDadosTecnico.h"
#include "servico/PXTipoRegistro.h"

// Disciplines.
bool PXConfereLinhasTecnico(CPXTrataDadosTecnico& tratador, const CQZDadosPX_Tecnico& dados,
                            const CQZDadosPX_Tecnico* pGravado, CPXLinhaRecusada& recusa);
// Alerts; materials, equipment and services; tasks.
bool PXConfereLinhasPlano(CPXTrataDadosPlano& tratador, const CQZDadosPX_Plano& dados, const CQZDadosPX_Plano* pGravado,
                          CPXLinhaRecusada& recusa);
// Materials, equipment and services.
bool PXConfereLinhasTarefa(CPXTrataDadosTarefa& tratador, const CQZDadosPX_Tarefa& dados,
                           const CQZDadosPX_Tarefa* pGravado, CPXLinhaRecusada& recusa);
// Tasks (each checked as given: TrataAlterarTarefa), materials, equipment,
// services, time entries.
bool PXConfereLinhasManutencao(CPXTrataDadosManutencao& tratador, const CQZDadosPX_Manutencao& dados,
                               const CQZDadosPX_Manutencao* pGravado, CPXLinhaRecusada& recusa);
// Items.
bool PXConfereLinhasLancamentoGastos(CPXTrataDadosLancamentoGastos& tratador, const CQZDadosPX_LancamentoGastos& dados,
                                     const CQZDadosPX_LancamentoGastos* pGravado, CPXLinhaRecusada& recusa);
