// The suggestions of the order screen, below every host: the tasks of the
// order's plan (with the warranty dates their task masters suggest) and the
// materials, equipment and services of the order's tasks. Nothing is
// written: the host shows the completed order, and saves it if the user
// wants it.
#pragma once

#include "servico/PXServicoRegistros.h"

class CPXSugestoesManutencao {
public:
    explicit CPXSugestoesManutencao(CPXSessao sessao) : m_sessao(std::move(sessao)) {}

    // Completes `ordem`: its plan's tasks when `bTarefas`, then the
    // components of its tasks (the three kinds) when `bComponentes`. A
    // suggestion refused (or a read that failed) leaves `ordem` as it was
    // passed and its verdict in `veredito`, with `sugerido` false. Returns 0
    // when the rules answered, or the failure to reach them with its reason
    // in GetErro().
    [[nodiscard]] long Sugere(CQZDadosPX_Manutencao& ordem, bool bTarefas, bool bComponentes, bool& sugerido,
                              CQZDadosGT_Erro& veredito);

    const CQZDadosGT_Erro& GetErro() const { return m_erro; }

private:
    CPXSessao m_sessao;
    CQZDadosGT_Erro m_erro;
};
