// make_library FOLDER [--folders N] [--photos N]: fills a folder with a library for measurements,
// N folders (1000) of N photos (100) each. A run that was broken off goes on where it was.

#include "samples/Library.h"

#include <charconv>
#include <cstdio>
#include <cstring>
#include <exception>
#include <optional>
#include <string_view>

using namespace kelvaro::samples;

namespace {

std::optional<int> count(std::string_view text) {
    int value = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), value);
    const bool isWhole = read.ec == std::errc() && read.ptr == text.data() + text.size();
    return isWhole && value >= 1 && value <= 1'000'000 ? std::optional(value) : std::nullopt;
}

int wrongUse() {
    std::fputs("usage: make_library FOLDER [--folders N] [--photos N]\n", stderr);
    return 2;
}

} // namespace

int main(int argc, char** argv) {
    LibraryPlan plan;
    const char* folder = nullptr;
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        const bool isFolders = argument == "--folders", isPhotos = argument == "--photos";
        if (isFolders || isPhotos) {
            const auto value = i + 1 < argc ? count(argv[++i]) : std::nullopt;
            if (!value) return wrongUse();
            (isFolders ? plan.folders : plan.photosPerFolder) = *value;
        } else if (argument.starts_with('-') || folder) {
            return wrongUse();
        } else {
            folder = argv[i];
        }
    }
    if (!folder) return wrongUse();
    try {
        writeLibrary(folder, plan, [&](int number) {
            if (number % 100 == 0) std::printf("%d of %d folders\n", number, plan.folders);
        });
    } catch (const std::exception& error) {
        std::fprintf(stderr, "make_library: %s\n", error.what());
        return 1;
    }
    return 0;
}
