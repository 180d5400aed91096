#include "library/SearchText.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace kelvaro {

namespace {

constexpr int kDecimals = 3;              // of focal lengths and apertures in words
constexpr std::size_t kShortestState = 3; // characters of a token that may name a state
constexpr double kLongestFraction = 0.3;  // seconds; from here on times are decimal

bool isContinuation(char c) {
    return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

std::size_t characters(std::string_view text) {
    return static_cast<std::size_t>(
        std::count_if(text.begin(), text.end(), [](char c) { return !isContinuation(c); }));
}

bool begins(std::string_view word, std::string_view token) {
    return characters(token) >= kShortestState && word.starts_with(token);
}

std::string joined(const std::vector<std::string>& words) {
    return fmt::format("{}", fmt::join(words, " "));
}

} // namespace

std::string kindWords(const Photo& photo) {
    std::string words = photo.isRaw ? "raw" : "bitmap image";
    std::string extension(extensionOf(photo.url));
    for (char& c : extension)
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
    if (extension == "jpg") words += " jpeg";
    return words;
}

std::string focalLengthWords(double millimetres, const TextRules& rules) {
    std::vector<std::string> words;
    for (const std::string& n : rules.numberForms(millimetres, kDecimals))
        words.push_back(fmt::format("{}mm {} mm", n, n));
    return joined(words);
}

std::string isoWords(int iso) {
    return fmt::format("{} iso {}", iso, iso);
}

std::string apertureWords(double fNumber, const TextRules& rules) {
    std::vector<std::string> words;
    for (const std::string& n : rules.numberForms(fNumber, kDecimals))
        words.push_back(fmt::format("f/{}  f{} ƒ/{}", n, n, n));
    return joined(words);
}

std::string shutterNotation(double seconds) {
    if (seconds < kLongestFraction) return fmt::format("1/{:.0f}", 1 / seconds);
    return fmt::format("{:g}", std::round(seconds * 10) / 10);
}

// After "1/250 s" come the forms that people type as well: without the blank, with the user's
// decimal sign, and half a second as 1/2.
std::string shutterWords(double seconds, const TextRules& rules) {
    const std::string notation = shutterNotation(seconds);
    std::vector<std::string> words{notation + " s", notation + "s"};
    if (seconds >= kLongestFraction) {
        for (const std::string& n : rules.numberForms(std::round(seconds * 10) / 10, 1)) {
            if (n != notation) words.push_back(fmt::format("{} s {}s", n, n));
        }
        if (seconds < 1) words.push_back(fmt::format("1/{:.0f}", 1 / seconds));
    }
    return joined(words);
}

std::string pixelSizeWords(int width, int height) {
    return fmt::format("{}x{}", width, height);
}

SearchQuery::SearchQuery(std::string_view text, const TextRules& rules) {
    const std::string folded = rules.folded(text);
    constexpr std::string_view blanks = " \t\r\n\v\f";
    for (std::size_t at = 0; (at = folded.find_first_not_of(blanks, at)) != std::string::npos;) {
        const std::size_t end = std::min(folded.find_first_of(blanks, at), folded.size());
        tokens_.push_back(folded.substr(at, end - at));
        at = end;
    }
}

bool SearchQuery::namesEdited(std::string_view token) {
    return begins("edited", token);
}

bool SearchQuery::namesFavorite(std::string_view token) {
    return begins("favorite", token) || begins("favourite", token) || begins("heart", token);
}

} // namespace kelvaro
