// Refuses the deletion of a register that other records still use: asked
// with the kind and position of the record to delete, it searches the
// records that can depend on it, stops at the first one found and leaves a
// message naming both.
#pragma once

#include <cstdint>

#include "rules/PXBaseParaRotinas.h"

class CPXControleIntegridade : public CPXBaseParaRotinas {
public:
    enum RegistroControleIntegridade : int {
        DISCIPLINA = 1,
        TECNICO = 2,
        PLANO = 3,
        SITUACAO_MANUTENCAO = 4,
        TIPO_GASTO = 5,
    };

    CPXControleIntegridade() = default;
    CPXControleIntegridade(const CPXControleIntegridade&) = default;
    CPXControleIntegridade& operator=(const CPXControleIntegridade&) = default;
    ~CPXControleIntegridade() override { Finaliza(); }

    // true when nothing depends on the record (it may be deleted); false
    // with the dependent named in this object's error record, or with the
    // data service's error. A kind outside the enumeration searches nothing
    // and answers true.
    bool VerificaRelacionamentoPonteiro(RegistroControleIntegridade eRegistro, uint32_t ulPonteiro);

private:
    CQZDadosGT_Erro& ExisteRelacionamentoCadastroDisciplina(const uint32_t& ulPonteiro);
    CQZDadosGT_Erro& ExisteRelacionamentoCadastroTecnico(const uint32_t& ulPonteiro);
    CQZDadosGT_Erro& ExisteRelacionamentoCadastroPlano(const uint32_t& ulPonteiro);
    CQZDadosGT_Erro& ExisteRelacionamentoCadastroSituacaoManutencao(const uint32_t& ulPonteiro);
    CQZDadosGT_Erro& ExisteRelacionamentoCadastroTipoGasto(const uint32_t& ulPonteiro);

    // One search per dependent table: clear the error record and the list,
    // search, and pass a failure on.
    CQZDadosGT_Erro& VerificaCadastroPlano(CQZDadosPX_FiltroPlano& filtro, CQZArray_deprecated<uint32_t>& aPonteiros);
    CQZDadosGT_Erro& VerificaCadastroRecurso(CQZDadosGT_FiltroRecurso& filtro,
                                             CQZArray_deprecated<uint32_t>& aPonteiros);
    CQZDadosGT_Erro& VerificaCadastroTecnico(CQZDadosPX_FiltroTecnico& filtro,
                                             CQZArray_deprecated<uint32_t>& aPonteiros);
    CQZDadosGT_Erro& VerificaMovimentoLancamentoGastos(CQZDadosPX_FiltroLancamentoGastos& filtro,
                                                       CQZArray_deprecated<REG_QZDMC>& aChaves);
    CQZDadosGT_Erro& VerificaMovimentoManutencao(CQZDadosPX_FiltroManutencao& filtro,
                                                 CQZArray_deprecated<REG_QZDMC>& aChaves);

    // Clears the error record and the list, runs the search of `servico`,
    // and passes a failure on: the body of each search operation above.
    template <class Servico, class Op, class Filtro, class Lista>
    CQZDadosGT_Erro& BuscaDependentes(Servico* servico, Op busca, const Filtro& filtro, Lista& lista);
    // For a group: the children of the record at ulPonteiro (Registro of
    // the same table, searched by parent and read one by one); the first
    // whose parent is ulPonteiro yields `formato` with its code and name,
    // then the group's.
    template <class Filtro, class Registro, class Chave>
    CQZDadosGT_Erro& VerificaFilhos(const Registro& grupo, uint32_t ulPonteiro,
                                    long (CQZAcessoManutencao::*busca)(const Filtro&, CQZArray_deprecated<uint32_t>&),
                                    long (CQZAcessoManutencao::*le)(Chave, Registro*, uint32_t), const char* formato);
    // The first order found by the filter yields `formato` with the order's
    // key, then `codigo` and `nome`.
    CQZDadosGT_Erro& VerificaManutencoes(CQZDadosPX_FiltroManutencao& filtro, const char* formato,
                                         const CString& codigo, const CString& nome);
    CQZDadosGT_Erro& PassaErroManutencao();
};
