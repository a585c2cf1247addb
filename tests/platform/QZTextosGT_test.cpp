// The Brazilian forms of dates, times and numbers the alert e-mails carry.
#include <gtest/gtest.h>

#include "platform/QZTextosGT.h"

TEST(QZTextosGTTest, DatesTimesAndNumbersInBrazilianForm) {
    EXPECT_EQ(CString("05/03/2026"), DataToString(REG_QZDMA(5, 3, 2026)));
    EXPECT_EQ(CString("05/03/26"), DataToString(REG_QZDMA(5, 3, 2026), false));
    EXPECT_EQ(CString("01/01/0001"), DataToString(REG_QZDMA(REG_QZDMA::kMinimo)));
    EXPECT_EQ(CString(), DataToString(REG_QZDMA()));
    EXPECT_EQ(CString(), DataToString(REG_QZDMA(1)));

    const REG_QZDMAHMSUTC momento(REG_QZDMA(10, 3, 2026), 9, 5, 7, -12);
    EXPECT_EQ(CString("10/03/2026 09:05:07"), DmaHmsToString(momento));
    EXPECT_EQ(CString("10/03/2026 09:05:07 -03:00"), DmaHmsToString(momento, true));
    EXPECT_EQ(CString("10/03/2026 09:05:07 +05:45"), DmaHmsToString(REG_QZDMAHMSUTC(REG_QZDMA(10, 3, 2026), 9, 5, 7, 23), true));
    EXPECT_EQ(CString(), DmaHmsToString(REG_QZDMAHMSUTC()));

    struct Caso {
        const char* valor;
        int decimais;
        const char* texto;
    };
    const Caso casos[] = {
        {"1234567.25", 2, "1234567,25"},  // no grouping
        {"-12.46", 1, "-12,5"},           // half away from zero
        {"-0.04", 1, "0,0"},
        {"0.5", 0, "1"},
        {"-0.5", 0, "-1"},
        {"7", 4, "7,0000"},
        {"2.75", 6, "2,7500"},            // more than four decimals: four
        {"2.75", -1, "3"},                // fewer than none: none
    };
    for (const auto& c : casos) {
        CQZMoeda m;
        ASSERT_TRUE(CQZMoeda::DeTexto(c.valor, m)) << c.valor;
        EXPECT_EQ(CString(c.texto), MoedaToString(m, c.decimais)) << c.valor << " " << c.decimais;
    }
    EXPECT_EQ(CString("-3"), DiasToString(-3));
    EXPECT_EQ(CString("0"), DiasToString(0));
    EXPECT_EQ(CString("12"), DiasToString(12));
}
