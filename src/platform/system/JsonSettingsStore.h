// Settings in one JSON file. Changes are written soon after, in the background: only the keys that
// were changed, into what the file then has, so that two programs keep each other's settings. A
// file that can't be understood is set aside before it is replaced.
#pragma once

#include "base/Locked.h"
#include "base/SerialQueue.h"
#include "platform/FileSystem.h"
#include "platform/SettingsStore.h"

#include <map>
#include <optional>

namespace kelvaro {

class JsonSettingsStore final : public SettingsStore {
public:
    // Reads the file now; its folder is made with the first change. `files` outlives the store.
    JsonSettingsStore(FileSystem& files, std::filesystem::path file);

    std::optional<SettingValue> value(std::string_view key) const override;
    void set(std::string_view key, SettingValue value) override;
    void remove(std::string_view key) override;
    void flush() override;

private:
    using Values = std::map<std::string, SettingValue, std::less<>>;
    using Edits = std::map<std::string, std::optional<SettingValue>>; // none removes

    void change(std::string key, std::optional<SettingValue> value);
    void write();

    FileSystem& files_;
    const std::filesystem::path file_;
    mutable Locked<Values> values_;
    Locked<Edits> unwritten_;
    SerialQueue queue_{"kelvaro.settings"}; // last: its jobs use all of the above
};

} // namespace kelvaro
