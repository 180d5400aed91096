// How an export goes: a pill with progress and the time that is left while it runs, a panel with
// the result and the way to the files when it has ended. Follows the exporter.
#pragma once

#include "export/Exporter.h"
#include "platform/Desktop.h"
#include "ui/export/DonePanel.h"
#include "ui/shell/Pill.h"

#include <QElapsedTimer>
#include <QPointer>

namespace kelvaro {

inline constexpr int statusHeightPx = 30; // of a pill that shows work in progress

class ExportStatus final : public QObject {
public:
    ExportStatus(const Appearance& appearance, Exporter& exporter, Desktop& desktop,
                 QWidget* window, Pill::Place place);

    // A photo of the run was written; they are what the file manager will select.
    void noteFile(const std::filesystem::path& file) { files_.push_back(file); }
    void begin();
    void place() { pill_.place(); }
    bool isShown() const { return pill_.isStaying(); }

private:
    void show();
    void showDone(const Exporter::State& state);

    const Appearance& appearance_;
    Exporter& exporter_;
    Desktop& desktop_;
    QWidget* window_;
    Pill pill_;
    std::vector<std::filesystem::path> files_;
    QElapsedTimer running_;
    QPointer<DonePanel> done_;
    bool wasRunning_ = false;
    Subscription subscription_;
};

// "about 2 minutes left": the time left after `done` of `total` took so many seconds; empty while
// too little is known.
QString timeLeft(std::size_t done, std::size_t total, double seconds);

} // namespace kelvaro
