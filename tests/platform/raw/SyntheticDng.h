// Writes small uncompressed DNG files whose every developed pixel is known: a sensor that sees
// linear Rec. 709 itself, so that the picture is the scene function.
#pragma once

#include "fakes/TemporaryFolder.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace kelvaro::test {

struct SyntheticDng {
    int width = 64, height = 48;             // stored photosites
    std::array<int, 4> active{0, 0, 48, 64}; // top, left, bottom, right
    std::array<int, 4> crop{0, 0, 64, 48};   // left, top, width, height inside the active area
    // Of the active area's corner, 2 × 2 or 6 × 6; "" for linear, three samples.
    std::string pattern = "RGGB";
    std::array<int, 4> black{256, 256, 256, 256};
    std::vector<double> rowDeltas, columnDeltas; // of the active rows and columns
    // What stored values stand for, its length − 1 being the largest of them; empty: themselves.
    std::vector<int> linearisation;
    std::array<double, 2> scale{1, 1}; // across, down
    double exposureSeconds = 0;
    bool statesExposure = true;
    int white = 16383;
    // What the tags claim instead, to be told from what is stored.
    std::optional<int> claimedWhite;
    std::optional<std::array<int, 2>> claimedSize; // width, height
    int orientation = 1;
    double exposureStops = 0;
    std::array<double, 3> neutral{1, 1, 1};
    // Rows X, Y, Z of linear Rec. 709 inverted: camera values are the scene's.
    std::array<double, 9> matrix{3.2409699, -1.5373832, -0.4986108, -0.9692436, 1.8759675,
                                 0.0415551, 0.0556301,  -0.2039770, 1.0569715};
    std::vector<double> calibration;                        // of this very camera, nine numbers
    std::vector<int> opcodeList1, opcodeList2, opcodeList3; // bytes
    std::vector<std::byte> jpeg, secondJpeg;                // embedded previews
    // Scene value of a channel at (row, column) of the active area; 1 saturates.
    std::function<double(int row, int column, int channel)> scene;

    std::vector<std::uint8_t> bytes() const;
    std::filesystem::path write(const std::string& name) const {
        const auto path = temporaryPath(name);
        const auto data = bytes();
        std::ofstream(path, std::ios::binary)
            .write(reinterpret_cast<const char*>(data.data()), std::streamsize(data.size()));
        return path;
    }
};

class TiffWriter {
public:
    void shorts(int tag, const std::vector<int>& v) {
        entry(tag, 3, v.size(), pack<std::uint16_t>(v));
    }
    void longs(int tag, const std::vector<int>& v) {
        entry(tag, 4, v.size(), pack<std::uint32_t>(v));
    }
    void octets(int tag, const std::vector<int>& v) {
        entry(tag, 1, v.size(), pack<std::uint8_t>(v));
    }
    void undefined(int tag, const std::vector<int>& v) {
        entry(tag, 7, v.size(), pack<std::uint8_t>(v));
    }
    void undefined(int tag, const std::vector<std::byte>& v) {
        std::vector<std::uint8_t> value;
        for (const std::byte b : v)
            value.push_back(std::uint8_t(b));
        entry(tag, 7, v.size(), std::move(value));
    }
    void text(int tag, const std::string& v) {
        entry(tag, 2, v.size() + 1, std::vector<std::uint8_t>(v.c_str(), v.c_str() + v.size() + 1));
    }
    void rationals(int tag, const std::vector<double>& v, bool isSigned = true) {
        std::vector<int> flat;
        for (const double x : v) {
            flat.push_back(int(x * 1e6 + (x < 0 ? -0.5 : 0.5)));
            flat.push_back(1000000);
        }
        entry(tag, isSigned ? 10 : 5, v.size(), pack<std::uint32_t>(flat));
    }
    // The file: header, one directory, values, then `pixels`, whose offset goes into tag 273, and a
    // JPEG, whose offset goes into tag 513.
    std::vector<std::uint8_t> file(const std::vector<std::uint8_t>& pixels,
                                   const std::vector<std::byte>& jpeg = {}) {
        longs(273, {0});
        longs(279, {int(pixels.size())});
        if (!jpeg.empty()) {
            longs(513, {0});
            longs(514, {int(jpeg.size())});
        }
        std::size_t position = 8 + 2 + entries_.size() * 12 + 4;
        std::vector<std::uint8_t> out{'I', 'I', 42, 0, 8, 0, 0, 0}, values;
        append(out, std::uint16_t(entries_.size()));
        std::size_t total = position;
        for (const auto& [tag, e] : entries_)
            total += e.value.size() > 4 ? e.value.size() : 0;
        for (auto& [tag, e] : entries_) {
            if (tag == 273) e.value = pack<std::uint32_t>(std::vector<int>{int(total)});
            if (tag == 513)
                e.value = pack<std::uint32_t>(std::vector<int>{int(total + pixels.size())});
            append(out, std::uint16_t(tag));
            append(out, std::uint16_t(e.type));
            append(out, std::uint32_t(e.count));
            if (e.value.size() > 4) {
                append(out, std::uint32_t(position + values.size()));
                values.insert(values.end(), e.value.begin(), e.value.end());
            } else {
                e.value.resize(4);
                out.insert(out.end(), e.value.begin(), e.value.end());
            }
        }
        append(out, std::uint32_t(0));
        out.insert(out.end(), values.begin(), values.end());
        out.insert(out.end(), pixels.begin(), pixels.end());
        for (const std::byte b : jpeg)
            out.push_back(std::uint8_t(b));
        return out;
    }

private:
    struct Entry {
        int type;
        std::size_t count;
        std::vector<std::uint8_t> value;
    };
    template<class T>
    static void append(std::vector<std::uint8_t>& out, T v) {
        for (std::size_t i = 0; i < sizeof(T); ++i)
            out.push_back(std::uint8_t(v >> (8 * i)));
    }
    template<class T>
    static std::vector<std::uint8_t> pack(const std::vector<int>& values) {
        std::vector<std::uint8_t> out;
        for (const int v : values)
            append(out, T(v));
        return out;
    }
    void entry(int tag, int type, std::size_t count, std::vector<std::uint8_t> value) {
        entries_[tag] = {type, count, std::move(value)};
    }
    std::map<int, Entry> entries_;
};

inline std::vector<std::uint8_t> SyntheticDng::bytes() const {
    const bool isLinear = pattern.empty();
    const int samples = isLinear ? 3 : 1, period = pattern.size() == 36 ? 6 : 2;
    std::vector<std::uint8_t> pixels;
    for (int row = 0; row < height; ++row) {
        for (int column = 0; column < width; ++column) {
            for (int s = 0; s < samples; ++s) {
                const int r = row - active[0], c = column - active[1];
                const int cell = ((r & 1) * 2) + (c & 1);
                const auto filter = std::size_t((r + 60) % period * period + (c + 60) % period);
                const bool isLit = row >= active[0] && column >= active[1] && row < active[2] &&
                                   column < active[3];
                const int channel = isLinear                 ? s
                                    : pattern[filter] == 'R' ? 0
                                    : pattern[filter] == 'G' ? 1
                                                             : 2;
                const double level = black[std::size_t(isLinear ? 0 : cell)];
                double delta = 0;
                if (isLit && !rowDeltas.empty()) delta += rowDeltas[std::size_t(r)];
                if (isLit && !columnDeltas.empty()) delta += columnDeltas[std::size_t(c)];
                double v = level + delta + (isLit ? scene(r, c, channel) * (white - level) : 0);
                v = v < 0 ? 0 : v > white ? white : v;
                int dn = int(v + 0.5);
                if (!linearisation.empty()) {
                    const auto at =
                        std::lower_bound(linearisation.begin(), linearisation.end() - 1, dn);
                    dn = int(at - linearisation.begin());
                }
                pixels.push_back(std::uint8_t(dn));
                pixels.push_back(std::uint8_t(dn >> 8));
            }
        }
    }
    TiffWriter t;
    t.longs(254, {0});
    const std::array<int, 2> size = claimedSize.value_or(std::array{width, height});
    t.longs(256, {size[0]});
    t.longs(257, {size[1]});
    t.shorts(258, std::vector<int>(std::size_t(samples), 16));
    t.shorts(259, {1});
    t.shorts(262, {isLinear ? 34892 : 32803});
    t.text(271, "Synthetic");
    t.text(272, "Test Body");
    t.shorts(274, {orientation});
    t.shorts(277, {samples});
    t.longs(278, {height});
    t.shorts(284, {1});
    t.octets(50706, {1, 4, 0, 0});
    t.text(50708, "Synthetic Test Body");
    if (!isLinear) {
        std::vector<int> colours;
        for (const char c : pattern)
            colours.push_back(c == 'R' ? 0 : c == 'G' ? 1 : 2);
        t.shorts(33421, {period, period});
        t.octets(33422, colours);
        t.shorts(50713, {2, 2});
        t.shorts(50714, {black[0], black[1], black[2], black[3]});
    } else {
        t.shorts(50714, {black[0], black[0], black[0]});
    }
    if (!rowDeltas.empty()) t.rationals(50716, rowDeltas);
    if (!columnDeltas.empty()) t.rationals(50715, columnDeltas);
    if (!linearisation.empty()) t.shorts(50712, linearisation);
    if (scale[0] != scale[1]) t.rationals(50718, {scale[0], scale[1]}, false);
    if (exposureSeconds > 0) t.rationals(33434, {exposureSeconds}, false);
    t.shorts(50717, std::vector<int>(std::size_t(samples), claimedWhite.value_or(white)));
    t.longs(50719, {crop[0], crop[1]});
    t.longs(50720, {crop[2], crop[3]});
    t.rationals(50721, {matrix.begin(), matrix.end()});
    if (!calibration.empty()) t.rationals(50723, calibration);
    t.rationals(50728, {neutral.begin(), neutral.end()}, false);
    if (statesExposure) t.rationals(50730, {exposureStops});
    t.shorts(50778, {21});
    if (!opcodeList1.empty()) t.undefined(51008, opcodeList1);
    if (!opcodeList2.empty()) t.undefined(51009, opcodeList2);
    if (!opcodeList3.empty()) t.undefined(51022, opcodeList3);
    t.longs(50829, {active[0], active[1], active[2], active[3]});
    if (!secondJpeg.empty()) t.undefined(46, secondJpeg); // as one maker keeps it
    return t.file(pixels, jpeg);
}

} // namespace kelvaro::test
