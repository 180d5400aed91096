// One open connection to a SQLite database with the statements prepared on it. For one thread at a
// time.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>

namespace kelvaro {

// A prepared statement in use. Bound texts must outlive it. Made ready for the next use when it
// goes.
class SqliteStatement {
public:
    explicit SqliteStatement(sqlite3_stmt* statement) : statement_(statement) {}
    SqliteStatement(const SqliteStatement&) = delete;
    SqliteStatement& operator=(const SqliteStatement&) = delete;
    ~SqliteStatement();

    // Parameters are counted from 1, columns from 0.
    void bind(int parameter, std::string_view bytes);
    void bind(int parameter, std::int64_t number);
    int step(); // SQLITE_ROW, SQLITE_DONE or an error code
    std::string_view bytes(int column) const;
    std::int64_t number(int column) const;

private:
    sqlite3_stmt* statement_; // null: the statement could not be prepared
};

class SqliteConnection {
public:
    // The error code is SQLITE_OK or says why it is not usable.
    explicit SqliteConnection(const std::string& path);
    SqliteConnection(const SqliteConnection&) = delete;
    SqliteConnection& operator=(const SqliteConnection&) = delete;
    ~SqliteConnection();

    int error() const { return error_; }
    // Statements without parameters and results; returns and remembers the code.
    int run(const char* sql);
    // The first column of the first row; -1 where there is none.
    std::int64_t number(const char* sql);
    // `sql` must be a literal: it is the key under which the prepared statement is kept.
    SqliteStatement statement(const char* sql);
    // Which file this is, as long as it has that name.
    bool isFileAt(const std::string& path) const;

private:
    sqlite3* database_ = nullptr;
    int error_ = SQLITE_OK;
    std::uint64_t device_ = 0, inode_ = 0;
    std::map<const char*, sqlite3_stmt*> statements_;
};

} // namespace kelvaro
