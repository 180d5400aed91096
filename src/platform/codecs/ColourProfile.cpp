#include "platform/codecs/ColourProfile.h"

#include "platform/codecs/LcmsContext.h"
#include "platform/codecs/OutputProfile.h"

#include <algorithm>
#include <cmath>

namespace kelvaro {

// The profile keeps its context alive, transforms keep the profile alive.
struct ColourProfile::Handle {
    LcmsContext context;
    LcmsProfile profile;
};

namespace {

constexpr std::size_t kLargestProfile = std::size_t(64) << 20;
constexpr double kMatrixTolerance = 1.5e-3; // rounding of s15Fixed16 and of published D50 primaries
constexpr double kCurveTolerance = 3e-4;    // 1,024-entry tables of 16 bits and rounded parameters

std::optional<ColourProfile::Space> spaceOf(cmsHPROFILE profile) {
    switch (cmsGetColorSpace(profile)) {
    case cmsSigGrayData:
        return ColourProfile::Space::grey;
    case cmsSigRgbData:
        return ColourProfile::Space::rgb;
    case cmsSigCmykData:
        return ColourProfile::Space::cmyk;
    default:
        return std::nullopt;
    }
}

bool describesDevice(cmsHPROFILE profile) {
    const auto kind = cmsGetDeviceClass(profile);
    const auto connection = cmsGetPCS(profile);
    return (kind == cmsSigInputClass || kind == cmsSigDisplayClass || kind == cmsSigOutputClass ||
            kind == cmsSigColorSpaceClass) &&
           (connection == cmsSigXYZData || connection == cmsSigLabData);
}

std::string descriptionOf(cmsHPROFILE profile) {
    char text[256] = {};
    cmsGetProfileInfoASCII(profile, cmsInfoDescription, "en", "US", text, sizeof text);
    const std::string name(text);
    return name.empty() ? "Embedded profile" : name;
}

// Tables are interpolated here in double: LittleCMS would round each value to 16 bits, which shows
// as steps in the shadows of 16-bit pictures.
double evaluate(const cmsToneCurve* curve, double v) {
    double value = 0;
    if (cmsGetToneCurveParametricType(curve) != 0) {
        value = double(cmsEvalToneCurveFloat(curve, float(v)));
    } else {
        const std::size_t last = cmsGetToneCurveEstimatedTableEntries(curve) - 1;
        const cmsUInt16Number* table = cmsGetToneCurveEstimatedTable(curve);
        const double at = v * double(last);
        const auto below = std::min(std::size_t(at), last), above = std::min(below + 1, last);
        value = table[below] + (at - double(below)) * (double(table[above]) - table[below]);
        value /= 65535;
    }
    return std::isfinite(value) ? std::clamp(value, 0.0, 1.0) : 0.0;
}

bool isSrgbCurve(const cmsToneCurve* curve) {
    for (int i = 0; i <= 255; ++i)
        if (std::abs(evaluate(curve, i / 255.0) - decodeTransfer({}, i / 255.0)) > kCurveTolerance)
            return false;
    return true;
}

const cmsToneCurve* curveOf(cmsHPROFILE profile, cmsTagSignature tag) {
    auto* curve = static_cast<const cmsToneCurve*>(cmsReadTag(profile, tag));
    return curve && cmsGetToneCurveEstimatedTableEntries(curve) >= 2 ? curve : nullptr;
}

// Colorant columns to linear Rec. 709; none where they are missing or cannot be a display's.
std::optional<Matrix3> colorantMatrix(cmsHPROFILE profile) {
    Matrix3 colorants{};
    double white = 0;
    const cmsTagSignature tags[] = {cmsSigRedColorantTag, cmsSigGreenColorantTag,
                                    cmsSigBlueColorantTag};
    for (std::size_t j = 0; j < 3; ++j) {
        const auto* xyz = static_cast<const cmsCIEXYZ*>(cmsReadTag(profile, tags[j]));
        if (!xyz) return std::nullopt;
        colorants[0][j] = xyz->X, colorants[1][j] = xyz->Y, colorants[2][j] = xyz->Z;
        white += xyz->Y;
    }
    if (!(std::abs(white - 1) < 0.5) || !inverse(colorants)) return std::nullopt;
    return multiply(connectionSpaceToRec709(), colorants);
}

const cmsTagSignature kRgbCurves[] = {cmsSigRedTRCTag, cmsSigGreenTRCTag, cmsSigBlueTRCTag};

bool hasAllCurves(cmsHPROFILE profile) {
    return std::all_of(std::begin(kRgbCurves), std::end(kRgbCurves),
                       [&](auto tag) { return curveOf(profile, tag) != nullptr; });
}

// L* 0 … 1 of the connection space to luminance.
double luminanceOfLightness(double lightness) {
    const double l = lightness * 100;
    return l > 8 ? std::pow((l + 16) / 116, 3) : l * 27 / 24389;
}

class LcmsRowTransform final : public RowTransform {
public:
    LcmsRowTransform(std::shared_ptr<const void> keepAlive, LcmsContext context, cmsHPROFILE from,
                     cmsUInt32Number format, int channels, float scale, cmsUInt32Number intent)
        : keepAlive_(std::move(keepAlive)),
          context_(std::move(context)),
          channels_(channels),
          scale_(scale) {
        const LcmsProfile to = makeLcmsProfile(context_.get(), OutputSpace::linearRec709);
        transform_.reset(cmsCreateTransformTHR(context_.get(), from, format, to.get(), TYPE_RGB_FLT,
                                               intent,
                                               cmsFLAGS_NOCACHE | cmsFLAGS_BLACKPOINTCOMPENSATION));
    }
    bool isUsable() const { return transform_ != nullptr; }
    void run(float* from, float* rgb, int count) override {
        if (scale_ != 1)
            for (int i = 0; i < count * channels_; ++i)
                from[i] *= scale_;
        cmsDoTransform(transform_.get(), from, rgb, cmsUInt32Number(count));
        for (int i = 0; i < 3 * count; ++i)
            if (!std::isfinite(rgb[i])) rgb[i] = 0;
    }

private:
    std::shared_ptr<const void> keepAlive_;
    LcmsContext context_;
    LcmsTransform transform_;
    int channels_;
    float scale_;
};

// Curves and a matrix for floats, in double: LittleCMS's way through the connection space costs
// several digits. Formulas hold outside 0 … 1 too, tables end there.
class MatrixRowTransform final : public RowTransform {
public:
    MatrixRowTransform(std::shared_ptr<const void> keepAlive,
                       std::array<const cmsToneCurve*, 3> curves, const Matrix3& matrix)
        : keepAlive_(std::move(keepAlive)), curves_(curves) {
        setMatrix(decoding_, matrix, kMatrixTolerance);
        for (std::size_t c = 0; c < 3; ++c)
            isLinear_[c] = cmsIsToneCurveLinear(curves[c]);
    }
    void run(float* from, float* rgb, int count) override {
        for (; count > 0; --count, from += 3, rgb += 3) {
            for (std::size_t c = 0; c < 3; ++c)
                rgb[c] = isLinear_[c] ? from[c] : curved(c, from[c]);
            if (!decoding_.matrixIsIdentity) applyMatrix(rgb);
            for (std::size_t c = 0; c < 3; ++c)
                if (!std::isfinite(rgb[c])) rgb[c] = 0;
        }
    }

private:
    float curved(std::size_t c, float v) const {
        if (cmsGetToneCurveParametricType(curves_[c]) != 0)
            return cmsEvalToneCurveFloat(curves_[c], v);
        return float(evaluate(curves_[c], std::clamp(double(v), 0.0, 1.0)));
    }
    void applyMatrix(float* rgb) const {
        const double in[] = {double(rgb[0]), double(rgb[1]), double(rgb[2])};
        for (std::size_t i = 0; i < 3; ++i) {
            const auto& row = decoding_.toWorking[i];
            rgb[i] =
                float(double(row[0]) * in[0] + double(row[1]) * in[1] + double(row[2]) * in[2]);
        }
    }

    std::shared_ptr<const void> keepAlive_; // the profile owns the curves
    std::array<const cmsToneCurve*, 3> curves_;
    std::array<bool, 3> isLinear_{};
    ColourDecoding decoding_; // only its matrix
};

std::unique_ptr<RowTransform> usable(std::unique_ptr<LcmsRowTransform> transform) {
    if (!transform->isUsable()) return nullptr;
    return transform;
}

} // namespace

std::optional<ColourProfile> ColourProfile::parse(std::span<const std::byte> icc) {
    if (icc.size() < 128 || icc.size() > kLargestProfile) return std::nullopt;
    auto handle = std::make_shared<Handle>();
    handle->context = makeLcmsContext();
    handle->profile.reset(
        cmsOpenProfileFromMemTHR(handle->context.get(), icc.data(), cmsUInt32Number(icc.size())));
    cmsHPROFILE profile = handle->profile.get();
    if (!profile || !describesDevice(profile)) return std::nullopt;
    const auto space = spaceOf(profile);
    if (!space) return std::nullopt;

    ColourProfile result;
    result.handle_ = handle;
    result.space_ = *space;
    result.name_ = descriptionOf(profile);
    const bool hasLookup = cmsIsTag(profile, cmsSigAToB0Tag) || cmsIsTag(profile, cmsSigAToB1Tag) ||
                           cmsIsTag(profile, cmsSigDToB0Tag);
    if (hasLookup) return result.transform() ? std::optional(result) : std::nullopt;
    if (*space == Space::cmyk) return std::nullopt;
    result.isMatrix_ = true;
    if (*space == Space::grey)
        return curveOf(profile, cmsSigGrayTRCTag) ? std::optional(result) : std::nullopt;
    const auto matrix = colorantMatrix(profile);
    if (!matrix || !hasAllCurves(profile) || cmsGetPCS(profile) != cmsSigXYZData)
        return std::nullopt;
    result.toWorking_ = *matrix;
    return result;
}

ColourDecoding ColourProfile::decoding(SampleType type) const {
    cmsHPROFILE profile = handle_->profile.get();
    ColourDecoding decoding;
    if (space_ == Space::grey) {
        const auto* curve = curveOf(profile, cmsSigGrayTRCTag);
        const bool isLightness = cmsGetPCS(profile) == cmsSigLabData;
        const auto table = !isLightness && isSrgbCurve(curve)
                               ? sRGBToneTable(type)
                               : makeToneTable(type, [&](double v) {
                                     const double y = evaluate(curve, v);
                                     return isLightness ? luminanceOfLightness(y) : y;
                                 });
        decoding.tone = {table, table, table};
        return decoding;
    }
    for (std::size_t c = 0; c < 3; ++c) {
        const auto* curve = curveOf(profile, kRgbCurves[c]);
        auto table = isSrgbCurve(curve)
                         ? sRGBToneTable(type)
                         : makeToneTable(type, [&](double v) { return evaluate(curve, v); });
        for (std::size_t before = 0; before < c; ++before)
            if (*decoding.tone[before] == *table) table = decoding.tone[before];
        decoding.tone[c] = table;
    }
    setMatrix(decoding, toWorking_, kMatrixTolerance);
    return decoding;
}

std::unique_ptr<RowTransform> ColourProfile::transform() const {
    if (isMatrix_ && space_ == Space::rgb) {
        std::array<const cmsToneCurve*, 3> curves{};
        for (std::size_t c = 0; c < 3; ++c)
            curves[c] = curveOf(handle_->profile.get(), kRgbCurves[c]);
        return std::make_unique<MatrixRowTransform>(handle_, curves, toWorking_);
    }
    const bool ink = space_ == Space::cmyk;
    const auto format = ink ? TYPE_CMYK_FLT : space_ == Space::grey ? TYPE_GRAY_FLT : TYPE_RGB_FLT;
    const int channels = ink ? 4 : space_ == Space::grey ? 1 : 3;
    return usable(std::make_unique<LcmsRowTransform>(
        handle_, handle_->context, handle_->profile.get(), format, channels, ink ? 100.0F : 1.0F,
        cmsUInt32Number(ink ? INTENT_RELATIVE_COLORIMETRIC : INTENT_PERCEPTUAL)));
}

std::unique_ptr<RowTransform> labTransform() {
    const auto context = makeLcmsContext();
    const LcmsProfile lab(cmsCreateLab4ProfileTHR(context.get(), nullptr));
    if (!lab) return nullptr;
    return usable(std::make_unique<LcmsRowTransform>(nullptr, context, lab.get(), TYPE_Lab_FLT, 3,
                                                     1.0F, INTENT_RELATIVE_COLORIMETRIC));
}

} // namespace kelvaro
