// The PostgreSQL engine of the stores' database layer (QZBanco.h): one
// database server shared by every machine of a company, reached by a
// "postgresql://" URL (libpq's form, e.g.
// postgresql:///pxlreg?host=/run/postgresql or
// postgresql://usuario@servidor:5432/pxlreg).
//
// Transactions. A read transaction is REPEATABLE READ: one snapshot for the
// reads of a validation, as SQLite's BEGIN gives. A write transaction is
// READ COMMITTED and first takes the store's write lock (a transaction-level
// advisory lock keyed by the schema), the same discipline as SQLite's BEGIN
// IMMEDIATE: the rules' read-then-write runs with no other writer in
// between, and every statement after the lock sees every write committed
// before it, so key allocation (the highest key plus one) and the code
// checks of the rules are as safe as on SQLite. Readers never wait for it.
// The stamp carried by every UPDATE/DELETE still decides between a save and
// a record changed since the user read it.
#pragma once

#include <memory>
#include <string>

#include "store/QZBanco.h"

namespace qzsql {

// "postgresql://..." or "postgres://...".
bool EhUrlPostgres(const std::string& caminho);
// The URL without its password, to name the store in messages.
std::string NomeUrlPostgres(const std::string& url);
// Connects to the server of `url`. Throws Falha.
std::unique_ptr<IQZMotor> AbrePostgres(const std::string& nome, const std::string& url);
// A statement's `?` and `?N` placeholders as `$N` (quoted text untouched);
// `n` receives the highest parameter number.
std::string TraduzMarcadores(std::string_view sql, int& n);

}  // namespace qzsql
