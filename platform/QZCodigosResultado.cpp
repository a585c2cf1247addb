#include "platform/QZCodigosResultado.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

namespace {

constexpr int FACILITY_NULL = 0;
constexpr int FACILITY_WIN32 = 7;

// Codes travel as 64-bit `long`; only the low 32 bits are the code, whether
// the caller sign-extended it or not.
constexpr uint32_t Valor32(long hr) { return static_cast<uint32_t>(static_cast<unsigned long>(hr)); }

struct ErroWin32 {
    uint32_t numero;
    const char* nome;
    const char* descricao;
};

// Win32 error numbers, ascending (binary search).
constexpr ErroWin32 kErrosWin32[] = {
    {0, "ERROR_SUCCESS", "A operação foi concluída com êxito."},
    {1, "ERROR_INVALID_FUNCTION", "Função incorreta."},
    {2, "ERROR_FILE_NOT_FOUND", "O sistema não pode encontrar o arquivo especificado."},
    {3, "ERROR_PATH_NOT_FOUND", "O sistema não pode encontrar o caminho especificado."},
    {4, "ERROR_TOO_MANY_OPEN_FILES", "O sistema não pode abrir o arquivo."},
    {5, "ERROR_ACCESS_DENIED", "Acesso negado."},
    {6, "ERROR_INVALID_HANDLE", "O identificador é inválido."},
    {8, "ERROR_NOT_ENOUGH_MEMORY", "Não há armazenamento suficiente disponível para processar este comando."},
    {11, "ERROR_BAD_FORMAT", "Foi feita uma tentativa de carregar um programa com um formato incorreto."},
    {12, "ERROR_INVALID_ACCESS", "O código de acesso é inválido."},
    {13, "ERROR_INVALID_DATA", "Os dados são inválidos."},
    {14, "ERROR_OUTOFMEMORY", "Não há armazenamento suficiente disponível para concluir esta operação."},
    {15, "ERROR_INVALID_DRIVE", "O sistema não pode encontrar a unidade especificada."},
    {18, "ERROR_NO_MORE_FILES", "Não há mais arquivos."},
    {19, "ERROR_WRITE_PROTECT", "A mídia está protegida contra gravação."},
    {21, "ERROR_NOT_READY", "O dispositivo não está pronto."},
    {23, "ERROR_CRC", "Erro de dados (verificação cíclica de redundância)."},
    {31, "ERROR_GEN_FAILURE", "Um dispositivo conectado ao sistema não está funcionando."},
    {32, "ERROR_SHARING_VIOLATION", "O processo não pode acessar o arquivo porque ele está sendo usado por outro processo."},
    {33, "ERROR_LOCK_VIOLATION", "O processo não pode acessar o arquivo porque outro processo bloqueou uma parte do arquivo."},
    {38, "ERROR_HANDLE_EOF", "Fim de arquivo atingido."},
    {39, "ERROR_HANDLE_DISK_FULL", "O disco está cheio."},
    {50, "ERROR_NOT_SUPPORTED", "Não há suporte para a solicitação."},
    {53, "ERROR_BAD_NETPATH", "O caminho da rede não foi encontrado."},
    {64, "ERROR_NETNAME_DELETED", "O nome de rede especificado não está mais disponível."},
    {80, "ERROR_FILE_EXISTS", "O arquivo existe."},
    {87, "ERROR_INVALID_PARAMETER", "O parâmetro está incorreto."},
    {112, "ERROR_DISK_FULL", "Não há espaço suficiente no disco."},
    {120, "ERROR_CALL_NOT_IMPLEMENTED", "Esta função não tem suporte neste sistema."},
    {121, "ERROR_SEM_TIMEOUT", "O período de tempo limite do semáforo expirou."},
    {122, "ERROR_INSUFFICIENT_BUFFER", "A área de dados passada para uma chamada do sistema é muito pequena."},
    {123, "ERROR_INVALID_NAME", "A sintaxe do nome do arquivo, do nome do diretório ou do rótulo do volume está incorreta."},
    {145, "ERROR_DIR_NOT_EMPTY", "O diretório não está vazio."},
    {170, "ERROR_BUSY", "O recurso solicitado está em uso."},
    {183, "ERROR_ALREADY_EXISTS", "Não é possível criar um arquivo já existente."},
    {234, "ERROR_MORE_DATA", "Há mais dados disponíveis."},
    {258, "WAIT_TIMEOUT", "A operação de espera atingiu o tempo limite."},
    {259, "ERROR_NO_MORE_ITEMS", "Não há mais dados disponíveis."},
    {995, "ERROR_OPERATION_ABORTED", "A operação de E/S foi anulada devido a uma saída de thread ou a uma solicitação de aplicativo."},
    {997, "ERROR_IO_PENDING", "Operação de E/S sobreposta em andamento."},
    {998, "ERROR_NOACCESS", "Acesso inválido ao local da memória."},
    {1168, "ERROR_NOT_FOUND", "Elemento não encontrado."},
    {1223, "ERROR_CANCELLED", "A operação foi cancelada pelo usuário."},
    {1225, "ERROR_CONNECTION_REFUSED", "O computador remoto recusou a conexão de rede."},
    {1231, "ERROR_NETWORK_UNREACHABLE", "O local de rede não pode ser acessado."},
    {1236, "ERROR_CONNECTION_ABORTED", "A conexão de rede foi anulada pelo sistema local."},
    {1326, "ERROR_LOGON_FAILURE", "O nome de usuário ou a senha está incorreto."},
    {1460, "ERROR_TIMEOUT", "Esta operação retornou porque o tempo limite expirou."},
    {1722, "RPC_S_SERVER_UNAVAILABLE", "O servidor RPC não está disponível."},
};

struct EntradaCodigo {
    uint32_t valor;
    const char* nome;
    // nullptr: an HRESULT_FROM_WIN32 form that reads the same as its Win32
    // error, so the text lives in one place (kErrosWin32).
    const char* descricao;
};

// Whole 32-bit codes, ascending (binary search).
constexpr EntradaCodigo kCodigos[] = {
    {0x00000000u, "S_OK", "Operação concluída com êxito."},
    {0x00000001u, "S_FALSE", "Operação concluída com êxito; o resultado é falso."},
    {0x8000000Au, "E_PENDING", "Os dados necessários para concluir esta operação ainda não estão disponíveis."},
    {0x80004001u, "E_NOTIMPL", "Não implementado."},
    {0x80004002u, "E_NOINTERFACE", "Não há suporte para esta interface."},
    {0x80004003u, "E_POINTER", "Ponteiro inválido."},
    {0x80004004u, "E_ABORT", "Operação anulada."},
    {0x80004005u, "E_FAIL", "Erro não especificado."},
    {0x8000FFFFu, "E_UNEXPECTED", "Falha catastrófica."},
    {0x80010001u, "RPC_E_CALL_REJECTED", "A chamada foi rejeitada pelo receptor."},
    {0x80010105u, "RPC_E_SERVERFAULT", "O servidor gerou uma exceção."},
    {0x80010108u, "RPC_E_DISCONNECTED", "O objeto chamado foi desconectado de seus clientes."},
    {0x80020001u, "DISP_E_UNKNOWNINTERFACE", "Interface desconhecida."},
    {0x80020003u, "DISP_E_MEMBERNOTFOUND", "Membro não encontrado."},
    {0x80020004u, "DISP_E_PARAMNOTFOUND", "Parâmetro não encontrado."},
    {0x80020005u, "DISP_E_TYPEMISMATCH", "Tipos incompatíveis."},
    {0x80020006u, "DISP_E_UNKNOWNNAME", "Nome desconhecido."},
    {0x80020009u, "DISP_E_EXCEPTION", "Ocorreu uma exceção."},
    {0x8002000Au, "DISP_E_OVERFLOW", "Fora do intervalo atual."},
    {0x8002000Eu, "DISP_E_BADPARAMCOUNT", "Número de parâmetros inválido."},
    {0x80030002u, "STG_E_FILENOTFOUND", "Não foi possível localizar o arquivo."},
    {0x80030005u, "STG_E_ACCESSDENIED", "Acesso negado."},
    {0x80030008u, "STG_E_INSUFFICIENTMEMORY", "Memória insuficiente para concluir esta operação."},
    {0x80040007u, "OLE_E_BLANK", "Objeto não inicializado."},
    {0x80040111u, "CLASS_E_CLASSNOTAVAILABLE", "A fábrica de classes não pode fornecer a classe solicitada."},
    {0x80040154u, "REGDB_E_CLASSNOTREG", "Classe não registrada."},
    {0x800401F0u, "CO_E_NOTINITIALIZED", "CoInitialize não foi chamado."},
    {Valor32(QZ_E_REGISTRO_NAO_ENCONTRADO), "QZ_E_REGISTRO_NAO_ENCONTRADO", "Registro não encontrado."},
    {Valor32(QZ_E_REGISTRO_ALTERADO), "QZ_E_REGISTRO_ALTERADO", "O registro foi alterado por outro usuário depois de ter sido lido."},
    {Valor32(QZ_E_BANCO), "QZ_E_BANCO", "O banco de dados retornou um erro."},
    {Valor32(QZ_E_BANCO_OCUPADO), "QZ_E_BANCO_OCUPADO", "O banco de dados está bloqueado ou ocupado."},
    {Valor32(QZ_E_SEM_SERVICOS), "QZ_E_SEM_SERVICOS", "Não há serviços de dados registrados para a empresa."},
    {Valor32(QZ_E_REGISTRO_INVALIDO), "QZ_E_REGISTRO_INVALIDO", "O registro foi rejeitado pelo banco de dados (chave ou valor inválido)."},
    {Valor32(QZ_E_FALHA_INJETADA), "QZ_E_FALHA_INJETADA", "Falha simulada por teste."},
    {Valor32(QZ_E_SEM_REGRAS), "QZ_E_SEM_REGRAS", "O tipo de registro não tem regras para esta operação."},
    {Valor32(QZ_E_ENVIO_EMAIL), "QZ_E_ENVIO_EMAIL", "Não foi possível enviar o e-mail."},
    {Valor32(QZ_E_MODELO_LEITURA), "QZ_E_MODELO_LEITURA", "Não foi possível ler o modelo de e-mail."},
    {Valor32(QZ_E_MODELO_INEXISTENTE), "QZ_E_MODELO_INEXISTENTE", "O arquivo de modelo de e-mail não existe."},
    {Valor32(QZ_E_CONTA_EMAIL), "QZ_E_CONTA_EMAIL", "Nenhuma conta de e-mail está configurada."},
    {0x80070002u, "HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND)", nullptr},
    {0x80070003u, "HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND)", nullptr},
    {0x80070004u, "HRESULT_FROM_WIN32(ERROR_TOO_MANY_OPEN_FILES)", nullptr},
    {0x80070005u, "E_ACCESSDENIED", "Erro geral de acesso negado."},
    {0x80070006u, "E_HANDLE", "Identificador inválido."},
    {0x80070008u, "HRESULT_FROM_WIN32(ERROR_NOT_ENOUGH_MEMORY)", nullptr},
    {0x8007000Eu, "E_OUTOFMEMORY", "Memória insuficiente para concluir esta operação."},
    {0x80070020u, "HRESULT_FROM_WIN32(ERROR_SHARING_VIOLATION)", nullptr},
    {0x80070021u, "HRESULT_FROM_WIN32(ERROR_LOCK_VIOLATION)", nullptr},
    {0x80070027u, "HRESULT_FROM_WIN32(ERROR_HANDLE_DISK_FULL)", nullptr},
    {0x80070032u, "HRESULT_FROM_WIN32(ERROR_NOT_SUPPORTED)", nullptr},
    {0x80070050u, "HRESULT_FROM_WIN32(ERROR_FILE_EXISTS)", nullptr},
    {0x80070057u, "E_INVALIDARG", "Um ou mais argumentos são inválidos."},
    {0x80070070u, "HRESULT_FROM_WIN32(ERROR_DISK_FULL)", nullptr},
    {0x8007007Au, "HRESULT_FROM_WIN32(ERROR_INSUFFICIENT_BUFFER)", nullptr},
    {0x800700B7u, "HRESULT_FROM_WIN32(ERROR_ALREADY_EXISTS)", nullptr},
    {0x80070490u, "HRESULT_FROM_WIN32(ERROR_NOT_FOUND)", nullptr},
    {0x800704C7u, "HRESULT_FROM_WIN32(ERROR_CANCELLED)", nullptr},
    {0x800705B4u, "HRESULT_FROM_WIN32(ERROR_TIMEOUT)", nullptr},
    {0x800706BAu, "HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE)", nullptr},
};

constexpr const ErroWin32* BuscaWin32(uint32_t numero) {
    auto it = std::lower_bound(std::begin(kErrosWin32), std::end(kErrosWin32), numero,
                               [](const ErroWin32& e, uint32_t n) { return e.numero < n; });
    return (it != std::end(kErrosWin32) && it->numero == numero) ? it : nullptr;
}

constexpr const EntradaCodigo* BuscaEntrada(uint32_t valor) {
    auto it = std::lower_bound(std::begin(kCodigos), std::end(kCodigos), valor,
                               [](const EntradaCodigo& e, uint32_t v) { return e.valor < v; });
    return (it != std::end(kCodigos) && it->valor == valor) ? it : nullptr;
}

// A mis-sorted or dangling entry would only show up as a silently wrong
// trace line, so the tables are checked when this file compiles.
constexpr bool TabelasConsistentes() {
    for (std::size_t i = 1; i < std::size(kErrosWin32); ++i)
        if (!(kErrosWin32[i - 1].numero < kErrosWin32[i].numero)) return false;
    for (std::size_t i = 1; i < std::size(kCodigos); ++i)
        if (!(kCodigos[i - 1].valor < kCodigos[i].valor)) return false;
    for (const EntradaCodigo& e : kCodigos) {
        if (e.descricao != nullptr) continue;
        if ((e.valor & 0xFFFF0000u) != 0x80070000u) return false;
        if (BuscaWin32(e.valor & 0xFFFFu) == nullptr) return false;
    }
    return true;
}
static_assert(TabelasConsistentes(), "result-code tables must be ascending and borrow only known Win32 errors");

}  // namespace

QZInfoCodigo QZBuscaCodigo(long hr) {
    const EntradaCodigo* e = BuscaEntrada(Valor32(hr));
    if (e == nullptr) return {"", ""};
    if (e->descricao != nullptr) return {e->nome, e->descricao};
    return {e->nome, BuscaWin32(e->valor & 0xFFFFu)->descricao};
}

int QZSeveridade(long hr) { return static_cast<int>((Valor32(hr) >> 31) & 1u); }

int QZFacility(long hr) { return static_cast<int>((Valor32(hr) >> 16) & 0x1FFFu); }

int QZCodigo(long hr) { return static_cast<int>(Valor32(hr) & 0xFFFFu); }

const char* QZNomeSeveridade(int severidade) {
    switch (severidade) {
        case 0: return "SEVERITY_SUCCESS";
        case 1: return "SEVERITY_ERROR";
        default: return "";
    }
}

const char* QZNomeFacility(int facility) {
    switch (facility) {
        case 0: return "FACILITY_NULL";
        case 1: return "FACILITY_RPC";
        case 2: return "FACILITY_DISPATCH";
        case 3: return "FACILITY_STORAGE";
        case 4: return "FACILITY_ITF";
        case 7: return "FACILITY_WIN32";
        case 8: return "FACILITY_WINDOWS";
        case 9: return "FACILITY_SECURITY";
        case 10: return "FACILITY_CONTROL";
        case 11: return "FACILITY_CERT";
        case 12: return "FACILITY_INTERNET";
        case 13: return "FACILITY_MEDIASERVER";
        case 14: return "FACILITY_MSMQ";
        case 15: return "FACILITY_SETUPAPI";
        case 16: return "FACILITY_SCARD";
        case 17: return "FACILITY_COMPLUS";
        case 18: return "FACILITY_AAF";
        case 19: return "FACILITY_URT";
        case 20: return "FACILITY_ACS";
        case 21: return "FACILITY_DPLAY";
        case 22: return "FACILITY_UMI";
        case 23: return "FACILITY_SXS";
        case 24: return "FACILITY_WINDOWS_CE";
        case 25: return "FACILITY_HTTP";
        case 26: return "FACILITY_USERMODE_COMMONLOG";
        case 31: return "FACILITY_USERMODE_FILTER_MANAGER";
        case 32: return "FACILITY_BACKGROUNDCOPY";
        case 33: return "FACILITY_CONFIGURATION";
        case 34: return "FACILITY_STATE_MANAGEMENT";
        case 35: return "FACILITY_METADIRECTORY";
        case 36: return "FACILITY_WINDOWSUPDATE";
        case 37: return "FACILITY_DIRECTORYSERVICE";
        case 38: return "FACILITY_GRAPHICS";
        case 39: return "FACILITY_SHELL";
        case 40: return "FACILITY_TPM_SERVICES";
        case 41: return "FACILITY_TPM_SOFTWARE";
        default: return "";
    }
}

const char* QZNomeCodigoParte(long hr) {
    // Only WIN32 and NULL codes carry a Win32 number in their low word; in
    // other facilities the same number means something unrelated.
    const int facility = QZFacility(hr);
    if (facility != FACILITY_WIN32 && facility != FACILITY_NULL) return "";
    const ErroWin32* e = BuscaWin32(static_cast<uint32_t>(QZCodigo(hr)));
    return e != nullptr ? e->nome : "";
}

const char* QZDescricaoCodigo(long hr) {
    const QZInfoCodigo info = QZBuscaCodigo(hr);
    if (info.descricao[0] != '\0') return info.descricao;
    if (QZFacility(hr) == FACILITY_WIN32) {
        if (const ErroWin32* e = BuscaWin32(static_cast<uint32_t>(QZCodigo(hr)))) return e->descricao;
    }
    return "Erro desconhecido";
}
