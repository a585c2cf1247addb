#include "rules/PXTrataDados.h"

#include <new>
#include <stdexcept>

#include "platform/QZCodigosResultado.h"

namespace {
// Trace points of this source.
constexpr CQZPontoRastro kRastroOnInicializa{26};
constexpr CQZPontoRastro kRastroOnFinaliza{36};
constexpr CQZPontoRastro kRastroLeProdutoEx{113};
constexpr CQZPontoRastro kRastroLeServico{145};
constexpr CQZPontoRastro kRastroLeBufferFilial{218};
constexpr CQZPontoRastro kRastroLePeriodoContabil{228};
constexpr CQZPontoRastro kRastroLeSituacao{255};
}  // namespace

CPXTrataDados::~CPXTrataDados() { Finaliza(); }

long CPXTrataDados::OnInicializa() {
    long hr = CPXBaseParaRotinas::OnInicializa();
    QZ_RASTREIA_SE_FALHA(hr, kRastroOnInicializa, "__super::OnInicializa()");
    return hr;
}

long CPXTrataDados::OnFinaliza() {
    long hr = CPXBaseParaRotinas::OnFinaliza();
    QZ_RASTREIA_SE_FALHA(hr, kRastroOnFinaliza, "__super::OnFinaliza()");
    return hr;
}

int CPXTrataDados::TrataGravacao(TQZBaseParaDados* pDados, IQZTrataInconsistencia* pInconsistencia) {
    LimpaErro();
    if (EstaInicializado()) {
        // The rules read one snapshot of the store.
        CQZLeituraConsistente leitura(GetConexao());
        Protegido([&]() -> CQZDadosGT_Erro& { return OnTrataGravacao(pDados, pInconsistencia); });
    } else
        SetAvisoPersonalizado(PX_MSG(161), 0);
    return EhErroNenhum() ? 1 : 0;
}

int CPXTrataDados::TrataExclusao(TQZBaseParaDados* pDados, IQZTrataInconsistencia* pInconsistencia) {
    LimpaErro();
    if (EstaInicializado()) {
        CQZLeituraConsistente leitura(GetConexao());
        Protegido([&]() -> CQZDadosGT_Erro& { return OnTrataExclusao(pDados, pInconsistencia); });
    } else
        SetAvisoPersonalizado(PX_MSG(161), 0);
    return EhErroNenhum() ? 1 : 0;
}

CQZDadosGT_Erro& CPXTrataDados::OnTrataGravacao(TQZBaseParaDados*, IQZTrataInconsistencia*) {
    return SetAviso(PX_MSG(162), 0);
}

CQZDadosGT_Erro& CPXTrataDados::OnTrataExclusao(TQZBaseParaDados*, IQZTrataInconsistencia*) {
    return SetAviso(PX_MSG(162), 0);
}

CQZDadosGT_Erro& CPXTrataDados::ErroDeExcecao() noexcept {
    try {
        throw;
    } catch (const std::out_of_range& e) {
        return SetErro(QZ_E_ARGUMENTO_INVALIDO, QZ_MODULO_PX, 0, "Item fora da lista: %s", e.what());
    } catch (const std::bad_alloc&) {
        return SetErro(QZ_E_SEM_MEMORIA, QZ_MODULO_PX, 0, "Memória insuficiente.");
    } catch (const std::exception& e) {
        return SetErro(QZ_E_INESPERADO, QZ_MODULO_PX, 0, "Falha inesperada: %s", e.what());
    } catch (...) {
        return SetErro(QZ_E_INESPERADO, QZ_MODULO_PX, 0, "Falha inesperada.");
    }
}

CQZDadosGT_Erro& CPXTrataDados::ValidaRegistroAtualizado(const REG_QZDMAHMSUTC& dmaHmsRegistro,
                                                         const REG_QZDMAHMSUTC& dmaHmsGravado,
                                                         const long& lCodigoCampo) {
    LimpaErro();
    if (dmaHmsRegistro.GetDataHora() != dmaHmsGravado.GetDataHora()) SetAviso(PX_MSG(3), lCodigoCampo);
    return *this;
}

bool CPXTrataDados::SemServicos() {
    if (EstaInicializado() && GetAcessoManutencao() && GetAcessoGestavo()) return false;
    SetAvisoPersonalizado(PX_MSG(161), 0);
    return true;
}

CQZDadosGT_Erro& CPXTrataDados::VerificaPeriodoIntegracao(const REG_QZDMAHMSUTC& dmaHms, uint16_t usPonteiroFilial,
                                                          long lCodigoCampo) {
    if (SemServicos()) return *this;
    const REG_QZMA maData(dmaHms.GetData());
    long hr;

    if (usPonteiroFilial != 0) {
        CQZDadosGT_Filial dadosFilial;
        if (QZ_CHAMA_RASTREADO(hr, kRastroLeBufferFilial, GetAcessoGestavo()->LeBufferFilial(usPonteiroFilial, &dadosFilial)))
            return PassaErroServico(GetAcessoGestavo()->GetErro());
        if (maData <= dadosFilial.GetMesBloqueioIntegracao()) return SetAviso(PX_MSG(184), lCodigoCampo);
    }

    CQZDadosGT_PeriodoContabil dadosPeriodo;
    if (QZ_CHAMA_RASTREADO(hr, kRastroLePeriodoContabil, GetAcessoGestavo()->LePeriodoContabil(&dadosPeriodo)))
        return PassaErroServico(GetAcessoGestavo()->GetErro());
    if (maData <= dadosPeriodo.GetMesBloqueio()) return SetAviso(PX_MSG(185), lCodigoCampo);

    const REG_QZDMA data = dmaHms.GetData();
    if (data < dadosPeriodo.GetDataInferiorIntegracao() || data > dadosPeriodo.GetDataSuperiorIntegracao())
        return SetAviso(PX_MSG(186), lCodigoCampo);
    return *this;
}

CQZDadosGT_Erro& CPXTrataDados::VerificaPeriodoMovimentacao(const REG_QZDMA& dma, long lCodigoCampo) {
    LimpaErro();
    if (SemServicos()) return *this;
    if (!dma.EhValida()) return SetAviso(PX_MSG(129), lCodigoCampo);

    CQZDadosGT_PeriodoContabil dadosPeriodo;
    if (GetAcessoGestavo()->LeBufferPeriodoContabil(&dadosPeriodo) != 0)
        return PassaErroServico(GetAcessoGestavo()->GetErro(), lCodigoCampo);

    // Whole months: any day of the first and of the last month is inside.
    const REG_QZMA maData(dma);
    if (maData < REG_QZMA(dadosPeriodo.GetDataInferiorMovimentacao()) ||
        maData > REG_QZMA(dadosPeriodo.GetDataSuperiorMovimentacao()))
        return SetAviso(PX_MSG(130), lCodigoCampo);
    return *this;
}

CQZDadosGT_Erro& CPXTrataDados::VerificaProduto(_REG_POSICAO_PRODUTOPS regPosicaoProduto) {
    if (SemServicos()) return *this;
    if (regPosicaoProduto.lPonteiroProduto == 0) return SetAviso(PX_MSG(40), 0);

    CQZDadosGT_ProdutoEx dadosProdutoEx;
    long hr;
    if (QZ_CHAMA_RASTREADO(hr, kRastroLeProdutoEx, GetAcessoGestavo()->LeProdutoEx(regPosicaoProduto, &dadosProdutoEx)))
        return PassaErroServico(GetAcessoGestavo()->GetErro());

    const CQZDadosGT_Produto& dadosProduto = dadosProdutoEx.GetDadosProduto();
    if (dadosProduto.GetKit() != 0) return SetAviso(PX_MSG(112), 0);
    if (dadosProduto.GetPonteiroGrade1() == 0 && regPosicaoProduto.usPonteiroGrade1 != 0)
        return SetAviso(PX_MSG(41), 0);
    if (dadosProduto.GetPonteiroGrade2() == 0 && regPosicaoProduto.usPonteiroGrade2 != 0)
        return SetAviso(PX_MSG(42), 0);
    // The same grid-1 test as message 41's, so message 43 cannot be reached;
    // it keeps its place in the order of checks as the module defines it.
    if (dadosProduto.GetPonteiroGrade1() == 0 && regPosicaoProduto.usPonteiroGrade1 != 0)
        return SetAviso(PX_MSG(43), 0);
    return *this;
}

CQZDadosGT_Erro& CPXTrataDados::VerificaServico(_REG_POSICAO_PRODUTOPS regPosicaoServico) {
    if (SemServicos()) return *this;
    if (regPosicaoServico.lPonteiroProduto == 0) return SetAviso(PX_MSG(44), 0);

    CQZDadosGT_Servico dadosServico;
    long hr;
    if (QZ_CHAMA_RASTREADO(hr, kRastroLeServico, GetAcessoGestavo()->LeServico(regPosicaoServico.lPonteiroProduto, &dadosServico)))
        return PassaErroServico(GetAcessoGestavo()->GetErro());

    // Services have no grid.
    if (regPosicaoServico.usPonteiroGrade1 != 0 || regPosicaoServico.usPonteiroGrade2 != 0 ||
        regPosicaoServico.usPonteiroGrade3 != 0)
        return SetAviso(PX_MSG(45), 0);
    return *this;
}

CQZDadosGT_Erro& CPXTrataDados::VerificaSituacaoManutencao(uint32_t ulPonteiro, CQZDadosPX_Situacao& dadosSituacao,
                                                           long lCodigoCampo, bool bObrigatorio,
                                                           bool bPermiteInativo) {
    LimpaErro();
    if (SemServicos()) return *this;
    if (ulPonteiro == 0) {
        if (bObrigatorio) SetAviso(PX_MSG(145), lCodigoCampo);
        return *this;
    }

    long hr;
    if (QZ_CHAMA_RASTREADO(hr, kRastroLeSituacao,
                           GetAcessoManutencao()->LeSituacao(ulPonteiro, &dadosSituacao, PX_LER_SITUACAO_CABECALHO)))
        return PassaErroServico(GetAcessoManutencao()->GetErro(), lCodigoCampo);

    if (dadosSituacao.GetInativo() && !bPermiteInativo)
        return SetAvisoPersonalizado(PX_MSG(146), lCodigoCampo, dadosSituacao.GetCodigo(),
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
    if (*pDadosUsuario == CQZDadosGT_Usuario()) return SetAviso(PX_MSG(80), 0);
    return *this;
}
