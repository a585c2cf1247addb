// Names and descriptions of HRESULT-style result codes, for the failure trace:
// a data-service call that returns something other than 0 is logged with the
// code, its parts and what it means.
#pragma once
#include <cstdint>
// Result codes raised by this library's own data services (HRESULT layout: severity bit 31, facility ITF = 4).
constexpr long QZ_E_REGISTRO_NAO_ENCONTRADO = static_cast<long>(static_cast<int32_t>(0x80040A01u)); // record not found at that key
constexpr long QZ_E_REGISTRO_ALTERADO      = static_cast<long>(static_cast<int32_t>(0x80040A02u)); // optimistic lock lost: stored stamp differs
constexpr long QZ_E_BANCO                  = static_cast<long>(static_cast<int32_t>(0x80040A03u)); // the database reported an error
constexpr long QZ_E_BANCO_OCUPADO          = static_cast<long>(static_cast<int32_t>(0x80040A04u)); // database locked / busy
constexpr long QZ_E_SEM_SERVICOS           = static_cast<long>(static_cast<int32_t>(0x80040A05u)); // no data services registered for the company
constexpr long QZ_E_REGISTRO_INVALIDO      = static_cast<long>(static_cast<int32_t>(0x80040A06u)); // record rejected by the store (bad key, bad value)
constexpr long QZ_E_SEM_REGRAS             = static_cast<long>(static_cast<int32_t>(0x80040A08u)); // the record type has no rules for that operation
constexpr long QZ_E_FALHA_INJETADA         = static_cast<long>(static_cast<int32_t>(0x80040A07u)); // default code of a test-injected failure
constexpr long QZ_E_ENVIO_EMAIL            = static_cast<long>(static_cast<int32_t>(0x80040A64u)); // e-mail could not be sent
constexpr long QZ_E_MODELO_LEITURA         = static_cast<long>(static_cast<int32_t>(0x80040A65u)); // e-mail template could not be read
constexpr long QZ_E_MODELO_INEXISTENTE     = static_cast<long>(static_cast<int32_t>(0x80040A66u)); // e-mail template file does not exist
constexpr long QZ_E_ARGUMENTO_INVALIDO     = static_cast<long>(static_cast<int32_t>(0x80070057u)); // E_INVALIDARG: an argument out of range
constexpr long QZ_E_SEM_MEMORIA            = static_cast<long>(static_cast<int32_t>(0x8007000Eu)); // E_OUTOFMEMORY
constexpr long QZ_E_INESPERADO             = static_cast<long>(static_cast<int32_t>(0x8000FFFFu)); // E_UNEXPECTED: a failure no rule foresaw
constexpr long QZ_E_CONTA_EMAIL            = static_cast<long>(static_cast<int32_t>(0x80040A68u)); // no e-mail account configured

struct QZInfoCodigo {
    const char* nome;       // symbolic name, e.g. "E_FAIL"; "" when unknown
    const char* descricao;  // description in Brazilian Portuguese; "" when unknown
};
// Whole-code lookup (the 32-bit value; `long` is 64-bit here, compare on the low 32 bits).
QZInfoCodigo QZBuscaCodigo(long hr);
// Parts of a code.
int QZSeveridade(long hr);   // bit 31: 0 or 1
int QZFacility(long hr);     // bits 16..28 (13 bits)
int QZCodigo(long hr);       // low 16 bits
const char* QZNomeSeveridade(int severidade);  // "SEVERITY_SUCCESS" / "SEVERITY_ERROR"
const char* QZNomeFacility(int facility);      // "FACILITY_NULL", "FACILITY_RPC", "FACILITY_DISPATCH", "FACILITY_STORAGE", "FACILITY_ITF", "FACILITY_WIN32", "FACILITY_WINDOWS", ... ; "" when unknown
const char* QZNomeCodigoParte(long hr);        // name of the low 16 bits: the Win32 error name (e.g. "ERROR_FILE_NOT_FOUND") when the facility is WIN32 or NULL and the number is a known Win32 error; "" otherwise
// System description of a code: the table's description; else for FACILITY_WIN32 codes the Win32 error's description; else "Erro desconhecido".
const char* QZDescricaoCodigo(long hr);
