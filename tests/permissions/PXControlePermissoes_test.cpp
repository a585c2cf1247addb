#include "permissions/PXControlePermissoes.h"

#include <map>
#include <set>

#include "platform/QZCodigosResultado.h"
#include "tests/support/PXTeste.h"

namespace {

using Tipo = CPXControlePermissoes::PXControlePermissao;
using Getter = const int& (CPXDadosPermissaoUsuario::*)() const;
using Setter = CPXDadosPermissaoUsuario& (CPXDadosPermissaoUsuario::*)(const int&);

enum Flag {
    Configurar, Incluir, Alterar, Excluir, Cancelar, Consultar, Emitir, Encerrar,
    Agrupar, Importar, ConsultarSaldo, ConsultarSaldoFilial, AlterarItemInfDocFical, kFlags
};

const char* const kNomes[kFlags] = {"Configurar", "Incluir", "Alterar", "Excluir", "Cancelar",
                                    "Consultar", "Emitir", "Encerrar", "Agrupar", "Importar",
                                    "ConsultarSaldo", "ConsultarSaldoFilial", "AlterarItemInfDocFical"};

const Getter kGet[kFlags] = {
    &CPXDadosPermissaoUsuario::GetTemPermissaoConfigurar,     &CPXDadosPermissaoUsuario::GetTemPermissaoIncluir,
    &CPXDadosPermissaoUsuario::GetTemPermissaoAlterar,        &CPXDadosPermissaoUsuario::GetTemPermissaoExcluir,
    &CPXDadosPermissaoUsuario::GetTemPermissaoCancelar,       &CPXDadosPermissaoUsuario::GetTemPermissaoConsultar,
    &CPXDadosPermissaoUsuario::GetTemPermissaoEmitir,         &CPXDadosPermissaoUsuario::GetTemPermissaoEncerrar,
    &CPXDadosPermissaoUsuario::GetTemPermissaoAgrupar,        &CPXDadosPermissaoUsuario::GetTemPermissaoImportar,
    &CPXDadosPermissaoUsuario::GetTemPermissaoConsultarSaldo, &CPXDadosPermissaoUsuario::GetTemPermissaoConsultarSaldoFilial,
    &CPXDadosPermissaoUsuario::GetTemPermissaoAlterarItemInfDocFical,
};

const Setter kSet[kFlags] = {
    &CPXDadosPermissaoUsuario::SetTemPermissaoConfigurar,     &CPXDadosPermissaoUsuario::SetTemPermissaoIncluir,
    &CPXDadosPermissaoUsuario::SetTemPermissaoAlterar,        &CPXDadosPermissaoUsuario::SetTemPermissaoExcluir,
    &CPXDadosPermissaoUsuario::SetTemPermissaoCancelar,       &CPXDadosPermissaoUsuario::SetTemPermissaoConsultar,
    &CPXDadosPermissaoUsuario::SetTemPermissaoEmitir,         &CPXDadosPermissaoUsuario::SetTemPermissaoEncerrar,
    &CPXDadosPermissaoUsuario::SetTemPermissaoAgrupar,        &CPXDadosPermissaoUsuario::SetTemPermissaoImportar,
    &CPXDadosPermissaoUsuario::SetTemPermissaoConsultarSaldo, &CPXDadosPermissaoUsuario::SetTemPermissaoConsultarSaldoFilial,
    &CPXDadosPermissaoUsuario::SetTemPermissaoAlterarItemInfDocFical,
};

// Every flag each kind reads: the permission number and its module.
struct Linha {
    int tipo;
    Flag flag;
    uint16_t permissao;
    QZModulo modulo;
};
const Linha kTabela[] = {
    {1, Configurar, 20, QZ_MODULO_PX},
    {2, Incluir, 2, QZ_MODULO_PX},   {2, Alterar, 2, QZ_MODULO_PX},   {2, Consultar, 1, QZ_MODULO_PX},
    {3, Incluir, 5, QZ_MODULO_PX},   {3, Alterar, 5, QZ_MODULO_PX},   {3, Consultar, 4, QZ_MODULO_PX},
    {4, Incluir, 31, QZ_MODULO_PX},  {4, Alterar, 31, QZ_MODULO_PX},  {4, Consultar, 30, QZ_MODULO_PX},
    {5, Incluir, 28, QZ_MODULO_PX},  {5, Alterar, 28, QZ_MODULO_PX},  {5, Consultar, 27, QZ_MODULO_PX},
    {6, Incluir, 8, QZ_MODULO_PX},   {6, Alterar, 8, QZ_MODULO_PX},   {6, Consultar, 7, QZ_MODULO_PX},
    {7, Incluir, 26, QZ_MODULO_PX},  {7, Alterar, 26, QZ_MODULO_PX},  {7, Consultar, 25, QZ_MODULO_PX},
    {8, Incluir, 32, QZ_MODULO_PX},  {8, Alterar, 32, QZ_MODULO_PX},  {8, Consultar, 33, QZ_MODULO_PX},
    {9, Incluir, 40, QZ_MODULO_PX},  {9, Alterar, 40, QZ_MODULO_PX},  {9, Consultar, 41, QZ_MODULO_PX},
    {10, Incluir, 45, QZ_MODULO_PX}, {10, Alterar, 45, QZ_MODULO_PX}, {10, Consultar, 44, QZ_MODULO_PX},
    {11, Incluir, 11, QZ_MODULO_PX}, {11, Alterar, 11, QZ_MODULO_PX}, {11, Consultar, 12, QZ_MODULO_PX},
    {11, Cancelar, 11, QZ_MODULO_PX}, {11, Encerrar, 13, QZ_MODULO_PX},
    {12, Incluir, 22, QZ_MODULO_PX}, {12, Alterar, 22, QZ_MODULO_PX}, {12, Consultar, 23, QZ_MODULO_PX},
    {12, Excluir, 24, QZ_MODULO_PX},
    {13, Incluir, 34, QZ_MODULO_PX}, {13, Alterar, 34, QZ_MODULO_PX}, {13, Consultar, 35, QZ_MODULO_PX},
    {13, Excluir, 36, QZ_MODULO_PX},
    {14, Configurar, 14, QZ_MODULO_PX},
    {15, Emitir, 15, QZ_MODULO_PX},  {16, Emitir, 21, QZ_MODULO_PX},  {17, Emitir, 16, QZ_MODULO_PX},
    {18, Emitir, 17, QZ_MODULO_PX},  {19, Emitir, 18, QZ_MODULO_PX},  {20, Emitir, 29, QZ_MODULO_PX},
    {21, Emitir, 19, QZ_MODULO_PX},  {22, Emitir, 42, QZ_MODULO_PX},  {23, Emitir, 43, QZ_MODULO_PX},
    {24, Emitir, 38, QZ_MODULO_PX},  {25, Emitir, 39, QZ_MODULO_PX},  {26, Emitir, 46, QZ_MODULO_PX},
    {27, ConsultarSaldo, 7, QZ_MODULO_ES},
    {28, ConsultarSaldoFilial, 31, QZ_MODULO_ES},
    {29, AlterarItemInfDocFical, 37, QZ_MODULO_PX},
};

std::vector<Linha> LinhasDo(int tipo) {
    std::vector<Linha> r;
    for (const Linha& l : kTabela)
        if (l.tipo == tipo) r.push_back(l);
    return r;
}

CPXDadosPermissaoUsuario TodasLigadas() {
    CPXDadosPermissaoUsuario d;
    for (Setter s : kSet) (d.*s)(1);
    return d;
}

// The flags that are set, by name, for readable failures.
std::set<std::string> Ligadas(const CPXDadosPermissaoUsuario& d) {
    std::set<std::string> r;
    for (int f = 0; f < kFlags; ++f)
        if ((d.*kGet[f])() != 0) r.insert(kNomes[f]);
    return r;
}

}  // namespace

class PXControlePermissoesTest : public PXTeste {
protected:
    void SetUp() override {
        PXTeste::SetUp();
        Inicializa(controle);
    }

    // Stores the user's permission record of one module.
    void Concede(uint16_t usuario, QZModulo modulo, std::initializer_list<uint16_t> numeros, bool supervisor = false) {
        CQZDadosGT_UsuarioPermissao p;
        p.SetPosicao(QZ_KEY_PERMISSAO_USUARIO(usuario, modulo).GetChaveArmazem());
        p.SetUsuarioSupervisor(supervisor ? 1 : 0);
        for (uint16_t n : numeros) p.AdicionaPermissoes(CQZDadosGT_PermissaoConcedida().SetNumero(n));
        Grava(p);
    }

    void TrocaUsuario(uint16_t usuario) { ASSERT_EQ(0, controle.Inicializa(kEmpresa, usuario, 42)); }

    static constexpr uint16_t kUsuario = 7;
    CPXControlePermissoes controle;
};

// Each row alone: granting its permission sets its flag and every flag of the
// kind that shares the number, nothing else; the same number in the other
// module grants nothing. Every flag costs one read.
TEST_F(PXControlePermissoesTest, EveryRowOfThePermissionTables) {
    uint16_t usuario = 100;
    for (const Linha& linha : kTabela) {
        const auto linhas = LinhasDo(linha.tipo);
        SCOPED_TRACE(::testing::Message() << "kind " << linha.tipo << ", flag " << kNomes[linha.flag] << ", permission "
                                          << linha.permissao << " of module " << linha.modulo);
        std::set<std::string> esperadas;
        for (const Linha& l : linhas)
            if (l.permissao == linha.permissao && l.modulo == linha.modulo) esperadas.insert(kNomes[l.flag]);

        TrocaUsuario(++usuario);
        Concede(usuario, linha.modulo, {linha.permissao});
        ZeraChamadas();
        CPXDadosPermissaoUsuario saida;
        EXPECT_EQ(1, controle.GetPermissoes(static_cast<Tipo>(linha.tipo), &saida));
        EXPECT_EQ(Ligadas(saida), esperadas);
        EXPECT_THAT(controle.GetErro(), SemErro());
        EXPECT_EQ(falhas.Chamadas("LeBufferPermissaoUsuario"), static_cast<long>(linhas.size()));

        const QZModulo outro = linha.modulo == QZ_MODULO_PX ? QZ_MODULO_ES : QZ_MODULO_PX;
        TrocaUsuario(++usuario);
        Concede(usuario, outro, {linha.permissao});
        EXPECT_EQ(0, controle.GetPermissoes(static_cast<Tipo>(linha.tipo), &saida));
        EXPECT_TRUE(Ligadas(saida).empty());
    }
}

TEST_F(PXControlePermissoesTest, SupervisorGetsExactlyTheFlagsEachKindReads) {
    Concede(kUsuario, QZ_MODULO_PX, {}, true);
    Concede(kUsuario, QZ_MODULO_ES, {}, true);
    for (int tipo = 1; tipo <= 29; ++tipo) {
        std::set<std::string> esperadas;
        for (const Linha& l : LinhasDo(tipo)) esperadas.insert(kNomes[l.flag]);
        CPXDadosPermissaoUsuario saida;
        EXPECT_EQ(1, controle.GetPermissoes(static_cast<Tipo>(tipo), &saida)) << "kind " << tipo;
        EXPECT_EQ(Ligadas(saida), esperadas) << "kind " << tipo;
    }
}

TEST_F(PXControlePermissoesTest, UserWithoutRecordsOrWithAnotherUsersGetsNothing) {
    Concede(kUsuario + 1, QZ_MODULO_PX, {11, 12, 13}, true);
    CPXDadosPermissaoUsuario saida = TodasLigadas();
    EXPECT_EQ(0, controle.GetPermissoes(CPXControlePermissoes::PX_PERMISSAO_MOVIMENTO_11, &saida));
    EXPECT_TRUE(Ligadas(saida).empty());
    EXPECT_THAT(controle.GetErro(), SemErro());
}

// A failed read denies that one flag; the others are still read and the
// service's error stays in the controller.
TEST_F(PXControlePermissoesTest, FailedReadDeniesOnlyThatFlag) {
    Concede(kUsuario, QZ_MODULO_PX, {11, 12, 13});
    std::map<std::string, int> negadas;
    for (long n = 1; n <= 5; ++n) {
        ZeraChamadas();
        falhas.FalhaEm("LeBufferPermissaoUsuario", n, QZ_E_FALHA_INJETADA);
        CPXDadosPermissaoUsuario saida;
        EXPECT_EQ(1, controle.GetPermissoes(CPXControlePermissoes::PX_PERMISSAO_MOVIMENTO_11, &saida)) << "call " << n;
        EXPECT_THAT(controle.GetErro(), TemFalhaServico(QZ_E_FALHA_INJETADA, 0)) << "call " << n;
        EXPECT_EQ(falhas.Chamadas("LeBufferPermissaoUsuario"), 5);
        const auto ligadas = Ligadas(saida);
        EXPECT_EQ(ligadas.size(), 4u) << "call " << n;
        for (const char* nome : {"Incluir", "Alterar", "Consultar", "Cancelar", "Encerrar"})
            if (!ligadas.count(nome)) ++negadas[nome];
    }
    EXPECT_EQ(negadas, (std::map<std::string, int>{
                           {"Alterar", 1}, {"Cancelar", 1}, {"Consultar", 1}, {"Encerrar", 1}, {"Incluir", 1}}));

    // The next question starts from a clear error record.
    ZeraChamadas();
    EXPECT_EQ(1, controle.GetPermissoes(CPXControlePermissoes::PX_PERMISSAO_MOVIMENTO_11, nullptr));
    EXPECT_THAT(controle.GetErro(), SemErro());
}

TEST_F(PXControlePermissoesTest, FailedReadOfTheOnlyFlagReturnsZero) {
    Concede(kUsuario, QZ_MODULO_ES, {7}, true);
    ZeraChamadas();
    falhas.FalhaEm("LeBufferPermissaoUsuario", 1, QZ_E_BANCO);
    CPXDadosPermissaoUsuario saida;
    EXPECT_EQ(0, controle.GetPermissoes(CPXControlePermissoes::PX_PERMISSAO_CONSULTAR_SALDO, &saida));
    EXPECT_TRUE(Ligadas(saida).empty());
    EXPECT_THAT(controle.GetErro(), TemFalhaServico(QZ_E_BANCO, 0));
}

TEST_F(PXControlePermissoesTest, KindsOutsideTheTablesGrantNothingAndReadNothing) {
    Concede(kUsuario, QZ_MODULO_PX, {}, true);
    ZeraChamadas();
    for (int tipo : {0, 30, -1}) {
        CPXDadosPermissaoUsuario saida = TodasLigadas();
        EXPECT_EQ(0, controle.GetPermissoes(static_cast<Tipo>(tipo), &saida)) << "kind " << tipo;
        EXPECT_TRUE(Ligadas(saida).empty()) << "kind " << tipo;
    }
    EXPECT_EQ(falhas.TotalChamadas(), 0);
}

TEST_F(PXControlePermissoesTest, NullOutputStillGivesTheAnswer) {
    Concede(kUsuario, QZ_MODULO_PX, {11});
    EXPECT_EQ(1, controle.GetPermissoes(CPXControlePermissoes::PX_PERMISSAO_MOVIMENTO_11, nullptr));
    EXPECT_EQ(0, controle.GetPermissoes(CPXControlePermissoes::PX_PERMISSAO_MOVIMENTO_12, nullptr));
}

TEST_F(PXControlePermissoesTest, UninitialisedControllerGrantsNothing) {
    Concede(kUsuario, QZ_MODULO_PX, {}, true);
    for (bool finalizado : {false, true}) {
        CPXControlePermissoes outro;
        if (finalizado) {
            Inicializa(outro);
            outro.Finaliza();
        }
        ZeraChamadas();
        CPXDadosPermissaoUsuario saida = TodasLigadas();
        EXPECT_EQ(0, outro.GetPermissoes(CPXControlePermissoes::PX_PERMISSAO_CONFIGURACAO, &saida));
        EXPECT_TRUE(Ligadas(saida).empty());
        EXPECT_EQ(falhas.TotalChamadas(), 0);
    }
}

TEST(PXDadosPermissaoUsuarioTest, AnyFlagCountsAndOnLimparClearsEveryOne) {
    for (int f = 0; f < kFlags; ++f) {
        CPXDadosPermissaoUsuario d;
        EXPECT_EQ(0, d.GetTemAlgumaPermissao());
        (d.*kSet[f])(-3);
        EXPECT_EQ(1, d.GetTemAlgumaPermissao()) << kNomes[f];
        CPXDadosPermissaoUsuario copia(d);
        EXPECT_EQ((copia.*kGet[f])(), -3) << kNomes[f];
    }
    CPXDadosPermissaoUsuario d = TodasLigadas();
    d.OnLimpar();
    EXPECT_TRUE(d == CPXDadosPermissaoUsuario());
}
