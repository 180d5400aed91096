// The property dictionaries of a photo file (EXIF, TIFF, EXIF auxiliary, GPS, IPTC), read without
// decoding pixels. Keys are the standards' own names ("FNumber", "LensModel",
// "OffsetTimeOriginal").
#pragma once

#include "base/Geometry.h"
#include "base/Result.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace kelvaro {

// Text, whole number, number, or a list of numbers. Rationals become numbers; a rational with
// denominator 0 is left out of the dictionary.
using PropertyValue = std::variant<std::string, std::int64_t, double, std::vector<double>>;

class PropertyDictionary {
public:
    std::optional<std::string>
    text(const std::string& key) const;                         // trimmed; empty counts as absent
    std::optional<double> number(const std::string& key) const; // finite; first of a list
    std::optional<std::int64_t> integer(const std::string& key) const;
    const PropertyValue* find(const std::string& key) const;
    void set(std::string key, PropertyValue value);
    const std::map<std::string, PropertyValue>& values() const { return values_; }
    bool isEmpty() const { return values_.empty(); }

private:
    std::map<std::string, PropertyValue> values_;
};

struct PhotoProperties {
    PropertyDictionary exif, tiff, auxiliary, gps, iptc;
    // Pixel size of the main image as stored, before orientation; absent when unknown.
    std::optional<PixelSize> storedSize;
    int orientation = 1; // EXIF 1 … 8; anything else counts as 1

    // storedSize with the sides swapped for orientations 5 to 8.
    std::optional<PixelSize> uprightSize() const;
};

// How the pixels of the main image are stored.
struct PhotoColour {
    std::optional<std::string> profileName; // "Display P3"; of what the file names or embeds
    std::optional<int> bitsPerSample;

    bool operator==(const PhotoColour&) const = default;
};

class PropertyReader {
public:
    virtual ~PropertyReader() = default;
    // Thread-safe. A file without any metadata yields empty dictionaries, not a failure.
    virtual Result<PhotoProperties> read(const std::filesystem::path& path) = 0;
    // Thread-safe; slower. What the file does not tell is absent.
    virtual PhotoColour readColour(const std::filesystem::path& path) = 0;
};

} // namespace kelvaro
