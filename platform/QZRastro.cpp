#include "platform/QZRastro.h"

#include <sys/utsname.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <nlohmann/json.hpp>

#include "platform/QZCodigosResultado.h"
#include "platform/QZVersao.h"

namespace {

IQZSaidaRastro& SaidaPadrao() {
    static CQZSaidaRastroJsonLinhas saida([] {
        const char* p = std::getenv("PXLREG_LOG");
        return std::string(p ? p : "");
    }());
    return saida;
}

CString VersaoSO() {
    struct utsname u {};
    if (uname(&u) != 0) return CString();
    return CString::Formatado("%s %s", u.sysname, u.release);
}

// Private memory of the process: resident pages not shared with others.
uint64_t MemoriaPrivada() {
    std::ifstream f("/proc/self/statm");
    unsigned long long total = 0, residente = 0, compartilhada = 0;
    if (!(f >> total >> residente >> compartilhada)) return 0;
    long pagina = sysconf(_SC_PAGESIZE);
    return residente > compartilhada ? (residente - compartilhada) * static_cast<uint64_t>(pagina) : 0;
}

}  // namespace

void CQZSaidaRastroJsonLinhas::Grava(const CQZRegistroRastro& r) {
    nlohmann::json j;
    j["nivel"] = r.nivel;
    j["funcao"] = QZParaUtf8(r.funcao);
    for (const auto& [k, v] : r.chaves) j[k] = QZParaUtf8(v);
    j["memoriaPrivada"] = r.memoriaPrivada;
    j["empresa"] = QZParaUtf8(r.empresa);
    j["usuario"] = r.usuario;
    j["sessao"] = r.sessao;
    std::string linha = j.dump() + "\n";
    std::lock_guard<std::mutex> trava(m_mutex);
    if (m_caminho.empty()) {
        std::cerr << linha << std::flush;
        return;
    }
    std::ofstream f(m_caminho, std::ios::app);
    if (!(f << linha)) std::cerr << linha << std::flush;  // the trace must not vanish silently
}

void CQZSaidaRastroCaptura::Grava(const CQZRegistroRastro& registro) {
    std::lock_guard<std::mutex> trava(m_mutex);
    m_registros.push_back(registro);
}
std::vector<CQZRegistroRastro> CQZSaidaRastroCaptura::Registros() const {
    std::lock_guard<std::mutex> trava(m_mutex);
    return m_registros;
}
void CQZSaidaRastroCaptura::Limpa() {
    std::lock_guard<std::mutex> trava(m_mutex);
    m_registros.clear();
}

IQZSaidaRastro& QZSaidaRastroPadrao() { return SaidaPadrao(); }

CString QZFormataLogFalha(const char* nomeVariavel, const char* expressao, long hr) {
    CString chamada = CString::Formatado("%s = %s", nomeVariavel, expressao);
    QZInfoCodigo info = QZBuscaCodigo(hr);
    int severidade = QZSeveridade(hr), facility = QZFacility(hr), codigo = QZCodigo(hr);
    return CString::Formatado(
        "%s\t%s = %#X %s\tSEVERITY = %d %s\tFACILITY = %d %s\tCODE = %d %s\tDescrição = %s", chamada.GetString(),
        nomeVariavel, static_cast<unsigned>(hr), info.nome, severidade, QZNomeSeveridade(severidade), facility,
        QZNomeFacility(facility), codigo, QZNomeCodigoParte(hr), QZDescricaoCodigo(hr));
}

CString QZNomeFuncao(const char* assinatura) {
    std::string s(assinatura ? assinatura : "");
    auto par = s.find('(');
    std::string antes = s.substr(0, par);
    auto espaco = antes.rfind(' ');
    std::string nome = espaco == std::string::npos ? antes : antes.substr(espaco + 1);
    while (!nome.empty() && (nome.front() == '*' || nome.front() == '&')) nome.erase(0, 1);
    return CString(nome);
}

CString QZNomeFonte(const char* arquivo) {
    std::string s(arquivo ? arquivo : "");
    auto barra = s.find_last_of("/\\");
    if (barra != std::string::npos) s.erase(0, barra + 1);
    auto ponto = s.rfind('.');
    if (ponto != std::string::npos) s.erase(ponto);
    return CString(s);
}

void QZRastreiaFalha(long hr, const char* expressao, const char* funcao, const char* arquivo, int linha,
                     const IQZGT_Profiler* profiler, const long* naoRastrear) {
    if (hr == 0) return;
    if (naoRastrear)
        for (const long* p = naoRastrear; static_cast<uint32_t>(*p) != 0xFFFFFFFFu; ++p)
            if (static_cast<uint32_t>(*p) == static_cast<uint32_t>(hr)) return;
    CQZRegistroRastro r;
    r.nivel = 3;
    r.funcao = QZNomeFuncao(funcao);
    r.chaves["VersaoNavor"] = QZ_VERSAO_PXLREG;
    r.chaves["VersaoSO"] = VersaoSO();
    r.chaves["Arquivo"] = QZNomeFonte(arquivo);
    r.chaves["Linha"] = CString::Formatado("%d", linha);
    r.chaves["Log"] = QZFormataLogFalha("hr", expressao, hr);
    r.memoriaPrivada = MemoriaPrivada();
    if (profiler) {
        r.empresa = profiler->GetEmpresa();
        r.usuario = profiler->GetUsuario();
        r.sessao = profiler->GetNumeroSessao();
    }
    try {
        IQZSaidaRastro* saida = profiler ? profiler->GetSaidaRastro() : nullptr;
        (saida ? *saida : SaidaPadrao()).Grava(r);
    } catch (...) {
        // A trace that cannot be written must not change the caller's result.
    }
}
