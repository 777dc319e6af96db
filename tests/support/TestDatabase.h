#pragma once

#include <QList>
#include <QPair>
#include <QString>
#include <QVariant>

// Fresh databases for tests, of both kinds: a new SQLite file, or an emptied database on the
// tests' own PostgreSQL server (started by CTest before the tests; see tests/postgres).
namespace TestDatabase {

inline const QString Sqlite = QStringLiteral("sqlite");
inline const QString Postgres = QStringLiteral("postgresql");

// For data-driven tests: adds the column "kind" with one row per database kind.
void AddKinds();
// The kind of the current data row.
QString CurrentKind();

// Points the settings store and the error log at a private temporary folder (call in
// initTestCase): nothing a test does touches the user's own files.
void IsolateEnvironment();
// The private temporary folder of this test run.
QString WorkFolder();

// Makes a fresh database of the kind with the schema and no rows, sets the program-wide
// settings values to it and opens it as the shared connection.
void OpenFresh(const QString& kind);
// Sets the program-wide settings values for a database of the kind (without opening it):
// for SQLite `name` is the file, for PostgreSQL the database on the tests' server.
void UseSettingsFor(const QString& kind, const QString& name);
// The tests' PostgreSQL server ("host:port"), user and password.
QString PostgresServer();
QString PostgresUser();
QString PostgresPassword();
// A database on the tests' server named as a URI; the password's "-" is written
// percent-encoded, as a user would write a character that the URI form reserves.
QString PostgresUri(const QString& database);
// Creates an empty database on the tests' server (dropping one of the same name first).
void CreatePostgresDatabase(const QString& name);

// A small collection with known keys: groups 1 Juhe, 2 Sladice; subgroups 1 Mesne juhe and
// 2 Zelenjavne juhe (of 1), 3 Pecivo (of 2); sources 1 Babičina kuharica, 2 Knjiga; units 1 g,
// 2 žlica; ingredients 1 moka, 2 korenje, 3 krompir, 4 Čokolada; recipes 1 Goveja juha (type 1,
// source 1, one untitled section 1), 2 Korenčkova juha (type 2, no source, section 4 with
// instructions " "), 3 čokoladna torta (type 3, source 2, sections 2 Testo and 3 Krema).
void LoadSmallCollection();

// Runs a statement in the program's dialect on the shared connection.
void Exec(const QString& sql);
// Inserts a row and returns its new key (the table's first column).
qint32 Insert(const QString& table, const QList<QPair<QString, QVariant>>& fields);
// The rows of a query as text: fields joined by "|", NULL as "NULL".
QStringList Rows(const QString& sql);

}  // namespace TestDatabase
