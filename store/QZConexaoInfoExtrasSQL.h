// The extra-information service on SQLite (":memory:" for tests, or a
// database file, which may be the one the data services use).
//
// Tables: "IE_Header" (posicao, processo, descricao, inativo), indexed by
// process; "IE_HeaderCampo" (header, codigo, ordem, nome), the fields each
// header defines; "IE_Valor" (header, chave, campo, ordem, valor), the values
// of the links, keyed by header, record and field, and dropped with the
// field that defines them. Text is stored as UTF-8.
//
// One object may serve several connections and threads: its operations
// take turns.
#pragma once

#include <sqlite3.h>

#include <mutex>
#include <string>
#include <unordered_map>

#include "platform/QZInfoExtras.h"
#include "store/QZArmazemSQL.h"

class CQZConexaoInfoExtrasSQL : public IQZArmazemInfoExtras {
public:
    explicit CQZConexaoInfoExtrasSQL(const std::string& caminho);
    ~CQZConexaoInfoExtrasSQL() override;
    CQZConexaoInfoExtrasSQL(const CQZConexaoInfoExtrasSQL&) = delete;
    CQZConexaoInfoExtrasSQL& operator=(const CQZConexaoInfoExtrasSQL&) = delete;

    bool EstaAberto() const { return m_db != nullptr; }
    // Why the database could not be opened.
    const CQZDadosGT_Erro& GetErroAbertura() const { return m_erroAbertura; }
    // Sees every operation first, by name ("BuscaPtrsIEHeader", "LeIEHeader",
    // "GravaIEHeader", "BuscaVinculoByOrigem", "GravaCamposVinculo"); a
    // non-zero code fails it (tests inject failures this way).
    void DefineGancho(IQZGanchoAcesso* gancho);

    long BuscaPtrsIEHeader(const IE_HEADER_FILTRO_PS& filtro, CIEArrayPonteiros& aPtrs, CQZDadosGT_Erro& erro) override;
    long LeIEHeader(uint32_t ulPosicao, CIEHeader& header, CQZDadosGT_Erro& erro) override;
    long GravaIEHeader(CIEHeader& header, CQZDadosGT_Erro& erro) override;
    long BuscaVinculoByOrigem(IE_ORIGEM_VINCULO_PS origem, CIEVinculo& vinculo, CQZDadosGT_Erro& erro) override;
    long GravaCamposVinculo(const CIEVinculo& vinculo, CQZDadosGT_Erro& erro) override;

private:
    template <class F>
    long Despacha(const char* operacao, CQZDadosGT_Erro& erro, F&& fn);
    template <class F>
    void EmTransacao(F&& fn);

    sqlite3_stmt* Prepara(const char* sql);
    bool Passo(sqlite3_stmt* st);
    void Executa(const char* sql);
    void LigaTexto(sqlite3_stmt* st, int indice, const CString& texto);
    CString ColunaTexto(sqlite3_stmt* st, int indice);
    [[noreturn]] void FalhaSql(const char* contexto);
    bool LeHeader(uint32_t ulPosicao, CIEHeader& header);
    void ExigeHeader(uint32_t ulPosicao, CIEHeader& header);

    sqlite3* m_db = nullptr;
    CQZDadosGT_Erro m_erroAbertura;
    IQZGanchoAcesso* m_pGancho = nullptr;
    std::unordered_map<std::string, sqlite3_stmt*> m_stmts;
    std::mutex m_mutex;
};
