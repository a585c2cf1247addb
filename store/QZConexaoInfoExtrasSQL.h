// The extra-information service on SQLite: on a connection of the data
// services (its tables beside theirs), or on a database of its own
// (":memory:" for tests, or a file).
//
// Tables: "IE_Header" (posicao, processo, descricao, inativo), indexed by
// process; "IE_HeaderCampo" (header, codigo, ordem, nome), the fields each
// header defines; "IE_Valor" (header, chave, campo, ordem, valor), the values
// of the links, keyed by header, record and field, and dropped with the
// field that defines them. Text is stored as UTF-8.
//
// Like the connection it is on, an object is used by one thread at a time.
#pragma once

#include <memory>
#include <string>

#include "platform/QZInfoExtras.h"
#include "store/QZArmazemSQL.h"

class CQZConexaoInfoExtrasSQL : public IQZArmazemInfoExtras {
public:
    // A database of its own.
    explicit CQZConexaoInfoExtrasSQL(const std::string& caminho);
    // On a connection the caller keeps open for this object's lifetime.
    explicit CQZConexaoInfoExtrasSQL(qzsql::CQZBanco& banco);
    ~CQZConexaoInfoExtrasSQL() override;
    CQZConexaoInfoExtrasSQL(const CQZConexaoInfoExtrasSQL&) = delete;
    CQZConexaoInfoExtrasSQL& operator=(const CQZConexaoInfoExtrasSQL&) = delete;

    bool EstaAberto() const { return m_pBanco && m_pBanco->EstaAberto(); }
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

    // The tables, created when the database has none yet.
    void CriaEsquema();
    void LigaTexto(qzsql::CQZComando& c, int indice, const CString& texto);
    CString ColunaTexto(const qzsql::CQZComando& c, int indice);
    bool LeHeader(uint32_t ulPosicao, CIEHeader& header);
    void ExigeHeader(uint32_t ulPosicao, CIEHeader& header);

    std::unique_ptr<qzsql::CQZBanco> m_proprio;
    qzsql::CQZBanco* m_pBanco = nullptr;
    CQZDadosGT_Erro m_erroAbertura;
    IQZGanchoAcesso* m_pGancho = nullptr;
};
