#include "library/SearchVocabulary.h"

#include <bit>

namespace kelvaro {

SearchVocabulary::SearchVocabulary(const TextRules& rules, const LocalCalendar& calendar)
    : rules_(rules), calendar_(calendar), texts_{std::string()} {}

TextNumber SearchVocabulary::keep(const std::string& unfolded) {
    texts_.push_back(rules_.folded(unfolded));
    return static_cast<TextNumber>(texts_.size() - 1);
}

TextNumber SearchVocabulary::ofText(const std::string& text) {
    if (text.empty()) return 0;
    const auto found = byText_.find(text);
    if (found != byText_.end()) return found->second;
    return byText_.emplace(text, keep(text)).first->second;
}

TextNumber SearchVocabulary::ofFolder(const Photo& photo) {
    const std::string_view folder = fileNameOf(folderOf(photo.url));
    if (last_.folderNumber == 0 || last_.folder != folder) {
        last_.folder = folder;
        last_.folderNumber = ofText(last_.folder);
    }
    return last_.folderNumber;
}

TextNumber SearchVocabulary::ofKind(const Photo& photo) {
    const std::string_view extension = extensionOf(photo.url);
    if (last_.kindNumber == 0 || last_.extension != extension || last_.isRaw != photo.isRaw) {
        last_.extension = extension;
        last_.isRaw = photo.isRaw;
        last_.kindNumber = ofText(kindWords(photo));
    }
    return last_.kindNumber;
}

TextNumber SearchVocabulary::ofCamera(const PhotoMeta& meta) {
    if (last_.make != meta.make || last_.camera != meta.camera) {
        last_.make = meta.make;
        last_.camera = meta.camera;
        last_.cameraNumber = ofText(cameraName(meta.make, meta.camera).value_or(""));
    }
    return last_.cameraNumber;
}

TextNumber SearchVocabulary::ofLens(const PhotoMeta& meta) {
    if (last_.lens != meta.lens) {
        last_.lens = meta.lens;
        last_.lensNumber = ofText(meta.lens.value_or(""));
    }
    return last_.lensNumber;
}

template<class Spell>
TextNumber SearchVocabulary::ofValue(SearchPart part, std::uint64_t value, Spell&& spell) {
    auto& numbers = byValue_[static_cast<std::size_t>(part)];
    const auto found = numbers.find(value);
    if (found != numbers.end()) return found->second;
    return numbers.emplace(value, keep(spell())).first->second;
}

SearchWords SearchVocabulary::words(const Photo& photo, const PhotoMeta* meta) {
    SearchWords words{};
    const auto at = [&](SearchPart part) -> TextNumber& {
        return words[static_cast<std::size_t>(part)];
    };
    at(SearchPart::folder) = ofFolder(photo);
    at(SearchPart::kind) = ofKind(photo);
    if (!meta) return words;
    const auto number = [&](SearchPart part, const std::optional<double>& value, auto&& spell) {
        if (!value) return;
        at(part) = ofValue(part, std::bit_cast<std::uint64_t>(*value),
                           [&] { return spell(*value, rules_); });
    };
    at(SearchPart::camera) = ofCamera(*meta);
    at(SearchPart::lens) = ofLens(*meta);
    number(SearchPart::focalLength, meta->focalLength, focalLengthWords);
    if (meta->iso) {
        at(SearchPart::iso) = ofValue(SearchPart::iso, static_cast<std::uint64_t>(*meta->iso),
                                      [&] { return isoWords(*meta->iso); });
    }
    number(SearchPart::aperture, meta->aperture, apertureWords);
    number(SearchPart::shutter, meta->shutter, shutterWords);
    if (meta->taken) {
        const CivilTime date = calendar_.civil(*meta->taken);
        at(SearchPart::taken) =
            ofValue(SearchPart::taken, static_cast<std::uint64_t>(dayNumber(date)),
                    [&] { return rules_.dateWords(date); });
    }
    if (meta->width > 0 && meta->height > 0) {
        const auto size = static_cast<std::uint64_t>(meta->width) << 32 |
                          static_cast<std::uint64_t>(meta->height);
        at(SearchPart::pixelSize) = ofValue(
            SearchPart::pixelSize, size, [&] { return pixelSizeWords(meta->width, meta->height); });
    }
    return words;
}

std::vector<char> SearchVocabulary::contains(std::string_view token) const {
    std::vector<char> found(texts_.size());
    for (std::size_t i = 0; i < texts_.size(); ++i)
        found[i] = texts_[i].find(token) != std::string::npos;
    return found;
}

} // namespace kelvaro
