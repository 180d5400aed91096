// A short message at the lower edge of the window. A notice goes by itself; work in progress has a
// bar and a button that stops it. Never takes the keyboard by itself.
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
    // Stays `bottomPx` above the lower edge of `window`, in its middle.
    Pill(const Appearance& appearance, const char* objectName, QWidget* window, int bottomPx);

    // Replaces what is shown and goes after 2.5 s.
    void showNotice(const QString& text);
    // Stays until `leave`. `share` is 0 … 1; none for work without a known end.
    void showProgress(const QString& text, std::optional<double> share,
                      std::function<void()> stop = nullptr);
    void leave();
    QString text() const { return text_->text(); }

protected:
    void paintEvent(QPaintEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void place();
    void appear();

    const Appearance& appearance_;
    QWidget* window_;
    int bottomPx_;
    QLabel* text_;
    IconButton* stop_;
    std::optional<double> share_;
    std::function<void()> onStop_;
    QTimer leaving_;
    QVariantAnimation motion_; // 0 away … 1 there
};

} // namespace kelvaro
