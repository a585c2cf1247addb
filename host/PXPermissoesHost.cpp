#include "host/PXPermissoesHost.h"

#include <iterator>

namespace {

struct TelaDoRegistro {
    const char* tipo;
    int tipoPermissao;
    const char* nome;
};

// Kinds 2 to 10 are the register screens, 11 the maintenance order, 12 and
// 13 the other movements.
constexpr TelaDoRegistro kTelas[] = {
    {"CQZDadosPX_Tarefa", 2, "tarefas"},
    {"CQZDadosPX_Plano", 3, "planos de manutenção"},
    {"CQZDadosPX_Tecnico", 4, "técnicos"},
    {"CQZDadosPX_Disciplina", 5, "disciplinas"},
    {"CQZDadosPX_Situacao", 6, "situações"},
    {"CQZDadosPX_Prioridade", 7, "prioridades"},
    {"CQZDadosPX_TipoGasto", 8, "tipos de gasto"},
    {"CQZDadosPX_CamposPersonalizados", 9, "campos personalizados"},
    {"CQZDadosPX_Mestre", 10, "parâmetros do módulo"},
    {"CQZDadosPX_Manutencao", 11, "ordem de manutenção"},
    {"CQZDadosPX_LancamentoGastos", 12, "lançamentos de gastos"},
};

}  // namespace

int PXTipoPermissaoDoRegistro(const std::string& nomeTipo) {
    for (const auto& t : kTelas)
        if (nomeTipo == t.tipo) return t.tipoPermissao;
    return 0;
}

std::string PXNomeTipoPermissao(int tipo) {
    for (const auto& t : kTelas)
        if (t.tipoPermissao == tipo) return t.nome;
    switch (tipo) {
        case 1: return "configuração";
        case 13: return "outros movimentos";
        case 14: return "configuração dos relatórios";
        case 27: return "consultar saldo";
        case 28: return "consultar saldo por filial";
        case 29: return "alterar item de informação do documento fiscal";
        default: break;
    }
    if (tipo >= 15 && tipo <= 26) return "relatório " + std::to_string(tipo);
    return {};
}

std::string PXPermissaoQueFalta(int tipo, EPXAcaoRegistro acao, const CPXDadosPermissaoUsuario& f) {
    const bool cadastro = tipo >= CPXControlePermissoes::PX_PERMISSAO_CADASTRO_2 &&
                          tipo <= CPXControlePermissoes::PX_PERMISSAO_CADASTRO_10;
    switch (acao) {
        case EPXAcaoRegistro::INCLUIR:
            return f.GetTemPermissaoIncluir() ? "" : "Incluir";
        case EPXAcaoRegistro::ALTERAR:
            return f.GetTemPermissaoAlterar() ? "" : "Alterar";
        case EPXAcaoRegistro::EXCLUIR:
            if (cadastro) return f.GetTemPermissaoIncluir() && f.GetTemPermissaoAlterar() ? "" : "Incluir e Alterar";
            if (tipo == CPXControlePermissoes::PX_PERMISSAO_MOVIMENTO_11) return f.GetTemPermissaoCancelar() ? "" : "Cancelar";
            return f.GetTemPermissaoExcluir() ? "" : "Excluir";
    }
    return "Incluir";
}
