// What a RenderSession does off the main thread, and what it hands back. The calls of RenderSession
// arrive here on the main thread; everything named "run" is a job of one of the queues.
#pragma once

#include "base/SerialQueue.h"
#include "render/RenderSession.h"

#include <atomic>
#include <map>

namespace kelvaro {

class RenderSession::Work {
public:
    Work(RenderEngine& engine, PhotoSessionCache& sessions)
        : engine_(engine), sessions_(sessions) {}
    ~Work();

    void open(const std::filesystem::path& photo, OpenedCallback opened);
    void close();
    void render(ViewRequest request, ViewCallback callback);
    void sample(Point at, int radiusPx, SampleCallback callback);
    void prepare(std::vector<Neighbour> neighbours);
    void setHistogramCallback(HistogramCallback callback);
    void waitUntilIdle();
    RenderEngine& engine() { return engine_; }

private:
    using Token = std::shared_ptr<Cancellation>;
    // The photo on the canvas. Its session and facts are filled in by the render queue.
    struct Open {
        std::filesystem::path photo;
        Token cancellation = std::make_shared<Cancellation>();
        Locked<std::shared_ptr<PhotoSession>> session;
        std::atomic<bool> isTold = false;      // that it is open, or why not
        std::atomic<bool> isPreviewed = false; // a preview was asked for
        bool isShown = false;                  // main thread: something developed is on the canvas
    };
    struct Asked {
        std::shared_ptr<Open> open;
        ViewRequest request;
        std::uint64_t number = 0;
        double when = 0;
        Token cancellation = std::make_shared<Cancellation>(); // of its first frame
        Token refinement = std::make_shared<Cancellation>();
    };
    using OpenPointer = std::shared_ptr<Open>;
    using AskedPointer = std::shared_ptr<Asked>;
    // Main thread; posted jobs find it gone when the session has ended.
    struct Front {
        OpenPointer open;
        OpenedCallback opened;
        AskedPointer newest;
        std::map<std::uint64_t, ViewCallback> callbacks; // by the numbers of the requests
        std::uint64_t lastNumber = 0;
        HistogramCallback histogram;
    };

    // How the last views were drawn, so that one can go on from them.
    struct Drawn {
        std::uint64_t number = 0;
        AskedPointer asked;
        PhotoSession::Pass pass;
        double decodedScale = 0; // of the pixels that it was made from
    };

    void runOpen(const OpenPointer& open);
    void runRender();
    void runRefine(const AskedPointer& asked);
    void runPreview(const OpenPointer& open);
    void runHistogram();
    void runPrepare(const std::vector<Neighbour>& neighbours, const Token& cancellation);

    // The one that is kept, or where `looksAgain` is set that of the file as it is now.
    Result<std::shared_ptr<PhotoSession>> sessionOf(const OpenPointer& open, bool looksAgain);
    void tellOpened(const OpenPointer& open, Result<PhotoFacts> facts);
    void step(const AskedPointer& asked, PhotoSession& session);
    bool glimpse(const AskedPointer& asked, PhotoSession& session);
    std::optional<Drawn> drawnAs(std::uint64_t number);
    std::optional<PhotoSession::Pass> passForPart(const Asked& asked, PhotoSession& session);
    bool drawPart(const AskedPointer& asked, PhotoSession& session);
    Result<RenderedView> timedRender(const AskedPointer& asked, PhotoSession& session,
                                     PhotoSession::Pass pass, const Token& cancellation);
    void deliver(const AskedPointer& asked, Result<RenderedView> view);
    void deliverDrawn(const AskedPointer& asked, PhotoSession::Pass pass,
                      Result<RenderedView> view);
    static void arrive(Front& front, const AskedPointer& asked, const Result<RenderedView>& view);
    void countView(const AskedPointer& asked, const RenderedView& view);
    int coarsenessFor(const Asked& asked, PhotoSession& session);
    bool isNewest(const AskedPointer& asked) const { return newest_.copy() == asked; }

    RenderEngine& engine_;
    PhotoSessionCache& sessions_;
    std::shared_ptr<Front> front_ = std::make_shared<Front>();
    Token preparing_ = std::make_shared<Cancellation>();
    mutable Locked<AskedPointer> newest_; // what the render queue draws next or is drawing
    Locked<AskedPointer> waiting_;        // and has not begun
    struct Counting {
        AskedPointer asked;
        RenderedView view;
    };
    Locked<std::optional<Counting>> counting_; // the next histogram
    Locked<std::vector<Drawn>> drawn_;
    std::atomic<std::uint64_t> lastView_ = 0;
    std::atomic<bool> wantsHistogram_ = false;
    std::atomic<double> countedAt_ = -1; // monotonic seconds
    // Of the last frames, and of settled ones; 0: not known yet.
    std::atomic<double> secondsPerPixel_ = 0, settledSecondsPerPixel_ = 0;
    std::atomic<int> coarseness_ = 1; // of the last frame of a gesture
    // A queue's jobs post to the ones above it only, which end after it.
    SerialQueue previews_{"kelvaro.camera-preview", SerialQueue::AtEnd::drop};
    SerialQueue histograms_{"kelvaro.histogram", SerialQueue::AtEnd::drop};
    SerialQueue warmup_{"kelvaro.analysis-warmup", SerialQueue::AtEnd::drop};
    SerialQueue refinement_{"kelvaro.raw-refinement", SerialQueue::AtEnd::drop};
    SerialQueue rendering_{"kelvaro.render", SerialQueue::AtEnd::drop};
};

} // namespace kelvaro
