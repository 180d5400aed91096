#include "render/ThumbnailDiskCache.h"

#include "develop/AnalysisFile.h"
#include "platform/CacheFolder.h"

#include <fmt/format.h>

#include <utility>

namespace kelvaro {

namespace {

constexpr std::string_view kEnding = ".jpg";
constexpr std::int64_t kLargestFile = 8 << 20;
constexpr double kQuality = 0.88;
constexpr std::int64_t kMostWaiting = 32 << 20; // bytes of thumbnails not written yet
constexpr std::chrono::seconds kFirstTrim(30);
constexpr DecodeLimits kDecodeLimits{1 << 24, std::int64_t(1) << 27};

} // namespace

ThumbnailDiskCache::ThumbnailDiskCache(FileSystem& files, ImageReader& reader, ImageWriter& writer,
                                       std::filesystem::path folder, std::int64_t limitBytes)
    : files_(files),
      reader_(reader),
      writer_(writer),
      folder_(std::move(folder)),
      limitBytes_(limitBytes),
      writing_("kelvaro.thumbnail-writer", SerialQueue::AtEnd::drop) {}

std::string ThumbnailDiskCache::fileName(std::string_view key) {
    const auto hash = [](const std::string& text) {
        return checksum(std::as_bytes(std::span(text.data(), text.size())));
    };
    // Two different sums over the same key.
    return fmt::format("{:016x}{:016x}{}", hash(std::string(key)),
                       hash("second\n" + std::string(key)), kEnding);
}

std::optional<Bitmap> ThumbnailDiskCache::find(const std::string& key) {
    const std::string name = fileName(key);
    const auto bytes = files_.read(folder_ / name, kLargestFile);
    if (!bytes) return std::nullopt;
    auto decoded = reader_.decode(*bytes, name, kDecodeLimits);
    // What we write is in sRGB, so that the samples are what is shown.
    if (decoded && decoded->pixels.type == SampleType::u8 && decoded->pixels.channels == 3)
        return std::move(decoded->pixels);
    static_cast<void>(files_.remove(folder_ / name));
    return std::nullopt;
}

void ThumbnailDiskCache::keep(const std::string& key, std::shared_ptr<const Bitmap> thumbnail) {
    const auto bytes = std::int64_t(thumbnail->bytes());
    if (waitingBytes_.fetch_add(bytes) >= kMostWaiting) {
        waitingBytes_ -= bytes;
        return;
    }
    writing_.post([this, bytes, name = fileName(key), thumbnail = std::move(thumbnail)] {
        write(name, *thumbnail);
        waitingBytes_ -= bytes;
    });
}

// On the writing queue. A failure leaves the thumbnail to be made again another time.
void ThumbnailDiskCache::write(const std::string& name, const Bitmap& thumbnail) {
    if (!files_.createFolder(folder_)) return;
    auto file = files_.create(folder_ / name);
    if (!file) return;
    if (!writer_.encode(thumbnail, {FileFormat::jpeg, kQuality, OutputSpace::sRGB}, **file)) return;
    const std::int64_t size = (*file)->size();
    if (!(*file)->commit()) return;
    // Others may write too, so that the folder is looked at now and then, and some time after the
    // beginning: looking at a hundred thousand files takes as long as starting the program.
    writtenBytes_ += size;
    if (writtenBytes_ >= limitBytes_ / 16)
        trim();
    else if (!std::exchange(isTrimAsked_, true))
        writing_.postLater(kFirstTrim, [this] { trim(); });
}

void ThumbnailDiskCache::trim() {
    trimCacheFolder(files_, folder_, kEnding, limitBytes_);
    isTrimAsked_ = true;
    writtenBytes_ = 0;
}

} // namespace kelvaro
