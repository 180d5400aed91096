// The list of scopes and folders at the window's left edge. Takes folders that are dropped on it.
#pragma once

#include "ui/library/SidebarModel.h"
#include "ui/theme/Appearance.h"

#include <QListView>

#include <filesystem>
#include <functional>

namespace kelvaro {

class Sidebar final : public QListView {
public:
    explicit Sidebar(const Appearance& appearance, QWidget* parent = nullptr);

    void show(const SidebarState& state);
    using QWidget::show;
    const SidebarModel& rows() const { return *model_; }
    QSize sizeHint() const override;

    std::function<void(const Scope&)> onScopeChosen;
    std::function<void()> onAddFolder;
    std::function<void(const std::filesystem::path&)> onFolderDropped;
    std::function<void(const SidebarFolder&)> onRemoveFolder, onShowFolder, onRescanFolder;

    // Something is dragged that could be dropped here.
    void showDropping(bool dropping);

protected:
    void contextMenuEvent(QContextMenuEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void choose(const QModelIndex& index);

    const Appearance& appearance_;
    SidebarModel* model_;
    bool showing_ = false; // a state is being shown: nothing has been chosen
    bool dropping_ = false;
};

} // namespace kelvaro
