// How an export went: a card in the lower right corner of the window with the count, what failed
// and the way to the files. Takes neither the keyboard nor the window, because somebody may be at
// work when an export ends. Main thread.
#pragma once

#include "export/Exporter.h"
#include "platform/Desktop.h"
#include "ui/theme/Appearance.h"

#include <QWidget>

namespace kelvaro {

class DonePanel final : public QWidget {
public:
    // Shows the result of the run that `state` tells of until it is closed; deletes itself then.
    // `files` are what the file manager selects.
    DonePanel(const Appearance& appearance, const Exporter::State& state,
              std::vector<std::filesystem::path> files, Desktop& desktop, QWidget* window);

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void addTexts(const Exporter::State& state);
    void addButtons(const Exporter::State& state, std::vector<std::filesystem::path> files,
                    Desktop& desktop);
    void place();

    const Appearance& appearance_;
    QWidget* window_;
};

} // namespace kelvaro
