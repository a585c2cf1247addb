#include "host/PXComandos.h"

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <fstream>
#include <iostream>
#include <map>
#include <memory>
#include <mutex>
#include <sstream>

#include "host/PXComandosAdicionais.h"
#include "host/PXDadosEmbutidos.h"
#include "host/PXLeituraJson.h"
#include "host/PXTabelaMensagens.h"
#include "host/PXTiposHost.h"
#include "permissions/PXControlePermissoes.h"
#include "platform/QZCodigosResultado.h"
#include "servico/PXServicoRegistros.h"
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
    bool simulacao = false;
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

// A store opened for a command: its company registered with a factory of
// connections to it (every routine object opens its own), and a connection
// of the command's own for what it reads and writes outside the rules.
class Sessao {
public:
    Sessao(const Opcoes& o, QZModoAbertura modo)
        : m_fabrica(std::make_shared<CQZFabricaArmazemSQL>(o.armazem, QZ_ABRE_EXISTENTE, o.esperaMs)) {
        CQZDadosGT_Erro erro;
        // The first connection creates the store when asked to.
        m_armazem = std::make_unique<CQZArmazemSQL>(o.armazem, modo, o.esperaMs);
        if (!m_armazem->EstaAberto()) Erro(TextoServico(m_armazem->GetErro()));
        m_sessao.empresa = CString(o.empresa);
        m_sessao.usuario = static_cast<uint16_t>(o.usuario);
        m_sessao.sessao = static_cast<uint32_t>(getpid());
        CQZServicosEmpresa servicos;
        servicos.pFabrica = m_fabrica;
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

// The whole input, refused as soon as it passes `maximo` bytes: a huge input
// is never held whole only to be refused.
std::string LeEntrada(const std::string& arquivo, std::istream& entrada, size_t maximo = std::string::npos) {
    std::ifstream f;
    std::istream* in = &entrada;
    if (arquivo != "-") {
        f.open(arquivo, std::ios::binary);
        if (!f) Erro("não foi possível ler o arquivo " + arquivo + ".");
        in = &f;
    }
    std::string texto;
    char bloco[1 << 16];
    while (in->read(bloco, sizeof bloco) || in->gcount() > 0) {
        texto.append(bloco, static_cast<size_t>(in->gcount()));
        if (texto.size() > maximo)
            Erro("a entrada passa de " + std::to_string(maximo) + " bytes, o limite de um registro (--max-line).");
    }
    if (in->bad()) Erro("não foi possível ler " + (arquivo == "-" ? std::string("a entrada padrão") : arquivo) + ".");
    return texto;
}

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

int Init(const Opcoes& o, Saida& s) {
    // On a server the store is the database (or schema) the URL names.
    const bool servidor = qzsql::EhUrlPostgres(o.armazem);
    if (servidor ? CQZArmazemSQL(o.armazem, QZ_ABRE_EXISTENTE, o.esperaMs).EstaAberto()
                 : o.armazem != ":memory:" && access(o.armazem.c_str(), F_OK) == 0)
        Erro("o armazém " + o.armazem + " já existe.");
    size_t registros = 0;
    try {
        Sessao sessao(o, QZ_ABRE_OU_CRIA);
        if (o.demo) registros = PXImportaJsonLinhas(sessao.Armazem(), PXTextoDemo());
    } catch (...) {
        // Nothing half-made is left behind: the file did not exist.
        if (!servidor)
            for (const char* sufixo : {"", "-wal", "-shm"}) std::remove((o.armazem + sufixo).c_str());
        throw;
    }
    s.Objeto()["store"] = o.armazem;
    s.Objeto()["schema"] = CQZArmazemSQL::kVersaoEsquema;
    s.Objeto()["records"] = registros;
    s.Linha("armazém criado: " + o.armazem + " (esquema " + std::to_string(CQZArmazemSQL::kVersaoEsquema) + ")");
    if (o.demo) s.Linha("planta de demonstração: " + std::to_string(registros) + " registros");
    return kSaidaOk;
}

int Import(const Opcoes& o, std::istream& entrada, Saida& s) {
    Sessao sessao(o, QZ_ABRE_EXISTENTE);
    const std::string texto = LeEntrada(o.arquivo, entrada);
    size_t registros = PXImportaJsonLinhas(sessao.Armazem(), texto, o.limites);
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
    std::string linhas, falha;
    // One read transaction: the export is one moment of the store, and it
    // never waits for a writer.
    long hr = a.EmLeitura("Exporta", [&]() -> long {
        for (const IPXTipoHost* t : tipos) {
            std::vector<int64_t> chaves;
            if (long r = t->Chaves(a, chaves)) return r;
            for (int64_t chave : chaves) {
                auto reg = t->Novo();
                if (long r = t->Le(a, chave, *reg)) return r;
                try {
                    linhas += t->ParaJson(*reg).dump(-1, ' ', false) + '\n';
                } catch (const CPXErroJson& e) {
                    falha = std::string(t->Nome()) + " na chave " + std::to_string(chave) + ": " + e.what();
                    return QZ_E_REGISTRO_INVALIDO;
                }
            }
        }
        return 0;
    });
    if (!falha.empty()) Erro(falha);
    if (hr != 0) Erro(TextoServico(a.GetErro()));
    saida << linhas;
    return kSaidaOk;
}

// The failure of a save or a delete that the rules did not answer.
[[noreturn]] void ErroServico(const CPXServicoRegistros& servico) { Erro(TextoServico(servico.GetErro())); }

int Save(const Opcoes& o, std::istream& entrada, Saida& s) {
    const IPXTipoHost& tipo = TipoOuErro(o.tipo);
    Sessao sessao(o, QZ_ABRE_EXISTENTE);
    const Json j = ParseJson(LeEntrada(o.arquivo, entrada, o.limites.linha), 1, o.limites);
    auto reg = Registro(tipo, j, 0);
    if (!tipo.Tratador(*reg))
        Erro(std::string("o tipo ") + tipo.Nome() + " não tem regras de gravação: carregue-o com import.");

    CPXServicoRegistros servico(sessao.Host());
    CPXResultadoRegistro resultado;
    if (servico.Salva(tipo, *reg, o.simulacao, resultado) != 0) ErroServico(servico);
    s.Inconsistencias(resultado.inconsistencias);
    s.Objeto()["type"] = tipo.Nome();
    s.Objeto()["allowed"] = resultado.permitido;
    s.Objeto()["written"] = resultado.gravado;
    if (!resultado.permitido) {
        s.Objeto().update(Veredito(resultado.veredito));
        s.Linha("recusado: " + VereditoTexto(resultado.veredito));
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
    CPXServicoRegistros servico(sessao.Host());
    std::unique_ptr<TQZBaseParaDados> reg;
    CPXResultadoRegistro resultado;
    const long hr = servico.Exclui(tipo, chave, reg, resultado);
    if (hr == QZ_E_SEM_REGRAS) Erro(std::string("o tipo ") + tipo.Nome() + " não tem regras de exclusão.");
    if (hr == QZ_E_REGISTRO_NAO_ENCONTRADO)
        Erro(std::string("não há ") + tipo.Nome() + " na chave " + o.chave + ": " + TextoServico(servico.GetErro()));
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
    s.Linha(std::string("permitido: ") + tipo.Nome() + " " + o.chave + " excluído");
    return kSaidaOk;
}

int Permissions(const Opcoes& o, Saida& s) {
    Sessao sessao(o, QZ_ABRE_EXISTENTE);
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

size_t PXImportaJsonLinhas(CQZArmazemSQL& armazem, std::string_view texto, const CPXLimitesJson& limites) {
    struct Linha {
        const IPXTipoHost* tipo;
        std::unique_ptr<TQZBaseParaDados> reg;
        long numero;
    };
    std::vector<Linha> linhas;
    long numero = 0;
    for (size_t inicio = 0; inicio < texto.size();) {
        size_t fim = texto.find('\n', inicio);
        if (fim == std::string_view::npos) fim = texto.size();
        std::string_view l = texto.substr(inicio, fim - inicio);
        inicio = fim + 1;
        ++numero;
        if (l.find_first_not_of(" \t\r") == std::string_view::npos) continue;
        Json j = ParseJson(l, numero, limites);
        if (!j.is_object()) Erro("esperava um objeto JSON", numero);
        auto t = j.find("type");
        if (t == j.end() || !t->is_string()) Erro("falta o tipo do registro", numero, "type");
        const IPXTipoHost* tipo = PXBuscaTipoHost(t->get<std::string>());
        if (!tipo || t->get<std::string>() != tipo->Nome())
            Erro("tipo de registro desconhecido \"" + pxjson::Trecho(t->get<std::string>()) + "\"", numero, "type");
        linhas.push_back({tipo, Registro(*tipo, j, numero), numero});
    }
    long linhaFalha = 0;
    long hr = armazem.EmTransacao("Importa", [&]() -> long {
        for (auto& l : linhas) {
            if (long r = l.tipo->Restaura(armazem, *l.reg)) {
                linhaFalha = l.numero;
                return r;
            }
        }
        return 0;
    });
    if (hr != 0) Erro(TextoServico(armazem.GetErro()), linhaFalha);
    return linhas.size();
}

int PXLinhaComando(const std::vector<std::string>& argumentos, std::istream& entrada, std::ostream& saida,
                   std::ostream& erros) {
    TabelaDoComando tabela;
    Opcoes o;
    CLI::App app{U("pxlreg: as regras do módulo de manutenção sobre um armazém SQLite")};
    app.require_subcommand(1);
    app.fallthrough();
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
    init->add_flag("--demo", o.demo, U("preenche uma planta de demonstração"));

    auto* import = app.add_subcommand("import", U("importa registros em JSON Lines: todos ou nenhum"));
    import->add_option("STORE", o.armazem)->required();
    import->add_option("FILE", o.arquivo, U("arquivo JSON Lines, ou - para a entrada padrão"))->required();

    auto* exporta = app.add_subcommand("export", U("exporta os registros em JSON Lines"));
    exporta->add_option("STORE", o.armazem)->required();
    exporta->add_option("--type", o.tipo, U("só os registros deste tipo"));

    auto* save = app.add_subcommand("save", U("grava um registro se as regras permitirem"));
    save->add_option("STORE", o.armazem)->required();
    save->add_option("TYPE", o.tipo, U("tipo do registro, como CQZDadosPX_Prioridade ou Prioridade"))->required();
    save->add_option("FILE", o.arquivo, U("o registro em JSON, ou - para a entrada padrão"))->required();
    save->add_option("--company", o.empresa, U("empresa da sessão"));
    save->add_option("--user", o.usuario, U("código do usuário da sessão"))->check(CLI::Range(0, 65535));
    save->add_flag("--dry-run", o.simulacao, U("só consulta as regras, sem gravar"));

    auto* del = app.add_subcommand("delete", U("exclui um registro se as regras permitirem"));
    del->add_option("STORE", o.armazem)->required();
    del->add_option("TYPE", o.tipo)->required();
    del->add_option("POSITION", o.chave, U("posição do registro (ou chave AAAA-MM/N de um movimento)"))->required();
    del->add_option("--company", o.empresa, U("empresa da sessão"));
    del->add_option("--user", o.usuario, U("código do usuário da sessão"))->check(CLI::Range(0, 65535));

    auto* perm = app.add_subcommand("permissions", U("as treze permissões de um usuário em uma tela ou função"));
    perm->add_option("STORE", o.armazem)->required();
    perm->add_option("KIND", o.tipoPermissao, U("a tela ou função (1 a 29)"))->required();
    perm->add_option("--user", o.usuario, U("código do usuário"))->required()->check(CLI::Range(0, 65535));
    perm->add_option("--company", o.empresa, U("empresa da sessão"));
    const CPXComandoAdicional adicionais[] = {PXComandoContaEmail(app), PXComandoModelo(app)};

    std::vector<const char*> argv;
    for (const auto& a : argumentos) argv.push_back(a.c_str());
    try {
        app.parse(static_cast<int>(argv.size()), argv.data());
    } catch (const CLI::ParseError& e) {
        int codigo = app.exit(e, saida, erros);
        return codigo == 0 ? kSaidaOk : kSaidaErro;
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
