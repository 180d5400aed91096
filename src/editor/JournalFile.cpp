#include "editor/JournalFile.h"

#include "editor/JournalCoding.h"

#include <utility>

namespace kelvaro {

Result<std::shared_ptr<AppendFile>> JournalFile::opened(const std::filesystem::path& path) {
    if (auto made = files_.createFolder(path.parent_path()); !made) {
        return fail(std::move(made).error());
    }
    auto file = appendFiles_.open(path);
    if (!file) return fail(std::move(file).error());
    return std::shared_ptr<AppendFile>(std::move(*file));
}

Result<void> JournalFile::append(const std::string& records) {
    const auto failure = toFlush_.with([](ToFlush& to) { return std::exchange(to.failure, {}); });
    if (failure) return fail(*failure);
    if (!file_) {
        auto file = opened(path_);
        if (!file) return fail(std::move(file).error());
        file_ = std::move(*file);
    }
    bytes_ += static_cast<std::int64_t>(records.size());
    if (auto written = file_->append(std::as_bytes(std::span(records))); !written) return written;
    flushSoon();
    return {};
}

Result<void> JournalFile::replace(const std::string& records) {
    const auto next = nextJournalPath(path_);
    auto file = opened(next);
    if (!file) return fail(std::move(file).error());
    const std::string all = beginningRecord() + records;
    if (auto written = (*file)->append(std::as_bytes(std::span(all))); !written) {
        file->reset();
        static_cast<void>(files_.remove(next));
        return written;
    }
    file_ = std::move(*file);
    bytes_ = begunBytes_ = static_cast<std::int64_t>(all.size());
    toFlush_.with([&](ToFlush& to) {
        to.replaced.push_back(std::exchange(path_, next));
        to.failure.reset();
    });
    flushSoon();
    return {};
}

Result<void> JournalFile::remove() {
    waitUntilFlushed();
    file_.reset();
    bytes_ = begunBytes_ = 0;
    auto removed = files_.remove(path_);
    if (!removed && removed.error().kind == FailureKind::notFound) return {};
    return removed;
}

// One flush waits at most: it takes along what is written until it begins.
void JournalFile::flushSoon() {
    const bool isWaiting =
        toFlush_.with([&](ToFlush& to) { return std::exchange(to.file, file_) != nullptr; });
    if (!isWaiting) flushes_.post([this] { flush(); });
}

void JournalFile::flush() {
    ToFlush now = toFlush_.with([](ToFlush& to) { return std::exchange(to, {}); });
    if (auto flushed = now.file->flush(); !flushed) {
        toFlush_.with([&](ToFlush& to) {
            to.failure = std::move(flushed).error();
            to.replaced.insert(to.replaced.end(), now.replaced.begin(), now.replaced.end());
        });
        return;
    }
    for (const auto& path : now.replaced)
        static_cast<void>(files_.remove(path)); // recovery passes over what it holds
}

} // namespace kelvaro
