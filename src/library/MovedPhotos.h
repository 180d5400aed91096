// Photos that were moved or renamed by other programs: which file of today is certainly the one
// that a lost photo was. Pure functions, for any thread.
#pragma once

#include "library/MetaReader.h"

#include <vector>

namespace kelvaro {

struct MovedPhoto {
    PhotoUrl from, to;
    bool operator==(const MovedPhoto&) const = default;
};

// `lost` are photos with a sidecar whose files are gone, with their last known metadata;
// `candidates` photos without a sidecar. A pair is certain when kind of file, size and everything
// that was recorded of the capture are equal, a capture time among it, and neither side has a
// second match. In the order of `lost`.
std::vector<MovedPhoto> movedPhotos(const PhotoMetas& lost, const PhotoMetas& candidates);

} // namespace kelvaro
