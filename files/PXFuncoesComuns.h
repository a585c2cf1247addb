// Small translations several parts of the module share: tests of the
// read-flags word of a maintenance order, and texts of enumerated values.
#pragma once

#include <cstdint>

#include "platform/CString.h"

// Read flags of a maintenance order: which parts are loaded besides the
// header. Each list has two bits; either reads the list, the upper one also
// its complement (remarks, for time entries).
enum : uint16_t {
    PX_LER_MANUTENCAO_COMPLEMENTO = 0x0001,
    PX_LER_MANUTENCAO_DESCRICAO = 0x0002,
    PX_LER_MANUTENCAO_TAREFA = 0x0004,
    PX_LER_MANUTENCAO_MATERIAL = 0x0008,
    PX_LER_MANUTENCAO_MATERIAL_COMPLEMENTO = 0x0010,
    PX_LER_MANUTENCAO_EQUIPAMENTO = 0x0020,
    PX_LER_MANUTENCAO_EQUIPAMENTO_COMPLEMENTO = 0x0040,
    PX_LER_MANUTENCAO_SERVICO = 0x0080,
    PX_LER_MANUTENCAO_SERVICO_COMPLEMENTO = 0x0100,
    PX_LER_MANUTENCAO_APONTAMENTO = 0x0200,
    PX_LER_MANUTENCAO_APONTAMENTO_OBSERVACAO = 0x0400,
};

class CPXFuncoesComuns {
public:
    CPXFuncoesComuns() = default;
    CPXFuncoesComuns(const CPXFuncoesComuns&) = default;
    CPXFuncoesComuns& operator=(const CPXFuncoesComuns&) = default;
    virtual ~CPXFuncoesComuns() = default;

    static bool FazLeituraManutencaoComplemento(uint16_t usFlags);
    static bool FazLeituraManutencaoDescricao(uint16_t usFlags);
    static bool FazLeituraManutencaoTarefa(uint16_t usFlags);
    static bool FazLeituraManutencaoMaterial(uint16_t usFlags);
    static bool FazLeituraManutencaoMaterialComplemento(uint16_t usFlags);
    static bool FazLeituraManutencaoEquipamento(uint16_t usFlags);
    static bool FazLeituraManutencaoEquipamentoComplemento(uint16_t usFlags);
    static bool FazLeituraManutencaoServico(uint16_t usFlags);
    static bool FazLeituraManutencaoServicoComplemento(uint16_t usFlags);
    static bool FazLeituraManutencaoApontamento(uint16_t usFlags);
    static bool FazLeituraManutencaoApontamentoObservacao(uint16_t usFlags);

    // Unit of a plan alert's time: 1 "Dia(s)", 2 "Hora(s)", 3 "Minuto(s)";
    // the empty string for any other value.
    static CString GetTempoAlertaPlano(uint8_t ucTempo);
    // Names of an order's base situation and maintenance type, from the
    // record library; the empty string for an unknown value.
    static CString GetSituacaoManutencao(uint8_t ucSituacao);
    static CString GetTipoManutencao(uint8_t ucTipo);
};
