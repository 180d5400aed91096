// Every style tag with photos that stand just short of its threshold, exactly on it and just past
// it; for the tests and for a table to read.
#pragma once

#include "profile/StyleTag.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace kelvaro::test {

struct TagPhotos {
    std::string told; // "44 of 100"
    std::vector<ShotRecord> records;
    std::int64_t edits = 0;
};

struct TagCase {
    int rule = 0; // in their order
    std::string title, threshold;
    TagPhotos shortOf, exactly, past;
    std::string reason; // exactly on the threshold
};

std::vector<TagCase> tagCases();

// The tag of that title that the photos earn.
std::optional<StyleTag> earned(const TagPhotos& photos, const std::string& title);

// --- Ways to make records ---

using Fill = std::function<void(ShotRecord&)>;

std::vector<ShotRecord> records(std::size_t count, const Fill& fill = {});
// `hits` records filled one way, the rest of `all` the other.
std::vector<ShotRecord> mixed(std::size_t hits, std::size_t all, const Fill& hit,
                              const Fill& other);
Fill focal(double mm);
Fill lens(const std::string& name);
Fill camera(const std::string& name);
Fill aperture(double fNumber);
Fill shutter(double seconds);
Fill iso(int value);
// Of March 2024, whose 11th was a Monday.
Fill taken(int day, int hour, int minute = 0, int second = 0);
Fill heart(bool favorite);
Fill raw(bool isRaw);

} // namespace kelvaro::test
