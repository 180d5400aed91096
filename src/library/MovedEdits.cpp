#include "library/MovedEdits.h"

#include "library/FavoritesFile.h"
#include "recipe/Sidecar.h"

namespace kelvaro {
namespace {

namespace fs = std::filesystem;

fs::path sidecarOf(const PhotoUrl& photo) {
    return fs::path(folderOf(photo)) / Sidecar::folderName /
           (std::string(fileNameOf(photo)) + ".json");
}

// Those that lie in the folder itself stand together, but for those of folders inside it.
template<class Photos, class IsGone>
void eraseIn(const FolderUrl& folder, Photos& photos, IsGone isGone) {
    const PhotoUrl begin = photoUrl(folder, "");
    for (auto at = photos.lower_bound(begin); at != photos.end() && at->first.starts_with(begin);) {
        const bool isErased = folderOf(at->first) == folder && isGone(at->first);
        at = isErased ? photos.erase(at) : std::next(at);
    }
}

} // namespace

void MovedEdits::setFolder(const FolderListing& photos, PhotoMetas lost) {
    const FolderUrl& folder = photos.folder();
    known_.with([&](Known& known) {
        eraseIn(folder, known.found,
                [&](const PhotoUrl& photo) { return !photos.find(fileNameOf(photo)); });
        if (lost.empty())
            known.lost.erase(folder);
        else
            known.lost.insert_or_assign(folder, std::move(lost));
    });
}

void MovedEdits::addNew(const PhotoMetas& photos, double nowSeconds) {
    known_.with([&](Known& known) {
        for (const auto& [url, meta] : photos)
            if (meta) known.found.insert_or_assign(url, New{meta, nowSeconds});
    });
}

void MovedEdits::forget(const FolderUrl& folder) {
    known_.with([&](Known& known) {
        known.lost.erase(folder);
        eraseIn(folder, known.found, [](const PhotoUrl&) { return true; });
    });
}

bool MovedEdits::isPossible() {
    return known_.with(
        [](const Known& known) { return !known.lost.empty() && !known.found.empty(); });
}

std::vector<PhotoUrl> MovedEdits::bring(double nowSeconds) {
    PhotoMetas lost, found;
    known_.with([&](Known& known) {
        std::erase_if(known.found, [&](const auto& photo) {
            return photo.second.seenSeconds + newForSeconds < nowSeconds;
        });
        for (const auto& [folder, metas] : known.lost)
            lost.insert(lost.end(), metas.begin(), metas.end());
        for (const auto& [url, photo] : known.found)
            found.emplace_back(url, photo.meta);
    });
    std::vector<PhotoUrl> brought;
    for (const MovedPhoto& moved : movedPhotos(lost, found)) {
        const auto copied = bring(moved);
        if (!copied) continue; // next time, perhaps
        if (*copied) brought.push_back(moved.to);
        // A pair is looked at once: what the user then does with the edit stays done.
        const FolderUrl folder(folderOf(moved.from));
        known_.with([&](Known& now) {
            now.found.erase(moved.to);
            auto& left = now.lost[folder];
            std::erase_if(left, [&](const auto& photo) { return photo.first == moved.from; });
            if (left.empty()) now.lost.erase(folder);
        });
        const std::string name(fileNameOf(moved.from));
        metas_.forget(folder, {&name, 1});
    }
    return brought;
}

Result<bool> MovedEdits::bring(const MovedPhoto& moved) {
    const auto from = files_.status(moved.from), to = files_.status(moved.to);
    if (from || from.error().kind != FailureKind::notFound) return false; // it is back
    if (!to) return fail(to.error());
    const auto edit = copyEdit(moved);
    if (!edit) return edit;
    const auto favorite = copyFavorite(moved);
    if (!favorite) return favorite;
    return *edit || *favorite;
}

// The file as it is, with whatever other programs put into it.
Result<bool> MovedEdits::copyEdit(const MovedPhoto& moved) {
    const auto bytes = files_.read(sidecarOf(moved.from), Sidecar::largestFile);
    if (!bytes && bytes.error().kind == FailureKind::notFound) return false;
    if (!bytes) return fail(bytes.error());
    const fs::path target = sidecarOf(moved.to);
    if (auto made = files_.createFolder(target.parent_path()); !made)
        return fail(std::move(made).error());
    auto copy = files_.createWith(target, {.temporaryName = {}, .mustBeNew = true});
    const auto written = copy ? (*copy)->writeAt(0, *bytes) : Result<void>(fail(copy.error()));
    const auto done = written ? (*copy)->commit() : written;
    if (!done && done.error().kind == FailureKind::alreadyThere) return false; // it has its own
    if (!done) return fail(done.error());
    return true;
}

Result<bool> MovedEdits::copyFavorite(const MovedPhoto& moved) {
    FavoritesFile favorites(files_);
    const auto names = favorites.read(FolderUrl(folderOf(moved.from)));
    if (!names) return fail(names.error());
    if (!names->contains(std::string(fileNameOf(moved.from)))) return false;
    const auto changed = favorites.change(FolderUrl(folderOf(moved.to)),
                                          {{std::string(fileNameOf(moved.to)), true}});
    if (!changed) return fail(changed.error());
    return true;
}

} // namespace kelvaro
