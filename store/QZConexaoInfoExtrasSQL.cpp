#include "store/QZConexaoInfoExtrasSQL.h"

#include "store/QZSQLite.h"

#include <algorithm>
#include <cstdint>
#include <new>
#include <set>

namespace {

[[noreturn]] void Invalido(const std::string& texto) { throw qzsql::Falha{QZ_E_REGISTRO_INVALIDO, 6, texto}; }

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

CQZConexaoInfoExtrasSQL::CQZConexaoInfoExtrasSQL(const std::string& caminho)
    : m_proprio(std::make_unique<qzsql::CQZBanco>(caminho)), m_pBanco(m_proprio.get()) {
    try {
        m_pBanco->Abre(qzsql::AbreSQLite(caminho, caminho, true), CQZArmazemSQL::kEsperaPadraoMs);
        m_pBanco->Executa("PRAGMA journal_mode = WAL");
        CriaEsquema();
    } catch (const qzsql::Falha& f) {
        m_erroAbertura.SetErro(f.hr, QZ_MODULO_CONEXAO, f.mensagem, "%s", f.texto.c_str());
        m_pBanco->Fecha();
    }
}

CQZConexaoInfoExtrasSQL::CQZConexaoInfoExtrasSQL(qzsql::CQZBanco& banco) : m_pBanco(&banco) {
    try {
        CriaEsquema();
    } catch (const qzsql::Falha& f) {
        m_erroAbertura.SetErro(f.hr, QZ_MODULO_CONEXAO, f.mensagem, "%s", f.texto.c_str());
        m_pBanco = nullptr;
    }
}

CQZConexaoInfoExtrasSQL::~CQZConexaoInfoExtrasSQL() = default;

void CQZConexaoInfoExtrasSQL::CriaEsquema() {
    qzsql::IQZMotor& motor = m_pBanco->Motor();
    if (motor.ExisteTabela("IE_Valor")) return;
    EmTransacao([&] {
        for (std::string sql : kEsquema) {
            // The engine's types: 64-bit integers, text compared byte by byte.
            for (size_t p = 0; (p = sql.find("INTEGER", p)) != std::string::npos; p += motor.TipoInteiro().size())
                sql.replace(p, 7, motor.TipoInteiro());
            for (size_t p = 0; (p = sql.find("TEXT", p)) != std::string::npos; p += motor.TipoTexto().size())
                sql.replace(p, 4, motor.TipoTexto());
            m_pBanco->Executa(sql.c_str());
        }
    });
}

void CQZConexaoInfoExtrasSQL::DefineGancho(IQZGanchoAcesso* gancho) { m_pGancho = gancho; }

template <class F>
long CQZConexaoInfoExtrasSQL::Despacha(const char* operacao, CQZDadosGT_Erro& erro, F&& fn) {
    erro.LimpaErro();
    if (m_pGancho) {
        long hr = m_pGancho->AntesDaOperacao(operacao, erro);
        if (hr != 0) return hr;
    }
    if (!EstaAberto()) {
        erro.SetErro(QZ_E_BANCO, QZ_MODULO_CONEXAO, 1, "O banco de informações extras não está aberto (%s).", operacao);
        return QZ_E_BANCO;
    }
    try {
        fn();
        return 0;
    } catch (const qzsql::Falha& f) {
        erro.SetErro(f.hr, QZ_MODULO_CONEXAO, f.mensagem, "%s", f.texto.c_str());
        return f.hr;
    } catch (const std::bad_alloc&) {
        erro.SetErro(QZ_E_SEM_MEMORIA, QZ_MODULO_CONEXAO, 1, "Memória insuficiente em %s.", operacao);
        return QZ_E_SEM_MEMORIA;
    }
}

template <class F>
void CQZConexaoInfoExtrasSQL::EmTransacao(F&& fn) {
    long hr = m_pBanco->EmTransacao(qzsql::EModoTransacao::ESCRITA, [&]() -> long {
        fn();
        return 0;
    });
    (void)hr;  // the work returns 0 or throws
}

void CQZConexaoInfoExtrasSQL::LigaTexto(qzsql::CQZComando& c, int indice, const CString& texto) {
    std::string utf8, erro;
    if (!QZCp1252ParaUtf8(texto.str(), utf8, &erro)) Invalido("Texto inválido: " + erro);
    c.LigaTexto(indice, utf8);
}

CString CQZConexaoInfoExtrasSQL::ColunaTexto(const qzsql::CQZComando& c, int indice) {
    std::string cp1252, erro;
    if (!QZUtf8ParaCp1252(c.Texto(indice), cp1252, &erro))
        Invalido("Texto gravado inválido: " + erro);
    return CString(std::move(cp1252));
}

bool CQZConexaoInfoExtrasSQL::LeHeader(uint32_t ulPosicao, CIEHeader& header) {
    CIEHeader lido;
    {
        qzsql::CQZComando c(*m_pBanco, "SELECT processo, descricao, inativo FROM IE_Header WHERE posicao = ?");
        c.Liga(1, ulPosicao);
        if (!c.Passo()) return false;
        lido.SetPosicao(ulPosicao)
            .SetProcesso(static_cast<IE_E_PROCESSO>(c.Inteiro(0)))
            .SetDescricao(ColunaTexto(c, 1))
            .SetInativo(c.Inteiro(2) != 0);
    }
    qzsql::CQZComando c(*m_pBanco, "SELECT codigo, nome FROM IE_HeaderCampo WHERE header = ? ORDER BY ordem");
    c.Liga(1, ulPosicao);
    while (c.Passo()) lido.AdicionaCampo(static_cast<uint32_t>(c.Inteiro(0)), ColunaTexto(c, 1));
    header = std::move(lido);
    return true;
}

void CQZConexaoInfoExtrasSQL::ExigeHeader(uint32_t ulPosicao, CIEHeader& header) {
    if (ulPosicao == 0) Invalido("Vínculo sem cabeçalho de informações extras.");
    if (!LeHeader(ulPosicao, header))
        throw qzsql::Falha{QZ_E_REGISTRO_NAO_ENCONTRADO, 2,
                      "Cabeçalho de informações extras não encontrado na posição " + std::to_string(ulPosicao) + "."};
}

long CQZConexaoInfoExtrasSQL::BuscaPtrsIEHeader(const IE_HEADER_FILTRO_PS& filtro, CIEArrayPonteiros& aPtrs,
                                                CQZDadosGT_Erro& erro) {
    return Despacha("BuscaPtrsIEHeader", erro, [&] {
        const char* sql;
        if (filtro.ulTipoFiltro == IE_FILTRO_HEADER_PROCESSO)
            sql = "SELECT posicao FROM IE_Header WHERE processo = ?1 AND posicao > ?2 ORDER BY posicao LIMIT ?3";
        else if (filtro.ulTipoFiltro == IE_FILTRO_HEADER_TODOS)
            sql = "SELECT posicao FROM IE_Header WHERE posicao > ?1 ORDER BY posicao LIMIT ?2";
        else
            Invalido("Tipo de filtro de cabeçalho desconhecido: " + std::to_string(filtro.ulTipoFiltro) + ".");
        qzsql::CQZComando c(*m_pBanco, sql);
        // Every placeholder is used (a server types each by its use).
        int i = 1;
        if (filtro.ulTipoFiltro == IE_FILTRO_HEADER_PROCESSO) c.Liga(i++, filtro.ulProcesso);
        c.Liga(i++, filtro.ulPosicaoApos);
        // No maximum: the highest limit (a negative one means none only to SQLite).
        c.Liga(i, filtro.ulQuantidadeMaxima == 0 ? INT64_MAX : static_cast<int64_t>(filtro.ulQuantidadeMaxima));
        CIEArrayPonteiros achados;
        while (c.Passo()) achados.pPtrs.push_back(static_cast<uint32_t>(c.Inteiro(0)));
        aPtrs = std::move(achados);
    });
}

long CQZConexaoInfoExtrasSQL::LeIEHeader(uint32_t ulPosicao, CIEHeader& header, CQZDadosGT_Erro& erro) {
    return Despacha("LeIEHeader", erro, [&] {
        if (!LeHeader(ulPosicao, header))
            throw qzsql::Falha{QZ_E_REGISTRO_NAO_ENCONTRADO, 2,
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
                m_pBanco->Motor().ReservaChaves("IE_Header");
                qzsql::CQZComando c(*m_pBanco, "SELECT COALESCE(MAX(posicao), 0) + 1 FROM IE_Header");
                const int64_t proxima = c.Passo() ? c.Inteiro(0) : 1;
                if (proxima > static_cast<int64_t>(UINT32_MAX)) Invalido("Não há mais posições de cabeçalho livres.");
                posicao = static_cast<uint32_t>(proxima);
            } else {
                // A stored header is replaced; a position nobody stored is
                // refused rather than taken.
                CIEHeader gravado;
                ExigeHeader(posicao, gravado);
            }
            {
                qzsql::CQZComando c(
                    *m_pBanco, "INSERT INTO IE_Header (posicao, processo, descricao, inativo) VALUES (?1, ?2, ?3, ?4) "
                               "ON CONFLICT(posicao) DO UPDATE SET processo = ?2, descricao = ?3, inativo = ?4");
                c.Liga(1, posicao).Liga(2, header.GetProcesso());
                LigaTexto(c, 3, header.GetDescricao());
                c.Liga(4, header.IsInativo() ? 1 : 0);
                c.Passo();
            }
            std::vector<uint32_t> remover;
            {
                qzsql::CQZComando c(*m_pBanco, "SELECT codigo FROM IE_HeaderCampo WHERE header = ?");
                c.Liga(1, posicao);
                while (c.Passo()) {
                    const auto codigo = static_cast<uint32_t>(c.Inteiro(0));
                    if (!codigos.count(codigo)) remover.push_back(codigo);
                }
            }
            for (uint32_t codigo : remover) {
                qzsql::CQZComando c(*m_pBanco, "DELETE FROM IE_HeaderCampo WHERE header = ? AND codigo = ?");
                c.Liga(1, posicao).Liga(2, codigo);
                c.Passo();
            }
            int64_t ordem = 0;
            for (const CIECampoHeader& c : header.GetCampos()) {
                qzsql::CQZComando cmd(*m_pBanco,
                                      "INSERT INTO IE_HeaderCampo (header, codigo, ordem, nome) VALUES (?1, ?2, ?3, ?4) "
                                      "ON CONFLICT(header, codigo) DO UPDATE SET ordem = ?3, nome = ?4");
                cmd.Liga(1, posicao).Liga(2, c.ulCodigo).Liga(3, ordem++);
                LigaTexto(cmd, 4, c.sNome);
                cmd.Passo();
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
        qzsql::CQZComando c(*m_pBanco, "SELECT campo, valor FROM IE_Valor WHERE header = ? AND chave = ? ORDER BY ordem");
        c.Liga(1, origem.ulPosicaoHeader).Liga(2, origem.ulChaveOrigem);
        while (c.Passo()) lido.SetValor(static_cast<uint32_t>(c.Inteiro(0)), ColunaTexto(c, 1));
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
                qzsql::CQZComando c(*m_pBanco, "DELETE FROM IE_Valor WHERE header = ? AND chave = ?");
                c.Liga(1, vinculo.GetPosicaoHeader()).Liga(2, vinculo.GetChave());
                c.Passo();
            }
            int64_t ordem = 0;
            for (const CIEValorCampo& v : vinculo.GetValores()) {
                qzsql::CQZComando c(*m_pBanco,
                                    "INSERT INTO IE_Valor (header, chave, campo, ordem, valor) VALUES (?, ?, ?, ?, ?)");
                c.Liga(1, vinculo.GetPosicaoHeader()).Liga(2, vinculo.GetChave()).Liga(3, v.ulCodigoCampo);
                c.Liga(4, ordem++);
                LigaTexto(c, 5, v.sValor);
                c.Passo();
            }
        });
    });
}
