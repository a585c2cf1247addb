#include "alerts/PXModeloEmail.h"

#include <fcntl.h>
#include <re2/re2.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <optional>

const CPXMarcadorModelo kPXMarcadoresCabecalho[10] = {
    {"QZ_COD_TECNICO", &DADOS_CORPO_EMAIL::sCodigoTecnico},
    {"QZ_NOME_TECNICO", &DADOS_CORPO_EMAIL::sNomeTecnico},
    {"QZ_DESC_ALERTA", &DADOS_CORPO_EMAIL::sDescricaoAlerta},
    {"QZ_DETALHAMENTO_ALERTA", &DADOS_CORPO_EMAIL::sDetalhamentoAlerta},
    {"QZ_COD_DISCIPLINA", &DADOS_CORPO_EMAIL::sCodigoDisciplina},
    {"QZ_DESC_DISCIPLINA", &DADOS_CORPO_EMAIL::sNomeDisciplina},
    {"QZ_COD_PLANO_MANUT", &DADOS_CORPO_EMAIL::sCodigoPlano},
    {"QZ_DESC_PLANO_MANUT", &DADOS_CORPO_EMAIL::sNomePlano},
    {"QZ_DATA_ATUAL", &DADOS_CORPO_EMAIL::sDataAtual},
    {"QZ_DATA_HORA_ATUAL", &DADOS_CORPO_EMAIL::sDataHoraAtual},
};

const CPXMarcadorModelo kPXMarcadoresLinha[13] = {
    {"QZ_COD_RECURSO", &DADOS_CORPO_EMAIL::sCodigoRecurso},
    {"QZ_DESC_RECURSO", &DADOS_CORPO_EMAIL::sDescricaoRecurso},
    {"QZ_COD_TP_RECURSO", &DADOS_CORPO_EMAIL::sCodigoTipoRecurso},
    {"QZ_DESC_TP_RECURSO", &DADOS_CORPO_EMAIL::sDescricaoTipoRecurso},
    {"QZ_NRO_SERIE_RECURSO", &DADOS_CORPO_EMAIL::sNumeroSerieRecurso},
    {"QZ_DT_PROX_MANUT", &DADOS_CORPO_EMAIL::sDataProximaManutencao},
    {"QZ_DIAS_PROX_MANUT", &DADOS_CORPO_EMAIL::sDiasProximaManutencao},
    {"QZ_CONTADOR_PROX_MANUT", &DADOS_CORPO_EMAIL::sContadorProximaManutencao},
    {"QZ_UN_MED_CONTADOR", &DADOS_CORPO_EMAIL::sUnidadeContador},
    {"QZ_COD_FILIAL", &DADOS_CORPO_EMAIL::sCodigoFilial},
    {"QZ_IDENT_FILIAL", &DADOS_CORPO_EMAIL::sIdentificacaoFilial},
    {"QZ_NOME_FANT_FILIAL", &DADOS_CORPO_EMAIL::sNomeFantasiaFilial},
    {"QZ_RAZAO_SOCIAL", &DADOS_CORPO_EMAIL::sRazaoSocial},
};

namespace {

// ---- patterns on RE2 -------------------------------------------------------

// ECMAScript's "." is any character but a line terminator; for 8-bit text
// those are CR and LF.
std::string ParaRe2(std::string_view ecma) {
    std::string s;
    for (char c : ecma) {
        if (c == '.')
            s += "[^\\r\\n]";
        else if (c == '\r')
            s += "\\r";
        else if (c == '\n')
            s += "\\n";
        else
            s += c;
    }
    return s;
}

class CPXBuscaRe2 : public IPXBuscaPadrao {
public:
    explicit CPXBuscaRe2(std::string_view ecma) : m_re(ParaRe2(ecma), Opcoes()) {}
    bool Busca(std::string_view texto, size_t inicio, size_t& posicao, size_t& tamanho) const override {
        if (!m_re.ok() || inicio > texto.size()) return false;
        re2::StringPiece casamento;
        if (!m_re.Match(re2::StringPiece(texto.data(), texto.size()), inicio, texto.size(), RE2::UNANCHORED,
                        &casamento, 1))
            return false;
        posicao = static_cast<size_t>(casamento.data() - texto.data());
        tamanho = casamento.size();
        return true;
    }

private:
    static RE2::Options Opcoes() {
        RE2::Options o;
        o.set_encoding(RE2::Options::EncodingLatin1);
        o.set_log_errors(false);
        // Room for the DFA on templates of tens of megabytes.
        o.set_max_mem(64 << 20);
        return o;
    }
    RE2 m_re;
};

// ---- the placeholders as steps of the sequential substitution --------------

std::string Sufixo(int64_t i) { return "_" + std::to_string(i); }

// The steps of a substitution, in order: what each replaces is a name
// (numbered "_i" for the lines of the list form) and what it writes.
class CPassos {
public:
    // The one-record form: header names then line names, unnumbered.
    explicit CPassos(const DADOS_CORPO_EMAIL& r) : m_linhas(0), m_numeradas(false) {
        for (const auto& m : kPXMarcadoresCabecalho) m_nomes.push_back({m.texto, &(r.*m.campo).str()});
        for (const auto& m : kPXMarcadoresLinha) m_nomes.push_back({m.texto, &(r.*m.campo).str()});
    }
    // The list form: header names, the two markers, then the line names
    // numbered by line.
    CPassos(const DADOS_CORPO_EMAIL& c, const std::vector<DADOS_CORPO_EMAIL>& linhas)
        : m_pLinhas(&linhas), m_linhas(static_cast<int64_t>(linhas.size())), m_numeradas(true) {
        for (const auto& m : kPXMarcadoresCabecalho) m_nomes.push_back({m.texto, &(c.*m.campo).str()});
        m_nomes.push_back({kPXInicioLista, &m_vazio});
        m_nomes.push_back({kPXFimLista, &m_vazio});
        m_fixos = m_nomes.size();
        for (const auto& m : kPXMarcadoresLinha) m_nomes.push_back({m.texto, nullptr});
    }

    // Longest text a step replaces.
    size_t MaiorPadrao() const {
        size_t n = 0;
        for (const auto& nome : m_nomes) n = std::max(n, nome.texto.size());
        if (m_numeradas && m_linhas > 0) n += Sufixo(m_linhas - 1).size();
        return n;
    }

    struct Casamento {
        int64_t passo;
        size_t tamanho;
        std::string_view valor;
    };

    // Every step whose text stands at `p` of `t`.
    template <class F>
    void ParaCada(std::string_view t, size_t p, F&& f) const {
        const std::string_view resto = t.substr(p);
        for (size_t k = 0; k < m_nomes.size(); ++k) {
            const std::string_view nome = m_nomes[k].texto;
            if (resto.substr(0, nome.size()) != nome) continue;
            if (!m_numeradas || k < m_fixos) {
                f(Casamento{static_cast<int64_t>(k), nome.size(), *m_nomes[k].valor});
                continue;
            }
            // "_" and a line number written as decimal: every prefix of the
            // digits that is a line's own number.
            if (resto.size() <= nome.size() + 1 || resto[nome.size()] != '_') continue;
            const size_t inicio = nome.size() + 1;
            size_t fim = inicio;
            while (fim < resto.size() && fim - inicio < 19 && resto[fim] >= '0' && resto[fim] <= '9') ++fim;
            for (size_t d = inicio + 1; d <= fim; ++d) {
                if (resto[inicio] == '0' && d > inicio + 1) break;
                int64_t i = 0;
                const auto [fimNumero, erro] = std::from_chars(resto.data() + inicio, resto.data() + d, i);
                if (erro != std::errc() || i >= m_linhas) break;
                const size_t indiceLinha = k - m_fixos;
                f(Casamento{static_cast<int64_t>(m_fixos) + i * 13 + static_cast<int64_t>(indiceLinha), d,
                            ((*m_pLinhas)[static_cast<size_t>(i)].*kPXMarcadoresLinha[indiceLinha].campo).str()});
            }
        }
    }

    std::optional<Casamento> Primeiro(std::string_view t, size_t p) const {
        std::optional<Casamento> melhor;
        ParaCada(t, p, [&](const Casamento& c) {
            if (!melhor || c.passo < melhor->passo) melhor = c;
        });
        return melhor;
    }

    // Whether `t` is the beginning, and not the whole, of some step's text.
    bool EhInicioProprio(std::string_view t) const {
        for (size_t k = 0; k < m_nomes.size(); ++k) {
            const std::string_view nome = m_nomes[k].texto;
            if (!m_numeradas || k < m_fixos) {
                if (t.size() < nome.size() && nome.substr(0, t.size()) == t) return true;
                continue;
            }
            if (m_linhas == 0) continue;
            if (t.size() <= nome.size()) {
                if (nome.substr(0, t.size()) == t) return true;
                continue;
            }
            if (t.substr(0, nome.size()) != nome || t[nome.size()] != '_') continue;
            const std::string_view digitos = t.substr(nome.size() + 1);
            if (digitos.empty()) return true;  // "_0" follows
            if (digitos.size() > 18 || digitos[0] == '0') continue;
            if (!std::all_of(digitos.begin(), digitos.end(), [](char c) { return c >= '0' && c <= '9'; })) continue;
            int64_t d = 0;
            std::from_chars(digitos.data(), digitos.data() + digitos.size(), d);
            // Some line's number starts with these digits and goes on: d0 is the least.
            if (d <= (m_linhas - 1) / 10) return true;
        }
        return false;
    }

private:
    struct Nome {
        std::string_view texto;
        const std::string* valor;  // null for numbered line names: the value is per line
    };
    std::vector<Nome> m_nomes;
    const std::vector<DADOS_CORPO_EMAIL>* m_pLinhas = nullptr;
    int64_t m_linhas;
    bool m_numeradas;
    size_t m_fixos = 0;
    std::string m_vazio;
};

// The substitution in one pass: each "QZ_" of the template takes the value
// of the first step whose text stands there. That is the sequential
// result as long as no step can find its text where the template did not
// have it; false when one could, and the result is then not to be used.
//
// Placeholder texts begin with "QZ_" and hold it nowhere else, and none
// ends in "Q" or "QZ": two occurrences in the template overlap only when
// they start together, and the first step of those is the one that
// replaces there. A step finds new text only where its "QZ_" lies in a
// value or next to one, which the output shows (checked below); or where it
// begins at a placeholder still unreplaced at that step and runs on into a
// junction, which shows as a placeholder of the template that is, up to
// the next replaced one, the beginning of some step's text.
bool SubstituiDeUmaVez(std::string& modelo, const CPassos& passos) {
    const std::string_view t = modelo;
    struct Troca {
        size_t posicao, tamanho;
        std::string_view valor;
    };
    std::vector<Troca> trocas;
    for (size_t p = t.find("QZ_"); p != std::string_view::npos;) {
        if (auto c = passos.Primeiro(t, p)) {
            trocas.push_back({p, c->tamanho, c->valor});
            p = t.find("QZ_", p + c->tamanho);
        } else {
            p = t.find("QZ_", p + 3);
        }
    }
    if (trocas.empty()) return true;
    const size_t maior = passos.MaiorPadrao();
    for (size_t k = 0; k + 1 < trocas.size(); ++k) {
        const size_t s = trocas[k].posicao, y = trocas[k + 1].posicao;
        if (y - s < maior && passos.EhInicioProprio(t.substr(s, y - s))) return false;
    }
    std::string saida;
    size_t total = t.size();
    for (const auto& tr : trocas) total = total - tr.tamanho + tr.valor.size();
    saida.reserve(total);
    std::vector<std::pair<size_t, size_t>> valores;  // where each value landed
    valores.reserve(trocas.size());
    size_t de = 0;
    for (const auto& tr : trocas) {
        saida.append(t, de, tr.posicao - de);
        valores.emplace_back(saida.size(), saida.size() + tr.valor.size());
        saida.append(tr.valor);
        de = tr.posicao + tr.tamanho;
    }
    saida.append(t, de, std::string_view::npos);
    // No step text may touch a value or cross the place of one.
    const std::string_view o = saida;
    for (const auto& valor : valores) {
        // Named copies, not a structured binding: the lambda below captures them.
        const size_t a = valor.first, b = valor.second;
        // The "QZ_" that start from maior - 1 bytes before the value to its
        // last byte (or to the junction itself, for an empty value).
        const size_t inicio = a >= maior ? a - maior + 1 : 0;
        const size_t limite = std::max(b, a + 1);
        const std::string_view janela = o.substr(0, std::min(o.size(), limite + 2));
        for (size_t s = janela.find("QZ_", inicio); s != std::string_view::npos && s < limite;
             s = janela.find("QZ_", s + 1)) {
            bool toca = false;
            passos.ParaCada(o, s, [&](const CPassos::Casamento& c) {
                if (s >= a ? s < b || s + c.tamanho > a : s + c.tamanho > a) toca = true;
            });
            if (toca) return false;
        }
    }
    modelo.swap(saida);
    return true;
}

void SubstituiPassoAPasso(std::string& m, const DADOS_CORPO_EMAIL& r) {
    for (const auto& c : kPXMarcadoresCabecalho) PXSubstituiTodos(m, c.texto, (r.*c.campo).str());
    for (const auto& c : kPXMarcadoresLinha) PXSubstituiTodos(m, c.texto, (r.*c.campo).str());
}

}  // namespace

const CPXPadroesModelo& PXPadroesRe2() {
    static const CPXBuscaRe2 bloco(kPXPadraoBloco), linha(kPXPadraoLinha), token(kPXPadraoToken);
    static const CPXPadroesModelo padroes{bloco, linha, token};
    return padroes;
}

size_t PXSubstituiTodos(std::string& texto, std::string_view de, std::string_view para) {
    if (de.empty()) return 0;
    size_t p = texto.find(de);
    if (p == std::string::npos) return 0;
    std::string saida;
    saida.reserve(texto.size());
    size_t n = 0, inicio = 0;
    for (; p != std::string::npos; p = texto.find(de, inicio)) {
        saida.append(texto, inicio, p - inicio);
        saida.append(para);
        inicio = p + de.size();
        ++n;
    }
    saida.append(texto, inicio, std::string::npos);
    texto.swap(saida);
    return n;
}

bool PXEhMarcadorCabecalho(std::string_view token) {
    return std::any_of(std::begin(kPXMarcadoresCabecalho), std::end(kPXMarcadoresCabecalho),
                       [&](const CPXMarcadorModelo& m) { return token == m.texto; });
}

CPXBlocoModelo PXAnalisaBloco(std::string_view modelo, const CPXPadroesModelo& padroes) {
    CPXBlocoModelo r;
    size_t p = 0, n = 0;
    if (!padroes.bloco.Busca(modelo, 0, p, n)) return r;
    r.encontrado = true;
    r.bloco = std::string(modelo.substr(p, n));
    // The block without its end marker and the line break before it.
    std::string b2 = r.bloco;
    PXSubstituiTodos(b2, "\r\n  QZ_FIM_LISTA", "");
    for (size_t de = 0, lp = 0, ln = 0; padroes.linha.Busca(b2, de, lp, ln); de = lp + std::max<size_t>(ln, 1)) {
        // The row starts after "</tr>" and its line break, 7 characters.
        std::string linha = b2.substr(lp + 7, ln - 7);
        std::vector<std::string> tokens;
        for (size_t td = 0, tp = 0, tn = 0; padroes.token.Busca(linha, td, tp, tn); td = tp + std::max<size_t>(tn, 1))
            tokens.emplace_back(linha, tp, tn);
        r.linhas.push_back(std::move(linha));
        r.tokens.push_back(std::move(tokens));
    }
    return r;
}

bool PXAtualizaConteudoEmail(std::string& modelo, int64_t linhas, const CPXPadroesModelo& padroes) {
    const CPXBlocoModelo analise = PXAnalisaBloco(modelo, padroes);
    if (!analise.encontrado) return false;
    std::string b2 = analise.bloco;
    PXSubstituiTodos(b2, "\r\n  QZ_FIM_LISTA", "");
    // Each row found in the block (one, in a template without asterisks)
    // leaves its place and comes back once per line, its tokens numbered.
    for (size_t k = 0; k < analise.linhas.size(); ++k) {
        const std::string& linha = analise.linhas[k];
        PXSubstituiTodos(b2, "\r\n" + linha, "");
        for (int64_t i = 0; i < linhas; ++i) {
            std::string copia = linha;
            const std::string sufixo = Sufixo(i);
            for (const std::string& token : analise.tokens[k])
                if (!PXEhMarcadorCabecalho(token)) PXSubstituiTodos(copia, token, token + sufixo);
            b2 += "\r\n";
            b2 += copia;
        }
    }
    PXSubstituiTodos(modelo, analise.bloco, b2);
    return true;
}

void PXSubstituiSequencial(std::string& m, const DADOS_CORPO_EMAIL& r) { SubstituiPassoAPasso(m, r); }

void PXSubstituiSequencial(std::string& m, const DADOS_CORPO_EMAIL& c, const std::vector<DADOS_CORPO_EMAIL>& linhas) {
    for (const auto& h : kPXMarcadoresCabecalho) PXSubstituiTodos(m, h.texto, (c.*h.campo).str());
    PXSubstituiTodos(m, kPXInicioLista, "");
    PXSubstituiTodos(m, kPXFimLista, "");
    for (size_t i = 0; i < linhas.size(); ++i) {
        const std::string sufixo = Sufixo(static_cast<int64_t>(i));
        for (const auto& l : kPXMarcadoresLinha) PXSubstituiTodos(m, l.texto + sufixo, (linhas[i].*l.campo).str());
    }
}

void PXSubstitui(std::string& m, const DADOS_CORPO_EMAIL& r, bool* usouSequencial) {
    const bool rapido = SubstituiDeUmaVez(m, CPassos(r));
    if (!rapido) PXSubstituiSequencial(m, r);
    if (usouSequencial) *usouSequencial = !rapido;
}

void PXSubstitui(std::string& m, const DADOS_CORPO_EMAIL& c, const std::vector<DADOS_CORPO_EMAIL>& linhas,
                 bool* usouSequencial) {
    const bool rapido = SubstituiDeUmaVez(m, CPassos(c, linhas));
    if (!rapido) PXSubstituiSequencial(m, c, linhas);
    if (usouSequencial) *usouSequencial = !rapido;
}

bool PXErroSignificaAusente(int erro) {
    switch (erro) {
        case ENOENT:
        case ENOTDIR:
        case EHOSTDOWN:
        case EHOSTUNREACH:
        case ENETUNREACH:
        case ENOTCONN:
        case ESTALE:
        case ENXIO:
        case ENODEV:
        case ENOMEDIUM:
            return true;
        default:
            return false;
    }
}

bool PXModeloEmailExiste(const char* caminho) {
    // Non-blocking: a FIFO or a device must not hold the routine here.
    int fd = ::open(caminho, O_RDWR | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
    if (fd < 0) return !PXErroSignificaAusente(errno);
    // Only opened, never written: a failed close changes nothing on disk and
    // the file was there.
    ::close(fd);
    return true;
}
