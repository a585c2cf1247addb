#include "platform/QZTextosGT.h"

#include <algorithm>
#include <cstdlib>

CString DataToString(const REG_QZDMA& data, bool bAnoCompleto) {
    if (!data.EhValida()) return CString();
    return data.Formata(bAnoCompleto ? REG_QZDMA::TIPO_DATA_DMA_DDMMAAAA : REG_QZDMA::TIPO_DATA_DMA_DDMMAA);
}

CString DmaHmsToString(const REG_QZDMAHMSUTC& dataHora, bool bComFuso) {
    if (!dataHora.EhValido()) return CString();
    CString texto;
    texto.Format("%s %02d:%02d:%02d", DataToString(dataHora.GetData()).GetString(), dataHora.GetHora(),
                 dataHora.GetMinuto(), dataHora.GetSegundo());
    if (bComFuso) {
        const int quartos = dataHora.GetFusoQuartosHora();
        const int minutos = std::abs(quartos) * 15;
        CString fuso;
        fuso.Format(" %c%02d:%02d", quartos < 0 ? '-' : '+', minutos / 60, minutos % 60);
        texto += fuso;
    }
    return texto;
}

CString MoedaToString(const CQZMoeda& valor, int decimais) {
    std::string texto = valor.Formata(std::clamp(decimais, 0, 4)).str();
    std::replace(texto.begin(), texto.end(), '.', ',');
    return CString(std::move(texto));
}

CString DiasToString(int64_t dias) {
    CString texto;
    texto.Format("%lld", static_cast<long long>(dias));
    return texto;
}
