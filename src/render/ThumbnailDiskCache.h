// Thumbnails on the disk: one JPEG each, in sRGB with its profile, named after a hash of what the
// picture was made from. Bounded; those written longest ago go first. Everything that goes wrong is
// silent: the thumbnail is made again. Files appear whole or not at all, and several programs may
// share the folder. Thread-safe.
#pragma once

#include "base/SerialQueue.h"
#include "platform/FileSystem.h"
#include "platform/ImageFiles.h"

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace kelvaro {

class ThumbnailDiskCache {
public:
    static constexpr std::string_view folderName = "Thumbnails"; // inside the folder of caches

    // All must outlive the cache. `folder` is made when first written to.
    ThumbnailDiskCache(FileSystem& files, ImageReader& reader, ImageWriter& writer,
                       std::filesystem::path folder, std::int64_t limitBytes = 512 << 20);

    std::optional<Bitmap> find(const std::string& key);
    // Written when the queue gets to it; dropped where the disk cannot keep up.
    void keep(const std::string& key, std::shared_ptr<const Bitmap> thumbnail);
    // Blocks until everything kept so far is written.
    void waitForWrites() { writing_.waitUntilIdle(); }

    static std::string fileName(std::string_view key);

private:
    void write(const std::string& name, const Bitmap& thumbnail);
    void trim();

    FileSystem& files_;
    ImageReader& reader_;
    ImageWriter& writer_;
    const std::filesystem::path folder_;
    const std::int64_t limitBytes_;
    std::atomic<std::int64_t> waitingBytes_ = 0; // of thumbnails on the queue
    std::int64_t writtenBytes_ = 0;              // since the folder was trimmed; writing queue
    bool isTrimAsked_ = false;                   // in this session; writing queue
    SerialQueue writing_;                        // last: its jobs use the rest
};

} // namespace kelvaro
