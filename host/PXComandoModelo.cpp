// pxlreg template check FILE: the findings of an e-mail template.
#include <fstream>
#include <memory>
#include <nlohmann/json.hpp>
#include <iterator>

#include "alerts/PXVerificaModelo.h"
#include "host/PXComandosAdicionais.h"
#include "platform/CString.h"

namespace {

// A template's text for a terminal: UTF-8, its line breaks shown.
std::string Mostra(const std::string& cp1252) {
    std::string s = QZParaUtf8(CString(cp1252)), saida;
    for (char c : s) {
        if (c == '\r')
            saida += "\\r";
        else if (c == '\n')
            saida += "\\n";
        else
            saida += c;
    }
    return saida;
}

int Verifica(const std::string& arquivo, bool json, std::ostream& saida, std::ostream& erros) {
    std::ifstream f(arquivo, std::ios::binary);
    const std::string modelo = f ? std::string(std::istreambuf_iterator<char>(f), {}) : std::string();
    if (!f.is_open() || f.bad()) {
        erros << "pxlreg: erro: " << QZParaUtf8(CString("não foi possível ler o arquivo ")) << arquivo << "\n";
        return 2;
    }
    const CPXDiagnosticoModelo d = PXVerificaModeloEmail(modelo);
    if (json) {
        nlohmann::ordered_json j{{"command", "template check"}, {"file", arquivo}, {"list_block", d.blocoEncontrado}};
        j["rows"] = nlohmann::ordered_json::array();
        for (const auto& l : d.linhas) j["rows"].push_back(QZParaUtf8(CString(l)));
        j["numbered_tokens"] = nlohmann::ordered_json::array();
        for (const auto& t : d.tokensNumerados) j["numbered_tokens"].push_back(QZParaUtf8(CString(t)));
        j["findings"] = nlohmann::ordered_json::array();
        for (const auto& a : d.achados)
            j["findings"].push_back({{"kind", PXChaveAchado(a.tipo)}, {"text", QZParaUtf8(CString(a.texto))}});
        j["clean"] = d.Limpo();
        saida << j.dump() << "\n";
    } else {
        saida << arquivo << ": " << (d.blocoEncontrado ? "bloco de lista encontrado" : "sem bloco de lista")
              << QZParaUtf8(CString(d.blocoEncontrado ? "" : " (um e-mail por recurso)")) << "\n";
        for (const auto& l : d.linhas) saida << "  linha a repetir: " << Mostra(l) << "\n";
        if (!d.tokensNumerados.empty()) {
            saida << QZParaUtf8(CString("  marcadores numerados por linha:"));
            for (const auto& t : d.tokensNumerados) saida << " " << Mostra(t);
            saida << "\n";
        }
        for (const auto& a : d.achados)
            saida << "  " << QZParaUtf8(CString(PXNomeAchado(a.tipo))) << ": " << Mostra(a.texto) << "\n";
        saida << (d.Limpo() ? "sem problemas" : std::to_string(d.achados.size()) + " problema(s)") << "\n";
    }
    return d.Limpo() ? 0 : 1;
}

}  // namespace

CPXComandoAdicional PXComandoModelo(CLI::App& app) {
    auto arquivo = std::make_shared<std::string>();
    auto* modelo = app.add_subcommand("template", QZParaUtf8(CString("modelos de e-mail dos alertas")));
    modelo->require_subcommand(1);
    auto* check = modelo->add_subcommand(
        "check", QZParaUtf8(CString("o que o modelo fará: bloco de lista, linha, marcadores; sai com 1 se houver problemas")));
    check->add_option("FILE", *arquivo, QZParaUtf8(CString("arquivo do modelo (HTML em Windows-1252)")))->required();
    return {modelo, [arquivo](bool json, std::ostream& saida, std::ostream& erros) {
                try {
                    return Verifica(*arquivo, json, saida, erros);
                } catch (const std::exception& e) {
                    erros << "pxlreg: erro: falha inesperada: " << e.what() << "\n";
                    return 2;
                }
            }};
}
