#include "ui/profile/MarkAccess.h"

namespace kelvaro {
namespace {

class OneMark final : public ItemAccess, public QAccessibleActionInterface {
public:
    OneMark(MarkView* view, int index) : ItemAccess(view, index), view_(view) {}

    bool isValid() const override {
        return widget() && index() < static_cast<int>(view_->marks().size());
    }
    QString text(QAccessible::Text kind) const override {
        return isValid() && kind == QAccessible::Name ? view_->textOf(index()) : QString();
    }
    QRect rect() const override {
        if (!isValid()) return {};
        const QRect place = view_->place(index()).toAlignedRect();
        return {view_->mapToGlobal(place.topLeft()), place.size()};
    }
    QAccessible::State state() const override {
        QAccessible::State state;
        if (!isValid()) return state;
        state.focusable = true;
        state.focused = view_->hasFocus() && view_->lit() == index();
        state.disabled = !canBeChosen();
        return state;
    }
    void* interface_cast(QAccessible::InterfaceType type) override {
        return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface*>(this)
                                                    : nullptr;
    }
    QStringList actionNames() const override {
        return canBeChosen() ? QStringList{pressAction()} : QStringList();
    }
    void doAction(const QString& action) override {
        if (action == pressAction() && canBeChosen()) view_->onChosen(index());
    }
    QStringList keyBindingsForAction(const QString&) const override { return {}; }

private:
    bool canBeChosen() const {
        return isValid() && view_->onChosen &&
               view_->marks()[static_cast<std::size_t>(index())].count > 0;
    }

    MarkView* const view_;
};

QAccessibleInterface* markInterface(const QString&, QObject* object) {
    auto* view = dynamic_cast<MarkView*>(object);
    return view ? new MarkAccess(view) : nullptr;
}

} // namespace

MarkAccess::MarkAccess(MarkView* view) : ItemsAccess(view, QAccessible::Chart), view_(view) {}

void MarkAccess::install() {
    QAccessible::removeFactory(markInterface);
    QAccessible::installFactory(markInterface);
}

int MarkAccess::childCount() const {
    return static_cast<int>(view_->marks().size());
}

QAccessibleInterface* MarkAccess::childAt(int x, int y) const {
    return child(view_->markAt(view_->mapFromGlobal(QPoint(x, y))));
}

QAccessibleInterface* MarkAccess::focusChild() const {
    return view_->hasFocus() ? child(view_->lit()) : nullptr;
}

ItemAccess* MarkAccess::makeItem(int index) const {
    return new OneMark(view_, index);
}

} // namespace kelvaro
