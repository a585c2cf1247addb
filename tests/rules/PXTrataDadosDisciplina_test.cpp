// Disciplines and expense types: one design, so one fixture typed over both,
// with each register's own field codes and operation names.
#include "platform/QZCodigosResultado.h"
#include "rules/PXTrataDadosDisciplina.h"
#include "rules/PXTrataDadosTipoGasto.h"
#include "tests/rules/PXTesteRegras.h"

namespace {

struct Disciplinas {
    using Handler = CPXTrataDadosDisciplina;
    using Registro = CQZDadosPX_Disciplina;
    static constexpr long kCodigoNovo = 2, kCodigoGravado = 3, kNome = 4, kPai = 5, kPaiProprio = 4;
    static constexpr const char* kLe = "LeDisciplina";
    static constexpr const char* kSubarvore = "BuscaClassificacaoDisciplina";
};

struct TiposGasto {
    using Handler = CPXTrataDadosTipoGasto;
    using Registro = CQZDadosPX_TipoGasto;
    static constexpr long kCodigoNovo = 130, kCodigoGravado = 131, kNome = 132, kPai = 133, kPaiProprio = 133;
    static constexpr const char* kLe = "LeTipoGasto";
    static constexpr const char* kSubarvore = "BuscaClassificacaoTipoGasto";
};

}  // namespace

template <class T>
class PXTrataDadosCadastroArvoreTest : public PXTesteRegras {
protected:
    using R = typename T::Registro;

    static R Novo(const char* codigo, const char* nome, uint8_t tipo, uint32_t pai = 0) {
        R r;
        r.SetCodigo(codigo).SetNome(nome).SetTipoClassificacao(tipo).SetPonteiroPai(pai);
        return r;
    }

    // grupo > sub > folha, and a separate leaf
    void SetUp() override {
        PXTesteRegras::SetUp();
        Inicializa(handler);
        grupo = this->Grava(Novo("G", "Grupo", 2));
        sub = this->Grava(Novo("S", "Subgrupo", 2, grupo.GetPonteiro()));
        folha = this->Grava(Novo("F", "Folha", 1, sub.GetPonteiro()));
        avulsa = this->Grava(Novo("A", "Avulsa", 1));
        vazio = this->Grava(Novo("V", "Grupo vazio", 2));
        ZeraChamadas();
    }

    // Saves a copy of `r` changed by `muda`; returns TrataGravacao's answer.
    template <class F>
    int Salva(R r, F&& muda) {
        muda(r);
        salvo = r;
        return handler.TrataGravacao(&salvo, nullptr);
    }

    typename T::Handler handler;
    R grupo, sub, folha, avulsa, vazio, salvo;
};

using Cadastros = ::testing::Types<Disciplinas, TiposGasto>;
TYPED_TEST_SUITE(PXTrataDadosCadastroArvoreTest, Cadastros);

TYPED_TEST(PXTrataDadosCadastroArvoreTest, FieldChecksInOrder) {
    using T = TypeParam;
    using R = typename T::Registro;
    struct Caso {
        const char* nome;
        std::function<void(R&)> muda;
        bool novo;
        long mensagem, campo;
    } casos[] = {
        {"new record, blank code", [](R& r) { r.SetCodigo("  "); }, true, 1, T::kCodigoNovo},
        {"saved record, blank code", [](R& r) { r.SetCodigo(""); }, false, 2, T::kCodigoGravado},
        {"code of another, before the name", [](R& r) { r.SetCodigo(" G ").SetNome(""); }, true, 10, T::kCodigoNovo},
        {"saved record, code of another", [](R& r) { r.SetCodigo("G"); }, false, 10, T::kCodigoNovo},
        {"blank name", [](R& r) { r.SetNome(" "); }, true, 4, T::kNome},
        {"saved record, its own parent", [&](R& r) { r.SetPonteiroPai(r.GetPonteiro()); }, false, 99, T::kPaiProprio},
    };
    for (auto& c : casos) {
        R base = c.novo ? this->Novo("NOVA", "Nova", 1) : this->avulsa;
        EXPECT_EQ(0, this->Salva(base, c.muda)) << c.nome;
        EXPECT_THAT(this->handler.GetErro(), TemMensagem(QZ_MODULO_PX, c.mensagem, c.campo)) << c.nome;
    }
}

TYPED_TEST(PXTrataDadosCadastroArvoreTest, TrimmedCodeAndNameAreWrittenBackEvenWhenRefused) {
    EXPECT_EQ(0, this->Salva(this->Novo("  G ", "  Nome ", 1), [](auto&) {}));
    EXPECT_EQ(this->salvo.GetCodigo(), "G");
    EXPECT_EQ(this->salvo.GetNome(), "Nome");
    EXPECT_EQ(1, this->Salva(this->Novo(" X1 ", " Nome X ", 1), [](auto&) {}));
    EXPECT_EQ(this->salvo.GetCodigo(), "X1");
    EXPECT_EQ(this->salvo.GetNome(), "Nome X");
}

TYPED_TEST(PXTrataDadosCadastroArvoreTest, StaleRecordIsRefused) {
    using T = TypeParam;
    auto outro = this->avulsa;
    outro.SetNome("Alterada");
    ASSERT_EQ(0, this->armazem.Atualiza(outro));
    EXPECT_EQ(0, this->Salva(this->avulsa, [](auto&) {}));
    EXPECT_THAT(this->handler.GetErro(), TemMensagem(QZ_MODULO_PX, 3, T::kCodigoNovo));
    // The record's own checks run before the stored copy is read.
    EXPECT_EQ(0, this->Salva(this->avulsa, [](auto& r) { r.SetCodigo(" "); }));
    EXPECT_THAT(this->handler.GetErro(), TemMensagem(QZ_MODULO_PX, 2, T::kCodigoGravado));
}

TYPED_TEST(PXTrataDadosCadastroArvoreTest, TreeMoves) {
    using T = TypeParam;
    using R = typename T::Registro;
    const uint32_t g = this->grupo.GetPonteiro(), f = this->folha.GetPonteiro();
    struct Caso {
        const char* nome;
        R base;
        uint8_t tipo;
        uint32_t pai;
        long mensagem;   // 0: saved
        bool buscaSubarvore;
    } casos[] = {
        // The order of the tree checks is PXVerificaArvore's; here, that each
        // register asks them with its field and its whole subtree.
        {"group with descendants made a leaf", this->grupo, 1, 0, 98, true},
        {"moved under its grandchild", this->grupo, 2, f, 99, true},
        {"moved elsewhere", this->sub, 2, this->vazio.GetPonteiro(), 0, true},
        {"stored leaf moves freely", this->folha, 1, g, 0, false},
    };
    for (auto& c : casos) {
        this->ZeraChamadas();
        int ok = this->Salva(c.base, [&](R& r) { r.SetTipoClassificacao(c.tipo).SetPonteiroPai(c.pai); });
        if (c.mensagem) {
            EXPECT_EQ(0, ok) << c.nome;
            EXPECT_THAT(this->handler.GetErro(), TemMensagem(QZ_MODULO_PX, c.mensagem, T::kPai)) << c.nome;
        } else {
            EXPECT_EQ(1, ok) << c.nome << ": " << QZParaUtf8(this->handler.GetMensagem());
        }
        EXPECT_EQ(c.buscaSubarvore ? 1 : 0, this->falhas.Chamadas(T::kSubarvore)) << c.nome;
    }
}

TYPED_TEST(PXTrataDadosCadastroArvoreTest, NewRecordIsNeitherReadNorTreeChecked) {
    using T = TypeParam;
    EXPECT_EQ(1, this->Salva(this->Novo("NOVA", "Nova", 1, this->grupo.GetPonteiro()), [](auto&) {}));
    EXPECT_EQ(0, this->falhas.Chamadas(T::kLe));
    EXPECT_EQ(0, this->falhas.Chamadas(T::kSubarvore));
}

// Each data-service call failing in turn: exactly that failure, with the
// service's own field, and nothing traced.
TYPED_TEST(PXTrataDadosCadastroArvoreTest, EveryCallFailingInTurnPassesItsErrorOn) {
    for (auto modelo : {this->Novo("NOVA", "Nova", 1), this->grupo})
        this->VarreGravacao(this->handler, modelo, this->salvo, 0, [&] { EXPECT_TRUE(this->rastro.Registros().empty()); });
}
