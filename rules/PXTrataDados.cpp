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

bool CPXTrataDados::SemServicos() {
    if (EstaInicializado() && GetAcessoManutencao() && GetAcessoGestavo()) return false;
    SetAvisoPersonalizado(QZ_MODULO_PX, 0, 161L);
    return true;
}

CQZDadosGT_Erro& CPXTrataDados::VerificaPeriodoIntegracao(const REG_QZDMAHMSUTC& dmaHms, uint16_t usPonteiroFilial,
                                                          long lCodigoCampo) {
    if (SemServicos()) return *this;
    const REG_QZMA maData(dmaHms.GetData());
    long hr;

    if (usPonteiroFilial != 0) {
        CQZDadosGT_Filial dadosFilial;
        if (PX_CHAMA_RASTREADO(hr, 218, GetAcessoGestavo()->LeBufferFilial(usPonteiroFilial, &dadosFilial)))
            return PassaErroServico(GetAcessoGestavo()->GetErro());
        if (maData <= dadosFilial.GetMesBloqueioIntegracao()) return SetAviso(QZ_MODULO_PX, 184, lCodigoCampo);
    }

    CQZDadosGT_PeriodoContabil dadosPeriodo;
    if (PX_CHAMA_RASTREADO(hr, 228, GetAcessoGestavo()->LePeriodoContabil(&dadosPeriodo)))
        return PassaErroServico(GetAcessoGestavo()->GetErro());
    if (maData <= dadosPeriodo.GetMesBloqueio()) return SetAviso(QZ_MODULO_PX, 185, lCodigoCampo);

    const REG_QZDMA data = dmaHms.GetData();
    if (data < dadosPeriodo.GetDataInferiorIntegracao() || data > dadosPeriodo.GetDataSuperiorIntegracao())
        return SetAviso(QZ_MODULO_PX, 186, lCodigoCampo);
    return *this;
}

CQZDadosGT_Erro& CPXTrataDados::VerificaPeriodoMovimentacao(const REG_QZDMA& dma, long lCodigoCampo) {
    LimpaErro();
    if (SemServicos()) return *this;
    if (!dma.EhValida()) return SetAviso(QZ_MODULO_PX, 129, lCodigoCampo);

    CQZDadosGT_PeriodoContabil dadosPeriodo;
    if (GetAcessoGestavo()->LeBufferPeriodoContabil(&dadosPeriodo) != 0)
        return PassaErroServico(GetAcessoGestavo()->GetErro(), lCodigoCampo);

    // Whole months: any day of the first and of the last month is inside.
    const REG_QZMA maData(dma);
    if (maData < REG_QZMA(dadosPeriodo.GetDataInferiorMovimentacao()) ||
        maData > REG_QZMA(dadosPeriodo.GetDataSuperiorMovimentacao()))
        return SetAviso(QZ_MODULO_PX, 130, lCodigoCampo);
    return *this;
}

CQZDadosGT_Erro& CPXTrataDados::VerificaProduto(_REG_POSICAO_PRODUTOPS regPosicaoProduto) {
    if (SemServicos()) return *this;
    if (regPosicaoProduto.lPonteiroProduto == 0) return SetAviso(QZ_MODULO_PX, 40, 0);

    CQZDadosGT_ProdutoEx dadosProdutoEx;
    long hr;
    if (PX_CHAMA_RASTREADO(hr, 113, GetAcessoGestavo()->LeProdutoEx(regPosicaoProduto, &dadosProdutoEx)))
        return PassaErroServico(GetAcessoGestavo()->GetErro());

    const CQZDadosGT_Produto& dadosProduto = dadosProdutoEx.GetDadosProduto();
    if (dadosProduto.GetKit() != 0) return SetAviso(QZ_MODULO_PX, 112, 0);
    if (dadosProduto.GetPonteiroGrade1() == 0 && regPosicaoProduto.usPonteiroGrade1 != 0)
        return SetAviso(QZ_MODULO_PX, 41, 0);
    if (dadosProduto.GetPonteiroGrade2() == 0 && regPosicaoProduto.usPonteiroGrade2 != 0)
        return SetAviso(QZ_MODULO_PX, 42, 0);
    // The same grid-1 test as message 41's, so message 43 cannot be reached;
    // it keeps its place in the order of checks as the module defines it.
    if (dadosProduto.GetPonteiroGrade1() == 0 && regPosicaoProduto.usPonteiroGrade1 != 0)
        return SetAviso(QZ_MODULO_PX, 43, 0);
    return *this;
}

CQZDadosGT_Erro& CPXTrataDados::VerificaServico(_REG_POSICAO_PRODUTOPS regPosicaoServico) {
    if (SemServicos()) return *this;
    if (regPosicaoServico.lPonteiroProduto == 0) return SetAviso(QZ_MODULO_PX, 44, 0);

    CQZDadosGT_Servico dadosServico;
    long hr;
    if (PX_CHAMA_RASTREADO(hr, 145, GetAcessoGestavo()->LeServico(regPosicaoServico.lPonteiroProduto, &dadosServico)))
        return PassaErroServico(GetAcessoGestavo()->GetErro());

    // Services have no grid.
    if (regPosicaoServico.usPonteiroGrade1 != 0 || regPosicaoServico.usPonteiroGrade2 != 0 ||
        regPosicaoServico.usPonteiroGrade3 != 0)
        return SetAviso(QZ_MODULO_PX, 45, 0);
    return *this;
}

CQZDadosGT_Erro& CPXTrataDados::VerificaSituacaoManutencao(uint32_t ulPonteiro, CQZDadosPX_Situacao& dadosSituacao,
                                                           long lCodigoCampo, bool bObrigatorio,
                                                           bool bPermiteInativo) {
    LimpaErro();
    if (SemServicos()) return *this;
    if (ulPonteiro == 0) {
        if (bObrigatorio) SetAviso(QZ_MODULO_PX, 145, lCodigoCampo);
        return *this;
    }

    long hr;
    if (PX_CHAMA_RASTREADO(hr, 255,
                           GetAcessoManutencao()->LeSituacao(ulPonteiro, &dadosSituacao, PX_LER_SITUACAO_CABECALHO)))
        return PassaErroServico(GetAcessoManutencao()->GetErro(), lCodigoCampo);

    if (dadosSituacao.GetInativo() && !bPermiteInativo)
        return SetAvisoPersonalizado(QZ_MODULO_PX, lCodigoCampo, 146L, dadosSituacao.GetCodigo(),
                                     dadosSituacao.GetDescricao());
    return *this;
}

CQZDadosGT_Erro& CPXTrataDados::VerificaUsuario(uint16_t usUsuario, CQZDadosGT_Usuario* pDadosUsuario) {
    LimpaErro();
    if (SemServicos()) return *this;
    CQZDadosGT_Usuario dadosLocal;
    if (!pDadosUsuario) pDadosUsuario = &dadosLocal;

    if (GetAcessoGestavo()->LeBufferUsuario(usUsuario, pDadosUsuario) != 0)
        return PassaErroServico(GetAcessoGestavo()->GetErro());
    // The service answers an empty record for a code that no user has.
    if (*pDadosUsuario == CQZDadosGT_Usuario()) return SetAviso(QZ_MODULO_PX, 80, 0);
    return *this;
}
