// The histogram of the displayed picture, with a mark at each end where pixels are clipped. A click
// shows where. Main thread.
#pragma once

#include "render/Histogram.h"
#include "ui/theme/Appearance.h"

#include <QAbstractButton>

#include <array>

namespace kelvaro {

class HistogramView final : public QAbstractButton {
public:
    explicit HistogramView(const Appearance& appearance, QWidget* parent = nullptr);

    void show(const Histogram& histogram);
    using QWidget::show;
    void clear();
    bool clipsHighlights() const { return histogram_.clippedHighlights > 0; }
    QSize sizeHint() const override { return {measure::inspectorWidth, 112}; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QPolygonF curve(const Histogram::Bins& bins, const QRectF& area, double most) const;

    const Appearance& appearance_;
    Histogram histogram_;
};

} // namespace kelvaro
