// The cache file: what is stored comes back, damage and foreign files cost the cache and nothing
// else, and two programs may use one file.
#include "fakes/TemporaryFolder.h"
#include "platform/cache/SqliteMetaCache.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <random>
#include <thread>

namespace kelvaro {
namespace {

struct Cache : testing::Test {
    TemporaryFolder folder;
    std::filesystem::path file = folder / "meta.sqlite";

    static std::vector<CachedRecord> records(int count, const std::string& content = "r") {
        std::vector<CachedRecord> list;
        for (int i = 0; i < count; ++i)
            list.push_back({"n" + std::to_string(100 + i), i, FileTime{-i}, content});
        return list;
    }
    static std::vector<CachedRecord> sorted(std::vector<CachedRecord> list) {
        std::sort(list.begin(), list.end(),
                  [](const auto& a, const auto& b) { return a.name < b.name; });
        return list;
    }
};

TEST_F(Cache, KeepsRecordsByFolderAndName) {
    const std::vector<CachedRecord> odd{{std::string("\xFF\0\n'", 4), INT64_MAX, {INT64_MIN}, ""},
                                        {"", 0, {}, std::string(100'000, '\0')}};
    {
        SqliteMetaCache cache(file);
        cache.store("/a", records(50));
        cache.store("/a", records(10, "newer"));
        cache.store("/a/b", records(1));
        cache.store("/\xFF", odd);
        cache.remove("/a", std::vector<std::string>{"n100", "unknown"});
        cache.remove("/unknown", std::vector<std::string>{"n100"});
        cache.setNote("/a", "before");
        cache.setNote("/a", "/media/card");
    }
    SqliteMetaCache cache(file);
    const auto a = sorted(cache.load("/a"));
    ASSERT_EQ(a.size(), 49u);
    EXPECT_EQ(a[0], (CachedRecord{"n101", 1, {-1}, "newer"}));
    EXPECT_EQ(a[48], (CachedRecord{"n149", 49, {-49}, "r"}));
    EXPECT_EQ(cache.load("/a/b"), records(1));
    EXPECT_EQ(cache.load("/\xFF"), sorted(odd));
    EXPECT_TRUE(cache.load("/c").empty());
    EXPECT_EQ(cache.note("/a"), "/media/card");
    EXPECT_EQ(cache.note("/c"), "");
}

TEST_F(Cache, DamagedAndForeignFilesAreThrownAway) {
    std::mt19937 random(3);
    std::string noise(20'000, '\0');
    for (char& c : noise)
        c = char(random());
    {
        SqliteConnection foreign((folder / "foreign").string());
        foreign.run("CREATE TABLE recipes(cake TEXT); INSERT INTO recipes VALUES('x');");
        SqliteMetaCache(folder / "newer").store("/a", records(1));
        SqliteConnection newer((folder / "newer").string());
        newer.run("PRAGMA user_version = 99");
    }
    for (const std::string& content : {noise, std::string("text"), readFile(folder / "foreign"),
                                       readFile(folder / "newer"), std::string()}) {
        writeFile(file, content);
        SqliteMetaCache cache(file);
        EXPECT_TRUE(cache.load("/a").empty());
        cache.store("/a", records(3));
        EXPECT_EQ(cache.load("/a"), records(3));
        EXPECT_EQ(SqliteMetaCache(file).load("/a"), records(3));
    }
    // Bytes in the middle of a sound file.
    for (int round = 0; round < 20; ++round) {
        SqliteMetaCache(file).store("/a", records(400, std::string(200, 'x')));
        std::string bytes = readFile(file);
        for (int i = 0; i < 2000; ++i)
            bytes[100 + random() % (bytes.size() - 100)] = char(random());
        writeFile(file, bytes);
        SqliteMetaCache cache(file);
        cache.load("/a");
        cache.store("/b", records(400));
        cache.load("/a");
        cache.store("/b", records(400));
        EXPECT_EQ(sorted(cache.load("/b")), records(400)) << round;
    }
}

TEST_F(Cache, PlacesThatCannotHoldItLeaveItEmpty) {
    writeFile(folder / "file", "");
    for (const auto& place : {folder / "file/meta.sqlite", std::filesystem::path("/proc/x/y"),
                              std::filesystem::path("/dev/null/x")}) {
        SqliteMetaCache cache(place);
        cache.store("/a", records(1));
        EXPECT_TRUE(cache.load("/a").empty());
    }
    std::filesystem::create_directories(folder / "taken");
    SqliteMetaCache cache(folder / "taken");
    cache.store("/a", records(1));
    cache.load("/a");
}

TEST_F(Cache, ThreadsAndProgramsShareOneFile) {
    const auto write = [&](int who) {
        SqliteMetaCache cache(file);
        std::vector<std::thread> threads;
        for (int thread = 0; thread < 2; ++thread) {
            threads.emplace_back([&, thread] {
                for (int i = 0; i < 25; ++i) {
                    const std::string own = "/" + std::to_string(who * 2 + thread);
                    cache.store(own, records(i + 1));
                    cache.load("/0");
                }
            });
        }
        for (std::thread& thread : threads)
            thread.join();
    };
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        write(1);
        _exit(0);
    }
    write(0);
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    SqliteMetaCache cache(file);
    for (const char* own : {"/0", "/1", "/2", "/3"})
        EXPECT_EQ(sorted(cache.load(own)), records(25)) << own;
}

} // namespace
} // namespace kelvaro
