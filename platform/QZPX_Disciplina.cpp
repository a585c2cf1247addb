#include "platform/QZPX_Disciplina.h"

#include "platform/QZAcesso.h"

long CQZPX_DisciplinaArvore::DisciplinaAtende(uint32_t ulDisciplinaPlano, uint32_t ulDisciplinaTecnico,
                                               bool& atende) {
    atende = false;
    if (ulDisciplinaPlano == 0 || ulDisciplinaTecnico == 0) return 0;
    if (ulDisciplinaPlano == ulDisciplinaTecnico) {
        atende = true;
        return 0;
    }
    uint32_t ulAtual = ulDisciplinaPlano;
    for (int nivel = 0; nivel < kNiveisMaximos; ++nivel) {
        CQZDadosPX_Disciplina disciplina;
        // Positions are unsigned; the operation's signed key carries their bits.
        if (long hr = m_servico.LeDisciplina(static_cast<int32_t>(ulAtual), &disciplina, 0)) return hr;
        const uint32_t ulPai = disciplina.GetPonteiroPai();
        if (ulPai == 0) return 0;
        if (ulPai == ulDisciplinaTecnico) {
            atende = true;
            return 0;
        }
        ulAtual = ulPai;
    }
    return 0;
}
