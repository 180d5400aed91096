#include "editor/JournalRecovery.h"

#include "editor/EditFingerprint.h"
#include "editor/EditSaving.h"
#include "editor/JournalCoding.h"

#include <algorithm>
#include <fmt/format.h>

namespace kelvaro {
namespace {

constexpr std::string_view folderName = "sessions", extension = ".journal";
constexpr std::int64_t largestJournal = std::int64_t(256) << 20;

class Replay {
public:
    Replay(FileSystem& files, RandomSource& random, RecoveryReport& report)
        : files_(files), sidecar_(files, random), report_(report) {}

    // Whether the record is done with.
    bool operator()(const JournalRecord& record) {
        const auto stored = sidecar_.loadPhoto(record.photo);
        if (!stored) return refused(record, stored.error());
        const std::uint64_t print =
            editFingerprint(*stored ? (*stored)->adjustments : Adjustments());
        if (print == editFingerprint(*record.edit)) return true;
        const bool isOurs = std::ranges::count(record.known, print) > 0;
        // Somebody else's edit that is younger than ours stays where it is.
        if (!isOurs && *stored && (*stored)->editedAt > record.time) return keptAside(record);
        auto outcome = saveKeepingOther(files_, sidecar_, record.photo, *record.edit, record.known,
                                        record.time);
        if (!outcome) return refused(record, outcome.error());
        report_.restored.push_back(record.photo);
        if (!outcome->keptBeside.empty()) {
            report_.keptBeside.push_back({record.photo, outcome->keptBeside});
        }
        return true;
    }

private:
    // A sidecar that we can't make sense of stays as it is; other trouble passes, and the record
    // waits for the next start.
    bool refused(const JournalRecord& record, const Failure& why) {
        const bool isForGood = why.kind == FailureKind::newerVersion ||
                               why.kind == FailureKind::malformed ||
                               why.kind == FailureKind::tooLarge;
        if (isForGood) return keptAside(record);
        report_.waiting.push_back(record.photo);
        return false;
    }

    bool keptAside(const JournalRecord& record) {
        auto name = keepBeside(files_, sidecar_, record.photo, *record.edit);
        if (name)
            report_.keptBeside.push_back({record.photo, *name});
        else
            report_.waiting.push_back(record.photo);
        return name.has_value();
    }

    FileSystem& files_;
    Sidecar sidecar_;
    RecoveryReport& report_;
};

// The files of one session, oldest first. What fails here is done again at the next start, to the
// same effect.
void recover(FileSystem& files, RandomSource& random,
             const std::vector<std::filesystem::path>& journals, RecoveryReport& report) {
    std::vector<std::string> texts;
    for (const auto& journal : journals) {
        const auto bytes = files.read(journal, largestJournal);
        if (!bytes) return;
        texts.emplace_back(reinterpret_cast<const char*>(bytes->data()), bytes->size());
    }
    Replay replay(files, random, report);
    std::string waiting;
    for (const JournalRecord& record : unsavedRecords(texts, random))
        if (!replay(record)) waiting += encodedRecord(record);
    if (!waiting.empty()) {
        waiting = beginningRecord() + waiting;
        if (!writeAtomically(files, journals.back(), std::as_bytes(std::span(waiting)))) return;
    }
    const std::size_t done = waiting.empty() ? journals.size() : journals.size() - 1;
    for (std::size_t at = 0; at < done; ++at)
        if (!files.remove(journals[at])) return;
}

std::string photosText(const std::vector<std::filesystem::path>& photos) {
    if (photos.size() == 1) return photos.front().filename().string();
    return fmt::format("{} photos", photos.size());
}

} // namespace

std::string RecoveryReport::notice() const {
    std::string text;
    const auto add = [&](const std::string& sentence) {
        if (!text.empty()) text += ' ';
        text += sentence;
    };
    if (!restored.empty()) {
        add(fmt::format("Kelvaro ended unexpectedly. The latest changes to {} were restored.",
                        photosText(restored)));
    }
    for (const Kept& kept : keptBeside)
        add(keptBesideNotice(kept.photo, kept.name));
    if (!waiting.empty()) {
        add(fmt::format("Changes to {} are kept until the drive is connected.",
                        photosText(waiting)));
    }
    return text;
}

std::filesystem::path newJournalPath(const std::filesystem::path& support, RandomSource& random) {
    return support / folderName / (toText(randomUuid(random)) + std::string(extension));
}

RecoveryReport recoverSessions(FileSystem& files, AppendFiles& appendFiles, RandomSource& random,
                               const std::filesystem::path& support) {
    RecoveryReport report;
    const auto entries = files.list(support / folderName);
    if (!entries) return report; // no session ever left one
    std::vector<std::string> names;
    for (const FolderEntry& entry : *entries)
        if (!entry.name.starts_with('.') && entry.name.ends_with(extension)) {
            names.push_back(entry.name);
        }
    std::ranges::sort(names);
    for (auto name = names.begin(); name != names.end();) {
        std::vector<std::filesystem::path> journals;
        std::vector<std::unique_ptr<AppendFile>> held;
        bool isFree = true; // opening fails while its session runs
        const std::string_view session = journalSession(*name);
        for (; name != names.end() && journalSession(*name) == session; ++name) {
            journals.push_back(support / folderName / *name);
            auto file = appendFiles.open(journals.back());
            isFree = isFree && file;
            if (file) held.push_back(std::move(*file));
        }
        if (isFree) recover(files, random, journals, report);
    }
    return report;
}

} // namespace kelvaro
