// Two programs write the same analyses and are killed in the middle, two hundred times: whatever
// they leave is whole or ignored.
#include "develop/AnalysisCache.h"
#include "develop/CachedPhotos.h"
#include "fakes/TemporaryFolder.h"
#include "platform/imaging/SameBits.h"
#include "platform/imaging/TiledRenderer.h"
#include "platform/system/PosixFileSystem.h"

#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <random>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kelvaro {
namespace {

class Writer {
public:
    explicit Writer(const std::filesystem::path& folder) {
        int ends[2];
        if (::pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
        output_ = ends[0];
        posix_spawn_file_actions_t actions;
        ::posix_spawn_file_actions_init(&actions);
        ::posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
        std::string program = KELVARO_ANALYSIS_WRITER, argument = folder.string();
        char* arguments[] = {program.data(), argument.data(), nullptr};
        if (::posix_spawn(&process_, program.c_str(), &actions, nullptr, arguments, environ) != 0)
            throw std::runtime_error("no process");
        ::posix_spawn_file_actions_destroy(&actions);
        ::close(ends[1]);
    }
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;
    ~Writer() {
        ::kill(process_, SIGKILL);
        ::waitpid(process_, nullptr, 0);
        ::close(output_);
    }
    bool begunAnother() {
        char byte;
        return ::read(output_, &byte, 1) == 1;
    }

private:
    pid_t process_ = 0;
    int output_ = -1;
};

TEST(AnalysisKill, WhatAKilledProgramLeavesIsWholeOrIgnored) {
    const TemporaryFolder temporary;
    const std::filesystem::path folder = temporary / "Analyses";
    PosixFileSystem files;
    const auto renderer = makeTiledRenderer(1);
    std::mt19937 random(3);
    int found = 0, absent = 0, unfinished = 0;
    for (int round = 0; round < 200; ++round) {
        {
            Writer first(folder), second(folder);
            for (unsigned writes = 1 + random() % 4; writes > 0; --writes)
                ASSERT_TRUE(first.begunAnother());
            ASSERT_TRUE(second.begunAnother());
            volatile auto turns = unsigned(random() % 400'000); // somewhere within the next write
            while (turns > 0)
                turns = turns - 1;
        }
        AnalysisCache cache(files, folder, *renderer, {});
        for (int number = 0; number < test::kCachedPhotos; ++number) {
            const ImageSource photo = test::cachedPhoto(number);
            cache.recall(photo);
            const ToneMeasurement known = photo.analysis->known();
            const std::string name =
                AnalysisCache::fileName("bitmap\n" + test::cachedUrl(number) + "\n1");
            ASSERT_EQ(known.levels.has_value(), std::filesystem::exists(folder / name));
            ++(known.levels ? found : absent);
            if (!known.levels) continue;
            const ToneMeasurement expected = test::cachedMeasurement(number);
            ASSERT_EQ(known.levels, expected.levels);
            ASSERT_TRUE(test::sameBits(test::drawn(*renderer, known.guide),
                                       test::drawn(*renderer, expected.guide)));
        }
        std::error_code none; // no folder yet
        for (const auto& entry : std::filesystem::directory_iterator(folder, none))
            unfinished += entry.path().filename().string().starts_with('.');
        if (round % 10 == 9) std::filesystem::remove_all(folder); // begin anew, without any
    }
    EXPECT_GT(found, 200);
    std::printf("200 rounds of two killed writers: %d whole analyses, %d absent, none damaged; "
                "%d unfinished files, ignored\n",
                found, absent, unfinished);
}

} // namespace
} // namespace kelvaro
