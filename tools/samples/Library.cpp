#include "samples/Library.h"

#include "platform/codecs/CodecImageFiles.h"
#include "platform/system/PosixFileSystem.h"
#include "samples/Drawing.h"
#include "samples/Metadata.h"
#include "samples/Noise.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

namespace kelvaro::samples {

namespace {

constexpr PixelSize kSize{48, 32};
constexpr int kPictures = 12;

struct Body {
    CameraModel camera;
    const char* prefix; // of its file names
};
const std::array kBodies{
    Body{{"Arbel", "Arbel M4", "A4001", "1.20", 1}, "IMG_"},
    Body{{"Arbel", "Arbel M4 II", "A4202", "2.01", 1}, "IMG_"},
    Body{{"NORDLICHT CORPORATION", "NORDLICHT D70", "N7033", "Ver.1.03", 1.5}, "DSC_"},
    Body{{"Quillon", "QX-100", "Q1004", "QX 3.0", 1.5}, "_DSC"},
    Body{{"Quillon", "QX-7R", "Q7R05", "QX 4.1", 1}, "_DSC"},
    Body{{"Hello", "hPhone 9 Pro", "", "17.2", 7.6}, "IMG_"},
    Body{{"Venlo", "VP-1", "V1007", "1.0", 2}, "P101"}};

const std::array kLenses{
    Lens{"Arbel", "Arbel 24-70mm f/2.8", 24, 70, 2.8, 2.8},
    Lens{"Arbel", "Arbel 50mm f/1.8", 50, 50, 1.8, 1.8},
    Lens{"Nordlicht", "Nordlicht 18-105mm f/3.5-5.6", 18, 105, 3.5, 5.6},
    Lens{"Quillon", "XF 35mm F1.4 R", 35, 35, 1.4, 1.4},
    Lens{"Quillon", "XF 16-55mm F2.8", 16, 55, 2.8, 2.8},
    Lens{"Sønderby", "Sønderby 85mm f/1.4", 85, 85, 1.4, 1.4},
    Lens{"Arbel", "Arbel 100-400mm f/4.5-5.6", 100, 400, 4.5, 5.6},
    Lens{"Hello", "hPhone back camera 6.765mm f/1.78", 6.765, 6.765, 1.78, 1.78}};

constexpr std::array<double, 10> kStops{1.4, 1.8, 2, 2.8, 4, 5.6, 6.3, 8, 11, 16};
constexpr std::array<int, 14> kSpeeds{4000, 2000, 1000, 800, 640, 500, 320,
                                      250,  200,  125,  80,  60,  30,  15};

// The next of a folder's random choices, 0 … count − 1.
class Choices {
public:
    explicit Choices(int folder) : folder_(folder) {}
    int below(int count) { return int(hashed(folder_, ++drawn_, 20261) % std::uint32_t(count)); }
    template<class List>
    const auto& of(const List& list) {
        return list[std::size_t(below(int(list.size())))];
    }

private:
    int folder_, drawn_ = 0;
};

std::string exifTime(std::int64_t seconds) {
    using namespace std::chrono;
    const sys_seconds time{std::chrono::seconds(seconds)};
    const auto day = floor<days>(time);
    const year_month_day date(day);
    const hh_mm_ss clock(time - day);
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%04d:%02u:%02u %02d:%02d:%02d", int(date.year()),
                  unsigned(date.month()), unsigned(date.day()), int(clock.hours().count()),
                  int(clock.minutes().count()), int(clock.seconds().count()));
    return text.data();
}

// One outing: a camera, a day, photos a few seconds to minutes apart.
class Outing {
public:
    // Folders are a few days apart, from 2012 on.
    explicit Outing(int folder)
        : choices_(folder),
          body_(choices_.of(kBodies)),
          seconds_(1'325'400'000 + folder * std::int64_t(5 * 86400) + choices_.below(40'000)),
          number_(choices_.below(9000) + 1) {}

    PhotoRecord next(bool isRaw) {
        PhotoRecord record;
        std::array<char, 32> name{};
        number_ = number_ % 9999 + 1;
        std::snprintf(name.data(), name.size(), "%s%04d.%s", body_.prefix, number_,
                      isRaw ? "DNG" : "JPG");
        record.name = name.data();
        record.size = kSize;
        record.seed = std::uint32_t(number_);
        record.camera = body_.camera;
        record.lens = choices_.of(kLenses);
        record.focalLength = record.lens.shortest +
                             choices_.below(int(record.lens.longest - record.lens.shortest) + 1);
        record.fNumber = std::max(choices_.of(kStops), record.lens.widest);
        record.exposureDenominator = choices_.of(kSpeeds);
        record.iso = 100 << choices_.below(7);
        record.biasStops = (choices_.below(7) - 3) / 3.0;
        seconds_ += choices_.below(10) == 0 ? choices_.below(3600) : choices_.below(40);
        record.taken = exifTime(seconds_);
        record.offset = choices_.below(2) ? "+01:00" : "+02:00";
        record.artist = "Noor Example";
        return record;
    }

private:
    Choices choices_;
    const Body& body_;
    std::int64_t seconds_;
    int number_;
};

// A small picture as the bytes of a JPEG file.
std::string encodedPicture(const std::filesystem::path& folder, int which) {
    PosixFileSystem files;
    const Picture light =
        draw(static_cast<SceneKind>(which % kSceneKinds), std::uint32_t(which) + 1, kSize);
    const auto path = folder / ".picture.jpg";
    auto pending = files.create(path);
    if (!pending) throw std::runtime_error(pending.error().message);
    EncodeSettings settings;
    settings.quality = 0.6;
    const auto encoded =
        makeImageWriter()->encode(rendered(light, 0.6, SampleType::u8), settings, **pending);
    if (!encoded || !(*pending)->commit()) throw std::runtime_error("no picture was written");
    std::ifstream in(path, std::ios::binary);
    std::string bytes(std::istreambuf_iterator<char>(in), {});
    std::filesystem::remove(path);
    return bytes;
}

std::string tiffBlock(const PhotoRecord& record, bool isRaw) {
    Exiv2::ExifData exif = exifOf(record, kSize);
    if (isRaw) {
        exif["Exif.Image.DNGVersion"] = "1 4 0 0";
        exif["Exif.Image.ImageWidth"] = std::uint32_t(kSize.width);
        exif["Exif.Image.ImageLength"] = std::uint32_t(kSize.height);
    }
    Exiv2::Blob blob;
    Exiv2::ExifParser::encode(blob, Exiv2::littleEndian, exif);
    return std::string(blob.begin(), blob.end());
}

// The EXIF segment goes in after the first marker.
std::string withExif(const std::string& jpeg, const std::string& tiff) {
    const std::size_t length = 2 + 6 + tiff.size();
    std::string segment("\xFF\xE1", 2);
    segment.push_back(char(length >> 8));
    segment.push_back(char(length & 0xFF));
    segment.append("Exif\0\0", 6).append(tiff);
    return jpeg.substr(0, 2) + segment + jpeg.substr(2);
}

void writeFolder(const std::filesystem::path& folder, int number, const LibraryPlan& plan,
                 const std::vector<std::string>& pictures) {
    const auto unfinished = std::filesystem::path(folder.string() + ".unfinished");
    std::filesystem::remove_all(unfinished);
    std::filesystem::create_directories(unfinished);
    Outing outing(number);
    for (int i = 0; i < plan.photosPerFolder; ++i) {
        const bool isRaw = plan.rawEvery > 0 && i % plan.rawEvery == plan.rawEvery - 1;
        PhotoRecord record = outing.next(isRaw);
        if (plan.photosPerFolder > 9999) record.name = std::to_string(i / 9999) + record.name;
        const std::string tiff = tiffBlock(record, isRaw);
        const std::string& picture = pictures[std::size_t(i) % pictures.size()];
        std::ofstream file(unfinished / record.name, std::ios::binary);
        file << (isRaw ? tiff : withExif(picture, tiff));
        if (!file.flush()) throw std::runtime_error("\"" + record.name + "\" can't be written.");
    }
    std::filesystem::rename(unfinished, folder);
}

} // namespace

std::filesystem::path libraryFolder(const std::filesystem::path& root, int number) {
    std::array<char, 16> name{};
    std::snprintf(name.data(), name.size(), "%04d", number);
    return root / name.data();
}

void writeLibrary(const std::filesystem::path& root, const LibraryPlan& plan,
                  const std::function<void(int)>& wrote) {
    std::filesystem::create_directories(root);
    std::vector<std::string> pictures;
    for (int number = 1; number <= plan.folders; ++number) {
        const auto folder = libraryFolder(root, number);
        if (!std::filesystem::exists(folder)) {
            for (int i = int(pictures.size()); i < kPictures; ++i)
                pictures.push_back(encodedPicture(root, i));
            writeFolder(folder, number, plan, pictures);
        }
        if (wrote) wrote(number);
    }
}

} // namespace kelvaro::samples
