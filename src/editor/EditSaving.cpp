#include "editor/EditSaving.h"

#include "editor/EditFingerprint.h"
#include "recipe/RecipeCoding.h"

#include <algorithm>
#include <fmt/format.h>

namespace kelvaro {
namespace {

constexpr int mostNames = 10'000;

} // namespace

Result<SaveOutcome> saveKeepingOther(FileSystem& files, Sidecar& sidecar,
                                     const std::filesystem::path& photo, const Adjustments& edit,
                                     std::span<const std::uint64_t> known, double editedAt) {
    auto found = sidecar.loadPhoto(photo);
    if (!found) return fail(std::move(found).error());
    SaveOutcome outcome;
    if (*found) {
        const Adjustments& stored = (*found)->adjustments;
        const std::uint64_t print = editFingerprint(stored);
        const bool ours = print == editFingerprint(edit) || std::ranges::count(known, print) > 0;
        if (!ours) {
            auto kept = keepBeside(files, sidecar, photo, stored);
            if (!kept) return fail(std::move(kept).error());
            outcome.keptBeside = std::move(*kept);
        }
    }
    auto saved = sidecar.save(photo, edit, editedAt);
    if (!saved) return fail(std::move(saved).error());
    return outcome;
}

Result<std::string> keepBeside(FileSystem& files, Sidecar& sidecar,
                               const std::filesystem::path& photo, const Adjustments& edit) {
    auto folder = sidecar.directory(photo.parent_path());
    if (!folder) return fail(std::move(folder).error());
    const auto text = encodedText(edit);
    if (!text) return fail(text.error());
    if (auto made = files.createFolder(*folder); !made) return fail(std::move(made).error());
    for (int number = 1; number <= mostNames; ++number) {
        const std::string name = fmt::format("{}.json.other-{}", photo.filename().string(), number);
        const auto path = *folder / name;
        const auto status = files.status(path);
        if (status) continue;
        if (status.error().kind != FailureKind::notFound) return fail(status.error());
        auto written = writeAtomically(files, path, std::as_bytes(std::span(*text)));
        if (!written) return fail(std::move(written).error());
        return name;
    }
    return fail(
        FailureKind::unwritable,
        fmt::format("There is no free name beside the edit of “{}”.", photo.filename().string()));
}

std::string keptBesideNotice(const std::filesystem::path& photo, const std::string& keptBeside) {
    return fmt::format("{} was also edited elsewhere. That version is kept as “{}”.",
                       photo.filename().string(), keptBeside);
}

} // namespace kelvaro
