#include "cli/Commands.h"
#include "library/FavoritesFile.h"

#include <fmt/format.h>

#include <map>

namespace kelvaro {

// Each folder's file is changed once, whatever the number of its photos.
ExitCode runFavorite(const FavoriteRequest& request, Services& services) {
    ExitCode code = ExitCode::done;
    const auto fails = [&](const Failure& failure) {
        report(failure);
        code = ExitCode::someFailed;
    };
    std::map<FolderUrl, std::map<std::string, bool>> changes;
    for (const auto& path : request.photos) {
        const auto parent = path.has_parent_path() ? path.parent_path() : ".";
        const auto folder = services.files->resolved(parent);
        const auto status = services.files->status(path);
        if (!folder || !status) {
            fails(!status ? status.error() : folder.error());
        } else if (status->kind != FileStatus::Kind::file || !photoKind(path)) {
            fails({FailureKind::unsupported,
                   fmt::format("“{}” is not a photo.", path.filename().string())});
        } else {
            changes[folder->string()][path.filename().string()] = !request.off;
        }
    }
    FavoritesFile favorites(*services.files);
    for (const auto& [folder, names] : changes)
        if (const auto changed = favorites.change(folder, names); !changed) fails(changed.error());
    return code;
}

} // namespace kelvaro
