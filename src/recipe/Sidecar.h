// Edits beside their photos: one small JSON file per edited photo in the hidden folder `.tarnwell`
// of the photo's own folder. The store keeps nothing between calls; loading may run on any work
// thread, saves of one folder belong on one queue. A reader never sees a half-written file.
#pragma once

#include "platform/FileSystem.h"
#include "platform/Random.h"
#include "recipe/Adjustments.h"
#include "recipe/Json.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace kelvaro {

struct StoredEdit {
    Adjustments adjustments;
    double editedAt = 0; // seconds since 1970-01-01 00:00 UTC
};

struct UnreadableEdit {
    std::string entry; // the sidecar's file name
    Failure failure;
};

struct FolderEdits {
    std::map<std::string, StoredEdit> edits; // by the photo's file name
    std::vector<UnreadableEdit> failures;    // in the order of the names
};

class Sidecar {
public:
    static constexpr std::string_view folderName = ".tarnwell";
    static constexpr std::string_view favoritesName = "favorites.json";
    // A sidecar with more bytes than this is neither read nor written. Half a million points of
    // brush strokes fit, which are days of painting, and no more values than can be read back
    // (json::mostValues): one of a point takes 29 bytes at least.
    static constexpr std::int64_t largestFile = 64 << 20;

    // The photo's folder can't be reached; of kind `notFound`.
    struct FolderUnavailable : Failure {
        explicit FolderUnavailable(const std::filesystem::path& folder);
    };

    // The file name of the photo that an entry of the sidecar directory belongs to; none when the
    // entry is no sidecar.
    static std::optional<std::string> photoNameOf(std::string_view entry);

    Sidecar(FileSystem& files, RandomSource& random) : files_(files), random_(random) {}

    // `<folder>/.tarnwell/`, which need not exist; fails with `FolderUnavailable`.
    Result<std::filesystem::path> directory(const std::filesystem::path& folder);

    // All edits of a folder, none when it has no sidecar directory. One that can't be read joins
    // the failures and the others still load.
    Result<FolderEdits> load(const std::filesystem::path& folder);

    // The edit of one photo; none when it has no sidecar.
    Result<std::optional<StoredEdit>> loadPhoto(const std::filesystem::path& photo);

    // Writes the photo's sidecar, or removes it when the record is unedited. A file that can't be
    // read is never replaced; one of an older format is copied to a backup first, once; keys that
    // we do not know stay. `editedAt` (finite) counts seconds since 1970-01-01 00:00 UTC.
    Result<void> save(const std::filesystem::path& photo, const Adjustments& adjustments,
                      double editedAt);

private:
    // A sidecar that stands on the disk and can be read.
    struct Existing {
        std::vector<std::byte> bytes;
        json::Object document;
        StoredEdit edit;
    };

    Result<Existing> read(const std::filesystem::path& sidecar);
    Result<void> backUp(const std::filesystem::path& sidecar, const Existing& existing);
    Result<void> write(const std::filesystem::path& sidecar, const Adjustments& adjustments,
                       const Existing* existing, double editedAt);

    FileSystem& files_;
    RandomSource& random_;
};

} // namespace kelvaro
