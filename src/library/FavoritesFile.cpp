#include "library/FavoritesFile.h"

#include "library/ByteText.h"
#include "library/LibraryTexts.h"
#include "recipe/Json.h"
#include "recipe/Sidecar.h"

namespace kelvaro {
namespace {

namespace fs = std::filesystem;

constexpr std::int64_t largestFile = 64 << 20;
constexpr double lockPatienceSeconds = 10;

Result<FavoritesFile::Names> namesIn(const std::vector<std::byte>& bytes) {
    const auto document = json::parse({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    if (!document) return fail(document.error());
    const auto* array = document->get<json::Array>();
    if (!array) return fail(FailureKind::malformed, "The favorites aren't a list.");
    FavoritesFile::Names names;
    for (const json::Value& item : *array) {
        const auto* text = item.get<std::string>();
        if (!text) return fail(FailureKind::malformed, "The favorites aren't a list of names.");
        names.insert(bytesFromText(*text));
    }
    return names;
}

std::string textOf(const FavoritesFile::Names& names) {
    json::Array array;
    for (const std::string& name : names)
        array.push_back({textFromBytes(name)});
    return json::print({std::move(array)});
}

FavoritesFile::Names with(FavoritesFile::Names names, const std::map<std::string, bool>& changes) {
    for (const auto& [name, isFavorite] : changes) {
        if (isFavorite)
            names.insert(name);
        else
            names.erase(name);
    }
    return names;
}

} // namespace

Result<FavoritesFile::Names> FavoritesFile::parsed(const fs::path& file) {
    auto bytes = files_.read(file, largestFile);
    if (bytes) return namesIn(*bytes);
    if (bytes.error().kind == FailureKind::notFound) return Names{};
    return fail(std::move(bytes).error());
}

Result<FavoritesFile::Names> FavoritesFile::read(const FolderUrl& folder) {
    const auto found = files_.status(folder);
    if (!found || found->kind != FileStatus::Kind::folder) {
        return fail(Sidecar::FolderUnavailable(folder));
    }
    return parsed(fs::path(folder) / Sidecar::folderName / Sidecar::favoritesName);
}

Result<FavoritesFile::Names> FavoritesFile::change(const FolderUrl& folder,
                                                   const std::map<std::string, bool>& changes) {
    const auto found = files_.status(folder);
    if (!found || found->kind != FileStatus::Kind::folder) {
        return fail(Sidecar::FolderUnavailable(folder));
    }
    const fs::path directory = fs::path(folder) / Sidecar::folderName;
    const fs::path file = directory / Sidecar::favoritesName;
    if (with({}, changes).empty() && !files_.status(directory)) return Names{}; // nothing to remove
    if (auto made = files_.createFolder(directory); !made) return fail(std::move(made).error());
    const auto lock = files_.lockFolder(directory, lockPatienceSeconds);
    if (!lock) return fail(lock.error());
    auto before = parsed(file);
    if (!before) return before;
    Names after = with(*before, changes);
    if (after == *before) return after;
    if (after.empty()) {
        if (auto gone = files_.remove(file); !gone && gone.error().kind != FailureKind::notFound) {
            return fail(std::move(gone).error());
        }
        return after;
    }
    const std::string text = textOf(after);
    if (auto written = writeAtomically(files_, file, std::as_bytes(std::span(text))); !written) {
        return fail(std::move(written).error());
    }
    return after;
}

} // namespace kelvaro
