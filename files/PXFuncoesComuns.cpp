#include "files/PXFuncoesComuns.h"

#include "platform/QZDadosPX_Manutencao.h"

namespace {
bool Algum(uint16_t usFlags, unsigned mascara) { return (usFlags & mascara) != 0; }
}  // namespace

bool CPXFuncoesComuns::FazLeituraManutencaoComplemento(uint16_t f) { return Algum(f, PX_LER_MANUTENCAO_COMPLEMENTO); }
bool CPXFuncoesComuns::FazLeituraManutencaoDescricao(uint16_t f) { return Algum(f, PX_LER_MANUTENCAO_DESCRICAO); }
bool CPXFuncoesComuns::FazLeituraManutencaoTarefa(uint16_t f) { return Algum(f, PX_LER_MANUTENCAO_TAREFA); }

bool CPXFuncoesComuns::FazLeituraManutencaoMaterial(uint16_t f) {
    return Algum(f, PX_LER_MANUTENCAO_MATERIAL | PX_LER_MANUTENCAO_MATERIAL_COMPLEMENTO);
}
bool CPXFuncoesComuns::FazLeituraManutencaoMaterialComplemento(uint16_t f) {
    return Algum(f, PX_LER_MANUTENCAO_MATERIAL_COMPLEMENTO);
}

bool CPXFuncoesComuns::FazLeituraManutencaoEquipamento(uint16_t f) {
    return Algum(f, PX_LER_MANUTENCAO_EQUIPAMENTO | PX_LER_MANUTENCAO_EQUIPAMENTO_COMPLEMENTO);
}
bool CPXFuncoesComuns::FazLeituraManutencaoEquipamentoComplemento(uint16_t f) {
    return Algum(f, PX_LER_MANUTENCAO_EQUIPAMENTO_COMPLEMENTO);
}

bool CPXFuncoesComuns::FazLeituraManutencaoServico(uint16_t f) {
    return Algum(f, PX_LER_MANUTENCAO_SERVICO | PX_LER_MANUTENCAO_SERVICO_COMPLEMENTO);
}
bool CPXFuncoesComuns::FazLeituraManutencaoServicoComplemento(uint16_t f) {
    return Algum(f, PX_LER_MANUTENCAO_SERVICO_COMPLEMENTO);
}

bool CPXFuncoesComuns::FazLeituraManutencaoApontamento(uint16_t f) {
    return Algum(f, PX_LER_MANUTENCAO_APONTAMENTO | PX_LER_MANUTENCAO_APONTAMENTO_OBSERVACAO);
}
bool CPXFuncoesComuns::FazLeituraManutencaoApontamentoObservacao(uint16_t f) {
    return Algum(f, PX_LER_MANUTENCAO_APONTAMENTO_OBSERVACAO);
}

CString CPXFuncoesComuns::GetTempoAlertaPlano(uint8_t ucTempo) {
    switch (ucTempo) {
        case 1: return "Dia(s)";
        case 2: return "Hora(s)";
        case 3: return "Minuto(s)";
        default: return CString();
    }
}

CString CPXFuncoesComuns::GetSituacaoManutencao(uint8_t ucSituacao) {
    return QZDadosPX::Manutencao::GetNomeSituacao(ucSituacao);
}

CString CPXFuncoesComuns::GetTipoManutencao(uint8_t ucTipo) { return QZDadosPX::Manutencao::GetNomeTipo(ucTipo); }
