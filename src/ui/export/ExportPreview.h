// The first photo of an export as it will come out: with its border and date imprint, on the canvas
// colour.
#pragma once

#include "export/ExportSettings.h"
#include "ui/theme/Appearance.h"

#include <QImage>
#include <QWidget>

#include <chrono>

namespace kelvaro {

class ExportPreview final : public QWidget {
public:
    explicit ExportPreview(const Appearance& appearance, QWidget* parent = nullptr);

    void setPhoto(const QImage& photo);  // null: none yet
    void setFailure(const QString& why); // in the photo's place
    void setDay(std::chrono::year_month_day day);
    void show(const ExportSettings& settings);
    using QWidget::show;
    QSize sizeHint() const override { return {400, 360}; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    bool hasStamp() const;
    QImage stamped(const QImage& photo) const;
    void paintPaper(QPainter& painter, const QRectF& room) const;
    void paintDetail(QPainter& painter, const QRectF& room) const;

    const Appearance& appearance_;
    QImage photo_;
    QString failure_;
    std::chrono::year_month_day day_{};
    ExportSettings settings_;
};

} // namespace kelvaro
