#include "library/PhotoSet.h"

namespace kelvaro {

const PhotoSet::Urls PhotoSet::none;

PhotoSet PhotoSet::without(std::span<const PhotoUrl> gone) const {
    Urls leaving;
    for (const PhotoUrl& url : gone) {
        if (contains(url)) leaving.insert(url);
    }
    if (leaving.empty()) return *this;
    Urls staying;
    staying.reserve(size() - leaving.size());
    for (const PhotoUrl& url : urls()) {
        if (!leaving.contains(url)) staying.insert(url);
    }
    return PhotoSet(std::move(staying));
}

} // namespace kelvaro
