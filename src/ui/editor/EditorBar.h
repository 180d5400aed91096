// The row above the canvas: the way back, the photo's name and place, and the editor's tools. Main
// thread.
#pragma once

#include "ui/controls/IconButton.h"
#include "ui/shell/CommandActions.h"

#include <QLabel>

#include <functional>

namespace kelvaro {

// Which of the tools are on.
struct EditorBarState {
    QString name, place, state; // "IMG_0042.CR3", "3 of 38", "Not saved"
    bool isFavorite = false, isSplit = false, isCropping = false, isMasking = false;
    bool isAssessing = false;
};

class EditorBar final : public QWidget {
public:
    EditorBar(const Appearance& appearance, CommandActions& commands, QWidget* parent = nullptr);

    void show(const EditorBarState& state);
    using QWidget::show;
    IconButton* presetsButton() const { return presets_; }

    std::function<void()> onBack, onSplit, onPresets;
    std::function<void(bool held)> onOriginal;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    IconButton* tool(IconName name, CommandId id, CommandActions& commands, const char* objectName);

    const Appearance& appearance_;
    QLabel *name_, *place_, *saving_;
    IconButton *favorite_, *original_, *split_, *crop_, *masks_, *assessment_, *presets_;
};

} // namespace kelvaro
