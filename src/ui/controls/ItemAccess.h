// What people who hear the window learn of things that one widget draws itself: each is an item of
// the widget, with a name, a place and a state of its own. Main thread.
#pragma once

#include <QAccessibleWidget>
#include <QPointer>
#include <QWidget>

#include <unordered_map>

namespace kelvaro {

// One thing, by its number. Those who derive tell its text, place and state.
class ItemAccess : public QAccessibleInterface {
public:
    ItemAccess(QWidget* widget, int index) : widget_(widget), index_(index) {}

    int index() const { return index_; }
    QObject* object() const override { return nullptr; }
    QWindow* window() const override;
    QAccessibleInterface* parent() const override;
    QAccessibleInterface* child(int) const override { return nullptr; }
    QAccessibleInterface* childAt(int, int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }
    QAccessible::Role role() const override { return QAccessible::ListItem; }
    void setText(QAccessible::Text, const QString&) override {}

protected:
    QWidget* widget() const { return widget_; } // null once it has ended

private:
    QPointer<QWidget> widget_;
    int index_;
};

// A widget with such items, which are made when they are asked for.
class ItemsAccess : public QAccessibleWidget {
public:
    using QAccessibleWidget::QAccessibleWidget;
    ~ItemsAccess() override;

    QAccessibleInterface* child(int index) const override;
    int indexOfChild(const QAccessibleInterface* child) const override;

protected:
    virtual ItemAccess* makeItem(int index) const = 0; // handed over

private:
    mutable std::unordered_map<int, QAccessible::Id> made_;
};

} // namespace kelvaro
