// Numbers for texts that occur again and again: equal texts have equal numbers, counted from 1; 0
// is the empty text. Not thread-safe.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

namespace kelvaro {

using TextNumber = std::uint32_t;

class TextNumbers {
public:
    TextNumber number(const std::string& text) {
        if (text.empty()) return 0;
        const auto [at, isNew] = numbers_.try_emplace(text, static_cast<TextNumber>(texts_.size()));
        if (isNew) texts_.push_back(text);
        return at->second;
    }
    const std::string& text(TextNumber number) const { return texts_[number]; }
    std::size_t size() const { return texts_.size(); }

private:
    std::vector<std::string> texts_{std::string()};
    std::unordered_map<std::string, TextNumber> numbers_;
};

} // namespace kelvaro
