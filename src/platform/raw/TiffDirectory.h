// Directories of a TIFF file as values: what the RAW decoder does not hand out (active area, crops,
// black level tables, colour matrices, opcode lists, embedded previews) is read from here. Hostile
// counts, offsets, loops and depths are bounded; what does not fit is left out.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace kelvaro {

struct TiffEntry {
    std::uint16_t type = 0;
    std::uint32_t count = 0;
    std::uint64_t offset = 0; // of the value in the file
};

// Fills the bytes from an offset; returns how many there were.
using ReadAt = std::function<std::size_t(std::uint64_t offset, std::span<std::byte> bytes)>;

class TiffFile;

class TiffDirectory {
public:
    bool has(std::uint16_t tag) const { return entries_.contains(tag); }
    const TiffEntry* find(std::uint16_t tag) const;
    // Up to `limit` numbers; empty when the tag is absent, is no number type, or is truncated. A
    // rational with denominator 0 is NaN.
    std::vector<double> numbers(std::uint16_t tag, std::size_t limit = 64) const;
    std::optional<double> number(std::uint16_t tag) const; // the first, when finite
    std::string text(std::uint16_t tag) const;             // at most 255 bytes
    bool isBigEndian() const { return bigEndian_; }
    // The raw value, at most `limit` bytes; empty when longer or truncated.
    std::vector<std::byte> bytes(std::uint16_t tag, std::size_t limit) const;

private:
    friend class TiffFile;
    std::map<std::uint16_t, TiffEntry> entries_;
    ReadAt read_;
    bool bigEndian_ = false;
};

class TiffFile {
public:
    // Walks the chained directories and the ones that SubIFDs, the EXIF pointer and the
    // interoperability pointer name; at most 32. Not a TIFF file: no directories.
    explicit TiffFile(ReadAt read);
    const std::vector<TiffDirectory>& directories() const { return directories_; }

private:
    void walk(std::uint64_t offset, int depth);
    std::vector<TiffDirectory> directories_;
    std::vector<std::uint64_t> visited_;
    ReadAt read_;
    bool bigEndian_ = false;
};

} // namespace kelvaro
