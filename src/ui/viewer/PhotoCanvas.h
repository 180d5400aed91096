// Shows the open photo as large as the window allows, on the canvas colour, stage by stage as the
// render session delivers it. Pictures are drawn in device pixels. Main thread.
#pragma once

#include "render/RenderSession.h"
#include "ui/theme/Appearance.h"

#include <QColorSpace>
#include <QImage>
#include <QTimer>
#include <QWidget>

#include <functional>

namespace kelvaro {

class PhotoCanvas final : public QWidget {
public:
    static constexpr int air = 24; // around the photo

    PhotoCanvas(const Appearance& appearance, RenderEngine& engine, PhotoSessionCache& sessions,
                QWidget* parent = nullptr);

    // `standIn` is drawn until the session has something better; it may be null.
    void show(const std::filesystem::path& photo, const Adjustments& edit, const QImage& standIn);
    using QWidget::show;
    void close();
    void setEdit(const Adjustments& edit);
    void prepare(std::vector<RenderSession::Neighbour> neighbours);
    PixelSize fit() const; // device pixels for the photo
    void setScreenProfile(const QColorSpace& profile) { profile_ = profile; }

    std::function<void(const QString&)> onFailed;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void ask();
    void take(const Result<RenderedView>& view);

    const Appearance& appearance_;
    RenderSession session_;
    QColorSpace profile_;
    Adjustments edit_;
    bool open_ = false;
    QImage picture_;
    QSize pictureSize_; // device pixels on the screen
    bool isStandIn_ = true;
    QString failure_;
    QTimer resizing_; // asks once for many steps of a resize
};

// 8-bit RGB pixels as an image that shares them.
QImage imageOf(const std::shared_ptr<const Bitmap>& pixels);

} // namespace kelvaro
