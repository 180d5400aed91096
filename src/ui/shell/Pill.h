// A short message over the window. A notice goes by itself; work in progress has a bar and a button
// that stops it. Never takes the keyboard by itself.
#pragma once

#include "ui/controls/IconButton.h"

#include <QLabel>
#include <QTimer>
#include <QVariantAnimation>

#include <functional>
#include <optional>

namespace kelvaro {

class Pill final : public QWidget {
public:
    // Where a pill of that size has its upper left corner in the window, while it is shown.
    using Place = std::function<QPoint(QSize pill)>;
    Pill(const Appearance& appearance, const char* objectName, QWidget* window, int heightPx,
         Place place);

    // Replaces what is shown and goes after 2.5 s.
    void showNotice(const QString& text);
    // Stays until `leave`. `share` is 0 … 1; none for work without a known end.
    void showProgress(const QString& text, std::optional<double> share,
                      std::function<void()> stop = nullptr);
    void leave();
    void place(); // anew, when the window has changed around it
    QString text() const { return text_->text(); }
    bool isStaying() const { return isVisible() && !goes_; }

protected:
    void paintEvent(QPaintEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void appear();
    void moveTo(QAbstractAnimation::Direction direction);

    const Appearance& appearance_;
    QWidget* window_;
    int heightPx_;
    Place place_;
    QLabel* text_;
    IconButton* stop_;
    std::optional<double> share_;
    std::function<void()> onStop_;
    QTimer leaving_;
    QVariantAnimation motion_; // 0 away … 1 there
    bool goes_ = true;         // is away or on its way
};

} // namespace kelvaro
