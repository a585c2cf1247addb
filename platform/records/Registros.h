// Every record and filter of the data layer.
#pragma once

#include "platform/records/PXPrioridade.h"
#include "platform/records/PXSituacao.h"
#include "platform/records/GTFilial.h"
#include "platform/records/GTPeriodoContabil.h"
#include "platform/records/GTProduto.h"
#include "platform/records/GTServico.h"
#include "platform/records/GTUsuario.h"
#include "platform/records/PXDisciplina.h"
#include "platform/records/PXTipoGasto.h"
#include "platform/records/PXTecnico.h"
#include "platform/records/PXPlano.h"
#include "platform/records/PXManutencao.h"
#include "platform/records/PXLancamentoGastos.h"
#include "platform/records/GTRecurso.h"
#include "platform/records/GTUsuarioPermissao.h"
#include "platform/records/PXMestre.h"
