// Every record and filter of the data layer.
#pragma once

#include "platform/records/PXPrioridade.h"
#include "platform/records/PXSituacao.h"
#include "platform/records/GTFilial.h"
#include "platform/records/GTPeriodoContabil.h"
#include "platform/records/GTProduto.h"
#include "platform/records/GTServico.h"
#include "platform/records/GTUsuario.h"
