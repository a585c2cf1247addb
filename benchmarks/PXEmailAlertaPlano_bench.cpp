// One run of the alert routine over a plant of n plans, 100 resource links
// per plan and n technicians, with the capturing transport: every plan's
// alert repeats with no interval, so each iteration sends again. Half the
// links are due; each alert mails two technicians one list e-mail each.
#include <benchmark/benchmark.h>
#include <sys/resource.h>
#include <unistd.h>

#include <fstream>
#include <map>
#include <memory>
#include <stdexcept>

#include "alerts/PXEmailAlertaPlano.h"
#include "mail/QZTransporteCaptura.h"
#include "store/QZFabricaArmazemSQL.h"

namespace {

constexpr int64_t kLigacoesPorPlano = 100;

const char* const kModelo =
    "<html>QZ_NOME_TECNICO QZ_DESC_ALERTA QZ_DATA_HORA_ATUAL\r\n"
    "<table>QZ_INICIO_LISTA<tr><th>Recurso</th></tr>\r\n"
    "  QZ_FIM_LISTA\r\n"
    " <tr><td>QZ_COD_RECURSO</td><td>QZ_DESC_RECURSO</td><td>QZ_DT_PROX_MANUT</td>\r\n"
    "<td>QZ_DIAS_PROX_MANUT</td><td>QZ_CONTADOR_PROX_MANUT QZ_UN_MED_CONTADOR</td></tr>\r\n"
    "</table></html>";

const REG_QZDMAHMSUTC kAgora(10, 3, 2026, 9, 30, 0);

class Plantao {
public:
    Plantao(bool arquivo, int64_t n) : m_empresa("ALERTAS" + std::to_string(n) + (arquivo ? "F" : "M")), m_relogio(kAgora) {
        const std::string base = "/tmp/pxlreg_bench_alertas_" + std::to_string(getpid()) + "_" + m_empresa.str();
        m_caminho = arquivo ? base + ".db" : ":memory:";
        m_modelo = base + ".html";
        Remove();
        std::ofstream(m_modelo, std::ios::binary) << kModelo;
        m_fabrica = std::make_shared<CQZFabricaArmazemSQL>(m_caminho, QZ_ABRE_OU_CRIA);
        m_fabrica->DefineRelogio(&m_relogio);
        CQZDadosGT_Erro erro;
        m_armazem = m_fabrica->AbreArmazem(erro);
        if (!m_armazem) throw std::runtime_error("store did not open");
        m_armazem->DefineRelogio(&m_relogio);
        if (m_armazem->EmTransacao("Carga", [&] { return Carga(n); }) != 0)
            throw std::runtime_error("load failed: " + QZParaUtf8(m_armazem->GetErro().GetMensagem()));
        CQZServicosEmpresa s;
        s.pFabrica = m_fabrica;
        s.pRelogio = &m_relogio;
        CQZRegistroServicos::Registra(m_empresa, s);
    }
    ~Plantao() {
        CQZRegistroServicos::Remove(m_empresa);
        m_armazem.reset();
        m_fabrica.reset();
        Remove();
    }

    // One run; the messages it handed to the transport.
    size_t Executa() {
        CQZTransporteCaptura captura;
        m_fabrica->DefineTransporteEmail(&captura);
        CPXEmailAlertaPlano rotina;
        if (rotina.Inicializa(m_empresa, 1, 1) < 0) throw std::runtime_error("routine did not initialise");
        bool flag = false;
        if (rotina.OnRun(flag) != 0) throw std::runtime_error("run failed");
        rotina.Finaliza();
        m_fabrica->DefineTransporteEmail(nullptr);
        // Nothing is refused: every attempt was sent (and nothing is copied).
        return captura.Tentativas();
    }

    static Plantao& De(bool arquivo, int64_t n) {
        static auto* plantas = new std::map<std::pair<bool, int64_t>, std::unique_ptr<Plantao>>;
        auto& p = (*plantas)[{arquivo, n}];
        if (!p) {
            p = std::make_unique<Plantao>(arquivo, n);
            [[maybe_unused]] static const bool liberacao = (std::atexit([] { plantas->clear(); }), true);
        }
        return *p;
    }

private:
    long Carga(int64_t n) {
        CQZDadosGT_ContaEmail conta;
        conta.SetUrl("smtp://127.0.0.1").SetEnderecoRemetente("alertas@empresa.com.br");
        if (long hr = m_armazem->Grava(conta)) return hr;
        CQZDadosGT_Filial filial;
        filial.SetCodigo(1).SetIdentificacao("MATRIZ").SetNomeFantasia("Matriz").SetRazaoSocial("Empresa Ltda.");
        if (long hr = m_armazem->Insere(filial)) return hr;
        CQZDadosGT_TipoRecurso tipo;
        tipo.SetCodigo("MAQ").SetDescricao("Máquina");
        if (long hr = m_armazem->Insere(tipo)) return hr;
        CQZDadosGT_UnidadeMedidaProduto hora;
        hora.SetCodigo("HR").SetQuantidadeCasasDecimais(1);
        if (long hr = m_armazem->Insere(hora)) return hr;
        CQZDadosPX_Disciplina disciplina;
        disciplina.SetCodigo("MEC").SetNome("Mecânica").SetTipoClassificacao(1);
        if (long hr = m_armazem->Insere(disciplina)) return hr;
        for (int64_t i = 0; i < n; ++i) {
            CQZDadosPX_Tecnico t;
            t.SetCodigo(CString::Formatado("T%06lld", static_cast<long long>(i))).SetNome("Técnico").SetTipoClassificacao(1);
            t.AdicionaEmail(CQZDadosPX_TecnicoEmail().SetEndereco(
                CString::Formatado("t%lld@empresa.com.br", static_cast<long long>(i))));
            if (long hr = m_armazem->Insere(t)) return hr;
        }
        const REG_QZDMA hoje = kAgora.GetData();
        for (int64_t p = 0; p < n; ++p) {
            CQZDadosPX_PlanoAlerta alerta;
            alerta.SetDescricao("Revisão").SetModeloEmail(CString(m_modelo)).SetAntesApos(1).SetDias(1);
            alerta.SetQtdDias(CQZMoeda::DeInteiro(10)).SetRepetirEm(1);
            for (int64_t k : {p, (p + 1) % n})
                alerta.AdicionaTecnicos(CQZDadosPX_PlanoAlertaTecnico().SetPonteiro(static_cast<uint32_t>(k + 1)));
            CQZDadosPX_Plano plano;
            plano.SetCodigo(CString::Formatado("P%06lld", static_cast<long long>(p))).SetNome("Plano");
            plano.SetTipoClassificacao(1).SetTipo(2).SetPonteiroDisciplina(1).AdicionaAlerta(alerta);
            if (long hr = m_armazem->Insere(plano)) return hr;
            for (int64_t r = 0; r < kLigacoesPorPlano; ++r) {
                CQZDadosGT_RecursoPlanoManutencao v;
                // Even links are due in 5 days, odd ones in 50.
                v.SetPonteiroPlanoManutencao(plano.GetPosicao()).SetDataProximaManutencao(hoje.SomaDias(r % 2 ? 50 : 5));
                v.SetCiclosContadorProximaManutencao(CQZMoeda::DeInteiro(300));
                CQZDadosGT_Recurso recurso;
                recurso.SetCodigo(CString::Formatado("R%06lld-%03lld", static_cast<long long>(p), static_cast<long long>(r)));
                recurso.SetDescricao("Recurso").SetTipoClassificacao(1).SetTipo(2).SetPonteiroFilial(1);
                recurso.SetPonteiroTipoRecurso(1).SetPonteiroUnidadeMedidaContador(1).SetUnidadeProdutoServico('P');
                recurso.AdicionaPlanoManutencao(v);
                if (long hr = m_armazem->Insere(recurso)) return hr;
            }
        }
        return 0;
    }
    void Remove() {
        for (const char* s : {"", "-wal", "-shm"})
            if (m_caminho != ":memory:") std::remove((m_caminho + s).c_str());
        std::remove(m_modelo.c_str());
    }

    CString m_empresa;
    CQZRelogioFixo m_relogio;
    std::string m_caminho, m_modelo;
    std::shared_ptr<CQZFabricaArmazemSQL> m_fabrica;
    std::unique_ptr<CQZArmazemSQL> m_armazem;
};

void BM_ExecucaoAlertas(benchmark::State& state) {
    const int64_t n = state.range(0);
    const bool arquivo = state.range(1) != 0;
    Plantao& planta = Plantao::De(arquivo, n);
    // Checked once: two list e-mails per plan.
    if (planta.Executa() != static_cast<size_t>(2 * n)) {
        state.SkipWithError("wrong number of messages");
        return;
    }
    for (auto _ : state) benchmark::DoNotOptimize(planta.Executa());
    // The process's peak: the plants built so far included (scripts/bench.sh
    // runs each case in a process of its own).
    rusage uso{};
    getrusage(RUSAGE_SELF, &uso);
    state.counters["pico_MB"] = static_cast<double>(uso.ru_maxrss) / 1024.0;
    state.counters["ligacoes"] = static_cast<double>(n * kLigacoesPorPlano);
}
BENCHMARK(BM_ExecucaoAlertas)
    ->ArgsProduct({{1000, 2000}, {0, 1}})
    ->ArgNames({"planos", "arquivo"})
    ->Unit(benchmark::kMillisecond)
    ->Iterations(3);

}  // namespace
