#include "platform/QZDadosGT_Erro.h"

#include <atomic>

namespace {
std::atomic<const IQZTabelaMensagens*> g_tabela{nullptr};
}

CQZDadosGT_Erro& CQZDadosGT_Erro::SetAviso(QZModulo modulo, long mensagem, long campo) {
    LimpaErro();
    m_eTipo = TIPO_ERRO_AVISO;
    m_eModulo = modulo;
    m_lMensagem = mensagem;
    m_lCampo = campo;
    return *this;
}

CQZDadosGT_Erro& CQZDadosGT_Erro::DefinePersonalizado(QZModulo modulo, long campo, long mensagem,
                                                      const CStringArray& params, const CString& texto) {
    LimpaErro();
    m_eTipo = TIPO_ERRO_AVISO;
    m_eModulo = modulo;
    m_lMensagem = mensagem;
    m_lCampo = campo;
    m_aParametros = params;
    m_sTexto = texto;
    return *this;
}

CQZDadosGT_Erro& CQZDadosGT_Erro::SetErro(const CQZDadosGT_Erro& outro) {
    // Copies the verdict only: the object behind this record stays what it is.
    if (&outro != this) {
        m_eTipo = outro.m_eTipo;
        m_eModulo = outro.m_eModulo;
        m_lMensagem = outro.m_lMensagem;
        m_lCampo = outro.m_lCampo;
        m_llItem = outro.m_llItem;
        m_aParametros = outro.m_aParametros;
        m_sTexto = outro.m_sTexto;
        m_lHR = outro.m_lHR;
    }
    return *this;
}

CQZDadosGT_Erro& CQZDadosGT_Erro::SetErro(const CQZDadosGT_Erro* outro) {
    if (outro) return SetErro(*outro);
    return *this;
}

CQZDadosGT_Erro& CQZDadosGT_Erro::SetErro(long hr, int modulo, long mensagem, const char* formato, ...) {
    SetErro(hr, modulo, mensagem);
    if (formato) {
        va_list a;
        va_start(a, formato);
        m_sTexto.FormatV(formato, a);
        va_end(a);
    }
    return *this;
}

CQZDadosGT_Erro& CQZDadosGT_Erro::SetErro(long hr, int modulo, long mensagem) {
    LimpaErro();
    m_eTipo = TIPO_ERRO_ERRO;
    m_eModulo = static_cast<QZModulo>(modulo);
    m_lMensagem = mensagem;
    m_lHR = hr;
    return *this;
}

CString CQZDadosGT_Erro::GetMensagem() const {
    if (m_eTipo == TIPO_ERRO_NENHUM) return CString();
    if (!m_sTexto.IsEmpty()) return m_sTexto;
    CString texto;
    if (const IQZTabelaMensagens* t = g_tabela.load(); t && t->Renderiza(m_eModulo, m_lMensagem, m_aParametros, texto))
        return texto;
    texto.Format("Mensagem %ld do módulo %d", m_lMensagem, static_cast<int>(m_eModulo));
    for (int i = 0; i < m_aParametros.GetSize(); ++i) texto.AppendFormat("%s%s", i ? ", " : ": ", m_aParametros[i].GetString());
    return texto;
}

void CQZDadosGT_Erro::DefineTabelaMensagens(const IQZTabelaMensagens* tabela) { g_tabela.store(tabela); }
const IQZTabelaMensagens* CQZDadosGT_Erro::GetTabelaMensagens() { return g_tabela.load(); }
