// Answers every question with what the test laid ready, and notes what was asked. A question
// without an answer gets the harmless button.
#pragma once

#include "ui/shell/Prompts.h"

#include <map>

namespace kelvaro {

class ScriptedPrompts final : public Prompts {
public:
    struct Script {
        std::map<std::string, std::size_t> answers; // by the question's name
        std::optional<std::filesystem::path> folder;
        std::vector<Question> asked;
        std::vector<std::string> folderMessages;
    };
    explicit ScriptedPrompts(Script& script) : script_(script) {}

    void ask(const Question& question, Chosen chosen) override {
        script_.asked.push_back(question);
        const auto answer = script_.answers.find(question.name);
        chosen(answer == script_.answers.end() ? question.buttons.size() - 1 : answer->second);
    }
    void chooseFolder(const std::string& message, const std::filesystem::path&,
                      Folder chosen) override {
        script_.folderMessages.push_back(message);
        chosen(script_.folder);
    }

private:
    Script& script_;
};

} // namespace kelvaro
