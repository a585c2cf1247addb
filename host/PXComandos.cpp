#include "host/PXComandos.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <charconv>
#include <condition_variable>
#include <deque>
#include <cstring>
#include <exception>
#include <fstream>
#include <iostream>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <sstream>
#include <thread>

#include "host/PXComandosAdicionais.h"
#include "host/PXDadosEmbutidos.h"
#include "host/PXLeituraJson.h"
#include "host/PXLeituraRegistros.h"
#include "host/PXPermissoesHost.h"
#include "host/PXReferencias.h"
#include "host/PXTabelaMensagens.h"
#include "host/PXTiposHost.h"
#include "permissions/PXControlePermissoes.h"
#include "platform/QZCodigosResultado.h"
#include "platform/QZRelogio.h"
#include "servico/PXServicoRegistros.h"
#include "servico/PXSugestoesManutencao.h"
#include "store/QZFabricaArmazemSQL.h"
#include "store/QZPostgres.h"

namespace {

using Json = nlohmann::ordered_json;

constexpr int kSaidaOk = 0;
constexpr int kSaidaRecusado = 1;
constexpr int kSaidaErro = 2;

// The program's texts are Windows-1252; the terminal and JSON speak UTF-8.
std::string Utf8(const std::string& cp1252) { return QZParaUtf8(CString(cp1252)); }
std::string Utf8(const CString& cp1252) { return QZParaUtf8(cp1252); }

[[noreturn]] void Erro(const std::string& texto, long linha = 0, std::string campo = {}) {
    throw CPXErroEntrada{texto, linha, std::move(campo)};
}

// The reason of a store's failure, as its error record tells it.
std::string TextoServico(const CQZDadosGT_Erro& erro) { return erro.GetMensagem().str(); }

Json Veredito(const CQZDadosGT_Erro& erro) {
    return Json{{"module", static_cast<int>(erro.GetModulo())},
                {"message", erro.GetMensagemNumero()},
                {"field", erro.GetCodigoCampo()},
                {"item", erro.GetItem()},
                {"text", Utf8(erro.GetMensagem())}};
}

std::string VereditoTexto(const CQZDadosGT_Erro& erro) {
    // A text of its own (no number of the table) says it all.
    if (erro.GetMensagemNumero() == 0) return erro.GetMensagem().str();
    return "módulo " + std::to_string(static_cast<int>(erro.GetModulo())) + ", mensagem " +
           std::to_string(erro.GetMensagemNumero()) + ", campo " + std::to_string(erro.GetCodigoCampo()) + ", item " +
           std::to_string(erro.GetItem()) + ": " + erro.GetMensagem().str();
}

// What the command line was given, once parsed.
struct Opcoes {
    bool json = false;
    int esperaMs = CQZArmazemSQL::kEsperaPadraoMs;
    std::string armazem;
    std::string arquivo;
    std::string tipo;
    std::string chave;
    std::string empresa = "EMPRESA";
    int usuario = 1;
    int tipoPermissao = 0;
    bool demo = false;
    std::string diaDemo;  // init --demo --at: the day the demo is placed around
    bool simulacao = false;
    uint32_t situacao = 0;
    bool tarefas = false;
    bool componentes = false;
    CPXLimitesJson limites;
};

// The output of one command: its human text or its JSON object.
class Saida {
public:
    Saida(const Opcoes& o, const char* comando, std::ostream& saida, std::ostream& erros)
        : m_json(o.json), m_saida(saida), m_erros(erros), m_obj{{"command", comando}} {}
    bool Json() const { return m_json; }
    ::Json& Objeto() { return m_obj; }
    // A line of human output (Windows-1252 text).
    void Linha(const std::string& cp1252) {
        if (!m_json) m_saida << Utf8(cp1252) << '\n';
    }
    void LinhaUtf8(const std::string& utf8) {
        if (!m_json) m_saida << utf8 << '\n';
    }
    void Aviso(const std::string& cp1252) {
        if (!m_json) m_erros << "pxlreg: " << Utf8(cp1252) << '\n';
    }
    void Inconsistencias(const std::vector<CQZDadosGT_Erro>& inconsistencias) {
        ::Json lista = ::Json::array();
        for (const auto& i : inconsistencias) {
            lista.push_back(Veredito(i));
            Aviso("aviso: " + VereditoTexto(i));
        }
        m_obj["inconsistencies"] = std::move(lista);
    }
    void Conclui() {
        if (m_json) m_saida << m_obj.dump(-1, ' ', false, ::Json::error_handler_t::replace) << '\n';
    }
    int Falha(const CPXErroEntrada& e) {
        if (m_json) {
            ::Json erro{{"text", Utf8(e.texto)}};
            if (e.linha) erro["line"] = e.linha;
            if (!e.campo.empty()) erro["field"] = Utf8(e.campo);
            m_obj["error"] = std::move(erro);
            Conclui();
        } else {
            std::string onde;
            if (e.linha) onde = "linha " + std::to_string(e.linha);
            if (!e.campo.empty()) onde += (onde.empty() ? "campo " : ", campo ") + e.campo;
            m_erros << "pxlreg: erro: " << Utf8(onde.empty() ? e.texto : onde + ": " + e.texto) << '\n';
        }
        return kSaidaErro;
    }

private:
    bool m_json;
    std::ostream& m_saida;
    std::ostream& m_erros;
    ::Json m_obj;
};

// SQLite reads some names as something other than a file: an in-memory
// database, a URI with its own options. A store is always a file.
const std::string& CaminhoArmazem(const std::string& caminho) {
    if (caminho.empty()) Erro("o nome do armazém está vazio.");
    if (caminho == ":memory:" || caminho.rfind("file:", 0) == 0)
        Erro("\"" + pxjson::Trecho(caminho) + "\" não é o caminho de um arquivo de armazém (para um arquivo com esse nome, use ./" +
                 pxjson::Trecho(caminho) + ").");
    return caminho;
}

// The program's clock: the system's, or the moment PXLREG_AGORA names
// ("YYYY-MM-DD", at 08:00, or a stamp "YYYY-MM-DDTHH:MM:SS-03:00"), so a
// plant can be shown, and tested, on another day. Rules, stamps and the
// demo read it.
const IQZRelogio& RelogioHost() {
    const char* agora = std::getenv("PXLREG_AGORA");
    if (!agora || !*agora) return CQZRelogioSistema::Instancia();
    REG_QZDMAHMSUTC momento;
    REG_QZDMA dia;
    if (pxjson::LeData(agora, dia))
        momento = REG_QZDMAHMSUTC(dia, 8, 0, 0);
    else if (!pxjson::LeCarimbo(agora, momento))
        Erro("PXLREG_AGORA inválida: \"" + pxjson::Trecho(agora) + "\"; use AAAA-MM-DD ou AAAA-MM-DDTHH:MM:SS-03:00.");
    static thread_local CQZRelogioFixo relogio;
    relogio.Define(momento);
    return relogio;
}

// A store opened for a command: its company registered with a factory of
// connections to it (every routine object opens its own), and a connection
// of the command's own for what it reads and writes outside the rules.
class Sessao {
public:
    Sessao(const Opcoes& o, QZModoAbertura modo)
        : m_fabrica(std::make_shared<CQZFabricaArmazemSQL>(CaminhoArmazem(o.armazem), QZ_ABRE_EXISTENTE, o.esperaMs)) {
        CQZDadosGT_Erro erro;
        // The first connection creates the store when asked to.
        m_armazem = std::make_unique<CQZArmazemSQL>(o.armazem, modo, o.esperaMs);
        if (!m_armazem->EstaAberto()) Erro(TextoServico(m_armazem->GetErro()));
        const IQZRelogio& relogio = RelogioHost();
        m_armazem->DefineRelogio(&relogio);
        m_fabrica->DefineRelogio(&relogio);
        // The terminal speaks UTF-8; the rules, Windows-1252.
        std::string empresa, erroEmpresa;
        if (!QZUtf8ParaCp1252(o.empresa, empresa, &erroEmpresa))
            Erro("--company: " + erroEmpresa);
        m_sessao.empresa = CString(std::move(empresa));
        m_sessao.usuario = static_cast<uint16_t>(o.usuario);
        m_sessao.sessao = static_cast<uint32_t>(getpid());
        CQZServicosEmpresa servicos;
        servicos.pFabrica = m_fabrica;
        servicos.pRelogio = &relogio;
        CQZRegistroServicos::Registra(m_sessao.empresa, servicos);
    }
    ~Sessao() { CQZRegistroServicos::Remove(m_sessao.empresa); }
    Sessao(const Sessao&) = delete;
    Sessao& operator=(const Sessao&) = delete;

    CQZArmazemSQL& Armazem() { return *m_armazem; }
    const CPXSessao& Host() const { return m_sessao; }

    // A handler or checker ready for the rules.
    template <class Rotina>
    void Inicializa(Rotina& r) {
        if (r.Inicializa(m_sessao.empresa, m_sessao.usuario, m_sessao.sessao) < 0)
            Erro("não foi possível inicializar as regras: " + r.GetMensagem().str());
    }

private:
    std::shared_ptr<CQZFabricaArmazemSQL> m_fabrica;
    std::unique_ptr<CQZArmazemSQL> m_armazem;
    CPXSessao m_sessao;
};

// The input of a command: standard input for "-", else the file, which must
// be a regular file (a folder opens, and reads as empty).
class Entrada {
public:
    Entrada(const std::string& arquivo, std::istream& padrao) : m_nome(arquivo == "-" ? "a entrada padrão" : "o arquivo " + arquivo) {
        if (arquivo == "-") {
            m_in = &padrao;
            return;
        }
        struct stat st {};
        if (::stat(arquivo.c_str(), &st) != 0)
            Erro("não foi possível ler o arquivo " + arquivo + ": " + std::strerror(errno) + ".", 0, {});
        if (S_ISDIR(st.st_mode)) Erro(arquivo + " é uma pasta, não um arquivo.");
        m_arquivo.open(arquivo, std::ios::binary);
        if (!m_arquivo) Erro("não foi possível ler o arquivo " + arquivo + ".");
        m_in = &m_arquivo;
    }
    // A stream already open, named as messages should name it.
    Entrada(std::istream& fluxo, std::string nome) : m_nome(std::move(nome)), m_in(&fluxo) {}
    const std::string& Nome() const { return m_nome; }
    std::istream& Fluxo() { return *m_in; }
    // Fills `bloco`; false at the end. A read error is an error, not the end.
    bool Le(char* bloco, size_t tamanho, size_t& lidos) {
        m_in->read(bloco, static_cast<std::streamsize>(tamanho));
        lidos = static_cast<size_t>(m_in->gcount());
        if (m_in->bad()) Erro("não foi possível ler " + m_nome + ".");
        return lidos > 0;
    }

private:
    std::string m_nome;
    std::ifstream m_arquivo;
    std::istream* m_in = nullptr;
};

// The whole input, refused as soon as it passes `maximo` bytes: a huge input
// is never held whole only to be refused.
std::string LeEntrada(const std::string& arquivo, std::istream& padrao, size_t maximo) {
    Entrada entrada(arquivo, padrao);
    std::string texto;
    char bloco[1 << 16];
    for (size_t lidos; entrada.Le(bloco, sizeof bloco, lidos);) {
        texto.append(bloco, lidos);
        if (texto.size() > maximo)
            Erro("a entrada passa de " + std::to_string(maximo) + " bytes, o limite de um registro (--max-line).");
    }
    return texto;
}

// The lines of an input, one at a time: at most one line and one block are
// held, and a line is refused as soon as it passes `maximo` bytes.
class LeitorLinhas {
public:
    LeitorLinhas(Entrada& entrada, size_t maximo) : m_entrada(entrada), m_maximo(maximo), m_bloco(1 << 20) {}
    // The next line, without its '\n'; false at the end of the input. The
    // view lasts until the next call.
    bool Proxima(std::string_view& linha) {
        m_linha.clear();
        bool emLinha = false;
        for (;;) {
            if (m_pos == m_tam) {
                m_pos = 0;
                if (!m_entrada.Le(m_bloco.data(), m_bloco.size(), m_tam)) {
                    m_tam = 0;
                    if (!emLinha) return false;
                    ++m_numero;
                    linha = m_linha;
                    return true;
                }
            }
            emLinha = true;
            const char* inicio = m_bloco.data() + m_pos;
            const size_t resta = m_tam - m_pos;
            const auto* fim = static_cast<const char*>(std::memchr(inicio, '\n', resta));
            const size_t n = fim ? static_cast<size_t>(fim - inicio) : resta;
            if (m_linha.size() + n > m_maximo)
                Erro("linha de mais de " + std::to_string(m_maximo) + " bytes, além do limite de " +
                         std::to_string(m_maximo) + " (--max-line)",
                     m_numero + 1);
            m_pos += n;
            if (fim) {
                ++m_pos;
                ++m_numero;
                // A line whole in the block is not copied.
                linha = m_linha.empty() ? std::string_view(inicio, n) : std::string_view(m_linha.append(inicio, n));
                return true;
            }
            m_linha.append(inicio, n);
        }
    }
    long Numero() const { return m_numero; }

private:
    Entrada& m_entrada;
    size_t m_maximo;
    std::vector<char> m_bloco;
    size_t m_pos = 0, m_tam = 0;
    std::string m_linha;
    long m_numero = 0;
};

// Output that could not be written (a full disk, a closed pipe): reported
// on standard error, since the output itself is what failed.
struct CPXErroSaida {};

const IPXTipoHost& TipoOuErro(const std::string& nome) {
    if (const IPXTipoHost* t = PXBuscaTipoHost(nome)) return *t;
    std::string conhecidos;
    for (const auto& t : PXTiposHost()) conhecidos += std::string(conhecidos.empty() ? "" : ", ") + t->Nome();
    Erro("tipo de registro desconhecido \"" + pxjson::Trecho(nome) + "\"; os tipos são: " + conhecidos + ".");
}

Json ParseJson(std::string_view texto, long linha, const CPXLimitesJson& limites) {
    try {
        return PXLeJson(texto, limites, linha);
    } catch (const CPXErroLeituraJson& e) {
        Erro(e.what(), e.Linha(), e.Campo());
    }
}

// The record of a JSON object, of the type it names or (save) of `tipo`.
std::unique_ptr<TQZBaseParaDados> Registro(const IPXTipoHost& tipo, const Json& j, long linha) {
    auto reg = tipo.Novo();
    try {
        tipo.DeJson(j, *reg);
    } catch (const CPXErroJson& e) {
        Erro(e.what(), linha, e.Campo());
    }
    return reg;
}

// The key a delete names: a position, or a movement key "YYYY-MM/N".
int64_t ChaveDoArgumento(const IPXTipoHost& tipo, const std::string& texto) {
    uint64_t v = 0;
    auto [fim, ec] = std::from_chars(texto.data(), texto.data() + texto.size(), v);
    // Up to twenty digits (a packed movement key), so the key quoted back in
    // the command's messages stays short.
    if (ec == std::errc() && fim == texto.data() + texto.size() && texto.size() <= 20 && v > 0 &&
        (!tipo.ChavePorPosicao() || v <= 0xFFFFFFFFu))
        return static_cast<int64_t>(v);
    if (REG_QZDMC chave; !tipo.ChavePorPosicao() && pxjson::LeChaveMovimento(texto, chave) && chave.EhValido())
        return static_cast<int64_t>(chave.GetValor());
    Erro("chave inválida \"" + pxjson::Trecho(texto) + "\": esperava a posição do registro (1 a 4294967295)" +
         (tipo.ChavePorPosicao() ? "" : " ou a chave de movimento AAAA-MM/N") + ".");
}

// ---- commands ---------------------------------------------------------------

// Whether `caminho` is still the file this process created.
bool MesmoArquivo(const std::string& caminho, const struct stat& criado) {
    struct stat st {};
    return ::lstat(caminho.c_str(), &st) == 0 && st.st_dev == criado.st_dev && st.st_ino == criado.st_ino;
}

int Init(const Opcoes& o, Saida& s) {
    // On a server the store is the database (or schema) the URL names.
    const bool servidor = qzsql::EhUrlPostgres(o.armazem);
    const std::string& caminho = CaminhoArmazem(o.armazem);
    // Named without its password, when it is a URL.
    const std::string nome = servidor ? qzsql::NomeUrlPostgres(o.armazem) : caminho;
    // The demo's periods, orders and due alerts are placed around this day.
    REG_QZDMA hoje = RelogioHost().Agora().GetData();
    if (!o.diaDemo.empty() && !pxjson::LeData(o.diaDemo, hoje))
        Erro("data inválida em --at: \"" + pxjson::Trecho(o.diaDemo) + "\"; use AAAA-MM-DD.");
    struct stat criado {};
    if (servidor) {
        if (CQZArmazemSQL(o.armazem, QZ_ABRE_EXISTENTE, o.esperaMs).EstaAberto())
            Erro("o armazém " + qzsql::NomeUrlPostgres(o.armazem) + " já existe.");
    } else {
        struct stat st {};
        if (::lstat(caminho.c_str(), &st) == 0) {
            if (S_ISLNK(st.st_mode) && ::stat(caminho.c_str(), &st) != 0)
                Erro(caminho + " é um link simbólico para um arquivo que não existe: o armazém não foi criado.");
            Erro("o armazém " + caminho + " já existe.");
        }
        // Created exclusively: of two inits of one path one wins, and the other
        // never touches the winner's file. A link is never followed.
        const int fd = ::open(caminho.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666);
        if (fd < 0) {
            if (errno == EEXIST) Erro("o armazém " + caminho + " já existe.");
            Erro("não foi possível criar o armazém " + caminho + ": " + std::strerror(errno) + ".");
        }
        const bool identificado = ::fstat(fd, &criado) == 0;
        const int erroFstat = errno;
        if (::close(fd) != 0 || !identificado) {
            const int e = identificado ? errno : erroFstat;
            if (identificado) ::unlink(caminho.c_str());
            Erro("não foi possível criar o armazém " + caminho + ": " + std::strerror(e) + ".");
        }
    }
    size_t registros = 0;
    try {
        Sessao sessao(o, QZ_ABRE_OU_CRIA);
        if (o.demo) registros = PXImportaJsonLinhas(sessao.Armazem(), PXTextoDemoEm(hoje));
        // The demo's template and outbox are folders beside a store file.
        if (o.demo && !servidor) PXPreparaDemoAlertas(sessao.Armazem(), caminho);
    } catch (...) {
        // Nothing half-made is left behind; only this process's own file is
        // removed (SQLite removes its journal files when the store closes).
        if (!servidor && MesmoArquivo(caminho, criado)) ::unlink(caminho.c_str());
        throw;
    }
    if (!servidor && !MesmoArquivo(caminho, criado))
        Erro("o armazém " + caminho + " foi removido ou trocado por outro processo enquanto era criado.");
    s.Objeto()["store"] = nome;
    s.Objeto()["schema"] = CQZArmazemSQL::kVersaoEsquema;
    s.Objeto()["records"] = registros;
    s.Linha("armazém criado: " + nome + " (esquema " + std::to_string(CQZArmazemSQL::kVersaoEsquema) + ")");
    if (o.demo) s.Linha("planta de demonstração: " + std::to_string(registros) + " registros");
    return kSaidaOk;
}

int Import(const Opcoes& o, std::istream& padrao, Saida& s) {
    Sessao sessao(o, QZ_ABRE_EXISTENTE);
    Entrada entrada(o.arquivo, padrao);
    const size_t registros = PXImportaJsonLinhas(sessao.Armazem(), entrada.Fluxo(), o.limites, entrada.Nome());
    s.Objeto()["records"] = registros;
    s.Linha(std::to_string(registros) + " registros importados");
    return kSaidaOk;
}

int Export(const Opcoes& o, std::ostream& saida) {
    std::vector<const IPXTipoHost*> tipos;
    if (!o.tipo.empty())
        tipos.push_back(&TipoOuErro(o.tipo));
    else
        for (const auto& t : PXTiposHost()) tipos.push_back(t.get());
    Sessao sessao(o, QZ_ABRE_EXISTENTE);
    CQZArmazemSQL& a = sessao.Armazem();
    std::string falha, linha;
    bool saidaFalhou = false;
    // One read transaction: the export is one moment of the store, and it
    // never waits for a writer. Each line goes out as it is read.
    long hr = a.EmLeitura("Exporta", [&]() -> long {
        for (const IPXTipoHost* t : tipos) {
            std::vector<int64_t> chaves;
            if (long r = t->Chaves(a, chaves)) return r;
            auto reg = t->Novo();
            for (int64_t chave : chaves) {
                if (long r = t->Le(a, chave, *reg)) return r;
                try {
                    linha = t->ParaJson(*reg).dump(-1, ' ', false);
                } catch (const CPXErroJson& e) {
                    falha = std::string(t->Nome()) + " na chave " + std::to_string(chave) + ": " + e.what();
                    return QZ_E_REGISTRO_INVALIDO;
                }
                linha += '\n';
                if (!saida.write(linha.data(), static_cast<std::streamsize>(linha.size()))) {
                    saidaFalhou = true;
                    return QZ_E_INESPERADO;
                }
            }
        }
        return 0;
    });
    if (saidaFalhou) throw CPXErroSaida{};
    if (!falha.empty()) Erro(falha);
    if (hr != 0) Erro(TextoServico(a.GetErro()));
    return kSaidaOk;
}

// The failure of a save or a delete that the rules did not answer.
[[noreturn]] void ErroServico(const CPXServicoRegistros& servico) { Erro(TextoServico(servico.GetErro())); }

// The session's user must exist: a code that names nobody is bad input.
void VerificaUsuario(Sessao& sessao, int usuario) {
    const IPXTipoHost* tipo = PXBuscaTipoHost("CQZDadosGT_Usuario");
    auto reg = tipo->Novo();
    const long hr = usuario > 0 ? tipo->Le(sessao.Armazem(), usuario, *reg) : QZ_E_REGISTRO_NAO_ENCONTRADO;
    if (hr == QZ_E_REGISTRO_NAO_ENCONTRADO)
        Erro("o usuário " + std::to_string(usuario) + " não existe (--user, ou a variável PXLREG_USER).");
    if (hr != 0) Erro(TextoServico(sessao.Armazem().GetErro()));
}

// Whether the user lacks the permission the action needs on the screen of
// the record type; when so, the refusal is the command's output (exit 1).
bool RecusaSemPermissao(Sessao& sessao, const Opcoes& o, const IPXTipoHost& tipo, EPXAcaoRegistro acao, Saida& s) {
    VerificaUsuario(sessao, o.usuario);
    const int tela = PXTipoPermissaoDoRegistro(tipo.Nome());
    if (tela == 0) return false;
    CPXControlePermissoes controle;
    sessao.Inicializa(controle);
    CPXDadosPermissaoUsuario flags;
    (void)controle.GetPermissoes(static_cast<CPXControlePermissoes::PXControlePermissao>(tela), &flags);
    // A permission record that cannot be read is a store that cannot be used.
    if (!controle.EhErroNenhum()) Erro(TextoServico(controle));
    const std::string falta = PXPermissaoQueFalta(tela, acao, flags);
    if (falta.empty()) return false;
    const std::string texto = "o usuário " + std::to_string(o.usuario) + " não tem a permissão " + falta +
                              " na tela " + std::to_string(tela) + " (" + PXNomeTipoPermissao(tela) + ")";
    s.Objeto()["type"] = tipo.Nome();
    s.Objeto()["allowed"] = false;
    s.Objeto()["written"] = false;
    s.Objeto()["user"] = o.usuario;
    s.Objeto()["kind"] = tela;
    s.Objeto()["permission"] = Utf8(falta);
    s.Objeto()["text"] = Utf8(texto);
    s.Linha("recusado: " + texto);
    return true;
}

int Save(const Opcoes& o, std::istream& entrada, Saida& s) {
    const IPXTipoHost& tipo = TipoOuErro(o.tipo);
    Sessao sessao(o, QZ_ABRE_EXISTENTE);
    const Json j = ParseJson(LeEntrada(o.arquivo, entrada, o.limites.linha), 1, o.limites);
    auto reg = Registro(tipo, j, 0);
    if (!tipo.Tratador(*reg))
        Erro(std::string("o tipo ") + tipo.Nome() + " não tem regras de gravação: carregue-o com import.");
    // A key names a stored record to change: one that is not there is bad
    // input, not a save the rules refuse.
    if (const int64_t chave = tipo.ChaveInformada(*reg)) {
        auto gravado = tipo.Novo();
        const long hr = tipo.Le(sessao.Armazem(), chave, *gravado);
        if (hr == QZ_E_REGISTRO_NAO_ENCONTRADO)
            Erro(std::string("não há ") + tipo.Nome() + " na chave " + pxjson::Trecho(j[tipo.CampoChave()].dump()) +
                     " para alterar; para incluir um registro, omita o campo.",
                 0, tipo.CampoChave());
        if (hr != 0) Erro(TextoServico(sessao.Armazem().GetErro()));
    }
    const EPXAcaoRegistro acao = tipo.ChaveInformada(*reg) ? EPXAcaoRegistro::ALTERAR : EPXAcaoRegistro::INCLUIR;
    if (RecusaSemPermissao(sessao, o, tipo, acao, s)) return kSaidaRecusado;

    CPXServicoRegistros servico(sessao.Host());
    CPXResultadoRegistro resultado;
    // The pointers are checked in the save's transaction: a record they
    // name cannot be deleted between the check and the write.
    const auto referencias = [&](CQZArmazemSQL& a) { PXConfereReferencias(a, tipo, *reg); };
    if (servico.Salva(tipo, *reg, o.simulacao, resultado, referencias) != 0) ErroServico(servico);
    s.Inconsistencias(resultado.inconsistencias);
    s.Objeto()["type"] = tipo.Nome();
    s.Objeto()["allowed"] = resultado.permitido;
    s.Objeto()["written"] = resultado.gravado;
    if (!resultado.permitido) {
        s.Objeto().update(Veredito(resultado.veredito));
        std::string onde;
        if (!resultado.lista.empty()) {
            s.Objeto()["list"] = resultado.lista;
            s.Objeto()["line"] = resultado.linha;
            onde = "lista " + resultado.lista + ", linha " + std::to_string(resultado.linha) + ": ";
        }
        s.Linha("recusado: " + onde + VereditoTexto(resultado.veredito));
        return kSaidaRecusado;
    }
    Json gravado = tipo.ParaJson(*reg);
    s.Linha(o.simulacao ? "permitido (simulação: nada foi gravado)" : "permitido: gravado");
    s.LinhaUtf8(gravado.dump(-1, ' ', false, Json::error_handler_t::replace));
    s.Objeto()["record"] = std::move(gravado);
    return kSaidaOk;
}

int Delete(const Opcoes& o, Saida& s) {
    const IPXTipoHost& tipo = TipoOuErro(o.tipo);
    const int64_t chave = ChaveDoArgumento(tipo, o.chave);
    Sessao sessao(o, QZ_ABRE_EXISTENTE);
    if (RecusaSemPermissao(sessao, o, tipo, EPXAcaoRegistro::EXCLUIR, s)) return kSaidaRecusado;
    CPXServicoRegistros servico(sessao.Host());
    std::unique_ptr<TQZBaseParaDados> reg;
    CPXResultadoRegistro resultado;
    const long hr = servico.Exclui(tipo, chave, reg, resultado, CPXOpcoesExclusao{o.situacao});
    if (hr == QZ_E_SEM_REGRAS) Erro(std::string("o tipo ") + tipo.Nome() + " não tem regras de exclusão.");
    if (hr != 0) ErroServico(servico);
    s.Inconsistencias(resultado.inconsistencias);
    s.Objeto()["type"] = tipo.Nome();
    s.Objeto()["key"] = o.chave;
    s.Objeto()["allowed"] = resultado.permitido;
    s.Objeto()["written"] = resultado.gravado;
    if (!resultado.permitido) {
        s.Objeto().update(Veredito(resultado.veredito));
        s.Linha("recusado: " + VereditoTexto(resultado.veredito));
        return kSaidaRecusado;
    }
    if (tipo.Exclusao() == EPXExclusao::CANCELAMENTO) {
        // Cancelled, not removed: the record as written.
        Json gravado = tipo.ParaJson(*reg);
        s.Linha(std::string("permitido: ") + tipo.Nome() + " " + o.chave + " cancelado");
        s.LinhaUtf8(gravado.dump(-1, ' ', false, Json::error_handler_t::replace));
        s.Objeto()["record"] = std::move(gravado);
        return kSaidaOk;
    }
    s.Linha(std::string("permitido: ") + tipo.Nome() + " " + o.chave + " excluído");
    return kSaidaOk;
}

int Suggest(const Opcoes& o, std::istream& entrada, Saida& s) {
    const IPXTipoHost& tipo = TipoOuErro("CQZDadosPX_Manutencao");
    Sessao sessao(o, QZ_ABRE_EXISTENTE);
    auto reg = Registro(tipo, ParseJson(LeEntrada(o.arquivo, entrada, o.limites.linha), 1, o.limites), 0);
    auto& ordem = dynamic_cast<CQZDadosPX_Manutencao&>(*reg);
    // Unasked, the plan's tasks (when the order has a plan) and the components.
    const bool nenhum = !o.tarefas && !o.componentes;
    const bool tarefas = o.tarefas || (nenhum && ordem.GetPonteiroPlano() != 0);
    const bool componentes = o.componentes || nenhum;

    CPXSugestoesManutencao sugestoes(sessao.Host());
    bool sugerido = false;
    CQZDadosGT_Erro veredito;
    if (sugestoes.Sugere(ordem, tarefas, componentes, sugerido, veredito) != 0) Erro(TextoServico(sugestoes.GetErro()));
    s.Objeto()["suggested"] = sugerido;
    if (!sugerido) {
        s.Objeto().update(Veredito(veredito));
        s.Linha("recusado: " + VereditoTexto(veredito));
        return kSaidaRecusado;
    }
    Json sugerida = tipo.ParaJson(ordem);
    s.LinhaUtf8(sugerida.dump(-1, ' ', false, Json::error_handler_t::replace));
    s.Objeto()["record"] = std::move(sugerida);
    return kSaidaOk;
}

int Permissions(const Opcoes& o, Saida& s) {
    if (o.tipoPermissao < CPXControlePermissoes::PX_PERMISSAO_CONFIGURACAO ||
        o.tipoPermissao > CPXControlePermissoes::PX_PERMISSAO_ALTERAR_ITEM_INF_DOC_FISCAL)
        Erro("KIND " + std::to_string(o.tipoPermissao) + " não é um tipo de permissão: os tipos vão de 1 a 29 (veja pxlreg help permissions).");
    Sessao sessao(o, QZ_ABRE_EXISTENTE);
    VerificaUsuario(sessao, o.usuario);
    CPXControlePermissoes controle;
    sessao.Inicializa(controle);
    CPXDadosPermissaoUsuario dados;
    const int alguma =
        controle.GetPermissoes(static_cast<CPXControlePermissoes::PXControlePermissao>(o.tipoPermissao), &dados);
    // The thirteen flags by their action names (TemPermissaoIncluir -> Incluir).
    Json flags = Json::object();
    const Json campos = pxjson::Campos(dados);
    for (auto it = campos.begin(); it != campos.end(); ++it)
        flags[it.key().substr(std::string("TemPermissao").size())] = it.value().get<int>() != 0;
    s.Objeto()["user"] = o.usuario;
    s.Objeto()["kind"] = o.tipoPermissao;
    s.Objeto()["any"] = alguma != 0;
    s.Objeto()["flags"] = flags;
    s.Linha("usuário " + std::to_string(o.usuario) + ", tipo " + std::to_string(o.tipoPermissao) + ": " +
            (alguma ? "com permissão" : "sem permissão"));
    for (auto it = flags.begin(); it != flags.end(); ++it)
        s.Linha("  " + it.key() + std::string(24 - std::min<size_t>(it.key().size(), 23), ' ') +
                (it.value().get<bool>() ? "1" : "0"));
    if (!controle.EhErroNenhum()) {
        // A permission record that could not be read denies what it would grant.
        s.Objeto()["service_error"] = Veredito(controle);
        s.Aviso("aviso: " + VereditoTexto(controle));
    }
    return kSaidaOk;
}

// The verdicts are rendered with the module's texts while commands run;
// the process's table is restored when the last running command ends.
class TabelaDoComando {
public:
    TabelaDoComando() {
        std::lock_guard<std::mutex> trava(s_mutex);
        if (s_ativos++ == 0) {
            s_anterior = CQZDadosGT_Erro::GetTabelaMensagens();
            CQZDadosGT_Erro::DefineTabelaMensagens(&CPXTabelaMensagens::Embutida());
        }
    }
    ~TabelaDoComando() {
        std::lock_guard<std::mutex> trava(s_mutex);
        if (--s_ativos == 0) CQZDadosGT_Erro::DefineTabelaMensagens(s_anterior);
    }
    TabelaDoComando(const TabelaDoComando&) = delete;
    TabelaDoComando& operator=(const TabelaDoComando&) = delete;

private:
    static inline std::mutex s_mutex;
    static inline int s_ativos = 0;
    static inline const IQZTabelaMensagens* s_anterior = nullptr;
};

// CLI11 shows descriptions as given: they go out in UTF-8.
std::string U(const char* cp1252) { return Utf8(std::string(cp1252)); }

}  // namespace

namespace {

// One record of an import, read and checked, waiting for its write.
struct RegistroLido {
    const IPXTipoHost* tipo;
    std::unique_ptr<TQZBaseParaDados> reg;
    long numero;
};

// Lines of the input, copied out of the reader's block, in input order;
// the reading's own error (a line too long, a read failure) after them.
struct LoteTexto {
    struct Linha {
        size_t inicio, tamanho;
        long numero;
    };
    uint64_t sequencia = 0;
    std::string texto;
    std::vector<Linha> linhas;
    std::exception_ptr erro;
};

// The same lines read into records; a bad line ends the batch with its error.
struct LoteLido {
    std::vector<RegistroLido> registros;
    std::exception_ptr erro;
};

// An import runs in stages: parser threads take batches of lines from one
// shared reader and parse them side by side (parsing is most of an import's
// work); the command's own thread writes the records in input order, in its
// transaction. A window of batches bounds memory, and since batches are
// written in order, the first bad line is the one reported.
class FilaImportacao {
public:
    static constexpr size_t kLinhasLote = 512;
    static constexpr size_t kBytesLote = size_t{1} << 20;
    static constexpr uint64_t kJanela = 8;

    FilaImportacao(Entrada& fonte, size_t maximoLinha) : m_leitor(fonte, maximoLinha) {}

    // Parser side: the next batch of lines; false at the end of the input
    // or when the writer gave up.
    bool ProximasLinhas(LoteTexto& lote) {
        std::lock_guard<std::mutex> trava(m_leitura);
        if (m_fimEntrada || Desistiu()) return false;
        lote.sequencia = m_sequencia++;
        lote.texto.clear();
        lote.linhas.clear();
        lote.erro = nullptr;
        try {
            std::string_view l;
            while (lote.linhas.size() < kLinhasLote && lote.texto.size() < kBytesLote) {
                if (!m_leitor.Proxima(l)) {
                    m_fimEntrada = true;
                    break;
                }
                if (l.find_first_not_of(" \t\r") == std::string_view::npos) continue;
                lote.linhas.push_back({lote.texto.size(), l.size(), m_leitor.Numero()});
                lote.texto.append(l);
            }
        } catch (...) {
            lote.erro = std::current_exception();
            m_fimEntrada = true;
        }
        return true;
    }
    // Parser side: a batch parsed; false when the writer gave up.
    bool Entrega(uint64_t sequencia, LoteLido&& lote) {
        std::unique_lock<std::mutex> trava(m_mutex);
        // The batch the writer waits for is always inside the window.
        m_cabe.wait(trava, [&] { return sequencia < m_proxima + kJanela || m_desistiu; });
        if (m_desistiu) return false;
        m_prontos.emplace(sequencia, std::move(lote));
        if (sequencia == m_proxima) m_pronto.notify_one();
        return true;
    }
    // Parser side: this parser takes no more batches. A failure outside any
    // batch (memory) may have lost one: it ends the import.
    void Termina(std::exception_ptr falha) {
        std::lock_guard<std::mutex> trava(m_mutex);
        ++m_terminados;
        if (falha && !m_falha) m_falha = std::move(falha);
        m_pronto.notify_one();
    }
    // Writer side: the next batch in input order; false at the end. The
    // parsers' count tells the end: when all have stopped, no batch is owed.
    bool Proximo(LoteLido& lote, size_t leitores) {
        std::unique_lock<std::mutex> trava(m_mutex);
        m_pronto.wait(trava, [&] { return m_prontos.count(m_proxima) || m_falha || m_terminados == leitores; });
        auto it = m_prontos.find(m_proxima);
        if (it == m_prontos.end()) {
            if (m_falha) std::rethrow_exception(m_falha);
            return false;
        }
        lote = std::move(it->second);
        m_prontos.erase(it);
        ++m_proxima;
        m_cabe.notify_all();
        return true;
    }
    void Desiste() {
        std::lock_guard<std::mutex> trava(m_mutex);
        m_desistiu = true;
        m_cabe.notify_all();
    }

private:
    bool Desistiu() {
        std::lock_guard<std::mutex> trava(m_mutex);
        return m_desistiu;
    }

    std::mutex m_leitura;  // the reader below and the numbering of batches
    LeitorLinhas m_leitor;
    uint64_t m_sequencia = 0;
    bool m_fimEntrada = false;

    std::mutex m_mutex;  // everything below
    std::condition_variable m_cabe, m_pronto;
    std::map<uint64_t, LoteLido> m_prontos;
    uint64_t m_proxima = 0;
    size_t m_terminados = 0;
    std::exception_ptr m_falha;
    bool m_desistiu = false;
};

// A parser stage: batches of lines into records until the input ends.
void LeRegistros(const CPXLimitesJson& limites, FilaImportacao& fila) {
    CPXLeitorRegistrosJson registros(limites);
    LoteTexto linhas;
    while (fila.ProximasLinhas(linhas)) {
        LoteLido lido;
        lido.registros.reserve(linhas.linhas.size());
        try {
            for (const auto& l : linhas.linhas) {
                const IPXTipoHost* tipo = nullptr;
                std::unique_ptr<TQZBaseParaDados> reg;
                try {
                    reg = registros.Le(std::string_view(linhas.texto).substr(l.inicio, l.tamanho), l.numero, tipo);
                } catch (const CPXErroLeituraJson& e) {
                    Erro(e.what(), e.Linha(), e.Campo());
                }
                lido.registros.push_back({tipo, std::move(reg), l.numero});
            }
            lido.erro = linhas.erro;
        } catch (...) {
            // The records before the bad line are written first: one of them
            // may fail earlier in the file.
            lido.erro = std::current_exception();
        }
        if (!fila.Entrega(linhas.sequencia, std::move(lido))) return;
    }
}

// Parsers beside the writer: one per core, at least one, at most four.
size_t LeitoresImportacao() { return std::clamp<size_t>(std::thread::hardware_concurrency(), 1, 4); }

}  // namespace

size_t PXImportaJsonLinhas(CQZArmazemSQL& armazem, std::istream& entrada, const CPXLimitesJson& limites,
                           const std::string& nome) {
    size_t registros = 0;
    long linhaFalha = 0;
    // All or nothing in one transaction; memory stays that of a few batches.
    const long hr = armazem.EmTransacao("Importa", [&]() -> long {
        Entrada fonte(entrada, nome);
        FilaImportacao fila(fonte, limites.linha);
        std::vector<std::thread> leitores;
        // The parsers stop and are joined however the writes end.
        struct Espera {
            FilaImportacao& fila;
            std::vector<std::thread>& leitores;
            ~Espera() {
                fila.Desiste();
                for (auto& t : leitores) t.join();
            }
        } espera{fila, leitores};
        const size_t quantos = LeitoresImportacao();
        for (size_t i = 0; i < quantos; ++i)
            leitores.emplace_back([&] {
                std::exception_ptr falha;
                try {
                    LeRegistros(limites, fila);
                } catch (...) {
                    falha = std::current_exception();
                }
                fila.Termina(std::move(falha));
            });
        LoteLido lote;
        while (fila.Proximo(lote, quantos)) {
            for (auto& r : lote.registros) {
                if (long falha = r.tipo->Restaura(armazem, *r.reg)) {
                    linhaFalha = r.numero;
                    return falha;
                }
                ++registros;
            }
            if (lote.erro) std::rethrow_exception(lote.erro);
        }
        PXConfereReferenciasImportadas(armazem);
        return 0;
    });
    if (hr != 0) Erro(TextoServico(armazem.GetErro()), linhaFalha);
    return registros;
}

size_t PXImportaJsonLinhas(CQZArmazemSQL& armazem, std::string_view texto, const CPXLimitesJson& limites) {
    // The text read in place, without a copy.
    struct Memoria : std::streambuf {
        explicit Memoria(std::string_view t) {
            char* p = const_cast<char*>(t.data());
            setg(p, p, p + t.size());
        }
    } memoria(texto);
    std::istream entrada(&memoria);
    return PXImportaJsonLinhas(armazem, entrada, limites);
}

namespace {

// CLI11's own words, in the program's language.
void EmPortugues(CLI::App& app) {
    auto formato = app.get_formatter();
    for (const auto& [chave, texto] : std::initializer_list<std::pair<const char*, const char*>>{
             {"Usage", "Uso"}, {"OPTIONS", "OPÇÕES"}, {"Positionals", "Argumentos"}, {"REQUIRED", "OBRIGATÓRIO"},
             {"Env", "Variável"}, {"Needs", "Requer"}, {"Excludes", "Exclui"}, {"TEXT", "TEXTO"},
             {"INT", "INTEIRO"}, {"UINT", "NATURAL"}, {"SIZE", "TAMANHO"}})
        formato->label(chave, Utf8(std::string(texto)));
    app.option_defaults()->group(Utf8(std::string("Opções")));
    app.set_help_flag("-h,--help", Utf8(std::string("mostra esta ajuda")));
}

// A usage error of CLI11 told in Portuguese: what is wrong, then the
// library's detail (names and values as given).
std::string ErroDeUsoEmPortugues(const CLI::ParseError& e) {
    const std::string texto = e.what(), nome = e.get_name();
    auto depois = [&](const std::string& marca) {
        const size_t p = texto.find(marca);
        return p == std::string::npos ? texto : texto.substr(p + marca.size());
    };
    if (nome == "RequiredError") {
        const size_t p = texto.find(" is required");
        if (p != std::string::npos) return "falta " + texto.substr(0, p) + Utf8(std::string(", que é obrigatório."));
        return Utf8(std::string("falta um argumento obrigatório: ")) + texto;
    }
    if (texto.find("not expected:") != std::string::npos) return "argumentos a mais:" + depois("not expected:");
    if (nome == "ConversionError" || nome == "ValidationError" || nome == "ArgumentMismatch")
        return Utf8(std::string("valor inválido: ")) + texto;
    return Utf8(std::string("uso inválido: ")) + texto;
}

// The names of the commands, for the messages that list them.
std::string ListaComandos(const CLI::App& app) {
    std::string lista;
    for (const CLI::App* sub : app.get_subcommands({}))
        lista += (lista.empty() ? "" : ", ") + sub->get_name();
    return lista;
}

int FalhaDeUso(const std::string& textoUtf8, bool json, std::ostream& saida, std::ostream& erros) {
    if (json)
        saida << Json{{"command", nullptr}, {"error", {{"text", textoUtf8}}}}.dump(-1, ' ', false, Json::error_handler_t::replace)
              << '\n';
    else
        erros << "pxlreg: erro: " << textoUtf8 << '\n' << Utf8(std::string("Ajuda: pxlreg --help")) << '\n';
    return kSaidaErro;
}

int ComandoDesconhecido(const CLI::App& app, const std::string& nome, bool json, std::ostream& saida,
                        std::ostream& erros) {
    return FalhaDeUso(Utf8("comando desconhecido \"" + pxjson::Trecho(nome) + "\"; os comandos são: " +
                           ListaComandos(app) + "."),
                      json, saida, erros);
}

// A usage error: an unknown command is named with the list of commands;
// --json is honoured here too.
int ErroDeUso(const CLI::App& app, const std::vector<std::string>& argumentos, const CLI::ParseError& e,
              std::ostream& saida, std::ostream& erros) {
    const bool json = std::find(argumentos.begin(), argumentos.end(), "--json") != argumentos.end();
    static const std::set<std::string> kComValor = {"--wait", "--max-line", "--max-text", "--max-list"};
    for (size_t i = 1; i < argumentos.size(); ++i) {
        const std::string& a = argumentos[i];
        if (kComValor.count(a)) {
            ++i;
            continue;
        }
        if (a.empty() || a[0] == '-') continue;
        bool conhecido = false;
        for (const CLI::App* sub : app.get_subcommands({})) conhecido = conhecido || sub->get_name() == a;
        if (!conhecido) return ComandoDesconhecido(app, a, json, saida, erros);
        break;
    }
    if (app.get_subcommands().empty() && argumentos.size() <= 1)
        return FalhaDeUso(Utf8("falta o comando; os comandos são: " + ListaComandos(app) + "."), json, saida, erros);
    return FalhaDeUso(ErroDeUsoEmPortugues(e), json, saida, erros);
}

int Comando(const std::vector<std::string>& argumentos, std::istream& entrada, std::ostream& saida,
            std::ostream& erros) {
    TabelaDoComando tabela;
    Opcoes o;
    CLI::App app{U("pxlreg: as regras do módulo de manutenção sobre um armazém SQLite")};
    EmPortugues(app);
    app.require_subcommand(1);
    app.fallthrough();
    app.set_version_flag("--version", "pxlreg " PXLREG_VERSAO, U("mostra a versão"));
    app.footer(U("Saída: 0 feito (ou permitido); 1 recusado pelas regras ou pelas permissões (o veredito é "
                 "mostrado), ou check com danos; 2 entrada inválida, armazém inutilizável, saída que não pôde ser "
                 "escrita ou erro de uso.\nAjuda de um comando: pxlreg help COMANDO."));
    app.add_flag("--json", o.json, U("saída em JSON, um objeto por comando"));
    app.add_option("--wait", o.esperaMs, U("quanto uma gravação espera por outra, em milissegundos"))
        ->check(CLI::Range(0, 600000));
    // Limits of one JSON record (save) or line (import); sizes take a unit: 16MiB, 64KiB.
    constexpr size_t kSemLimite = std::numeric_limits<size_t>::max();
    app.add_option("--max-line", o.limites.linha, U("maior linha de import, ou registro de save, em bytes (16MiB)"))
        ->transform(CLI::AsSizeValue(false))
        ->check(CLI::Range(size_t{1}, kSemLimite));
    app.add_option("--max-text", o.limites.texto, U("maior texto de um campo, em bytes de UTF-8 (64KiB)"))
        ->transform(CLI::AsSizeValue(false))
        ->check(CLI::Range(size_t{1}, kSemLimite));
    app.add_option("--max-list", o.limites.lista, U("mais elementos de uma lista, ou campos de um objeto (100000)"))
        ->check(CLI::Range(size_t{1}, kSemLimite));

    auto* init = app.add_subcommand("init", U("cria um armazém"));
    init->add_option("STORE", o.armazem, U("arquivo do armazém"))->required();
    auto* demo = init->add_flag("--demo", o.demo, U("preenche uma planta de demonstração"));
    init->add_option("--at", o.diaDemo, U("o dia em torno do qual a demonstração põe suas datas, AAAA-MM-DD (sem ele, hoje)"))
        ->needs(demo);

    auto* import = app.add_subcommand("import", U("importa registros em JSON Lines: todos ou nenhum"));
    import->add_option("STORE", o.armazem, U("arquivo do armazém"))->required();
    import->add_option("FILE", o.arquivo, U("arquivo JSON Lines, ou - para a entrada padrão"))->required();

    auto* exporta = app.add_subcommand("export", U("exporta os registros em JSON Lines"));
    exporta->add_option("STORE", o.armazem, U("arquivo do armazém"))->required();
    exporta->add_option("--type", o.tipo, U("só os registros deste tipo"));

    auto* save = app.add_subcommand("save", U("grava um registro se as regras permitirem"));
    save->add_option("STORE", o.armazem, U("arquivo do armazém"))->required();
    save->add_option("TYPE", o.tipo, U("tipo do registro, como CQZDadosPX_Prioridade ou Prioridade"))->required();
    save->add_option("FILE", o.arquivo, U("o registro em JSON, ou - para a entrada padrão"))->required();
    save->add_option("--company", o.empresa, U("empresa da sessão"));
    save->add_option("--user", o.usuario, U("código do usuário que grava (ou a variável PXLREG_USER; sem os dois, 1)"))
        ->envname("PXLREG_USER")
        ->check(CLI::Range(0, 65535));
    save->add_flag("--dry-run", o.simulacao, U("só consulta as regras, sem gravar"));

    auto* del = app.add_subcommand("delete", U("exclui um registro se as regras permitirem"));
    del->add_option("STORE", o.armazem, U("arquivo do armazém"))->required();
    del->add_option("TYPE", o.tipo, U("tipo do registro, como CQZDadosPX_Tarefa ou Tarefa (veja pxlreg help)"))->required();
    del->add_option("POSITION", o.chave, U("posição do registro (ou chave AAAA-MM/N de um movimento)"))->required();
    del->add_option("--company", o.empresa, U("empresa da sessão"));
    del->add_option("--user", o.usuario, U("código do usuário que exclui (ou a variável PXLREG_USER; sem os dois, 1)"))
        ->envname("PXLREG_USER")
        ->check(CLI::Range(0, 65535));
    del->add_option("--situation", o.situacao, U("posição da situação de cancelamento de uma manutenção"));

    auto* suggest = app.add_subcommand("suggest", U("completa uma manutenção com as sugestões da tela, sem gravar"));
    suggest->add_option("STORE", o.armazem, U("arquivo do armazém"))->required();
    suggest->add_option("FILE", o.arquivo, U("a manutenção em JSON, ou - para a entrada padrão"))->required();
    suggest->add_flag("--tasks", o.tarefas, U("as tarefas do plano, com as datas de garantia"));
    suggest->add_flag("--components", o.componentes, U("materiais, equipamentos e serviços das tarefas"));
    suggest->add_option("--company", o.empresa, U("empresa da sessão"));

    auto* perm = app.add_subcommand("permissions", U("as treze permissões de um usuário em uma tela ou função"));
    perm->add_option("STORE", o.armazem, U("arquivo do armazém"))->required();
    std::string tiposPermissao = "a tela ou função, de 1 a 29:";
    for (int k = 1; k <= 29; ++k) tiposPermissao += " " + std::to_string(k) + " " + PXNomeTipoPermissao(k) + (k < 29 ? ";" : ".");
    perm->add_option("KIND", o.tipoPermissao, Utf8(tiposPermissao))->required();
    perm->add_option("--user", o.usuario, U("código do usuário (ou a variável PXLREG_USER)"))
        ->envname("PXLREG_USER")
        ->required()
        ->check(CLI::Range(0, 65535));
    perm->add_option("--company", o.empresa, U("empresa da sessão"));
    std::string comandoAjuda;
    auto* ajuda = app.add_subcommand("help", U("mostra a ajuda do programa, ou de um comando"));
    ajuda->add_option("COMMAND", comandoAjuda, U("o comando"));
    const CPXComandoAdicional adicionais[] = {PXComandoContaEmail(app), PXComandoModelo(app),
                                              PXComandoVerifica(app), PXComandoTipos(app), PXComandoMensagens(app),
                                              PXComandoExemplo(app),
                                              PXComandoAlertas(app), PXComandoDaemon(app)};

    for (CLI::App* sub : app.get_subcommands({})) {
        sub->group("Comandos");
        if (CLI::Option* ajuda = sub->get_help_ptr()) ajuda->group(Utf8(std::string("Opções")));
    }
    std::vector<const char*> argv;
    for (const auto& a : argumentos) argv.push_back(a.c_str());
    try {
        app.parse(static_cast<int>(argv.size()), argv.data());
    } catch (const CLI::ParseError& e) {
        if (e.get_exit_code() == 0) {
            (void)app.exit(e, saida, erros);
            return kSaidaOk;
        }
        return ErroDeUso(app, argumentos, e, saida, erros);
    }
    if (ajuda->parsed()) {
        CLI::App* alvo = &app;
        if (!comandoAjuda.empty()) {
            alvo = nullptr;
            for (CLI::App* sub : app.get_subcommands({}))
                if (sub->get_name() == comandoAjuda) alvo = sub;
            if (!alvo) return ComandoDesconhecido(app, comandoAjuda, o.json, saida, erros);
        }
        saida << alvo->help();
        return kSaidaOk;
    }

    for (const auto& c : adicionais)
        if (c.sub->parsed()) return c.executa(o.json, saida, erros);
    const char* comando = app.get_subcommands().front()->get_name().c_str();
    Saida s(o, comando, saida, erros);
    try {
        int codigo = kSaidaErro;
        if (init->parsed())
            codigo = Init(o, s);
        else if (import->parsed())
            codigo = Import(o, entrada, s);
        else if (exporta->parsed())
            return Export(o, saida);
        else if (save->parsed())
            codigo = Save(o, entrada, s);
        else if (del->parsed())
            codigo = Delete(o, s);
        else if (suggest->parsed())
            codigo = Suggest(o, entrada, s);
        else if (perm->parsed())
            codigo = Permissions(o, s);
        s.Conclui();
        return codigo;
    } catch (const CPXErroEntrada& e) {
        return s.Falha(e);
    } catch (const std::exception& e) {
        return s.Falha(CPXErroEntrada{std::string("falha inesperada: ") + e.what(), 0, {}});
    }
}

}  // namespace

int PXLinhaComando(const std::vector<std::string>& argumentos, std::istream& entrada, std::ostream& saida,
                   std::ostream& erros) {
    int codigo;
    try {
        codigo = Comando(argumentos, entrada, saida, erros);
    } catch (const CPXErroSaida&) {
        codigo = kSaidaErro;
        saida.setstate(std::ios::badbit);
    }
    // Output that was not all written fails the command, whatever it did:
    // a cut export must never look complete.
    if (saida.flush()) return codigo;
    erros << "pxlreg: erro: " << Utf8(std::string("não foi possível escrever a saída (disco cheio, ou a saída foi fechada).")) << '\n';
    erros.flush();
    return kSaidaErro;
}
