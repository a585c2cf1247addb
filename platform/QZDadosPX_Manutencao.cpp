#include "platform/QZDadosPX_Manutencao.h"

namespace QZDadosPX {
namespace Manutencao {

CString GetNomeSituacao(uint8_t situacao) {
    switch (situacao) {
        case SITUACAO_ABERTA: return "Aberta";
        case SITUACAO_INICIADA: return "Iniciada";
        case SITUACAO_CONCLUIDA: return "Concluída";
        case SITUACAO_CANCELADA: return "Cancelada";
        case SITUACAO_EM_ANDAMENTO: return "Em andamento";
        case SITUACAO_REPROGRAMADA: return "Reprogramada";
        default: return CString();
    }
}

CString GetNomeTipo(uint8_t tipo) {
    switch (tipo) {
        case TIPO_PREVENTIVA: return "Preventiva";
        case TIPO_CORRETIVA: return "Corretiva";
        case TIPO_PREDITIVA: return "Preditiva";
        case TIPO_DETECTIVA: return "Detectiva";
        case TIPO_MELHORIA: return "Melhoria";
        default: return CString();
    }
}

}  // namespace Manutencao
}  // namespace QZDadosPX
