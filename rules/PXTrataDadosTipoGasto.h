// Rules of expense types. Deletion is guarded by CPXControleIntegridade, not
// by this handler.
#pragma once

#include "rules/PXTrataDadosCadastroArvore.h"

struct PXCadastroTipoGasto {
    using Registro = CQZDadosPX_TipoGasto;
    using Filtro = CQZDadosPX_FiltroTipoGasto;
    // A self-parent is reported on the parent field (disciplines report it
    // on the name field); the key of a read is unsigned.
    static constexpr CPXCamposCadastroArvore kCampos{130, 131, 132, 133, 133};
    static constexpr auto Le = &CQZAcessoManutencao::LeTipoGasto;
    static constexpr auto BuscaPonteiros = &CQZAcessoManutencao::BuscaPonteirosTipoGasto;
    static constexpr auto BuscaClassificacao = &CQZAcessoManutencao::BuscaClassificacaoTipoGasto;
};

class CPXTrataDadosTipoGasto : public TPXTrataDadosCadastroArvore<PXCadastroTipoGasto> {
public:
    explicit CPXTrataDadosTipoGasto(bool bInterfaceUsuario = false) : TPXTrataDadosCadastroArvore(bInterfaceUsuario) {}
    CPXTrataDadosTipoGasto(const CPXTrataDadosTipoGasto&) = default;
    CPXTrataDadosTipoGasto& operator=(const CPXTrataDadosTipoGasto&) = default;
    ~CPXTrataDadosTipoGasto() override { Finaliza(); }

    CQZDadosGT_Erro& OnTrataGravacao(TQZBaseParaDados* pDados, IQZTrataInconsistencia* pInconsistencia) override;

protected:
    virtual CQZDadosGT_Erro& ConsistirTipoGasto(CQZDadosPX_TipoGasto* pDados);
};
