// Two programs that write into one folder at once, and one that is killed: real processes.
#include "fakes/SeededRandom.h"
#include "fakes/TemporaryFolder.h"
#include "library/FavoritesFile.h"
#include "library/UnsavedJournal.h"
#include "platform/system/PosixFileSystem.h"
#include "recipe/Sidecar.h"

#include <csignal>
#include <cstdlib>
#include <functional>
#include <gtest/gtest.h>
#include <random>
#include <sys/wait.h>
#include <unistd.h>

namespace kelvaro {
namespace {

// KELVARO_RANDOM_WRITES asks for more than the few that every test run makes.
int writeCount() {
    const char* asked = std::getenv("KELVARO_RANDOM_WRITES");
    return asked ? std::atoi(asked) : 300;
}

pid_t inChild(const std::function<bool()>& work) {
    const pid_t child = ::fork();
    if (child == 0) ::_exit(work() ? 0 : 1);
    return child;
}

bool succeeded(pid_t child) {
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

std::string nameOf(int program, int number) {
    return std::to_string(program) + "-" + std::to_string(number) + ".jpg";
}

// Random changes of photos that are one program's own; the last change of each must be what is
// left at the end, whatever the other program does meanwhile.
struct Writer {
    const std::filesystem::path folder;
    const int program;
    static constexpr int photos = 40;

    // What is left after the same random changes in memory.
    std::pair<FavoritesFile::Names, std::map<std::string, double>> expected(int writes) {
        FavoritesFile::Names names;
        std::map<std::string, double> exposures;
        change(writes, [&](const std::string& name, bool isFavorite, double exposure) {
            if (exposure == 0)
                isFavorite ? static_cast<void>(names.insert(name))
                           : static_cast<void>(names.erase(name));
            else
                exposures[name] = exposure;
            return true;
        });
        return {names, exposures};
    }
    bool run(int writes) {
        PosixFileSystem files;
        SeededRandom random;
        return change(writes, [&](const std::string& name, bool isFavorite, double exposure) {
            if (exposure == 0)
                return FavoritesFile(files)
                    .change(folder.string(), {{name, isFavorite}})
                    .has_value();
            return Sidecar(files, random)
                .save(folder / name, Adjustments{.exposure = exposure}, 1e9)
                .has_value();
        });
    }
    bool change(int writes,
                const std::function<bool(const std::string&, bool, double)>& write) const {
        std::mt19937 random(static_cast<unsigned>(program));
        for (int i = 0; i < writes; ++i) {
            const std::string name = nameOf(program, static_cast<int>(random() % photos));
            const bool isFavorite = random() % 3 != 0;
            const double exposure = random() % 2 ? 0 : 0.25 * double(1 + random() % 8);
            if (!write(name, isFavorite, exposure)) return false;
        }
        return true;
    }
};

TEST(TwoProgramsTest, NoChangeOfEitherIsLost) {
    TemporaryFolder folder;
    const int writes = writeCount() / 2;
    Writer first{folder.path(), 1}, second{folder.path(), 2};
    const pid_t child = inChild([&] { return first.run(writes); });
    EXPECT_TRUE(second.run(writes));
    EXPECT_TRUE(succeeded(child));
    PosixFileSystem files;
    SeededRandom random;
    auto [names, exposures] = first.expected(writes);
    auto [moreNames, moreExposures] = second.expected(writes);
    names.merge(moreNames);
    exposures.merge(moreExposures);
    EXPECT_EQ(*FavoritesFile(files).read(folder.path().string()), names);
    const auto edits = Sidecar(files, random).load(folder.path());
    ASSERT_TRUE(edits);
    EXPECT_TRUE(edits->failures.empty());
    std::map<std::string, double> found;
    for (const auto& [name, edit] : edits->edits)
        found[name] = edit.adjustments.exposure;
    EXPECT_EQ(found, exposures);
    std::printf("%d random writes by two programs: %zu favorites and %zu edits as expected\n",
                2 * writes, names.size(), exposures.size());
}

// After a kill at any moment both files hold a whole state, and none later than asked for is lost:
// each write that was reported through the pipe is there.
TEST(TwoProgramsTest, AKilledProgramLeavesWholeFiles) {
    const int kills = std::max(10, writeCount() / 100);
    PosixFileSystem files;
    SeededRandom random;
    TemporaryFolder folder;
    UnsavedJournal journal(files, random, folder / "support");
    std::mt19937 dice(7);
    int reported = 0;
    for (int kill = 0; kill < kills; ++kill) {
        int ends[2];
        ASSERT_EQ(::pipe(ends), 0);
        const pid_t child = inChild([&] {
            for (int i = 0;; ++i) {
                const std::string name = nameOf(kill, i);
                const bool kept =
                    FavoritesFile(files).change(folder.path().string(), {{name, true}}) &&
                    Sidecar(files, random).save(folder / name, {.exposure = 1}, 1e9) &&
                    journal.change({{}, {{"/away/" + name, true}}}, {});
                if (!kept || ::write(ends[1], &i, sizeof i) != sizeof i) return false;
            }
        });
        ::close(ends[1]);
        const int limit = static_cast<int>(dice() % 8);
        int last = -1;
        while (last < limit && ::read(ends[0], &last, sizeof last) == sizeof last) {
        }
        ::usleep(::useconds_t(dice() % 3000)); // somewhere inside the next write
        ::kill(child, SIGKILL);
        succeeded(child);
        while (::read(ends[0], &last, sizeof last) == sizeof last) {
        }
        ::close(ends[0]);
        const auto names = FavoritesFile(files).read(folder.path().string());
        const auto edits = Sidecar(files, random).load(folder.path());
        const auto unsaved = journal.read();
        ASSERT_TRUE(names && edits && unsaved);
        ASSERT_TRUE(edits->failures.empty());
        for (int i = 0; i <= last; ++i) {
            const std::string name = nameOf(kill, i);
            ASSERT_TRUE(names->contains(name) && edits->edits.contains(name) &&
                        unsaved->favorites.contains("/away/" + name));
        }
        reported += last + 1;
    }
    std::printf("%d kills: all %d reported writes are there, every file is whole\n", kills,
                reported);
}

} // namespace
} // namespace kelvaro
