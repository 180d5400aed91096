// One chart of the profile as bars: upright ones with a short axis, or, for names of cameras and
// lenses, lines across with the name above. The tallest bar wears the accent.
#pragma once

#include "profile/ProfileCharts.h"
#include "ui/profile/MarkView.h"

namespace kelvaro {

class BarChart final : public MarkView {
public:
    explicit BarChart(const Appearance& appearance, QWidget* parent = nullptr);

    void show(const Chart& chart);
    int heightPx() const; // that it wants
    QRectF place(int mark) const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QRectF barRect(int mark) const;
    QColor colourOf(int mark) const;
    void paintUpright(QPainter& painter) const;
    void paintTicks(QPainter& painter) const;
    void paintAcross(QPainter& painter) const;

    bool isAcross_ = false;
    qint64 most_ = 0;
    std::vector<QString> ticks_;
};

} // namespace kelvaro
