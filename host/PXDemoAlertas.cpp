// The demo plant made real: its dates placed around the day it is created,
// and beside the store the e-mail template file and the outbox folder the
// company's account writes to.
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sys/stat.h>

#include <charconv>

#include "host/PXComandos.h"
#include "host/PXComandosAdicionais.h"
#include "host/PXDadosEmbutidos.h"
#include "store/QZArmazemSQL.h"

namespace {

// The demo's alerts name this template by a path relative to the store.
constexpr const char* kModeloRelativo = "modelos/alerta-plano.html";

// One e-mail per technician, one table row per due resource.
constexpr const char* kModeloDemo =
    "<html><body>\r\n"
    "<p>Olá, QZ_NOME_TECNICO (QZ_COD_TECNICO).</p>\r\n"
    "<p><b>QZ_DESC_ALERTA</b>: QZ_DETALHAMENTO_ALERTA</p>\r\n"
    "<p>Plano QZ_COD_PLANO_MANUT - QZ_DESC_PLANO_MANUT, disciplina QZ_COD_DISCIPLINA - QZ_DESC_DISCIPLINA.</p>\r\n"
    "<table border=\"1\">QZ_INICIO_LISTA<tr><th>Recurso</th><th>Descrição</th><th>Tipo</th><th>Próxima</th>"
    "<th>Dias</th><th>Contador</th><th>Filial</th></tr>\r\n"
    "  QZ_FIM_LISTA\r\n"
    " <tr><td>QZ_COD_RECURSO</td><td>QZ_DESC_RECURSO</td><td>QZ_DESC_TP_RECURSO</td><td>QZ_DT_PROX_MANUT</td>"
    "<td>QZ_DIAS_PROX_MANUT</td><td>QZ_CONTADOR_PROX_MANUT QZ_UN_MED_CONTADOR</td>\r\n"
    "<td>QZ_IDENT_FILIAL - QZ_NOME_FANT_FILIAL</td></tr>\r\n"
    "</table>\r\n"
    "<p>Enviado em QZ_DATA_HORA_ATUAL.</p>\r\n"
    "</body></html>\r\n";

[[noreturn]] void Falha(const std::string& texto) { throw CPXErroEntrada{texto, 0, {}}; }

void CriaPasta(const std::string& caminho) {
    if (::mkdir(caminho.c_str(), 0755) != 0 && errno != EEXIST) Falha("não foi possível criar a pasta " + caminho + ".");
}

}  // namespace

void PXPreparaDemoAlertas(CQZArmazemSQL& armazem, const std::string& caminhoArmazem) {
    char absoluto[PATH_MAX];
    if (!::realpath(caminhoArmazem.c_str(), absoluto)) Falha("não foi possível resolver o caminho " + caminhoArmazem + ".");
    const std::string base = absoluto;
    const std::string pastaModelos = base + ".modelos";
    const std::string pastaSaida = base + ".saida";
    const std::string modelo = pastaModelos + "/" + (kModeloRelativo + std::string("modelos/").size());
    CriaPasta(pastaModelos);
    CriaPasta(pastaSaida);
    {
        std::ofstream f(modelo, std::ios::binary);
        f << kModeloDemo;
        f.close();
        if (!f) Falha("não foi possível gravar o modelo " + modelo + ".");
    }
    const long hr = armazem.EmTransacao("DemoAlertas", [&]() -> long {
        // Alerts naming the demo template get its real path.
        std::vector<int64_t> planos;
        if (long r = armazem.ListaChaves<CQZDadosPX_Plano>(planos)) return r;
        for (int64_t chave : planos) {
            CQZDadosPX_Plano plano;
            if (long r = armazem.LeRegistro(chave, plano)) return r;
            bool mudou = false;
            for (int64_t i = 0; i < plano.GetQuantidadeAlerta(); ++i)
                if (plano.GetAlerta(i).GetModeloEmail() == CString(kModeloRelativo)) {
                    plano.GetRefAlerta(i).SetModeloEmail(CString(modelo));
                    mudou = true;
                }
            if (mudou)
                if (long r = armazem.Atualiza(plano)) return r;
        }
        // The company's account writes one .eml file per message beside the store.
        CQZDadosGT_ContaEmail conta;
        conta.SetTransporte(E_GT_TRANSPORTE_EMAIL_CAIXA_SAIDA)
            .SetPastaSaida(CString(pastaSaida))
            .SetEnderecoRemetente("manutencao@serraazul.com.br")
            .SetNomeRemetente("Manutenção Serra Azul");
        return armazem.Grava(conta);
    });
    if (hr != 0) Falha("não foi possível preparar os alertas da demonstração: " + armazem.GetErro().GetMensagem().str());
}

namespace {

std::string DoisDigitos(int n) {
    char texto[8];
    std::snprintf(texto, sizeof texto, "%02d", n);
    return texto;
}

std::string Ano(int ano) {
    char texto[8];
    std::snprintf(texto, sizeof texto, "%04d", ano);
    return texto;
}

}  // namespace

std::string PXTextoDemoEm(const REG_QZDMA& hoje) {
    const std::string_view demo = PXTextoDemo();
    std::string texto;
    texto.reserve(demo.size());
    size_t i = 0;
    for (size_t p; (p = demo.find("${", i)) != std::string_view::npos;) {
        texto.append(demo, i, p - i);
        const size_t fim = demo.find('}', p);
        const std::string_view marca = demo.substr(p, fim == std::string_view::npos ? 12 : fim + 1 - p);
        // ${D+3}, ${M-2}, ${A+10}: a letter, a sign and a count of days,
        // months or years.
        int n = 0;
        const bool forma = fim != std::string_view::npos && marca.size() >= 6 && (marca[3] == '+' || marca[3] == '-') &&
                           std::from_chars(marca.data() + 4, marca.data() + marca.size() - 1, n).ptr ==
                               marca.data() + marca.size() - 1;
        const int sinal = forma && marca[3] == '-' ? -1 : 1;
        REG_QZDMA data;
        switch (forma ? marca[2] : '?') {
            case 'D':
                data = hoje.SomaDias(sinal * n);
                texto += Ano(data.GetAno()) + "-" + DoisDigitos(data.GetMes()) + "-" + DoisDigitos(data.GetDia());
                break;
            case 'M':
                data = hoje.SomaMeses(sinal * n);
                texto += Ano(data.GetAno()) + "-" + DoisDigitos(data.GetMes());
                break;
            case 'A':
                data = hoje.SomaAnos(sinal * n);
                texto += Ano(data.GetAno());
                break;
            default:
                Falha("marca de data inválida na planta de demonstração: " + std::string(marca));
        }
        if (!data.EhValida()) Falha("a planta de demonstração sai do calendário em " + std::string(marca));
        i = fim + 1;
    }
    texto.append(demo, i, std::string_view::npos);
    return texto;
}
