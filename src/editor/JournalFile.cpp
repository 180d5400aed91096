#include "editor/JournalFile.h"

namespace kelvaro {

Result<void> JournalFile::open() {
    if (file_) return {};
    if (auto made = files_.createFolder(path_.parent_path()); !made) return made;
    auto opened = appendFiles_.open(path_);
    if (!opened) return fail(std::move(opened).error());
    file_ = std::move(*opened);
    return {};
}

Result<void> JournalFile::append(const std::string& records) {
    if (auto opened = open(); !opened) return opened;
    bytes_ += static_cast<std::int64_t>(records.size());
    if (auto written = file_->append(std::as_bytes(std::span(records))); !written) return written;
    return file_->flush();
}

Result<void> JournalFile::replace(const std::string& records) {
    file_.reset();
    if (auto made = files_.createFolder(path_.parent_path()); !made) return made;
    auto written = writeAtomically(files_, path_, std::as_bytes(std::span(records)));
    if (!written) return written;
    bytes_ = begunBytes_ = static_cast<std::int64_t>(records.size());
    return open();
}

Result<void> JournalFile::remove() {
    file_.reset();
    bytes_ = begunBytes_ = 0;
    auto removed = files_.remove(path_);
    if (!removed && removed.error().kind == FailureKind::notFound) return {};
    return removed;
}

} // namespace kelvaro
