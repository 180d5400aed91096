#include "platform/metadata/HeifContainer.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <map>
#include <span>

namespace kelvaro {

namespace {

constexpr std::uint64_t kMaximumMeta = 16 << 20, kMaximumExif = 16 << 20;

// Reads big-endian numbers; past the end it yields zeros and remembers it.
class Bytes {
public:
    explicit Bytes(std::span<const std::byte> data) : data_(data) {}
    std::uint64_t number(std::size_t bytes) {
        std::uint64_t value = 0;
        for (std::size_t i = 0; i < bytes; ++i)
            value = value << 8 | next();
        return value;
    }
    std::uint32_t u32() { return std::uint32_t(number(4)); }
    std::uint16_t u16() { return std::uint16_t(number(2)); }
    std::uint8_t u8() { return std::uint8_t(number(1)); }
    bool isSpent() const { return position_ >= data_.size(); }
    bool isOver() const { return position_ > data_.size(); }
    std::span<const std::byte> rest() const {
        return data_.subspan(std::min(position_, data_.size()));
    }
    void skip(std::size_t bytes) { position_ = std::min(position_ + bytes, data_.size() + 1); }

private:
    unsigned next() {
        const unsigned v =
            position_ < data_.size() ? std::to_integer<unsigned>(data_[position_]) : 0;
        position_ = std::min(position_ + 1, data_.size() + 1);
        return v;
    }
    std::span<const std::byte> data_;
    std::size_t position_ = 0;
};

constexpr std::uint32_t code(const char (&name)[5]) {
    return std::uint32_t(std::uint8_t(name[0])) << 24 | std::uint32_t(std::uint8_t(name[1])) << 16 |
           std::uint32_t(std::uint8_t(name[2])) << 8 | std::uint8_t(name[3]);
}

struct Box {
    std::uint32_t type = 0;
    std::span<const std::byte> content;
};

std::vector<Box> boxesIn(std::span<const std::byte> data) {
    std::vector<Box> boxes;
    while (data.size() >= 8 && boxes.size() < 65536) {
        Bytes head(data);
        std::uint64_t size = head.u32();
        const std::uint32_t type = head.u32();
        std::size_t header = 8;
        if (size == 1) {
            size = head.number(8);
            header = 16;
        }
        if (size == 0) size = data.size();
        if (size < header || size > data.size()) break;
        boxes.push_back({type, data.subspan(header, std::size_t(size) - header)});
        data = data.subspan(std::size_t(size));
    }
    return boxes;
}

const Box* find(const std::vector<Box>& boxes, std::uint32_t type) {
    const auto at =
        std::find_if(boxes.begin(), boxes.end(), [&](const Box& b) { return b.type == type; });
    return at == boxes.end() ? nullptr : &*at;
}

// What a transform does to directions, x right and y down: shown = turn × stored.
struct Turn {
    int xx = 1, xy = 0, yx = 0, yy = 1;
    bool operator==(const Turn&) const = default;
};
Turn after(const Turn& a, const Turn& b) { // b first
    return {a.xx * b.xx + a.xy * b.yx, a.xx * b.xy + a.xy * b.yy, a.yx * b.xx + a.yy * b.yx,
            a.yx * b.xy + a.yy * b.yy};
}
constexpr Turn kQuarterLeft{0, 1, -1, 0}, kMirrorColumns{-1, 0, 0, 1}, kMirrorRows{1, 0, 0, -1};

int exifCode(const Turn& turn) {
    constexpr std::array<Turn, 8> codes{{{1, 0, 0, 1},
                                         {-1, 0, 0, 1},
                                         {-1, 0, 0, -1},
                                         {1, 0, 0, -1},
                                         {0, 1, 1, 0},
                                         {0, -1, 1, 0},
                                         {0, -1, -1, 0},
                                         {0, 1, -1, 0}}};
    for (std::size_t i = 0; i < codes.size(); ++i) {
        if (codes[i] == turn) return int(i) + 1;
    }
    return 1;
}

// The properties of one item in the order of their application.
std::vector<Box> propertiesOf(std::uint32_t item, const std::vector<Box>& properties,
                              const Box& associations) {
    Bytes b(associations.content);
    const std::uint32_t versionAndFlags = b.u32(), entries = b.u32();
    const bool hasLongIds = versionAndFlags >> 24 >= 1, hasLongIndices = versionAndFlags & 1;
    std::vector<Box> result;
    for (std::uint32_t i = 0; i < entries && !b.isSpent(); ++i) {
        const std::uint32_t id = hasLongIds ? b.u32() : b.u16();
        const int count = b.u8();
        for (int k = 0; k < count; ++k) {
            const unsigned index = hasLongIndices ? b.u16() & 0x7fffu : b.u8() & 0x7fu;
            if (id == item && index >= 1 && index <= properties.size()) {
                result.push_back(properties[index - 1]);
            }
        }
    }
    return result;
}

void applyProperties(const std::vector<Box>& properties, HeifFacts& facts) {
    Turn turn;
    for (const Box& property : properties) {
        Bytes b(property.content);
        if (property.type == code("ispe")) {
            b.skip(4);
            const std::uint32_t width = b.u32(), height = b.u32();
            if (width > 0 && height > 0 && width < 1u << 20 && height < 1u << 20) {
                facts.size = PixelSize{int(width), int(height)};
            }
        } else if (property.type == code("clap")) {
            const double width = double(b.u32()) / std::max(1u, b.u32());
            const double height = double(b.u32()) / std::max(1u, b.u32());
            if (facts.size && width >= 1 && height >= 1 && width <= facts.size->width &&
                height <= facts.size->height) {
                facts.size = PixelSize{int(width), int(height)};
            }
        } else if (property.type == code("irot")) {
            for (int i = b.u8() & 3; i > 0; --i)
                turn = after(kQuarterLeft, turn);
        } else if (property.type == code("imir")) {
            turn = after(b.u8() & 1 ? kMirrorColumns : kMirrorRows, turn);
        } else if (property.type == code("pixi")) {
            b.skip(5); // version, flags, number of channels
            if (const int bits = b.u8(); bits >= 1 && bits <= 32) facts.bitsPerSample = bits;
        } else if (property.type == code("colr")) {
            const std::uint32_t kind = b.u32();
            if (kind == code("nclx")) {
                facts.primaries = b.u16();
            } else if (kind == code("prof") || kind == code("rICC")) {
                facts.profile.assign(b.rest().begin(), b.rest().end());
            }
        }
    }
    facts.orientation = exifCode(turn);
}

// The item of type "Exif".
std::optional<std::uint32_t> exifItem(const Box& information) {
    Bytes b(information.content);
    const bool isLong = b.u32() >> 24 >= 1;
    b.skip(isLong ? 4 : 2);
    for (const Box& entry : boxesIn(b.rest())) {
        if (entry.type != code("infe")) continue;
        Bytes e(entry.content);
        const unsigned version = e.u32() >> 24;
        if (version < 2) continue;
        const std::uint32_t id = version >= 3 ? e.u32() : e.u16();
        e.skip(2);
        if (e.u32() == code("Exif")) return id;
    }
    return std::nullopt;
}

struct Extent {
    std::uint64_t offset = 0, length = 0;
};

// Where an item's data lies in the file; only items in one piece and outside idat.
std::optional<Extent> placeOf(std::uint32_t item, const Box& locations) {
    Bytes b(locations.content);
    const unsigned version = b.u32() >> 24, sizes = b.u16();
    const std::size_t offsetBytes = sizes >> 12, lengthBytes = sizes >> 8 & 15,
                      baseBytes = sizes >> 4 & 15;
    const std::size_t indexBytes = version >= 1 ? sizes & 15 : 0;
    const std::uint32_t items = version >= 2 ? b.u32() : b.u16();
    for (std::uint32_t i = 0; i < items && !b.isSpent(); ++i) {
        const std::uint32_t id = version >= 2 ? b.u32() : b.u16();
        const unsigned construction = version >= 1 ? b.u16() & 15u : 0;
        b.skip(2);
        const std::uint64_t base = b.number(baseBytes);
        const unsigned extents = b.u16();
        for (unsigned k = 0; k < extents && !b.isOver(); ++k) {
            b.skip(indexBytes);
            const std::uint64_t offset = b.number(offsetBytes), length = b.number(lengthBytes);
            if (id == item && construction == 0 && extents == 1)
                return Extent{base + offset, length};
        }
    }
    return std::nullopt;
}

std::vector<std::byte> readPart(std::ifstream& file, std::uint64_t offset, std::uint64_t length) {
    file.clear();
    file.seekg(0, std::ios::end);
    const auto size = std::uint64_t(std::max<std::streamoff>(file.tellg(), 0));
    if (offset > size || length > size - offset) return {};
    std::vector<std::byte> bytes(length);
    file.seekg(std::streamoff(offset));
    file.read(reinterpret_cast<char*>(bytes.data()), std::streamsize(length));
    if (std::uint64_t(file.gcount()) != length) return {};
    return bytes;
}

// The item begins with the distance to the TIFF header.
std::vector<std::byte> tiffBlock(const std::vector<std::byte>& item) {
    Bytes b(item);
    const std::uint64_t skip = 4 + std::uint64_t(b.u32());
    if (skip + 8 > item.size()) return {};
    return {item.begin() + std::ptrdiff_t(skip), item.end()};
}

} // namespace

std::optional<HeifFacts> readHeif(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::uint64_t position = 0;
    std::vector<std::byte> meta;
    for (int i = 0; i < 64; ++i) { // boxes of the file
        const auto header = readPart(file, position, 8);
        if (header.empty()) break;
        Bytes b(header);
        std::uint64_t size = b.u32();
        const std::uint32_t type = b.u32();
        if (i == 0) {
            const auto brand = readPart(file, position + 8, 4);
            if (type != code("ftyp") || brand.empty() || Bytes(brand).u32() == code("crx "))
                return std::nullopt;
        }
        std::uint64_t headerBytes = 8;
        if (size == 1) {
            const auto large = readPart(file, position + 8, 8);
            if (large.empty()) break;
            size = Bytes(large).number(8);
            headerBytes = 16;
        }
        if (size < headerBytes || size > std::uint64_t(1) << 60) break;
        if (type == code("meta") && size <= kMaximumMeta) {
            meta = readPart(file, position + headerBytes, size - headerBytes);
            break;
        }
        position += size;
    }
    if (meta.size() < 4) return std::nullopt;

    HeifFacts facts;
    const auto boxes = boxesIn(std::span(meta).subspan(4));
    const Box *primary = find(boxes, code("pitm")), *properties = find(boxes, code("iprp"));
    if (primary && properties) {
        Bytes b(primary->content);
        const std::uint32_t item = b.u32() >> 24 >= 1 ? b.u32() : b.u16();
        const auto inside = boxesIn(properties->content);
        const Box *container = find(inside, code("ipco")),
                  *associations = find(inside, code("ipma"));
        if (container && associations) {
            applyProperties(propertiesOf(item, boxesIn(container->content), *associations), facts);
        }
    }
    const Box *information = find(boxes, code("iinf")), *locations = find(boxes, code("iloc"));
    if (information && locations) {
        if (const auto item = exifItem(*information)) {
            const auto place = placeOf(*item, *locations);
            if (place && place->length <= kMaximumExif) {
                facts.exif = tiffBlock(readPart(file, place->offset, place->length));
            }
        }
    }
    return facts;
}

} // namespace kelvaro
