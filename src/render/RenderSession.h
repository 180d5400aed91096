// The open photo on a canvas: renders requested views off the main thread, in stages, and hands
// them back on it. The newest request wins; older ones end without a word. Owned by and called on
// the main thread. Several sessions (a compare view) may share one PhotoSessionCache.
//
//     RenderSession canvas(engine, sessions);
//     canvas.open(photo, [](const Result<PhotoFacts>& facts) { … });
//     canvas.render(request, [](const Result<RenderedView>& view) { … draw … });
#pragma once

#include "render/Histogram.h"
#include "render/PhotoSessionCache.h"
#include "render/RenderEngine.h"
#include "render/ViewRequest.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <vector>

namespace kelvaro {

class RenderSession {
public:
    using OpenedCallback = std::function<void(const Result<PhotoFacts>&)>;
    // Called once or several times for a request, until a view with `isFinal` or a failure: the
    // decoder's sentence, or RenderEngine::renderFailedText. Not called once a newer request,
    // another photo or the session's end has taken its place.
    using ViewCallback = std::function<void(const Result<RenderedView>&)>;
    using HistogramCallback = std::function<void(const Histogram&)>;

    // Both must outlive the session.
    RenderSession(RenderEngine& engine, PhotoSessionCache& sessions);
    ~RenderSession();

    // Shows another photo from now on; `opened` is told its facts. Failures name the file.
    void open(const std::filesystem::path& photo, OpenedCallback opened = nullptr);
    void close();
    // The view to show from now on. Needs a photo that is open or opening.
    void render(ViewRequest request, ViewCallback callback);

    // What was recorded around a point of the open photo (pixels, y up); not called once another
    // photo has taken its place.
    using SampleCallback = std::function<void(const Result<SampledArea>&)>;
    void sample(Point at, int radiusPx, SampleCallback callback);

    // Called with the histogram of the whole displayed picture (without overlays) after each change
    // of it; an empty function ends that.
    void setHistogramCallback(HistogramCallback callback);
    // The frame is on the screen, for the timing log.
    void displayed(std::uint64_t frame);

    // The photos that will probably come next, with the edits and the size they would be shown at:
    // prepared while nothing else is to do, in this order. Replaces the list before.
    struct Neighbour {
        std::filesystem::path photo;
        Adjustments edit;
        PixelSize fit; // device pixels
    };
    void prepare(std::vector<Neighbour> neighbours);

    // Blocks until everything asked for so far has been rendered and handed to the main thread.
    void waitUntilIdle();

private:
    class Work;
    std::unique_ptr<Work> work_;
};

} // namespace kelvaro
