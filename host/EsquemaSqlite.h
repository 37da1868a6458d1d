#pragma once

namespace caja {

// The whole schema of the embedded database, every statement idempotent
// (IF NOT EXISTS), so it runs on every open.
//
// Text columns compare without regard to letter case, as the SQL Server
// collation the component was written against does. Money columns are
// declared MONEY and read back through CCur; dates are kept as
// "yyyy-mm-dd hh:mm:ss" text. Identity tables use AUTOINCREMENT so that
// IDENT_CURRENT can read the table's last identity from sqlite_sequence.
extern const char* const kEsquemaSqlite;

}  // namespace caja
