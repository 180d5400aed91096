#include "export/ExportNames.h"

#include <clocale>
#include <cwctype>
#include <locale.h>

namespace kelvaro {

namespace {

constexpr std::size_t kLongestName = 255; // bytes

bool continues(char c) {
    return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

// The C library's tables of all scripts, whatever locale the program runs in.
locale_t everyScript() {
    static const locale_t locale = ::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    return locale;
}

char lowerAscii(char c) {
    return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c;
}

void appendUtf8(std::string& text, std::uint32_t code) {
    if (code < 0x80) {
        text += char(code);
        return;
    }
    const int more = code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;
    static constexpr unsigned leads[] = {0, 0xC0, 0xE0, 0xF0};
    text += char(leads[more] | code >> (6 * more));
    for (int i = more - 1; i >= 0; --i)
        text += char(0x80 | (code >> (6 * i) & 0x3F));
}

// The character that begins at `at`, and its length; 0 for a byte that begins none.
std::uint32_t codeAt(const std::string& text, std::size_t at, std::size_t& length) {
    const auto lead = static_cast<unsigned char>(text[at]);
    length = lead < 0xC2 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF5 ? 4 : 0;
    if (length == 0 || at + length > text.size()) {
        length = 0;
        return 0;
    }
    std::uint32_t code = lead & (0xFFU >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
        if (!continues(text[at + i])) {
            length = 0;
            return 0;
        }
        code = code << 6 | (static_cast<unsigned char>(text[at + i]) & 0x3FU);
    }
    return code;
}

} // namespace

std::string nameKey(const std::string& name) {
    std::string key;
    for (std::size_t i = 0; i < name.size();) {
        std::size_t length = 0;
        const std::uint32_t code = codeAt(name, i, length);
        if (length == 0) {
            key += lowerAscii(name[i++]);
            continue;
        }
        const locale_t tables = everyScript();
        appendUtf8(key, tables ? std::uint32_t(::towlower_l(wint_t(code), tables)) : code);
        i += length;
    }
    return key;
}

std::filesystem::path resolvedPath(const std::filesystem::path& path) {
    std::error_code error;
    auto resolved = std::filesystem::weakly_canonical(path, error);
    return error ? std::filesystem::absolute(path, error).lexically_normal() : resolved;
}

ExportNames::ExportNames(FileSystem& files, std::filesystem::path folder, std::string fileExtension,
                         bool replacing, ProtectedPaths protectedPaths)
    : files_(files),
      folder_(std::move(folder)),
      fileExtension_(std::move(fileExtension)),
      replacing_(replacing),
      protected_(std::move(protectedPaths)) {}

std::string ExportNames::candidate(const std::string& baseName, int number) const {
    std::string end = "." + fileExtension_;
    if (number > 1) end = " (" + std::to_string(number) + ")" + end;
    std::size_t kept = std::min(baseName.size(), kLongestName - end.size());
    while (kept > 0 && kept < baseName.size() && continues(baseName[kept]))
        --kept;
    return baseName.substr(0, kept) + end;
}

bool ExportNames::mayReplace(const std::filesystem::path& path, const FileStatus& status) const {
    return replacing_ && status.kind == FileStatus::Kind::file &&
           !protected_.contains(resolvedPath(path));
}

ExportNames::Target ExportNames::next(const std::string& baseName) {
    const std::string key = nameKey(baseName);
    const auto known = nextSuffix_.find(key);
    for (int n = known == nextSuffix_.end() ? 1 : known->second;; ++n) {
        const std::string name = candidate(baseName, n);
        if (taken_.contains(nameKey(name))) continue;
        const auto path = folder_ / name;
        // A folder that cannot be looked into fails where the file is written.
        const auto standing = files_.linkStatus(path);
        if (standing && !mayReplace(path, *standing)) continue;
        taken_.insert(nameKey(name));
        nextSuffix_[key] = n + 1;
        return {path, standing.has_value()};
    }
}

} // namespace kelvaro
