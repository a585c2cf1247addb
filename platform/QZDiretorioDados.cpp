#include "platform/QZDiretorioDados.h"

#include <cstdlib>
#include <filesystem>

namespace {
constexpr const char* kRaizSistema = "/var/lib/pxlreg";
}

CString CQZDiretorioDados::GetRaizPadrao() {
    const char* raiz = std::getenv("PXLREG_DADOS");
    return (raiz && *raiz) ? CString(raiz) : CString(kRaizSistema);
}

CString CQZDiretorioDados::GetCodigoModulo(QZModulo modulo) {
    switch (modulo) {
        case QZ_MODULO_NENHUM: return CString();
        case QZ_MODULO_GT: return "GT";
        case QZ_MODULO_ES: return "ES";
        case QZ_MODULO_PX: return "PX";
        default: return CString::Formatado("%d", static_cast<int>(modulo));
    }
}

CQZDiretorioDados::CQZDiretorioDados(const CString& raiz) : m_sRaiz(raiz.IsEmpty() ? GetRaizPadrao() : raiz) {}

CString CQZDiretorioDados::GetDiretorioDados(const CString& empresa, QZModulo modulo) const {
    const std::string& nome = empresa.str();
    if (nome.empty() || nome == "." || nome == ".." || nome.find_first_of(std::string("/\\\0", 3)) != std::string::npos)
        return CString();
    const CString codigo = GetCodigoModulo(modulo);
    if (codigo.IsEmpty()) return CString();
    return CString((std::filesystem::path(m_sRaiz.str()) / nome / codigo.str()).lexically_normal().string());
}
