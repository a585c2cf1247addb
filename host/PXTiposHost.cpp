#include "host/PXTiposHost.h"

#include "integrity/PXControleIntegridade.h"
#include "platform/records/Registros.h"
#include "rules/PXTrataDadosCamposPersonalizados.h"
#include "rules/PXTrataDadosDisciplina.h"
#include "rules/PXTrataDadosLancamentoGastos.h"
#include "rules/PXTrataDadosManutencao.h"
#include "rules/PXTrataDadosMestre.h"
#include "rules/PXTrataDadosPlano.h"
#include "rules/PXTrataDadosPrioridade.h"
#include "rules/PXTrataDadosSituacaoManutencao.h"
#include "rules/PXTrataDadosSituacaoTarefa.h"
#include "rules/PXTrataDadosTarefa.h"
#include "rules/PXTrataDadosTecnico.h"
#include "rules/PXTrataDadosTipoGasto.h"
#include "servico/PXLinhasRegistro.h"

namespace {

template <class R>
CPXTipoHost<R>& Tipo(std::vector<std::unique_ptr<IPXTipoHost>>& tipos) {
    auto tipo = std::make_unique<CPXTipoHost<R>>();
    auto& ref = *tipo;
    tipos.push_back(std::move(tipo));
    return ref;
}

using Controle = CPXControleIntegridade;

// One record class, two registers: type 2 are task situations; every other
// type goes to the maintenance-situation rules, which refuse it.
std::unique_ptr<CPXTrataDados> TratadorSituacao(const CQZDadosPX_Situacao& s) {
    if (s.GetTipo() == 2) return std::make_unique<CPXTrataDadosSituacaoTarefa>();
    return std::make_unique<CPXTrataDadosSituacaoManutencao>();
}

// Only maintenance situations are referred to by orders.
bool EhSituacaoManutencao(const CQZDadosPX_Situacao& s) { return s.GetTipo() == 1; }

std::vector<std::unique_ptr<IPXTipoHost>> MontaTipos() {
    std::vector<std::unique_ptr<IPXTipoHost>> t;
    // Enterprise records: loaded by import, read by the rules.
    Tipo<CQZDadosGT_Filial>(t);
    Tipo<CQZDadosGT_PeriodoContabil>(t);
    Tipo<CQZDadosGT_Usuario>(t);
    Tipo<CQZDadosGT_UsuarioPermissao>(t);
    Tipo<CQZDadosGT_ProdutoEx>(t);
    Tipo<CQZDadosGT_Servico>(t);
    Tipo<CQZDadosGT_Recurso>(t);
    Tipo<CQZDadosGT_Requisitante>(t);
    Tipo<CQZDadosGT_TipoPeriodo>(t);
    Tipo<CQZDadosBDD_Registro>(t);
    Tipo<CQZDadosGT_TipoRecurso>(t);
    Tipo<CQZDadosGT_UnidadeMedidaProduto>(t);
    Tipo<CQZDadosGT_UnidadeMedidaServico>(t);
    // The module's registers, with their handlers, the checks of their
    // lines and their integrity checks. They have no delete rules: a delete
    // is the integrity check, where one exists, and the removal.
    Tipo<CQZDadosPX_Mestre>(t).Com<CPXTrataDadosMestre>();
    Tipo<CQZDadosPX_Prioridade>(t).Com<CPXTrataDadosPrioridade>().ComExclusaoCadastro();
    Tipo<CQZDadosPX_Situacao>(t).ComTratadorPor(TratadorSituacao).ComExclusaoCadastro()
        .ComIntegridade(PXRegraIntegridade(Controle::SITUACAO_MANUTENCAO), EhSituacaoManutencao);
    Tipo<CQZDadosPX_Disciplina>(t).Com<CPXTrataDadosDisciplina>().ComExclusaoCadastro()
        .ComIntegridade(PXRegraIntegridade(Controle::DISCIPLINA));
    Tipo<CQZDadosPX_TipoGasto>(t).Com<CPXTrataDadosTipoGasto>().ComExclusaoCadastro()
        .ComIntegridade(PXRegraIntegridade(Controle::TIPO_GASTO));
    Tipo<CQZDadosPX_Tecnico>(t).Com<CPXTrataDadosTecnico>().ComLinhas(PXConfereLinhasTecnico).ComExclusaoCadastro()
        .ComIntegridade(PXRegraIntegridade(Controle::TECNICO));
    Tipo<CQZDadosPX_CamposPersonalizados>(t).Com<CPXTrataDadosCamposPersonalizados>().ComExclusaoCadastro();
    Tipo<CQZDadosPX_Tarefa>(t).Com<CPXTrataDadosTarefa>().ComLinhas(PXConfereLinhasTarefa).ComExclusaoCadastro();
    Tipo<CQZDadosPX_Plano>(t).Com<CPXTrataDadosPlano>().ComLinhas(PXConfereLinhasPlano).ComExclusaoCadastro()
        .ComIntegridade(PXRegraIntegridade(Controle::PLANO));
    // Movements: an order is never removed, its delete cancels it into the
    // situation chosen; an expense entry goes when its rules allow it.
    Tipo<CQZDadosPX_Manutencao>(t).Com<CPXTrataDadosManutencao>().ComLinhas(PXConfereLinhasManutencao)
        .ComCancelamento([](CQZDadosPX_Manutencao& m, uint32_t situacao) { m.SetPonteiroSituacao(situacao); })
        .ComMesDaChave([](const CQZDadosPX_Manutencao& m) { return REG_QZMA(m.GetDataHoraEmissao().GetData()); });
    Tipo<CQZDadosPX_LancamentoGastos>(t).Com<CPXTrataDadosLancamentoGastos>()
        .ComLinhas(PXConfereLinhasLancamentoGastos)
        .ComMesDaChave([](const CQZDadosPX_LancamentoGastos& l) { return REG_QZMA(l.GetData()); });
    return t;
}

}  // namespace

const std::vector<std::unique_ptr<IPXTipoHost>>& PXTiposHost() {
    static const auto tipos = MontaTipos();
    return tipos;
}

const IPXTipoHost* PXBuscaTipoHost(const std::string& nome) {
    const IPXTipoHost* achado = nullptr;
    for (const auto& t : PXTiposHost()) {
        const std::string completo = t->Nome();
        if (completo == nome) return t.get();
        const auto sub = completo.find('_');
        if (sub != std::string::npos && completo.substr(sub + 1) == nome) {
            if (achado) return nullptr;
            achado = t.get();
        }
    }
    return achado;
}
