#include "platform/QZRelogio.h"

#include <ctime>

REG_QZDMAHMSUTC CQZRelogioSistema::Agora() const {
    std::time_t t = std::time(nullptr);
    std::tm local{};
    localtime_r(&t, &local);
    int fuso = static_cast<int>(local.tm_gmtoff / 900);
    return REG_QZDMAHMSUTC(REG_QZDMA(local.tm_mday, local.tm_mon + 1, local.tm_year + 1900), local.tm_hour,
                           local.tm_min, local.tm_sec > 59 ? 59 : local.tm_sec, fuso);
}

const CQZRelogioSistema& CQZRelogioSistema::Instancia() {
    static const CQZRelogioSistema relogio;
    return relogio;
}
