#include "ui/export/ExportPreview.h"

#include "export/SegmentDigits.h"
#include "ui/Texts.h"

#include <QPainter>
#include <QPainterPath>

#include <cmath>

namespace kelvaro {
namespace {

constexpr int air = 16;
constexpr int detailPx = 56; // height of the magnified corner

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
    setFailure({});
}

void ExportPreview::setFailure(const QString& why) {
    failure_ = why;
    setAccessibleDescription(why);
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

bool ExportPreview::hasStamp() const {
    return day_.ok() && !DateStamp::text(settings_.dateStamp, day_).empty() &&
           DateStamp::geometry({photo_.width(), photo_.height()}).has_value();
}

// The imprint in the place and size that the export gives it, at the preview's size.
QImage ExportPreview::stamped(const QImage& photo) const {
    const auto geometry = DateStamp::geometry({photo.width(), photo.height()});
    if (!hasStamp() || !geometry) return photo;
    const QImage digits =
        imageOf(segmentText(DateStamp::text(settings_.dateStamp, day_), geometry->digitHeight));
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
    if (photo_.isNull()) {
        painter.setPen(theme.secondary);
        painter.drawText(rect().adjusted(air, air, -air, -air), Qt::AlignCenter | Qt::TextWordWrap,
                         failure_);
        return;
    }
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    QRectF room = QRectF(rect()).adjusted(air, air, -air, -air);
    if (hasStamp()) {
        paintDetail(painter, QRectF(room.left(), room.bottom() - detailPx, room.width(), detailPx));
        room.setBottom(room.bottom() - detailPx - air);
    }
    paintPaper(painter, room);
}

// Border and photo together fit into the room.
void ExportPreview::paintPaper(QPainter& painter, const QRectF& room) const {
    const double border = settings_.borderFraction();
    const double longer = std::max(photo_.width(), photo_.height());
    const QSizeF whole(photo_.width() + 2 * border * longer, photo_.height() + 2 * border * longer);
    const double scale = std::min(room.width() / whole.width(), room.height() / whole.height());
    QRectF paper(QPointF(), whole * scale);
    paper.moveCenter(room.center());
    const double margin = border * longer * scale;
    if (border > 0) painter.fillRect(paper, Qt::white);
    const QRectF photo = paper.adjusted(margin, margin, -margin, -margin);
    const QSize pixels = (photo.size() * devicePixelRatioF()).toSize().expandedTo({1, 1});
    painter.drawImage(
        photo, stamped(photo_.scaled(pixels, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)));
}

// The corner with the imprint, magnified, because its digits are too small to be read above.
void ExportPreview::paintDetail(QPainter& painter, const QRectF& room) const {
    const QImage whole = stamped(photo_);
    const double shorter = std::min(whole.width(), whole.height());
    const QSizeF corner(std::min(0.30 * shorter, double(whole.width())),
                        std::min(0.126 * shorter, double(whole.height())));
    const QRectF source(QPointF(whole.width() - corner.width(), whole.height() - corner.height()),
                        corner);
    QRectF shown(QPointF(), corner.scaled(room.size(), Qt::KeepAspectRatio));
    shown.moveCenter(room.center());
    QPainterPath outline;
    outline.addRoundedRect(shown, 4, 4);
    painter.save();
    painter.setClipPath(outline);
    painter.drawImage(shown, whole, source);
    painter.restore();
}

} // namespace kelvaro
