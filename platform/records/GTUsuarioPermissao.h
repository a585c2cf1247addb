// Permissions of a user in one module of the suite, with the user's
// supervisor flag: a supervisor may do everything.
//
// A record is stored at the position QZ_KEY_PERMISSAO_USUARIO(user,
// module).GetChaveArmazem(): the user code in the high 16 bits, the module
// number in the low 16. A read of a user and module without a record gives
// an empty record: no permission in that module, not a supervisor.
#pragma once

#include <algorithm>

#include "platform/QZRegistro.h"

// Key of a permission record: the user's code and the module asked about.
struct QZ_KEY_PERMISSAO_USUARIO {
    uint16_t usUsuario = 0;
    QZModulo eModulo = QZ_MODULO_NENHUM;

    QZ_KEY_PERMISSAO_USUARIO() = default;
    QZ_KEY_PERMISSAO_USUARIO(uint16_t usuario, QZModulo modulo) : usUsuario(usuario), eModulo(modulo) {}

    // Module numbers of the suite stay below 65536, so user and module pack
    // into one position without overlap.
    uint32_t GetChaveArmazem() const {
        return (static_cast<uint32_t>(usUsuario) << 16) | (static_cast<uint32_t>(eModulo) & 0xFFFFu);
    }
};

#define CAMPOS_GT_PERMISSAO_CONCEDIDA(CAMPO, LISTA) CAMPO(uint16_t, Numero, 0)

// One numbered permission of the module's permission table.
class CQZDadosGT_PermissaoConcedida : public TQZBaseParaDados {
    QZ_REGISTRO(CQZDadosGT_PermissaoConcedida, CAMPOS_GT_PERMISSAO_CONCEDIDA)
public:
    QZModulo OnGetModulo() const override { return QZ_MODULO_GT; }
};

// The user is part of the record's position, not a field: nothing to declare.
#define CAMPOS_GT_USUARIO_PERMISSAO(CAMPO, LISTA)             \
    CAMPO(uint8_t, UsuarioSupervisor, 0)                      \
    LISTA(CQZDadosGT_PermissaoConcedida, Permissoes)          \
    CAMPO(REG_QZDMAHMSUTC, DmaHmsAtualizacao, QZ_CARIMBO)

class CQZDadosGT_UsuarioPermissao : public TQZBaseParaDados {
    QZ_REGISTRO(CQZDadosGT_UsuarioPermissao, CAMPOS_GT_USUARIO_PERMISSAO)
public:
    QZModulo OnGetModulo() const override { return QZ_MODULO_GT; }

    // 1 when the numbered permission is granted, else 0. The supervisor flag
    // is not consulted here: callers ask GetUsuarioSupervisor themselves.
    int TemPermissao(uint16_t usNumero) const {
        return std::any_of(m_listaPermissoes.begin(), m_listaPermissoes.end(),
                           [&](const CQZDadosGT_PermissaoConcedida& p) { return p.GetNumero() == usNumero; })
                   ? 1
                   : 0;
    }
};
