// Which actions the current user may take in one screen or function of the
// module: reads the user's permission records through the enterprise data
// service and turns numbered permissions into the flags of
// CPXDadosPermissaoUsuario. A supervisor has every permission a screen reads.
#pragma once

#include "permissions/PXDadosPermissaoUsuario.h"
#include "rules/PXBaseParaRotinas.h"

class CPXControlePermissoes : public CPXBaseParaRotinas {
public:
    // The screen or function asked about. The screens behind the numbers
    // belong to the suite's permission tables; only the groups matter here.
    // Any int is a valid value: hosts may pass numbers this table lacks.
    enum PXControlePermissao : int {
        PX_PERMISSAO_CONFIGURACAO = 1,
        // Master-data screens.
        PX_PERMISSAO_CADASTRO_2 = 2,
        PX_PERMISSAO_CADASTRO_3,
        PX_PERMISSAO_CADASTRO_4,
        PX_PERMISSAO_CADASTRO_5,
        PX_PERMISSAO_CADASTRO_6,
        PX_PERMISSAO_CADASTRO_7,
        PX_PERMISSAO_CADASTRO_8,
        PX_PERMISSAO_CADASTRO_9,
        PX_PERMISSAO_CADASTRO_10,
        // Movement screens.
        PX_PERMISSAO_MOVIMENTO_11 = 11,
        PX_PERMISSAO_MOVIMENTO_12,
        PX_PERMISSAO_MOVIMENTO_13,
        // Reports; 14 is the report configuration.
        PX_PERMISSAO_RELATORIO_14 = 14,
        PX_PERMISSAO_RELATORIO_15,
        PX_PERMISSAO_RELATORIO_16,
        PX_PERMISSAO_RELATORIO_17,
        PX_PERMISSAO_RELATORIO_18,
        PX_PERMISSAO_RELATORIO_19,
        PX_PERMISSAO_RELATORIO_20,
        PX_PERMISSAO_RELATORIO_21,
        PX_PERMISSAO_RELATORIO_22,
        PX_PERMISSAO_RELATORIO_23,
        PX_PERMISSAO_RELATORIO_24,
        PX_PERMISSAO_RELATORIO_25,
        PX_PERMISSAO_RELATORIO_26,
        // Specific functions.
        PX_PERMISSAO_CONSULTAR_SALDO = 27,
        PX_PERMISSAO_CONSULTAR_SALDO_FILIAL = 28,
        PX_PERMISSAO_ALTERAR_ITEM_INF_DOC_FISCAL = 29,
    };

    CPXControlePermissoes() = default;
    ~CPXControlePermissoes() override;

    // Clears *pDados (may be null) and fills it for the kind; returns 1 when
    // the user has at least one permission there, else 0. A kind outside 1 to
    // 29 and a controller not initialised grant nothing. A failed read denies
    // that one permission and leaves the service's error in this object's
    // error record; the other permissions are still read.
    int GetPermissoes(PXControlePermissao eTipo, CPXDadosPermissaoUsuario* pDados);

private:
    // 1 when the current user holds the numbered permission of the module or
    // is a supervisor. One read per call: the service's cache serves repeats.
    int GetPermissao(uint16_t usPermissao, QZModulo eModulo);

    void GetPermissoesCadastros(const PXControlePermissao& eTipo, CPXDadosPermissaoUsuario& dados);
    void GetPermissoesMovimentos(const PXControlePermissao& eTipo, CPXDadosPermissaoUsuario& dados);
    void GetPermissoesRelatorios(const PXControlePermissao& eTipo, CPXDadosPermissaoUsuario& dados);
    void GetPermissoesEspecificas(const PXControlePermissao& eTipo, CPXDadosPermissaoUsuario& dados);
};
