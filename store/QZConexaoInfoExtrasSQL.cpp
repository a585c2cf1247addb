#include "store/QZConexaoInfoExtrasSQL.h"

#include <algorithm>
#include <new>
#include <set>

namespace {

// Internal failure, turned into the caller's error record at the dispatch point.
struct FalhaIE {
    long hr;
    long mensagem;
    std::string texto;
};

// Leaves a prepared statement ready for its next use however its use ends.
struct UsoComando {
    sqlite3_stmt* st;
    ~UsoComando() {
        sqlite3_reset(st);
        sqlite3_clear_bindings(st);
    }
};

[[noreturn]] void Invalido(const std::string& texto) { throw FalhaIE{QZ_E_REGISTRO_INVALIDO, 6, texto}; }

const char* const kEsquema[] = {
    "CREATE TABLE IF NOT EXISTS IE_Header (posicao INTEGER PRIMARY KEY, processo INTEGER NOT NULL, "
    "descricao TEXT NOT NULL DEFAULT '', inativo INTEGER NOT NULL DEFAULT 0)",
    "CREATE INDEX IF NOT EXISTS ix_IE_Header_processo ON IE_Header(processo, posicao)",
    "CREATE TABLE IF NOT EXISTS IE_HeaderCampo (header INTEGER NOT NULL REFERENCES IE_Header(posicao) "
    "ON DELETE CASCADE, codigo INTEGER NOT NULL, ordem INTEGER NOT NULL, nome TEXT NOT NULL, "
    "PRIMARY KEY (header, codigo))",
    "CREATE TABLE IF NOT EXISTS IE_Valor (header INTEGER NOT NULL, chave INTEGER NOT NULL, campo INTEGER NOT NULL, "
    "ordem INTEGER NOT NULL, valor TEXT NOT NULL, PRIMARY KEY (header, chave, campo), "
    "FOREIGN KEY (header, campo) REFERENCES IE_HeaderCampo(header, codigo) ON DELETE CASCADE)",
    "CREATE INDEX IF NOT EXISTS ix_IE_Valor_campo ON IE_Valor(header, campo)",
};

}  // namespace

CQZConexaoInfoExtrasSQL::CQZConexaoInfoExtrasSQL(const std::string& caminho) {
    const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX;
    if (sqlite3_open_v2(caminho.c_str(), &m_db, flags, nullptr) != SQLITE_OK) {
        m_erroAbertura.SetErro(QZ_E_BANCO, QZ_MODULO_CONEXAO, 1, "Não foi possível abrir o banco de dados %s: %s",
                               caminho.c_str(), m_db ? sqlite3_errmsg(m_db) : "sem memória");
        sqlite3_close(m_db);
        m_db = nullptr;
        return;
    }
    try {
        sqlite3_busy_timeout(m_db, 5000);
        Executa("PRAGMA foreign_keys = ON");
        Executa("PRAGMA journal_mode = WAL");
        EmTransacao([&] {
            for (const char* sql : kEsquema) Executa(sql);
        });
    } catch (const FalhaIE& f) {
        m_erroAbertura.SetErro(f.hr, QZ_MODULO_CONEXAO, f.mensagem, "%s", f.texto.c_str());
        sqlite3_close(m_db);
        m_db = nullptr;
    }
}

CQZConexaoInfoExtrasSQL::~CQZConexaoInfoExtrasSQL() {
    for (auto& [sql, st] : m_stmts) sqlite3_finalize(st);
    if (m_db) sqlite3_close(m_db);
}

void CQZConexaoInfoExtrasSQL::DefineGancho(IQZGanchoAcesso* gancho) {
    std::lock_guard<std::mutex> trava(m_mutex);
    m_pGancho = gancho;
}

template <class F>
long CQZConexaoInfoExtrasSQL::Despacha(const char* operacao, CQZDadosGT_Erro& erro, F&& fn) {
    std::lock_guard<std::mutex> trava(m_mutex);
    erro.LimpaErro();
    if (m_pGancho) {
        long hr = m_pGancho->AntesDaOperacao(operacao, erro);
        if (hr != 0) return hr;
    }
    if (!m_db) {
        erro.SetErro(QZ_E_BANCO, QZ_MODULO_CONEXAO, 1, "O banco de informações extras não está aberto (%s).", operacao);
        return QZ_E_BANCO;
    }
    try {
        fn();
        return 0;
    } catch (const FalhaIE& f) {
        erro.SetErro(f.hr, QZ_MODULO_CONEXAO, f.mensagem, "%s", f.texto.c_str());
        return f.hr;
    } catch (const std::bad_alloc&) {
        const long hr = static_cast<long>(static_cast<int32_t>(0x8007000Eu));
        erro.SetErro(hr, QZ_MODULO_CONEXAO, 1, "Memória insuficiente em %s.", operacao);
        return hr;
    }
}

template <class F>
void CQZConexaoInfoExtrasSQL::EmTransacao(F&& fn) {
    Executa("BEGIN IMMEDIATE");
    try {
        fn();
        Executa("COMMIT");
    } catch (...) {
        sqlite3_exec(m_db, "ROLLBACK", nullptr, nullptr, nullptr);
        throw;
    }
}

sqlite3_stmt* CQZConexaoInfoExtrasSQL::Prepara(const char* sql) {
    if (auto it = m_stmts.find(sql); it != m_stmts.end()) return it->second;
    sqlite3_stmt* st = nullptr;
    if (sqlite3_prepare_v3(m_db, sql, -1, SQLITE_PREPARE_PERSISTENT, &st, nullptr) != SQLITE_OK) FalhaSql(sql);
    m_stmts.emplace(sql, st);
    return st;
}

bool CQZConexaoInfoExtrasSQL::Passo(sqlite3_stmt* st) {
    const int rc = sqlite3_step(st);
    if (rc == SQLITE_ROW) return true;
    if (rc == SQLITE_DONE) return false;
    FalhaSql(sqlite3_sql(st));
}

void CQZConexaoInfoExtrasSQL::Executa(const char* sql) {
    if (sqlite3_exec(m_db, sql, nullptr, nullptr, nullptr) != SQLITE_OK) FalhaSql(sql);
}

[[noreturn]] void CQZConexaoInfoExtrasSQL::FalhaSql(const char* contexto) {
    const int codigo = sqlite3_errcode(m_db);
    const bool ocupado = codigo == SQLITE_BUSY || codigo == SQLITE_LOCKED;
    throw FalhaIE{ocupado ? QZ_E_BANCO_OCUPADO : QZ_E_BANCO, ocupado ? 4 : 1,
                  std::string("Erro do banco de dados (") + contexto + "): " + sqlite3_errmsg(m_db)};
}

void CQZConexaoInfoExtrasSQL::LigaTexto(sqlite3_stmt* st, int indice, const CString& texto) {
    std::string utf8, erro;
    if (!QZCp1252ParaUtf8(texto.str(), utf8, &erro)) Invalido("Texto inválido: " + erro);
    if (sqlite3_bind_text(st, indice, utf8.data(), static_cast<int>(utf8.size()), SQLITE_TRANSIENT) != SQLITE_OK)
        FalhaSql("bind");
}

CString CQZConexaoInfoExtrasSQL::ColunaTexto(sqlite3_stmt* st, int indice) {
    const auto* p = reinterpret_cast<const char*>(sqlite3_column_text(st, indice));
    std::string cp1252, erro;
    if (p && !QZUtf8ParaCp1252(std::string(p, static_cast<size_t>(sqlite3_column_bytes(st, indice))), cp1252, &erro))
        Invalido("Texto gravado sem forma em Windows-1252: " + erro);
    return CString(std::move(cp1252));
}

bool CQZConexaoInfoExtrasSQL::LeHeader(uint32_t ulPosicao, CIEHeader& header) {
    CIEHeader lido;
    {
        sqlite3_stmt* st = Prepara("SELECT processo, descricao, inativo FROM IE_Header WHERE posicao = ?");
        UsoComando uso{st};
        sqlite3_bind_int64(st, 1, ulPosicao);
        if (!Passo(st)) return false;
        lido.SetPosicao(ulPosicao)
            .SetProcesso(static_cast<IE_E_PROCESSO>(sqlite3_column_int64(st, 0)))
            .SetDescricao(ColunaTexto(st, 1))
            .SetInativo(sqlite3_column_int64(st, 2) != 0);
    }
    sqlite3_stmt* st = Prepara("SELECT codigo, nome FROM IE_HeaderCampo WHERE header = ? ORDER BY ordem");
    UsoComando uso{st};
    sqlite3_bind_int64(st, 1, ulPosicao);
    while (Passo(st)) lido.AdicionaCampo(static_cast<uint32_t>(sqlite3_column_int64(st, 0)), ColunaTexto(st, 1));
    header = std::move(lido);
    return true;
}

void CQZConexaoInfoExtrasSQL::ExigeHeader(uint32_t ulPosicao, CIEHeader& header) {
    if (ulPosicao == 0) Invalido("Vínculo sem cabeçalho de informações extras.");
    if (!LeHeader(ulPosicao, header))
        throw FalhaIE{QZ_E_REGISTRO_NAO_ENCONTRADO, 2,
                      "Cabeçalho de informações extras não encontrado na posição " + std::to_string(ulPosicao) + "."};
}

long CQZConexaoInfoExtrasSQL::BuscaPtrsIEHeader(const IE_HEADER_FILTRO_PS& filtro, CIEArrayPonteiros& aPtrs,
                                                CQZDadosGT_Erro& erro) {
    return Despacha("BuscaPtrsIEHeader", erro, [&] {
        const char* sql;
        if (filtro.ulTipoFiltro == IE_FILTRO_HEADER_PROCESSO)
            sql = "SELECT posicao FROM IE_Header WHERE processo = ?1 AND posicao > ?2 ORDER BY posicao LIMIT ?3";
        else if (filtro.ulTipoFiltro == IE_FILTRO_HEADER_TODOS)
            sql = "SELECT posicao FROM IE_Header WHERE posicao > ?2 ORDER BY posicao LIMIT ?3";
        else
            Invalido("Tipo de filtro de cabeçalho desconhecido: " + std::to_string(filtro.ulTipoFiltro) + ".");
        sqlite3_stmt* st = Prepara(sql);
        UsoComando uso{st};
        if (filtro.ulTipoFiltro == IE_FILTRO_HEADER_PROCESSO) sqlite3_bind_int64(st, 1, filtro.ulProcesso);
        sqlite3_bind_int64(st, 2, filtro.ulPosicaoApos);
        sqlite3_bind_int64(st, 3, filtro.ulQuantidadeMaxima == 0 ? -1 : static_cast<int64_t>(filtro.ulQuantidadeMaxima));
        CIEArrayPonteiros achados;
        while (Passo(st)) achados.pPtrs.push_back(static_cast<uint32_t>(sqlite3_column_int64(st, 0)));
        aPtrs = std::move(achados);
    });
}

long CQZConexaoInfoExtrasSQL::LeIEHeader(uint32_t ulPosicao, CIEHeader& header, CQZDadosGT_Erro& erro) {
    return Despacha("LeIEHeader", erro, [&] {
        if (!LeHeader(ulPosicao, header))
            throw FalhaIE{QZ_E_REGISTRO_NAO_ENCONTRADO, 2,
                          "Cabeçalho de informações extras não encontrado na posição " + std::to_string(ulPosicao) + "."};
    });
}

long CQZConexaoInfoExtrasSQL::GravaIEHeader(CIEHeader& header, CQZDadosGT_Erro& erro) {
    return Despacha("GravaIEHeader", erro, [&] {
        std::set<uint32_t> codigos;
        for (const CIECampoHeader& c : header.GetCampos()) {
            if (c.ulCodigo == 0) Invalido("Campo de informações extras sem código.");
            if (!codigos.insert(c.ulCodigo).second)
                Invalido("Campo de informações extras repetido no cabeçalho: " + std::to_string(c.ulCodigo) + ".");
        }
        uint32_t posicao = header.GetPosicao();
        EmTransacao([&] {
            if (posicao == 0) {
                sqlite3_stmt* st = Prepara("SELECT COALESCE(MAX(posicao), 0) + 1 FROM IE_Header");
                UsoComando uso{st};
                const int64_t proxima = Passo(st) ? sqlite3_column_int64(st, 0) : 1;
                if (proxima > static_cast<int64_t>(UINT32_MAX)) Invalido("Não há mais posições de cabeçalho livres.");
                posicao = static_cast<uint32_t>(proxima);
            } else {
                // A stored header is replaced; a position nobody stored is
                // refused rather than taken.
                CIEHeader gravado;
                ExigeHeader(posicao, gravado);
            }
            {
                sqlite3_stmt* st = Prepara(
                    "INSERT INTO IE_Header (posicao, processo, descricao, inativo) VALUES (?1, ?2, ?3, ?4) "
                    "ON CONFLICT(posicao) DO UPDATE SET processo = ?2, descricao = ?3, inativo = ?4");
                UsoComando uso{st};
                sqlite3_bind_int64(st, 1, posicao);
                sqlite3_bind_int64(st, 2, header.GetProcesso());
                LigaTexto(st, 3, header.GetDescricao());
                sqlite3_bind_int64(st, 4, header.IsInativo() ? 1 : 0);
                Passo(st);
            }
            std::vector<uint32_t> remover;
            {
                sqlite3_stmt* st = Prepara("SELECT codigo FROM IE_HeaderCampo WHERE header = ?");
                UsoComando uso{st};
                sqlite3_bind_int64(st, 1, posicao);
                while (Passo(st)) {
                    const auto codigo = static_cast<uint32_t>(sqlite3_column_int64(st, 0));
                    if (!codigos.count(codigo)) remover.push_back(codigo);
                }
            }
            for (uint32_t codigo : remover) {
                sqlite3_stmt* st = Prepara("DELETE FROM IE_HeaderCampo WHERE header = ? AND codigo = ?");
                UsoComando uso{st};
                sqlite3_bind_int64(st, 1, posicao);
                sqlite3_bind_int64(st, 2, codigo);
                Passo(st);
            }
            int64_t ordem = 0;
            for (const CIECampoHeader& c : header.GetCampos()) {
                sqlite3_stmt* st = Prepara(
                    "INSERT INTO IE_HeaderCampo (header, codigo, ordem, nome) VALUES (?1, ?2, ?3, ?4) "
                    "ON CONFLICT(header, codigo) DO UPDATE SET ordem = ?3, nome = ?4");
                UsoComando uso{st};
                sqlite3_bind_int64(st, 1, posicao);
                sqlite3_bind_int64(st, 2, c.ulCodigo);
                sqlite3_bind_int64(st, 3, ordem++);
                LigaTexto(st, 4, c.sNome);
                Passo(st);
            }
        });
        header.SetPosicao(posicao);
    });
}

long CQZConexaoInfoExtrasSQL::BuscaVinculoByOrigem(IE_ORIGEM_VINCULO_PS origem, CIEVinculo& vinculo,
                                                   CQZDadosGT_Erro& erro) {
    return Despacha("BuscaVinculoByOrigem", erro, [&] {
        CIEHeader header;
        ExigeHeader(origem.ulPosicaoHeader, header);
        CIEVinculo lido;
        lido.SetPosicaoHeader(origem.ulPosicaoHeader).SetChave(origem.ulChaveOrigem);
        sqlite3_stmt* st = Prepara("SELECT campo, valor FROM IE_Valor WHERE header = ? AND chave = ? ORDER BY ordem");
        UsoComando uso{st};
        sqlite3_bind_int64(st, 1, origem.ulPosicaoHeader);
        sqlite3_bind_int64(st, 2, origem.ulChaveOrigem);
        while (Passo(st)) lido.SetValor(static_cast<uint32_t>(sqlite3_column_int64(st, 0)), ColunaTexto(st, 1));
        vinculo = std::move(lido);
    });
}

long CQZConexaoInfoExtrasSQL::GravaCamposVinculo(const CIEVinculo& vinculo, CQZDadosGT_Erro& erro) {
    return Despacha("GravaCamposVinculo", erro, [&] {
        CIEHeader header;
        ExigeHeader(vinculo.GetPosicaoHeader(), header);
        if (vinculo.GetChave() == 0) Invalido("Vínculo de informações extras sem chave de registro.");
        if (header.IsInativo())
            Invalido("O cabeçalho de informações extras " + std::to_string(header.GetPosicao()) + " está inativo.");
        for (const CIEValorCampo& v : vinculo.GetValores()) {
            const auto& campos = header.GetCampos();
            if (std::none_of(campos.begin(), campos.end(),
                             [&](const CIECampoHeader& c) { return c.ulCodigo == v.ulCodigoCampo; }))
                Invalido("Campo " + std::to_string(v.ulCodigoCampo) + " não definido no cabeçalho " +
                         std::to_string(header.GetPosicao()) + ".");
        }
        EmTransacao([&] {
            {
                sqlite3_stmt* st = Prepara("DELETE FROM IE_Valor WHERE header = ? AND chave = ?");
                UsoComando uso{st};
                sqlite3_bind_int64(st, 1, vinculo.GetPosicaoHeader());
                sqlite3_bind_int64(st, 2, vinculo.GetChave());
                Passo(st);
            }
            int64_t ordem = 0;
            for (const CIEValorCampo& v : vinculo.GetValores()) {
                sqlite3_stmt* st =
                    Prepara("INSERT INTO IE_Valor (header, chave, campo, ordem, valor) VALUES (?, ?, ?, ?, ?)");
                UsoComando uso{st};
                sqlite3_bind_int64(st, 1, vinculo.GetPosicaoHeader());
                sqlite3_bind_int64(st, 2, vinculo.GetChave());
                sqlite3_bind_int64(st, 3, v.ulCodigoCampo);
                sqlite3_bind_int64(st, 4, ordem++);
                LigaTexto(st, 5, v.sValor);
                Passo(st);
            }
        });
    });
}
