#include "store/QZBanco.h"

#include <atomic>


namespace qzsql {

uint32_t NovoSlot() {
    static std::atomic<uint32_t> proximo{0};
    return proximo++;
}

CQZBanco::~CQZBanco() { Fecha(); }

void CQZBanco::Fecha() noexcept {
    DescartaComandos();
    m_motor.reset();
    m_nivel = 0;
}

void CQZBanco::Abre(std::unique_ptr<IQZMotor> motor, int esperaMs) {
    Fecha();
    m_motor = std::move(motor);
    DefineEspera(esperaMs);
}

void CQZBanco::DefineEspera(int ms) {
    m_esperaMs = ms;
    if (m_motor) m_motor->DefineEspera(ms);
}

void CQZBanco::Revive() {
    if (m_nivel > 0 || !m_motor || !m_motor->Perdida()) return;
    // The statements were prepared on the connection that broke.
    DescartaComandos();
    m_motor->Reconecta();
    m_motor->DefineEspera(m_esperaMs);
}

IQZComandoMotor* CQZBanco::Prepara(std::string_view sql) {
    std::string chave(sql);
    if (auto it = m_comandos.find(chave); it != m_comandos.end()) return it->second.get();
    auto st = m_motor->Prepara(chave);
    IQZComandoMotor* p = st.get();
    m_comandos.emplace(std::move(chave), std::move(st));
    return p;
}

IQZComandoMotor* CQZBanco::PreparaNoSlot(uint32_t slot, std::string_view sql) {
    auto st = m_motor->Prepara(sql);
    if (slot >= m_porSlot.size()) m_porSlot.resize(slot + 1);
    m_porSlot[slot] = std::move(st);
    return m_porSlot[slot].get();
}

void CQZBanco::DescartaComandos() {
    m_comandos.clear();
    m_porSlot.clear();
}

bool CQZBanco::IniciaTransacao(EModoTransacao modo) {
    if (m_nivel > 0 || !m_motor) return false;
    Revive();
    Inicia(modo);
    return true;
}

void CQZBanco::EncerraTransacao() {
    if (m_nivel == 0) return;
    try {
        Confirma();
    } catch (...) {
        // Confirma has rolled back what it could not commit.
    }
}

void CQZBanco::ConfirmaTransacao() {
    if (m_nivel > 0) Confirma();
}

void CQZBanco::DesfazTransacao() noexcept {
    if (m_nivel > 0) Desfaz();
}

void CQZBanco::Inicia(EModoTransacao modo) {
    static const uint32_t kLeitura = NovoSlot(), kEscrita = NovoSlot();
    {
        CQZComando c(*this, modo == EModoTransacao::ESCRITA ? kEscrita : kLeitura, m_motor->SqlInicio(modo));
        c.Passo();
    }
    m_nivel = 1;
    m_linhasAntes = m_motor->TotalAlteradas();
    // A deferred transaction takes its snapshot at its first read: the
    // owner reads at once what it checks the transaction by.
    try {
        m_motor->AposInicio(modo);
        if (m_pObservador) m_pObservador->AoIniciar();
    } catch (...) {
        Desfaz();
        throw;
    }
}

void CQZBanco::Confirma() {
    static const CQZComandoFixo kConfirma{"COMMIT"};
    try {
        m_motor->AntesDeConfirmar();
        CQZComando c(*this, kConfirma);
        c.Passo();
    } catch (...) {
        // A commit that fails (a full disk) leaves the transaction open.
        Desfaz();
        throw;
    }
    m_nivel = 0;
    if (m_pObservador) m_pObservador->AoConfirmar(m_motor->TotalAlteradas() - m_linhasAntes);
}

void CQZBanco::Desfaz() noexcept {
    m_nivel = 0;
    m_motor->Desfaz();
    if (m_pObservador) m_pObservador->AoDesfazer();
}

void CQZComando::Anota(int indice, bool texto, int64_t inteiro, std::string_view utf8) {
    m_pValores->push_back({indice, texto, inteiro, std::string(utf8)});
}

}  // namespace qzsql
