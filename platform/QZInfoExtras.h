// The suite's extra-information service: user-defined fields attached to
// the records of a process. A header describes the fields of one process;
// a link holds the values of those fields for one record, named by the
// header's position and the record's key.
//
// CConexaoInfoExtras is a session's connection to the service; it opens a
// connection of the company's registered data (IQZConexaoEmpresa) and uses
// its store of extra information (IQZArmazemInfoExtras). Every
// operation returns a long status, 0 on success and negative on failure,
// and keeps the failure in the connection's error record (GetErro). A
// failed read leaves the caller's output as it was.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "platform/CString.h"
#include "platform/QZBaseParaRotinas.h"
#include "platform/QZDadosGT_Erro.h"

// Processes that carry extra information. The values are numbered by the
// enterprise layer's process table; hosts pass them through unchanged.
enum IE_E_PROCESSO : uint32_t {
    IE_PROCESSO_NENHUM = 0,
};

// Kinds of header search (first member of IE_HEADER_FILTRO_PS).
enum : uint32_t {
    IE_FILTRO_HEADER_TODOS = 0,     // every header
    IE_FILTRO_HEADER_PROCESSO = 1,  // the headers of ulProcesso
};

// Header search: headers after ulPosicaoApos (0: from the first), in
// position order, at most ulQuantidadeMaxima of them (0: no limit).
// Inactive headers are found too.
struct IE_HEADER_FILTRO_PS {
    uint32_t ulTipoFiltro = IE_FILTRO_HEADER_PROCESSO;
    uint32_t ulProcesso = 0;
    uint32_t ulPosicaoApos = 0;
    uint32_t ulQuantidadeMaxima = 0;
};

// Where a link comes from: the header and the source record's key.
struct IE_ORIGEM_VINCULO_PS {
    uint32_t ulPosicaoHeader = 0;
    uint32_t ulChaveOrigem = 0;
};

// Result of a header search.
struct CIEArrayPonteiros {
    std::vector<uint32_t> pPtrs;
    uint32_t GetQuantidade() const { return static_cast<uint32_t>(pPtrs.size()); }
};

// One field a header defines. Codes are non-zero and unique in a header.
struct CIECampoHeader {
    uint32_t ulCodigo = 0;
    CString sNome;
    friend bool operator==(const CIECampoHeader&, const CIECampoHeader&) = default;
};

class CIEHeader {
public:
    // Position of the header in the service; 0 for none.
    uint32_t GetPosicao() const { return m_ulPosicao; }
    CIEHeader& SetPosicao(uint32_t posicao) { m_ulPosicao = posicao; return *this; }
    IE_E_PROCESSO GetProcesso() const { return m_eProcesso; }
    CIEHeader& SetProcesso(IE_E_PROCESSO processo) { m_eProcesso = processo; return *this; }
    const CString& GetDescricao() const { return m_sDescricao; }
    CIEHeader& SetDescricao(const CString& descricao) { m_sDescricao = descricao; return *this; }
    // An inactive header keeps its values readable but takes no new ones.
    bool IsInativo() const { return m_bInativo; }
    CIEHeader& SetInativo(bool inativo) { m_bInativo = inativo; return *this; }

    const std::vector<CIECampoHeader>& GetCampos() const { return m_campos; }
    CIEHeader& AdicionaCampo(uint32_t codigo, const CString& nome) {
        m_campos.push_back({codigo, nome});
        return *this;
    }
    void RemoveTodosCampos() { m_campos.clear(); }

    void Limpa() { *this = CIEHeader(); }
    friend bool operator==(const CIEHeader&, const CIEHeader&) = default;

private:
    uint32_t m_ulPosicao = 0;
    IE_E_PROCESSO m_eProcesso = IE_PROCESSO_NENHUM;
    CString m_sDescricao;
    bool m_bInativo = false;
    std::vector<CIECampoHeader> m_campos;
};

// The value of one field of a link, as text.
struct CIEValorCampo {
    uint32_t ulCodigoCampo = 0;
    CString sValor;
    friend bool operator==(const CIEValorCampo&, const CIEValorCampo&) = default;
};

// The extra information of one record: header position and record key,
// then the field values in the order they were written.
class CIEVinculo {
public:
    uint32_t GetPosicaoHeader() const { return m_ulPosicaoHeader; }
    CIEVinculo& SetPosicaoHeader(uint32_t posicao) { m_ulPosicaoHeader = posicao; return *this; }
    uint32_t GetChave() const { return m_ulChave; }
    CIEVinculo& SetChave(uint32_t chave) { m_ulChave = chave; return *this; }

    const std::vector<CIEValorCampo>& GetValores() const { return m_valores; }
    // Sets the field's value, replacing an earlier value of the same field.
    CIEVinculo& SetValor(uint32_t codigoCampo, const CString& valor);
    // The field's value; false (and valor untouched) when the link has none.
    bool GetValor(uint32_t codigoCampo, CString& valor) const;
    void RemoveTodosValores() { m_valores.clear(); }

    void Limpa() { *this = CIEVinculo(); }
    friend bool operator==(const CIEVinculo&, const CIEVinculo&) = default;

private:
    uint32_t m_ulPosicaoHeader = 0;
    uint32_t m_ulChave = 0;
    std::vector<CIEValorCampo> m_valores;
};

// What the extra-information layer asks of the object that uses it.
class IIEContexto {
public:
    virtual ~IIEContexto() = default;
    virtual unsigned long IEGetChave() const = 0;
    virtual CString IEGetEmpresa() const = 0;
    virtual unsigned short IEGetUsuario() const = 0;
    virtual long IEGetNumeroSessao() const = 0;
    virtual IE_E_PROCESSO IEGetProcesso() const = 0;
};

// Storage of one company's extra information, on one connection of the
// company's data (IQZConexaoEmpresa::InfoExtras). Each operation reports its
// failure in `erro` and leaves the outputs untouched when it fails.
class IQZArmazemInfoExtras {
public:
    virtual ~IQZArmazemInfoExtras() = default;
    virtual long BuscaPtrsIEHeader(const IE_HEADER_FILTRO_PS& filtro, CIEArrayPonteiros& aPtrs,
                                   CQZDadosGT_Erro& erro) = 0;
    virtual long LeIEHeader(uint32_t ulPosicao, CIEHeader& header, CQZDadosGT_Erro& erro) = 0;
    // Stores a header: a new one (position 0) gets the next position; a
    // stored one is replaced, and the values of fields it no longer defines
    // are dropped with them.
    virtual long GravaIEHeader(CIEHeader& header, CQZDadosGT_Erro& erro) = 0;
    // The link of a record; a record without values gives a link with none.
    virtual long BuscaVinculoByOrigem(IE_ORIGEM_VINCULO_PS origem, CIEVinculo& vinculo, CQZDadosGT_Erro& erro) = 0;
    // Replaces the values of the link's record under its header with the
    // link's values (none: the record's values are removed).
    virtual long GravaCamposVinculo(const CIEVinculo& vinculo, CQZDadosGT_Erro& erro) = 0;
};

class CConexaoInfoExtras {
public:
    CConexaoInfoExtras() = default;
    CConexaoInfoExtras(const CConexaoInfoExtras&) = delete;
    CConexaoInfoExtras& operator=(const CConexaoInfoExtras&) = delete;
    ~CConexaoInfoExtras() { Finaliza(); }

    // Opens a connection of its own to the company's data. The stores keep
    // no per-session state, so the user and the session only complete the call.
    [[nodiscard]] long Inicializa(const CString& empresa, uint16_t usuario, uint32_t sessao);
    void Finaliza();
    bool EstaInicializada() const { return m_pArmazem != nullptr; }
    const CQZDadosGT_Erro& GetErro() const { return m_erro; }
    // Where the company traces failures (null: the process's default).
    IQZSaidaRastro* GetSaidaRastro() const { return m_servicos.pRastro; }

    long BuscaPtrsIEHeader(const IE_HEADER_FILTRO_PS& filtro, CIEArrayPonteiros& aPtrs);
    long LeIEHeader(unsigned long ulPosicao, CIEHeader& header);
    long GravaIEHeader(CIEHeader& header);
    long BuscaVinculoByOrigem(IE_ORIGEM_VINCULO_PS origem, CIEVinculo& vinculo);
    long GravaCamposVinculo(CIEVinculo& vinculo);

private:
    // Fails with the "not connected" error when no store is at hand.
    bool SemArmazem();

    CQZServicosEmpresa m_servicos;
    std::unique_ptr<IQZConexaoEmpresa> m_conexao;
    IQZArmazemInfoExtras* m_pArmazem = nullptr;
    CQZDadosGT_Erro m_erro;
};
