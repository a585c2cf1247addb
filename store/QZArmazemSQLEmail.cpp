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
    const long hr = Despacha("EnviaEmail", [&] { return EnviaLote(&email, 1, nullptr, idConta); });
    if (hr != 0 && pDetalhes) pDetalhes->SetErro(m_erro);
    return hr;
}

long CQZArmazemSQL::EnviaEmails(const CQZVector<CQZDadosGT_Email>& emails, int64_t* pTratadas,
                                CQZDadosGT_Erro* pDetalhes, QZModulo, uint64_t idConta) {
    m_sUltimaRespostaEmail.clear();
    if (pTratadas) *pTratadas = 0;
    const long hr = Despacha("EnviaEmails", [&] { return EnviaLote(emails.data(), emails.size(), pTratadas, idConta); });
    if (hr != 0 && pDetalhes) pDetalhes->SetErro(m_erro);
    return hr;
}

// Every message a transport sees is in the delivery log first: its line is
// committed, pending, before the hand-over, and settled (sent or refused)
// after it, one transaction for the whole batch each time. A crash between
// the two leaves the batch's lines pending, never missing; holding no lock
// while the transport works lets other writers go on meanwhile. A log that
// cannot be written fails the sending: the caller then sends again rather
// than lose the trace of a message.
long CQZArmazemSQL::EnviaLote(const CQZDadosGT_Email* emails, size_t quantidade, int64_t* pTratadas,
                              uint64_t idConta) {
    CQZDadosGT_ContaEmail conta;
    if (long r = LeGenerico(1, &conta, true)) return r;
    if (!conta.EstaConfigurada() || (idConta != 0 && idConta != CQZDadosGT_ContaEmail::kIdConta)) {
        m_erro.SetErro(QZ_E_CONTA_EMAIL, QZ_MODULO_CONEXAO, kMensagemEmail,
                       "Nenhuma conta de e-mail configurada para a empresa.");
        return QZ_E_CONTA_EMAIL;
    }
    for (size_t i = 0; i < quantidade; ++i)
        if (emails[i].GetCorpo().GetTipo() != QZ_TIPO_ANEXO_CORPO) {
            m_erro.SetErro(QZ_E_ENVIO_EMAIL, QZ_MODULO_CONEXAO, kMensagemEmail,
                           "O corpo do e-mail tem um tipo de conteúdo desconhecido (%d).",
                           static_cast<int>(emails[i].GetCorpo().GetTipo()));
            return QZ_E_ENVIO_EMAIL;
        }
    if (quantidade == 0) return 0;
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

    std::vector<CQZDadosGT_EnvioEmail> linhas(quantidade);
    if (long hr = m_banco.EmTransacao(qzsql::EModoTransacao::ESCRITA, [&]() -> long {
            for (size_t i = 0; i < quantidade; ++i) {
                const CQZDadosGT_Email& email = emails[i];
                linhas[i]
                    .SetDmaHmsEnvio(m_pRelogio->Agora())
                    .SetPonteiroPlano(email.GetOrigem().ulPonteiroPlano)
                    .SetIndiceAlerta(email.GetOrigem().ulIndiceAlerta)
                    .SetPonteiroTecnico(email.GetOrigem().ulPonteiroTecnico)
                    .SetEndereco(email.GetDestinatarios())
                    .SetAssunto(email.GetAssunto())
                    .SetSituacao(E_GT_SITUACAO_ENVIO_EMAIL_PENDENTE);
                if (long r = InsereLinha(linhas[i], true)) return r;
            }
            return 0;
        }))
        return hr;

    CQZMensagemEmail mensagem;
    mensagem.remetente = conta.GetEnderecoRemetente().str();
    mensagem.nomeRemetente = conta.GetNomeRemetente();
    size_t tratadas = 0;
    long r = 0;
    while (tratadas < quantidade && r == 0) {
        // In a batch (the caller counts what was handed over) each message is
        // an operation of its own to the hook: a stop of the service falls
        // between two messages, as it did when each was sent alone.
        if (pTratadas && m_pGancho)
            if ((r = m_pGancho->AntesDaOperacao("EnviaEmail", m_erro)) != 0) break;
        const CQZDadosGT_Email& email = emails[tratadas];
        mensagem.destinatario = email.GetDestinatarios().str();
        mensagem.assunto = email.GetAssunto();
        mensagem.corpoHtml = email.GetCorpo().GetConteudo();
        CQZResultadoEnvio resultado;
        r = transporte->Envia(mensagem, resultado);
        m_sUltimaRespostaEmail = resultado.resposta;
        linhas[tratadas]
            .SetDmaHmsEnvio(m_pRelogio->Agora())
            .SetRespostaTransporte(CString(resultado.resposta))
            .SetSituacao(r == 0 ? E_GT_SITUACAO_ENVIO_EMAIL_ENVIADO : E_GT_SITUACAO_ENVIO_EMAIL_FALHOU)
            .SetErro(CString(resultado.erro));
        ++tratadas;
        if (r != 0)
            m_erro.SetErro(r, QZ_MODULO_CONEXAO, kMensagemEmail, "Falha ao enviar e-mail para %s: %s",
                           mensagem.destinatario.c_str(), resultado.erro.c_str());
    }
    if (pTratadas) *pTratadas = static_cast<int64_t>(tratadas);

    // The lines of the messages handed over are settled; those never handed
    // over (after a refusal) go: they were not sent.
    const qzsql::Tabela& t = qzsql::EsquemaDe<CQZDadosGT_EnvioEmail>();
    const CQZDadosGT_Erro erroEnvio = m_erro;
    long hrLog = 0;
    try {
        hrLog = m_banco.EmTransacao(qzsql::EModoTransacao::ESCRITA, [&]() -> long {
            for (size_t i = 0; i < quantidade; ++i) {
                const int64_t chave = ChaveDe(linhas[i]);
                // Inserted above by this connection: the stamp is the one stored.
                std::optional<int64_t> carimbo;
                if (t.carimbo >= 0) carimbo = static_cast<int64_t>(QZCarimboDe(linhas[i]).ullValor);
                if (i < tratadas) {
                    std::vector<CQZValor> valores;
                    qzsql::VisitanteExtrai x{valores};
                    linhas[i].VisitaCampos(x);
                    AtualizaLinha(t, chave, valores, carimbo);
                } else {
                    RemoveLinha(t, chave, carimbo);
                }
                Alterou(t, chave);
            }
            return 0;
        });
    } catch (const qzsql::Falha& f) {
        if (r == 0) throw;
        hrLog = f.hr;
    }
    // The refusal is what the caller is told, over a log failure after it.
    if (r != 0) m_erro = erroEnvio;
    return r != 0 ? r : hrLog;
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

long CQZArmazemSQL::IniciaEscrita(bool& iniciou) {
    iniciou = false;
    return Despacha("IniciaEscrita", [&]() -> long {
        iniciou = m_banco.IniciaTransacao(qzsql::EModoTransacao::ESCRITA);
        return 0;
    });
}

long CQZArmazemSQL::EncerraEscrita(bool confirma) {
    if (!confirma) {
        m_banco.DesfazTransacao();
        return 0;
    }
    const long hr = Despacha("ConfirmaEscrita", [&]() -> long {
        m_banco.ConfirmaTransacao();
        return 0;
    });
    // A commit refused before it ran leaves nothing half done either.
    if (hr != 0) m_banco.DesfazTransacao();
    return hr;
}
