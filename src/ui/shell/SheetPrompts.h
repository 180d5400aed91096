// Prompts as sheets over the window, and the system's folder chooser.
#pragma once

#include "ui/shell/Prompts.h"
#include "ui/theme/Appearance.h"

#include <QWidget>

namespace kelvaro {

class SheetPrompts final : public Prompts {
public:
    SheetPrompts(const Appearance& appearance, QWidget* window)
        : appearance_(appearance), window_(window) {}

    void ask(const Question& question, Chosen chosen) override;
    void chooseFolder(const std::string& message, const std::filesystem::path& start,
                      Folder chosen) override;

private:
    const Appearance& appearance_;
    QWidget* window_;
};

} // namespace kelvaro
