// The user's settings: plain values under plain keys, kept between launches. Values of another kind
// than the one asked for count as absent. Thread-safe; a change is on disk soon after, and a disk
// that refuses it costs the change after the next start, nothing else.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace kelvaro {

using SettingValue = std::variant<bool, double, std::string, std::vector<std::string>>;

class SettingsStore {
public:
    virtual ~SettingsStore() = default;
    virtual std::optional<SettingValue> value(std::string_view key) const = 0;
    virtual void set(std::string_view key, SettingValue value) = 0;
    virtual void remove(std::string_view key) = 0;
    // Blocks until every change so far has been written, or has failed to be.
    virtual void flush() = 0;

    // The value when it is of that type.
    template<class T>
    std::optional<T> get(std::string_view key) const {
        const auto found = value(key);
        const T* typed = found ? std::get_if<T>(&*found) : nullptr;
        return typed ? std::optional<T>(*typed) : std::nullopt;
    }
};

} // namespace kelvaro
