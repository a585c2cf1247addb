// pxlreg types, messages and example: what the command line knows, without a store.
#include <memory>
#include <nlohmann/json.hpp>
#include <ostream>
#include <sstream>

#include "host/PXComandosAdicionais.h"
#include "host/PXDadosEmbutidos.h"
#include "host/PXPermissoesHost.h"
#include "host/PXTabelaMensagens.h"
#include "host/PXTiposHost.h"
#include "platform/CString.h"
#include "platform/QZRelogio.h"

namespace {

using Json = nlohmann::ordered_json;

std::string Utf8(const std::string& cp1252) { return QZParaUtf8(CString(cp1252)); }

int Tipos(bool json, std::ostream& saida) {
    Json lista = Json::array();
    if (!json) saida << Utf8("tipo                               chave        tela  o que o pxlreg faz") << "\n";
    for (const auto& t : PXTiposHost()) {
        auto modelo = t->Novo();
        const bool regras = t->Tratador(*modelo) != nullptr;
        const char* chave = t->ChavePorPosicao() ? "posicao" : (std::string(t->CampoChave()) == "Posicao" ? "unica" : "movimento");
        const int tela = PXTipoPermissaoDoRegistro(t->Nome());
        std::string comandos = regras ? "import, export, save, delete" : "import, export";
        if (regras && t->TemIntegridade(*modelo)) comandos += " (delete verifica a integridade)";
        lista.push_back({{"type", t->Nome()}, {"key", chave}, {"kind", tela}, {"rules", regras}, {"commands", comandos}});
        if (!json) {
            std::string linha = t->Nome();
            linha.resize(std::max<size_t>(linha.size() + 1, 35), ' ');
            std::string c = chave;
            c.resize(13, ' ');
            std::string k = tela ? std::to_string(tela) : "-";
            k.resize(6, ' ');
            saida << linha << c << k << Utf8(comandos) << "\n";
        }
    }
    if (json) saida << Json{{"command", "types"}, {"types", lista}}.dump() << "\n";
    return 0;
}

int Mensagens(bool json, const std::string& numero, int modulo, std::ostream& saida, std::ostream& erros) {
    const auto& textos = CPXTabelaMensagens::Embutida().Textos();
    long so = -1;
    if (!numero.empty()) {
        try {
            size_t fim = 0;
            so = std::stol(numero, &fim);
            if (fim != numero.size() || so < 0) throw std::invalid_argument(numero);
        } catch (const std::exception&) {
            erros << "pxlreg: erro: " << Utf8("NUMBER inválido: \"" + numero.substr(0, 80) + "\"") << "\n";
            return 2;
        }
    }
    Json lista = Json::array();
    for (const auto& [chave, texto] : textos) {
        if (chave.first != modulo || (so >= 0 && chave.second != so)) continue;
        lista.push_back({{"module", chave.first}, {"message", chave.second}, {"text", QZParaUtf8(texto)}});
        if (!json) saida << chave.second << "\t" << QZParaUtf8(texto) << "\n";
    }
    if (so >= 0 && lista.empty()) {
        const std::string texto = "não há mensagem " + std::to_string(so) + " no módulo " + std::to_string(modulo) + ".";
        if (json)
            saida << Json{{"command", "messages"}, {"error", {{"text", Utf8(texto)}}}}.dump() << "\n";
        else
            erros << "pxlreg: erro: " << Utf8(texto) << "\n";
        return 2;
    }
    if (json) saida << Json{{"command", "messages"}, {"messages", lista}}.dump() << "\n";
    return 0;
}

// A record of the type from the demo plant, which the rules accept,
// or a record at its defaults when the demo has none. Every field is written
// (lists as the demo fills them) and the key is a new record's, so `save`
// takes the example as a new record.
int Exemplo(bool json, const std::string& nome, std::ostream& saida, std::ostream& erros) {
    const IPXTipoHost* tipo = PXBuscaTipoHost(nome);
    if (!tipo) {
        const std::string texto = "tipo de registro desconhecido \"" + nome.substr(0, 80) + "\" (veja pxlreg types).";
        if (json)
            saida << Json{{"command", "example"}, {"error", {{"text", Utf8(texto)}}}}.dump() << "\n";
        else
            erros << "pxlreg: erro: " << Utf8(texto) << "\n";
        return 2;
    }
    auto registro = tipo->Novo();
    const Json novo = tipo->ParaJson(*registro);
    // The demo's fullest record of the type: most of its lists filled.
    std::istringstream demo{PXTextoDemoEm(CQZRelogioSistema::Instancia().Agora().GetData())};
    Json escolhido;
    size_t tamanho = 0;
    for (std::string linha; std::getline(demo, linha);) {
        if (linha.size() <= tamanho) continue;
        Json j = Json::parse(linha, nullptr, false);
        if (j.is_object() && j.value("type", "") == tipo->Nome()) {
            escolhido = std::move(j);
            tamanho = linha.size();
        }
    }
    if (tamanho) tipo->DeJson(escolhido, *registro);
    Json exemplo{{"type", tipo->Nome()}};
    const Json campos = tipo->ParaJson(*registro);
    for (const auto& [campo, valor] : campos.items()) exemplo[campo] = valor;
    // A one-record table has no key field.
    if (novo.contains(tipo->CampoChave())) exemplo[tipo->CampoChave()] = novo[tipo->CampoChave()];
    const std::string texto = exemplo.dump(-1, ' ', false, Json::error_handler_t::replace);
    if (json)
        saida << Json{{"command", "example"}, {"record", exemplo}}.dump(-1, ' ', false, Json::error_handler_t::replace) << "\n";
    else
        saida << texto << "\n";
    return 0;
}

}  // namespace

CPXComandoAdicional PXComandoTipos(CLI::App& app) {
    auto* tipos = app.add_subcommand("types", Utf8("os tipos de registro: chave, tela de permissões e o que o pxlreg faz com cada um"));
    return {tipos, [](bool json, std::ostream& saida, std::ostream&) { return Tipos(json, saida); }};
}

CPXComandoAdicional PXComandoMensagens(CLI::App& app) {
    auto numero = std::make_shared<std::string>();
    auto modulo = std::make_shared<int>(28);
    auto* mensagens = app.add_subcommand("messages", Utf8("o texto de uma mensagem numerada, ou de todas"));
    mensagens->add_option("NUMBER", *numero, Utf8("o número da mensagem (sem ele, todas)"));
    mensagens->add_option("--module", *modulo, Utf8("o módulo das mensagens (28, o de manutenção)"))->check(CLI::Range(0, 65535));
    return {mensagens, [numero, modulo](bool json, std::ostream& saida, std::ostream& erros) {
                return Mensagens(json, *numero, *modulo, saida, erros);
            }};
}

CPXComandoAdicional PXComandoExemplo(CLI::App& app) {
    auto nome = std::make_shared<std::string>();
    auto* exemplo = app.add_subcommand("example", Utf8("um registro completo e válido do tipo, com todos os campos, para editar e gravar"));
    exemplo->add_option("TYPE", *nome, Utf8("o tipo do registro, como CQZDadosPX_Tarefa ou Tarefa (veja pxlreg types)"))->required();
    return {exemplo, [nome](bool json, std::ostream& saida, std::ostream& erros) { return Exemplo(json, *nome, saida, erros); }};
}
