// Date and number texts of the enterprise layer, in Brazilian form. The
// alert e-mails carry them, so they are fixed here once:
//  - DataToString: "dd/mm/aaaa" ("dd/mm/aa" when bAnoCompleto is false);
//  - DmaHmsToString: "dd/mm/aaaa hh:mm:ss", local time; with bComFuso the
//    UTC offset follows (" -03:00");
//  - MoedaToString: a fixed-point value with n decimals (0 to 4), comma as
//    the decimal separator, no thousands grouping, rounded half away from
//    zero ("-1234,50");
//  - DiasToString: a whole number of days with its sign ("-3", "0", "12").
// An empty or invalid date gives an empty text.
#pragma once

#include <cstdint>

#include "platform/CString.h"
#include "platform/QZDatas.h"
#include "platform/QZMoeda.h"

CString DataToString(const REG_QZDMA& data, bool bAnoCompleto = true);
CString DmaHmsToString(const REG_QZDMAHMSUTC& dataHora, bool bComFuso = false);
CString MoedaToString(const CQZMoeda& valor, int decimais);
CString DiasToString(int64_t dias);
