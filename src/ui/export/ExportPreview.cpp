#include "ui/export/ExportPreview.h"

#include "export/SegmentDigits.h"
#include "ui/Texts.h"

#include <QPainter>

#include <cmath>

namespace kelvaro {
namespace {

constexpr int air = 16;

QImage imageOf(const Coverage& coverage) {
    QImage image(coverage.width, coverage.height, QImage::Format_ARGB32);
    const auto level = [](double value) { return static_cast<int>(std::lround(value * 255)); };
    for (int y = 0; y < coverage.height; ++y) {
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < coverage.width; ++x) {
            line[x] = qRgba(level(DateStamp::colour[0]), level(DateStamp::colour[1]),
                            level(DateStamp::colour[2]),
                            level(DateStamp::opacity * double(coverage.at(x, y))));
        }
    }
    return image;
}

} // namespace

ExportPreview::ExportPreview(const Appearance& appearance, QWidget* parent)
    : QWidget(parent), appearance_(appearance) {
    setObjectName("exportPreview");
    setAccessibleName(words("Preview"));
}

void ExportPreview::setPhoto(const QImage& photo) {
    photo_ = photo;
    update();
}

void ExportPreview::setDay(std::chrono::year_month_day day) {
    day_ = day;
    update();
}

void ExportPreview::show(const ExportSettings& settings) {
    settings_ = settings;
    update();
}

// The imprint in the place and size that the export gives it, at the preview's size.
QImage ExportPreview::stamped(const QImage& photo) const {
    const std::string text = day_.ok() ? DateStamp::text(settings_.dateStamp, day_) : std::string();
    const auto geometry = DateStamp::geometry({photo.width(), photo.height()});
    if (text.empty() || !geometry) return photo;
    const QImage digits = imageOf(segmentText(text, geometry->digitHeight));
    QImage result = photo.convertToFormat(QImage::Format_RGB32);
    QPainter painter(&result);
    painter.drawImage(QPointF(result.width() - geometry->margin - digits.width(),
                              result.height() - geometry->margin - digits.height()),
                      digits);
    return result;
}

void ExportPreview::paintEvent(QPaintEvent*) {
    const Theme& theme = appearance_.theme();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(theme.canvas);
    painter.drawRoundedRect(rect(), measure::controlRadius, measure::controlRadius);
    if (photo_.isNull()) return;
    const double ratio = devicePixelRatioF();
    const double border = settings_.borderFraction();
    // Border and photo together fit into the widget.
    const double longer = std::max(photo_.width(), photo_.height());
    const QSizeF whole(photo_.width() + 2 * border * longer, photo_.height() + 2 * border * longer);
    const QSizeF room(width() - 2 * air, height() - 2 * air);
    const double scale = std::min(room.width() / whole.width(), room.height() / whole.height());
    const QSizeF paper = whole * scale;
    const QRectF sheet(QPointF((width() - paper.width()) / 2, (height() - paper.height()) / 2),
                       paper);
    const double margin = border * longer * scale;
    if (border > 0) painter.fillRect(sheet, Qt::white);
    const QRectF photo = sheet.adjusted(margin, margin, -margin, -margin);
    const QImage fitted = photo_.scaled((photo.size() * ratio).toSize(), Qt::IgnoreAspectRatio,
                                        Qt::SmoothTransformation);
    painter.drawImage(photo, stamped(fitted));
}

} // namespace kelvaro
