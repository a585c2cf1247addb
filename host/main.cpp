// pxlreg: the command-line host. For now it runs one demonstration: it
// keeps priorities in a store file and asks the rules about a few saves.
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string>

#include "rules/PXTrataDadosPrioridade.h"
#include "store/QZArmazemSQL.h"

namespace {

const char* kEmpresa = "DEMO";

// The program's texts are Windows-1252; the terminal speaks UTF-8.
void Imprime(const char* formato, ...) __attribute__((format(printf, 1, 2)));
void Imprime(const char* formato, ...) {
    CString texto;
    va_list a;
    va_start(a, formato);
    texto.FormatV(formato, a);
    va_end(a);
    std::fputs(QZParaUtf8(texto).c_str(), stdout);
}

void Mostra(const char* titulo, int ok, const CQZDadosGT_Erro& erro) {
    if (ok) {
        Imprime("%-40s permitido\n", titulo);
        return;
    }
    Imprime("%-40s recusado: módulo %d, mensagem %ld, campo %ld - %s\n", titulo, static_cast<int>(erro.GetModulo()),
                erro.GetMensagemNumero(), erro.GetCodigoCampo(), erro.GetMensagem().GetString());
}

CQZDadosPX_Prioridade Prioridade(const char* codigo, const char* descricao, uint8_t base) {
    CQZDadosPX_Prioridade p;
    p.SetCodigo(codigo).SetDescricao(descricao).SetPrioridadeBase(base);
    return p;
}

int Demo(const std::string& caminho) {
    CQZArmazemSQL armazem(caminho);
    if (!armazem.EstaAberto()) {
        std::fprintf(stderr, "pxlreg: %s\n", QZParaUtf8(armazem.GetErro().GetMensagem()).c_str());
        return 2;
    }
    CQZServicosEmpresa servicos;
    servicos.pManutencao = &armazem;
    servicos.pGestavo = &armazem;
    CQZRegistroServicos::Registra(kEmpresa, servicos);

    CPXTrataDadosPrioridade handler;
    if (handler.Inicializa(kEmpresa, 1, 1) < 0) {
        std::fprintf(stderr, "pxlreg: %s\n", QZParaUtf8(handler.GetMensagem()).c_str());
        return 2;
    }
    Imprime("Armazém: %s\n\n", caminho.c_str());
    struct Pedido {
        const char* titulo;
        CQZDadosPX_Prioridade p;
    } pedidos[] = {
        {"Nova prioridade \" URG \" (Urgente, 90)", Prioridade(" URG ", "Urgente", 90)},
        {"Nova prioridade \"NRM\" (Normal, 50)", Prioridade("NRM", "Normal", 50)},
        {"Outra prioridade \"URG\"", Prioridade("URG", "Repetida", 10)},
        {"Prioridade sem código", Prioridade("   ", "Sem código", 10)},
        {"Prioridade \"ALTA\" com base 101", Prioridade("ALTA", "Alta", 101)},
    };
    for (auto& pedido : pedidos) {
        int ok = handler.TrataGravacao(&pedido.p, nullptr);
        Mostra(pedido.titulo, ok, handler);
        if (ok && armazem.Insere(pedido.p) != 0) {
            std::fprintf(stderr, "pxlreg: %s\n", QZParaUtf8(armazem.GetErro().GetMensagem()).c_str());
            return 2;
        }
    }
    int ok = handler.TrataExclusao(&pedidos[0].p, nullptr);
    Mostra("Excluir a prioridade \"URG\"", ok, handler);
    CQZRegistroServicos::Remove(kEmpresa);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 3 && std::strcmp(argv[1], "demo") == 0) return Demo(argv[2]);
    std::fprintf(stderr, "uso: pxlreg demo ARMAZEM\n");
    return 2;
}
