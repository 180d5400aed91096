#include "cli/FolderTable.h"

#include "base/Utf8.h"
#include "cli/Commands.h"

#include <fmt/format.h>

#include <algorithm>
#include <thread>

namespace kelvaro {

FolderTable::FolderTable(Services& services)
    : services_(services),
      metas_(*services.properties, nullptr, *services.calendar),
      table_(*services.texts, *services.calendar) {}

Result<void> FolderTable::add(const std::filesystem::path& folder) {
    const auto resolved = services_.files->resolved(folder);
    if (!resolved) return fail(resolved.error());
    if (table_.folder(resolved->string())) return {};
    const std::atomic<std::uint64_t> noWrites{0};
    const FolderScan scanner(
        {*services_.files, *services_.random, *services_.texts, metas_, nullptr, noWrites});
    const ScanResult scan = scanner.run({.folder = resolved->string(), .memory = nullptr});
    if (scan.isMissing)
        return fail(FailureKind::unreadable,
                    fmt::format("The folder “{}” can't be listed.", asUtf8(folder.string())));
    const FolderPhotos photos = scan.memory->photos;
    table_.setFolder(photos);
    table_.setMarks(scan.folder, *scan.marks);
    problems_.insert(problems_.end(), scan.problems.begin(), scan.problems.end());
    MetaReader::Plan plan;
    plan.threads = int(std::max(1u, std::thread::hardware_concurrency()));
    metas_.read(scan.folder, photos->photos(), plan, services_.cancellation,
                [this](const PhotoMetas& metas) { table_.setMeta(metas); });
    if (services_.cancellation.isCancelled())
        return fail(FailureKind::cancelled, "Reading the photos was interrupted.");
    return {};
}

bool FolderTable::addAll(const std::vector<std::filesystem::path>& folders) {
    bool isWhole = true;
    for (const auto& folder : folders) {
        const auto added = add(folder);
        if (!added) report(added.error());
        isWhole = isWhole && added;
    }
    for (const std::string& problem : problems_)
        report({FailureKind::unreadable, problem});
    return isWhole && problems_.empty();
}

} // namespace kelvaro
