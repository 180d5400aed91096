// The export command as people and scripts use it: what it writes, what it says, how it is shared
// among machines, and how it ends when it is interrupted or killed.
#include "cli/CliRunner.h"

#include <nlohmann/json.hpp>

#include <csignal>
#include <gmock/gmock.h>
#include <pty.h>

namespace kelvaro {
namespace {

using namespace test;
using testing::HasSubstr;

class ExportCommand : public testing::Test {
protected:
    // Copies of one small sample, called 0.jpg, 1.jpg and so on.
    void photos(int count, const std::string& extension = ".jpg") {
        fs::create_directories(in);
        for (int i = 0; i < count; ++i)
            fs::copy_file(sample(extension), in / (std::to_string(i) + extension));
    }
    Outcome exported(std::vector<std::string> options) {
        options.insert(options.begin(), {"export", in.string(), "--to", out.string()});
        return cli(std::move(options));
    }
    std::set<std::string> written() { return namesIn(out); }
    static std::vector<nlohmann::json> lines(const std::string& text) {
        std::vector<nlohmann::json> objects;
        std::istringstream in(text);
        for (std::string line; std::getline(in, line);)
            objects.push_back(nlohmann::json::parse(line));
        return objects;
    }

    TemporaryFolder folder;
    const fs::path in = folder / "in", out = folder / "out";
};

TEST_F(ExportCommand, TellsOfEachPhotoAndLeavesTheOriginals) {
    photos(3);
    writeFile(in / "1.jpg", contentOf(in / "1.jpg").substr(0, 300));
    ASSERT_EQ(cli({"recipe", (in / "0.jpg").string(), "--set", "exposure=1"}).code, 0);
    const auto before = snapshot(in);
    const Outcome outcome = exported({"--json", "--long-edge", "256", "--border", "--stamp"});
    EXPECT_EQ(outcome.code, 1);
    EXPECT_THAT(outcome.err, HasSubstr("“1.jpg”: The file couldn't be read."));
    const auto objects = lines(outcome.out);
    ASSERT_EQ(objects.size(), 3u);
    for (const auto& object : objects) {
        const bool isBad = object["photo"] == (in / "1.jpg").string();
        EXPECT_EQ(object["status"], isBad ? "failed" : "exported");
        if (isBad) continue;
        EXPECT_LE(object["width"], 256);
        EXPECT_EQ(object["bytes"], fs::file_size(object["file"].get<std::string>()));
    }
    EXPECT_THAT(written(), testing::ElementsAre("0.jpg", "2.jpg"));
    EXPECT_NE(contentOf(out / "0.jpg"), contentOf(out / "2.jpg")); // the recipe was applied
    EXPECT_EQ(snapshot(in), before);
}

TEST_F(ExportCommand, NumbersOrReplacesButNeverThePhotosThemselves) {
    photos(1);
    EXPECT_EQ(exported({}).out, "1 photo exported\n");
    exported({});
    exported({"--replace"});
    EXPECT_THAT(written(), testing::ElementsAre("0 (2).jpg", "0.jpg"));
    const auto before = snapshot(in);
    EXPECT_EQ(cli({"export", in.string(), "--to", in.string(), "--replace"}).code, 0);
    EXPECT_EQ(contentOf(in / "0.jpg"), before.at("0.jpg"));
    EXPECT_TRUE(fs::exists(in / "0 (2).jpg"));
}

TEST_F(ExportCommand, SharesShardsWithoutGapsOrOverlaps) {
    photos(5);
    fs::copy_file(sample(".png"), in / "0.png"); // wants the name of 0.jpg's file
    std::size_t total = 0;
    for (const char* shard : {"1/3", "2/3", "3/3"}) {
        const Outcome outcome = exported({"--json", "--long-edge", "256", "--shard", shard});
        EXPECT_EQ(outcome.code, 0) << outcome.err;
        total += lines(outcome.out).size();
    }
    EXPECT_EQ(total, 6u);
    EXPECT_EQ(written(),
              (std::set<std::string>{"0.jpg", "0 (2).jpg", "1.jpg", "2.jpg", "3.jpg", "4.jpg"}));
    for (const char* wrong : {"0/3", "4/3", "1", "a/b", "1/0"})
        EXPECT_EQ(exported({"--shard", wrong}).code, 2) << wrong;
}

// A run of the program that can be signalled, on a terminal of its own.
class OnTerminal {
public:
    explicit OnTerminal(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), KELVARO_CLI);
        std::vector<char*> argv;
        for (std::string& argument : arguments)
            argv.push_back(argument.data());
        argv.push_back(nullptr);
        pid_ = ::forkpty(&terminal_, nullptr, nullptr, nullptr);
        if (pid_ == 0) {
            ::execv(argv[0], argv.data());
            ::_exit(127);
        }
    }
    ~OnTerminal() { ::close(terminal_); }
    // Reads what appears until it holds `text`; false when the program ends before.
    bool sees(const std::string& text) {
        while (shown.find(text) == std::string::npos) {
            char part[4096];
            const ssize_t count = ::read(terminal_, part, sizeof part);
            if (count <= 0) return false;
            shown.append(part, std::size_t(count));
        }
        return true;
    }
    void signal(int number) const { ::kill(pid_, number); }
    int end() {
        while (sees("\f")) // read to the end, or the program waits for us
            shown.clear();
        int status = 0;
        ::waitpid(pid_, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }

    std::string shown;

private:
    int terminal_ = -1;
    pid_t pid_ = 0;
};

TEST_F(ExportCommand, ShowsItsProgressAndStopsCleanly) {
    photos(150);
    OnTerminal run({"export", in.string(), "--to", out.string(), "--format", "png"});
    ASSERT_TRUE(run.sees(" of 150 photos, ")) << run.shown;
    ASSERT_TRUE(run.sees(" a minute, ")) << run.shown;
    ASSERT_TRUE(run.sees(" left")) << run.shown;
    run.signal(SIGINT);
    EXPECT_EQ(run.end(), 130);
    EXPECT_THAT(run.shown, HasSubstr("Stopped after "));
    EXPECT_THAT(run.shown, HasSubstr(" of 150 photos"));
    for (const auto& name : written())
        EXPECT_FALSE(name.starts_with(".")) << name;
}

TEST_F(ExportCommand, IsSweptAfterAKill) {
    photos(150);
    OnTerminal run({"export", in.string(), "--to", out.string(), "--format", "png"});
    ASSERT_TRUE(run.sees(" a minute, ")) << run.shown;
    run.signal(SIGKILL);
    EXPECT_EQ(run.end(), -SIGKILL);
    const Outcome again = cli({"export", (in / "0.jpg").string(), "--to", out.string()});
    EXPECT_EQ(again.code, 0) << again.err;
    for (const auto& name : written())
        EXPECT_FALSE(name.starts_with(".")) << name;
}

TEST_F(ExportCommand, RefusesWrongUse) {
    photos(1);
    for (const std::vector<std::string>& options : {std::vector<std::string>{"--quality", "5"},
                                                    {"--border", "0.5"},
                                                    {"--format", "webp"},
                                                    {"--stamp", "yearMonthDay"},
                                                    {"--long-edge", "100"},
                                                    {"--space", "adobe"}})
        EXPECT_EQ(exported(options).code, 2) << options.front();
    EXPECT_EQ(cli({"export", in.string()}).code, 2); // where to?
    const Outcome gone = cli({"export", (folder / "gone").string(), "--to", out.string()});
    EXPECT_EQ(gone.code, 1);
    EXPECT_THAT(gone.err, HasSubstr("gone"));
    writeFile(folder / "notes.txt", "no photo");
    EXPECT_EQ(cli({"export", (folder / "notes.txt").string(), "--to", out.string()}).code, 1);
}

} // namespace
} // namespace kelvaro
