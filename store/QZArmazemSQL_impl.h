// Template half of CQZArmazemSQL; included by QZArmazemSQL.h only.
#pragma once

#include <new>

// Walks the list members of a record, in declaration order, reading each
// from its child table.
// A list the read leaves out (leLista false) stays empty.
struct CQZArmazemSQL::VisitanteLeListas {
    CQZArmazemSQL& a;
    const qzsql::Tabela& t;
    int64_t chave;
    bool (*leLista)(uint64_t, const char*) = nullptr;
    uint64_t flags = QZ_LER_TUDO;
    size_t k = 0;
    template <class T>
    void Campo(const char*, T&, unsigned) {}
    template <class E>
    void Lista(const char* nome, std::vector<E>& l) {
        const qzsql::Tabela& filha = t.filhas[k++];
        if (leLista && !leLista(flags, nome)) {
            l.clear();
            return;
        }
        a.LeFilhas(filha, chave, l);
    }
};

// Reads the columns of a row straight into a record's fields, from column
// `coluna` on, in declaration order.
struct CQZArmazemSQL::VisitanteLeColunas {
    CQZArmazemSQL& a;
    const qzsql::CQZComando& c;
    int coluna;
    template <class T>
    void Campo(const char*, T& v, unsigned opcoes) {
        if (opcoes & QZ_CHAVE) return;
        if constexpr (std::is_same_v<T, CString>) {
            a.LeTexto(c, coluna++, v);
        } else if constexpr (requires { QZCodec<T>::DeColuna(v, int64_t{}); }) {
            QZCodec<T>::DeColuna(v, c.Inteiro(coluna++));
        } else if constexpr (requires { QZCodec<T>::DeColunas(v, [] { return int64_t{}; }); }) {
            QZCodec<T>::DeColunas(v, [this] { return c.Inteiro(coluna++); });
        } else {
            CQZValor partes[QZCodec<T>::N];
            for (auto& p : partes) p = c.Inteiro(coluna++);
            QZCodec<T>::De(v, partes);
        }
    }
    template <class E>
    void Lista(const char*, std::vector<E>&) {}
};

// Writes the list members of a record into their child tables.
struct CQZArmazemSQL::VisitanteGravaListas {
    CQZArmazemSQL& a;
    const qzsql::Tabela& t;
    int64_t chave;
    size_t k = 0;
    template <class T>
    void Campo(const char*, const T&, unsigned) {}
    template <class E>
    void Lista(const char*, const std::vector<E>& l) {
        const qzsql::Tabela& filha = t.filhas[k++];
        int64_t ordem = 0;
        for (const E& e : l) {
            std::vector<CQZValor> valores;
            qzsql::VisitanteExtrai x{valores};
            e.VisitaCampos(x);
            int64_t linha;
            {
                qzsql::CQZComando c(a.m_banco, filha.insereFilha);
                c.Liga(1, chave).Liga(2, ordem++);
                for (size_t i = 0; i < valores.size(); ++i) a.Liga(c, static_cast<int>(i) + 3, valores[i]);
                // The child's key, numbered by the table (RETURNING).
                linha = c.Passo() ? c.Inteiro(0) : 0;
            }
            a.GravaFilhas(filha, linha, e);
        }
    }
};

template <class F>
long CQZArmazemSQL::Despacha(const char* operacao, F&& fn) {
    m_erro.LimpaErro();
    if (m_pGancho) {
        long hr = m_pGancho->AntesDaOperacao(operacao, m_erro);
        if (hr != 0) return hr;
    }
    if (!m_banco.EstaAberto()) {
        m_erro.SetErro(QZ_E_BANCO, QZ_MODULO_CONEXAO, 1, "O banco de dados não está aberto (%s).", operacao);
        return QZ_E_BANCO;
    }
    try {
        m_banco.Revive();
        return fn();
    } catch (const qzsql::Falha& f) {
        m_erro.SetErro(f.hr, QZ_MODULO_CONEXAO, f.mensagem, "%s", f.texto.c_str());
        return f.hr;
    } catch (const std::bad_alloc&) {
        m_erro.SetErro(QZ_E_SEM_MEMORIA, QZ_MODULO_CONEXAO, 1, "Memória insuficiente em %s.", operacao);
        return m_erro.GetUltimoHR();
    }
}

template <class F>
long CQZArmazemSQL::EmTransacao(const char* operacao, F&& fn) {
    return Despacha(operacao, [&]() -> long { return m_banco.EmTransacao(qzsql::EModoTransacao::ESCRITA, fn); });
}

template <class F>
long CQZArmazemSQL::EmLeitura(const char* operacao, F&& fn) {
    return Despacha(operacao, [&]() -> long { return m_banco.EmTransacao(qzsql::EModoTransacao::LEITURA, fn); });
}

template <class Anexa>
void CQZArmazemSQL::ExecutaBusca(const qzsql::Tabela& t, const TQZBaseFiltro& filtro, bool classificacao,
                                 Anexa&& anexa) {
    CQZCondicoes c;
    filtro.MontaCondicoes(c, classificacao);
    const qzsql::BuscaCompilada& b = BuscaPara(t, classificacao, c, true);
    qzsql::CQZComando cmd(m_banco, b.comando);
    int indice = 1;
    for (const auto& l : b.ligacoes) {
        const CQZCondicao& cond = c.Lista()[l.condicao];
        if (l.limite)
            cmd.LigaTexto(indice++, qzsql::LimitePrefixo(std::get<CString>(cond.valor)));
        else
            Liga(cmd, indice++, cond.valor);
    }
    while (cmd.Passo()) anexa(cmd.Inteiro(0));
}

template <class R>
void CQZArmazemSQL::GarantaTabela() {
    const qzsql::Tabela& t = qzsql::EsquemaDe<R>();
    if (t.id < m_tabelasCriadas.size() && m_tabelasCriadas[t.id]) return;
    ReconciliaTabela(t);
    if (t.id >= m_tabelasCriadas.size()) m_tabelasCriadas.resize(t.id + 1);
    m_tabelasCriadas[t.id] = true;
}

template <class R>
int64_t CQZArmazemSQL::ChaveDe(const R& reg) {
    if constexpr (QZTipoChaveDe<R>() == QZ_CHAVE_UNICA) {
        return 1;
    } else if constexpr (QZTipoChaveDe<R>() == QZ_CHAVE_DMC) {
        const REG_QZDMC chave = QZChaveDmcDe(reg);
        return chave.EhValido() ? static_cast<int64_t>(chave.GetValor()) : 0;
    } else {
        return reg.GetPosicao();
    }
}

template <class R>
void CQZArmazemSQL::DefineChave(R& reg, int64_t chave) {
    if constexpr (QZTipoChaveDe<R>() == QZ_CHAVE_DMC) {
        if (REG_QZDMC* p = QZPonteiroChaveDmc(reg)) *p = REG_QZDMC::DeValor(static_cast<uint64_t>(chave));
    } else if constexpr (QZTipoChaveDe<R>() == QZ_CHAVE_POSICAO) {
        reg.SetPosicao(static_cast<uint32_t>(chave));
    }
}

template <class E>
void CQZArmazemSQL::LeFilhas(const qzsql::Tabela& t, int64_t pai, std::vector<E>& lista) {
    lista.clear();
    qzsql::CQZComando c(m_banco, t.filhasDe);
    c.Liga(1, pai);
    while (c.Passo()) {
        E& e = lista.emplace_back();
        VisitanteLeColunas colunas{*this, c, 1};
        e.VisitaCampos(colunas);
        // The grandchildren come through another table's statement.
        VisitanteLeListas vl{*this, t, c.Inteiro(0)};
        e.VisitaCampos(vl);
    }
}

template <class R>
bool CQZArmazemSQL::LeLinha(const qzsql::Tabela& t, int64_t chave, R& reg, uint64_t flags) {
    {
        qzsql::CQZComando c(m_banco, t.seleciona);
        c.Liga(1, chave);
        if (!c.Passo()) return false;
        VisitanteLeColunas colunas{*this, c, 0};
        reg.VisitaCampos(colunas);
    }
    DefineChave(reg, chave);
    VisitanteLeListas vl{*this, t, chave, &QZLeituraListas<R>::LeLista, flags};
    reg.VisitaCampos(vl);
    return true;
}

template <class R>
bool CQZArmazemSQL::Existe(const qzsql::Tabela& t, int64_t chave) {
    qzsql::CQZComando c(m_banco, t.existe);
    c.Liga(1, chave);
    return c.Passo();
}

template <class R>
void CQZArmazemSQL::GravaFilhas(const qzsql::Tabela& t, int64_t chave, const R& reg) {
    VisitanteGravaListas vl{*this, t, chave};
    reg.VisitaCampos(vl);
}

template <class K>
int64_t CQZArmazemSQL::ChaveDireta(const K& chave) {
    if constexpr (std::is_integral_v<K> && std::is_signed_v<K> && sizeof(K) <= 4) {
        // A position passed through a signed key keeps its bits: -1294967296
        // is position 3000000000.
        return static_cast<int64_t>(static_cast<std::make_unsigned_t<K>>(chave));
    } else if constexpr (std::is_integral_v<K>) {
        return static_cast<int64_t>(chave);
    } else if constexpr (std::is_same_v<K, REG_QZDMC>) {
        return static_cast<int64_t>(chave.GetValor());
    } else if constexpr (std::is_same_v<K, _REG_POSICAO_PRODUTOPS>) {
        // Products and services are stored by item; grid positions pick a
        // variant of the same item.
        return static_cast<int64_t>(chave.lPonteiroProduto);
    } else if constexpr (requires { chave.GetChaveArmazem(); }) {
        // Composite keys (user and module, ...) pack into one integer key.
        return static_cast<int64_t>(chave.GetChaveArmazem());
    } else {
        static_assert(sizeof(K) == 0, "key type without a mapping to the store");
        return 0;
    }
}

template <class R, class K>
long CQZArmazemSQL::LeGenerico(const K& chave, R* pDados, bool vazioSeAusente, uint64_t flags) {
    GarantaTabela<R>();
    const qzsql::Tabela& t = qzsql::EsquemaDe<R>();
    const int64_t valor = ChaveDireta(chave);
    // Read straight into the caller's record: a failed read leaves it unspecified.
    if (!LeLinha(t, valor, *pDados, flags)) {
        if (vazioSeAusente) {
            *pDados = R();
            return 0;
        }
        throw qzsql::Falha{QZ_E_REGISTRO_NAO_ENCONTRADO, 2,
                           "Registro " + t.nome + " não encontrado na chave " + std::to_string(valor) + "."};
    }
    return 0;
}

template <class R, class K>
long CQZArmazemSQL::LeBufferGenerico(const K& chave, R* pDados, bool vazioSeAusente) {
    // Inside a transaction the cache was checked when it began.
    if (m_banco.NivelTransacao() == 0) VerificaVersaoDados();
    GarantaTabela<R>();
    const ChaveCache chaveCache{&qzsql::EsquemaDe<R>(), ChaveDireta(chave)};
    if (auto it = m_cache.find(chaveCache); it != m_cache.end()) {
        *pDados = static_cast<const R&>(*it->second);
        return 0;
    }
    long hr = LeGenerico(chave, pDados, vazioSeAusente);
    if (hr == 0) m_cache[chaveCache] = std::make_shared<R>(*pDados);
    return hr;
}

template <class L>
void CQZArmazemSQL::AnexaChave(L& lista, int64_t chave) {
    using T = std::decay_t<decltype(lista[0])>;
    if constexpr (std::is_same_v<T, REG_QZDMC>)
        lista.Add(REG_QZDMC::DeValor(static_cast<uint64_t>(chave)));
    else if constexpr (requires { lista.Add(T{}); })
        lista.Add(static_cast<T>(chave));
    else
        lista.push_back(static_cast<T>(chave));
}

template <class R>
long CQZArmazemSQL::InsereLinha(R& reg, bool manterCarimbo) {
    GarantaTabela<R>();
    const qzsql::Tabela& t = qzsql::EsquemaDe<R>();
    int64_t chave = ChaveDe(reg);
    if constexpr (QZTipoChaveDe<R>() == QZ_CHAVE_DMC) {
        const REG_QZDMC* pChave = QZPonteiroChaveDmc(reg);
        if (!pChave || !pChave->ma.EhValido())
            throw qzsql::Falha{QZ_E_REGISTRO_INVALIDO, 6, "Chave de movimento sem mês e ano em " + t.nome + "."};
        if (pChave->ulNumero == 0) chave = ProximoNumeroMes(t, pChave->ma);
    } else if constexpr (QZTipoChaveDe<R>() == QZ_CHAVE_POSICAO) {
        if (chave == 0) chave = ProximaChave(t);
    }
    R novo(reg);
    DefineChave(novo, chave);
    std::vector<CQZValor> valores;
    qzsql::VisitanteExtrai x{valores};
    novo.VisitaCampos(x);
    if (t.carimbo >= 0) {
        CQZValor& carimbo = valores[static_cast<size_t>(t.carimbo)];
        if (!manterCarimbo || REG_QZDMAHMSUTC(static_cast<uint64_t>(std::get<int64_t>(carimbo))).EhVazio())
            carimbo = static_cast<int64_t>(NovoCarimbo(nullptr).ullValor);
    }
    {
        qzsql::CQZComando c(m_banco, t.insere);
        c.Liga(1, chave);
        for (size_t i = 0; i < valores.size(); ++i) Liga(c, static_cast<int>(i) + 2, valores[i]);
        // The key's uniqueness is the table's: no read before the insert.
        try {
            c.Passo();
        } catch (const qzsql::FalhaChaveDuplicada&) {
            throw qzsql::Falha{QZ_E_REGISTRO_INVALIDO, 6,
                               "Já existe um registro " + t.nome + " na chave " + std::to_string(chave) + "."};
        }
    }
    Alterou(t, chave);
    GravaFilhas(t, chave, novo);
    qzsql::VisitantePreenche p{valores};
    novo.VisitaCampos(p);
    reg = std::move(novo);
    return 0;
}

template <class R>
long CQZArmazemSQL::Insere(R& reg) {
    return EmTransacao("Insere", [&] { return InsereLinha(reg, false); });
}

template <class R>
long CQZArmazemSQL::Restaura(R& reg) {
    return EmTransacao("Restaura", [&] { return InsereLinha(reg, true); });
}

template <class R>
std::optional<int64_t> CQZArmazemSQL::ConfereCarimbo(const qzsql::Tabela& t, int64_t chave, const R& reg) {
    int64_t gravado;
    {
        qzsql::CQZComando c(m_banco, t.carimboGravado);
        c.Liga(1, chave);
        if (!c.Passo())
            throw qzsql::Falha{QZ_E_REGISTRO_NAO_ENCONTRADO, 2,
                               "Registro " + t.nome + " não encontrado na chave " + std::to_string(chave) + "."};
        gravado = c.Inteiro(0);
    }
    if (t.carimbo < 0) return std::nullopt;
    const uint64_t cRegistro = QZCarimboDe(reg).ullValor;
    if ((static_cast<uint64_t>(gravado) & REG_QZDMAHMSUTC::kMascaraDataHora) !=
        (cRegistro & REG_QZDMAHMSUTC::kMascaraDataHora))
        throw qzsql::Falha{QZ_E_REGISTRO_ALTERADO, 3,
                           "Registro " + t.nome + " alterado por outro usuário desde a leitura."};
    return gravado;
}

template <class R>
long CQZArmazemSQL::Atualiza(R& reg) {
    return EmTransacao("Atualiza", [&]() -> long {
        GarantaTabela<R>();
        const qzsql::Tabela& t = qzsql::EsquemaDe<R>();
        int64_t chave = ChaveDe(reg);
        std::vector<CQZValor> valores;
        qzsql::VisitanteExtrai x{valores};
        reg.VisitaCampos(x);
        // The write carries the stamp the caller read: of two writers racing
        // on one record exactly one changes the row.
        const std::optional<int64_t> carimbo = ConfereCarimbo(t, chave, reg);
        if (carimbo) {
            const REG_QZDMAHMSUTC anterior(static_cast<uint64_t>(*carimbo));
            valores[static_cast<size_t>(t.carimbo)] = static_cast<int64_t>(NovoCarimbo(&anterior).ullValor);
        }
        if (AtualizaLinha(t, chave, valores, carimbo) != 1)
            throw qzsql::Falha{t.carimbo >= 0 ? QZ_E_REGISTRO_ALTERADO : QZ_E_REGISTRO_NAO_ENCONTRADO, 3,
                               "Registro " + t.nome + " não foi atualizado na chave " + std::to_string(chave) + "."};
        Alterou(t, chave);
        for (const auto& filha : t.filhas) {
            qzsql::CQZComando c(m_banco, filha.apagaFilhas);
            c.Liga(1, chave);
            c.Passo();
        }
        GravaFilhas(t, chave, reg);
        qzsql::VisitantePreenche p{valores};
        reg.VisitaCampos(p);
        return 0;
    });
}

template <class R>
long CQZArmazemSQL::Grava(R& reg) {
    if constexpr (QZTipoChaveDe<R>() == QZ_CHAVE_UNICA) {
        return EmTransacao("Grava", [&]() -> long {
            GarantaTabela<R>();
            R atual;
            if (LeLinha(qzsql::EsquemaDe<R>(), 1, atual)) return Atualiza(reg);
            return Insere(reg);
        });
    } else if constexpr (QZTipoChaveDe<R>() == QZ_CHAVE_DMC) {
        return QZChaveDmcDe(reg).EhValido() ? Atualiza(reg) : Insere(reg);
    } else {
        return reg.GetPosicao() == 0 ? Insere(reg) : Atualiza(reg);
    }
}

template <class R>
long CQZArmazemSQL::Remove(const R& reg) {
    return EmTransacao("Remove", [&]() -> long {
        GarantaTabela<R>();
        const qzsql::Tabela& t = qzsql::EsquemaDe<R>();
        const int64_t chave = ChaveDe(reg);
        if (RemoveLinha(t, chave, ConfereCarimbo(t, chave, reg)) != 1)
            throw qzsql::Falha{QZ_E_REGISTRO_ALTERADO, 3,
                               "Registro " + t.nome + " não foi excluído na chave " + std::to_string(chave) + "."};
        Alterou(t, chave);
        return 0;
    });
}

template <class R>
long CQZArmazemSQL::LeRegistro(int64_t chave, R& reg) {
    return Despacha("LeRegistro", [&] { return LeGenerico(chave, &reg, false); });
}

template <class R>
long CQZArmazemSQL::ListaChaves(std::vector<int64_t>& chaves) {
    return Despacha("ListaChaves", [&]() -> long {
        GarantaTabela<R>();
        chaves.clear();
        qzsql::CQZComando c(m_banco, qzsql::EsquemaDe<R>().chaves);
        while (c.Passo()) chaves.push_back(c.Inteiro(0));
        return 0;
    });
}

template <class F>
long CQZArmazemSQL::BuscaChaves(const F& filtro, std::vector<int64_t>& chaves) {
    chaves.clear();
    return Despacha("BuscaChaves", [&]() -> long {
        GarantaTabela<typename F::TipoRegistro>();
        ExecutaBusca(qzsql::EsquemaDe<typename F::TipoRegistro>(), filtro, false,
                     [&](int64_t chave) { chaves.push_back(chave); });
        return 0;
    });
}

template <class F>
long CQZArmazemSQL::BuscaSubarvore(const F& filtro, std::vector<int64_t>& chaves) {
    chaves.clear();
    return Despacha("BuscaSubarvore", [&]() -> long {
        GarantaTabela<typename F::TipoRegistro>();
        ExecutaBusca(qzsql::EsquemaDe<typename F::TipoRegistro>(), filtro, true,
                     [&](int64_t chave) { chaves.push_back(chave); });
        return 0;
    });
}

template <class F>
long CQZArmazemSQL::PlanoBusca(const F& filtro, bool classificacao, std::vector<std::string>& plano) {
    plano.clear();
    return Despacha("PlanoBusca", [&]() -> long {
        GarantaTabela<typename F::TipoRegistro>();
        const qzsql::Tabela& t = qzsql::EsquemaDe<typename F::TipoRegistro>();
        CQZCondicoes c;
        filtro.MontaCondicoes(c, classificacao);
        plano = Explica(BuscaPara(t, classificacao, c, false).comando.sql);
        return 0;
    });
}
