// The records of photo files in a SQLite database with a write-ahead log. Several threads read at
// once, each with a connection of its own, and several programs may use one file. A file that is
// damaged, foreign or of another layout is thrown away and begun anew.
#pragma once

#include "base/Locked.h"
#include "platform/MetaCache.h"
#include "platform/cache/SqliteConnection.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <vector>

namespace kelvaro {

class SqliteMetaCache final : public MetaCache {
public:
    // `file` and its folder are made when they are missing. Where that cannot be done the cache
    // stays empty.
    explicit SqliteMetaCache(std::filesystem::path file);

    std::vector<CachedRecord> load(const std::string& folder) override;
    void store(const std::string& folder, std::span<const CachedRecord> records) override;
    void remove(const std::string& folder, std::span<const std::string> names) override;
    std::string note(const std::string& folder) override;
    void setNote(const std::string& folder, const std::string& note) override;

private:
    using Connection = std::unique_ptr<SqliteConnection>;

    Connection take();
    void giveBack(Connection connection);
    Connection open();
    void throwAway(Connection damaged);
    // Runs `use`, which returns a SQLite code, on some connection; once more on a new file when
    // the file turns out to be damaged.
    void with(const std::function<int(SqliteConnection&)>& use);

    const std::filesystem::path file_;
    Locked<std::vector<Connection>> idle_;
};

} // namespace kelvaro
