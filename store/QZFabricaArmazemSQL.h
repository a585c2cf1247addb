// The connections of one company's store: each routine object opens its own
// (CQZBaseParaRotinas::Inicializa) and gives it back when it is finalised.
// Connections given back are kept, up to a few, for the next object.
//
// ":memory:" makes a private in-memory store that every connection of this
// factory shares (SQLite's shared cache), alive as long as the factory.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "store/QZArmazemSQL.h"

class CQZFabricaArmazemSQL : public IQZFabricaConexoes {
public:
    static constexpr size_t kMaximoOciosas = 8;

    explicit CQZFabricaArmazemSQL(std::string caminho, QZModoAbertura modo = QZ_ABRE_EXISTENTE,
                                  int esperaMs = CQZArmazemSQL::kEsperaPadraoMs);
    ~CQZFabricaArmazemSQL() override;
    CQZFabricaArmazemSQL(const CQZFabricaArmazemSQL&) = delete;
    CQZFabricaArmazemSQL& operator=(const CQZFabricaArmazemSQL&) = delete;

    [[nodiscard]] long Abre(std::unique_ptr<IQZConexaoEmpresa>& conexao, CQZDadosGT_Erro& erro) override;
    void Devolve(std::unique_ptr<IQZConexaoEmpresa> conexao) override;

    // A connection as a store, for the host's and the tests' own reads and
    // writes; null with the reason in `erro` when it cannot be opened.
    std::unique_ptr<CQZArmazemSQL> AbreArmazem(CQZDadosGT_Erro& erro);

    // What every connection opened from now on gets (set before routines
    // run: these are not meant to change under running connections).
    void DefineRelogio(const IQZRelogio* relogio) { m_pRelogio = relogio; }
    void DefineGancho(IQZGanchoAcesso* gancho) { m_pGancho = gancho; }
    void DefineTempoEspera(int ms) { m_esperaMs = ms; }
    void DefineTransporteEmail(IQZTransporteEmail* transporte) { m_pTransporteEmail = transporte; }

    // The path given, and the one connections open (they differ in memory).
    const std::string& Caminho() const { return m_caminho; }
    const std::string& CaminhoConexoes() const { return m_caminhoConexoes; }
    // Connections opened and not yet given back (tests).
    int Abertas() const { return m_abertas.load(); }

private:
    void Configura(CQZArmazemSQL& armazem) const;

    std::string m_caminho;
    std::string m_caminhoConexoes;
    QZModoAbertura m_modo;
    int m_esperaMs;
    const IQZRelogio* m_pRelogio = nullptr;
    IQZGanchoAcesso* m_pGancho = nullptr;
    IQZTransporteEmail* m_pTransporteEmail = nullptr;
    // Keeps a shared in-memory store alive between connections.
    std::unique_ptr<CQZArmazemSQL> m_ancora;
    std::mutex m_mutex;
    std::vector<std::unique_ptr<CQZArmazemSQL>> m_ociosas;
    std::atomic<int> m_abertas{0};
};
