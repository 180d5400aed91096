// One panel of the inspector: a heading that folds it, with a dot when something in it is changed
// and a reset, and its content below. Main thread.
#pragma once

#include "ui/controls/IconButton.h"

#include <QLabel>
#include <QVBoxLayout>
#include <QVariantAnimation>

#include <functional>

namespace kelvaro {

// The heading: the whole row is the button.
class PanelHeading final : public QAbstractButton {
public:
    PanelHeading(const Appearance& appearance, const QString& title, QWidget* parent);
    void setChanged(bool changed);
    bool isChangedShown() const { return changed_; }
    QSize sizeHint() const override { return {measure::inspectorWidth, 36}; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const Appearance& appearance_;
    bool changed_ = false;
};

class PanelView final : public QWidget {
public:
    // `name` is the object name's stem; `resetTip` explains the reset.
    PanelView(const Appearance& appearance, const QString& name, const QString& title,
              const QString& resetTip, QWidget* parent = nullptr);

    void add(QWidget* content) { column_->addWidget(content); }
    // Beside the reset, in the heading.
    void addTool(QWidget* tool);
    void setChanged(bool changed);
    void setNote(const QString& note); // empty: none
    bool isFolded() const { return !heading_->isChecked(); }
    void setFolded(bool folded);
    PanelHeading* heading() const { return heading_; }
    IconButton* resetButton() const { return reset_; }

    std::function<void()> onReset;
    std::function<void(bool folded)> onFolded;

protected:
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    void placeTools();
    void fold(bool folded);

    const Appearance& appearance_;
    PanelHeading* heading_;
    IconButton* reset_;
    QWidget *tools_, *body_;
    QVBoxLayout* column_;
    QLabel* note_;
    bool changed_ = false;
    QVariantAnimation motion_;
};

} // namespace kelvaro
