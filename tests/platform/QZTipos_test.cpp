#include <gtest/gtest.h>

#include "platform/CString.h"
#include "platform/QZDatas.h"
#include "platform/QZMoeda.h"

TEST(CStringTest, TrimsBlanksOnBothEndsOnly) {
    CString s(" \t A  B \r\n");
    EXPECT_EQ(s.Trim(), "A  B");
    CString vazio("   ");
    EXPECT_TRUE(vazio.Trim().IsEmpty());
    CString c("xxAxx");
    EXPECT_EQ(c.Trim("x"), "A");
}

TEST(CStringTest, ReplaceCountsAndDoesNotRescanReplacement) {
    CString s("QZ_A QZ_A QZ_B");
    EXPECT_EQ(2, s.Replace("QZ_A", "QZ_A_1"));
    EXPECT_EQ(s, "QZ_A_1 QZ_A_1 QZ_B");
    EXPECT_EQ(0, s.Replace("", "x"));
}

TEST(CStringTest, FindMidAndCompare) {
    CString s("PXMESTRE.dat");
    EXPECT_EQ(8, s.Find('.'));
    EXPECT_EQ(-1, s.Find("tra"));
    EXPECT_EQ(-1, s.Find('P', 40));
    EXPECT_EQ(s.Mid(9), "dat");
    EXPECT_EQ(s.Left(100), s);
    EXPECT_EQ(s.Right(3), "dat");
    EXPECT_EQ(0, CString("abc").CompareNoCase("ABC"));
    EXPECT_LT(CString("abc").Compare("abd"), 0);
    EXPECT_EQ(CString::Formatado("%s-%03d", "A", 7), "A-007");
}

TEST(CStringTest, Cp1252RoundTripsThroughUtf8) {
    std::string utf8, volta, erro;
    CString texto("Descrição € – ÿ");
    ASSERT_TRUE(QZCp1252ParaUtf8(texto.str(), utf8));
    EXPECT_EQ(utf8, "Descri\xC3\xA7\xC3\xA3o \xE2\x82\xAC \xE2\x80\x93 \xC3\xBF");
    ASSERT_TRUE(QZUtf8ParaCp1252(utf8, volta));
    EXPECT_EQ(volta, texto.str());
}

TEST(CStringTest, ConversionRefusesWhatWindows1252CannotHold) {
    std::string out, erro;
    EXPECT_FALSE(QZCp1252ParaUtf8(std::string("a\x81", 2), out, &erro));
    EXPECT_NE(erro.find("0x81"), std::string::npos);
    EXPECT_FALSE(QZUtf8ParaCp1252("\xE4\xB8\x80", out, &erro));  // U+4E00
    EXPECT_NE(erro.find("U+4E00"), std::string::npos);
    EXPECT_FALSE(QZUtf8ParaCp1252("\xC3", out, &erro));  // truncated
}

TEST(QZMoedaTest, ArithmeticKeepsFourDecimalsAndRoundsHalfAway) {
    CQZMoeda a, b;
    ASSERT_TRUE(CQZMoeda::DeTexto("2.5", a));
    ASSERT_TRUE(CQZMoeda::DeTexto("-0,0001", b));
    EXPECT_EQ(25000, a.GetBruto());
    EXPECT_EQ(-1, b.GetBruto());
    EXPECT_EQ((a * a).GetBruto(), 62500);
    EXPECT_EQ((CQZMoeda::DeInteiro(1) / CQZMoeda::DeInteiro(3)).GetBruto(), 3333);
    EXPECT_EQ((CQZMoeda::DeInteiro(2) / CQZMoeda::DeInteiro(3)).GetBruto(), 6667);
    EXPECT_EQ(CQZMoeda::DeBruto(-25000).GetInteiro(), -2);
    EXPECT_EQ(CQZMoeda::DeBruto(15).Formata(3), "0.002");
    EXPECT_EQ(CQZMoeda::DeBruto(-15).Formata(3), "-0.002");
    EXPECT_EQ(CQZMoeda::DeBruto(-125000).Formata(0), "-13");
    EXPECT_EQ(CQZMoeda::DeBruto(123456).Formata(4), "12.3456");
    EXPECT_LT(b, CQZMoeda());
    EXPECT_FALSE(CQZMoeda::DeTexto("1.23456", a));
    EXPECT_FALSE(CQZMoeda::DeTexto("1x", a));
    EXPECT_FALSE(CQZMoeda::DeTexto("", a));
    EXPECT_FALSE(CQZMoeda::DeTexto("999999999999999", a));  // past 64 bits of ten-thousandths
    ASSERT_TRUE(CQZMoeda::DeTexto("-922337203685477.5808", a));
    EXPECT_EQ(a.GetBruto(), INT64_MIN);
}

TEST(REG_QZDMATest, ValidityFollowsThePackedRange) {
    struct Caso {
        uint32_t valor;
        bool valida;
    } casos[] = {{0, false}, {1, false}, {2, true}, {0xFFEB7, true}, {0xFFEB8, false}, {0xFFFFFFFF, false}};
    for (const auto& c : casos) EXPECT_EQ(c.valida, REG_QZDMA(c.valor).EhValida()) << c.valor;
    EXPECT_EQ(REG_QZDMA(1, 1, 1).ulValor, 2u);
    EXPECT_EQ(REG_QZDMA(31, 12, 2870).ulValor, 0xFFEB7u);
}

TEST(REG_QZDMATest, RoundTripsAndComparesAsDates) {
    for (auto [d, m, a] : {std::tuple{29, 2, 2024}, {1, 3, 2024}, {31, 12, 1999}, {1, 1, 2000}, {15, 6, 1600}}) {
        REG_QZDMA data(d, m, a);
        int dd, mm, aa;
        data.Decompoe(dd, mm, aa);
        EXPECT_EQ(std::tie(dd, mm, aa), std::tie(d, m, a));
    }
    EXPECT_EQ(REG_QZDMA(1, 3, 2024).ulValor - REG_QZDMA(28, 2, 2024).ulValor, 2u);
    EXPECT_LT(REG_QZDMA(31, 12, 2025), REG_QZDMA(1, 1, 2026));
    EXPECT_EQ(REG_QZDMA(29, 2, 2023).ulValor, 0u);  // no such day
    EXPECT_EQ(REG_QZDMA(5, 7, 2026).Formata(), "05/07/2026");
}

TEST(REG_QZMATest, OrdersByCalendarAndReportsEmptiness) {
    EXPECT_LT(REG_QZMA(12, 2025), REG_QZMA(1, 2026));
    EXPECT_EQ(REG_QZMA(REG_QZDMA(30, 4, 2026)), REG_QZMA(4, 2026));
    EXPECT_TRUE(REG_QZMA().EhVazio());
    EXPECT_FALSE(REG_QZMA(1, 2026).EhVazio());
}

TEST(REG_QZDMAHMSUTCTest, DateAndTimeLieInTheLow38Bits) {
    REG_QZDMAHMSUTC s(REG_QZDMA(31, 12, 2870), 23, 59, 59, -12);
    EXPECT_EQ(s.GetDataHora() >> 38, 0u);
    EXPECT_EQ(s.GetFusoQuartosHora(), -12);
    EXPECT_EQ(s.GetData(), REG_QZDMA(31, 12, 2870));
    EXPECT_EQ(s.GetHora() * 3600 + s.GetMinuto() * 60 + s.GetSegundo(), 86399);
    REG_QZDMAHMSUTC proximo = REG_QZDMAHMSUTC(31, 12, 2025, 23, 59, 59).MaisUmSegundo();
    EXPECT_EQ(proximo.GetData(), REG_QZDMA(1, 1, 2026));
    EXPECT_EQ(proximo.GetSegundosDoDia(), 0u);
}

TEST(REG_QZDMCTest, PacksMonthAndNumber) {
    REG_QZDMC k(REG_QZMA(11, 2026), 42);
    EXPECT_EQ(REG_QZDMC::DeValor(k.GetValor()), k);
    EXPECT_EQ(DmcToString(k), "11/2026-000042");
    EXPECT_TRUE(REG_QZDMC().EhVazio());
    EXPECT_LT(REG_QZDMC(REG_QZMA(12, 2025), 900), REG_QZDMC(REG_QZMA(1, 2026), 1));
}
