// The maintenance module's routine base.
#pragma once

#include "platform/QZBaseParaRotinas.h"

class CPXBaseParaRotinas : public CQZBaseParaRotinas {
public:
    CPXBaseParaRotinas() = default;
    CPXBaseParaRotinas(const CPXBaseParaRotinas&) = default;
    CPXBaseParaRotinas& operator=(const CPXBaseParaRotinas&) = default;
    ~CPXBaseParaRotinas() override = default;

protected:
    long OnInicializa() override { return CQZBaseParaRotinas::OnInicializa(); }
    long OnFinaliza() override { return CQZBaseParaRotinas::OnFinaliza(); }
};
