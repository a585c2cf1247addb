#include "host/PXTabelaMensagens.h"

#include <cctype>
#include <charconv>
#include <stdexcept>

#include "host/PXDadosEmbutidos.h"

namespace {

bool LeInteiro(std::string_view s, long& valor) {
    auto [fim, ec] = std::from_chars(s.data(), s.data() + s.size(), valor);
    return ec == std::errc() && fim == s.data() + s.size() && !s.empty();
}

// Calls fn(n) for every placeholder %n of a text and copies the rest through
// `literal`; false on a lone '%' or '%0'.
template <class FnParametro, class FnLiteral>
bool PercorreTexto(const std::string& texto, FnParametro fn, FnLiteral literal) {
    for (size_t i = 0; i < texto.size(); ++i) {
        if (texto[i] != '%') {
            literal(texto[i]);
            continue;
        }
        if (i + 1 < texto.size() && texto[i + 1] == '%') {
            literal('%');
            ++i;
            continue;
        }
        if (i + 1 >= texto.size() || texto[i + 1] < '1' || texto[i + 1] > '9') return false;
        fn(texto[i + 1] - '0');
        ++i;
    }
    return true;
}

}  // namespace

bool CPXTabelaMensagens::Carrega(std::string_view textoUtf8, std::string* erro) {
    std::map<std::pair<int, long>, CString> textos;
    size_t inicio = 0;
    for (int linha = 1; inicio <= textoUtf8.size(); ++linha) {
        size_t fim = textoUtf8.find('\n', inicio);
        if (fim == std::string_view::npos) fim = textoUtf8.size();
        std::string_view l = textoUtf8.substr(inicio, fim - inicio);
        inicio = fim + 1;
        if (!l.empty() && l.back() == '\r') l.remove_suffix(1);
        if (l.empty() || l.front() == '#') continue;
        auto falha = [&](const std::string& motivo) {
            if (erro) *erro = "linha " + std::to_string(linha) + ": " + motivo;
            return false;
        };
        size_t t1 = l.find('\t');
        size_t t2 = t1 == std::string_view::npos ? t1 : l.find('\t', t1 + 1);
        long modulo = 0, numero = 0;
        if (t2 == std::string_view::npos) return falha("esperava módulo, número e texto separados por tabulação");
        if (!LeInteiro(l.substr(0, t1), modulo) || !LeInteiro(l.substr(t1 + 1, t2 - t1 - 1), numero) || numero <= 0)
            return falha("módulo ou número inválido");
        std::string cp1252, motivo;
        if (!QZUtf8ParaCp1252(l.substr(t2 + 1), cp1252, &motivo)) return falha(motivo);
        if (cp1252.empty()) return falha("texto vazio");
        if (!PercorreTexto(cp1252, [](int) {}, [](char) {})) return falha("'%' sem número de parâmetro (use %% para o sinal)");
        if (!textos.emplace(std::pair<int, long>(static_cast<int>(modulo), numero), CString(cp1252)).second)
            return falha("mensagem " + std::to_string(modulo) + "/" + std::to_string(numero) + " repetida");
    }
    m_textos = std::move(textos);
    return true;
}

bool CPXTabelaMensagens::Renderiza(QZModulo modulo, long mensagem, const CStringArray& parametros,
                                   CString& texto) const {
    auto it = m_textos.find({modulo, mensagem});
    if (it == m_textos.end()) return false;
    std::string saida;
    PercorreTexto(
        it->second.str(),
        [&](int n) {
            // A parameter the caller did not pass renders as nothing.
            if (n <= parametros.GetSize()) saida += parametros[n - 1].str();
        },
        [&](char c) { saida += c; });
    while (!saida.empty() && std::isspace(static_cast<unsigned char>(saida.back()))) saida.pop_back();
    texto = CString(std::move(saida));
    return true;
}

int CPXTabelaMensagens::MaiorParametro(QZModulo modulo, long mensagem) const {
    auto it = m_textos.find({modulo, mensagem});
    int maior = 0;
    if (it != m_textos.end())
        PercorreTexto(it->second.str(), [&](int n) { maior = std::max(maior, n); }, [](char) {});
    return maior;
}

const CPXTabelaMensagens& CPXTabelaMensagens::Embutida() {
    static const CPXTabelaMensagens tabela = [] {
        CPXTabelaMensagens t;
        std::string erro;
        // The build embeds the file the tests check; a broken one is a build defect.
        if (!t.Carrega(PXTextoMensagens(), &erro)) throw std::logic_error("messages/mensagens.txt: " + erro);
        return t;
    }();
    return tabela;
}
