// pxlreg check STORE: SQLite's integrity check of a store, read-only.
#include <sys/stat.h>

#include <memory>
#include <nlohmann/json.hpp>
#include <ostream>

#include "host/PXComandosAdicionais.h"
#include "platform/CString.h"
#include "store/QZSQLite.h"

namespace {

std::string Utf8(const std::string& cp1252) { return QZParaUtf8(CString(cp1252)); }

struct Diagnostico {
    bool armazem = false;                // the file has a store's tables
    std::vector<std::string> problemas;  // SQLite's report, one line per problem
};

// At most this many problems are listed: a badly damaged file reports one
// per page.
constexpr int kMaximoProblemas = 100;

Diagnostico Verifica(const std::string& caminho) {
    qzsql::CQZBanco banco(caminho);
    banco.Abre(qzsql::AbreSQLiteLeitura(caminho, caminho), 5000);
    Diagnostico d;
    {
        qzsql::CQZComando c(banco, "SELECT count(*) FROM sqlite_master WHERE type = 'table' AND "
                                   "(name = 'QZ_Esquema' OR name LIKE 'CQZ%')");
        d.armazem = c.Passo() && c.Inteiro(0) > 0;
    }
    qzsql::CQZComando c(banco, "PRAGMA integrity_check(" + std::to_string(kMaximoProblemas) + ")");
    try {
        while (c.Passo()) {
            // One row may hold several problems, a line each.
            const std::string_view texto = c.Texto(0);
            for (size_t inicio = 0; inicio < texto.size();) {
                size_t fim = texto.find('\n', inicio);
                if (fim == std::string_view::npos) fim = texto.size();
                const std::string_view linha = texto.substr(inicio, fim - inicio);
                if (linha != "ok" && linha.rfind("*** in database", 0) != 0) d.problemas.emplace_back(linha);
                inicio = fim + 1;
            }
        }
    } catch (const qzsql::Falha& f) {
        // SQLite ends its report with the damage it stopped at.
        d.problemas.push_back(Utf8(f.texto));
    }
    return d;
}

int Executa(const std::string& caminho, bool json, std::ostream& saida, std::ostream& erros) {
    auto falha = [&](const std::string& texto) {
        if (json)
            saida << nlohmann::ordered_json{{"command", "check"}, {"error", {{"text", Utf8(texto)}}}}.dump() << "\n";
        else
            erros << "pxlreg: erro: " << Utf8(texto) << "\n";
        return 2;
    };
    // SQLite's special names open something other than the file.
    if (caminho.empty() || caminho == ":memory:" || caminho.rfind("file:", 0) == 0)
        return falha("\"" + caminho + "\" não é o caminho de um arquivo de armazém.");
    struct stat st {};
    if (::stat(caminho.c_str(), &st) != 0) return falha("O armazém " + caminho + " não existe.");
    if (!S_ISREG(st.st_mode)) return falha(caminho + " não é um arquivo.");
    Diagnostico d;
    try {
        d = Verifica(caminho);
    } catch (const qzsql::Falha& f) {
        // A header too damaged to read is damage too, but nothing can be listed.
        return falha(f.texto);
    }
    if (!d.armazem && d.problemas.empty()) return falha("O arquivo " + caminho + " não é um armazém do PXLREG.");
    if (json) {
        nlohmann::ordered_json j{{"command", "check"}, {"store", caminho}, {"intact", d.problemas.empty()}};
        j["problems"] = d.problemas;
        saida << j.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) << "\n";
    } else if (d.problemas.empty()) {
        saida << Utf8("armazém " + caminho + ": íntegro") << "\n";
    } else {
        saida << Utf8("armazém " + caminho + ": danificado; o relatório do SQLite:") << "\n";
        for (const auto& p : d.problemas) saida << "  " << p << "\n";
    }
    return d.problemas.empty() ? 0 : 1;
}

}  // namespace

CPXComandoAdicional PXComandoVerifica(CLI::App& app) {
    auto caminho = std::make_shared<std::string>();
    auto* check = app.add_subcommand(
        "check", Utf8("verifica a integridade do armazém (páginas danificadas); sai com 1 se houver danos"));
    check->add_option("STORE", *caminho, Utf8("arquivo do armazém"))->required();
    return {check, [caminho](bool json, std::ostream& saida, std::ostream& erros) {
                try {
                    return Executa(*caminho, json, saida, erros);
                } catch (const std::exception& e) {
                    erros << "pxlreg: erro: falha inesperada: " << e.what() << "\n";
                    return 2;
                }
            }};
}
