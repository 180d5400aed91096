#include "library/UnsavedJournal.h"

#include "library/ByteText.h"
#include "recipe/RecipeCoding.h"

#include <algorithm>
#include <cmath>

namespace kelvaro {
namespace {

constexpr std::int64_t largestFile = 1 << 30;
constexpr double lockPatienceSeconds = 10;
constexpr std::string_view editsKey = "edits", favoritesKey = "favorites", editKey = "adjustments",
                           editedAtKey = "editedAt";

// Both parts of the document are objects, keyed by the photo's location.
json::Object part(json::Object& document, std::string_view key) {
    json::Value* value = document.find(key);
    auto* object = value ? value->get<json::Object>() : nullptr;
    return object ? std::move(*object) : json::Object();
}

template<class T>
const T* field(const json::Value& entry, std::string_view key) {
    const auto* object = entry.get<json::Object>();
    const json::Value* value = object ? object->find(key) : nullptr;
    return value ? value->get<T>() : nullptr;
}

double editedAt(const json::Value& entry) {
    const auto* number = field<json::Number>(entry, editedAtKey);
    return number && std::isfinite(number->value) ? number->value : 0;
}

std::optional<StoredEdit> editOf(const json::Value& entry, RandomSource& random) {
    const auto* object = entry.get<json::Object>();
    const json::Value* stored = object ? object->find(editKey) : nullptr;
    if (!stored) return std::nullopt;
    auto adjustments = decodeAdjustments(*stored, random);
    if (!adjustments) return std::nullopt;
    return StoredEdit{std::move(*adjustments), editedAt(entry)};
}

// Members that pass; the order stays.
template<class Keep>
json::Object only(json::Object object, Keep keep) {
    std::vector<json::Member> members;
    for (const json::Member& member : object.members())
        if (keep(member)) members.push_back(member);
    return json::Object(std::move(members));
}

json::Object changedEdits(json::Object stored, const Unsaved& put, const Unsaved& done) {
    stored = only(std::move(stored), [&](const json::Member& member) {
        const auto found = done.edits.find(bytesFromText(member.key));
        return found == done.edits.end() || editedAt(member.value) > found->second.editedAt;
    });
    for (const auto& [photo, edit] : put.edits) {
        auto encoded = encodeAdjustments(edit.adjustments);
        if (!encoded) continue; // not finite: no sidecar could hold it either
        json::Object entry;
        entry.set(editKey, {std::move(*encoded)});
        entry.set(editedAtKey, json::number(edit.editedAt));
        stored.set(textFromBytes(photo), {std::move(entry)});
    }
    return stored;
}

json::Object changedFavorites(json::Object stored, const Unsaved& put, const Unsaved& done) {
    stored = only(std::move(stored), [&](const json::Member& member) {
        const auto found = done.favorites.find(bytesFromText(member.key));
        const auto* value = member.value.get<bool>();
        return found == done.favorites.end() || !value || *value != found->second;
    });
    for (const auto& [photo, isFavorite] : put.favorites)
        stored.set(textFromBytes(photo), {isFavorite});
    return stored;
}

} // namespace

Result<json::Object> UnsavedJournal::document() {
    auto bytes = files_.read(folder_ / fileName, largestFile);
    if (!bytes) {
        if (bytes.error().kind == FailureKind::notFound) return json::Object();
        return fail(std::move(bytes).error());
    }
    auto parsed = json::parse({reinterpret_cast<const char*>(bytes->data()), bytes->size()});
    if (!parsed) return fail(std::move(parsed).error());
    auto* object = parsed->get<json::Object>();
    if (!object) return fail(FailureKind::malformed, "The journal isn't an object.");
    return std::move(*object);
}

Result<Unsaved> UnsavedJournal::read() {
    auto stored = document();
    if (!stored) return fail(std::move(stored).error());
    Unsaved unsaved;
    const json::Object edits = part(*stored, editsKey), favorites = part(*stored, favoritesKey);
    for (const json::Member& member : edits.members()) {
        if (auto edit = editOf(member.value, random_))
            unsaved.edits.emplace(bytesFromText(member.key), std::move(*edit));
    }
    for (const json::Member& member : favorites.members()) {
        if (const bool* value = member.value.get<bool>())
            unsaved.favorites.emplace(bytesFromText(member.key), *value);
    }
    return unsaved;
}

Result<void> UnsavedJournal::change(const Unsaved& put, const Unsaved& done) {
    if (auto made = files_.createFolder(folder_); !made) return made;
    const auto lock = files_.lockFolder(folder_, lockPatienceSeconds);
    if (!lock) return fail(lock.error());
    auto stored = document();
    if (!stored && stored.error().kind == FailureKind::malformed) {
        // Not ours, or damaged: set aside for people, and begun anew.
        auto damaged = files_.read(folder_ / fileName, largestFile);
        if (!damaged) return fail(std::move(damaged).error());
        auto kept = writeAtomically(files_, folder_ / "Unsaved.damaged.json", *damaged);
        if (!kept) return kept;
        stored = json::Object();
    }
    if (!stored) return fail(std::move(stored).error());
    json::Object edits = changedEdits(part(*stored, editsKey), put, done);
    json::Object favorites = changedFavorites(part(*stored, favoritesKey), put, done);
    if (edits.members().empty() && favorites.members().empty()) {
        auto gone = files_.remove(folder_ / fileName);
        if (!gone && gone.error().kind != FailureKind::notFound) return gone;
        return {};
    }
    stored->set(editsKey, {std::move(edits)});
    stored->set(favoritesKey, {std::move(favorites)});
    const std::string text = json::print({std::move(*stored)});
    return writeAtomically(files_, folder_ / fileName, std::as_bytes(std::span(text)));
}

} // namespace kelvaro
