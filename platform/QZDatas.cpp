#include "platform/QZDatas.h"

#include <cstdint>

namespace {

// Days from 1 January 0001 (day 0) in the proleptic Gregorian calendar.
int64_t DiasDesdeEra(int ano, int mes, int dia) {
    int64_t y = ano - (mes <= 2 ? 1 : 0);
    int64_t era = (y >= 0 ? y : y - 399) / 400;
    int64_t yoe = y - era * 400;
    int64_t mp = (mes + 9) % 12;
    int64_t doy = (153 * mp + 2) / 5 + dia - 1;
    int64_t doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    // 719468 would give days since 1970-03-01 based civil epoch; shift to 0001-01-01.
    return era * 146097 + doe - 306;
}

void CivilDeDias(int64_t z, int& ano, int& mes, int& dia) {
    z += 306;
    int64_t era = (z >= 0 ? z : z - 146096) / 146097;
    int64_t doe = z - era * 146097;
    int64_t yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    int64_t y = yoe + era * 400;
    int64_t doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    int64_t mp = (5 * doy + 2) / 153;
    dia = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
    mes = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
    ano = static_cast<int>(y + (mes <= 2 ? 1 : 0));
}

bool DataExiste(int dia, int mes, int ano) {
    if (ano < 1 || ano > 2870 || mes < 1 || mes > 12 || dia < 1) return false;
    static constexpr int kDias[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    bool bissexto = (ano % 4 == 0 && ano % 100 != 0) || ano % 400 == 0;
    int max = kDias[mes - 1] + (mes == 2 && bissexto ? 1 : 0);
    return dia <= max;
}

}  // namespace

REG_QZDMA::REG_QZDMA(int dia, int mes, int ano) {
    // A day that does not exist packs as 0 (empty), never as another day.
    ulValor = DataExiste(dia, mes, ano) ? static_cast<uint32_t>(DiasDesdeEra(ano, mes, dia) + kMinimo) : 0;
}

void REG_QZDMA::Decompoe(int& dia, int& mes, int& ano) const {
    if (!EhValida()) {
        dia = mes = ano = 0;
        return;
    }
    CivilDeDias(static_cast<int64_t>(ulValor) - kMinimo, ano, mes, dia);
}

int REG_QZDMA::GetDia() const { int d, m, a; Decompoe(d, m, a); return d; }
int REG_QZDMA::GetMes() const { int d, m, a; Decompoe(d, m, a); return m; }
int REG_QZDMA::GetAno() const { int d, m, a; Decompoe(d, m, a); return a; }

CString REG_QZDMA::Formata(TIPO_DATA_DMA tipo) const {
    int d, m, a;
    Decompoe(d, m, a);
    switch (tipo) {
        case TIPO_DATA_DMA_DDMMAA: return CString::Formatado("%02d/%02d/%02d", d, m, a % 100);
        case TIPO_DATA_DMA_MMAAAA: return CString::Formatado("%02d%04d", m, a);
        case TIPO_DATA_DMA_MMAA: return CString::Formatado("%02d%02d", m, a % 100);
        case TIPO_DATA_DMA_AAAAMMDD: return CString::Formatado("%04d%02d%02d", a, m, d);
        case TIPO_DATA_DMA_AAAAMM: return CString::Formatado("%04d%02d", a, m);
        case TIPO_DATA_DMA_DDMMAAAA:
        default: return CString::Formatado("%02d/%02d/%04d", d, m, a);
    }
}

REG_QZDMA REG_QZDMA::SomaDias(int64_t dias) const {
    if (!EhValida()) return *this;
    // Beyond the calendar's span whatever the start (and clear of overflow).
    if (dias > kMaximo || dias < -static_cast<int64_t>(kMaximo)) return REG_QZDMA();
    const int64_t valor = static_cast<int64_t>(ulValor) + dias;
    return valor >= kMinimo && valor <= kMaximo ? REG_QZDMA(static_cast<uint32_t>(valor)) : REG_QZDMA();
}

REG_QZDMA REG_QZDMA::SomaMeses(int64_t meses) const {
    if (!EhValida()) return *this;
    constexpr int64_t kMesesCalendario = 2870 * 12;
    if (meses > kMesesCalendario || meses < -kMesesCalendario) return REG_QZDMA();
    int dia, mes, ano;
    Decompoe(dia, mes, ano);
    const int64_t indice = static_cast<int64_t>(ano) * 12 + (mes - 1) + meses;
    const int64_t novoAno = indice >= 0 ? indice / 12 : -1;
    if (novoAno < 1 || novoAno > 2870) return REG_QZDMA();
    const int novoMes = static_cast<int>(indice % 12) + 1;
    // The last day of a shorter month stands for the days it lacks.
    while (dia > 28 && !DataExiste(dia, novoMes, static_cast<int>(novoAno))) --dia;
    return REG_QZDMA(dia, novoMes, static_cast<int>(novoAno));
}

REG_QZDMA REG_QZDMA::SomaAnos(int64_t anos) const {
    if (!EhValida()) return *this;
    if (anos > 2870 || anos < -2870) return REG_QZDMA();
    return SomaMeses(anos * 12);
}

REG_QZMA::REG_QZMA(const REG_QZDMA& data) {
    int d, m, a;
    data.Decompoe(d, m, a);
    usAno = static_cast<uint16_t>(a);
    usMes = static_cast<uint16_t>(m);
}

CString REG_QZMA::Formata(REG_QZDMA::TIPO_DATA_DMA tipo) const {
    int m = usMes, a = usAno;
    switch (tipo) {
        case REG_QZDMA::TIPO_DATA_DMA_DDMMAA: return CString::Formatado("%02d/%02d", m, a % 100);
        case REG_QZDMA::TIPO_DATA_DMA_MMAA: return CString::Formatado("%02d%02d", m, a % 100);
        case REG_QZDMA::TIPO_DATA_DMA_AAAAMMDD:
        case REG_QZDMA::TIPO_DATA_DMA_AAAAMM: return CString::Formatado("%04d%02d", a, m);
        case REG_QZDMA::TIPO_DATA_DMA_DDMMAAAA: return CString::Formatado("%02d/%04d", m, a);
        case REG_QZDMA::TIPO_DATA_DMA_MMAAAA:
        default: return CString::Formatado("%02d%04d", m, a);
    }
}

REG_QZDMAHMSUTC::REG_QZDMAHMSUTC(const REG_QZDMA& data, int hora, int minuto, int segundo, int fuso) {
    if (!data.EhValida() || hora < 0 || hora > 23 || minuto < 0 || minuto > 59 || segundo < 0 || segundo > 59) {
        ullValor = 0;
        return;
    }
    uint64_t seg = static_cast<uint64_t>(hora * 3600 + minuto * 60 + segundo);
    ullValor = (static_cast<uint64_t>(data.ulValor) << 17) | seg |
               (static_cast<uint64_t>(static_cast<uint8_t>(static_cast<int8_t>(fuso))) << 38);
}

REG_QZDMAHMSUTC REG_QZDMAHMSUTC::MaisUmSegundo() const {
    uint64_t seg = GetSegundosDoDia() + 1;
    uint64_t dia = GetData().ulValor;
    if (seg >= 86400) {
        seg = 0;
        ++dia;
    }
    return REG_QZDMAHMSUTC((ullValor & ~kMascaraDataHora) | (dia << 17) | seg);
}

CString REG_QZDMAHMSUTC::Formata() const {
    return CString::Formatado("%s %02d:%02d:%02d", GetData().Formata().GetString(), GetHora(), GetMinuto(),
                              GetSegundo());
}

CString DmcToString(const REG_QZDMC& chave, REG_QZDMC::TIPO_PONTEIRO_DMC tipo) {
    if (tipo == REG_QZDMC::TIPO_PONTEIRO_DMC_NUMERO) return CString::Formatado("%u", chave.ulNumero);
    return CString::Formatado("%02u/%04u-%06u", static_cast<unsigned>(chave.ma.usMes),
                              static_cast<unsigned>(chave.ma.usAno), chave.ulNumero);
}
