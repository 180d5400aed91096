// The rows of the sidebar as a list model: the three scopes, then the folders as they were added,
// under a heading each, and the row that adds one. Headings cannot be chosen.
#pragma once

#include "library/LibraryViews.h"
#include "ui/theme/Icons.h"

#include <QAbstractListModel>

namespace kelvaro {

class SidebarModel final : public QAbstractListModel {
public:
    enum class Row { heading, scope, folder, addFolder };
    enum Role { kindRole = Qt::UserRole, countRole, iconRole, dimRole, busyRole };

    explicit SidebarModel(QObject* parent = nullptr) : QAbstractListModel(parent) {}

    void show(const SidebarState& state);
    const SidebarState& state() const { return state_; }

    // The scope that the row stands for; none for headings and the last row.
    std::optional<Scope> scopeOf(const QModelIndex& index) const;
    const SidebarFolder* folderOf(const QModelIndex& index) const;
    QModelIndex indexOf(const Scope& scope) const;

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

private:
    static constexpr int firstFolder = 5;

    Row kindOf(int row) const;
    QString titleOf(int row) const;
    IconName iconOf(int row) const;
    QVariant countOf(int row) const;

    SidebarState state_;
};

} // namespace kelvaro
