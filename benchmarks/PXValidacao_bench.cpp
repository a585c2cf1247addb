// Save validations of the registers: each measured beside the same reads
// replayed directly (PXBancada.h), over plants of 1k, 100k (and 1M) records.
#include "benchmarks/PXBancada.h"
#include "rules/PXTrataDadosPlano.h"
#include "rules/PXTrataDadosPrioridade.h"
#include "rules/PXTrataDadosTecnico.h"

namespace {

using pxbench::Codigo;
using pxbench::Planta;

long CargaPrioridades(CQZArmazemSQL& a, int64_t n) {
    for (int64_t i = 1; i <= n; ++i) {
        CQZDadosPX_Prioridade p;
        p.SetCodigo(Codigo('P', i)).SetDescricao("Prioridade").SetPrioridadeBase(static_cast<uint8_t>(i % 101));
        if (long r = a.Insere(p)) return r;
    }
    return 0;
}

// Technician i: a leaf under one of ten groups, in one of five branches,
// tied to user i while users last, with two disciplines.
CQZDadosPX_Tecnico Tecnico(int64_t i) {
    CQZDadosPX_Tecnico t;
    t.SetCodigo(Codigo('T', i)).SetNome("Técnico").SetPonteiroPai(static_cast<uint32_t>(i % 10 + 1));
    t.SetTipoClassificacao(1).SetPonteiroFilial(static_cast<uint16_t>(i % 5 + 1));
    t.SetPonteiroUsuario(static_cast<uint16_t>(i <= 60000 ? i : 0));
    t.AdicionaDisciplina(CQZDadosPX_TecnicoDisciplina().SetPonteiroDisciplina(static_cast<uint32_t>(i % 7 + 1)));
    t.AdicionaDisciplina(CQZDadosPX_TecnicoDisciplina().SetPonteiroDisciplina(static_cast<uint32_t>(i % 11 + 8)));
    return t;
}

long CargaTecnicos(CQZArmazemSQL& a, int64_t n) {
    for (int64_t i = 1; i <= n; ++i) {
        CQZDadosPX_Tecnico t = Tecnico(i);
        if (long r = a.Insere(t)) return r;
    }
    return 0;
}

// Plan i: a recurring leaf by period under one of ten groups, with an alert,
// two materials and three tasks.
CQZDadosPX_Plano Plano(int64_t i) {
    CQZDadosPX_Plano p;
    p.SetCodigo(Codigo('L', i)).SetNome("Plano").SetPonteiroPai(static_cast<uint32_t>(i % 10 + 1));
    p.SetTipoClassificacao(1).SetTipo(1).SetPonteiroDisciplina(static_cast<uint32_t>(i % 7 + 1));
    p.SetPonteiroPrioridade(1).SetTipoControle(0).SetPonteiroTipoPeriodo(1);
    CQZDadosPX_PlanoAlerta alerta;
    alerta.SetDescricao("Aviso").SetAntesApos(1).AdicionaTecnicos(CQZDadosPX_PlanoAlertaTecnico().SetPonteiro(1));
    p.AdicionaAlerta(alerta);
    for (uint32_t m = 1; m <= 2; ++m) {
        CQZDadosPX_PlanoComponente c;
        c.SetPosicaoProduto({m, 0, 0, 0}).SetQuantidade(CQZMoeda::DeInteiro(1));
        p.AdicionaMaterial(c);
    }
    for (uint32_t t = 1; t <= 3; ++t) p.AdicionaTarefa(CQZDadosPX_PlanoTarefa().SetPonteiroTarefa(t));
    return p;
}

long CargaPlanos(CQZArmazemSQL& a, int64_t n) {
    for (int64_t i = 1; i <= n; ++i) {
        CQZDadosPX_Plano p = Plano(i);
        if (long r = a.Insere(p)) return r;
    }
    return 0;
}

Planta& Prioridades(benchmark::State& s) { return Planta::De("prioridades", s.range(0), s.range(1), CargaPrioridades); }
Planta& Tecnicos(benchmark::State& s) { return Planta::De("tecnicos", s.range(0), s.range(1), CargaTecnicos); }
Planta& Planos(benchmark::State& s) { return Planta::De("planos", s.range(0), s.range(1), CargaPlanos); }

template <class R>
R Gravado(Planta& planta, int64_t chave, benchmark::State& state) {
    R r;
    if (planta.Armazem().LeRegistro(chave, r) != 0) state.SkipWithError("read failed");
    return r;
}

// A new priority: the duplicate-code search over n codes.
void PrioridadeNova(benchmark::State& state, pxbench::Medida medida) {
    CQZDadosPX_Prioridade nova;
    nova.SetCodigo(" NOVA ").SetDescricao("Nova").SetPrioridadeBase(10);
    pxbench::Valida<CPXTrataDadosPrioridade>(state, Prioridades(state), nova, 1, medida);
}

// A new priority whose code is taken: refused with message 10.
void PrioridadeRepetida(benchmark::State& state, pxbench::Medida medida) {
    CQZDadosPX_Prioridade repetida;
    repetida.SetCodigo(Codigo('P', state.range(1) / 2)).SetDescricao("Repetida");
    pxbench::Valida<CPXTrataDadosPrioridade>(state, Prioridades(state), repetida, 10, medida);
}

// A saved priority: the stored copy is read by position and its stamp compared.
void PrioridadeGravada(benchmark::State& state, pxbench::Medida medida) {
    Planta& planta = Prioridades(state);
    auto gravada = Gravado<CQZDadosPX_Prioridade>(planta, state.range(1) / 2, state);
    pxbench::Valida<CPXTrataDadosPrioridade>(state, planta, gravada, 1, medida);
}

// A new leaf technician tied to a user: the code search over all branches,
// then the search for another active leaf of that user in the branch.
void TecnicoNovo(benchmark::State& state, pxbench::Medida medida) {
    CQZDadosPX_Tecnico novo = Tecnico(state.range(1) + 1);
    novo.SetCodigo("NOVO").SetPonteiroUsuario(65000);
    pxbench::Valida<CPXTrataDadosTecnico>(state, Tecnicos(state), novo, 1, medida);
}

// A saved leaf technician: read, stamp compared, then the same searches.
void TecnicoGravado(benchmark::State& state, pxbench::Medida medida) {
    Planta& planta = Tecnicos(state);
    auto gravado = Gravado<CQZDadosPX_Tecnico>(planta, state.range(1) / 2, state);
    pxbench::Valida<CPXTrataDadosTecnico>(state, planta, gravado, 1, medida);
}

// A new plan: the code search.
void PlanoNovo(benchmark::State& state, pxbench::Medida medida) {
    CQZDadosPX_Plano novo = Plano(state.range(1) + 1);
    novo.SetCodigo("NOVO");
    pxbench::Valida<CPXTrataDadosPlano>(state, Planos(state), novo, 1, medida);
}

// A saved plan with its lists: read, stamp, code search.
void PlanoGravado(benchmark::State& state, pxbench::Medida medida) {
    Planta& planta = Planos(state);
    auto gravado = Gravado<CQZDadosPX_Plano>(planta, state.range(1) / 2, state);
    pxbench::Valida<CPXTrataDadosPlano>(state, planta, gravado, 1, medida);
}

}  // namespace

PX_BANCADA("PrioridadeNova", PrioridadeNova);
PX_BANCADA("PrioridadeRepetida", PrioridadeRepetida);
PX_BANCADA("PrioridadeGravada", PrioridadeGravada);
PX_BANCADA("TecnicoNovo", TecnicoNovo);
PX_BANCADA("TecnicoGravado", TecnicoGravado);
PX_BANCADA("PlanoNovo", PlanoNovo);
PX_BANCADA("PlanoGravado", PlanoGravado);
