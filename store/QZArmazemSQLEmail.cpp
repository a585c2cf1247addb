// The enterprise service's e-mail: the company's one account (a record of
// the store) and the sending of a finished message through the transport
// the account names.
#include <memory>

#include "mail/QZTransporteConta.h"
#include "store/QZArmazemSQL.h"

namespace {

// Number of the store's e-mail failures in its error record.
constexpr long kMensagemEmail = 7;

}  // namespace

// One account serves every module of the company.
long CQZArmazemSQL::GetEmailContaConfigurada(uint64_t* pIdConta, QZModulo) {
    if (pIdConta) *pIdConta = 0;
    return Despacha("GetEmailContaConfigurada", [&]() -> long {
        CQZDadosGT_ContaEmail conta;
        long hr = LeGenerico(1, &conta, true);
        if (hr == 0 && pIdConta && conta.EstaConfigurada()) *pIdConta = CQZDadosGT_ContaEmail::kIdConta;
        return hr;
    });
}

long CQZArmazemSQL::EnviaEmail(const CQZDadosGT_Email& email, CQZDadosGT_Erro* pDetalhes, QZModulo,
                               uint64_t idConta) {
    m_sUltimaRespostaEmail.clear();
    long hr = Despacha("EnviaEmail", [&]() -> long {
        CQZDadosGT_ContaEmail conta;
        if (long r = LeGenerico(1, &conta, true)) return r;
        if (!conta.EstaConfigurada() || (idConta != 0 && idConta != CQZDadosGT_ContaEmail::kIdConta)) {
            m_erro.SetErro(QZ_E_CONTA_EMAIL, QZ_MODULO_CONEXAO, kMensagemEmail,
                           "Nenhuma conta de e-mail configurada para a empresa.");
            return QZ_E_CONTA_EMAIL;
        }
        if (email.GetCorpo().GetTipo() != QZ_TIPO_ANEXO_CORPO) {
            m_erro.SetErro(QZ_E_ENVIO_EMAIL, QZ_MODULO_CONEXAO, kMensagemEmail,
                           "O corpo do e-mail tem um tipo de conteúdo desconhecido (%d).",
                           static_cast<int>(email.GetCorpo().GetTipo()));
            return QZ_E_ENVIO_EMAIL;
        }
        std::unique_ptr<IQZTransporteEmail> daConta;
        IQZTransporteEmail* transporte = m_pTransporteEmail;
        if (!transporte) {
            std::string erro;
            if (!QZCriaTransporteConta(conta, daConta, erro)) {
                m_erro.SetErro(QZ_E_ENVIO_EMAIL, QZ_MODULO_CONEXAO, kMensagemEmail, "Falha ao enviar e-mail: %s",
                               erro.c_str());
                return QZ_E_ENVIO_EMAIL;
            }
            transporte = daConta.get();
        }
        CQZMensagemEmail mensagem;
        mensagem.remetente = conta.GetEnderecoRemetente().str();
        mensagem.nomeRemetente = conta.GetNomeRemetente();
        mensagem.destinatario = email.GetDestinatarios().str();
        mensagem.assunto = email.GetAssunto();
        mensagem.corpoHtml = email.GetCorpo().GetConteudo();
        CQZResultadoEnvio resultado;
        long r = transporte->Envia(mensagem, resultado);
        m_sUltimaRespostaEmail = resultado.resposta;
        // Every message a transport saw is logged, sent or refused. A log
        // that cannot be written fails the sending: the caller then sends it
        // again rather than losing the trace of a message.
        CQZDadosGT_EnvioEmail registro;
        registro.SetDmaHmsEnvio(m_pRelogio->Agora())
            .SetPonteiroPlano(email.GetOrigem().ulPonteiroPlano)
            .SetIndiceAlerta(email.GetOrigem().ulIndiceAlerta)
            .SetPonteiroTecnico(email.GetOrigem().ulPonteiroTecnico)
            .SetEndereco(email.GetDestinatarios())
            .SetAssunto(email.GetAssunto())
            .SetRespostaTransporte(CString(resultado.resposta))
            .SetSituacao(r == 0 ? E_GT_SITUACAO_ENVIO_EMAIL_ENVIADO : E_GT_SITUACAO_ENVIO_EMAIL_FALHOU)
            .SetErro(CString(resultado.erro));
        const long hrLog =
            m_banco.EmTransacao(qzsql::EModoTransacao::ESCRITA, [&] { return InsereLinha(registro, true); });
        if (r != 0)
            m_erro.SetErro(r, QZ_MODULO_CONEXAO, kMensagemEmail, "Falha ao enviar e-mail para %s: %s",
                           mensagem.destinatario.c_str(), resultado.erro.c_str());
        return r != 0 ? r : hrLog;
    });
    if (hr != 0 && pDetalhes) pDetalhes->SetErro(m_erro);
    return hr;
}

long CQZArmazemSQL::AtualizaDataHoraEnvioAlerta(uint32_t ponteiroPlano, uint32_t indiceAlerta) {
    return EmTransacao("AtualizaDataHoraEnvioAlerta", [&]() -> long {
        GarantaTabela<CQZDadosPX_Plano>();
        const qzsql::Tabela& t = qzsql::EsquemaDe<CQZDadosPX_Plano>();
        const qzsql::Tabela* alertas = nullptr;
        for (const auto& f : t.filhas)
            if (f.nome == t.nome + "__Alerta") alertas = &f;
        // Only the alert's row changes: the plan's lists and save stamp stay.
        qzsql::CQZComando c(m_banco, "UPDATE \"" + alertas->nome +
                                         "\" SET \"DmaHmsUltimoEnvio\" = ? WHERE pai = ? AND ordem = ?");
        c.Liga(1, static_cast<int64_t>(m_pRelogio->Agora().ullValor));
        c.Liga(2, ponteiroPlano).Liga(3, indiceAlerta);
        c.Passo();
        if (c.Alteradas() != 1)
            throw qzsql::Falha{QZ_E_REGISTRO_NAO_ENCONTRADO, 2,
                               "O plano " + std::to_string(ponteiroPlano) + " não tem o alerta " +
                                   std::to_string(indiceAlerta) + "."};
        Alterou(t, ponteiroPlano);
        return 0;
    });
}
