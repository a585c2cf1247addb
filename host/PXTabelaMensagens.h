// The message table: the texts of numbered messages, read from a UTF-8
// data file (messages/mensagens.txt) into Windows-1252. Personalised
// messages carry %1, %2, ... for their parameters; %% is a percent sign.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <utility>

#include "platform/QZDadosGT_Erro.h"

class CPXTabelaMensagens : public IQZTabelaMensagens {
public:
    // Reads "module<TAB>number<TAB>text" lines; blank lines and lines
    // starting with '#' are skipped. All or nothing: false, with the line
    // and the reason in *erro, on a malformed line, a repeated number or a
    // text without a Windows-1252 form.
    bool Carrega(std::string_view textoUtf8, std::string* erro);

    bool Renderiza(QZModulo modulo, long mensagem, const CStringArray& parametros, CString& texto) const override;

    bool Tem(QZModulo modulo, long mensagem) const { return m_textos.count({modulo, mensagem}) != 0; }
    // The highest placeholder number of a text (0 when it takes no parameter).
    int MaiorParametro(QZModulo modulo, long mensagem) const;
    const std::map<std::pair<int, long>, CString>& Textos() const { return m_textos; }

    // The table built into the program.
    static const CPXTabelaMensagens& Embutida();

private:
    std::map<std::pair<int, long>, CString> m_textos;
};
