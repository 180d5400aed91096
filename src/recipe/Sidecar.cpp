#include "recipe/Sidecar.h"

#include "recipe/RecipeCoding.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>

namespace kelvaro {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view extension = ".json";
constexpr std::string_view editedAtKey = "editedAt";

std::string_view asText(std::span<const std::byte> bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

fs::path sidecarOf(const fs::path& directory, const fs::path& photo) {
    return directory / photo.filename().concat(extension);
}

fs::path folderOf(const fs::path& photo) {
    return photo.has_parent_path() ? photo.parent_path() : fs::path(".");
}

std::optional<double> editDate(const json::Object& document) {
    const json::Value* value = document.find(editedAtKey);
    const auto* number = value ? value->get<json::Number>() : nullptr;
    if (!number || !std::isfinite(number->value)) return std::nullopt;
    return number->value;
}

// The last part of a folder's path, also where the path ends in a slash.
std::string nameOf(fs::path folder) {
    while (!folder.has_filename() && folder.has_relative_path())
        folder = folder.parent_path();
    return (folder.has_filename() ? folder.filename() : folder).string();
}

} // namespace

std::optional<std::string> Sidecar::photoNameOf(std::string_view entry) {
    if (!entry.ends_with(extension) || entry.starts_with('.') || entry == Sidecar::favoritesName) {
        return std::nullopt;
    }
    entry.remove_suffix(extension.size());
    if (entry.find('.') == std::string_view::npos) return std::nullopt;
    return std::string(entry);
}

Sidecar::FolderUnavailable::FolderUnavailable(const fs::path& folder)
    : Failure{FailureKind::notFound,
              fmt::format("“{}” isn't available. Is its drive connected?", nameOf(folder))} {}

Result<fs::path> Sidecar::directory(const fs::path& folder) {
    const auto found = files_.status(folder);
    if (!found || found->kind != FileStatus::Kind::folder) return fail(FolderUnavailable(folder));
    return folder / folderName;
}

Result<Sidecar::Existing> Sidecar::read(const fs::path& sidecar) {
    auto bytes = files_.read(sidecar, largestFile);
    if (!bytes) return fail(std::move(bytes).error());
    auto document = json::parse(asText(*bytes));
    if (!document) return fail(std::move(document).error());
    auto adjustments = decodeAdjustments(*document, random_);
    if (!adjustments) return fail(std::move(adjustments).error());
    auto& object = *document->get<json::Object>(); // or it would not have been decoded
    auto date = editDate(object);
    if (!date) {
        const auto found = files_.status(sidecar);
        if (!found) return fail(found.error());
        date = found->modified.seconds();
    }
    return Existing{std::move(*bytes), std::move(object), {std::move(*adjustments), *date}};
}

Result<FolderEdits> Sidecar::load(const fs::path& folder) {
    const auto sidecars = directory(folder);
    if (!sidecars) return fail(sidecars.error());
    auto entries = files_.list(*sidecars);
    if (!entries) {
        if (entries.error().kind == FailureKind::notFound) return FolderEdits{};
        return fail(std::move(entries).error());
    }
    std::sort(entries->begin(), entries->end(),
              [](const FolderEntry& a, const FolderEntry& b) { return a.name < b.name; });
    FolderEdits loaded;
    for (const FolderEntry& entry : *entries) {
        auto photo = photoNameOf(entry.name);
        if (!photo) continue;
        if (auto found = read(*sidecars / entry.name)) {
            loaded.edits.emplace(std::move(*photo), std::move(found->edit));
        } else if (found.error().kind != FailureKind::notFound) { // not removed since the listing
            loaded.failures.push_back({entry.name, std::move(found).error()});
        }
    }
    return loaded;
}

Result<std::optional<StoredEdit>> Sidecar::loadPhoto(const fs::path& photo) {
    const auto sidecars = directory(folderOf(photo));
    if (!sidecars) return fail(sidecars.error());
    auto found = read(sidecarOf(*sidecars, photo));
    if (found) return std::optional(std::move(found->edit));
    if (found.error().kind == FailureKind::notFound) return std::optional<StoredEdit>();
    return fail(std::move(found).error());
}

Result<void> Sidecar::save(const fs::path& photo, const Adjustments& adjustments, double editedAt) {
    KELVARO_REQUIRE(std::isfinite(editedAt));
    const auto sidecars = directory(folderOf(photo));
    if (!sidecars) return fail(sidecars.error());
    const fs::path sidecar = sidecarOf(*sidecars, photo);

    const auto existing = read(sidecar);
    const bool exists = existing.has_value();
    if (!exists && existing.error().kind != FailureKind::notFound) return fail(existing.error());
    if (isEdited(adjustments)) {
        return write(sidecar, adjustments, exists ? &*existing : nullptr, editedAt);
    }
    if (!exists) return {};
    if (auto kept = backUp(sidecar, *existing); !kept) return kept;
    auto removed = files_.remove(sidecar);
    if (!removed && removed.error().kind == FailureKind::notFound) return {};
    return removed;
}

Result<void> Sidecar::write(const fs::path& sidecar, const Adjustments& adjustments,
                            const Existing* existing, double editedAt) {
    auto document = encodeAdjustments(adjustments);
    if (!document) return fail(std::move(document).error());
    document->set(editedAtKey, json::number(editedAt));
    if (existing) keepUnknownKeys(*document, existing->document);
    const std::string text = json::print({std::move(*document)});
    if (text.size() > static_cast<std::size_t>(largestFile)) {
        return fail(FailureKind::tooLarge,
                    fmt::format("The edit “{}” is too large.", sidecar.filename().string()));
    }
    if (existing) {
        if (auto kept = backUp(sidecar, *existing); !kept) return kept;
    } else if (auto made = files_.createFolder(sidecar.parent_path()); !made) {
        return made;
    }
    return writeAtomically(files_, sidecar, std::as_bytes(std::span(text)));
}

// Copies a sidecar of an older format; a backup that is there already is older, and stays.
Result<void> Sidecar::backUp(const fs::path& sidecar, const Existing& existing) {
    const std::int64_t version = storedVersion(existing.document);
    if (version >= Adjustments::currentVersion) return {};
    fs::path backup = sidecar;
    backup += fmt::format(".v{}-backup", version);
    const auto found = files_.status(backup);
    if (found) return {};
    if (found.error().kind != FailureKind::notFound) return fail(found.error());
    return writeAtomically(files_, backup, existing.bytes);
}

} // namespace kelvaro
