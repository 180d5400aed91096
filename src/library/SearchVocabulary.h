// The distinct texts of search parts, each folded and kept once under a number. A query looks
// through these few thousand texts and through the file names instead of through a text per photo.
// Grows only; not thread-safe.
#pragma once

#include "library/PhotoMeta.h"
#include "library/SearchText.h"
#include "library/TextNumbers.h"
#include "platform/LocalCalendar.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace kelvaro {

// By SearchPart.
using SearchWords = std::array<TextNumber, kSearchParts>;

class SearchVocabulary {
public:
    SearchVocabulary(const TextRules& rules, const LocalCalendar& calendar);

    // `meta` may be null.
    SearchWords words(const Photo& photo, const PhotoMeta* meta);
    std::string_view text(TextNumber number) const { return texts_[number]; }
    std::size_t size() const { return texts_.size(); }
    // For each number whether its text contains the (folded) token.
    std::vector<char> contains(std::string_view token) const;

private:
    template<class Spell>
    TextNumber ofValue(SearchPart part, std::uint64_t value, Spell&& spell);
    TextNumber ofText(const std::string& text);
    TextNumber ofFolder(const Photo& photo);
    TextNumber ofKind(const Photo& photo);
    TextNumber ofCamera(const PhotoMeta& meta);
    TextNumber ofLens(const PhotoMeta& meta);
    TextNumber keep(const std::string& unfolded);

    const TextRules& rules_;
    const LocalCalendar& calendar_;
    std::vector<std::string> texts_;
    std::unordered_map<std::string, TextNumber> byText_; // by the text before folding
    std::array<std::unordered_map<std::uint64_t, TextNumber>, kSearchParts> byValue_;
    // Of the photo before: neighbours mostly share these.
    struct {
        std::string folder, extension;
        std::optional<std::string> make, camera, lens;
        bool isRaw = false;
        TextNumber folderNumber = 0, kindNumber = 0, cameraNumber = 0, lensNumber = 0;
    } last_;
};

} // namespace kelvaro
