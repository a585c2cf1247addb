// Not a header to include on its own: fills the operation macros left
// undefined by the includer with nothing, so a .def file may use them all.
#ifndef QZ_OP_LE
#define QZ_OP_LE(Nome, Registro, Chave, Flags, SeAusente)
#endif
#ifndef QZ_OP_LE_UNICO
#define QZ_OP_LE_UNICO(Nome, Registro, Flags)
#endif
#ifndef QZ_OP_BUSCA
#define QZ_OP_BUSCA(Nome, Filtro, Lista)
#endif
#ifndef QZ_OP_CLASSIFICACAO
#define QZ_OP_CLASSIFICACAO(Nome, Filtro)
#endif
#ifndef QZ_OP_LE_BUFFER
#define QZ_OP_LE_BUFFER(Nome, Registro, Chave, SeAusente)
#endif
#ifndef QZ_OP_LE_BUFFER_UNICO
#define QZ_OP_LE_BUFFER_UNICO(Nome, Registro)
#endif
#ifndef QZ_OP_LE_VARIOS
#define QZ_OP_LE_VARIOS(Nome, Registro, Chave, Flags)
#endif
#ifndef QZ_OP_ITEM_LISTA
#define QZ_OP_ITEM_LISTA(Nome, Registro, Chave, Lista, Elemento, Item, Campo)
#endif
