// The one analysis of a photo, shared by all its pipeline runs. Parts are measured when first
// needed and kept; two threads that need the same part at once may both measure it and get equal
// results. Thread-safe; measuring blocks.
#pragma once

#include "base/Locked.h"
#include "develop/ToneMeasurement.h"

#include <filesystem>
#include <optional>
#include <string>

namespace kelvaro {

// Measured on the scene-linear capture of a RAW photo, at exposure 0 and the as-shot white balance.
class RawToneAnalysis {
public:
    RawToneAnalysis(std::filesystem::path url, std::string identity, ToneMeasurement known = {});

    const std::filesystem::path& url() const { return url_; }
    // What tells this state of the file from others: equal identities, equal pixels.
    const std::string& identity() const { return identity_; }

    Result<ToneMeasurement> parts(const Image& linearCapture, ToneNeeds needs, Renderer& renderer,
                                  const Cancellation* cancellation);
    ToneMeasurement known() const { return known_.copy(); }
    // Takes over what was measured elsewhere, where nothing is known yet.
    void adopt(ToneMeasurement measurement);

private:
    std::filesystem::path url_;
    std::string identity_;
    Locked<ToneMeasurement> known_;
};

// For bitmaps everything, measured on the decoded picture. For RAW photos only the guide for
// clarity, which describes the developed picture and so belongs to the RawParams it was made with.
class PhotoAnalysis {
public:
    PhotoAnalysis(std::filesystem::path url, bool isRaw, std::string identity,
                  ToneMeasurement known = {});

    const std::filesystem::path& url() const { return url_; }
    bool isRaw() const { return isRaw_; }
    const std::string& identity() const { return identity_; }

    Result<ToneMeasurement> parts(const Image& bitmap, ToneNeeds needs, Renderer& renderer,
                                  const Cancellation* cancellation);
    ToneMeasurement known() const { return known_.copy(); }
    void adopt(ToneMeasurement measurement);

    // The guide of the picture developed with `params`; no image when the last one was another's.
    Image developedGuide(const RawParams& params) const;
    void keepDevelopedGuide(const RawParams& params, Image guide);

private:
    struct DevelopedGuide {
        RawParams params;
        Image guide;
    };

    std::filesystem::path url_;
    bool isRaw_;
    std::string identity_;
    Locked<ToneMeasurement> known_;
    Locked<DevelopedGuide> developed_;
};

} // namespace kelvaro
