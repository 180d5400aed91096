// A Trash that is a folder of the test's, and refuses the files that it is told to.
#pragma once

#include "platform/Trash.h"

#include <set>
#include <string>

namespace kelvaro {

class FolderTrash final : public Trash {
public:
    explicit FolderTrash(std::filesystem::path folder) : folder_(std::move(folder)) {
        std::filesystem::create_directories(folder_);
    }
    Result<void> put(const std::filesystem::path& file) override {
        if (refused.contains(file.filename().string()))
            return fail(FailureKind::unwritable, "There is no Trash here.");
        std::error_code error;
        std::filesystem::rename(file, folder_ / file.filename(), error);
        if (error) return fail(FailureKind::notFound, "It isn't there.");
        return {};
    }

    std::set<std::string> refused; // set before the store works

private:
    std::filesystem::path folder_;
};

} // namespace kelvaro
