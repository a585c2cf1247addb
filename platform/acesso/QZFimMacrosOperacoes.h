// Not a header to include on its own: undoes QZMacrosOperacoes.h.
#undef QZ_OP_LE
#undef QZ_OP_LE_UNICO
#undef QZ_OP_BUSCA
#undef QZ_OP_CLASSIFICACAO
#undef QZ_OP_LE_BUFFER
#undef QZ_OP_LE_BUFFER_UNICO
#undef QZ_OP_ITEM_LISTA
#undef QZ_OP_LE_VARIOS
