// The list of presets: hovering shows one on the canvas, a click applies it; below it the field
// that keeps the present adjustments under a name. Main thread.
#pragma once

#include "editor/Preset.h"
#include "ui/controls/Overlay.h"

#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>

namespace kelvaro {

class PresetPopover final : public Overlay {
public:
    PresetPopover(const Appearance& appearance, QWidget* window, QWidget* anchor);

    void begin(PresetList presets);
    void showPresets(PresetList presets);
    QListWidget* list() const { return list_; }

    std::function<void(const Preset&)> onApply, onRemove;
    std::function<void(const Preset*)> onHover; // null: none
    std::function<void(const std::string& name)> onSave;
    std::function<void(const Preset&, const std::string& name)> onRename;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    const Preset* presetAt(int row) const;
    void openMenu(const QPoint& at);

    PresetList presets_;
    QListWidget* list_;
    QLabel* note_;
    QLineEdit* name_;
    bool showing_ = false;
};

} // namespace kelvaro
