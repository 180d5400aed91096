// A file system that hands everything on to another one, counts the calls, and fails on demand: at
// the nth call, or once a number of bytes has been written. Calls of pending files count like its
// own.
#pragma once

#include "platform/FileSystem.h"

#include <algorithm>
#include <atomic>
#include <functional>
#include <limits>

namespace kelvaro {

class FailingFileSystem final : public FileSystem {
public:
    struct Plan {
        int failAtCall = 0; // counted from 1; 0 never fails
        FailureKind kind = FailureKind::unwritable;
        std::int64_t room =
            std::numeric_limits<std::int64_t>::max(); // bytes until the disk is full
    };

    explicit FailingFileSystem(FileSystem& real) : real_(real) {}
    FailingFileSystem(FileSystem& real, Plan plan) : real_(real), plan_(plan), room_(plan.room) {}

    int calls() const { return calls_; }
    bool hasFailed() const { return failed_; }

    Result<FileStatus> status(const std::filesystem::path& path) override {
        if (fails()) return fail(planned());
        return real_.status(path);
    }
    Result<std::vector<FolderEntry>> list(const std::filesystem::path& folder) override {
        if (fails()) return fail(planned());
        return real_.list(folder);
    }
    Result<std::vector<ListedFile>>
    listWithStatus(const std::filesystem::path& folder,
                   const std::function<bool(std::string_view)>& wanted) override {
        if (fails()) return fail(planned());
        return real_.listWithStatus(folder, wanted);
    }
    Result<std::filesystem::path> resolved(const std::filesystem::path& path) override {
        if (fails()) return fail(planned());
        return real_.resolved(path);
    }
    Result<std::unique_ptr<FolderLock>> lockFolder(const std::filesystem::path& folder,
                                                   double patienceSeconds) override {
        if (fails()) return fail(planned());
        return real_.lockFolder(folder, patienceSeconds);
    }
    Result<std::vector<std::byte>> read(const std::filesystem::path& path,
                                        std::int64_t limit) override {
        if (fails()) return fail(planned());
        return real_.read(path, limit);
    }
    Result<void> createFolder(const std::filesystem::path& folder) override {
        if (fails()) return fail(planned());
        return real_.createFolder(folder);
    }
    Result<std::unique_ptr<PendingFile>> create(const std::filesystem::path& target) override {
        return createWith(target, {});
    }
    Result<std::unique_ptr<PendingFile>> createWith(const std::filesystem::path& target,
                                                    const PendingOptions& options) override {
        if (fails()) return fail(planned());
        auto pending = real_.createWith(target, options);
        if (!pending) return fail(std::move(pending).error());
        return std::unique_ptr<PendingFile>(new Pending(*this, std::move(*pending)));
    }
    Result<bool> removeAbandoned(const std::filesystem::path& temporary, FileTime before) override {
        if (fails()) return fail(planned());
        return real_.removeAbandoned(temporary, before);
    }
    Result<FileStatus> linkStatus(const std::filesystem::path& path) override {
        if (fails()) return fail(planned());
        return real_.linkStatus(path);
    }
    // Called before each call, with its number, on the thread that makes it. Before the calls
    // begin.
    void onCall(std::function<void(int number)> hook) { hook_ = std::move(hook); }
    // Files of this name stay. Before the calls begin.
    void refuseRemoval(std::string name) { kept_ = std::move(name); }
    Result<void> remove(const std::filesystem::path& path) override {
        if (path.filename() == kept_) return fail(FailureKind::unwritable, "It stays.");
        if (fails()) return fail(planned());
        return real_.remove(path);
    }

private:
    class Pending final : public PendingFile {
    public:
        Pending(FailingFileSystem& owner, std::unique_ptr<PendingFile> real)
            : owner_(owner), real_(std::move(real)) {}
        // What still fits is written, as a real disk does.
        Result<void> writeAt(std::int64_t offset, std::span<const std::byte> bytes) override {
            if (owner_.fails()) return fail(owner_.planned());
            const auto wanted = static_cast<std::int64_t>(bytes.size());
            std::int64_t room = owner_.room_, fitting = 0;
            do
                fitting = std::min(wanted, room);
            while (!owner_.room_.compare_exchange_weak(room, room - fitting));
            auto written = real_->writeAt(offset, bytes.first(static_cast<std::size_t>(fitting)));
            if (!written || fitting == wanted) return written;
            owner_.failed_ = true;
            return fail(FailureKind::diskFull, "The disk is full.");
        }
        Result<std::size_t> readAt(std::int64_t offset, std::span<std::byte> bytes) override {
            if (owner_.fails()) return fail(owner_.planned());
            return real_->readAt(offset, bytes);
        }
        std::int64_t size() const override { return real_->size(); }
        Result<void> commit() override {
            if (owner_.fails()) return fail(owner_.planned());
            return real_->commit();
        }

    private:
        FailingFileSystem& owner_;
        std::unique_ptr<PendingFile> real_;
    };

    bool fails() {
        const int number = ++calls_;
        if (hook_) hook_(number);
        const bool now = number == plan_.failAtCall;
        if (now) failed_ = true;
        return now;
    }
    Failure planned() const { return {plan_.kind, "This call was planned to fail."}; }

    FileSystem& real_;
    Plan plan_;
    std::string kept_;
    std::function<void(int)> hook_;
    std::atomic<std::int64_t> room_ = Plan().room;
    std::atomic<int> calls_ = 0;
    std::atomic<bool> failed_ = false;
};

} // namespace kelvaro
