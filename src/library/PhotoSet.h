// A set of photos that stays as it was made. Copies share it, so that a selection of a hundred
// thousand photos goes from thread to thread for nothing.
#pragma once

#include "library/Photo.h"

#include <initializer_list>
#include <memory>
#include <span>
#include <unordered_set>
#include <utility>

namespace kelvaro {

class PhotoSet {
public:
    using Urls = std::unordered_set<PhotoUrl>;

    PhotoSet() = default;
    PhotoSet(std::initializer_list<PhotoUrl> urls) : PhotoSet(Urls(urls)) {}
    template<class Iterator>
    PhotoSet(Iterator first, Iterator last) : PhotoSet(Urls(first, last)) {}
    explicit PhotoSet(Urls urls) {
        if (!urls.empty()) urls_ = std::make_shared<const Urls>(std::move(urls));
    }

    // The set less some of its photos; copies only what stays.
    PhotoSet without(std::span<const PhotoUrl> gone) const;

    std::size_t size() const { return urls().size(); }
    bool empty() const { return urls().empty(); }
    bool contains(const PhotoUrl& url) const { return urls().contains(url); }
    Urls::const_iterator begin() const { return urls().begin(); }
    Urls::const_iterator end() const { return urls().end(); }
    bool operator==(const PhotoSet& other) const {
        return urls_ == other.urls_ || urls() == other.urls();
    }

private:
    const Urls& urls() const { return urls_ ? *urls_ : none; }

    static const Urls none;
    std::shared_ptr<const Urls> urls_; // null when there are none
};

} // namespace kelvaro
