// Owning handles for LittleCMS objects. Each piece of work has a context of its own, whose log
// handler is silent: a bad profile is nothing that a person needs to read about.
#pragma once

#include <lcms2.h>
#include <memory>

namespace kelvaro {

struct LcmsDeleter {
    void operator()(void* profile) const noexcept { cmsCloseProfile(profile); }
};
using LcmsProfile = std::unique_ptr<void, LcmsDeleter>;

struct ToneCurveDeleter {
    void operator()(cmsToneCurve* curve) const noexcept { cmsFreeToneCurve(curve); }
};
using LcmsCurve = std::unique_ptr<cmsToneCurve, ToneCurveDeleter>;

struct TransformDeleter {
    void operator()(void* transform) const noexcept { cmsDeleteTransform(transform); }
};
using LcmsTransform = std::unique_ptr<void, TransformDeleter>;

using LcmsContext = std::shared_ptr<_cmsContext_struct>;
// Throws std::bad_alloc.
LcmsContext makeLcmsContext();

} // namespace kelvaro
