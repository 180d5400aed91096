#include "render/ThumbnailMaker.h"

#include "platform/PhotoKinds.h"

#include <algorithm>
#include <cstring>

namespace kelvaro {

namespace {

ViewRequest requestFor(const Adjustments& edit, int sidePx) {
    ViewRequest request;
    request.edit = edit;
    request.fit = PixelSize{sidePx, sidePx};
    return request;
}

// The view's pixels as a bitmap of their own.
Bitmap takenFrom(const RenderedView& view) {
    const Bitmap& pixels = *view.pixels;
    Bitmap copy(pixels.size, pixels.channels, pixels.type);
    std::memcpy(copy.samples.get(), pixels.samples.get(), pixels.bytes());
    return copy;
}

} // namespace

bool ThumbnailMaker::isAsShot(const Adjustments& edit) {
    Adjustments rest = edit;
    rest.cropLeft = rest.cropRight = rest.cropTop = rest.cropBottom = rest.straighten = 0;
    return !isEdited(rest);
}

Result<std::optional<Bitmap>> ThumbnailMaker::quick(const std::filesystem::path& photo,
                                                    const Adjustments& edit, int sidePx,
                                                    const Cancellation* cancellation) const {
    using None = std::optional<Bitmap>;
    if (!isAsShot(edit)) return None();
    if (photoKind(photo) != PhotoKind::raw) {
        auto decoded = developed(photo, edit, sidePx, cancellation);
        if (!decoded) return fail(std::move(decoded).error());
        return None(std::move(*decoded));
    }
    const PhotoSession session(engine_, parts_, photo, {});
    auto view = session.preview(requestFor(edit, sidePx), cancellation);
    if (!view) return fail(std::move(view).error());
    if (!*view) return None();
    const PixelSize got = (*view)->pixels->size, wanted = (*view)->pictureSize;
    if (2 * std::max(got.width, got.height) < std::max(wanted.width, wanted.height)) return None();
    return None(takenFrom(**view));
}

Result<Bitmap> ThumbnailMaker::developed(const std::filesystem::path& photo,
                                         const Adjustments& edit, int sidePx,
                                         const Cancellation* cancellation) const {
    const ViewRequest request = requestFor(edit, sidePx);
    const auto present = sessions_.presentAsItIs(photo);
    const auto made = [&]() -> Result<RenderedView> {
        if (present && present->isDecodedFor(request, {}))
            return present->render(request, {}, cancellation);
        auto session = sessions_.separate(photo);
        if (!session) return fail(std::move(session).error());
        return (*session)->sketch(request, cancellation);
    };
    auto view = made();
    if (!view) return fail(std::move(view).error());
    return takenFrom(*view);
}

} // namespace kelvaro
