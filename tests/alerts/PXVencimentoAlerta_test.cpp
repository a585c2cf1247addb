// The due rule of a plan alert as a table, the repeat interval and its
// 38-bit comparison, and the technician set's hash.
#include <gtest/gtest.h>

#include "alerts/PXVencimentoAlerta.h"

namespace {

const REG_QZDMA kHoje(10, 3, 2026);
constexpr int kSemData = 1 << 30;  // the link has no next date

CQZMoeda M(const char* texto) {
    CQZMoeda m;
    EXPECT_TRUE(CQZMoeda::DeTexto(texto, m)) << texto;
    return m;
}

struct CasoVencimento {
    const char* nome;
    uint8_t antesApos;
    uint8_t contador;
    const char* qtdContador;
    uint8_t dias;
    const char* qtdDias;
    int proxima;          // days from today, or kSemData
    const char* ciclos;   // counter cycles left
    bool atrasado, criterioContador, criterioData;
};

}  // namespace

TEST(PXVencimentoAlertaTest, TheDueRuleTable) {
    const CasoVencimento casos[] = {
        // Before the due point: links not overdue only.
        {"before, days: inside the window", 1, 0, "0", 1, "10", 9, "5", false, true, true},
        {"before, days: the window's first day is not yet", 1, 0, "0", 1, "10", 11, "5", false, true, false},
        {"before, days: d == today is not strictly past", 1, 0, "0", 1, "10", 10, "5", false, true, false},
        {"before, days: due today", 1, 0, "0", 1, "0", 0, "5", false, true, false},
        {"before, days: no next date makes d 0", 1, 0, "0", 1, "7", kSemData, "5", false, true, true},
        {"before, days: d before the calendar is 0", 1, 0, "0", 1, "99999999", 3, "5", false, true, true},
        {"before, days: a fraction of a day is dropped", 1, 0, "0", 1, "9.9", 9, "5", false, true, false},
        {"before, counter: fewer cycles than the threshold", 1, 1, "100", 0, "0", 50, "99.9999", false, true, true},
        {"before, counter: as many as the threshold", 1, 1, "100", 0, "0", 50, "100", false, false, true},
        {"before, counter at zero is not overdue", 1, 1, "1", 0, "0", kSemData, "0", false, true, true},
        {"before on an overdue date: nothing", 1, 1, "100", 1, "10", -1, "5", true, false, false},
        {"before on an overrun counter: nothing", 1, 1, "100", 1, "10", 5, "-0.0001", true, false, false},
        // After the due point: overdue links only.
        {"after, days: past the grace", 2, 0, "0", 1, "3", -3, "5", true, true, true},
        {"after, days: inside the grace", 2, 0, "0", 1, "3", -2, "5", true, true, false},
        {"after, days: no next date gives e 0, not a date", 2, 0, "0", 1, "0", kSemData, "-1", true, true, true},
        {"after, days: past the calendar's end counts", 2, 0, "0", 1, "99999999", -1, "5", true, true, true},
        // The counter test runs the other way: true while the overrun is
        // still below the quantity.
        {"after, counter: overrun below the quantity", 2, 1, "50", 0, "0", kSemData, "-49", true, true, true},
        {"after, counter: overrun at the quantity", 2, 1, "50", 0, "0", kSemData, "-50", true, false, true},
        {"after, counter: overrun past the quantity", 2, 1, "50", 0, "0", kSemData, "-80", true, false, true},
        {"after, counter on a date overdue link", 2, 1, "50", 0, "0", -4, "20", true, true, true},
        {"after on a link not overdue: nothing", 2, 1, "50", 1, "0", 4, "20", false, false, false},
        {"before/after not chosen: nothing", 0, 1, "50", 1, "0", -4, "20", true, false, false},
        {"an unknown before/after: nothing", 7, 0, "0", 0, "0", 4, "20", false, false, false},
    };
    for (const auto& c : casos) {
        SCOPED_TRACE(c.nome);
        CQZDadosPX_PlanoAlerta alerta;
        alerta.SetAntesApos(c.antesApos).SetContador(c.contador).SetQtdContador(M(c.qtdContador));
        alerta.SetDias(c.dias).SetQtdDias(M(c.qtdDias));
        CQZDadosGT_RecursoPlanoManutencao vinculo;
        vinculo.SetCiclosContadorProximaManutencao(M(c.ciclos));
        if (c.proxima != kSemData) vinculo.SetDataProximaManutencao(kHoje.SomaDias(c.proxima));
        const auto a = PXAvaliaVencimento(alerta, vinculo, 0, kHoje);
        EXPECT_EQ(c.atrasado, a.atrasado);
        EXPECT_EQ(c.criterioContador, a.criterioContador);
        EXPECT_EQ(c.criterioData, a.criterioData);
    }
}

TEST(PXVencimentoAlertaTest, TheControlTypeCombinesTheTwoCriteria) {
    // A before-alert on days and counter; each link makes one combination.
    CQZDadosPX_PlanoAlerta alerta;
    alerta.SetAntesApos(1).SetContador(1).SetQtdContador(M("100")).SetDias(1).SetQtdDias(M("10"));
    struct Vinculo {
        int proxima;
        const char* ciclos;
    };
    const Vinculo nenhum{30, "500"}, soData{5, "500"}, soContador{30, "50"}, ambos{5, "50"};
    struct Caso {
        uint8_t tipoControle;
        bool nenhum, soData, soContador, ambos;
    };
    const Caso casos[] = {
        {0, false, true, false, true},  {1, false, false, true, true}, {2, false, false, false, true},
        {3, false, true, true, true},   {4, true, true, true, true},   {255, true, true, true, true},
    };
    for (const auto& c : casos) {
        SCOPED_TRACE(static_cast<int>(c.tipoControle));
        auto vence = [&](const Vinculo& v) {
            CQZDadosGT_RecursoPlanoManutencao vinculo;
            vinculo.SetDataProximaManutencao(kHoje.SomaDias(v.proxima)).SetCiclosContadorProximaManutencao(M(v.ciclos));
            return PXAvaliaVencimento(alerta, vinculo, c.tipoControle, kHoje).vence;
        };
        EXPECT_EQ(c.nenhum, vence(nenhum));
        EXPECT_EQ(c.soData, vence(soData));
        EXPECT_EQ(c.soContador, vence(soContador));
        EXPECT_EQ(c.ambos, vence(ambos));
    }
}

TEST(PXVencimentoAlertaTest, StampsCompareOnTheirLow38BitsAsSignedValues) {
    const REG_QZDMAHMSUTC antes(10, 3, 2026, 9, 0, 0), depois(10, 3, 2026, 9, 0, 1);
    EXPECT_TRUE(PXCarimboAnterior(antes, depois));
    EXPECT_FALSE(PXCarimboAnterior(depois, antes));
    EXPECT_FALSE(PXCarimboAnterior(antes, antes));
    // The UTC offset above bit 37 takes no part.
    const REG_QZDMAHMSUTC comFuso(REG_QZDMA(10, 3, 2026), 9, 0, 1, -12);
    EXPECT_TRUE(PXCarimboAnterior(antes, comFuso));
    EXPECT_FALSE(PXCarimboAnterior(comFuso, depois));
    // Bit 37 is the sign: a value with it set is earlier than any without.
    const REG_QZDMAHMSUTC negativo(uint64_t{1} << 37);
    EXPECT_TRUE(PXCarimboAnterior(negativo, antes));
}

TEST(PXVencimentoAlertaTest, AddingSecondsCarriesOverDaysAndKeepsTheOffset) {
    const REG_QZDMAHMSUTC base(REG_QZDMA(31, 12, 2026), 23, 59, 30, -12);
    const REG_QZDMAHMSUTC soma = PXSomaSegundos(base, 45);
    EXPECT_EQ(REG_QZDMA(1, 1, 2027), soma.GetData());
    EXPECT_EQ(15u, soma.GetSegundosDoDia());
    EXPECT_EQ(-12, soma.GetFusoQuartosHora());
    EXPECT_EQ(base.ullValor, PXSomaSegundos(soma, -45).ullValor);

    CQZDadosPX_PlanoAlerta alerta;
    alerta.SetTempoRepeticao(M("1.5"));
    const std::pair<uint8_t, int64_t> unidades[] = {{1, 129600}, {2, 5400}, {3, 90}, {0, 0}, {4, 0}};
    for (const auto& [tipo, segundos] : unidades) {
        alerta.SetTipoRepeticao(tipo);
        EXPECT_EQ(segundos, PXIntervaloRepeticaoSegundos(alerta)) << static_cast<int>(tipo);
    }
}

TEST(PXVencimentoAlertaTest, TheTechnicianSetHashesByTheParkMillerStep) {
    // 16807 * k mod (2^31 - 1), then mod 17.
    for (uint32_t k : {1u, 2u, 127773u, 127774u, 1000000u, 2147483646u}) {
        const uint64_t esperado = (uint64_t{16807} * k) % 2147483647u % 17u;
        EXPECT_EQ(esperado, CPXConjuntoTecnicos::Hash(k)) << k;
    }
    CPXConjuntoTecnicos conjunto;
    EXPECT_TRUE(conjunto.Adiciona(5));
    EXPECT_TRUE(conjunto.Adiciona(5 + 17));
    EXPECT_FALSE(conjunto.Adiciona(5));
    EXPECT_TRUE(conjunto.Contem(22));
    EXPECT_FALSE(conjunto.Contem(39));
}
