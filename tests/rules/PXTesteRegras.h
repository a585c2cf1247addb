// Fixture of the handlers' save tests: the rule-test fixture with the sweep
// of a save whose data-service calls fail in turn.
#pragma once

#include <functional>

#include "tests/support/PXTeste.h"

class PXTesteRegras : public PXTeste {
protected:
    // `handler` saves `modelo` into `salvo` with each of its data-service calls
    // failing in turn (see VarreFalhas): the answer agrees with the error
    // record, the failure is on `campo`, and `confere` checks each failed run.
    template <class H, class R>
    void VarreGravacao(H& handler, const R& modelo, R& salvo, long campo, const std::function<void()>& confere = {}) {
        VarreFalhas([&] { salvo = modelo; },
                    [&]() -> const CQZDadosGT_Erro& {
                        const int ok = handler.TrataGravacao(&salvo, nullptr);
                        EXPECT_EQ(ok, handler.GetErro().GetTipoErro() == 0 ? 1 : 0);
                        return handler.GetErro();
                    },
                    [&] {
                        EXPECT_EQ(handler.GetCodigoCampo(), campo);
                        if (confere) confere();
                    });
    }
};
