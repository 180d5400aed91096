#include "platform/cache/SqliteConnection.h"

#include <sys/stat.h>

namespace kelvaro {

namespace {

constexpr int kPatienceMilliseconds = 2000; // while another program writes

} // namespace

SqliteStatement::~SqliteStatement() {
    if (!statement_) return;
    sqlite3_reset(statement_);
    sqlite3_clear_bindings(statement_);
}

void SqliteStatement::bind(int parameter, std::string_view bytes) {
    if (!statement_) return;
    // A null pointer would bind NULL instead of no bytes.
    sqlite3_bind_blob64(statement_, parameter, bytes.empty() ? "" : bytes.data(), bytes.size(),
                        SQLITE_STATIC);
}

void SqliteStatement::bind(int parameter, std::int64_t number) {
    if (statement_) sqlite3_bind_int64(statement_, parameter, number);
}

int SqliteStatement::step() {
    return statement_ ? sqlite3_step(statement_) : SQLITE_ERROR;
}

std::string_view SqliteStatement::bytes(int column) const {
    const void* data = sqlite3_column_blob(statement_, column);
    const int size = sqlite3_column_bytes(statement_, column);
    return {static_cast<const char*>(data), data ? static_cast<std::size_t>(size) : 0};
}

std::int64_t SqliteStatement::number(int column) const {
    return sqlite3_column_int64(statement_, column);
}

SqliteConnection::SqliteConnection(const std::string& path) {
    error_ =
        sqlite3_open_v2(path.c_str(), &database_,
                        SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr);
    if (error_ != SQLITE_OK) return;
    sqlite3_busy_timeout(database_, kPatienceMilliseconds);
    run("PRAGMA journal_mode = WAL; PRAGMA synchronous = NORMAL;");
    struct stat file {};
    if (::stat(path.c_str(), &file) != 0) return;
    device_ = file.st_dev;
    inode_ = file.st_ino;
}

SqliteConnection::~SqliteConnection() {
    for (const auto& [sql, statement] : statements_)
        sqlite3_finalize(statement);
    sqlite3_close(database_);
}

int SqliteConnection::run(const char* sql) {
    error_ = sqlite3_exec(database_, sql, nullptr, nullptr, nullptr);
    return error_;
}

std::int64_t SqliteConnection::number(const char* sql) {
    SqliteStatement found = statement(sql);
    const int code = found.step();
    if (code == SQLITE_ROW) return found.number(0);
    if (code != SQLITE_DONE) error_ = code;
    return -1;
}

SqliteStatement SqliteConnection::statement(const char* sql) {
    sqlite3_stmt*& kept = statements_[sql];
    if (!kept)
        error_ = sqlite3_prepare_v3(database_, sql, -1, SQLITE_PREPARE_PERSISTENT, &kept, nullptr);
    return SqliteStatement(kept);
}

bool SqliteConnection::isFileAt(const std::string& path) const {
    struct stat file {};
    return ::stat(path.c_str(), &file) == 0 && device_ == file.st_dev && inode_ == file.st_ino;
}

} // namespace kelvaro
