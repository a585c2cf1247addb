// pxlreg alerts run|preview|log STORE: the plan-alert routine as a product.
//  - run: one run the scheduler's way (the exported function, initialised,
//    OnRun, released), then what it sent;
//  - preview: what a run at a given moment would send and why, sending and
//    stamping nothing, the bodies written to a folder;
//  - log: the delivery log of the store.
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>

#include "alerts/PXEmailAlertaPlano.h"
#include "alerts/PXVencimentoAlerta.h"
#include "host/PXComandosAdicionais.h"
#include "platform/QZTextosGT.h"
#include "store/QZFabricaArmazemSQL.h"

namespace {

using Json = nlohmann::ordered_json;

struct ErroAlertas {
    std::string texto;  // UTF-8
};

struct OpcoesAlertas {
    std::string armazem;
    std::string empresa = "EMPRESA";
    std::string em;
    std::string pasta;
    std::string desde;
};

std::string U(const CString& s) { return QZParaUtf8(s); }
std::string U(const char* cp1252) { return QZParaUtf8(CString(cp1252)); }

std::string Hex(long codigo) {
    char buf[16];
    std::snprintf(buf, sizeof buf, "0x%08X", static_cast<unsigned>(codigo));
    return buf;
}

// "AAAA-MM-DD" or "AAAA-MM-DD HH:MM[:SS]" (a "T" may stand for the space).
std::optional<REG_QZDMAHMSUTC> LeDataHora(const std::string& texto) {
    int a = 0, m = 0, d = 0, h = 0, mi = 0, s = 0;
    char sep = 0;
    int lidos = 0;
    const int n = std::sscanf(texto.c_str(), "%4d-%2d-%2d%n%c%2d:%2d%n:%2d%n", &a, &m, &d, &lidos, &sep, &h, &mi, &lidos,
                              &s, &lidos);
    if (n < 3 || static_cast<size_t>(lidos) != texto.size()) return std::nullopt;
    if (n > 3 && (n < 6 || (sep != ' ' && sep != 'T'))) return std::nullopt;
    const REG_QZDMA data(d, m, a);
    if (!data.EhValida() || data.GetDia() != d || data.GetMes() != m || h > 23 || mi > 59 || s > 59 || h < 0 ||
        mi < 0 || s < 0)
        return std::nullopt;
    return REG_QZDMAHMSUTC(data, h, mi, s);
}

// The company's services on the store for the command's life.
class EmpresaNoArmazem {
public:
    EmpresaNoArmazem(const OpcoesAlertas& o, const IQZRelogio* relogio) : m_empresa(o.empresa) {
        m_fabrica = std::make_shared<CQZFabricaArmazemSQL>(o.armazem, QZ_ABRE_EXISTENTE);
        if (relogio) m_fabrica->DefineRelogio(relogio);
        CQZServicosEmpresa servicos;
        servicos.pFabrica = m_fabrica;
        servicos.pRelogio = relogio;
        CQZRegistroServicos::Registra(m_empresa, servicos);
    }
    ~EmpresaNoArmazem() { CQZRegistroServicos::Remove(m_empresa); }
    EmpresaNoArmazem(const EmpresaNoArmazem&) = delete;
    EmpresaNoArmazem& operator=(const EmpresaNoArmazem&) = delete;

private:
    CString m_empresa;
    std::shared_ptr<CQZFabricaArmazemSQL> m_fabrica;
};

std::unique_ptr<CQZArmazemSQL> AbreArmazem(const std::string& caminho) {
    auto a = std::make_unique<CQZArmazemSQL>(caminho, QZ_ABRE_EXISTENTE);
    if (!a->EstaAberto()) throw ErroAlertas{U(a->GetErro().GetMensagem())};
    return a;
}

// The keys of the delivery log's lines from `desde` on (its local time),
// in order. A stored time orders by local time only within its zone, so the
// index of the time is searched once per zone a clock can be in.
std::vector<int64_t> ChavesLogDesde(CQZArmazemSQL& armazem, REG_QZDMAHMSUTC desde) {
    std::vector<int64_t> chaves;
    for (int zona = -48; zona <= 56; ++zona) {
        CQZDadosGT_FiltroEnvioEmail filtro;
        filtro.SetDesde(REG_QZDMAHMSUTC(static_cast<uint64_t>(static_cast<uint8_t>(zona)) << 38 | desde.GetDataHora()));
        CQZArray_deprecated<uint32_t> achadas;
        if (armazem.BuscaPonteirosEnvioEmail(filtro, achadas) != 0)
            throw ErroAlertas{U(armazem.GetErro().GetMensagem())};
        chaves.insert(chaves.end(), achadas.Vetor().begin(), achadas.Vetor().end());
    }
    std::sort(chaves.begin(), chaves.end());
    return chaves;
}

// The delivery log's lines after key `depois`, from `desde` on.
std::vector<CQZDadosGT_EnvioEmail> LinhasLog(CQZArmazemSQL& armazem, int64_t depois,
                                             std::optional<REG_QZDMAHMSUTC> desde = std::nullopt) {
    std::vector<int64_t> chaves;
    if (desde)
        chaves = ChavesLogDesde(armazem, *desde);
    else if (armazem.ListaChaves<CQZDadosGT_EnvioEmail>(chaves) != 0)
        throw ErroAlertas{U(armazem.GetErro().GetMensagem())};
    std::vector<CQZDadosGT_EnvioEmail> linhas;
    for (int64_t chave : chaves) {
        if (chave <= depois) continue;
        CQZDadosGT_EnvioEmail e;
        if (armazem.LeRegistro(chave, e) != 0) throw ErroAlertas{U(armazem.GetErro().GetMensagem())};
        linhas.push_back(std::move(e));
    }
    return linhas;
}

int64_t UltimaChaveLog(CQZArmazemSQL& armazem) {
    std::vector<int64_t> chaves;
    if (armazem.ListaChaves<CQZDadosGT_EnvioEmail>(chaves) != 0) throw ErroAlertas{U(armazem.GetErro().GetMensagem())};
    return chaves.empty() ? 0 : chaves.back();
}

Json LinhaJson(const CQZDadosGT_EnvioEmail& e) {
    return {{"time", U(DmaHmsToString(e.GetDmaHmsEnvio(), true))},
            {"plan", e.GetPonteiroPlano()},
            {"alert", e.GetIndiceAlerta() + 1},
            {"technician", e.GetPonteiroTecnico()},
            {"to", U(e.GetEndereco())},
            {"subject", U(e.GetAssunto())},
            {"reply", U(e.GetRespostaTransporte())},
            {"status", e.GetSituacao() == E_GT_SITUACAO_ENVIO_EMAIL_ENVIADO    ? "sent"
                       : e.GetSituacao() == E_GT_SITUACAO_ENVIO_EMAIL_PENDENTE ? "pending"
                                                                               : "failed"},
            {"error", U(e.GetErro())}};
}

std::string LinhaTexto(const CQZDadosGT_EnvioEmail& e) {
    std::string s = U(DmaHmsToString(e.GetDmaHmsEnvio())) + "  " +
                    (e.GetSituacao() == E_GT_SITUACAO_ENVIO_EMAIL_ENVIADO    ? "enviado"
                     : e.GetSituacao() == E_GT_SITUACAO_ENVIO_EMAIL_PENDENTE ? "pendente"
                                                                             : "falhou ") +
                    "  " +
                    U(e.GetEndereco()) + "  " + U(e.GetAssunto()) + "  (plano " +
                    std::to_string(e.GetPonteiroPlano()) + ", alerta " + std::to_string(e.GetIndiceAlerta() + 1) +
                    U(", técnico ") + std::to_string(e.GetPonteiroTecnico()) + ")";
    if (!e.GetRespostaTransporte().IsEmpty()) s += "  " + U(e.GetRespostaTransporte());
    if (!e.GetErro().IsEmpty()) s += "  " + U(e.GetErro());
    return s;
}

// ---- run ----------------------------------------------------------------------

int Run(const OpcoesAlertas& o, bool json, std::ostream& saida) {
    auto armazem = AbreArmazem(o.armazem);
    const int64_t antes = UltimaChaveLog(*armazem);
    EmpresaNoArmazem empresa(o, nullptr);
    // As the scheduler does it: created by the exported function, released by OnDeleta.
    CAutoRun* rotina = PXEmailAlertaPlano();
    if (!rotina) throw ErroAlertas{U("não foi possível criar a rotina de alertas")};
    long hr = rotina->Inicializa(CString(o.empresa), 0, static_cast<uint32_t>(getpid()));
    std::optional<Json> falha;
    if (hr < 0) {
        falha = Json{{"code", Hex(hr)}, {"text", U(rotina->GetMensagem())}};
    } else {
        try {
            bool flag = false;
            hr = rotina->OnRun(flag);
            if (hr != 0) falha = Json{{"code", Hex(hr)}, {"text", U("a execução terminou com este código")}};
        } catch (const CQZExceptionEx& e) {
            falha = Json{{"code", Hex(e.GetCodigo())}, {"id", e.GetIdMensagem()}, {"text", U(e.GetDescricao())}};
        }
    }
    rotina->Finaliza();
    rotina->OnDeleta();

    const auto enviadas = LinhasLog(*armazem, antes);
    if (json) {
        Json j{{"command", "alerts run"}, {"ok", !falha}};
        j["messages"] = Json::array();
        for (const auto& e : enviadas) j["messages"].push_back(LinhaJson(e));
        if (falha) j["error"] = *falha;
        saida << j.dump() << "\n";
    } else {
        for (const auto& e : enviadas) saida << LinhaTexto(e) << "\n";
        saida << enviadas.size() << U(" mensagem(ns) entregue(s) ao transporte") << "\n";
        if (falha)
            saida << U("a execução falhou: código ") << (*falha)["code"].get<std::string>()
                  << (falha->contains("id") ? " (id " + std::to_string((*falha)["id"].get<long>()) + ")" : "") << ": "
                  << (*falha)["text"].get<std::string>() << "\n";
    }
    return falha ? 1 : 0;
}

// ---- preview ------------------------------------------------------------------

// What a run would do, gathered as it goes.
class Previsao : public IPXObservadorAlertas {
public:
    explicit Previsao(std::string pasta) : m_pasta(std::move(pasta)) {}
    bool Simula() const override { return true; }
    void AlertaAceito(const CQZDadosPX_Plano& proprio, const CQZDadosPX_Plano& planoAlerta, uint32_t indice) override {
        const auto& alerta = planoAlerta.GetAlerta(indice);
        Json a{{"plan", U(proprio.GetCodigo())},
               {"alert_plan", U(planoAlerta.GetCodigo())},
               {"alert", indice + 1},
               {"description", U(alerta.GetDescricao())},
               {"template", U(alerta.GetModeloEmail())},
               {"stamped", true}};
        a["due"] = Json::array();
        a["messages"] = Json::array();
        alertas.push_back(std::move(a));
        m_alerta = alerta;
    }
    void RecursoVencido(const CQZDadosGT_Recurso& recurso, const CQZDadosGT_RecursoPlanoManutencao& vinculo,
                        const CPXAvaliacaoVencimento& avaliacao, uint8_t tipoControle) override {
        alertas.back()["due"].push_back({{"resource", U(recurso.GetCodigo())},
                                         {"description", U(recurso.GetDescricao())},
                                         {"reason", U(PXDescreveVencimento(m_alerta, vinculo, avaliacao, tipoControle))}});
    }
    long Mensagem(const CString& destinatario, const CString& corpo, const CString& assunto,
                  const CQZOrigemEmail& origem) override {
        Json m{{"to", U(destinatario)}, {"technician", origem.ulPonteiroTecnico}, {"subject", U(assunto)}};
        if (!m_pasta.empty()) {
            char nome[64];
            std::snprintf(nome, sizeof nome, "%04zu-plano%u-alerta%u-tecnico%u.html", ++m_arquivos,
                          origem.ulPonteiroPlano, origem.ulIndiceAlerta + 1, origem.ulPonteiroTecnico);
            const std::string caminho = m_pasta + "/" + nome;
            std::ofstream f(caminho, std::ios::binary);
            f.write(corpo.GetString(), static_cast<std::streamsize>(corpo.GetLength()));
            f.close();
            if (!f) throw ErroAlertas{U("não foi possível gravar ") + caminho};
            m["file"] = caminho;
        }
        alertas.back()["messages"].push_back(std::move(m));
        return 0;
    }
    void ModeloAusente(const CQZDadosPX_Plano& planoAlerta, uint32_t indice) override {
        parada = Json{{"alert_plan", U(planoAlerta.GetCodigo())},
                      {"alert", indice + 1},
                      {"template", U(planoAlerta.GetAlerta(indice).GetModeloEmail())}};
    }

    Json alertas = Json::array();
    std::optional<Json> parada;

private:
    std::string m_pasta;
    size_t m_arquivos = 0;
    CQZDadosPX_PlanoAlerta m_alerta;
};

int Preview(const OpcoesAlertas& o, bool json, std::ostream& saida) {
    REG_QZDMAHMSUTC quando = CQZRelogioSistema::Instancia().Agora();
    if (!o.em.empty()) {
        auto lido = LeDataHora(o.em);
        if (!lido) throw ErroAlertas{U("data e hora inválidas em --at: use \"AAAA-MM-DD HH:MM\"")};
        quando = *lido;
    }
    if (!o.pasta.empty() && ::mkdir(o.pasta.c_str(), 0755) != 0 && errno != EEXIST)
        throw ErroAlertas{U("não foi possível criar a pasta ") + o.pasta + ": " + std::strerror(errno)};
    AbreArmazem(o.armazem);  // a missing store is named as such
    CQZRelogioFixo relogio(quando);
    EmpresaNoArmazem empresa(o, &relogio);
    Previsao previsao(o.pasta);
    std::optional<Json> falha;
    {
        CPXEmailAlertaPlano rotina;
        if (rotina.Inicializa(CString(o.empresa), 0, static_cast<uint32_t>(getpid())) < 0)
            throw ErroAlertas{U(rotina.GetMensagem())};
        try {
            if (long hr = rotina.Simula(previsao)) falha = Json{{"code", Hex(hr)}, {"text", U("a busca dos planos falhou")}};
        } catch (const CQZExceptionEx& e) {
            falha = Json{{"code", Hex(e.GetCodigo())}, {"id", e.GetIdMensagem()}, {"text", U(e.GetDescricao())}};
        }
    }
    if (json) {
        Json j{{"command", "alerts preview"}, {"at", U(DmaHmsToString(quando))}, {"alerts", previsao.alertas}};
        if (previsao.parada) j["stopped_at_missing_template"] = *previsao.parada;
        if (falha) j["error"] = *falha;
        saida << j.dump() << "\n";
        return falha ? 1 : 0;
    }
    saida << U("prévia de uma execução em ") << U(DmaHmsToString(quando)) << U(" (nada é enviado nem marcado)") << "\n";
    for (const auto& a : previsao.alertas) {
        saida << "\n"
              << U("alerta ") << a["alert"].get<unsigned>() << " \"" << a["description"].get<std::string>()
              << "\" do plano " << a["plan"].get<std::string>();
        if (a["alert_plan"] != a["plan"]) saida << " (herdado de " << a["alert_plan"].get<std::string>() << ")";
        saida << "\n";
        if (a["due"].empty()) saida << U("  nenhum recurso vence; o alerta seria marcado como enviado") << "\n";
        for (const auto& r : a["due"])
            saida << "  recurso " << r["resource"].get<std::string>() << " (" << r["description"].get<std::string>()
                  << "): " << r["reason"].get<std::string>() << "\n";
        for (const auto& m : a["messages"]) {
            saida << "  para " << m["to"].get<std::string>() << ": " << m["subject"].get<std::string>();
            if (m.contains("file")) saida << "  [" << m["file"].get<std::string>() << "]";
            saida << "\n";
        }
    }
    if (previsao.alertas.empty()) saida << U("nenhum alerta seria enviado agora") << "\n";
    if (previsao.parada)
        saida << U("\na execução pararia no alerta ") << (*previsao.parada)["alert"].get<unsigned>() << " do plano "
              << (*previsao.parada)["alert_plan"].get<std::string>() << U(": o modelo ")
              << (*previsao.parada)["template"].get<std::string>() << U(" não existe (nada seria marcado)") << "\n";
    if (falha)
        saida << U("a execução falharia: código ") << (*falha)["code"].get<std::string>() << ": "
              << (*falha)["text"].get<std::string>() << "\n";
    return falha ? 1 : 0;
}

// ---- log ----------------------------------------------------------------------

int Log(const OpcoesAlertas& o, bool json, std::ostream& saida) {
    std::optional<REG_QZDMAHMSUTC> desde;
    if (!o.desde.empty()) {
        desde = LeDataHora(o.desde);
        if (!desde) throw ErroAlertas{U("data inválida em --since: use AAAA-MM-DD ou \"AAAA-MM-DD HH:MM\"")};
    }
    auto armazem = AbreArmazem(o.armazem);
    const auto linhas = LinhasLog(*armazem, 0, desde);
    if (json) {
        for (const auto& e : linhas) {
            Json j = LinhaJson(e);
            saida << j.dump() << "\n";
        }
        return 0;
    }
    for (const auto& e : linhas) saida << LinhaTexto(e) << "\n";
    if (linhas.empty()) saida << U("nenhuma mensagem no registro de envios") << "\n";
    return 0;
}

}  // namespace

CPXComandoAdicional PXComandoAlertas(CLI::App& app) {
    auto o = std::make_shared<OpcoesAlertas>();
    auto* alertas = app.add_subcommand("alerts", U("os alertas dos planos de manutenção por e-mail"));
    alertas->require_subcommand(1);
    auto* run = alertas->add_subcommand("run", U("uma execução da rotina, como o agendador a faz"));
    auto* preview = alertas->add_subcommand("preview", U("o que uma execução enviaria, sem enviar nem marcar"));
    auto* log = alertas->add_subcommand("log", U("o registro de envios"));
    for (auto* s : {run, preview, log}) s->add_option("STORE", o->armazem, U("arquivo do armazém"))->required();
    for (auto* s : {run, preview}) s->add_option("--company", o->empresa, U("empresa"));
    preview->add_option("--at", o->em, U("o momento da execução: \"AAAA-MM-DD HH:MM\" (agora)"));
    preview->add_option("--out", o->pasta, U("pasta onde gravar os corpos das mensagens"));
    log->add_option("--since", o->desde, U("só as mensagens a partir de AAAA-MM-DD [HH:MM]"));
    return {alertas, [o, run, preview](bool json, std::ostream& saida, std::ostream& erros) {
                try {
                    if (run->parsed()) return Run(*o, json, saida);
                    if (preview->parsed()) return Preview(*o, json, saida);
                    return Log(*o, json, saida);
                } catch (const ErroAlertas& e) {
                    if (json)
                        saida << Json{{"command", "alerts"}, {"error", {{"text", e.texto}}}}.dump() << "\n";
                    else
                        erros << "pxlreg: erro: " << e.texto << "\n";
                    return 2;
                } catch (const std::exception& e) {
                    erros << "pxlreg: erro: falha inesperada: " << e.what() << "\n";
                    return 2;
                }
            }};
}
