// The discipline service: questions about the tree of disciplines (trades)
// that the records of the module's tables alone do not answer.
//
// Where it lives: the discipline tree is company data, so each connection to
// a company's data serves its own discipline service, reading through that
// connection's maintenance service (IQZConexaoEmpresa::Disciplina). A routine
// object reaches it through the servers service of its company
// (CQZAcessoServidores::GetIPXDisciplina_deprecated, handed its connection):
// its reads share the object's snapshot, and a failed read leaves its error
// in that maintenance service's error record, as any other read would.
#pragma once

#include <cstdint>

class CQZAcessoManutencao;

class IQZPX_Disciplina {
public:
    virtual ~IQZPX_Disciplina() = default;
    // Whether a technician holding discipline ulDisciplinaTecnico can do the
    // work of discipline ulDisciplinaPlano (a plan's). 0 on success with the
    // answer in `atende`; a non-zero status on failure, the reason in the
    // error record of the service the answer was read through.
    virtual long DisciplinaAtende(uint32_t ulDisciplinaPlano, uint32_t ulDisciplinaTecnico, bool& atende) = 0;
};

// The answer a maintenance planner expects: a discipline serves itself and
// every discipline beneath it, so a technician of a group (Mecânica) does the
// work of its members (Hidráulica), while a technician of one member does not
// do the work of a sibling (Pneumática) nor of the whole group. The tree is
// read upwards from the plan's discipline, one discipline at a time
// (LeDisciplina, flags 0). Discipline 0 names none: it serves nothing and
// nothing serves it.
class CQZPX_DisciplinaArvore : public IQZPX_Disciplina {
public:
    // A walk upwards stops after this many levels: a parent chain that loops
    // (data written past the tree rules) answers no instead of running on.
    static constexpr int kNiveisMaximos = 64;

    explicit CQZPX_DisciplinaArvore(CQZAcessoManutencao& servico) : m_servico(servico) {}
    long DisciplinaAtende(uint32_t ulDisciplinaPlano, uint32_t ulDisciplinaTecnico, bool& atende) override;

private:
    CQZAcessoManutencao& m_servico;
};
