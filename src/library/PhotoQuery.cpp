#include "library/PhotoQuery.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace kelvaro {

std::optional<std::size_t> LibraryView::positionOf(const PhotoUrl& photo) const {
    const auto folder = std::find_if(folders.begin(), folders.end(), [&](const auto& each) {
        return each->folder() == folderOf(photo);
    });
    if (folder == folders.end()) return std::nullopt;
    const auto at = (*folder)->find(fileNameOf(photo));
    if (!at) return std::nullopt;
    const auto found = std::find(photos.begin(), photos.end(), &(*folder)->photos()[*at]);
    if (found == photos.end()) return std::nullopt;
    return static_cast<std::size_t>(found - photos.begin());
}

namespace {

struct KeyTexts {
    std::string_view rawValue, title;
};

// By SortKey.
constexpr std::array kKeyTexts{
    KeyTexts{"dateTaken", "Date Taken"}, KeyTexts{"modified", "Date Modified"},
    KeyTexts{"created", "Date Created"}, KeyTexts{"name", "Name"}, KeyTexts{"size", "Size"}};
static_assert(kKeyTexts.size() == kSortKeys.size());

} // namespace

std::string_view rawValue(SortKey key) {
    return kKeyTexts[static_cast<std::size_t>(key)].rawValue;
}

std::string_view title(SortKey key) {
    return kKeyTexts[static_cast<std::size_t>(key)].title;
}

std::optional<SortKey> sortKeyFrom(std::string_view raw) {
    for (const SortKey key : kSortKeys) {
        if (rawValue(key) == raw) return key;
    }
    return std::nullopt;
}

std::string storedText(const SortOrder& order) {
    return nlohmann::json{{"ascending", order.ascending}, {"key", rawValue(order.key)}}.dump();
}

SortOrder sortOrderFrom(std::string_view storedText) {
    const auto stored = nlohmann::json::parse(storedText, nullptr, false);
    if (!stored.is_object()) return {};
    const auto key = stored.find("key"), ascending = stored.find("ascending");
    if (key == stored.end() || !key->is_string()) return {};
    if (ascending == stored.end() || !ascending->is_boolean()) return {};
    const auto known = sortKeyFrom(key->get<std::string>());
    return known ? SortOrder{*known, ascending->get<bool>()} : SortOrder{};
}

EmptyState emptyState(const LibraryQuery& request, const EmptyReasons& reasons) {
    if (!reasons.hasFolders)
        return {"Add a folder of photos to get started", "Add a folder of photos"};
    const Scope::Kind scope = request.scope.kind;
    if (scope == Scope::Kind::folder && reasons.isFolderUnavailable)
        return {"This folder isn't available. Is the drive connected?", ""};
    if (scope == Scope::Kind::favorites && !reasons.hasFavorites)
        return {"No favorites yet — press . or right-click › Favorite", ""};
    if (scope == Scope::Kind::edited && !reasons.hasEdited) return {"No edited photos yet", ""};
    if (request.searchText.find_first_not_of(" \t") != std::string::npos)
        return {"No photos match “" + request.searchText + "”", "Clear Search"};
    if (request.filter.isActive()) return {"No photos match these filters", "Clear Filters"};
    return {"No photos here", ""};
}

} // namespace kelvaro
