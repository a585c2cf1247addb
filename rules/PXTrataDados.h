// Base of every record handler: the save/delete protocol, the default
// refusals, the stale-record check and the verifications several handlers
// share. A handler is its own error record.
#pragma once

#include "platform/QZBaseParaDados.h"
#include "platform/QZMensagem.h"
#include "rules/PXBaseParaRotinas.h"

class CPXTrataDados : public CPXBaseParaRotinas {
public:
    explicit CPXTrataDados(bool bInterfaceUsuario = false) : m_bInterfaceUsuario(bInterfaceUsuario) {}
    CPXTrataDados(const CPXTrataDados&) = default;
    CPXTrataDados& operator=(const CPXTrataDados&) = default;
    ~CPXTrataDados() override;

    // 1 when the record may be saved (deleted), 0 when not, with the reason
    // in this object's error record.
    virtual int TrataGravacao(TQZBaseParaDados* pDados, IQZTrataInconsistencia* pInconsistencia);
    virtual int TrataExclusao(TQZBaseParaDados* pDados, IQZTrataInconsistencia* pInconsistencia);

    // Verifications shared by several handlers. Each leaves its verdict in
    // this object's error record and returns it. VerificaPeriodoIntegracao,
    // VerificaProduto and VerificaServico do not clear the record first: when
    // they pass, an earlier verdict stays. On a handler that is not
    // initialised every one answers message 161 and reads nothing.

    // Is the date open for accounting integration (at the branch, when one
    // is given, and in the accounting period)?
    CQZDadosGT_Erro& VerificaPeriodoIntegracao(const REG_QZDMAHMSUTC& dmaHms, uint16_t usPonteiroFilial,
                                               long lCodigoCampo);
    // Is the date valid and its month inside the movement period?
    CQZDadosGT_Erro& VerificaPeriodoMovimentacao(const REG_QZDMA& dma, long lCodigoCampo);
    // Does the key name a usable product (not a kit, grids it has)?
    CQZDadosGT_Erro& VerificaProduto(_REG_POSICAO_PRODUTOPS regPosicaoProduto);
    // Does the key name a service, without grid positions?
    CQZDadosGT_Erro& VerificaServico(_REG_POSICAO_PRODUTOPS regPosicaoServico);
    // Reads the maintenance situation into dadosSituacao; refuses a missing
    // one when required and an inactive one unless allowed.
    CQZDadosGT_Erro& VerificaSituacaoManutencao(uint32_t ulPonteiro, CQZDadosPX_Situacao& dadosSituacao,
                                                long lCodigoCampo, bool bObrigatorio, bool bPermiteInativo);
    // Reads the user into *pDadosUsuario (may be null); refuses a code no
    // user has.
    CQZDadosGT_Erro& VerificaUsuario(uint16_t usUsuario, CQZDadosGT_Usuario* pDadosUsuario);

protected:
    long OnInicializa() override;
    long OnFinaliza() override;

    virtual CQZDadosGT_Erro& OnTrataGravacao(TQZBaseParaDados* pDados, IQZTrataInconsistencia* pInconsistencia);
    virtual CQZDadosGT_Erro& OnTrataExclusao(TQZBaseParaDados* pDados, IQZTrataInconsistencia* pInconsistencia);

    bool InterfaceUsuarioEstaHabilitada() const { return m_bInterfaceUsuario; }

    // Message 3 on the given field when the two stamps differ in their date
    // and time (the low 38 bits).
    CQZDadosGT_Erro& ValidaRegistroAtualizado(const REG_QZDMAHMSUTC& dmaHmsRegistro,
                                              const REG_QZDMAHMSUTC& dmaHmsGravado, const long& lCodigoCampo);

    // Runs a public operation of a handler so that no exception crosses the
    // library's interface: one escaping `operacao` (an index outside a list,
    // memory) becomes this object's error record.
    template <class F>
    CQZDadosGT_Erro& Protegido(F&& operacao) noexcept {
        try {
            return operacao();
        } catch (...) {
            return ErroDeExcecao();
        }
    }

private:
    CQZDadosGT_Erro& ErroDeExcecao() noexcept;

    // Message 161 when the handler has no data services to read through.
    bool SemServicos();

    bool m_bInterfaceUsuario = false;
};

