// Pictures as the report compares and shows them: 8-bit sRGB, and the CIE 1976 colours behind it.
#pragma once

#include "platform/Image.h"
#include "platform/ImageFiles.h"
#include "platform/Renderer.h"

#include <array>
#include <filesystem>
#include <vector>

namespace kelvaro::report {

using Lab = std::array<double, 3>;

// Of linear Rec. 709 under its own white, D65.
Lab labOf(const std::array<double, 3>& linear);
double chroma(const Lab& colour);
// CIEDE2000 (CIE 142-2001, after G. Sharma et al., 2005), all parametric factors 1.
double difference(const Lab& a, const Lab& b);

double displayed(double linear); // clipped to 0 … 1, IEC 61966-2-1
double lightOf(double display);

struct Picture {
    PixelSize size;
    std::vector<std::uint8_t> rgb; // rows from the top

    Picture() = default;
    explicit Picture(PixelSize pixels, std::uint8_t grey = 255)
        : size(pixels), rgb(std::size_t(pixels.width) * std::size_t(pixels.height) * 3, grey) {}
    const std::uint8_t* at(int x, int y) const {
        return rgb.data() + (std::size_t(y) * std::size_t(size.width) + std::size_t(x)) * 3;
    }
    std::uint8_t* at(int x, int y) {
        return rgb.data() + (std::size_t(y) * std::size_t(size.width) + std::size_t(x)) * 3;
    }
    Lab lab(int x, int y) const;
    void place(const Picture& other, int left, int top); // cut where it reaches over the edge
    Picture part(int left, int top, PixelSize pixels) const;
};

// Clipped to sRGB. Failures of the renderer end the program with their message.
Picture rendered(const Image& image, Renderer& renderer);
Picture renderedPart(const Image& image, const PixelRect& rect, Renderer& renderer);
void save(const Picture& picture, const std::filesystem::path& png);
// Ends the program.
[[noreturn]] void stop(const std::string& message);

} // namespace kelvaro::report
