#include "platform/cache/SqliteMetaCache.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <array>
#include <string>
#include <system_error>

namespace kelvaro {

namespace {

constexpr std::int64_t kApplicationId = 0x4B6C7661; // "Klva"
constexpr std::int64_t kLayout = 1;

constexpr const char* kCreate = "BEGIN IMMEDIATE;"
                                "CREATE TABLE IF NOT EXISTS folders(id INTEGER PRIMARY KEY,"
                                " path BLOB NOT NULL UNIQUE);"
                                "CREATE TABLE IF NOT EXISTS photos(folder INTEGER NOT NULL,"
                                " name BLOB NOT NULL, size INTEGER NOT NULL,"
                                " modified INTEGER NOT NULL, record BLOB NOT NULL,"
                                " PRIMARY KEY(folder, name)) WITHOUT ROWID;"
                                "PRAGMA application_id = 1265399393; PRAGMA user_version = 1;"
                                "COMMIT;";
static_assert(kApplicationId == 1265399393 && kLayout == 1);

// Also in files that were begun without it.
constexpr const char* kCreateNotes = "CREATE TABLE IF NOT EXISTS notes(folder BLOB PRIMARY KEY,"
                                     " note BLOB NOT NULL) WITHOUT ROWID";

constexpr const char* kLoad = "SELECT name, size, modified, record FROM photos"
                              " WHERE folder = (SELECT id FROM folders WHERE path = ?1)";
constexpr const char* kAddFolder = "INSERT OR IGNORE INTO folders(path) VALUES(?1)";
constexpr const char* kFolder = "SELECT id FROM folders WHERE path = ?1";
constexpr const char* kStore = "INSERT OR REPLACE INTO photos VALUES(?1, ?2, ?3, ?4, ?5)";
constexpr const char* kNote = "SELECT note FROM notes WHERE folder = ?1";
constexpr const char* kSetNote = "INSERT OR REPLACE INTO notes VALUES(?1, ?2)";
constexpr const char* kRemove = "DELETE FROM photos WHERE folder = ?1 AND name = ?2";

bool isDamage(int code) {
    return (code & 0xFF) == SQLITE_CORRUPT || (code & 0xFF) == SQLITE_NOTADB;
}

// Keeps programs and threads from opening the database while one of them throws it away.
class FileLock {
public:
    explicit FileLock(const std::string& path)
        : descriptor_(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600)) {
        if (descriptor_ >= 0) ::flock(descriptor_, LOCK_EX);
    }
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;
    ~FileLock() {
        if (descriptor_ >= 0) ::close(descriptor_);
    }

private:
    int descriptor_;
};

void removeDatabase(const std::string& path) {
    for (const char* suffix : {"", "-wal", "-shm"}) {
        std::error_code ignored;
        std::filesystem::remove_all(path + suffix, ignored);
    }
}

// Whether the file holds our tables, which an empty file is given.
bool isOurs(SqliteConnection& connection) {
    if (connection.number("SELECT count(*) FROM sqlite_master") == 0) connection.run(kCreate);
    return connection.error() == SQLITE_OK &&
           connection.number("PRAGMA application_id") == kApplicationId &&
           connection.number("PRAGMA user_version") == kLayout &&
           connection.run(kCreateNotes) == SQLITE_OK;
}

// The folder's number; 0 where there is none.
std::int64_t folderNumber(SqliteConnection& connection, const std::string& folder) {
    SqliteStatement found = connection.statement(kFolder);
    found.bind(1, folder);
    return found.step() == SQLITE_ROW ? found.number(0) : 0;
}

int loadAll(SqliteConnection& connection, const std::string& folder,
            std::vector<CachedRecord>& records) {
    SqliteStatement rows = connection.statement(kLoad);
    rows.bind(1, folder);
    int code = rows.step();
    for (; code == SQLITE_ROW; code = rows.step()) {
        records.push_back({std::string(rows.bytes(0)), rows.number(1), FileTime{rows.number(2)},
                           std::string(rows.bytes(3))});
    }
    return code;
}

int storeAll(SqliteConnection& connection, const std::string& folder,
             std::span<const CachedRecord> records) {
    {
        SqliteStatement add = connection.statement(kAddFolder);
        add.bind(1, folder);
        if (const int code = add.step(); code != SQLITE_DONE) return code;
    }
    const std::int64_t number = folderNumber(connection, folder);
    for (const CachedRecord& record : records) {
        SqliteStatement row = connection.statement(kStore);
        row.bind(1, number);
        row.bind(2, record.name);
        row.bind(3, record.size);
        row.bind(4, record.modified.nanoseconds);
        row.bind(5, record.record);
        if (const int code = row.step(); code != SQLITE_DONE) return code;
    }
    return SQLITE_DONE;
}

int removeAll(SqliteConnection& connection, const std::string& folder,
              std::span<const std::string> names) {
    const std::int64_t number = folderNumber(connection, folder);
    for (const std::string& name : names) {
        SqliteStatement row = connection.statement(kRemove);
        row.bind(1, number);
        row.bind(2, name);
        if (const int code = row.step(); code != SQLITE_DONE) return code;
    }
    return SQLITE_DONE;
}

// All of it or nothing; returns the code of what went wrong.
int transaction(SqliteConnection& connection, const std::function<int()>& changes) {
    if (const int code = connection.run("BEGIN IMMEDIATE"); code != SQLITE_OK) return code;
    const int changed = changes();
    const int code = changed == SQLITE_DONE ? connection.run("COMMIT") : changed;
    if (code != SQLITE_OK) connection.run("ROLLBACK");
    return code;
}

} // namespace

SqliteMetaCache::SqliteMetaCache(std::filesystem::path file) : file_(std::move(file)) {
    std::error_code ignored;
    std::filesystem::create_directories(file_.parent_path(), ignored);
}

SqliteMetaCache::Connection SqliteMetaCache::open() {
    const std::string path = file_.string();
    const FileLock lock(path + ".lock");
    auto connection = std::make_unique<SqliteConnection>(path);
    if (isOurs(*connection)) return connection;
    // Another program holds it, or the disk is full: not a reason to throw anything away.
    const int code = connection->error() & 0xFF;
    if (code == SQLITE_BUSY || code == SQLITE_FULL || code == SQLITE_IOERR) return nullptr;
    connection.reset();
    removeDatabase(path);
    connection = std::make_unique<SqliteConnection>(path);
    return isOurs(*connection) ? std::move(connection) : nullptr;
}

SqliteMetaCache::Connection SqliteMetaCache::take() {
    Connection connection = idle_.with([](std::vector<Connection>& idle) -> Connection {
        if (idle.empty()) return nullptr;
        Connection last = std::move(idle.back());
        idle.pop_back();
        return last;
    });
    return connection ? std::move(connection) : open();
}

void SqliteMetaCache::giveBack(Connection connection) {
    idle_.with([&](std::vector<Connection>& idle) { idle.push_back(std::move(connection)); });
}

void SqliteMetaCache::throwAway(Connection damaged) {
    idle_.with([](std::vector<Connection>& idle) { idle.clear(); });
    const std::string path = file_.string();
    const FileLock lock(path + ".lock");
    // Another thread or program may have been quicker.
    const bool isStillThere = damaged->isFileAt(path);
    damaged.reset();
    if (isStillThere) removeDatabase(path);
}

void SqliteMetaCache::with(const std::function<int(SqliteConnection&)>& use) {
    for (int attempt = 0; attempt < 2; ++attempt) {
        Connection connection = take();
        if (!connection) return;
        const int code = use(*connection);
        if (!isDamage(code)) return giveBack(std::move(connection));
        throwAway(std::move(connection));
    }
}

std::vector<CachedRecord> SqliteMetaCache::load(const std::string& folder) {
    std::vector<CachedRecord> records;
    with([&](SqliteConnection& connection) {
        records.clear();
        return loadAll(connection, folder, records);
    });
    return records;
}

void SqliteMetaCache::store(const std::string& folder, std::span<const CachedRecord> records) {
    if (records.empty()) return;
    with([&](SqliteConnection& connection) {
        return transaction(connection, [&] { return storeAll(connection, folder, records); });
    });
}

void SqliteMetaCache::remove(const std::string& folder, std::span<const std::string> names) {
    if (names.empty()) return;
    with([&](SqliteConnection& connection) {
        return transaction(connection, [&] { return removeAll(connection, folder, names); });
    });
}

std::string SqliteMetaCache::note(const std::string& folder) {
    std::string note;
    with([&](SqliteConnection& connection) {
        SqliteStatement found = connection.statement(kNote);
        found.bind(1, folder);
        const int code = found.step();
        if (code == SQLITE_ROW) note = found.bytes(0);
        return code;
    });
    return note;
}

void SqliteMetaCache::setNote(const std::string& folder, const std::string& note) {
    with([&](SqliteConnection& connection) {
        SqliteStatement row = connection.statement(kSetNote);
        row.bind(1, folder);
        row.bind(2, note);
        return row.step();
    });
}

} // namespace kelvaro
