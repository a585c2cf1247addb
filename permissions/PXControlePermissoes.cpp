#include "permissions/PXControlePermissoes.h"

namespace {

using Controle = CPXControlePermissoes;
using Setter = CPXDadosPermissaoUsuario& (CPXDadosPermissaoUsuario::*)(const int&);

// Master-data screens: one permission lets the user include and change,
// another lets them query. No delete flag comes from here, on purpose.
struct Cadastro {
    int tipo;
    uint16_t incluirAlterar;
    uint16_t consultar;
};
constexpr Cadastro kCadastros[] = {
    {2, 2, 1},   {3, 5, 4},   {4, 31, 30}, {5, 28, 27}, {6, 8, 7},
    {7, 26, 25}, {8, 32, 33}, {9, 40, 41}, {10, 45, 44},
};

// Movement screens; 0 leaves the flag unread.
struct Movimento {
    int tipo;
    uint16_t incluir, alterar, consultar, excluir, cancelar, encerrar;
};
constexpr Movimento kMovimentos[] = {
    {11, 11, 11, 12, 0, 11, 13},
    {12, 22, 22, 23, 24, 0, 0},
    {13, 34, 34, 35, 36, 0, 0},
};

// Reports 15 to 26: the permission to issue each.
struct Relatorio {
    int tipo;
    uint16_t emitir;
};
constexpr Relatorio kRelatorios[] = {
    {15, 15}, {16, 21}, {17, 16}, {18, 17}, {19, 18}, {20, 29},
    {21, 19}, {22, 42}, {23, 43}, {24, 38}, {25, 39}, {26, 46},
};
constexpr uint16_t kPermissaoConfigurarRelatorios = 14;
constexpr uint16_t kPermissaoConfigurar = 20;

// Specific functions: one flag each; the balance queries belong to the
// stock module's permission table.
struct Especifica {
    int tipo;
    Setter flag;
    uint16_t permissao;
    QZModulo modulo;
};
const Especifica kEspecificas[] = {
    {27, &CPXDadosPermissaoUsuario::SetTemPermissaoConsultarSaldo, 7, QZ_MODULO_ES},
    {28, &CPXDadosPermissaoUsuario::SetTemPermissaoConsultarSaldoFilial, 31, QZ_MODULO_ES},
    {29, &CPXDadosPermissaoUsuario::SetTemPermissaoAlterarItemInfDocFical, 37, QZ_MODULO_PX},
};

template <class T, size_t N>
const T* Linha(const T (&tabela)[N], Controle::PXControlePermissao eTipo) {
    for (const T& linha : tabela)
        if (linha.tipo == eTipo) return &linha;
    return nullptr;
}

}  // namespace

CPXControlePermissoes::~CPXControlePermissoes() { Finaliza(); }

int CPXControlePermissoes::GetPermissoes(PXControlePermissao eTipo, CPXDadosPermissaoUsuario* pDados) {
    LimpaErro();
    if (pDados) pDados->OnLimpar();
    if (!EstaInicializado()) return 0;

    CPXDadosPermissaoUsuario dados;
    if (eTipo == PX_PERMISSAO_CONFIGURACAO)
        dados.SetTemPermissaoConfigurar(GetPermissao(kPermissaoConfigurar, QZ_MODULO_PX));
    else if (eTipo >= PX_PERMISSAO_CADASTRO_2 && eTipo <= PX_PERMISSAO_CADASTRO_10)
        GetPermissoesCadastros(eTipo, dados);
    else if (eTipo >= PX_PERMISSAO_MOVIMENTO_11 && eTipo <= PX_PERMISSAO_MOVIMENTO_13)
        GetPermissoesMovimentos(eTipo, dados);
    else if (eTipo >= PX_PERMISSAO_RELATORIO_14 && eTipo <= PX_PERMISSAO_RELATORIO_26)
        GetPermissoesRelatorios(eTipo, dados);
    else if (eTipo >= PX_PERMISSAO_CONSULTAR_SALDO && eTipo <= PX_PERMISSAO_ALTERAR_ITEM_INF_DOC_FISCAL)
        GetPermissoesEspecificas(eTipo, dados);

    if (pDados) pDados->OnCopiar(dados);
    return dados.GetTemAlgumaPermissao();
}

int CPXControlePermissoes::GetPermissao(uint16_t usPermissao, QZModulo eModulo) {
    const QZ_KEY_PERMISSAO_USUARIO chave(GetUsuario(), eModulo);
    CQZDadosGT_UsuarioPermissao dadosPermissao;
    if (GetAcessoGestavo()->LeBufferPermissaoUsuario(chave, &dadosPermissao, 0) != 0) {
        SetErro(GetAcessoGestavo()->GetErro());
        return 0;
    }
    return dadosPermissao.TemPermissao(usPermissao) != 0 || dadosPermissao.GetUsuarioSupervisor() != 0 ? 1 : 0;
}

void CPXControlePermissoes::GetPermissoesCadastros(const PXControlePermissao& eTipo, CPXDadosPermissaoUsuario& dados) {
    const Cadastro* p = Linha(kCadastros, eTipo);
    if (!p) return;
    dados.SetTemPermissaoIncluir(GetPermissao(p->incluirAlterar, QZ_MODULO_PX));
    dados.SetTemPermissaoAlterar(GetPermissao(p->incluirAlterar, QZ_MODULO_PX));
    dados.SetTemPermissaoConsultar(GetPermissao(p->consultar, QZ_MODULO_PX));
}

void CPXControlePermissoes::GetPermissoesMovimentos(const PXControlePermissao& eTipo, CPXDadosPermissaoUsuario& dados) {
    const Movimento* p = Linha(kMovimentos, eTipo);
    if (!p) return;
    const std::pair<Setter, uint16_t> flags[] = {
        {&CPXDadosPermissaoUsuario::SetTemPermissaoIncluir, p->incluir},
        {&CPXDadosPermissaoUsuario::SetTemPermissaoAlterar, p->alterar},
        {&CPXDadosPermissaoUsuario::SetTemPermissaoConsultar, p->consultar},
        {&CPXDadosPermissaoUsuario::SetTemPermissaoExcluir, p->excluir},
        {&CPXDadosPermissaoUsuario::SetTemPermissaoCancelar, p->cancelar},
        {&CPXDadosPermissaoUsuario::SetTemPermissaoEncerrar, p->encerrar},
    };
    for (const auto& [flag, permissao] : flags)
        if (permissao != 0) (dados.*flag)(GetPermissao(permissao, QZ_MODULO_PX));
}

void CPXControlePermissoes::GetPermissoesRelatorios(const PXControlePermissao& eTipo, CPXDadosPermissaoUsuario& dados) {
    if (eTipo == PX_PERMISSAO_RELATORIO_14) {
        dados.SetTemPermissaoConfigurar(GetPermissao(kPermissaoConfigurarRelatorios, QZ_MODULO_PX));
        return;
    }
    if (const Relatorio* p = Linha(kRelatorios, eTipo))
        dados.SetTemPermissaoEmitir(GetPermissao(p->emitir, QZ_MODULO_PX));
}

void CPXControlePermissoes::GetPermissoesEspecificas(const PXControlePermissao& eTipo,
                                                     CPXDadosPermissaoUsuario& dados) {
    if (const Especifica* p = Linha(kEspecificas, eTipo)) (dados.*(p->flag))(GetPermissao(p->permissao, p->modulo));
}
