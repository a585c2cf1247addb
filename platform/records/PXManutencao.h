// Maintenance orders: movement records keyed by month and number (REG_QZDMC),
// with their task lines, three component lists (materials, equipment,
// services) and the technicians' time entries.
#pragma once

#include <cstring>

#include "platform/records/BDDRegistro.h"
#include "platform/records/PXCriterios.h"
#include "platform/records/QZLeituraListas.h"

// Read flags of an order: which parts are loaded besides the header. Each
// list has two bits; either reads the list, the upper one also its
// complement (remarks, for time entries).
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

// A task line: the task master's name, details and planned time copied
// when the line was made, its situation, the warranty it carries, the last
// warranty of the same task on the resource, and the custom data reported
// for it (ApontamentoTarefa: none or one record).
// DmcUltimaManutencao is history, copied from the resource's warranty list:
// the order it names may have been cancelled into an old month file, so no
// reference is declared for it.
#define CAMPOS_PX_MANUTENCAO_TAREFA(CAMPO, LISTA)                  \
    CAMPO(uint32_t, PonteiroTarefa, QZ_REF(CQZDadosPX_Tarefa))     \
    CAMPO(CString, Tarefa, 0)                                      \
    CAMPO(CString, Detalhamento, 0)                                \
    CAMPO(CQZMoeda, TempoPrevisto, 0)                              \
    CAMPO(uint32_t, PonteiroSituacao, QZ_REF(CQZDadosPX_Situacao)) \
    CAMPO(uint8_t, GarantiaAte, 0)                                 \
    CAMPO(REG_QZDMA, DataGarantiaAte, 0)                           \
    CAMPO(REG_QZDMA, DataUltimaGarantia, 0)                        \
    CAMPO(REG_QZDMC, DmcUltimaManutencao, 0)                       \
    LISTA(CQZDadosBDD_Registro, ApontamentoTarefa)

class CQZDadosPX_ManutencaoTarefa : public TQZBaseParaDados {
    QZ_REGISTRO(CQZDadosPX_ManutencaoTarefa, CAMPOS_PX_MANUTENCAO_TAREFA)
public:
    bool PossuiApontamentoTarefa() const { return !m_listaApontamentoTarefa.empty(); }
    // Null when the line has no custom data.
    const CQZDadosBDD_Registro* GetApontamentoTarefa() const {
        return m_listaApontamentoTarefa.empty() ? nullptr : &m_listaApontamentoTarefa.front();
    }
    CQZDadosBDD_Registro* GetApontamentoTarefa() {
        return m_listaApontamentoTarefa.empty() ? nullptr : &m_listaApontamentoTarefa.front();
    }
    void SetApontamentoTarefa(const CQZDadosBDD_Registro& dados) { m_listaApontamentoTarefa.assign(1, dados); }
    // The line's custom data, created empty when it has none.
    CQZDadosBDD_Registro& IncluiApontamentoTarefa() {
        if (m_listaApontamentoTarefa.empty()) m_listaApontamentoTarefa.emplace_back();
        return m_listaApontamentoTarefa.front();
    }
    void RemoveApontamentoTarefa() { m_listaApontamentoTarefa.clear(); }
};

// A component line. TipoProdutoServico 'S' marks a service. An internal
// stock requisition made for the line has a key (empty when none); the
// stock serves (QtdAtendida) and the work consumes (QtdConsumida) against
// it. PonteiroTarefaOrigem is the order task that suggested the line (0 for
// a line typed by the user). TipoRI: requisition type (2 materials and
// services, 1 equipment).
// ProdutoServico names a product or a service as TipoProdutoServico says, so
// it declares no one target (the component checks read it); the internal
// requisition of ChaveRequisicaoInterna belongs to the stock module, which
// this store does not hold.
#define CAMPOS_PX_MANUTENCAO_COMPONENTE(CAMPO, LISTA)                \
    CAMPO(_REG_POSICAO_PRODUTOPS, ProdutoServico, 0)                 \
    CAMPO(uint8_t, TipoProdutoServico, 0)                            \
    CAMPO(CQZMoeda, QtdRequisitada, 0)                               \
    CAMPO(CQZMoeda, QtdAtendida, 0)                                  \
    CAMPO(CQZMoeda, QtdConsumida, 0)                                 \
    CAMPO(REG_QZDMC, ChaveRequisicaoInterna, 0)                      \
    CAMPO(uint32_t, PonteiroTarefaOrigem, QZ_REF(CQZDadosPX_Tarefa)) \
    CAMPO(uint8_t, TipoRI, 0)                                        \
    CAMPO(CString, Complemento, 0)

class CQZDadosPX_ManutencaoComponente : public TQZBaseParaDados {
    QZ_REGISTRO(CQZDadosPX_ManutencaoComponente, CAMPOS_PX_MANUTENCAO_COMPONENTE)
public:
    bool TemRequisicaoInterna() const { return GetChaveRequisicaoInterna().GetValor() != 0; }
};

// A technician's work on the order, from start to end, with remarks.
#define CAMPOS_PX_MANUTENCAO_APONTAMENTO(CAMPO, LISTA)           \
    CAMPO(REG_QZDMAHMSUTC, DataHoraInicial, 0)                   \
    CAMPO(REG_QZDMAHMSUTC, DataHoraFinal, 0)                     \
    CAMPO(uint32_t, PonteiroTecnico, QZ_REF(CQZDadosPX_Tecnico)) \
    CAMPO(CString, Observacao, 0)

class CQZDadosPX_ManutencaoApontamento : public TQZBaseParaDados {
    QZ_REGISTRO(CQZDadosPX_ManutencaoApontamento, CAMPOS_PX_MANUTENCAO_APONTAMENTO)
};

// The order. TipoManutencao 1 is the order a plan drives. Situacao is the
// base situation (one bit: 2 open, 4 and 32 work started, 8 finished, 16
// cancelled, 64 rescheduled; 0 until derived from PonteiroSituacao). The
// counter unit, digits and unit kind are the resource's when the order was
// opened; TempoPrevisto is in hours when TempoPrevistoEmHoras. TempoDuracao
// is the work recorded; ContadorEncerramento the counter read at closing.
// ContadorPonteiroUnMedida is a product's or a service's unit as
// ContadorProdutoServico says: no one target is declared.
#define CAMPOS_PX_MANUTENCAO(CAMPO, LISTA)                                  \
    CAMPO(REG_QZDMC, Dmc, QZ_CHAVE)                                         \
    CAMPO(uint16_t, PonteiroFilial, QZ_IDX | QZ_REF(CQZDadosGT_Filial))     \
    CAMPO(uint32_t, PonteiroRecurso, QZ_REF(CQZDadosGT_Recurso))            \
    CAMPO(uint8_t, TipoManutencao, 0)                                       \
    CAMPO(uint32_t, PonteiroPlano, QZ_IDX | QZ_REF(CQZDadosPX_Plano))       \
    CAMPO(uint32_t, PonteiroDisciplina, QZ_REF(CQZDadosPX_Disciplina))      \
    CAMPO(CString, Descricao, 0)                                            \
    CAMPO(CString, Complemento, 0)                                          \
    CAMPO(uint32_t, PonteiroRequisitante, QZ_REF(CQZDadosGT_Requisitante))  \
    CAMPO(uint32_t, PonteiroPrioridade, QZ_REF(CQZDadosPX_Prioridade))      \
    CAMPO(uint32_t, PonteiroTecnico, QZ_IDX | QZ_REF(CQZDadosPX_Tecnico))   \
    CAMPO(uint8_t, OrigemRProducaoApontamento, 0)                           \
    CAMPO(uint8_t, Situacao, 0)                                             \
    CAMPO(uint32_t, PonteiroSituacao, QZ_IDX | QZ_REF(CQZDadosPX_Situacao)) \
    CAMPO(REG_QZDMAHMSUTC, DataHoraEmissao, 0)                              \
    CAMPO(REG_QZDMAHMSUTC, DmaHmsPrevInicio, 0)                             \
    CAMPO(REG_QZDMAHMSUTC, DataHoraInicio, 0)                               \
    CAMPO(REG_QZDMAHMSUTC, DataHoraNovaProgramacao, 0)                      \
    CAMPO(REG_QZDMAHMSUTC, DataHoraFim, 0)                                  \
    CAMPO(CQZMoeda, TempoPrevisto, 0)                                       \
    CAMPO(uint8_t, TempoPrevistoEmHoras, 0)                                 \
    CAMPO(CQZMoeda, TempoDuracao, 0)                                        \
    CAMPO(uint32_t, ContadorPonteiroUnMedida, 0)                            \
    CAMPO(uint16_t, ContadorNumeroDigitos, 0)                               \
    CAMPO(uint8_t, ContadorProdutoServico, 0)                               \
    CAMPO(CQZMoeda, ContadorEncerramento, 0)                                \
    CAMPO(REG_QZDMAHMSUTC, DmaHmsGravacao, QZ_CARIMBO)                      \
    LISTA(CQZDadosPX_ManutencaoTarefa, Tarefa)                              \
    LISTA(CQZDadosPX_ManutencaoComponente, Material)                        \
    LISTA(CQZDadosPX_ManutencaoComponente, Equipamento)                     \
    LISTA(CQZDadosPX_ManutencaoComponente, Servico)                         \
    LISTA(CQZDadosPX_ManutencaoApontamento, Apontamento)

class CQZDadosPX_Manutencao : public TQZBaseParaDados {
    QZ_REGISTRO(CQZDadosPX_Manutencao, CAMPOS_PX_MANUTENCAO)
public:
    static constexpr QZTipoChave kTipoChave = QZ_CHAVE_DMC;
};

// What a read of an order loads for its flags. The header (description and
// complement included) is one row and always comes. Each list comes when
// either of its bits is set: a component line's complement and a time
// entry's remarks are columns of the line, so the list bit and the
// complement bit read the same. The custom data of a task line comes with
// the tasks. A read with flags 0 (the stale check of a save) loads none of
// the five lists.
template <>
struct QZLeituraListas<CQZDadosPX_Manutencao> {
    static bool LeLista(uint64_t flags, const char* lista) {
        struct Bits {
            const char* lista;
            uint64_t mascara;
        };
        static constexpr Bits kBits[] = {
            {"Tarefa", PX_LER_MANUTENCAO_TAREFA},
            {"Material", PX_LER_MANUTENCAO_MATERIAL | PX_LER_MANUTENCAO_MATERIAL_COMPLEMENTO},
            {"Equipamento", PX_LER_MANUTENCAO_EQUIPAMENTO | PX_LER_MANUTENCAO_EQUIPAMENTO_COMPLEMENTO},
            {"Servico", PX_LER_MANUTENCAO_SERVICO | PX_LER_MANUTENCAO_SERVICO_COMPLEMENTO},
            {"Apontamento", PX_LER_MANUTENCAO_APONTAMENTO | PX_LER_MANUTENCAO_APONTAMENTO_OBSERVACAO},
        };
        for (const Bits& b : kBits)
            if (std::strcmp(b.lista, lista) == 0) return (flags & b.mascara) != 0;
        return true;
    }
};

// Branch scope and periods as PXCriterios.h says; each SetValorUnico* keeps
// the orders that point to that very record.
#define CRITERIOS_PX_FILTRO_MANUTENCAO(CRITERIO)     \
    CRITERIO(uint8_t, TodasFiliais)                  \
    CRITERIO(uint16_t, ValorUnicoFilial)             \
    CRITERIO(uint8_t, TodosPeriodos)                 \
    CRITERIO(uint32_t, ValorUnicoPlanoManutencao)    \
    CRITERIO(uint32_t, ValorUnicoTecnico)            \
    CRITERIO(uint32_t, ValorUnicoSituacao)

class CQZDadosPX_FiltroManutencao : public TQZBaseFiltro {
    QZ_FILTRO(CQZDadosPX_FiltroManutencao, CQZDadosPX_Manutencao, CRITERIOS_PX_FILTRO_MANUTENCAO)
public:
    void MontaCondicoes(CQZCondicoes& c, bool) const override {
        PXCondicaoFilial(c, m_critTodasFiliais, m_critValorUnicoFilial);
        c.Igual("PonteiroPlano", m_critValorUnicoPlanoManutencao);
        c.Igual("PonteiroTecnico", m_critValorUnicoTecnico);
        c.Igual("PonteiroSituacao", m_critValorUnicoSituacao);
    }
};
