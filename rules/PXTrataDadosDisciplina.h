// Rules of disciplines. Deletion is guarded by CPXControleIntegridade, not
// by this handler.
#pragma once

#include "rules/PXTrataDadosCadastroArvore.h"

struct PXCadastroDisciplina {
    using Registro = CQZDadosPX_Disciplina;
    using Filtro = CQZDadosPX_FiltroDisciplina;
    // A self-parent is reported on the name field (expense types report it
    // on the parent field); the key of a read is signed.
    static constexpr CPXCamposCadastroArvore kCampos{2, 3, 4, 5, 4};
    static constexpr auto Le = &CQZAcessoManutencao::LeDisciplina;
    static constexpr auto BuscaPonteiros = &CQZAcessoManutencao::BuscaPonteirosDisciplina;
    static constexpr auto BuscaClassificacao = &CQZAcessoManutencao::BuscaClassificacaoDisciplina;
};

class CPXTrataDadosDisciplina : public TPXTrataDadosCadastroArvore<PXCadastroDisciplina> {
public:
    explicit CPXTrataDadosDisciplina(bool bInterfaceUsuario = false) : TPXTrataDadosCadastroArvore(bInterfaceUsuario) {}
    CPXTrataDadosDisciplina(const CPXTrataDadosDisciplina&) = default;
    CPXTrataDadosDisciplina& operator=(const CPXTrataDadosDisciplina&) = default;
    ~CPXTrataDadosDisciplina() override { Finaliza(); }

    CQZDadosGT_Erro& OnTrataGravacao(TQZBaseParaDados* pDados, IQZTrataInconsistencia* pInconsistencia) override;

protected:
    virtual CQZDadosGT_Erro& ConsistirDisciplina(CQZDadosPX_Disciplina* pDados);
};
