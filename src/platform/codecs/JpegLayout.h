// Where the parts of a JPEG file lie (ITU-T T.81, annex B), as far as it takes to join and to part
// scans at their restart markers. Understands one scan of Huffman-coded 8-bit samples, which is
// what nearly every photo has.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

namespace kelvaro {

struct JpegLayout {
    std::size_t heightAt = 0; // of the picture, in its frame header: two bytes, the high one first
    int width = 0, height = 0;
    int components = 0, acrossMost = 1, downMost = 1; // sampling factors
    unsigned restartInterval = 0;                     // in groups of blocks; 0 none
    std::size_t scan = 0;                             // first byte of the coded data

    // None for what is not of that kind or not whole up to the scan.
    static std::optional<JpegLayout> of(std::span<const std::byte> file);
    void setHeight(std::span<std::byte> file, int height) const;

    // How many rows of pixels lie between two restarts; 0 where restarts are within rows of blocks.
    int rowsPerRestart() const;
    // Where the coded data begin after each restart marker, the scan's begin first and its end
    // last; none where the markers are not those that the picture must have.
    std::optional<std::vector<std::size_t>> restarts(std::span<const std::byte> file) const;
};

} // namespace kelvaro
