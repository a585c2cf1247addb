// Preparing and filling e-mail templates: a list of 10,000 lines, a 64 MB
// template, and a 2 MB one-line template full of end markers and without a
// line break (where a backtracking engine takes quadratic time). Each
// workload checks its result once first: a wrong answer is an error, not a
// number.
#include <benchmark/benchmark.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "alerts/PXModeloEmail.h"

namespace {

const std::string kCabecalho =
    "<html><head><meta charset=\"windows-1252\"></head><body>\r\n"
    "<p>Prezado(a) QZ_NOME_TECNICO (QZ_COD_TECNICO),</p>\r\n"
    "<p>Alerta QZ_DESC_ALERTA do plano QZ_COD_PLANO_MANUT - QZ_DESC_PLANO_MANUT em QZ_DATA_HORA_ATUAL.</p>\r\n";
const std::string kLista =
    "<table>QZ_INICIO_LISTA<tr><th>Recurso</th><th>Descri\xE7\xE3o</th><th>Pr\xF3xima</th><th>Dias</th></tr>\r\n"
    "  QZ_FIM_LISTA\r\n"
    " <tr><td>QZ_COD_RECURSO</td><td>QZ_DESC_RECURSO</td><td>QZ_DT_PROX_MANUT</td>\r\n"
    "<td>QZ_DIAS_PROX_MANUT</td><td>QZ_CONTADOR_PROX_MANUT QZ_UN_MED_CONTADOR</td></tr>\r\n"
    "</table>\r\n";
const std::string kRodape = "<p>Enviado em QZ_DATA_ATUAL.</p></body></html>\r\n";

DADOS_CORPO_EMAIL Cabecalho() {
    DADOS_CORPO_EMAIL d;
    d.sNomeTecnico = "Jo\xE3o da Silva";
    d.sCodigoTecnico = "T001";
    d.sDescricaoAlerta = "Troca de \xF3leo";
    d.sCodigoPlano = "PL-01";
    d.sNomePlano = "Compressores";
    d.sDataHoraAtual = "10/03/2026 09:30:00";
    return d;
}

std::vector<DADOS_CORPO_EMAIL> Linhas(int n) {
    std::vector<DADOS_CORPO_EMAIL> v(static_cast<size_t>(n));
    for (int i = 0; i < n; ++i) {
        v[static_cast<size_t>(i)].sCodigoRecurso = CString::Formatado("R%06d", i);
        v[static_cast<size_t>(i)].sDescricaoRecurso = "Compressor de ar";
        v[static_cast<size_t>(i)].sDataProximaManutencao = "15/03/2026";
        v[static_cast<size_t>(i)].sDiasProximaManutencao = "5";
        v[static_cast<size_t>(i)].sContadorProximaManutencao = "120,5";
        v[static_cast<size_t>(i)].sUnidadeContador = "h";
    }
    return v;
}

std::string Prepara(const std::string& modelo, int linhas) {
    std::string m = modelo;
    if (!PXAtualizaConteudoEmail(m, linhas)) throw std::runtime_error("no list block");
    return m;
}

void Confere(bool ok, const char* o_que) {
    if (!ok) throw std::runtime_error(o_que);
}

// Prepare and fill the list for 10,000 resource lines.
void BM_Lista10000Linhas(benchmark::State& estado) {
    const std::string modelo = kCabecalho + kLista + kRodape;
    const auto linhas = Linhas(10000);
    {
        std::string m = Prepara(modelo, 10000);
        bool sequencial = true;
        PXSubstitui(m, Cabecalho(), linhas, &sequencial);
        Confere(!sequencial, "the 10,000-line fill fell back to the sequential way");
        Confere(m.find("QZ_") == std::string::npos, "a placeholder was left");
        Confere(m.find("<td>R000009</td>") != std::string::npos, "line 9 is missing");
    }
    for (auto _ : estado) {
        std::string m = Prepara(modelo, 10000);
        PXSubstitui(m, Cabecalho(), linhas);
        benchmark::DoNotOptimize(m.data());
    }
}
BENCHMARK(BM_Lista10000Linhas)->Unit(benchmark::kMillisecond);

// A 64 MB template: a long body of paragraphs around the list, 100 lines.
void BM_Modelo64MB(benchmark::State& estado) {
    std::string corpo;
    const std::string paragrafo = "<p>Procedimento de manuten\xE7\xE3o preventiva: verificar n\xEDvel, QZ_DATA_ATUAL.</p>\r\n";
    while (corpo.size() < (64u << 20)) corpo += paragrafo;
    const std::string modelo = kCabecalho + corpo + kLista + kRodape;
    const auto linhas = Linhas(100);
    {
        std::string m = Prepara(modelo, 100);
        PXSubstitui(m, Cabecalho(), linhas);
        Confere(m.find("QZ_") == std::string::npos, "a placeholder was left");
    }
    for (auto _ : estado) {
        std::string m = Prepara(modelo, 100);
        PXSubstitui(m, Cabecalho(), linhas);
        benchmark::DoNotOptimize(m.data());
    }
    estado.SetBytesProcessed(static_cast<int64_t>(estado.iterations()) * static_cast<int64_t>(modelo.size()));
}
BENCHMARK(BM_Modelo64MB)->Unit(benchmark::kMillisecond)->Iterations(3);

// 2 MB on one line: a start marker and end markers, no CR LF. The block
// pattern cannot match; RE2 says so in linear time.
void BM_Adversario2MBUmaLinha(benchmark::State& estado) {
    std::string modelo = "QZ_INICIO_LISTA";
    while (modelo.size() < (2u << 20)) modelo += "x</tr>QZ_FIM_LISTA QZ_COD_RECURSO";
    {
        std::string m = modelo;
        Confere(!PXAtualizaConteudoEmail(m, 10), "a block was found where none can be");
        DADOS_CORPO_EMAIL r;
        r.sCodigoRecurso = "R1";
        PXSubstitui(m, r);
        Confere(m.find("QZ_COD_RECURSO") == std::string::npos, "a placeholder was left");
    }
    for (auto _ : estado) {
        std::string m = modelo;
        const bool bloco = PXAtualizaConteudoEmail(m, 10);
        DADOS_CORPO_EMAIL r;
        r.sCodigoRecurso = "R1";
        PXSubstitui(m, r);
        benchmark::DoNotOptimize(bloco);
        benchmark::DoNotOptimize(m.data());
    }
}
BENCHMARK(BM_Adversario2MBUmaLinha)->Unit(benchmark::kMillisecond);

}  // namespace
