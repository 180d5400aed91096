#include "app/LaunchOptions.h"

#include <gtest/gtest.h>

#include <map>

namespace kelvaro {
namespace {

TEST(LaunchOptions, FollowTheEnvironment) {
    using Variables = std::map<std::string, const char*>;
    const auto read = [](const Variables& set) {
        return launchOptions([&](const char* name) {
            const auto found = set.find(name);
            return found == set.end() ? nullptr : found->second;
        });
    };
    EXPECT_EQ(read({}), LaunchOptions{});
    EXPECT_EQ(read({{"KELVARO_PERF", "1"}}), (LaunchOptions{.logsRenderTimes = true}));
    EXPECT_EQ(read({{"KELVARO_THUMBS", ""}}), (LaunchOptions{.logsThumbnailTimes = true}));
    EXPECT_EQ(read({{"KELVARO_SCRIPT", "0"}}), (LaunchOptions{.asksForScript = true}));
    EXPECT_EQ(scriptRefusal, "[script] FAIL: this build has no script mode; use ./build.sh "
                             "--scripting (build/Kelvaro-scripted)");
}

} // namespace
} // namespace kelvaro
