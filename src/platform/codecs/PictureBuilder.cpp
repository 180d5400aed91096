#include "platform/codecs/PictureBuilder.h"

#include <cmath>
#include <limits>
#include <type_traits>

namespace kelvaro {

namespace {

// The value that means 1.
template<class Sample>
constexpr float kFull = std::is_floating_point_v<Sample>
                            ? 1.0F
                            : float(std::numeric_limits<Sample>::max());

bool fits(const ColourProfile& profile, ColourModel model) {
    switch (model) {
    case ColourModel::grey:
        return profile.space() != ColourProfile::Space::cmyk;
    // A grey profile on RGB samples: some libraries deliver grey pictures as equal triples.
    case ColourModel::rgb:
        return profile.space() == ColourProfile::Space::rgb ||
               (profile.space() == ColourProfile::Space::grey && profile.isMatrix());
    case ColourModel::cmyk:
        return profile.space() == ColourProfile::Space::cmyk;
    case ColourModel::lab:
        return false;
    }
    return false;
}

int transformChannelsOf(const ColourProfile& profile) {
    return profile.space() == ColourProfile::Space::grey  ? 1
           : profile.space() == ColourProfile::Space::rgb ? 3
                                                          : 4;
}

struct Interpretation {
    ColourDecoding colour;
    std::string name;
    SampleType outputType = SampleType::u8;
    std::unique_ptr<RowTransform> transform;
    int transformChannels = 3;
};

std::optional<Interpretation> byProfile(const StoredPicture& stored) {
    if (stored.icc.empty()) return std::nullopt;
    const auto profile = ColourProfile::parse(stored.icc);
    if (!profile || !fits(*profile, stored.model)) return std::nullopt;
    Interpretation how;
    how.name = profile->name();
    if (profile->isMatrix() && stored.type != SampleType::f32) {
        how.outputType = stored.type;
        how.colour = profile->decoding(stored.type);
        return how;
    }
    how.outputType = SampleType::f32;
    how.transform = profile->transform();
    how.transformChannels = transformChannelsOf(*profile);
    if (!how.transform) return std::nullopt;
    return how;
}

Interpretation withoutProfile(const StoredPicture& stored) {
    Interpretation how;
    how.outputType = stored.type;
    if (stored.model == ColourModel::lab) {
        how.name = "CIELAB";
        how.transform = labTransform();
        if (!how.transform) throw std::bad_alloc();
    } else if (stored.type == SampleType::f32) {
        how.name = "Linear Rec. 709";
    } else {
        how.name = stored.standard.name;
        how.colour = decodingOf(stored.standard, stored.type);
    }
    return how;
}

template<class Sample>
Sample quantised(float value) {
    if constexpr (std::is_floating_point_v<Sample>)
        return value;
    else
        return Sample(std::min(value + 0.5F, kFull<Sample>));
}

template<class Sample>
void makeFinite(Sample* samples, int count) {
    if constexpr (std::is_floating_point_v<Sample>)
        for (int i = 0; i < count; ++i)
            if (!std::isfinite(samples[i])) samples[i] = 0;
}

template<class Sample>
void unpremultiply(Sample* row, int width, int colours) {
    for (int x = 0; x < width; ++x) {
        Sample* pixel = row + x * (colours + 1);
        const float alpha = float(pixel[colours]);
        const float scale = alpha > 0 ? kFull<Sample> / alpha : 0.0F;
        for (int c = 0; c < colours; ++c)
            pixel[c] = quantised<Sample>(float(pixel[c]) * scale);
    }
    makeFinite(row, width * (colours + 1));
}

} // namespace

int channelsOf(ColourModel model) {
    return model == ColourModel::grey ? 1 : model == ColourModel::cmyk ? 4 : 3;
}

Result<PictureBuilder> PictureBuilder::begin(const DecodeJob& job, const StoredPicture& stored) {
    const int storedChannels = channelsOf(stored.model) + (stored.alpha != AlphaKind::none);
    const int channels = stored.alpha != AlphaKind::none ? 4 : 3;
    const double storedBytes = double(stored.size.width) * double(stored.size.height) *
                               storedChannels * double(sampleBytes(stored.type));
    const auto check = [&](SampleType output) {
        return checkClaimedSize(job, stored.size.width, stored.size.height,
                                channels * std::int64_t(sampleBytes(output)), storedBytes,
                                stored.largestExpansion);
    };
    if (auto sane = check(stored.type); !sane) return fail(std::move(sane).error());
    auto profiled = byProfile(stored);
    Interpretation how = profiled ? std::move(*profiled) : withoutProfile(stored);
    if (auto sane = check(how.outputType); !sane) return fail(std::move(sane).error());
    return PictureBuilder(stored, std::move(how.colour), std::move(how.name), how.outputType,
                          std::move(how.transform), how.transformChannels);
}

PictureBuilder::PictureBuilder(const StoredPicture& stored, ColourDecoding colour, std::string name,
                               SampleType outputType, std::unique_ptr<RowTransform> transform,
                               int transformChannels)
    : width_(stored.size.width),
      fullSize_(uprightSize(stored.fullSize.width > 0 ? stored.fullSize : stored.size,
                            stored.orientation)),
      model_(stored.model),
      alpha_(stored.alpha),
      storedType_(stored.type),
      fileBitsPerSample_(stored.fileBitsPerSample),
      transformChannels_(transformChannels),
      transform_(std::move(transform)),
      isDirect_(!transform_ && model_ == ColourModel::rgb),
      colour_(std::move(colour)),
      profileName_(std::move(name)),
      upright_(stored.size, stored.orientation, alpha_ == AlphaKind::none ? 3 : 4, outputType) {
    const std::size_t pixels = std::size_t(width_);
    if (!isDirect_)
        row_.resize(pixels * std::size_t(channelsOf(model_) + (alpha_ != AlphaKind::none)) *
                    sampleBytes(storedType_));
    if (transform_) {
        before_.resize(pixels * std::size_t(transformChannels_));
        after_.resize(pixels * 3);
    }
}

std::byte* PictureBuilder::row() {
    return isDirect_ ? upright_.row() : row_.data();
}

std::byte* PictureBuilder::rows() {
    return isDirect_ && storedType_ != SampleType::f32 && alpha_ == AlphaKind::none
               ? upright_.rows()
               : nullptr;
}

void PictureBuilder::rowDone() {
    switch (storedType_) {
    case SampleType::u8:
        finishRow<std::uint8_t>();
        break;
    case SampleType::u16:
        finishRow<std::uint16_t>();
        break;
    case SampleType::f32:
        finishRow<float>();
        break;
    }
    upright_.rowDone();
}

template<class Sample>
void PictureBuilder::finishRow() {
    auto* stored = reinterpret_cast<Sample*>(row());
    const int colours = channelsOf(model_);
    makeFinite(stored, width_ * (colours + (alpha_ != AlphaKind::none)));
    if (alpha_ == AlphaKind::premultiplied) unpremultiply(stored, width_, colours);
    if (transform_)
        transformRow(stored, reinterpret_cast<float*>(upright_.row()));
    else if (!isDirect_)
        convertRow(stored, reinterpret_cast<Sample*>(upright_.row()));
}

// Grey to three equal channels. CMYK without a profile: each ink takes its share of the light that
// black leaves, in sRGB's encoding, which is what most programs show for such files.
template<class Sample>
void PictureBuilder::convertRow(const Sample* from, Sample* to) const {
    const bool hasAlpha = alpha_ != AlphaKind::none;
    const bool isInk = model_ == ColourModel::cmyk;
    const float full = kFull<Sample>;
    for (int x = 0; x < width_; ++x) {
        for (int c = 0; c < 3; ++c) {
            if (isInk) {
                const float light = (full - float(from[c])) * (full - float(from[3])) / full;
                if constexpr (std::is_floating_point_v<Sample>)
                    to[c] = float(decodeTransfer({}, double(light)));
                else
                    to[c] = quantised<Sample>(light);
            } else {
                to[c] = from[0];
            }
        }
        from += channelsOf(model_);
        to += 3;
        if (hasAlpha) *to++ = *from++;
    }
}

template<class Sample>
void PictureBuilder::transformRow(const Sample* from, float* to) {
    const int colours = channelsOf(model_);
    const int stride = colours + (alpha_ != AlphaKind::none);
    const float scale = 1 / kFull<Sample>;
    for (int x = 0; x < width_; ++x)
        for (int c = 0; c < transformChannels_; ++c)
            before_[std::size_t(x * transformChannels_ + c)] =
                float(from[x * stride + std::min(c, colours - 1)]) * scale;
    transform_->run(before_.data(), after_.data(), width_);
    for (int x = 0; x < width_; ++x) {
        for (int c = 0; c < 3; ++c)
            *to++ = after_[std::size_t(3 * x + c)];
        if (alpha_ != AlphaKind::none) *to++ = float(from[x * stride + colours]) * scale;
    }
}

DecodedBitmap PictureBuilder::finish() {
    return {upright_.take(), std::move(colour_), std::move(profileName_), fileBitsPerSample_,
            fullSize_};
}

} // namespace kelvaro
