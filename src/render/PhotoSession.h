// One photo and everything made of it that may be needed again: the decode, its reduction to the
// scale of the view, the RAW stage's output, the analysis. A render runs only what its request
// changed. Blocking and thread-safe; two calls that need the same step share it.
#pragma once

#include "base/Cancellation.h"
#include "base/Locked.h"
#include "develop/AnalysisCache.h"
#include "develop/BrushRaster.h"
#include "develop/ImageSource.h"
#include "develop/ToneMaps.h"
#include "platform/ImageFiles.h"
#include "platform/RawEngine.h"
#include "render/RenderEngine.h"
#include "render/SettlingChange.h"
#include "render/ViewGeometry.h"
#include "render/ViewRequest.h"

#include <filesystem>
#include <optional>
#include <vector>

namespace kelvaro {

class PhotoSession {
public:
    // What sessions work with; all must outlive them.
    struct Parts {
        FileSystem& files;
        ImageReader& reader;
        RawEngine& raw;
        BrushRaster& brushes;
        AnalysisCache& analyses;
    };

    // `identity` tells this state of the file from others (photoIdentity).
    PhotoSession(RenderEngine& engine, Parts parts, std::filesystem::path photo,
                 std::string identity);

    const std::filesystem::path& photo() const { return photo_; }
    const std::string& identity() const { return identity_; }

    // Whether `facts` needs no decoding.
    bool tellsFactsUndecoded() const { return isRaw_; }
    // What the file says of itself; for other than RAW files this may decode it, reduced.
    Result<PhotoFacts> facts(const Cancellation* cancellation);

    // The view made from what the camera embedded in a RAW file, without decoding it; none where
    // there is no such picture, or it is far too small.
    Result<std::optional<RenderedView>> preview(const ViewRequest& request,
                                                const Cancellation* cancellation) const;

    // A small view that is made once, such as a thumbnail: from pixels reduced as early as can be,
    // without what only larger ones tell of (noise, sharpness). Keeps no pixels. Where the view
    // needs more than that, and for bitmaps, this is render().
    Result<RenderedView> sketch(const ViewRequest& request, const Cancellation* cancellation);

    // How a view is drawn.
    struct Pass {
        int coarseness = 1;     // divides the resolution; above 1 the view is of stage `coarse`
        double enoughScale = 1; // pixels per photo pixel that will do, for a first look
        // Develops the pixels before they are reduced to the view, as an export does, instead of
        // after: what is brighter than its surroundings looks the same then, but it takes longer.
        bool isSettled = false;
        // All that is drawn of the view's rectangle; none: the whole of it.
        std::optional<PixelRect> part = std::nullopt;
    };

    // The resolution of the decode that is there: 1 the photo's own, 0 none.
    double decodedScale() const;
    // Whether the view can be drawn without decoding the photo (again).
    bool isDecodedFor(const ViewRequest& request, Pass pass) const;
    // The view, developed; decodes first where it must. Fails with `cancelled` and with what
    // decoders fail with; a render that returns nothing is RenderEngine::renderFailedText.
    Result<RenderedView> render(const ViewRequest& request, Pass pass,
                                const Cancellation* cancellation);
    // Decodes the photo as far as the view needs, and no more; at once where that is done.
    Result<void> load(const ViewRequest& request, Pass pass, const Cancellation* cancellation);
    // Looks what settling changed of that view, a whole one: from now on views like it that are not
    // settled come with the same change, so that nothing moves when they settle.
    void noteSettled(const ViewRequest& request, const RenderedView& settled,
                     const Cancellation* cancellation);
    // Makes ready all that `render` will need (decode, analysis, reduction), and the view itself.
    Result<void> prepare(const ViewRequest& request, const Cancellation* cancellation);
    // A first look at a part of a RAW photo at more than half its size: developed only where the
    // view shows it, which takes a fraction of the time that decoding the whole does. None where
    // less will do, the part is too large, or nothing was decoded to measure the photo by.
    Result<std::optional<RenderedView>> glimpse(const ViewRequest& request,
                                                const Cancellation* cancellation);
    // The view that was prepared, when it is this one; it is handed out once.
    std::optional<RenderedView> takePrepared(const ViewRequest& request);

    // The pixels within `radiusPx` (at the decode's resolution) of a point of the photo.
    Result<SampledArea> sampled(Point at, int radiusPx, const Cancellation* cancellation);

    // Lets go of what can be made again from the decode; of the decode as well where `all` is set.
    // What somebody draws from stays alive as long as that takes.
    void shed(bool all);
    std::size_t bytes() const;
    // Bytes that decoding will take, as far as is known.
    std::int64_t estimateBytes() const;

    // How often each step really ran.
    struct Counts {
        int decodes = 0, reductions = 0, rawStages = 0, renders = 0;
        bool operator==(const Counts&) const = default;
    };
    Counts counts() const;

private:
    // The photo's pixels, at full size or less.
    struct Decode {
        ImageSource source;
        double sharpness = 0;   // RAW only
        double settledUpTo = 1; // the largest scale of settled views that it is good for
        bool serves(double scale, double sharpnessAsked, bool isSettled) const;
    };
    // A picture of the whole photo drawn at some size, from a decode.
    struct Layer {
        Image from; // the decode's pixels
        PixelSize size;
        std::optional<RawParams> raw; // developed with these; none: the reduction itself
        Image image;                  // none: asked for once, not drawn yet
    };
    struct Analyses {
        std::shared_ptr<PhotoAnalysis> analysis;
        std::shared_ptr<RawToneAnalysis> rawToneAnalysis;
    };
    struct Prepared {
        ViewRequest request;
        RenderedView view;
    };
    struct State {
        std::optional<PhotoFacts> facts;
        std::optional<Analyses> analysed;
        std::shared_ptr<RawFile> rawFile; // used by whoever has claimed "decode"
        std::shared_ptr<const Decode> decode;
        std::vector<Layer> layers; // the last used last
        std::optional<Prepared> prepared;
        std::optional<SettlingChange> reduced; // the last whole view; not settled yet
        std::optional<SettlingChange> settling;
        Counts counts;
    };
    using DecodePointer = std::shared_ptr<const Decode>;

    double scaleNeeded(const ViewRequest& request, Pass pass) const;
    Result<DecodePointer> decodeFor(const ViewRequest& request, Pass pass,
                                    const Cancellation* cancellation);
    Result<DecodePointer> decode(const ViewRequest& request, Pass pass,
                                 const Cancellation* cancellation);
    Result<std::shared_ptr<RawFile>> openedRaw();
    Result<ImageSource> smallCapture(double scale, const Cancellation* cancellation);
    Result<DecodePointer> keepDecode(ImageSource source, double sharpness, double settledUpTo);
    Result<Image> reduced(const Decode& decode, double scale, const Cancellation* cancellation);
    Result<Image> rawDeveloped(const Decode& decode, const Image& input, const Adjustments& edit,
                               const ToneMaps& maps, bool isPart, const Cancellation* cancellation);
    // `isPart`: only a part will be drawn, so it is not worth developing all for that.
    Result<Image> developed(const Decode& decode, const Adjustments& edit, double scale,
                            bool isPart, const Cancellation* cancellation);
    Result<Image> settled(const Decode& decode, const ViewRequest& request, double scale,
                          const Cancellation* cancellation);
    Result<RenderedView> drawn(const Image& developed, const ViewRequest& request,
                               const ViewGeometry& geometry, int coarseness,
                               const Cancellation* cancellation) const;
    void settleAlike(const Decode& decode, const ViewRequest& request, bool isPart,
                     RenderedView& view);
    std::optional<Layer> findLayer(const Layer& wanted, bool noteWish);
    void keepLayer(Layer layer);

    RenderEngine& engine_;
    const Parts parts_;
    const std::filesystem::path photo_;
    const std::string identity_;
    const bool isRaw_;
    mutable Locked<State> state_;
    KeyedWork inFlight_;
};

} // namespace kelvaro
