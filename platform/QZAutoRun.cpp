#include "platform/QZAutoRun.h"

#include "platform/QZLogRotinas.h"

long CAutoRun::GravaLog(unsigned short tipo, unsigned short nivel, const char* mensagem) {
    CQZLinhaLogRotina linha;
    linha.rotina = m_sNomeRotina;
    linha.tipo = tipo;
    linha.nivel = nivel;
    linha.mensagem = CString(mensagem);
    linha.quando = QZFormataQuando(GetRelogio().Agora());
    linha.empresa = GetEmpresa();
    linha.usuario = GetUsuario();
    linha.sessao = GetNumeroSessao();
    return QZGravaLogRotina(linha);
}
