#include "rules/PXVerificaArvore.h"

#include "platform/QZCodigosResultado.h"
#include "rules/PXTrataDados.h"
#include "tests/support/PXTeste.h"

namespace {

// The stored record is 10; its subtree as the service would give it.
CQZListaClassificacao Subarvore(std::initializer_list<uint32_t> ponteiros) {
    CQZListaClassificacao l;
    for (uint32_t p : ponteiros) l.push_back(CQZDadosGT_Classificacao(p));
    return l;
}

}  // namespace

class PXVerificaArvoreTest : public PXTeste {
protected:
    // Runs the check with a fetch that answers `subarvore` and counts its calls.
    CQZDadosGT_Erro Verifica(const CPXRegraArvore& regra, uint8_t tipoGravado, uint8_t tipoNovo, uint32_t paiNovo,
                             const CQZListaClassificacao& subarvore) {
        CQZDadosGT_Erro erro;
        PXVerificaArvore(erro, armazem, regra, tipoGravado, tipoNovo, paiNovo, [&](CQZListaClassificacao* pLista) {
            ++buscas;
            *pLista = subarvore;
            return 0L;
        });
        return erro;
    }
    int buscas = 0;
};

TEST_F(PXVerificaArvoreTest, MovesOfAStoredGroup) {
    const CPXRegraArvore semProprio{5, false, std::nullopt};
    const CPXRegraArvore comProprio{10, true, std::nullopt};
    const auto comNetos = Subarvore({10, 11, 12});
    const auto sozinho = Subarvore({10});
    struct Caso {
        const char* nome;
        const CPXRegraArvore& regra;
        uint8_t tipoNovo;
        uint32_t paiNovo;
        const CQZListaClassificacao& subarvore;
        long mensagem;  // 0: allowed
    } casos[] = {
        {"group with descendants made a leaf", semProprio, 1, 0, comNetos, 98},
        {"98 comes before 99", semProprio, 1, 12, comNetos, 98},
        {"moved under its grandchild", semProprio, 2, 12, comNetos, 99},
        {"moved under its child", comProprio, 2, 11, comNetos, 99},
        {"moved elsewhere", semProprio, 2, 30, comNetos, 0},
        {"moved to the root", semProprio, 2, 0, comNetos, 0},
        {"own parent, record not compared", semProprio, 2, 10, comNetos, 0},
        {"own parent, record compared", comProprio, 2, 10, comNetos, 99},
        {"own parent, record compared, no descendants", comProprio, 2, 10, sozinho, 99},
        {"childless group made a leaf", semProprio, 1, 30, sozinho, 0},
    };
    for (const auto& c : casos) {
        buscas = 0;
        auto erro = Verifica(c.regra, 2, c.tipoNovo, c.paiNovo, c.subarvore);
        if (c.mensagem)
            EXPECT_THAT(erro, TemMensagem(QZ_MODULO_PX, c.mensagem, c.regra.lCampo)) << c.nome;
        else
            EXPECT_THAT(erro, SemErro()) << c.nome;
        EXPECT_EQ(buscas, 1) << c.nome;
    }
}

TEST_F(PXVerificaArvoreTest, StoredLeafIsNotFetched) {
    auto erro = Verifica({5, true, std::nullopt}, 1, 1, 10, Subarvore({10, 11}));
    EXPECT_THAT(erro, SemErro());
    EXPECT_EQ(buscas, 0);
}

TEST_F(PXVerificaArvoreTest, AnEarlierVerdictIsLeftWhenTheMoveIsAllowed) {
    CQZDadosGT_Erro erro;
    erro.SetAviso(QZ_MODULO_PX, 49, 2);
    PXVerificaArvore(erro, armazem, {5, false, std::nullopt}, 2, 2, 0, [](CQZListaClassificacao*) { return 0L; });
    EXPECT_THAT(erro, TemMensagem(QZ_MODULO_PX, 49, 2));
}

TEST_F(PXVerificaArvoreTest, FailedFetchPassesTheServiceErrorWithTheRuleField) {
    for (std::optional<long> campo : {std::optional<long>{}, std::optional<long>{1}}) {
        falhas.FalhaEm("BuscaClassificacaoSituacao", 0, QZ_E_BANCO, "Disco indisponível");
        CQZDadosGT_Erro erro;
        PXVerificaArvore(erro, armazem, {133, false, campo}, 2, 1, 0, [&](CQZListaClassificacao* pLista) {
            CQZDadosPX_FiltroSituacao filtro;
            filtro.SetPonteiroPai(10);
            return armazem.BuscaClassificacaoSituacao(filtro, pLista);
        });
        EXPECT_THAT(erro, TemFalhaServico(QZ_E_BANCO, campo.value_or(0)));
        EXPECT_EQ(erro.GetMensagem(), "Disco indisponível (BuscaClassificacaoSituacao)");
    }
}
