// Opens a photo file of either kind as the source of pipeline runs. Blocking; any thread.
#pragma once

#include "base/Cancellation.h"
#include "develop/AnalysisCache.h"
#include "develop/ImageSource.h"
#include "platform/FileSystem.h"
#include "platform/ImageFiles.h"
#include "platform/RawEngine.h"

namespace kelvaro {

// What tells this state of a file from others: its size and the time of its last change.
Result<std::string> photoIdentity(FileSystem& files, const std::filesystem::path& photo);
std::string photoIdentity(std::int64_t size, FileTime modified);

struct PhotoOpener {
    FileSystem& files;
    ImageReader& reader;
    RawEngine& raw;
    // The pixels of RAW files will be read once, from edge to edge: they are made where they are
    // read instead of being kept. Analyses look at a smaller decode.
    bool streams = false;
    // Where analyses are looked up, or null. Of a streamed photo that they cover for the edit, that
    // smaller decode is not made.
    AnalysisCache* analyses = nullptr;

    // The photo decoded for `edit` at `scale` output pixels per full-resolution pixel. RAW files
    // are told by their extension, pictures by their content. Fails with `unsupported` for a file
    // whose extension is no photo's.
    Result<ImageSource> open(const std::filesystem::path& photo, const Adjustments& edit,
                             double scale, const Cancellation* cancellation) const;
    // The scene-linear capture alone, without sharpening and noise reduction. Fails with
    // `unsupported` for other than RAW files.
    Result<ImageSource> openCapture(const std::filesystem::path& photo,
                                    const Cancellation* cancellation) const;
};

} // namespace kelvaro
