// The plant the order rules are tested on: every record an order names, and
// a new plan-driven order that passes every check (base) with its saved
// twin (gravada).
#pragma once

#include "rules/PXTrataDadosManutencao.h"

#include <algorithm>
#include <functional>

#include "platform/QZCodigosResultado.h"
#include "tests/support/PXTeste.h"

namespace pxplanta {

using Mutacao = std::function<void(CQZDadosPX_Manutencao&)>;

inline REG_QZDMAHMSUTC Em(int dia, int mes, int hora, int minuto = 0) { return REG_QZDMAHMSUTC(dia, mes, 2026, hora, minuto, 0); }

inline _REG_POSICAO_PRODUTOPS Item(uint32_t item, uint16_t grade1 = 0) {
    _REG_POSICAO_PRODUTOPS p;
    p.lPonteiroProduto = item;
    p.usPonteiroGrade1 = grade1;
    return p;
}

inline CQZDadosPX_ManutencaoComponente Linha(uint32_t item, int64_t requisitada, uint32_t tarefaOrigem = 0) {
    CQZDadosPX_ManutencaoComponente c;
    c.SetProdutoServico(Item(item)).SetQtdRequisitada(CQZMoeda::DeInteiro(requisitada));
    c.SetPonteiroTarefaOrigem(tarefaOrigem);
    return c;
}

inline CQZDadosPX_ManutencaoApontamento Apontamento(REG_QZDMAHMSUTC inicio, REG_QZDMAHMSUTC fim, uint32_t tecnico) {
    CQZDadosPX_ManutencaoApontamento a;
    a.SetDataHoraInicial(inicio).SetDataHoraFinal(fim).SetPonteiroTecnico(tecnico);
    return a;
}

inline CQZDadosPX_ManutencaoTarefa LinhaTarefa(uint32_t tarefa) {
    CQZDadosPX_ManutencaoTarefa t;
    t.SetPonteiroTarefa(tarefa);
    return t;
}

inline CQZDadosBDD_Campo Campo(const char* descricao, bool obrigatorio, const char* valor = "", bool desabilitado = false) {
    CQZDadosBDD_Campo c;
    c.SetTextoDescricao(descricao).SetCampoObrigatorio(obrigatorio).SetValor(valor).SetDesabilitarCampo(desabilitado);
    return c;
}

// Keys of the plant.
enum : uint32_t {
    RECURSO = 10, RECURSO_INATIVO = 11, RECURSO_OUTRO_TIPO = 12,
    PLANO = 30, PLANO_VINCULO_INATIVO = 31, PLANO_INATIVO = 32, PLANO_SEM_VINCULO = 33,
    DISCIPLINA = 40, DISCIPLINA_SEM_TECNICOS = 41, OUTRA_DISCIPLINA = 42,
    REQUISITANTE = 50, REQUISITANTE_INATIVO = 51, REQUISITANTE_FILIAL_2 = 52, REQUISITANTE_SEM_FILIAL = 53,
    PRIORIDADE = 60,
    TECNICO = 70, TECNICO_INATIVO = 71, TECNICO_FILIAL_2 = 72, TECNICO_SEM_FILIAL = 73, TECNICO_OUTRA_DISCIPLINA = 74,
    SITUACAO_ABERTA = 80, SITUACAO_INICIADA = 81, SITUACAO_CONCLUIDA = 82, SITUACAO_REPROGRAMADA = 83,
    TAREFA_INF = 90, TAREFA_SIMPLES = 91, TAREFA_INF_SEM_CONFIGURACAO = 92, TAREFA_INF_OPCIONAL = 93,
    PRODUTO = 100, KIT = 101, PRODUTO_GRADE = 102,
    SERVICO = 200, SERVICO_2 = 201,
    CONFIGURACAO_INF = 5, CONFIGURACAO_OPCIONAL = 6,
};


// A plant with every record an order names, and a new plan-driven order
// that passes every check.
class PXTrataDadosManutencaoTest : public PXTeste {
protected:
    void SetUp() override {
        PXTeste::SetUp();
        Inicializa(handler);

        CQZDadosPX_Mestre mestre;
        mestre.SetObrigarInformarTecnicoManutencao(1);
        Grava(mestre);
        CQZDadosGT_PeriodoContabil periodo;
        periodo.SetMesBloqueio(REG_QZMA(12, 2025))
            .SetDataInferiorIntegracao(REG_QZDMA(1, 1, 2026))
            .SetDataSuperiorIntegracao(REG_QZDMA(31, 12, 2026))
            .SetDataInferiorMovimentacao(REG_QZDMA(1, 1, 2026))
            .SetDataSuperiorMovimentacao(REG_QZDMA(31, 12, 2026));
        Grava(periodo);
        for (uint16_t f : {1, 2}) {
            CQZDadosGT_Filial filial;
            filial.SetPosicao(f);
            filial.SetCodigo(f).SetMesBloqueioIntegracao(REG_QZMA(12, 2025));
            Grava(filial);
        }

        GravaRecurso(RECURSO, 2, 0, {{PLANO, 0}, {PLANO_VINCULO_INATIVO, 1}, {PLANO_INATIVO, 0}});
        GravaRecurso(RECURSO_INATIVO, 2, 1, {{PLANO, 0}});
        GravaRecurso(RECURSO_OUTRO_TIPO, 1, 0, {{PLANO, 0}});
        for (uint32_t p : {PLANO, PLANO_VINCULO_INATIVO, PLANO_INATIVO, PLANO_SEM_VINCULO}) {
            CQZDadosPX_Plano plano;
            plano.SetPosicao(p);
            plano.SetCodigo(CString::Formatado("P%u", p)).SetNome(" Revisão do plano ").SetTipoClassificacao(1);
            plano.SetTipo(1).SetPonteiroDisciplina(DISCIPLINA).SetInativo(p == PLANO_INATIVO);
            plano.SetTempoPrevisto(CQZMoeda::DeInteiro(6)).SetTempoPrevistoEmHoras(1);
            Grava(plano);
        }
        GravaRequisitante(REQUISITANTE, 1, 0);
        GravaRequisitante(REQUISITANTE_INATIVO, 1, 1);
        GravaRequisitante(REQUISITANTE_FILIAL_2, 2, 0);
        GravaRequisitante(REQUISITANTE_SEM_FILIAL, 0, 0);
        GravaTecnico(TECNICO, 1, 0, DISCIPLINA);
        GravaTecnico(TECNICO_INATIVO, 1, 1, DISCIPLINA);
        GravaTecnico(TECNICO_FILIAL_2, 2, 0, DISCIPLINA);
        GravaTecnico(TECNICO_SEM_FILIAL, 0, 0, DISCIPLINA);
        GravaTecnico(TECNICO_OUTRA_DISCIPLINA, 1, 0, OUTRA_DISCIPLINA);
        GravaSituacao(SITUACAO_ABERTA, 2);
        GravaSituacao(SITUACAO_INICIADA, 4);
        GravaSituacao(SITUACAO_CONCLUIDA, 8);
        GravaSituacao(SITUACAO_REPROGRAMADA, 64);
        GravaTarefa(TAREFA_INF, "INF", true, CONFIGURACAO_INF);
        GravaTarefa(TAREFA_SIMPLES, "SIMPLES", false, CONFIGURACAO_INF);
        GravaTarefa(TAREFA_INF_SEM_CONFIGURACAO, "SEMCFG", true, 0);
        GravaTarefa(TAREFA_INF_OPCIONAL, "OPC", true, CONFIGURACAO_OPCIONAL);
        GravaConfiguracao(CONFIGURACAO_INF, {Campo("Pressão (bar)", true), Campo("Observações", false),
                                             Campo("Lacre", true, "", true)});
        GravaConfiguracao(CONFIGURACAO_OPCIONAL, {Campo("Observações", false)});
        GravaProduto(PRODUTO, "ROL-6205", "Rolamento 6205", 0, 0);
        GravaProduto(KIT, "KIT-REV", "Kit de revisão", 1, 0);
        GravaProduto(PRODUTO_GRADE, "LUVA", "Luva", 0, 3);
        CQZDadosGT_Servico servico;
        servico.SetPosicao(SERVICO);
        servico.SetCodigo("USI-EXT").SetNome("Usinagem externa");
        Grava(servico);
        servico.SetPosicao(SERVICO_2);
        servico.SetCodigo("CAL-INS").SetNome("Calibração");
        Grava(servico);

        base.SetPonteiroRecurso(RECURSO).SetTipoManutencao(1).SetPonteiroPlano(PLANO);
        base.SetPonteiroDisciplina(DISCIPLINA).SetDescricao("Digitada").SetPonteiroRequisitante(REQUISITANTE);
        base.SetPonteiroPrioridade(PRIORIDADE).SetPonteiroTecnico(TECNICO).SetPonteiroSituacao(SITUACAO_ABERTA);
        base.SetDataHoraEmissao(Em(2, 3, 8));
        base.AdicionaMaterial(Linha(PRODUTO, 1));
        base.AdicionaEquipamento(Linha(PRODUTO, 1));

        // The same order, saved.
        gravada = base;
        gravada.SetDmc(REG_QZDMC(REG_QZMA(3, 2026), 0)).SetPonteiroFilial(1).SetSituacao(2);
        gravada = Grava(gravada);
        ZeraChamadas();
    }

    void GravaRecurso(uint32_t p, uint8_t tipo, uint8_t inativo, std::vector<std::pair<uint32_t, uint8_t>> planos) {
        CQZDadosGT_Recurso r;
        r.SetPosicao(p);
        r.SetCodigo(CString::Formatado("R%u", p)).SetDescricao(CString::Formatado("Injetora %u", p));
        r.SetTipoClassificacao(1).SetTipo(tipo).SetInativo(inativo).SetPonteiroFilial(1);
        r.SetPonteiroUnidadeMedidaContador(5).SetNumeroDigitosContador(6).SetUnidadeProdutoServico('P');
        for (auto [plano, inativoVinculo] : planos) {
            CQZDadosGT_RecursoPlanoManutencao v;
            v.SetPonteiroPlanoManutencao(plano).SetInativo(inativoVinculo);
            r.AdicionaPlanoManutencao(v);
        }
        Grava(r);
    }
    void GravaRequisitante(uint32_t p, uint16_t filial, uint8_t inativo) {
        CQZDadosGT_Requisitante r;
        r.SetPosicao(p);
        r.SetNome(CString::Formatado("Requisitante %u", p)).SetFilial(filial).SetInativo(inativo);
        Grava(r);
    }
    void GravaTecnico(uint32_t p, uint16_t filial, uint8_t inativo, uint32_t disciplina) {
        CQZDadosPX_Tecnico t;
        t.SetPosicao(p);
        t.SetCodigo(CString::Formatado("T%u", p)).SetNome(CString::Formatado("Técnico %u", p));
        t.SetTipoClassificacao(1).SetPonteiroFilial(filial).SetInativo(inativo);
        CQZDadosPX_TecnicoDisciplina d;
        d.SetPonteiroDisciplina(disciplina);
        t.AdicionaDisciplina(d);
        Grava(t);
    }
    void GravaSituacao(uint32_t p, uint8_t base) {
        CQZDadosPX_Situacao s;
        s.SetPosicao(p);
        s.SetCodigo(CString::Formatado("S%u", p)).SetTipo(1).SetSituacaoBase(base);
        Grava(s);
    }
    void GravaTarefa(uint32_t p, const char* codigo, bool apontar, uint32_t configuracao) {
        CQZDadosPX_Tarefa t;
        t.SetPosicao(p);
        t.SetCodigo(codigo).SetNome("Troca de óleo").SetTipoClassificacao(1);
        t.SetEfetuarApontTarefa(apontar).SetPonteiroInfPersonalizada(configuracao);
        Grava(t);
    }
    void GravaConfiguracao(uint32_t gerador, std::vector<CQZDadosBDD_Campo> campos) {
        CQZDadosBDD_Registro r;
        r.SetPosicao(REG_BDD_KEY_GERADOR(BDD_ATV_PX_APONTAMENTO_TAREFA, gerador).GetChaveArmazem());
        r.SetListaCampos(campos);
        Grava(r);
    }
    void GravaProduto(uint32_t p, const char* codigo, const char* nome, uint8_t kit, uint16_t grade1) {
        CQZDadosGT_ProdutoEx produto;
        produto.SetPosicao(p);
        CQZDadosGT_Produto dados;
        dados.SetKit(kit).SetPonteiroGrade1(grade1);
        produto.SetDadosProduto(dados).SetCodigoSPED(codigo).SetNomeCompleto(nome);
        Grava(produto);
    }

    int Salva(const CQZDadosPX_Manutencao& m) {
        salva = m;
        return handler.TrataGravacao(&salva, nullptr);
    }

    // Finished with start and end and a task line: the custom-data check runs.
    static void Concluida(CQZDadosPX_Manutencao& m, uint32_t tarefa) {
        m.SetPonteiroSituacao(SITUACAO_CONCLUIDA).SetDataHoraInicio(Em(3, 3, 8)).SetDataHoraFim(Em(3, 3, 12));
        m.AdicionaTarefa(LinhaTarefa(tarefa));
    }

    CPXTrataDadosManutencao handler;
    CQZDadosPX_Manutencao base, gravada, salva;
};

}  // namespace pxplanta

using namespace pxplanta;
