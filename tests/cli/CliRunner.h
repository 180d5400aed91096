// Runs the real command-line program in a process of its own and tells how it ended and what it
// said.
#pragma once

#include "fakes/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

extern char** environ;

namespace kelvaro::test {

namespace fs = std::filesystem;

inline std::string contentOf(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

struct Outcome {
    int code = -1; // exit code; minus the signal when one ended the process
    std::string out, err;
};

inline Outcome run(const char* program, std::vector<std::string> arguments) {
    TemporaryFolder folder;
    const std::string out = (folder.path() / "out").string();
    const std::string err = (folder.path() / "err").string();
    arguments.insert(arguments.begin(), program);
    std::vector<char*> argv;
    for (std::string& argument : arguments)
        argv.push_back(argument.data());
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 1, out.c_str(), O_WRONLY | O_CREAT, 0600);
    posix_spawn_file_actions_addopen(&actions, 2, err.c_str(), O_WRONLY | O_CREAT, 0600);
    pid_t pid = 0;
    Outcome outcome;
    const int spawned = posix_spawn(&pid, program, &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    EXPECT_EQ(spawned, 0) << program;
    int status = 0;
    if (spawned == 0 && waitpid(pid, &status, 0) == pid)
        outcome.code = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    outcome.out = contentOf(out);
    outcome.err = contentOf(err);
    return outcome;
}

inline Outcome cli(std::vector<std::string> arguments) {
    return run(KELVARO_CLI, std::move(arguments));
}

// Everything below a folder, by path: bytes of files, nothing for folders.
inline std::map<std::string, std::string> snapshot(const fs::path& folder) {
    std::map<std::string, std::string> files;
    for (const auto& entry : fs::recursive_directory_iterator(folder))
        files[fs::relative(entry.path(), folder).string()] =
            entry.is_regular_file() ? contentOf(entry.path()) : "";
    return files;
}

// Sample photos of every kind, drawn once for the whole program.
inline const fs::path& samples() {
    static const TemporaryFolder folder;
    static const fs::path path = [] {
        const fs::path target = folder.path() / "samples";
        const Outcome made = run(KELVARO_MAKE_SAMPLES, {target.string(), "--count", "10"});
        EXPECT_EQ(made.code, 0) << made.err;
        return target;
    }();
    return path;
}

// The first sample with that extension.
inline fs::path sample(const std::string& extension) {
    fs::path first;
    for (const auto& entry : fs::directory_iterator(samples()))
        if (entry.path().extension() == extension && (first.empty() || entry.path() < first))
            first = entry.path();
    EXPECT_FALSE(first.empty()) << "no sample " << extension;
    return first;
}

// A private copy of a sample, for tests that write sidecars.
inline fs::path copyOfSample(const std::string& extension, const fs::path& folder) {
    const fs::path from = sample(extension), to = folder / from.filename();
    fs::copy_file(from, to);
    return to;
}

// One clear sentence: one line of standard error that names what it is about.
inline void expectOneSentence(const Outcome& outcome, const std::string& about) {
    EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
    EXPECT_TRUE(outcome.err.starts_with("kelvaro-cli: ")) << outcome.err;
    EXPECT_NE(outcome.err.find(about), std::string::npos) << outcome.err;
}

} // namespace kelvaro::test
