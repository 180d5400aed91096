#include "ui/library/SidebarModel.h"

#include "ui/Texts.h"

#include <utility>

namespace kelvaro {

// Row by row: while folders are looked through, most of many rows stay as they are.
void SidebarModel::show(const SidebarState& state) {
    if (state.folders.size() != state_.folders.size()) {
        beginResetModel();
        state_ = state;
        return endResetModel();
    }
    const SidebarState old = std::exchange(state_, state);
    const auto tell = [this](int row) { Q_EMIT dataChanged(index(row), index(row)); };
    for (int row = 1; row < firstFolder - 1; ++row)
        tell(row);
    for (std::size_t at = 0; at < old.folders.size(); ++at) {
        if (old.folders[at] != state_.folders[at]) tell(firstFolder + static_cast<int>(at));
    }
}

int SidebarModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : firstFolder + static_cast<int>(state_.folders.size()) + 1;
}

SidebarModel::Row SidebarModel::kindOf(int row) const {
    if (row == 0 || row == firstFolder - 1) return Row::heading;
    if (row < firstFolder) return Row::scope;
    return row == rowCount() - 1 ? Row::addFolder : Row::folder;
}

const SidebarFolder* SidebarModel::folderOf(const QModelIndex& index) const {
    if (!index.isValid() || kindOf(index.row()) != Row::folder) return nullptr;
    return &state_.folders[static_cast<size_t>(index.row() - firstFolder)];
}

std::optional<Scope> SidebarModel::scopeOf(const QModelIndex& index) const {
    if (!index.isValid()) return std::nullopt;
    if (const SidebarFolder* folder = folderOf(index))
        return Scope{Scope::Kind::folder, folder->folder};
    switch (index.row()) {
    case 1:
        return Scope{Scope::Kind::all, {}};
    case 2:
        return Scope{Scope::Kind::edited, {}};
    case 3:
        return Scope{Scope::Kind::favorites, {}};
    default:
        return std::nullopt;
    }
}

QModelIndex SidebarModel::indexOf(const Scope& scope) const {
    for (int row = 0; row < rowCount(); ++row) {
        if (scopeOf(index(row)) == scope) return index(row);
    }
    return {};
}

QString SidebarModel::titleOf(int row) const {
    switch (row) {
    case 0:
        return words("Library");
    case 1:
        return words("All Photos");
    case 2:
        return words("Edited");
    case 3:
        return words("Favorites");
    case 4:
        return words("Folders");
    default:
        break;
    }
    const SidebarFolder* folder = folderOf(index(row));
    return folder ? fromUtf8(folder->name) : words("Add Folder…");
}

IconName SidebarModel::iconOf(int row) const {
    switch (row) {
    case 1:
        return IconName::photos;
    case 2:
        return IconName::edited;
    case 3:
        return IconName::favorite;
    default:
        break;
    }
    const SidebarFolder* folder = folderOf(index(row));
    if (!folder) return IconName::add;
    return folder->isMissing ? IconName::driveMissing : IconName::folder;
}

QVariant SidebarModel::countOf(int row) const {
    switch (row) {
    case 1:
        return number(static_cast<qint64>(state_.photoCount));
    case 2:
        return number(static_cast<qint64>(state_.editedCount));
    case 3:
        return number(static_cast<qint64>(state_.favoriteCount));
    default:
        break;
    }
    const SidebarFolder* folder = folderOf(index(row));
    if (!folder || folder->isMissing) return {};
    return number(static_cast<qint64>(folder->photoCount));
}

QVariant SidebarModel::data(const QModelIndex& index, int role) const {
    const SidebarFolder* folder = folderOf(index);
    switch (role) {
    case Qt::DisplayRole:
        return titleOf(index.row());
    case Qt::ToolTipRole:
        if (!folder) return {};
        return folder->isMissing ? words(folder->label) : fromUtf8(folder->folder);
    case Qt::AccessibleTextRole:
        return folder ? words(folder->label)
                      : QString(titleOf(index.row()) + " " + countOf(index.row()).toString());
    case kindRole:
        return static_cast<int>(kindOf(index.row()));
    case countRole:
        return countOf(index.row());
    case iconRole:
        return static_cast<int>(iconOf(index.row()));
    case dimRole:
        return folder && folder->isMissing;
    case busyRole:
        return folder && folder->isIndexing;
    default:
        return {};
    }
}

Qt::ItemFlags SidebarModel::flags(const QModelIndex& index) const {
    if (!index.isValid() || kindOf(index.row()) == Row::heading) return Qt::NoItemFlags;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable;
}

} // namespace kelvaro
