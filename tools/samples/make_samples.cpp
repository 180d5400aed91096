// make_samples FOLDER [--count N]: fills a new folder with sample photos that are drawn here, so
// that nobody needs photos of their own to try Kelvaro. The same photos every time.

#include "platform/codecs/CodecImageFiles.h"
#include "platform/system/PosixFileSystem.h"
#include "samples/Dng.h"
#include "samples/Heic.h"
#include "samples/Metadata.h"

#include <charconv>
#include <cstdio>
#include <stdexcept>

using namespace kelvaro;
using namespace kelvaro::samples;

namespace {

constexpr const char* kUsage = "usage: make_samples FOLDER [--count N]\n";
constexpr int kMaximumCount = 100'000;

struct Options {
    std::filesystem::path folder;
    int count = kStandardCount;
};

std::optional<Options> parsed(int argc, char** argv) {
    Options options;
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (argument == "--count" && i + 1 < argc) {
            const std::string number = argv[++i];
            const auto end = number.data() + number.size();
            const auto read = std::from_chars(number.data(), end, options.count);
            if (read.ec != std::errc() || read.ptr != end) return std::nullopt;
            if (options.count < 1 || options.count > kMaximumCount) return std::nullopt;
        } else if (argument.starts_with('-') || !options.folder.empty()) {
            return std::nullopt;
        } else {
            options.folder = argument;
        }
    }
    if (options.folder.empty()) return std::nullopt;
    return options;
}

template<class T>
T orThrow(Result<T> result) {
    if (!result) throw std::runtime_error(result.error().message);
    if constexpr (!std::is_void_v<T>) return std::move(result).value();
}

void writePicture(const std::filesystem::path& file, const Bitmap& pixels, FileFormat format) {
    PosixFileSystem files;
    const auto pending = orThrow(files.create(file));
    EncodeSettings settings;
    settings.format = format;
    orThrow(makeImageWriter()->encode(pixels, settings, *pending));
    orThrow(pending->commit());
}

// In kelvin: what the camera took the light for.
double temperatureOf(SceneKind scene) {
    return scene == SceneKind::eveningHills ? 4600 : 5400;
}

void makePhoto(const std::filesystem::path& folder, const PhotoRecord& record) {
    const std::filesystem::path file = folder / record.name;
    const Picture light = stored(draw(record.scene, record.seed, record.size), record.orientation);
    const auto picture = [&](SampleType type) {
        return rendered(light, record.renderedStops, type);
    };
    Exiv2::ExifData exif = exifOf(record, light.size);
    switch (record.kind) {
    case FileKind::dng: {
        const SensorModel sensor = sensorOf(record);
        const Bitmap preview = rendered(reduced(light, 2), record.renderedStops, SampleType::u8);
        writeDng(file, expose(light, sensor, record, temperatureOf(record.scene)), sensor, preview,
                 record);
        break;
    }
    case FileKind::jpeg:
        writePicture(file, picture(SampleType::u8), FileFormat::jpeg);
        break;
    case FileKind::png16:
        writePicture(file, picture(SampleType::u16), FileFormat::png);
        break;
    case FileKind::tiff16:
        writePicture(file, picture(SampleType::u16), FileFormat::tiff);
        break;
    case FileKind::heic: {
        Exiv2::Blob blob;
        Exiv2::ExifParser::encode(blob, Exiv2::littleEndian, exif);
        writeHeic(file, picture(SampleType::u8), record.orientation, blob);
        return;
    }
    }
    writeExif(file, exif);
}

} // namespace

int main(int argc, char** argv) {
    const std::optional<Options> options = parsed(argc, argv);
    if (!options) {
        std::fputs(kUsage, stderr);
        return 2;
    }
    try {
        PosixFileSystem files;
        orThrow(files.createFolder(options->folder));
        if (!orThrow(files.list(options->folder)).empty())
            throw std::runtime_error("\"" + options->folder.string() + "\" is not empty.");
        for (const PhotoRecord& record : sampleRecords(options->count)) {
            makePhoto(options->folder, record);
            std::printf("%s: %s, %d x %d\n", record.name.c_str(), record.description.c_str(),
                        record.size.width, record.size.height);
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "make_samples: %s\n", error.what());
        return 1;
    }
    return 0;
}
