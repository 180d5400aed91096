// How an export shows that it gets on: a line that renews itself on a terminal, or one JSON object
// for each photo. Main thread.
#pragma once

#include "export/Exporter.h"

#include <string>

namespace kelvaro {

// "12 of 200 photos, 2 failed, 95 a minute, 2 min left"
std::string progressLine(const Exporter::State& state, double seconds);

// One line without its end.
std::string outcomeJson(const std::filesystem::path& photo, const Exporter::PhotoOutcome& outcome);

// The renewing line on standard error; nothing where that is no terminal.
class ProgressLine {
public:
    ProgressLine();
    ~ProgressLine() { clear(); }
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    void show(const std::string& text);
    void clear(); // before anything else is printed

private:
    bool isTerminal_;
    bool isShown_ = false;
};

} // namespace kelvaro
