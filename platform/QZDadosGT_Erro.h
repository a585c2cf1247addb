// The error record: one verdict (type, module, message, field, item,
// parameters). Every routine object is its own error record.
#pragma once

#include <cstdint>
#include <type_traits>

#include "platform/CString.h"
#include "platform/QZMensagem.h"
#include "platform/QZModulo.h"


// Renders numbered messages; a host loads one (the module's message table).
class IQZTabelaMensagens {
public:
    virtual ~IQZTabelaMensagens() = default;
    // Text of the message with its parameters filled in; false when unknown.
    virtual bool Renderiza(QZModulo modulo, long mensagem, const CStringArray& parametros, CString& texto) const = 0;
};

class CQZDadosGT_Erro {
public:
    enum TipoErro { TIPO_ERRO_NENHUM = 0, TIPO_ERRO_AVISO = 1, TIPO_ERRO_ERRO = 2 };

    CQZDadosGT_Erro() = default;
    virtual ~CQZDadosGT_Erro() = default;
    CQZDadosGT_Erro(const CQZDadosGT_Erro&) = default;
    CQZDadosGT_Erro& operator=(const CQZDadosGT_Erro&) = default;

    virtual void OnErroRPC() {}

    // Inline: every service call and every check starts by clearing.
    CQZDadosGT_Erro& LimpaErro() {
        m_eTipo = TIPO_ERRO_NENHUM;
        m_eModulo = QZ_MODULO_NENHUM;
        m_lMensagem = 0;
        m_lCampo = 0;
        m_llItem = 0;
        m_aParametros.RemoveAll();
        m_sTexto.Empty();
        m_lHR = 0;
        return *this;
    }
    CQZDadosGT_Erro& SetAviso(QZModulo modulo, long mensagem, long campo);
    // A message of the table that takes no parameter (checked when built).
    CQZDadosGT_Erro& SetAviso(CQZMensagem<0> mensagem, long campo) {
        return SetAviso(mensagem.modulo, mensagem.numero, campo);
    }
    // A message of the table with exactly the parameters its text takes.
    template <class... A>
    CQZDadosGT_Erro& SetAvisoPersonalizado(CQZMensagem<sizeof...(A)> mensagem, long campo, const A&... parametros) {
        return SetAvisoPersonalizado(mensagem.modulo, campo, mensagem.numero, parametros...);
    }

    // Numbered message whose parameters fill the text (any printable values).
    template <class... A>
    CQZDadosGT_Erro& SetAvisoPersonalizado(QZModulo modulo, long campo, long mensagem, const A&... parametros) {
        CStringArray lista;
        (lista.Add(ParaTexto(parametros)), ...);
        return DefinePersonalizado(modulo, campo, mensagem, lista, CString());
    }
    // Message formatted here, printf style; CString arguments are accepted.
    template <class... A>
    CQZDadosGT_Erro& SetAvisoPersonalizado(QZModulo modulo, long campo, const char* formato, const A&... args) {
        return DefinePersonalizado(modulo, campo, 0, CStringArray(),
                                   CString::Formatado(formato, ParaPrintf(args)...));
    }

    virtual CQZDadosGT_Erro& SetErro(const CQZDadosGT_Erro& outro);
    virtual CQZDadosGT_Erro& SetErro(const CQZDadosGT_Erro* outro);
    // A failure of a service: result code, module and message, printf text.
    virtual CQZDadosGT_Erro& SetErro(long hr, int modulo, long mensagem, const char* formato, ...)
        __attribute__((format(printf, 5, 6)));
    virtual CQZDadosGT_Erro& SetErro(long hr, int modulo, long mensagem);

    CQZDadosGT_Erro& SetCodigoCampo(long campo) { m_lCampo = campo; return *this; }
    CQZDadosGT_Erro& SetItem(int64_t item) { m_llItem = item; return *this; }

    virtual const CQZDadosGT_Erro& GetErro() const { return *this; }
    virtual CQZDadosGT_Erro& GetErro() { return *this; }

    int EhErroNenhum() const { return m_eTipo == TIPO_ERRO_NENHUM ? 1 : 0; }
    TipoErro GetTipoErro() const { return m_eTipo; }
    QZModulo GetModulo() const { return m_eModulo; }
    long GetMensagemNumero() const { return m_lMensagem; }
    long GetCodigoCampo() const { return m_lCampo; }
    int64_t GetItem() const { return m_llItem; }
    const CStringArray& GetParametros() const { return m_aParametros; }
    // The result code of the failure that set this verdict (0 for warnings).
    long GetUltimoHR() const { return m_lHR; }
    virtual long GetNumeroServidorUltimoHR() const { return 0; }
    virtual CString GetEmpresaErroVirtual() const { return CString(); }

    // Text of the verdict: the formatted text of a personalised message, else
    // the message table's text when a table is loaded, else a plain reference.
    CString GetMensagem() const;

    static void DefineTabelaMensagens(const IQZTabelaMensagens* tabela);
    static const IQZTabelaMensagens* GetTabelaMensagens();

    friend bool operator==(const CQZDadosGT_Erro& a, const CQZDadosGT_Erro& b) {
        return a.m_eTipo == b.m_eTipo && a.m_eModulo == b.m_eModulo && a.m_lMensagem == b.m_lMensagem &&
               a.m_lCampo == b.m_lCampo && a.m_llItem == b.m_llItem && a.m_aParametros == b.m_aParametros &&
               a.m_sTexto == b.m_sTexto && a.m_lHR == b.m_lHR;
    }

private:
    CQZDadosGT_Erro& DefinePersonalizado(QZModulo modulo, long campo, long mensagem, const CStringArray& params,
                                         const CString& texto);

    static CString ParaTexto(const CString& s) { return s; }
    static CString ParaTexto(const char* s) { return CString(s); }
    template <class T, std::enable_if_t<std::is_integral_v<T>, int> = 0>
    static CString ParaTexto(T v) {
        return std::is_signed_v<T> ? CString::Formatado("%lld", static_cast<long long>(v))
                                   : CString::Formatado("%llu", static_cast<unsigned long long>(v));
    }
    static const char* ParaPrintf(const CString& s) { return s.GetString(); }
    template <class T>
    static T ParaPrintf(T v) { return v; }

    TipoErro m_eTipo = TIPO_ERRO_NENHUM;
    QZModulo m_eModulo = QZ_MODULO_NENHUM;
    long m_lMensagem = 0;
    long m_lCampo = 0;
    int64_t m_llItem = 0;
    CStringArray m_aParametros;
    CString m_sTexto;  // formatted text of personalised and service messages
    long m_lHR = 0;
};
