// The save step every handler shares: a record of another type is refused,
// the stale check stops before the field checks, and no exception leaves the
// library.
#include "rules/PXTrataDadosRegistro.h"

#include <stdexcept>

#include "platform/QZCodigosResultado.h"
#include "rules/PXTrataDadosCamposPersonalizados.h"
#include "rules/PXTrataDadosDisciplina.h"
#include "rules/PXTrataDadosMestre.h"
#include "rules/PXTrataDadosPlano.h"
#include "rules/PXTrataDadosPrioridade.h"
#include "rules/PXTrataDadosSituacaoManutencao.h"
#include "rules/PXTrataDadosSituacaoTarefa.h"
#include "rules/PXTrataDadosTarefa.h"
#include "rules/PXTrataDadosTecnico.h"
#include "rules/PXTrataDadosTipoGasto.h"
#include "tests/support/PXTeste.h"

namespace {

// A handler of priorities whose field checks complete the record (the
// description) and throw on demand.
const CPXGravacao<CQZDadosPX_Prioridade> kGravacaoTeste{
    .le = PXLeGravado<&CQZAcessoManutencao::LePrioridade>,
    .lCampoAtualizado = 1,
};

class TrataTeste : public TPXTrataDadosRegistro<CQZDadosPX_Prioridade> {
public:
    TrataTeste() : TPXTrataDadosRegistro(kGravacaoTeste, false) {}
    bool lancar = false;

protected:
    CQZDadosGT_Erro& Consistir(CQZDadosPX_Prioridade& dados, const CQZDadosPX_Prioridade*,
                               IQZTrataInconsistencia*) override {
        dados.SetDescricao("Completada");
        if (lancar) {
            CQZDadosPX_Tecnico t;
            t.GetConstRefDisciplina(3);  // an index outside the list
        }
        return *this;
    }
};

}  // namespace

class PXTrataDadosRegistroTest : public PXTeste {};

TEST_F(PXTrataDadosRegistroTest, ARecordOfAnotherTypeIsRefusedWith162AndLeftAlone) {
    CPXTrataDadosPrioridade prioridade;
    CPXTrataDadosDisciplina disciplina;
    CPXTrataDadosTipoGasto tipoGasto;
    CPXTrataDadosSituacaoManutencao situacao;
    CPXTrataDadosSituacaoTarefa situacaoTarefa;
    CPXTrataDadosTecnico tecnico;
    CPXTrataDadosTarefa tarefa;
    CPXTrataDadosCamposPersonalizados campos;
    CPXTrataDadosMestre mestre;
    CPXTrataDadosPlano plano;
    CPXTrataDados* handlers[] = {&prioridade, &disciplina, &tipoGasto, &situacao, &situacaoTarefa,
                                 &tecnico,    &tarefa,     &campos,    &mestre,   &plano};
    for (CPXTrataDados* h : handlers) {
        Inicializa(*h);
        // Every handler is given a record no handler here takes.
        CQZDadosGT_Filial estranho;
        estranho.SetPosicao(3);
        ZeraChamadas();
        EXPECT_EQ(0, h->TrataGravacao(&estranho, nullptr));
        EXPECT_THAT(h->GetErro(), TemMensagem(QZ_MODULO_PX, 162, 0));
        EXPECT_EQ(0, h->TrataExclusao(&estranho, nullptr));
        EXPECT_THAT(h->GetErro(), TemMensagem(QZ_MODULO_PX, 162, 0));
        EXPECT_EQ(falhas.TotalChamadas(), 0) << "nothing is read for a record of another type";
        EXPECT_EQ(estranho.GetPosicao(), 3u);
    }
    // A null record is of no type either.
    EXPECT_EQ(0, prioridade.TrataGravacao(nullptr, nullptr));
    EXPECT_THAT(prioridade.GetErro(), TemMensagem(QZ_MODULO_PX, 162, 0));
}

TEST_F(PXTrataDadosRegistroTest, AnExceptionInsideTheRulesBecomesTheVerdict) {
    TrataTeste h;
    Inicializa(h);
    CQZDadosPX_Prioridade p;
    p.SetDescricao("Digitada");
    h.lancar = true;
    EXPECT_EQ(0, h.TrataGravacao(&p, nullptr));
    EXPECT_EQ(h.GetUltimoHR(), QZ_E_ARGUMENTO_INVALIDO);
    h.lancar = false;
    EXPECT_EQ(1, h.TrataGravacao(&p, nullptr)) << "the next call starts clean";
}

TEST_F(PXTrataDadosRegistroTest, TheStaleCheckUsesTheDescriptorsFieldAndStopsBeforeTheFields) {
    CQZDadosPX_Prioridade gravada;
    gravada.SetCodigo("P").SetDescricao("Gravada");
    gravada = Grava(gravada);
    TrataTeste h;
    Inicializa(h);
    auto velha = gravada;
    velha.SetDmaHmsAtualizacao(REG_QZDMAHMSUTC(1, 1, 2020, 0, 0, 0));
    EXPECT_EQ(0, h.TrataGravacao(&velha, nullptr));
    EXPECT_THAT(h.GetErro(), TemMensagem(QZ_MODULO_PX, 3, 1));
    EXPECT_EQ(velha.GetDescricao(), "Gravada") << "the field checks never ran";
}
