// When a plan alert sends: whether it may be sent again yet, and whether a
// resource that follows the plan is due under it. Pure functions of the
// records and the clock, shared by the run and its preview.
#pragma once

#include <cstdint>

#include "platform/CString.h"
#include "platform/QZAcesso.h"

// How one resource link fares under one alert.
struct CPXAvaliacaoVencimento {
    bool atrasado = false;          // counter overrun, or next date past
    bool criterioContador = false;
    bool criterioData = false;
    bool vence = false;             // the plan's control type applied to both
    // Days from today to the next maintenance (negative when overdue); only
    // meaningful with a next date.
    int64_t diasParaProxima = 0;
    bool temDataProxima = false;
};

// The due rule. A before-alert (AntesApos 1) looks at links not yet
// overdue: the counter when fewer cycles than QtdContador are left, the date
// from QtdDias days before the next date on. An after-alert (2) looks at
// overdue links: the date from QtdDias days after the next date on, and the
// counter while the overrun is still below QtdContador (the reverse sense of
// the date test, kept as the rule states it). Control type 0 takes the date,
// 1 the counter, 2 both, 3 either; any other type is always due.
CPXAvaliacaoVencimento PXAvaliaVencimento(const CQZDadosPX_PlanoAlerta& alerta,
                                          const CQZDadosGT_RecursoPlanoManutencao& vinculo, uint8_t tipoControle,
                                          REG_QZDMA hoje);

// The repeat interval of an alert in seconds: TempoRepeticao in days (1),
// hours (2) or minutes (3), whole seconds; 0 for any other unit.
int64_t PXIntervaloRepeticaoSegundos(const CQZDadosPX_PlanoAlerta& alerta);

// Last sending plus the interval, as a stamp: day and second carried over,
// the packed value kept to 38 bits as the stamp's arithmetic wraps there.
REG_QZDMAHMSUTC PXSomaSegundos(REG_QZDMAHMSUTC carimbo, int64_t segundos);

// Stamps compared as signed values of their low 38 bits (bit 37 is the
// sign): the UTC offset above them takes no part.
bool PXCarimboAnterior(REG_QZDMAHMSUTC a, REG_QZDMAHMSUTC b);

// Whether an alert already sent may be sent again at `agora`.
bool PXAlertaPodeRepetir(const CQZDadosPX_PlanoAlerta& alerta, REG_QZDMAHMSUTC agora);

// Why a link is due, in Portuguese, for people reading a preview.
CString PXDescreveVencimento(const CQZDadosPX_PlanoAlerta& alerta, const CQZDadosGT_RecursoPlanoManutencao& vinculo,
                             const CPXAvaliacaoVencimento& avaliacao, uint8_t tipoControle);

// The technicians already mailed for one alert: 17 buckets keyed by the
// Park-Miller minimal standard step of the technician's pointer.
class CPXConjuntoTecnicos {
public:
    static constexpr uint32_t kBaldes = 17;
    static uint32_t Hash(uint32_t ponteiro);
    bool Contem(uint32_t ponteiro) const;
    // False when it was there already.
    bool Adiciona(uint32_t ponteiro);

private:
    CQZVector<uint32_t> m_baldes[kBaldes];
};
