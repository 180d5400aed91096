// Hands every call on to another file system; a fake overrides the one that it is about.
#pragma once

#include "platform/FileSystem.h"

namespace kelvaro {

class ForwardingFileSystem : public FileSystem {
public:
    explicit ForwardingFileSystem(FileSystem& real) : real_(real) {}

    Result<FileStatus> status(const std::filesystem::path& path) override {
        return real_.status(path);
    }
    Result<std::vector<FolderEntry>> list(const std::filesystem::path& folder) override {
        return real_.list(folder);
    }
    Result<std::vector<ListedFile>>
    listWithStatus(const std::filesystem::path& folder,
                   const std::function<bool(std::string_view)>& wanted) override {
        return real_.listWithStatus(folder, wanted);
    }
    Result<std::filesystem::path> resolved(const std::filesystem::path& path) override {
        return real_.resolved(path);
    }
    Result<std::unique_ptr<FolderLock>> lockFolder(const std::filesystem::path& folder,
                                                   double patienceSeconds) override {
        return real_.lockFolder(folder, patienceSeconds);
    }
    Result<std::vector<std::byte>> read(const std::filesystem::path& path,
                                        std::int64_t limit) override {
        return real_.read(path, limit);
    }
    Result<void> createFolder(const std::filesystem::path& folder) override {
        return real_.createFolder(folder);
    }
    Result<std::unique_ptr<PendingFile>> create(const std::filesystem::path& target) override {
        return real_.create(target);
    }
    Result<std::unique_ptr<PendingFile>> createWith(const std::filesystem::path& target,
                                                    const PendingOptions& options) override {
        return real_.createWith(target, options);
    }
    Result<bool> removeAbandoned(const std::filesystem::path& temporary, FileTime before) override {
        return real_.removeAbandoned(temporary, before);
    }
    Result<FileStatus> linkStatus(const std::filesystem::path& path) override {
        return real_.linkStatus(path);
    }
    Result<void> remove(const std::filesystem::path& path) override { return real_.remove(path); }

private:
    FileSystem& real_;
};

} // namespace kelvaro
