// Not a header to include on its own: turns every operation line of a .def
// file into the pure virtual declaration of the access contract. A status
// that is dropped is a failure nobody hears of: the compiler warns.
#define QZ_OP_LE(Nome, Registro, Chave, Flags, SeAusente) \
    [[nodiscard]] virtual long Le##Nome(Chave chave, Registro* pDados, Flags flags = 0) = 0;
#define QZ_OP_LE_UNICO(Nome, Registro, Flags) [[nodiscard]] virtual long Le##Nome(Registro* pDados, Flags flags = 0) = 0;
#define QZ_OP_BUSCA(Nome, Filtro, Lista) \
    [[nodiscard]] virtual long BuscaPonteiros##Nome(const Filtro& filtro, Lista& lista) = 0;
#define QZ_OP_CLASSIFICACAO(Nome, Filtro) \
    [[nodiscard]] virtual long BuscaClassificacao##Nome(const Filtro& filtro, CQZListaClassificacao* pLista) = 0;
#define QZ_OP_LE_BUFFER(Nome, Registro, Chave, SeAusente) \
    [[nodiscard]] virtual long LeBuffer##Nome(Chave chave, Registro* pDados, uint64_t flags = 0) = 0;
#define QZ_OP_LE_BUFFER_UNICO(Nome, Registro) \
    [[nodiscard]] virtual long LeBuffer##Nome(Registro* pDados, uint64_t flags = 0) = 0;
#define QZ_OP_LE_VARIOS(Nome, Registro, Chave, Flags)                                                          \
    [[nodiscard]] virtual long Le##Nome(int64_t quantidade, const Chave* pChaves, CQZVector<Registro>& registros, \
                                        Flags flags = 0) = 0;
#define QZ_OP_ITEM_LISTA(Nome, Registro, Chave, Lista, Elemento, Item, Campo) \
    [[nodiscard]] virtual long Buscar##Nome(Chave chave, Item item, Elemento* pDados) = 0;
