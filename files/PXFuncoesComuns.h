// Small translations several parts of the module share: tests of the
// read-flags word of a maintenance order, and texts of enumerated values.
#pragma once

#include <cstdint>

#include "platform/CString.h"
#include "platform/records/PXManutencao.h"

// The read flags they test (PX_LER_MANUTENCAO_*) belong to the order record.
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
