// The save hook shared by tasks, custom fields, plans and technicians: one
// fixture typed over the four registers, with each register's own field
// codes, parent field and operation names.
#include "platform/QZCodigosResultado.h"
#include "rules/PXTrataDadosCamposPersonalizados.h"
#include "rules/PXTrataDadosPlano.h"
#include "rules/PXTrataDadosTarefa.h"
#include "rules/PXTrataDadosTecnico.h"
#include "tests/rules/PXTesteRegras.h"

namespace {

// The record as the field checks leave it: code and name trimmed.
template <class R>
R AparaCodigoNome(R r) {
    CString codigo = r.GetCodigo(), nome = r.GetNome();
    r.SetCodigo(codigo.Trim()).SetNome(nome.Trim());
    return r;
}

struct Tarefas {
    using Handler = CPXTrataDadosTarefa;
    using Registro = CQZDadosPX_Tarefa;
    static constexpr long kAtualizado = 65, kPai = 61;
    static constexpr const char* kLe = "LeTarefa";
    static constexpr const char* kSubarvore = "BuscaClassificacaoTarefa";
    static Registro Novo(const char* codigo, uint8_t tipo, uint32_t pai) {
        Registro r;
        r.SetCodigo(codigo).SetNome("Tarefa").SetTipoClassificacao(tipo).SetPonteiroPai(pai);
        return r;
    }
    static void SetPai(Registro& r, uint32_t pai) { r.SetPonteiroPai(pai); }
    static void SetNome(Registro& r, const char* nome) { r.SetNome(nome); }
    static void FazFolha(Registro& r) { r.SetTipoClassificacao(1); }
    static Registro Aparado(Registro r) { return AparaCodigoNome(r); }
};

struct CamposPersonalizados {
    using Handler = CPXTrataDadosCamposPersonalizados;
    using Registro = CQZDadosPX_CamposPersonalizados;
    static constexpr long kAtualizado = 15, kPai = 18;
    static constexpr const char* kLe = "LeBufferCamposPersonalizados";
    static constexpr const char* kSubarvore = "BuscaClassificacaoCamposPersonalizados";
    static Registro Novo(const char* codigo, uint8_t tipo, uint32_t pai) {
        Registro r;
        r.SetDestinacao(1).SetCodigo(codigo).SetDescricao("Campo").SetTipoClassificacao(tipo).SetPonteiroClasse(pai);
        return r;
    }
    static void SetPai(Registro& r, uint32_t pai) { r.SetPonteiroClasse(pai); }
    static void SetNome(Registro& r, const char* nome) { r.SetDescricao(nome); }
    static void FazFolha(Registro& r) { r.SetTipoClassificacao(1); }
    static Registro Aparado(Registro r) {
        CString codigo = r.GetCodigo(), descricao = r.GetDescricao();
        r.SetCodigo(codigo.Trim()).SetDescricao(descricao.Trim());
        return r;
    }
};

struct Planos {
    using Handler = CPXTrataDadosPlano;
    using Registro = CQZDadosPX_Plano;
    static constexpr long kAtualizado = 21, kPai = 24;
    static constexpr const char* kLe = "LePlano";
    static constexpr const char* kSubarvore = "BuscaClassificacaoPlano";
    static Registro Novo(const char* codigo, uint8_t tipo, uint32_t pai) {
        Registro r;
        r.SetCodigo(codigo).SetNome("Plano").SetTipoClassificacao(tipo).SetPonteiroPai(pai);
        r.SetPonteiroDisciplina(3).SetPonteiroPrioridade(4);
        if (tipo == 1) FazFolha(r);
        return r;
    }
    static void SetPai(Registro& r, uint32_t pai) { r.SetPonteiroPai(pai); }
    static void SetNome(Registro& r, const char* nome) { r.SetNome(nome); }
    // A leaf plan has a plan type.
    static void FazFolha(Registro& r) { r.SetTipoClassificacao(1).SetTipo(2); }
    static Registro Aparado(Registro r) { return AparaCodigoNome(r); }
};

struct Tecnicos {
    using Handler = CPXTrataDadosTecnico;
    using Registro = CQZDadosPX_Tecnico;
    static constexpr long kAtualizado = 7, kPai = 10;
    static constexpr const char* kLe = "LeTecnico";
    static constexpr const char* kSubarvore = "BuscaClassificacaoTecnico";
    static Registro Novo(const char* codigo, uint8_t tipo, uint32_t pai) {
        Registro r;
        r.SetCodigo(codigo).SetNome("Técnico").SetTipoClassificacao(tipo).SetPonteiroPai(pai);
        return r;
    }
    static void SetPai(Registro& r, uint32_t pai) { r.SetPonteiroPai(pai); }
    static void SetNome(Registro& r, const char* nome) { r.SetNome(nome); }
    static void FazFolha(Registro& r) { r.SetTipoClassificacao(1); }
    static Registro Aparado(Registro r) { return AparaCodigoNome(r); }
};

}  // namespace

template <class T>
class PXTrataDadosArvoreTest : public PXTesteRegras {
protected:
    using R = typename T::Registro;

    // grupo > sub > folha; avulsa; vazio (a group without members)
    void SetUp() override {
        PXTesteRegras::SetUp();
        Inicializa(handler);
        grupo = this->Grava(T::Novo("G", 2, 0));
        sub = this->Grava(T::Novo("S", 2, grupo.GetPonteiro()));
        folha = this->Grava(T::Novo("F", 1, sub.GetPonteiro()));
        avulsa = this->Grava(T::Novo("A", 1, 0));
        vazio = this->Grava(T::Novo("V", 2, 0));
        this->ZeraChamadas();
    }

    int Salva(const R& r) {
        salvo = r;
        return handler.TrataGravacao(&salvo, nullptr);
    }

    typename T::Handler handler;
    R grupo, sub, folha, avulsa, vazio, salvo;
};

using Registros = ::testing::Types<Tarefas, CamposPersonalizados, Planos, Tecnicos>;
TYPED_TEST_SUITE(PXTrataDadosArvoreTest, Registros);

TYPED_TEST(PXTrataDadosArvoreTest, TreeChecksOfASavedGroupComeBeforeTheFields) {
    using T = TypeParam;
    auto viraFolha = this->grupo;
    viraFolha.SetTipoClassificacao(1).SetCodigo("");
    auto sobNeto = this->grupo;
    T::SetPai(sobNeto, this->folha.GetPonteiro());
    T::SetNome(sobNeto, "");
    auto proprioPai = this->sub;
    T::SetPai(proprioPai, this->sub.GetPonteiro());
    struct Caso {
        const char* nome;
        typename T::Registro r;
        long mensagem;
    } casos[] = {
        {"group with members made a leaf", viraFolha, 98},
        {"moved under its grandchild", sobNeto, 99},
        {"its own parent", proprioPai, 99},
    };
    for (auto& c : casos) {
        EXPECT_EQ(0, this->Salva(c.r)) << c.nome;
        EXPECT_THAT(this->handler.GetErro(), TemMensagem(QZ_MODULO_PX, c.mensagem, T::kPai)) << c.nome;
        EXPECT_EQ(this->salvo, c.r) << c.nome << ": the caller's record is left as it was";
    }

    auto folhaVazia = this->vazio;
    T::FazFolha(folhaVazia);
    EXPECT_EQ(1, this->Salva(folhaVazia)) << "a group without members may become a leaf";
}

TYPED_TEST(PXTrataDadosArvoreTest, NewRecordAndStoredLeafSkipTheTreeCheck) {
    using T = TypeParam;
    auto movida = this->folha;
    T::SetPai(movida, this->avulsa.GetPonteiro());
    EXPECT_EQ(1, this->Salva(movida)) << QZParaUtf8(this->handler.GetMensagem());
    // No self-parent test among the field checks either.
    auto propria = this->avulsa;
    T::SetPai(propria, this->avulsa.GetPonteiro());
    EXPECT_EQ(1, this->Salva(propria)) << QZParaUtf8(this->handler.GetMensagem());
    auto nova = T::Novo("N", 2, this->grupo.GetPonteiro());
    EXPECT_EQ(1, this->Salva(nova)) << QZParaUtf8(this->handler.GetMensagem());
    EXPECT_EQ(0, this->falhas.Chamadas(T::kSubarvore));
    EXPECT_EQ(2, this->falhas.Chamadas(T::kLe)) << "the saved leaves only";
}

TYPED_TEST(PXTrataDadosArvoreTest, StaleRecordIsRefusedBeforeTheTreeAndTheFields) {
    using T = TypeParam;
    auto outra = this->avulsa;
    T::SetNome(outra, "Alterada");
    ASSERT_EQ(0, this->armazem.Atualiza(outra));
    EXPECT_EQ(0, this->Salva(this->avulsa));
    EXPECT_THAT(this->handler.GetErro(), TemMensagem(QZ_MODULO_PX, 3, T::kAtualizado));

    auto outroGrupo = this->grupo;
    T::SetNome(outroGrupo, "Alterado");
    ASSERT_EQ(0, this->armazem.Atualiza(outroGrupo));
    auto viraFolha = this->grupo;
    viraFolha.SetTipoClassificacao(1).SetCodigo("");
    EXPECT_EQ(0, this->Salva(viraFolha));
    EXPECT_THAT(this->handler.GetErro(), TemMensagem(QZ_MODULO_PX, 3, T::kAtualizado));
}

// Each call failing in turn: exactly the service's error, no field, no
// trace; the caller's record as it was, but for the code and name that the
// field checks trimmed before their search failed.
TYPED_TEST(PXTrataDadosArvoreTest, EveryCallFailingInTurnPassesItsErrorOn) {
    using T = TypeParam;
    auto grupoComBrancos = this->grupo;
    grupoComBrancos.SetCodigo(" G ");
    T::SetNome(grupoComBrancos, " Grupo ");
    for (const auto& modelo : {T::Novo(" N ", 1, 0), grupoComBrancos, this->folha}) {
        this->VarreGravacao(this->handler, modelo, this->salvo, 0, [&] {
            const std::string& falhou = this->falhas.Historico().back();
            const bool camposAparados = falhou.starts_with("BuscaPonteiros");
            EXPECT_EQ(this->salvo, camposAparados ? T::Aparado(modelo) : modelo);
            EXPECT_TRUE(this->rastro.Registros().empty());
        });
    }
}
