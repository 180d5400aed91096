// A folder of its own for one test, removed with everything in it.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>

#include <unistd.h>

namespace kelvaro {

class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "kelvaro-XXXXXX").string();
        if (!::mkdtemp(pattern.data())) throw std::runtime_error("no temporary folder");
        path_ = pattern;
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    const std::filesystem::path& path() const { return path_; }
    std::filesystem::path operator/(std::string_view name) const { return path_ / name; }

private:
    std::filesystem::path path_;
};

// A file's place that no other test program uses, though many run at once; nothing is made there.
inline std::filesystem::path temporaryPath(std::string_view name) {
    return std::filesystem::temp_directory_path() /
           ("kelvaro-" + std::to_string(::getpid()) + '-' + std::string(name));
}

// Creates missing parents too.
inline void writeFile(const std::filesystem::path& path, std::string_view content) {
    if (path.has_parent_path()) std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << content;
}

// Empty also where there is no file.
inline std::string readFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// The names directly in a folder; none where there is no folder.
inline std::set<std::string> namesIn(const std::filesystem::path& folder) {
    std::set<std::string> names;
    std::error_code none;
    for (const auto& entry : std::filesystem::directory_iterator(folder, none)) {
        names.insert(entry.path().filename().string());
    }
    return names;
}

} // namespace kelvaro
