// The open photo on the canvas: asks the render session for what is visible at the scale shown,
// draws the frames as they come, zooms and pans, and hands the pointer to the tool that is on.
// Holds no rules of editing. Main thread.
#pragma once

#include "editor/CanvasView.h"
#include "editor/SplitView.h"
#include "render/RenderSession.h"
#include "ui/editor/CanvasFrame.h"
#include "ui/editor/CanvasTool.h"
#include "ui/theme/Appearance.h"

#include <QElapsedTimer>
#include <QTimer>
#include <QVariantAnimation>
#include <QWidget>

#include <functional>

namespace kelvaro {

// What the canvas shows beside the edit.
struct CanvasDisplay {
    bool whole = false;      // the uncropped photo, turned, for the crop tool
    bool clipping = false;   // where pixels are clipped
    bool assessment = false; // middle grey around a white border
    MaskOverlay overlay;
    SplitView split;
};

class EditorCanvas final : public QWidget {
public:
    EditorCanvas(const Appearance& appearance, RenderEngine& engine, PhotoSessionCache& sessions,
                 QWidget* parent = nullptr);
    ~EditorCanvas() override;

    // `guess` is the photo's size as far as is known before it is opened; `standIn` is drawn until
    // there is something better and may be null.
    void showPhoto(const std::filesystem::path& photo, const Adjustments& edit, PixelSize guess,
                   const QImage& standIn);
    void close();
    // `interactive`: the hand is on a control.
    void setEdit(const Adjustments& edit, bool interactive);
    void setDisplay(const CanvasDisplay& display);
    const CanvasDisplay& display() const { return display_; }
    void setTool(CanvasTool* tool); // null: the hand
    void setScreenProfile(const QColorSpace& profile);
    void prepare(std::vector<RenderSession::Neighbour> neighbours);
    PixelSize fit() const; // device pixels for a fitted photo

    // Where the photo lies now.
    CanvasView view() const;
    const CanvasFrame& frame() const { return frame_; }
    PixelSize photoSize() const { return photoSize_; }
    bool isOpen() const { return open_; }
    bool isFactual() const { return factual_; } // the photo's real size is known
    // How many requests were sent; what changes now is in the next one.
    std::uint64_t askedCount() const { return askedCount_; }
    bool isSettled() const {
        return open_ && frame_.isFinal && !asking_.isActive() && !resting_.isActive() && !inFlight_;
    }
    void zoomTo(CanvasView::Zoom zoom);
    void zoomBy(double factor);
    // The photo grows out of this rectangle of the canvas.
    void growFrom(const QRect& rect);
    RenderSession& session() { return session_; }

    std::function<void(const Result<PhotoFacts>&)> onOpened;
    std::function<void(const Histogram&)> onHistogram;
    std::function<void(double share)> onSplitMoved;
    std::function<void(QPoint global)> onContextMenu;
    std::function<void(const CanvasFrame&)> onPainted; // a frame is on the screen

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void tabletEvent(QTabletEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    bool event(QEvent* event) override;

private:
    enum class Gesture { none, hand, tool, split };

    // --- Requests ---
    void ask(bool interactive);
    void send();
    void askBefore();
    ViewRequest requestNow() const;
    void take(const Result<RenderedView>& view, bool whole, std::uint64_t asked);
    void takePart(const CanvasFrame& part, std::uint64_t over);
    void opened(const Result<PhotoFacts>& facts);
    PixelSize pictureSize() const;
    void viewChanged();
    bool showsBefore() const { return display_.split.originalHeld || display_.split.isSplit; }

    // --- Painting ---
    QRect coveredArea(const CanvasView& view) const;
    void paintPhoto(QPainter& painter, const CanvasView& view);
    void paintFrame(QPainter& painter, const CanvasFrame& frame, const CanvasView& view);
    void paintSplit(QPainter& painter, const CanvasView& view);
    void paintGrowing(QPainter& painter, const CanvasView& view);
    void paintZoom(QPainter& painter);
    Box visiblePicture(const CanvasView& view) const;

    // --- Input ---
    void press(const CanvasPointer& pointer, Qt::MouseButton button);
    void move(const CanvasPointer& pointer, bool pressed);
    void release(const CanvasPointer& pointer);
    void applyView(const CanvasView& view, bool interactive);
    void showCursor(Point at);
    void updateTool();

    const Appearance& appearance_;
    RenderEngine& engine_;
    RenderSession session_, before_;
    QColorSpace profile_;
    Adjustments edit_;
    bool open_ = false, factual_ = false;
    PixelSize photoSize_;
    CanvasView view_;
    CanvasDisplay display_;
    CanvasTool* tool_ = nullptr;
    QString failure_;

    // The newest frame, the newest of the whole picture to lie beneath, and the one that fades.
    CanvasFrame frame_, backdrop_, fading_, beforeFrame_;
    QVariantAnimation fade_, growth_;
    QRect growsFrom_;

    QTimer asking_;  // gathers what changes in one turn into one request
    QTimer resting_; // runs while a gesture moves: when it ends the view is settled
    bool interactive_ = false;
    bool inFlight_ = false; // a frame of a gesture is on its way
    bool again_ = false;    // and another is wanted after it
    bool askedByFit_ = false;
    std::uint64_t askedCount_ = 0;
    QElapsedTimer sinceSent_;
    std::uint64_t undisplayed_ = 0; // the frame that has not been painted yet

    Gesture gesture_ = Gesture::none;
    Point pressedAt_, lastAt_;
    bool spaceHeld_ = false;
    std::optional<QRectF> toolSpot_; // where the tool was drawn at the pointer
    QTimer zoomShown_, labelsShown_;
};

} // namespace kelvaro
