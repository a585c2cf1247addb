// Not a header to include on its own: turns every operation line of a .def
// file into the pure virtual declaration of the access contract.
#define QZ_OP_LE(Nome, Registro, Chave, Flags, SeAusente) \
    virtual long Le##Nome(Chave chave, Registro* pDados, Flags flags = 0) = 0;
#define QZ_OP_LE_UNICO(Nome, Registro, Flags) virtual long Le##Nome(Registro* pDados, Flags flags = 0) = 0;
#define QZ_OP_BUSCA(Nome, Filtro, Lista) virtual long BuscaPonteiros##Nome(const Filtro& filtro, Lista& lista) = 0;
#define QZ_OP_CLASSIFICACAO(Nome, Filtro) \
    virtual long BuscaClassificacao##Nome(const Filtro& filtro, CQZListaClassificacao* pLista) = 0;
#define QZ_OP_LE_BUFFER(Nome, Registro, Chave, SeAusente) \
    virtual long LeBuffer##Nome(Chave chave, Registro* pDados, uint64_t flags = 0) = 0;
#define QZ_OP_LE_BUFFER_UNICO(Nome, Registro) virtual long LeBuffer##Nome(Registro* pDados, uint64_t flags = 0) = 0;
