#include "rules/PXTrataDados.h"

CPXTrataDados::~CPXTrataDados() { Finaliza(); }

long CPXTrataDados::OnInicializa() {
    long hr = CPXBaseParaRotinas::OnInicializa();
    if (hr != 0) QZ_RASTREIA(hr, "__super::OnInicializa()", 26, this);
    return hr;
}

long CPXTrataDados::OnFinaliza() {
    long hr = CPXBaseParaRotinas::OnFinaliza();
    if (hr != 0) QZ_RASTREIA(hr, "__super::OnFinaliza()", 36, this);
    return hr;
}

int CPXTrataDados::TrataGravacao(TQZBaseParaDados* pDados, IQZTrataInconsistencia* pInconsistencia) {
    LimpaErro();
    if (EstaInicializado())
        OnTrataGravacao(pDados, pInconsistencia);
    else
        SetAvisoPersonalizado(QZ_MODULO_PX, 0, 161L);
    return EhErroNenhum() ? 1 : 0;
}

int CPXTrataDados::TrataExclusao(TQZBaseParaDados* pDados, IQZTrataInconsistencia* pInconsistencia) {
    LimpaErro();
    if (EstaInicializado())
        OnTrataExclusao(pDados, pInconsistencia);
    else
        SetAvisoPersonalizado(QZ_MODULO_PX, 0, 161L);
    return EhErroNenhum() ? 1 : 0;
}

CQZDadosGT_Erro& CPXTrataDados::OnTrataGravacao(TQZBaseParaDados*, IQZTrataInconsistencia*) {
    return SetAviso(QZ_MODULO_PX, 162, 0);
}

CQZDadosGT_Erro& CPXTrataDados::OnTrataExclusao(TQZBaseParaDados*, IQZTrataInconsistencia*) {
    return SetAviso(QZ_MODULO_PX, 162, 0);
}

CQZDadosGT_Erro& CPXTrataDados::ValidaRegistroAtualizado(const REG_QZDMAHMSUTC& dmaHmsRegistro,
                                                         const REG_QZDMAHMSUTC& dmaHmsGravado,
                                                         const long& lCodigoCampo) {
    LimpaErro();
    if (!PXCarimbosIguais(dmaHmsRegistro, dmaHmsGravado)) SetAviso(QZ_MODULO_PX, 3, lCodigoCampo);
    return *this;
}

CQZDadosGT_Erro& CPXTrataDados::PassaErroServico(const CQZDadosGT_Erro& erroServico) { return SetErro(erroServico); }

CQZDadosGT_Erro& CPXTrataDados::PassaErroServico(const CQZDadosGT_Erro& erroServico, long lCodigoCampo) {
    return SetErro(erroServico).SetCodigoCampo(lCodigoCampo);
}
