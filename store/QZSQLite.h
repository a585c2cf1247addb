// The SQLite engine of the stores' database layer (QZBanco.h): the embedded
// default, a file or an in-memory database.
#pragma once

#include <memory>
#include <string>

#include "store/QZBanco.h"

namespace qzsql {

// Opens a SQLite database: a file (created when `cria`), ":memory:" or a
// "file:" URI. `nome` names it in messages. Throws Falha.
std::unique_ptr<IQZMotor> AbreSQLite(const std::string& nome, const std::string& caminho, bool cria);
// The same file, read-only (nothing it runs can change the file).
std::unique_ptr<IQZMotor> AbreSQLiteLeitura(const std::string& nome, const std::string& caminho);

}  // namespace qzsql
