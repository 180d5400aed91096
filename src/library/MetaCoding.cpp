#include "library/MetaCoding.h"

#include <cstring>

namespace kelvaro {

namespace {

class Writer {
public:
    template<class T>
    void put(const T& value) {
        bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
    }
    void put(const std::string& text) {
        put(static_cast<std::uint32_t>(text.size()));
        bytes.append(text);
    }
    template<class T>
    void put(const std::optional<T>& value) {
        put(static_cast<std::uint8_t>(value.has_value()));
        if (value) put(*value);
    }
    std::string bytes;
};

class Reader {
public:
    explicit Reader(std::string_view bytes) : rest_(bytes) {}
    template<class T>
    void take(T& value) {
        if (!has(sizeof value)) return;
        std::memcpy(&value, rest_.data(), sizeof value);
        rest_.remove_prefix(sizeof value);
    }
    void take(std::string& text) {
        std::uint32_t size = 0;
        take(size);
        if (!has(size)) return;
        text = rest_.substr(0, size);
        rest_.remove_prefix(size);
    }
    template<class T>
    void take(std::optional<T>& value) {
        std::uint8_t isThere = 0;
        take(isThere);
        if (isThere) take(value.emplace());
    }
    bool isWhole() const { return isWhole_ && rest_.empty(); }

private:
    bool has(std::size_t size) {
        isWhole_ = isWhole_ && size <= rest_.size();
        return isWhole_;
    }

    std::string_view rest_;
    bool isWhole_ = true;
};

// The fields in the order in which they are stored.
template<class Meta, class Visit>
void visit(Meta& meta, Visit&& field) {
    field(meta.schemaVersion);
    field(meta.width);
    field(meta.height);
    field(meta.make);
    field(meta.camera);
    field(meta.lens);
    field(meta.focalLength);
    field(meta.iso);
    field(meta.aperture);
    field(meta.shutter);
    field(meta.focal35);
    field(meta.takenOnWall);
    field(meta.takenOffset);
}

} // namespace

std::string encodedMeta(const PhotoMeta& meta) {
    Writer writer;
    visit(meta, [&](const auto& field) { writer.put(field); });
    return std::move(writer.bytes);
}

std::optional<PhotoMeta> decodedMeta(std::string_view bytes, std::int64_t size, FileTime modified,
                                     const LocalCalendar& calendar) {
    Reader reader(bytes);
    PhotoMeta meta;
    visit(meta, [&](auto& field) { reader.take(field); });
    if (!reader.isWhole() || meta.schemaVersion != PhotoMeta::currentSchemaVersion) {
        return std::nullopt;
    }
    meta.size = size;
    meta.mtime = modified;
    if (meta.takenOnWall) meta.taken = instantOf({*meta.takenOnWall, meta.takenOffset}, calendar);
    return meta;
}

} // namespace kelvaro
