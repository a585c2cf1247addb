// Every record and filter of the data layer.
#pragma once

#include "platform/records/PXPrioridade.h"
#include "platform/records/PXSituacao.h"
