// Sessions that are killed at random moments, beside programs that keep the disk busy: what the
// user had a second before is there again.
#include "editor/JournalRecovery.h"
#include "editor/ScriptedSession.h"
#include "fakes/TemporaryFolder.h"
#include "platform/system/PosixAppendFiles.h"
#include "platform/system/PosixFileSystem.h"
#include "platform/system/SystemClock.h"
#include "recipe/Sidecar.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <random>
#include <spawn.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace kelvaro {
namespace {

constexpr int kills = 200, atATime = 5;

struct Outcome {
    bool isWhole = false;   // what was found is one of the script's states, all of it
    int found = 0;          // its step
    int due = 0;            // the last step that was a second old
    int last = 0;           // the last step of all
    double lostSeconds = 0; // between what was found and the end
};

std::string readAll(int descriptor) {
    std::string text;
    std::array<char, 4096> part{};
    for (ssize_t got; (got = ::read(descriptor, part.data(), part.size())) > 0;)
        text.append(part.data(), std::size_t(got));
    return text;
}

Outcome killedAfter(double seconds) {
    TemporaryFolder folder;
    const auto photo = folder / "photos/a.jpg", support = folder / "support";
    writeFile(photo, "pixels");
    int ends[2];
    EXPECT_EQ(::pipe2(ends, O_CLOEXEC), 0);
    ::fcntl(ends[1], F_SETPIPE_SZ, 1 << 20); // so that nobody has to read meanwhile
    std::string program = KELVARO_SCRIPTED_SESSION, first = photo.string(),
                second = support.string();
    char* arguments[] = {program.data(), first.data(), second.data(), nullptr};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    pid_t child = 0;
    EXPECT_EQ(::posix_spawn(&child, program.c_str(), &actions, nullptr, arguments, environ), 0);
    posix_spawn_file_actions_destroy(&actions);
    ::close(ends[1]);
    std::string lines(1, ' ');
    EXPECT_EQ(::read(ends[0], lines.data(), 1), 1);                      // it has begun to edit
    std::this_thread::sleep_for(std::chrono::duration<double>(seconds)); // its life
    const double killed = SystemClock().monotonicSeconds();
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
    lines += readAll(ends[0]);
    ::close(ends[0]);

    Outcome outcome;
    std::vector<double> times{killed};
    for (std::size_t at = 0; at < lines.size();) {
        int step = 0;
        double time = 0;
        const std::size_t end = lines.find('\n', at);
        if (end == std::string::npos || std::sscanf(&lines[at], "%d %lf", &step, &time) != 2) break;
        times.push_back(time);
        outcome.last = step;
        if (time <= killed - 1) outcome.due = step;
        at = end + 1;
    }
    PosixFileSystem files;
    PosixAppendFiles appendFiles;
    SeededRandom random;
    recoverSessions(files, appendFiles, random, support);
    Sidecar sidecar(files, random);
    const auto stored = sidecar.loadPhoto(photo);
    const Adjustments edit = stored && *stored ? (*stored)->adjustments : Adjustments();
    outcome.found = test::scriptedStep(edit);
    outcome.isWhole = edit == test::scriptedEdit(outcome.found);
    if (outcome.found < outcome.last) {
        outcome.lostSeconds = killed - times[std::size_t(outcome.found) + 1];
    }
    return outcome;
}

// Writes and flushes without end.
class BusyDisk {
public:
    BusyDisk() {
        for (int w = 0; w < 2; ++w)
            workers_.emplace_back([this, w] { work(folder_ / ("load" + std::to_string(w))); });
    }
    ~BusyDisk() {
        ending_ = true;
        for (std::thread& worker : workers_)
            worker.join();
    }

private:
    void work(const std::filesystem::path& path) const {
        const std::vector<char> block(4 << 20, 'x');
        while (!ending_) {
            const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
            for (int part = 0; part < 8 && !ending_; ++part) {
                if (::write(file, block.data(), block.size()) < 0 || ::fsync(file) != 0) break;
            }
            ::close(file);
        }
    }
    TemporaryFolder folder_;
    std::atomic<bool> ending_{false};
    std::vector<std::thread> workers_;
};

TEST(KilledSession, LosesLessThanASecond) {
    const BusyDisk busy;
    std::vector<Outcome> outcomes(kills);
    std::atomic<int> next{0};
    std::vector<std::thread> workers;
    const unsigned seed = std::random_device{}();
    std::printf("seed %u\n", seed);
    for (int w = 0; w < atATime; ++w) {
        workers.emplace_back([&] {
            for (int i; (i = next++) < kills;) {
                std::mt19937 random(seed + unsigned(i));
                outcomes[std::size_t(i)] =
                    killedAfter(std::uniform_real_distribution(0.05, 3.0)(random));
            }
        });
    }
    for (std::thread& worker : workers)
        worker.join();
    int whole = 0, inTime = 0, tested = 0;
    double worst = 0, sum = 0;
    for (const Outcome& o : outcomes) {
        whole += o.isWhole;
        inTime += o.found >= o.due;
        tested += o.due > 0;
        worst = std::max(worst, o.lostSeconds);
        sum += o.lostSeconds;
        EXPECT_TRUE(o.isWhole) << "step " << o.found;
        EXPECT_GE(o.found, o.due) << "of " << o.last;
        EXPECT_LE(o.found, o.last + 1);
    }
    std::printf("killed %d, whole %d, complete to a second before %d (of which %d were older than "
                "that)\nlost on average %.3f s, at most %.3f s\n",
                kills, whole, inTime, tested, sum / kills, worst);
    EXPECT_GT(tested, kills / 4); // else nothing was tested
}

} // namespace
} // namespace kelvaro
