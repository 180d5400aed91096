// What settling changed of a view: it was drawn from reduced pixels, and again with all pixels
// developed before they were reduced. A like view is then drawn from reduced pixels and changed as
// much, and looks settled in a fraction of the time. Plain value, any thread.
#pragma once

#include "platform/Bitmap.h"
#include "platform/Image.h"
#include "render/ViewRequest.h"

#include <memory>

namespace kelvaro {

struct SettlingChange {
    ViewRequest request;
    Image from;     // the decode that both were drawn from
    PixelRect rect; // of the view
    std::shared_ptr<const Bitmap> reduced, settled;

    // Whether views of `other` show the same places in the same pixels.
    bool describes(const ViewRequest& other, const Image& decode) const;
    // `now`, a part of such a view drawn from reduced pixels, changed as `reduced` was by settling.
    // Where it has moved far from `reduced` it stays as it is. None where it is no part of it or
    // has other samples.
    std::shared_ptr<const Bitmap> appliedTo(const Bitmap& now, const PixelRect& part) const;
    std::size_t bytes() const { return reduced->bytes() + settled->bytes(); }
};

} // namespace kelvaro
