#include "library/FolderScan.h"

#include "library/LibraryTexts.h"

#include <algorithm>

namespace kelvaro {
namespace {

namespace fs = std::filesystem;

bool mayBePhoto(std::string_view name) {
    return !name.starts_with('.') && photoKindOfName(name).has_value();
}

// Sorted by file name.
std::vector<Photo> photosOf(const FolderUrl& folder, std::vector<ListedFile> files) {
    std::sort(files.begin(), files.end(),
              [](const ListedFile& a, const ListedFile& b) { return a.name < b.name; });
    std::vector<Photo> photos;
    photos.reserve(files.size());
    for (const ListedFile& file : files) {
        const FileStatus& status = file.status;
        if (status.kind != FileStatus::Kind::file) continue;
        photos.push_back(makePhoto(folder, file.name, *photoKindOfName(file.name), status.size,
                                   status.modified, status.created));
    }
    return photos;
}

bool contains(const FolderPhotos& photos, std::string_view name) {
    return photos && photos->find(name).has_value();
}

// What main thread and table get: marks of photos that are there.
void fillMarks(const FolderMemory& memory, ScanResult& result) {
    const auto marks = std::make_shared<FolderMarks>();
    for (const auto& [name, entry] : memory.sidecars) {
        const bool isEdit = entry.edit && isEdited(entry.edit->adjustments);
        if (!isEdit || !contains(memory.photos, name)) continue;
        result.edits.emplace(name, entry.edit);
        marks->editDates.emplace(name, editDateOf(*entry.edit));
    }
    for (const std::string& name : memory.favorites) {
        if (contains(memory.photos, name)) result.favorites.insert(name);
    }
    marks->favorites = result.favorites;
    result.marks = marks;
}

bool sameMarks(const FolderMemory& a, const FolderMemory& b) {
    return a.sidecars == b.sidecars && a.favorites == b.favorites;
}

std::vector<std::string> problemsOf(const FolderUrl& folder, const FolderMemory& memory) {
    std::vector<std::string> lines;
    const bool allRead = std::all_of(memory.sidecars.begin(), memory.sidecars.end(),
                                     [](const auto& entry) { return entry.second.edit; });
    if (!memory.editsReadable || !allRead) lines.push_back(texts::cannotReadEdits(folder));
    if (!memory.favoritesReadable) lines.push_back(texts::cannotReadFavorites(folder));
    return lines;
}

} // namespace

std::optional<FileTime> editDateOf(const StoredEdit& edit) {
    if (edit.editedAt == 0) return std::nullopt;
    return timeFromSeconds(edit.editedAt);
}

// Told by the look before, or by an earlier run of the program.
bool FolderScan::hadPhotosElsewhere(const ScanRequest& request, const FolderMemory& memory) const {
    if (!memory.drive) return false;
    if (const FolderMemory* before = request.memory.get()) {
        const bool hadPhotos = before->photos && before->photos->size() > 0;
        return hadPhotos && before->drive && memory.drive != before->drive;
    }
    const std::string mountPoint = tools_.metas.mountPointOf(request.folder);
    return !mountPoint.empty() && mountPoint != memory.drive->mountPoint;
}

// False when the folder can't be listed, or when its drive is absent and the listing shows the
// empty folder that the drive is usually mounted on.
bool FolderScan::readPhotos(const ScanRequest& request, FolderMemory& memory) const {
    if (tools_.drives) memory.drive = tools_.drives->driveOf(request.folder);
    auto files = tools_.files.listWithStatus(request.folder, mayBePhoto);
    if (!files) return false;
    std::vector<Photo> photos = photosOf(request.folder, std::move(*files));
    const FolderMemory* before = request.memory.get();
    if (photos.empty() && hadPhotosElsewhere(request, memory)) return false;
    if (!photos.empty() && memory.drive && (!before || before->drive != memory.drive))
        tools_.metas.rememberMountPoint(request.folder, memory.drive->mountPoint.string());
    const FolderPhotos previous = before ? before->photos : nullptr;
    if (previous && previous->photos() == photos)
        memory.photos = previous;
    else
        memory.photos =
            FolderListing::make(request.folder, std::move(photos), tools_.texts, previous);
    return true;
}

void FolderScan::readEdits(const ScanRequest& request, FolderMemory& memory) const {
    Sidecar sidecar(tools_.files, tools_.random);
    const auto isSidecar = [](std::string_view name) {
        return name == Sidecar::favoritesName || Sidecar::photoNameOf(name).has_value();
    };
    const auto entries =
        tools_.files.listWithStatus(fs::path(request.folder) / Sidecar::folderName, isSidecar);
    if (!entries) {
        memory.editsReadable = entries.error().kind == FailureKind::notFound;
        return;
    }
    for (const ListedFile& file : *entries) {
        if (file.name == Sidecar::favoritesName) {
            memory.favoritesStamp = file.status;
            continue;
        }
        const std::string photo = *Sidecar::photoNameOf(file.name);
        if (request.memory) {
            const auto known = request.memory->sidecars.find(photo);
            if (known != request.memory->sidecars.end() && known->second.stamp == file.status) {
                memory.sidecars.emplace(photo, known->second);
                continue;
            }
        }
        auto edit = sidecar.loadPhoto(fs::path(request.folder) / photo);
        if (edit && !*edit) continue; // removed since it was listed
        memory.sidecars.emplace(
            photo, FolderMemory::Entry{file.status,
                                       edit ? std::make_shared<const StoredEdit>(std::move(**edit))
                                            : nullptr});
    }
}

void FolderScan::readFavorites(const ScanRequest& request, FolderMemory& memory) const {
    const FolderMemory* before = request.memory.get();
    if (before && before->favoritesStamp == memory.favoritesStamp && before->favoritesReadable) {
        memory.favorites = before->favorites;
        return;
    }
    auto names = FavoritesFile(tools_.files).read(request.folder);
    memory.favoritesReadable = names.has_value();
    if (names) memory.favorites = std::move(*names);
}

// What is remembered of files that are gone and have left nothing behind is forgotten; but an empty
// folder may be a drive's place, and what can't be read may hold their edits.
void FolderScan::readMetas(const FolderMemory& memory, ScanResult& result) const {
    const FolderListing& photos = *memory.photos;
    MetaReader::Remembered known = tools_.metas.remembered(photos);
    result.metas.resize(photos.size());
    for (auto& [url, meta] : known.photos) {
        if (const auto at = photos.find(fileNameOf(url))) result.metas[*at] = std::move(meta);
    }
    std::vector<std::string> bare;
    for (auto& gone : known.gone) {
        std::string name(fileNameOf(gone.first));
        if (memory.sidecars.contains(name) || memory.favorites.contains(name))
            result.lost.push_back(std::move(gone));
        else
            bare.push_back(std::move(name));
    }
    const bool isCertain = photos.size() > 0 && memory.editsReadable && memory.favoritesReadable;
    if (isCertain && !bare.empty()) tools_.metas.forget(photos.folder(), bare);
}

ScanResult FolderScan::run(const ScanRequest& request) const {
    ScanResult result{.folder = request.folder, .writesSeen = tools_.writes.load()};
    const auto memory = std::make_shared<FolderMemory>();
    const FolderMemory* before = request.memory.get();
    if (request.photos || !before || !before->photos) {
        if (!readPhotos(request, *memory)) {
            result.isMissing = true;
            return result;
        }
    } else {
        memory->photos = before->photos;
        memory->drive = before->drive;
    }
    readEdits(request, *memory);
    readFavorites(request, *memory);
    result.photosChanged = !before || memory->photos != before->photos;
    result.marksChanged = !before || result.photosChanged || !sameMarks(*memory, *before);
    fillMarks(*memory, result);
    if (result.photosChanged) readMetas(*memory, result);
    result.problems = problemsOf(request.folder, *memory);
    result.memory = memory;
    return result;
}

} // namespace kelvaro
