#include "extrainfo/PXCorvel.h"

#include "platform/QZRastro.h"

namespace {
// Record keys of the service are 32-bit; a wider key would name another record.
constexpr long kE_INVALIDARG = static_cast<long>(static_cast<int32_t>(0x80070057u));
}  // namespace

// Runs a call of the extra-information service, keeping its status in `hr`;
// a negative status (the service's failures) is traced with the call's text.
#define PXCORVEL_CHAMA(hr, linha, chamada) \
    (((hr) = (chamada)) < 0 ? (QZ_RASTREIA((hr), #chamada, (linha), this), true) : false)

CPXCorvel::~CPXCorvel() { Finaliza(); }

long CPXCorvel::OnInicializa() {
    long hr = CQZInicializador::OnInicializa();
    if (hr < 0) {
        QZ_RASTREIA(hr, "__super::OnInicializa()", 31, this);
        return hr;
    }
    PXCORVEL_CHAMA(hr, 36, m_cnxIE.Inicializa(GetEmpresa(), GetUsuario(), GetNumeroSessao()));
    return hr;
}

long CPXCorvel::OnFinaliza() {
    m_ieHeader.Limpa();
    m_vinculo.Limpa();
    m_cnxIE.Finaliza();
    long hr = CQZInicializador::OnFinaliza();
    if (hr < 0) QZ_RASTREIA(hr, "__super::OnFinaliza()", 49, this);
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
    if (PXCORVEL_CHAMA(hr, 64, m_cnxIE.BuscaPtrsIEHeader(filtroIE, aPtrs))) return hr;
    if (aPtrs.GetQuantidade() > 0) PXCORVEL_CHAMA(hr, 67, m_cnxIE.LeIEHeader(aPtrs.pPtrs[0], m_ieHeader));
    return hr;
}

long CPXCorvel::SetDadosCorvel(unsigned long ulChaveOrigem) {
    if (m_ieHeader.GetPosicao() == 0) return 0;
    if (ulChaveOrigem > UINT32_MAX) return kE_INVALIDARG;
    IE_ORIGEM_VINCULO_PS origem;
    origem.ulPosicaoHeader = m_ieHeader.GetPosicao();
    origem.ulChaveOrigem = static_cast<uint32_t>(ulChaveOrigem);
    long hr;
    PXCORVEL_CHAMA(hr, 82, GetConexaoCorvel().BuscaVinculoByOrigem(origem, GetVinculo()));
    return hr;
}

long CPXCorvel::GravaCorvel(unsigned long ulChaveDestino) {
    if (m_ieHeader.GetPosicao() == 0 || m_ieHeader.IsInativo()) return 0;
    if (ulChaveDestino > UINT32_MAX) return kE_INVALIDARG;
    m_vinculo.SetPosicaoHeader(m_ieHeader.GetPosicao());
    m_vinculo.SetChave(static_cast<uint32_t>(ulChaveDestino));
    long hr;
    PXCORVEL_CHAMA(hr, 99, GetConexaoCorvel().GravaCamposVinculo(GetVinculo()));
    return hr;
}

long CPXCorvel::CopiarCorvel(unsigned long ulChaveOrigem, unsigned long ulChaveDestino) {
    // A source that cannot be read is only traced: the target still gets
    // whatever the link holds, as the screens that copy records expect.
    (void)SetDadosCorvel(ulChaveOrigem);
    long hr;
    PXCORVEL_CHAMA(hr, 112, GravaCorvel(ulChaveDestino));
    return hr;
}

CPXCorvel& CPXCorvel::SetVinculo(const CIEVinculo& vinculo) {
    m_vinculo = vinculo;
    return *this;
}
