// The words by which a photo is found, and how a query is held against them. The words of a photo
// fall into parts; apart from the file name, few photos have a part of their own, so parts are
// spelt and folded once (SearchVocabulary). Pure functions, for any thread.
#pragma once

#include "library/Photo.h"
#include "platform/TextRules.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kelvaro {

// What follows the file name, in this order. None of them is folded yet.
enum class SearchPart {
    folder,
    kind,
    camera,
    lens,
    focalLength,
    iso,
    aperture,
    shutter,
    taken,
    pixelSize
};
inline constexpr int kSearchParts = 10;

// "raw" or "bitmap image", and "jpeg" for files whose extension only says "jpg".
std::string kindWords(const Photo& photo);
std::string focalLengthWords(double millimetres, const TextRules& rules);
std::string isoWords(int iso);
std::string apertureWords(double fNumber, const TextRules& rules);
std::string shutterWords(double seconds, const TextRules& rules);
std::string pixelSizeWords(int width, int height);

// "1/250" for fractions of a second, "0.5", "2.5", "30" from 0.3 s on.
std::string shutterNotation(double seconds);

// A query as tokens, folded. All of them must match.
class SearchQuery {
public:
    SearchQuery(std::string_view text, const TextRules& rules);
    const std::vector<std::string>& tokens() const { return tokens_; }
    // Whether the token stands for a state that the photo has: three letters or more that begin
    // "edited", or "favorite", "favourite" or "heart".
    static bool namesEdited(std::string_view token);
    static bool namesFavorite(std::string_view token);

private:
    std::vector<std::string> tokens_;
};

} // namespace kelvaro
