#pragma once

#include <QString>

// The program speaks one SQL dialect: table names in square brackets, LIKE with "%".
namespace SqlDialect {

// Rewrites the program's SQL for the database server: outside string literals, "[Name]"
// becomes "\"name\"" (the server's identifiers are lower case).
QString ToPostgres(const QString& sql);

}  // namespace SqlDialect
