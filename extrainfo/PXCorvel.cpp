#include "extrainfo/PXCorvel.h"

#include "platform/QZCodigosResultado.h"

namespace {
// Trace points of this source.
constexpr CQZPontoRastro kRastroOnInicializa{31};
constexpr CQZPontoRastro kRastroConecta{36};
constexpr CQZPontoRastro kRastroOnFinaliza{49};
constexpr CQZPontoRastro kRastroBuscaHeader{64};
constexpr CQZPontoRastro kRastroLeHeader{67};
constexpr CQZPontoRastro kRastroBuscaVinculo{82};
constexpr CQZPontoRastro kRastroGravaVinculo{99};
constexpr CQZPontoRastro kRastroGrava{112};
}  // namespace

CPXCorvel::~CPXCorvel() { Finaliza(); }

long CPXCorvel::OnInicializa() {
    long hr = CQZInicializador::OnInicializa();
    if (QZ_RASTREIA_SE_FALHA(hr, kRastroOnInicializa, "__super::OnInicializa()")) return hr;
    QZ_CHAMA_RASTREADO(hr, kRastroConecta, m_cnxIE.Inicializa(GetEmpresa(), GetUsuario(), GetNumeroSessao()));
    return hr;
}

long CPXCorvel::OnFinaliza() {
    m_ieHeader.Limpa();
    m_vinculo.Limpa();
    m_cnxIE.Finaliza();
    long hr = CQZInicializador::OnFinaliza();
    QZ_RASTREIA_SE_FALHA(hr, kRastroOnFinaliza, "__super::OnFinaliza()");
    return hr;
}

long CPXCorvel::SetFlagProcesso(IE_E_PROCESSO eProcesso) {
    m_eProcesso = eProcesso;
    m_ieHeader.Limpa();

    IE_HEADER_FILTRO_PS filtroIE;
    filtroIE.ulTipoFiltro = IE_FILTRO_HEADER_PROCESSO;
    filtroIE.ulProcesso = eProcesso;
    filtroIE.ulPosicaoApos = 0;
    filtroIE.ulQuantidadeMaxima = 0;
    CIEArrayPonteiros aPtrs;
    long hr;
    if (QZ_CHAMA_RASTREADO(hr, kRastroBuscaHeader, m_cnxIE.BuscaPtrsIEHeader(filtroIE, aPtrs))) return hr;
    if (aPtrs.GetQuantidade() > 0) QZ_CHAMA_RASTREADO(hr, kRastroLeHeader, m_cnxIE.LeIEHeader(aPtrs.pPtrs[0], m_ieHeader));
    return hr;
}

long CPXCorvel::SetDadosCorvel(unsigned long ulChaveOrigem) {
    if (m_ieHeader.GetPosicao() == 0) return 0;
    if (ulChaveOrigem > UINT32_MAX) return QZ_E_ARGUMENTO_INVALIDO;
    IE_ORIGEM_VINCULO_PS origem;
    origem.ulPosicaoHeader = m_ieHeader.GetPosicao();
    origem.ulChaveOrigem = static_cast<uint32_t>(ulChaveOrigem);
    long hr;
    QZ_CHAMA_RASTREADO(hr, kRastroBuscaVinculo, GetConexaoCorvel().BuscaVinculoByOrigem(origem, GetVinculo()));
    return hr;
}

long CPXCorvel::GravaCorvel(unsigned long ulChaveDestino) {
    if (m_ieHeader.GetPosicao() == 0 || m_ieHeader.IsInativo()) return 0;
    if (ulChaveDestino > UINT32_MAX) return QZ_E_ARGUMENTO_INVALIDO;
    m_vinculo.SetPosicaoHeader(m_ieHeader.GetPosicao());
    m_vinculo.SetChave(static_cast<uint32_t>(ulChaveDestino));
    long hr;
    QZ_CHAMA_RASTREADO(hr, kRastroGravaVinculo, GetConexaoCorvel().GravaCamposVinculo(GetVinculo()));
    return hr;
}

long CPXCorvel::CopiarCorvel(unsigned long ulChaveOrigem, unsigned long ulChaveDestino) {
    // A source that cannot be read is only traced: the target still gets
    // whatever the link holds, as the screens that copy records expect.
    (void)SetDadosCorvel(ulChaveOrigem);
    long hr;
    QZ_CHAMA_RASTREADO(hr, kRastroGrava, GravaCorvel(ulChaveDestino));
    return hr;
}

CPXCorvel& CPXCorvel::SetVinculo(const CIEVinculo& vinculo) {
    m_vinculo = vinculo;
    return *this;
}
