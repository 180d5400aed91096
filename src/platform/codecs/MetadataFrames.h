// The frames in which the formats carry EXIF and IPTC blocks. Pure functions, any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace kelvaro {

// IPTC records as the one image resource of a Photoshop block, as JPEG and PNG carry them.
std::vector<std::byte> photoshopResource(std::span<const std::byte> iptc);

// The text of a PNG chunk "Raw profile type NAME", the older programs' way: length and hexadecimal
// digits.
std::string rawProfileText(const std::string& name, std::span<const std::byte> data);

// The first directory of an EXIF block in little-endian byte order. Only what TIFF files need of
// it; offsets that lead outside the block count as absent.
class ExifDirectory {
public:
    explicit ExifDirectory(std::span<const std::byte> block);

    // Where the directory lies that a tag points to.
    std::optional<std::uint32_t> offset(std::uint16_t tag) const;
    std::optional<std::string> text(std::uint16_t tag) const;
    std::optional<double> rational(std::uint16_t tag) const;
    std::optional<std::uint16_t> number(std::uint16_t tag) const;

private:
    struct Entry {
        std::uint16_t type = 0;
        std::span<const std::byte> data;
    };
    std::optional<std::uint32_t> word(std::size_t at, int bytes) const;
    std::optional<Entry> find(std::uint16_t tag) const;

    std::span<const std::byte> block_;
};

} // namespace kelvaro
