// Calendar arithmetic of dates, and instants of date-and-time values.
#include <gtest/gtest.h>

#include "platform/QZDatas.h"

TEST(QZDatasAritmeticaTest, DaysMonthsAndYears) {
    using Soma = REG_QZDMA (REG_QZDMA::*)(int64_t) const;
    struct Caso {
        const char* nome;
        Soma soma;
        REG_QZDMA de;
        int64_t n;
        REG_QZDMA ate;
    } casos[] = {
        {"days across a year", &REG_QZDMA::SomaDias, REG_QZDMA(20, 12, 2025), 15, REG_QZDMA(4, 1, 2026)},
        {"days back", &REG_QZDMA::SomaDias, REG_QZDMA(1, 3, 2028), -1, REG_QZDMA(29, 2, 2028)},
        {"a month keeps the day", &REG_QZDMA::SomaMeses, REG_QZDMA(15, 1, 2026), 1, REG_QZDMA(15, 2, 2026)},
        {"31 January + 1 month: 28 February", &REG_QZDMA::SomaMeses, REG_QZDMA(31, 1, 2026), 1, REG_QZDMA(28, 2, 2026)},
        {"in a leap year: 29 February", &REG_QZDMA::SomaMeses, REG_QZDMA(31, 1, 2028), 1, REG_QZDMA(29, 2, 2028)},
        {"31 March + 1 month: 30 April", &REG_QZDMA::SomaMeses, REG_QZDMA(31, 3, 2026), 1, REG_QZDMA(30, 4, 2026)},
        {"months across years, back", &REG_QZDMA::SomaMeses, REG_QZDMA(31, 3, 2026), -13, REG_QZDMA(28, 2, 2025)},
        {"29 February + 1 year", &REG_QZDMA::SomaAnos, REG_QZDMA(29, 2, 2028), 1, REG_QZDMA(28, 2, 2029)},
        {"29 February + 4 years", &REG_QZDMA::SomaAnos, REG_QZDMA(29, 2, 2028), 4, REG_QZDMA(29, 2, 2032)},
        {"past 2870", &REG_QZDMA::SomaAnos, REG_QZDMA(1, 1, 2870), 1, REG_QZDMA()},
        {"before year 1", &REG_QZDMA::SomaMeses, REG_QZDMA(1, 1, 1), -1, REG_QZDMA()},
        {"days past the calendar", &REG_QZDMA::SomaDias, REG_QZDMA(31, 12, 2870), 1, REG_QZDMA()},
        {"a huge count", &REG_QZDMA::SomaDias, REG_QZDMA(1, 1, 2026), INT64_MAX, REG_QZDMA()},
        {"a huge count of months", &REG_QZDMA::SomaMeses, REG_QZDMA(1, 1, 2026), INT64_MIN, REG_QZDMA()},
        {"an invalid date stays", &REG_QZDMA::SomaMeses, REG_QZDMA(1), 3, REG_QZDMA(1)},
    };
    for (const auto& c : casos) {
        const REG_QZDMA r = (c.de.*c.soma)(c.n);
        EXPECT_EQ(r, c.ate) << c.nome << ": " << r.Formata().str();
    }
}

TEST(QZDatasAritmeticaTest, InstantsAreValidDatesAndSecondsAndCompareInUtc) {
    EXPECT_TRUE(REG_QZDMAHMSUTC(1, 3, 2026, 23, 59, 59).EhValido());
    EXPECT_FALSE(REG_QZDMAHMSUTC().EhValido());
    EXPECT_FALSE(REG_QZDMAHMSUTC((uint64_t{REG_QZDMA(1, 3, 2026).ulValor} << 17) | 86400).EhValido())
        << "a second past the day";
    EXPECT_FALSE(REG_QZDMAHMSUTC(uint64_t{5}).EhValido()) << "a time without a date";
    const REG_QZDMAHMSUTC saoPaulo(REG_QZDMA(1, 3, 2026), 9, 0, 0, -12);  // 12:00 UTC
    const REG_QZDMAHMSUTC londres(REG_QZDMA(1, 3, 2026), 12, 0, 0, 0);
    const REG_QZDMAHMSUTC toquio(REG_QZDMA(1, 3, 2026), 21, 0, 0, 36);   // 12:00 UTC
    EXPECT_EQ(saoPaulo.GetInstanteUtc(), londres.GetInstanteUtc());
    EXPECT_EQ(toquio.GetInstanteUtc(), londres.GetInstanteUtc());
    // The next day's 01:00 at UTC+03:00 is 22:00 UTC: before 23:00 UTC.
    const REG_QZDMAHMSUTC tarde(REG_QZDMA(1, 3, 2026), 23, 0, 0, 0);
    const REG_QZDMAHMSUTC diaSeguinte(REG_QZDMA(2, 3, 2026), 1, 0, 0, 12);
    EXPECT_LT(tarde.GetDataHora(), diaSeguinte.GetDataHora());
    EXPECT_GT(tarde.GetInstanteUtc(), diaSeguinte.GetInstanteUtc());
}
