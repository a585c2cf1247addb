// Numbered messages checked when the library is built. The rules name a
// message as PX_MSG(numero) (or QZ_MSG(modulo, numero)); the error record
// takes it only when the module's table has that message and the call passes
// exactly as many parameters as its text takes:
//
//   SetAviso(PX_MSG(10), kCampoCodigo);                         // no parameter
//   SetAvisoPersonalizado(PX_MSG(146), campo, codigo, descricao); // two
//
// A number the table lacks, or a wrong count, stops the build with an error
// naming QZMensagemForaDaTabela or QZContagemDeParametrosErrada.
#pragma once

#include "platform/QZModulo.h"

struct CQZEntradaTabelaMensagens {
    int modulo;
    long numero;
    int parametros;
};

#include "gerado/QZTabelaMensagens.h"

struct CQZIdMensagem {
    QZModulo modulo;
    long numero;
};

#define QZ_MSG(modulo, numero) (CQZIdMensagem{(modulo), (numero)})
#define PX_MSG(numero) QZ_MSG(QZ_MODULO_PX, (numero))

namespace qzmsg {
// How many parameters the table's text of the message takes; -1 when the
// table has no such message. Only ever evaluated inside the consteval
// constructor below (constexpr, not consteval: clang 14 refuses a nested
// immediate call on the constructor's parameters).
constexpr int Parametros(QZModulo modulo, long numero) {
    for (const auto& e : kQZTabelaMensagens)
        if (e.modulo == modulo && e.numero == numero) return e.parametros;
    return -1;
}
// Never defined: reaching one of them in a constant evaluation is the error.
void QZMensagemForaDaTabela();
void QZContagemDeParametrosErrada();
}  // namespace qzmsg

// A message of the table that takes P parameters.
template <int P>
struct CQZMensagem {
    QZModulo modulo;
    long numero;

    consteval CQZMensagem(CQZIdMensagem id) : modulo(id.modulo), numero(id.numero) {
        const int n = qzmsg::Parametros(id.modulo, id.numero);
        if (n < 0) qzmsg::QZMensagemForaDaTabela();
        if (n != P) qzmsg::QZContagemDeParametrosErrada();
    }
};
