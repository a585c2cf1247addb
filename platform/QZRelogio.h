// The clock the library and its stores read; tests set their own.
#pragma once

#include "platform/QZDatas.h"

class IQZRelogio {
public:
    virtual ~IQZRelogio() = default;
    // Local date and time, with the UTC offset in the stamp's upper bits.
    virtual REG_QZDMAHMSUTC Agora() const = 0;
};

class CQZRelogioSistema : public IQZRelogio {
public:
    REG_QZDMAHMSUTC Agora() const override;
    static const CQZRelogioSistema& Instancia();
};

class CQZRelogioFixo : public IQZRelogio {
public:
    explicit CQZRelogioFixo(REG_QZDMAHMSUTC agora = REG_QZDMAHMSUTC(1, 1, 2026, 8, 0, 0)) : m_agora(agora) {}
    REG_QZDMAHMSUTC Agora() const override { return m_agora; }
    void Define(REG_QZDMAHMSUTC agora) { m_agora = agora; }
    void AvancaSegundo() { m_agora = m_agora.MaisUmSegundo(); }

private:
    REG_QZDMAHMSUTC m_agora;
};
