#pragma once

#include <cstdint>

struct sqlite3;

namespace salvor {

/// Bounds what statements on `db` can do: they read the database's own tables and call a short
/// list of functions, nothing else. Views, triggers, virtual tables, extensions, further database
/// files, pragmas and recursion are out of reach; a statement that asks for one does not prepare.
/// No value is longer than a file of `fileSize` bytes can hold.
void installStatementGuards(sqlite3* db, std::uint64_t fileSize);

}  // namespace salvor
