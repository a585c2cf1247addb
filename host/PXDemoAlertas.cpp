// The alerts of the demo plant, made real beside the store: the e-mail
// template file, the outbox folder the company's account writes to, and the
// next-maintenance dates that make the alerts due on the day the plant is
// created.
#include <climits>
#include <cstdlib>
#include <fstream>
#include <sys/stat.h>

#include "host/PXComandos.h"
#include "host/PXComandosAdicionais.h"
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

// Next maintenance of each demo link, in days from the day the plant is
// created (resource position, plan position, days).
struct DataDemo {
    uint32_t recurso;
    uint32_t plano;
    int dias;
};
constexpr DataDemo kDatasDemo[] = {
    {2, 2, 3},   // the injection press: due in 3 days, inside its 7-day warning
    {4, 4, -2},  // the press: 2 days overdue
    {4, 5, -5},  // its lubrication (alerts inherited from the press's plan): 5 days overdue
};

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
        const REG_QZDMA hoje = CQZRelogioSistema::Instancia().Agora().GetData();
        for (const auto& d : kDatasDemo) {
            CQZDadosGT_Recurso recurso;
            if (long r = armazem.LeRegistro(d.recurso, recurso)) return r;
            for (int64_t i = 0; i < recurso.GetQuantidadePlanoManutencao(); ++i)
                if (recurso.GetPlanoManutencao(i).GetPonteiroPlanoManutencao() == d.plano)
                    recurso.GetRefPlanoManutencao(i).SetDataProximaManutencao(hoje.SomaDias(d.dias));
            if (long r = armazem.Atualiza(recurso)) return r;
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
