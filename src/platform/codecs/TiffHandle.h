// Opening TIFF files over our own bytes. Every handle has its own error handlers, which print
// nothing: libtiff's global ones are left alone, so that any number of threads may use it.
#pragma once

#include "platform/codecs/ByteSource.h"
#include "platform/codecs/OutputSink.h"

#include <memory>
#include <tiffio.h>

namespace kelvaro {

struct TiffDeleter {
    void operator()(TIFF* tiff) const noexcept { TIFFClose(tiff); }
};
using TiffHandle = std::unique_ptr<TIFF, TiffDeleter>;

struct TiffReadClient {
    ByteSource& source;
    std::int64_t position = 0;
};
struct TiffWriteClient {
    OutputSink& sink;
    std::int64_t position = 0;
};

// Null when the header is unsound. The client must outlive the handle.
TiffHandle openTiff(TiffReadClient& client);
// `big` makes a BigTIFF, for more than 4 GB.
TiffHandle openTiff(TiffWriteClient& client, bool big);

} // namespace kelvaro
