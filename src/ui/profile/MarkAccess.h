// What people who hear the window learn of a chart or a calendar: its bars or days are items, each
// with its count and share, which can be chosen as with the mouse.
#pragma once

#include "ui/controls/ItemAccess.h"
#include "ui/profile/MarkView.h"

namespace kelvaro {

class MarkAccess final : public ItemsAccess {
public:
    explicit MarkAccess(MarkView* view);

    // Makes Qt ask us for these widgets; may be called often.
    static void install();

    int childCount() const override;
    QAccessibleInterface* childAt(int x, int y) const override;
    QAccessibleInterface* focusChild() const override;

private:
    ItemAccess* makeItem(int index) const override;

    MarkView* view_;
};

} // namespace kelvaro
