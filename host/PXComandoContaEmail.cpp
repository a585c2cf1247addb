// pxlreg email-account set|show STORE: the company's e-mail account. The
// password is never given here: only where it comes from (an environment
// variable or an owner-only file), and show never reads it.
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>

#include "host/PXComandosAdicionais.h"
#include "mail/QZFormatoEmail.h"
#include "store/QZArmazemSQL.h"

namespace {

struct OpcoesConta {
    std::string armazem;
    std::optional<std::string> transporte, url, usuario, senhaAmbiente, senhaArquivo, remetente, nomeRemetente, pasta;
    std::optional<int> porta, tempoLimite;
    std::optional<bool> startTls;
    bool semSenha = false;
};

struct ErroConta {
    std::string texto;  // Windows-1252, as the program's other texts; UTF-8 only when printed
};

CString Cp1252(const std::string& utf8, const char* campo) {
    std::string cp, erro;
    if (!QZUtf8ParaCp1252(utf8, cp, &erro)) throw ErroConta{std::string(campo) + ": " + erro};
    return CString(cp);
}

std::string Utf8(const CString& s) { return QZParaUtf8(s); }

const char* NomeTransporte(uint8_t t) {
    return t == E_GT_TRANSPORTE_EMAIL_CAIXA_SAIDA ? "outbox" : t == E_GT_TRANSPORTE_EMAIL_SMTP ? "smtp" : "?";
}

nlohmann::ordered_json ParaJson(const CQZDadosGT_ContaEmail& c, uint64_t id) {
    nlohmann::ordered_json senha;
    switch (c.GetOrigemSenha()) {
        case E_GT_ORIGEM_SENHA_EMAIL_AMBIENTE: senha = {{"env", Utf8(c.GetReferenciaSenha())}}; break;
        case E_GT_ORIGEM_SENHA_EMAIL_ARQUIVO: senha = {{"file", Utf8(c.GetReferenciaSenha())}}; break;
        default: senha = nullptr;
    }
    return {{"configured", id != 0},
            {"transport", NomeTransporte(c.GetTransporte())},
            {"url", Utf8(c.GetUrl())},
            {"port", c.GetPorta()},
            {"starttls_required", c.GetExigeStartTls() != 0},
            {"user", Utf8(c.GetUsuario())},
            {"password_source", senha},
            {"from", Utf8(c.GetEnderecoRemetente())},
            {"from_name", Utf8(c.GetNomeRemetente())},
            {"outbox", Utf8(c.GetPastaSaida())},
            {"timeout_seconds", c.GetTempoLimiteSegundos()}};
}

void Valida(const CQZDadosGT_ContaEmail& c) {
    if (!c.GetEnderecoRemetente().IsEmpty() && !QZEnderecoValido(c.GetEnderecoRemetente().str()))
        throw ErroConta{"endereço de remetente inválido: " + c.GetEnderecoRemetente().str()};
    const std::string url = c.GetUrl().str();
    if (c.GetTransporte() == E_GT_TRANSPORTE_EMAIL_SMTP && !url.empty() && url.rfind("smtp://", 0) != 0 &&
        url.rfind("smtps://", 0) != 0)
        throw ErroConta{"a URL deve começar por smtp:// ou smtps://: " + url};
    if (c.GetOrigemSenha() == E_GT_ORIGEM_SENHA_EMAIL_ARQUIVO && c.GetReferenciaSenha().str().rfind('/', 0) != 0)
        throw ErroConta{"o arquivo da senha deve ter caminho absoluto: " + c.GetReferenciaSenha().str()};
}

int Executa(const OpcoesConta& o, bool definir, bool json, std::ostream& saida) {
    CQZArmazemSQL armazem(o.armazem, QZ_ABRE_EXISTENTE);
    auto falhaServico = [&] { return ErroConta{armazem.GetErro().GetMensagem().str()}; };
    if (!armazem.EstaAberto()) throw falhaServico();
    CQZDadosGT_ContaEmail conta;
    if (armazem.LeContaEmail(&conta) != 0) throw falhaServico();
    if (definir) {
        if (o.transporte) {
            if (*o.transporte == "smtp")
                conta.SetTransporte(E_GT_TRANSPORTE_EMAIL_SMTP);
            else if (*o.transporte == "outbox")
                conta.SetTransporte(E_GT_TRANSPORTE_EMAIL_CAIXA_SAIDA);
            else
                throw ErroConta{"transporte desconhecido \"" + Cp1252(*o.transporte, "--transport").str() +
                                "\": use smtp ou outbox"};
        }
        if (o.url) conta.SetUrl(Cp1252(*o.url, "--url"));
        if (o.porta) conta.SetPorta(static_cast<uint16_t>(*o.porta));
        if (o.startTls) conta.SetExigeStartTls(*o.startTls ? 1 : 0);
        if (o.usuario) conta.SetUsuario(Cp1252(*o.usuario, "--user"));
        if (o.semSenha) conta.SetOrigemSenha(E_GT_ORIGEM_SENHA_EMAIL_NENHUMA).SetReferenciaSenha("");
        if (o.senhaAmbiente)
            conta.SetOrigemSenha(E_GT_ORIGEM_SENHA_EMAIL_AMBIENTE).SetReferenciaSenha(Cp1252(*o.senhaAmbiente, "--password-env"));
        if (o.senhaArquivo)
            conta.SetOrigemSenha(E_GT_ORIGEM_SENHA_EMAIL_ARQUIVO).SetReferenciaSenha(Cp1252(*o.senhaArquivo, "--password-file"));
        if (o.remetente) conta.SetEnderecoRemetente(Cp1252(*o.remetente, "--from"));
        if (o.nomeRemetente) conta.SetNomeRemetente(Cp1252(*o.nomeRemetente, "--from-name"));
        if (o.pasta) conta.SetPastaSaida(Cp1252(*o.pasta, "--outbox"));
        if (o.tempoLimite) conta.SetTempoLimiteSegundos(static_cast<uint16_t>(*o.tempoLimite));
        Valida(conta);
        if (armazem.Grava(conta) != 0) throw falhaServico();
    }
    uint64_t id = 0;
    if (armazem.GetEmailContaConfigurada(&id, QZ_MODULO_GT) != 0) throw falhaServico();
    const auto j = ParaJson(conta, id);
    if (json) {
        nlohmann::ordered_json saidaJson{{"command", definir ? "email-account set" : "email-account show"}};
        saidaJson["account"] = j;
        saida << saidaJson.dump() << "\n";
        return 0;
    }
    saida << (id ? "conta de e-mail configurada" : QZParaUtf8(CString("nenhuma conta de e-mail configurada"))) << "\n";
    for (auto it = j.begin(); it != j.end(); ++it) {
        if (it.key() == "configured") continue;
        std::string valor;
        if (it.key() == "password_source")
            valor = it->is_null() ? "nenhuma"
                    : it->contains("env") ? QZParaUtf8(CString("variável de ambiente ")) + (*it)["env"].get<std::string>()
                                          : "arquivo " + (*it)["file"].get<std::string>();
        else
            valor = it->is_string() ? it->get<std::string>() : it->dump();
        saida << "  " << it.key() << std::string(it.key().size() < 18 ? 18 - it.key().size() : 1, ' ') << valor << "\n";
    }
    return 0;
}

}  // namespace

CPXComandoAdicional PXComandoContaEmail(CLI::App& app) {
    auto o = std::make_shared<OpcoesConta>();
    auto* conta = app.add_subcommand("email-account", QZParaUtf8(CString("a conta de e-mail da empresa (alertas dos planos)")));
    conta->require_subcommand(1);
    auto* set = conta->add_subcommand("set", QZParaUtf8(CString("altera a conta: só o que for informado")));
    auto* show = conta->add_subcommand("show", QZParaUtf8(CString("mostra a conta (nunca a senha)")));
    for (auto* s : {set, show}) s->add_option("STORE", o->armazem, QZParaUtf8(CString("arquivo do armazém")))->required();
    set->add_option("--transport", o->transporte, QZParaUtf8(CString("smtp ou outbox (um arquivo .eml por mensagem)")));
    set->add_option("--url", o->url, QZParaUtf8(CString("servidor: smtp://host ou smtps://host")));
    set->add_option("--port", o->porta, QZParaUtf8(CString("porta (0: a do esquema)")))->check(CLI::Range(0, 65535));
    set->add_option("--starttls", o->startTls, QZParaUtf8(CString("exige STARTTLS (true/false)")));
    set->add_option("--user", o->usuario, QZParaUtf8(CString("usuário do servidor")));
    auto* env = set->add_option("--password-env", o->senhaAmbiente, QZParaUtf8(CString("variável de ambiente com a senha")));
    auto* arq = set->add_option("--password-file", o->senhaArquivo,
                                QZParaUtf8(CString("arquivo com a senha, legível só pelo dono (caminho absoluto)")));
    auto* sem = set->add_flag("--no-password", o->semSenha, QZParaUtf8(CString("o servidor não pede senha")));
    env->excludes(arq)->excludes(sem);
    arq->excludes(sem);
    set->add_option("--from", o->remetente, QZParaUtf8(CString("endereço do remetente")));
    set->add_option("--from-name", o->nomeRemetente, QZParaUtf8(CString("nome do remetente")));
    set->add_option("--outbox", o->pasta, QZParaUtf8(CString("pasta da caixa de saída")));
    set->add_option("--timeout", o->tempoLimite, QZParaUtf8(CString("tempo limite do envio, em segundos")))
        ->check(CLI::Range(0, 3600));
    return {conta, [o, set](bool json, std::ostream& saida, std::ostream& erros) {
                try {
                    return Executa(*o, set->parsed(), json, saida);
                } catch (const ErroConta& e) {
                    const std::string texto = Utf8(CString(e.texto));
                    if (json)
                        saida << nlohmann::ordered_json{{"command", "email-account"}, {"error", {{"text", texto}}}}.dump()
                              << "\n";
                    else
                        erros << "pxlreg: erro: " << texto << "\n";
                    return 2;
                } catch (const std::exception& e) {
                    erros << "pxlreg: erro: falha inesperada: " << e.what() << "\n";
                    return 2;
                }
            }};
}
