// No search the rules make may read a whole table. Two nets:
//  - every search any test of this binary runs through a store is checked
//    as it runs (the auditor below fails the test that made it);
//  - every search operation of the access contracts is planned here with
//    each of its criteria on its own and with all of them together, so an
//    operation added to a .def file is covered even before its rules exist.
#include <gtest/gtest.h>

#include "store/QZArmazemSQL.h"
#include "tests/support/PXPostgresTeste.h"

namespace {

class AuditorVarreduras : public IQZAuditorPlanos {
public:
    void Examina(const std::string& tabela, const std::string& sql, const std::vector<std::string>& plano) override {
        auto varreduras = CQZArmazemSQL::VarredurasCompletas(plano);
        if (!varreduras.empty())
            ADD_FAILURE() << "a search of " << tabela << " reads the whole table (" << varreduras.front()
                          << "): mark the fields it filters on QZ_IDX.\n  SQL: " << sql;
    }
};

class AmbienteAuditoria : public ::testing::Environment {
public:
    void SetUp() override { CQZArmazemSQL::DefineAuditorPlanos(&m_auditor); }
    void TearDown() override { CQZArmazemSQL::DefineAuditorPlanos(nullptr); }

private:
    AuditorVarreduras m_auditor;
};

[[maybe_unused]] ::testing::Environment* const g_ambiente = ::testing::AddGlobalTestEnvironment(new AmbienteAuditoria);

template <class T>
T ValorRepresentativo() {
    if constexpr (std::is_same_v<T, CString>) {
        return CString("A");
    } else if constexpr (std::is_integral_v<T>) {
        return T{1};
    } else {
        // A criterion that is itself a filter part (the classification of
        // tree filters): the settings it offers.
        T v{};
        if constexpr (requires { v.SetPonteiroInicial(1u); }) v.SetPonteiroInicial(1u);
        if constexpr (requires { v.SetApenasAnalitico(uint8_t{1}); }) v.SetApenasAnalitico(uint8_t{1});
        return v;
    }
}

// Sets criterion number `alvo` of a filter (every criterion when alvo < 0).
struct DefineCriterio {
    explicit DefineCriterio(int a) : alvo(a) {}
    int alvo;
    int i = 0;
    std::string nomes;
    template <class T>
    void Criterio(const char* nome, std::optional<T>& c) {
        if (alvo < 0 || i == alvo) {
            c = ValorRepresentativo<T>();
            nomes += (nomes.empty() ? "" : ", ") + std::string(nome);
        }
        ++i;
    }
};

struct CasoPlano {
    std::string operacao;
    std::string criterios;
    std::vector<std::string> plano;
};

template <class F>
void PlanejaFiltros(CQZArmazemSQL& armazem, const std::string& operacao, bool classificacao,
                    std::vector<CasoPlano>& casos) {
    DefineCriterio conta{-2};
    F modelo;
    modelo.VisitaCriterios(conta);
    for (int alvo = -1; alvo < conta.i; ++alvo) {
        F filtro;
        DefineCriterio define{alvo};
        filtro.VisitaCriterios(define);
        CQZCondicoes condicoes;
        filtro.MontaCondicoes(condicoes, classificacao);
        if (condicoes.Lista().empty()) continue;  // a flag on its own narrows nothing
        CasoPlano caso{operacao, define.nomes, {}};
        ASSERT_EQ(0, armazem.PlanoBusca(filtro, classificacao, caso.plano))
            << operacao << " (" << define.nomes << "): " << QZParaUtf8(armazem.GetErro().GetMensagem());
        casos.push_back(std::move(caso));
    }
}

std::vector<CasoPlano> PlanosDasOperacoes(CQZArmazemSQL& armazem) {
    std::vector<CasoPlano> casos;
#define QZ_OP_BUSCA(Nome, Filtro, Lista) PlanejaFiltros<Filtro>(armazem, "BuscaPonteiros" #Nome, false, casos);
#define QZ_OP_CLASSIFICACAO(Nome, Filtro) PlanejaFiltros<Filtro>(armazem, "BuscaClassificacao" #Nome, true, casos);
#include "platform/acesso/QZMacrosOperacoes.h"
#include "platform/acesso/Manutencao.def"
#include "platform/acesso/Gestavo.def"
#include "platform/acesso/QZFimMacrosOperacoes.h"
    return casos;
}

// A record with a field searched without an index: the check must see it.
#define CAMPOS_TESTE_SEM_INDICE(CAMPO, LISTA) \
    CAMPO(CString, Codigo, QZ_IDX)            \
    CAMPO(uint32_t, Solto, 0)
class CQZTeste_SemIndice : public TQZBaseParaDados {
    QZ_REGISTRO(CQZTeste_SemIndice, CAMPOS_TESTE_SEM_INDICE)
};
#define CRITERIOS_TESTE_SEM_INDICE(CRITERIO) CRITERIO(uint32_t, Solto)
class CQZTeste_FiltroSemIndice : public TQZBaseFiltro {
    QZ_FILTRO(CQZTeste_FiltroSemIndice, CQZTeste_SemIndice, CRITERIOS_TESTE_SEM_INDICE)
public:
    void MontaCondicoes(CQZCondicoes& c, bool) const override { c.Igual("Solto", m_critSolto); }
};

}  // namespace

TEST(QZPlanoConsultaTest, NoSearchOperationReadsAWholeTable) {
    CQZArmazemSQL armazem(":memory:");
    ASSERT_TRUE(armazem.EstaAberto());
    auto casos = PlanosDasOperacoes(armazem);
    ASSERT_FALSE(casos.empty());
    for (const auto& caso : casos) {
        auto varreduras = CQZArmazemSQL::VarredurasCompletas(caso.plano);
        EXPECT_TRUE(varreduras.empty()) << caso.operacao << " with " << caso.criterios << " reads a whole table: "
                                        << ::testing::PrintToString(caso.plano);
    }
}

TEST(QZPlanoConsultaTest, AnUnindexedSearchIsSeen) {
    CQZArmazemSQL armazem(":memory:");
    CQZTeste_FiltroSemIndice filtro;
    filtro.SetSolto(3);
    std::vector<std::string> plano;
    ASSERT_EQ(0, armazem.PlanoBusca(filtro, false, plano));
    EXPECT_FALSE(CQZArmazemSQL::VarredurasCompletas(plano).empty()) << ::testing::PrintToString(plano);
    // The subtree walk scans only its own queue.
    EXPECT_TRUE(CQZArmazemSQL::VarredurasCompletas({"SCAN qz_sub", "SEARCH t USING INDEX ix (PonteiroPai=?)"}).empty());
    EXPECT_EQ(CQZArmazemSQL::VarredurasCompletas({"SCAN t USING COVERING INDEX ix_x"}).size(), 1u);
}

TEST(QZPlanoConsultaTest, AfterABulkLoadSearchesTakeTheSelectiveIndex) {
    // Every technician active and a leaf: the indexes of those flags match
    // all rows, the user's matches one. Statistics taken after the load tell.
    CQZArmazemSQL armazem(":memory:");
    ASSERT_EQ(0, armazem.EmTransacao("Carga", [&]() -> long {
        for (int i = 1; i <= 2 * CQZArmazemSQL::kLinhasParaEstatisticas; ++i) {
            CQZDadosPX_Tecnico t;
            t.SetCodigo(CString::Formatado("T%05d", i)).SetTipoClassificacao(1);
            t.SetPonteiroFilial(static_cast<uint16_t>(i % 3 + 1)).SetPonteiroUsuario(static_cast<uint16_t>(i));
            if (long hr = armazem.Insere(t)) return hr;
        }
        return 0;
    }));
    CQZDadosPX_FiltroTecnico filtro;
    filtro.SetValorUnicoFilial(3).SetPonteiroUsuario(77).SetAtivo(1).SetTipoClassificacaoAnalitico(1);
    std::vector<std::string> plano;
    ASSERT_EQ(0, armazem.PlanoBusca(filtro, false, plano));
    ASSERT_EQ(plano.size(), 1u) << ::testing::PrintToString(plano);
    EXPECT_NE(plano[0].find("PonteiroUsuario"), std::string::npos) << plano[0];
    CQZArray_deprecated<uint32_t> achados;
    ASSERT_EQ(0, armazem.BuscaPonteirosTecnico(filtro, achados));
    ASSERT_EQ(achados.GetSize(), 1);
    EXPECT_EQ(achados[0], 77u);
}

TEST(QZPlanoConsultaTest, OnTheServerWithRealisticSizesNoSearchOperationReadsAWholeTable) {
    PXEsquemaPostgres esquema;
    if (esquema.Url().empty())
        GTEST_SKIP() << "PXLREG_TESTE_PG names no PostgreSQL server (scripts/test.sh postgres starts one)";
    CQZArmazemSQL armazem(esquema.Url());
    ASSERT_TRUE(armazem.EstaAberto()) << QZParaUtf8(armazem.GetErro().GetMensagem());
    // The server reads a small table whole because that is cheaper: every
    // table gets 20,000 rows of distinct values (lists under their owners,
    // which sort first by name), then statistics.
    esquema.Executa(R"(DO $$
DECLARE t record; colunas text; valores text;
BEGIN
  FOR t IN SELECT tablename FROM pg_tables WHERE schemaname = current_schema() AND tablename LIKE 'CQZ%'
           ORDER BY tablename LOOP
    SELECT string_agg(quote_ident(column_name), ', ' ORDER BY ordinal_position),
           string_agg(CASE WHEN column_name = 'ordem' THEN '0' WHEN data_type = 'text' THEN '''v'' || g'
                           ELSE 'g' END, ', ' ORDER BY ordinal_position)
      INTO colunas, valores FROM information_schema.columns
      WHERE table_schema = current_schema() AND table_name = t.tablename;
    EXECUTE format('INSERT INTO %I (%s) SELECT %s FROM generate_series(1, 20000) AS g', t.tablename, colunas, valores);
  END LOOP;
END $$)");
    esquema.Executa("ANALYZE");
    auto casos = PlanosDasOperacoes(armazem);
    ASSERT_FALSE(casos.empty());
    for (const auto& caso : casos) {
        auto varreduras = CQZArmazemSQL::VarredurasCompletas(caso.plano);
        EXPECT_TRUE(varreduras.empty()) << caso.operacao << " with " << caso.criterios << " reads a whole table: "
                                        << ::testing::PrintToString(caso.plano);
    }
}
