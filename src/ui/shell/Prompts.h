// Everything that the window asks the user about in a dialog, behind one interface, so that tests
// answer without one. Answers come back later, on the main thread.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace kelvaro {

// A question or a message. Texts are as stored. The last button is the harmless one: Esc and Return
// choose it.
struct Question {
    std::string name; // for tests: "trash", "quit", …
    std::string title, text;
    std::vector<std::string> buttons;
    bool operator==(const Question&) const = default;
};

class Prompts {
public:
    virtual ~Prompts() = default;
    using Chosen = std::function<void(std::size_t button)>;
    using Folder = std::function<void(std::optional<std::filesystem::path>)>;

    virtual void ask(const Question& question, Chosen chosen) = 0;
    // `start` is the folder that the chooser shows first; empty for the user's own.
    virtual void chooseFolder(const std::string& message, const std::filesystem::path& start,
                              Folder chosen) = 0;
};

} // namespace kelvaro
