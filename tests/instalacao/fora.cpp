// A host outside the project: registers an in-memory store for a company
// and asks the priority rules about two records.
#include <cstdio>
#include <memory>

#include "rules/PXTrataDadosPrioridade.h"
#include "store/QZFabricaArmazemSQL.h"

int main() {
    auto fabrica = std::make_shared<CQZFabricaArmazemSQL>(":memory:");
    CQZServicosEmpresa servicos;
    servicos.pFabrica = fabrica;
    CQZRegistroServicos::Registra("FORA", servicos);

    CPXTrataDadosPrioridade handler;
    if (handler.Inicializa("FORA", 1, 1) < 0) return 3;
    CQZDadosPX_Prioridade boa, vazia;
    boa.SetCodigo("P1").SetDescricao("Urgente");
    const int permitida = handler.TrataGravacao(&boa, nullptr);
    const int recusada = handler.TrataGravacao(&vazia, nullptr);
    std::printf("%d %d %ld\n", permitida, recusada, handler.GetMensagemNumero());
    return permitida == 1 && recusada == 0 && handler.GetMensagemNumero() == 1 ? 0 : 1;
}
