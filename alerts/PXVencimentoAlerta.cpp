#include "alerts/PXVencimentoAlerta.h"

#include <algorithm>

#include "platform/QZTextosGT.h"

namespace {

// A date computed on day numbers, as the rule writes it.
bool DataValida(int64_t dia) { return dia >= REG_QZDMA::kMinimo && dia <= REG_QZDMA::kMaximo; }

}  // namespace

CPXAvaliacaoVencimento PXAvaliaVencimento(const CQZDadosPX_PlanoAlerta& alerta,
                                          const CQZDadosGT_RecursoPlanoManutencao& vinculo, uint8_t tipoControle,
                                          REG_QZDMA hoje) {
    CPXAvaliacaoVencimento a;
    const REG_QZDMA proxima = vinculo.GetDataProximaManutencao();
    const CQZMoeda ciclos = vinculo.GetCiclosContadorProximaManutencao();
    const int64_t diaHoje = hoje.ulValor;
    const int64_t diaProxima = proxima.ulValor;
    a.temDataProxima = !proxima.EhVazia();
    a.diasParaProxima = a.temDataProxima ? diaProxima - diaHoje : 0;
    a.atrasado = ciclos < CQZMoeda() || (proxima.EhValida() && diaProxima < diaHoje);
    // Day counts are whole: a fraction of a day is dropped.
    const int64_t qtdDias = alerta.GetQtdDias().GetInteiro();
    if (alerta.GetAntesApos() == 1 && !a.atrasado) {
        a.criterioContador = alerta.GetContador() ? ciclos < alerta.GetQtdContador() : true;
        if (alerta.GetDias()) {
            int64_t d = diaProxima - qtdDias;
            if (!DataValida(d) || d == 1) d = 0;
            a.criterioData = diaHoje > d;
        } else {
            a.criterioData = true;
        }
    } else if (alerta.GetAntesApos() == 2 && a.atrasado) {
        if (alerta.GetContador()) {
            const CQZMoeda excesso = ciclos < CQZMoeda() ? -ciclos : ciclos;
            a.criterioContador = alerta.GetQtdContador() > excesso;
        } else {
            a.criterioContador = true;
        }
        if (alerta.GetDias()) {
            int64_t e = diaProxima + qtdDias;
            if (e == 1) e = 2;
            a.criterioData = !DataValida(e) || e <= diaHoje;
        } else {
            a.criterioData = true;
        }
    }
    switch (tipoControle) {
        case 0: a.vence = a.criterioData; break;
        case 1: a.vence = a.criterioContador; break;
        case 2: a.vence = a.criterioData && a.criterioContador; break;
        case 3: a.vence = a.criterioData || a.criterioContador; break;
        default: a.vence = true; break;
    }
    return a;
}

int64_t PXIntervaloRepeticaoSegundos(const CQZDadosPX_PlanoAlerta& alerta) {
    int64_t unidade = 0;
    switch (alerta.GetTipoRepeticao()) {
        case 1: unidade = 24 * 60 * 60; break;
        case 2: unidade = 60 * 60; break;
        case 3: unidade = 60; break;
        default: return 0;
    }
    // Ten-thousandths of the unit, to whole seconds.
    const __int128 segundos = static_cast<__int128>(alerta.GetTempoRepeticao().GetBruto()) * unidade / CQZMoeda::kEscala;
    constexpr int64_t kLimite = int64_t{1} << 50;  // far past any calendar date
    return static_cast<int64_t>(std::clamp<__int128>(segundos, -kLimite, kLimite));
}

REG_QZDMAHMSUTC PXSomaSegundos(REG_QZDMAHMSUTC carimbo, int64_t segundos) {
    const int64_t total = static_cast<int64_t>(carimbo.GetData().ulValor) * 86400 + carimbo.GetSegundosDoDia() + segundos;
    int64_t dia = total / 86400, seg = total % 86400;
    if (seg < 0) {
        seg += 86400;
        --dia;
    }
    const uint64_t dataHora = ((static_cast<uint64_t>(dia) << 17) | static_cast<uint64_t>(seg)) & REG_QZDMAHMSUTC::kMascaraDataHora;
    return REG_QZDMAHMSUTC((carimbo.ullValor & ~REG_QZDMAHMSUTC::kMascaraDataHora) | dataHora);
}

bool PXCarimboAnterior(REG_QZDMAHMSUTC a, REG_QZDMAHMSUTC b) {
    return static_cast<int64_t>(a.ullValor << 26) < static_cast<int64_t>(b.ullValor << 26);
}

bool PXAlertaPodeRepetir(const CQZDadosPX_PlanoAlerta& alerta, REG_QZDMAHMSUTC agora) {
    if (!alerta.GetRepetirEm()) return false;
    const REG_QZDMAHMSUTC proxima = PXSomaSegundos(alerta.GetDmaHmsUltimoEnvio(), PXIntervaloRepeticaoSegundos(alerta));
    return !PXCarimboAnterior(agora, proxima);
}

CString PXDescreveVencimento(const CQZDadosPX_PlanoAlerta& alerta, const CQZDadosGT_RecursoPlanoManutencao& vinculo,
                             const CPXAvaliacaoVencimento& a, uint8_t tipoControle) {
    CString texto;
    auto junta = [&](const CString& parte) {
        if (!texto.IsEmpty()) texto += "; ";
        texto += parte;
    };
    const CQZMoeda ciclos = vinculo.GetCiclosContadorProximaManutencao();
    if (a.temDataProxima) {
        if (a.diasParaProxima < 0)
            junta(CString::Formatado("atrasada há %lld dia(s) (prevista para %s)",
                                     static_cast<long long>(-a.diasParaProxima),
                                     DataToString(vinculo.GetDataProximaManutencao()).GetString()));
        else
            junta(CString::Formatado("faltam %lld dia(s) (prevista para %s)", static_cast<long long>(a.diasParaProxima),
                                     DataToString(vinculo.GetDataProximaManutencao()).GetString()));
    }
    if (ciclos < CQZMoeda())
        junta(CString::Formatado("contador %s ciclo(s) além do previsto", MoedaToString(-ciclos, 4).GetString()));
    else if (alerta.GetContador() || !ciclos.EhZero())
        junta(CString::Formatado("faltam %s ciclo(s) do contador", MoedaToString(ciclos, 4).GetString()));
    if (alerta.GetAntesApos() == 1) {
        if (alerta.GetDias()) junta(CString::Formatado("aviso %s dia(s) antes", MoedaToString(alerta.GetQtdDias(), 0).GetString()));
        if (alerta.GetContador())
            junta(CString::Formatado("aviso abaixo de %s ciclo(s)", MoedaToString(alerta.GetQtdContador(), 4).GetString()));
    } else if (alerta.GetAntesApos() == 2) {
        if (alerta.GetDias()) junta(CString::Formatado("aviso %s dia(s) depois", MoedaToString(alerta.GetQtdDias(), 0).GetString()));
        if (alerta.GetContador())
            junta(CString::Formatado("aviso enquanto o excesso for menor que %s ciclo(s)",
                                     MoedaToString(alerta.GetQtdContador(), 4).GetString()));
    }
    static const char* const kControle[] = {"controle por data", "controle por contador",
                                             "controle por data e contador", "controle por data ou contador"};
    junta(tipoControle <= 3 ? CString(kControle[tipoControle])
                            : CString::Formatado("controle do tipo %d: sempre vence", static_cast<int>(tipoControle)));
    return texto;
}

uint32_t CPXConjuntoTecnicos::Hash(uint32_t ponteiro) {
    // x * 16807 mod (2^31 - 1), by Schrage's method.
    const int64_t k = ponteiro;
    int64_t h = 16807 * (k % 127773) - 2836 * (k / 127773);
    if (h < 0) h += 2147483647;
    return static_cast<uint32_t>(h % kBaldes);
}

bool CPXConjuntoTecnicos::Contem(uint32_t ponteiro) const {
    const auto& balde = m_baldes[Hash(ponteiro)];
    return std::find(balde.begin(), balde.end(), ponteiro) != balde.end();
}

bool CPXConjuntoTecnicos::Adiciona(uint32_t ponteiro) {
    if (Contem(ponteiro)) return false;
    m_baldes[Hash(ponteiro)].push_back(ponteiro);
    return true;
}
