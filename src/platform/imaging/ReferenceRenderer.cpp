#include "platform/imaging/ReferenceRenderer.h"

#include "platform/ImageNode.h"
#include "platform/ImageSpace.h"
#include "platform/imaging/Resampling.h"

#include <cmath>
#include <unordered_map>
#include <vector>

namespace kelvaro {

namespace {

struct Pixel {
    double r = 0, g = 0, b = 0, a = 0;
    Pixel operator*(double k) const { return {r * k, g * k, b * k, a * k}; }
    Pixel& operator+=(const Pixel& p) {
        r += p.r, g += p.g, b += p.b, a += p.a;
        return *this;
    }
};

// Pixels of one image by position, computed on demand and remembered.
class Sampler {
public:
    Pixel at(const ImageNode& node, int x, int y) {
        const PixelRect& e = node.extent;
        if (x < e.x || x >= e.right() || y < e.y || y >= e.top()) return {};
        auto& known = memory_[&node];
        const std::uint64_t key = (std::uint64_t(std::uint32_t(x)) << 32) | std::uint32_t(y);
        if (const auto found = known.find(key); found != known.end()) return found->second;
        const Pixel pixel =
            std::visit([&](const auto& op) { return compute(node, op, x, y); }, node.operation);
        memory_[&node].emplace(key, pixel); // `known` may have moved meanwhile
        return pixel;
    }

private:
    static const ImageNode& input(const ImageNode& node, std::size_t i) {
        return node.inputs[i].node();
    }

    Pixel clampedAt(const ImageNode& node, int x, int y) {
        const PixelRect& e = node.extent;
        return at(node, std::clamp(x, e.x, e.right() - 1), std::clamp(y, e.y, e.top() - 1));
    }

    Pixel compute(const ImageNode& node, const SourceOperation& op, int x, int y) {
        Raster& raster = sources_[&node];
        if (raster.isEmpty()) {
            raster = Raster(node.extent, node.hasAlpha);
            op.source->read(raster.view());
        }
        const int row = rowOfLine(node.extent, y), column = x - node.extent.x;
        return {raster.row(0, row)[column], raster.row(1, row)[column], raster.row(2, row)[column],
                node.hasAlpha ? raster.row(3, row)[column] : 1.0};
    }

    Pixel compute(const ImageNode&, const ConstantOperation& op, int, int) {
        return {op.value[0], op.value[1], op.value[2], op.value[3]};
    }

    Pixel compute(const ImageNode& node, const KernelOperation& op, int x, int y) {
        KernelPixel pixel{};
        double alpha = 1;
        for (std::size_t i = 0; i < node.inputs.size(); ++i) {
            const Pixel p = at(input(node, i), x, y);
            const double values[4] = {p.r, p.g, p.b, p.a};
            std::copy(values, values + 4, pixel.inputs[i]);
            if (i == 0) alpha = p.a;
        }
        pixel.x = x + 0.5;
        pixel.y = y + 0.5;
        pixel.uniforms = op.uniforms.data();
        op.kernel->reference(pixel);
        return {pixel.output[0], pixel.output[1], pixel.output[2], alpha};
    }

    Pixel compute(const ImageNode& node, const ColourMatrixOperation& op, int x, int y) {
        const Pixel p = at(input(node, 0), x, y);
        const auto mixed = [&](const std::array<double, 3>& row) {
            return row[0] * p.r + row[1] * p.g + row[2] * p.b;
        };
        return {mixed(op.rows[0]), mixed(op.rows[1]), mixed(op.rows[2]), p.a};
    }

    Pixel compute(const ImageNode& node, const LanczosOperation& op, int x, int y) {
        const auto axis = [](double position, double scale, double origin, double outputOrigin) {
            return origin + (position + 0.5 - outputOrigin) / scale;
        };
        const double u = axis(x, op.scaleX, op.inputOrigin.x, op.outputOrigin.x);
        const double v = axis(y, op.scaleY, op.inputOrigin.y, op.outputOrigin.y);
        return filtered(node, u, v, lanczosSupport(op.scaleX), lanczosSupport(op.scaleY),
                        [&](double dx, double dy) {
                            return lanczosWeight(dx * std::min(1.0, op.scaleX)) *
                                   lanczosWeight(dy * std::min(1.0, op.scaleY));
                        });
    }

    // The weighted mean of the pixels within the support around (u, v), edges repeated.
    template<class Weight>
    Pixel filtered(const ImageNode& node, double u, double v, double supportX, double supportY,
                   const Weight& weight) {
        Pixel sum;
        double total = 0;
        for (int j = int(std::ceil(v - supportY - 0.5)); j + 0.5 <= v + supportY; ++j)
            for (int i = int(std::ceil(u - supportX - 0.5)); i + 0.5 <= u + supportX; ++i) {
                const double w = weight(i + 0.5 - u, j + 0.5 - v);
                sum += clampedAt(input(node, 0), i, j) * w;
                total += w;
            }
        return sum * (1 / total);
    }

    Pixel compute(const ImageNode& node, const BoxBlurOperation& op, int x, int y) {
        Pixel sum;
        for (int j = y - op.radius; j <= y + op.radius; ++j)
            for (int i = x - op.radius; i <= x + op.radius; ++i)
                sum += at(input(node, 0), i, j);
        const double window = 2 * op.radius + 1;
        return sum * (1 / (window * window));
    }

    Pixel compute(const ImageNode& node, const ClampOperation&, int x, int y) {
        return clampedAt(input(node, 0), x, y);
    }

    Pixel compute(const ImageNode& node, const CropOperation&, int x, int y) {
        return at(input(node, 0), x, y);
    }

    Pixel compute(const ImageNode& node, const TranslateOperation& op, int x, int y) {
        return at(input(node, 0), x - op.dx, y - op.dy);
    }

    Pixel compute(const ImageNode& node, const AffineOperation& op, int x, int y) {
        const AffineTransform& t = op.inverse;
        const double u = t.a * (x + 0.5) + t.c * (y + 0.5) + t.tx;
        const double v = t.b * (x + 0.5) + t.d * (y + 0.5) + t.ty;
        const double support = samplingRadius(op.sampling);
        return filtered(node, u, v, support, support, [&](double dx, double dy) {
            return samplingWeight(op.sampling, dx) * samplingWeight(op.sampling, dy);
        });
    }

    Pixel compute(const ImageNode& node, const StretchOperation&, int x, int y) {
        const PixelRect &from = input(node, 0).extent, &over = node.extent;
        const double u = from.x + (x + 0.5 - over.x) * from.width / over.width;
        const double v = from.y + (y + 0.5 - over.y) * from.height / over.height;
        return filtered(node, u, v, 1, 1, [](double dx, double dy) {
            return std::max(0.0, 1 - std::abs(dx)) * std::max(0.0, 1 - std::abs(dy));
        });
    }

    Pixel compute(const ImageNode& node, const OverOperation&, int x, int y) {
        Pixel top = at(input(node, 0), x, y);
        top += at(input(node, 1), x, y) * (1 - top.a);
        return top;
    }

    Pixel compute(const ImageNode& node, const MaximumOperation&, int x, int y) {
        const Pixel p = at(input(node, 0), x, y), q = at(input(node, 1), x, y);
        return {std::max(p.r, q.r), std::max(p.g, q.g), std::max(p.b, q.b), std::max(p.a, q.a)};
    }

    std::unordered_map<const ImageNode*, std::unordered_map<std::uint64_t, Pixel>> memory_;
    std::unordered_map<const ImageNode*, Raster> sources_;
};

double srgbCurve(double x) {
    return x <= 0.0031308 ? 12.92 * x : 1.055 * std::pow(x, 1 / 2.4) - 0.055;
}

double finished(double value, const BitmapFormat& format) {
    if (format.type == SampleType::f32) return value;
    const double inside = value > 0 ? std::min(value, 1.0) : 0.0;
    return format.curve == TransferCurve::sRGB ? srgbCurve(inside) : inside;
}

void store(double value, SampleType type, std::byte* to) {
    if (type == SampleType::u8)
        *reinterpret_cast<std::uint8_t*>(to) = static_cast<std::uint8_t>(value * 255 + 0.5);
    else if (type == SampleType::u16)
        *reinterpret_cast<std::uint16_t*>(to) = static_cast<std::uint16_t>(value * 65535 + 0.5);
    else
        *reinterpret_cast<float*>(to) = static_cast<float>(value);
}

class ReferenceRenderer : public Renderer {
public:
    Result<Raster> renderRaster(const Image& image, const PixelRect& rect,
                                const Cancellation* cancellation) override {
        Raster raster(rect, image.hasAlpha() || !image.extent().contains(rect));
        Sampler sampler;
        for (int row = 0; row < rect.height; ++row) {
            if (cancellation && cancellation->isCancelled())
                return fail(FailureKind::cancelled, "The rendering was stopped.");
            for (int column = 0; column < rect.width; ++column) {
                const Pixel p = sampler.at(image.node(), rect.x + column, lineOfRow(rect, row));
                const double values[4] = {p.r, p.g, p.b, p.a};
                for (int plane = 0; plane < (raster.hasAlpha() ? 4 : 3); ++plane)
                    raster.row(plane, row)[column] = static_cast<float>(values[plane]);
            }
        }
        return raster;
    }

    Result<std::vector<Raster>> renderRasters(const std::vector<Image>& images,
                                              const PixelRect& rect,
                                              const Cancellation* cancellation) override {
        std::vector<Raster> rasters;
        for (const Image& image : images) {
            auto raster = renderRaster(image, rect, cancellation);
            if (!raster) return fail(std::move(raster).error());
            rasters.push_back(std::move(*raster));
        }
        return rasters;
    }

    Result<Bitmap> renderBitmap(const Image& image, const PixelRect& rect,
                                const BitmapFormat& format,
                                const Cancellation* cancellation) override {
        using Alpha = BitmapFormat::Alpha;
        const bool alpha =
            format.alpha == Alpha::straight && (image.hasAlpha() || !image.extent().contains(rect));
        Bitmap bitmap(rect.size(), alpha ? 4 : 3, format.type);
        const std::size_t step = sampleBytes(format.type);
        Sampler sampler;
        for (int row = 0; row < rect.height; ++row) {
            if (cancellation && cancellation->isCancelled())
                return fail(FailureKind::cancelled, "The rendering was stopped.");
            std::byte* to = bitmap.row<std::byte>(row);
            for (int column = 0; column < rect.width; ++column) {
                Pixel p = sampler.at(image.node(), rect.x + column, lineOfRow(rect, row));
                if (format.alpha == Alpha::overWhite) {
                    const double rest = 1 - p.a;
                    p.r += rest, p.g += rest, p.b += rest;
                } else if (alpha) {
                    p = p.a > 0 ? Pixel{p.r / p.a, p.g / p.a, p.b / p.a, p.a} : Pixel{};
                }
                for (const auto& m : format.toTarget) {
                    const double mixed =
                        double(m[0]) * p.r + double(m[1]) * p.g + double(m[2]) * p.b;
                    store(finished(mixed, format), format.type, to);
                    to += step;
                }
                if (!alpha) continue;
                store(format.type == SampleType::f32 ? p.a : std::clamp(p.a, 0.0, 1.0), format.type,
                      to);
                to += step;
            }
        }
        return bitmap;
    }
};

} // namespace

std::unique_ptr<Renderer> makeReferenceRenderer() {
    return std::make_unique<ReferenceRenderer>();
}

} // namespace kelvaro
