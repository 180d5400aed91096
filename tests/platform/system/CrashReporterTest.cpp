#include "platform/system/CrashReporter.h"

#include "fakes/TemporaryFolder.h"

#include <csignal>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>

namespace kelvaro {
namespace {

TEST(CrashReporter, LeavesAReportAndEndsAsTheFaultWould) {
    TemporaryFolder folder;
    const auto reports = folder / "reports";
    EXPECT_EXIT(
        {
            reportCrashesTo(reports, "Kelvaro 1.2.3");
            std::raise(SIGSEGV);
        },
        testing::KilledBySignal(SIGSEGV), "");
    std::size_t found = 0;
    for (const auto& entry : std::filesystem::directory_iterator(reports)) {
        ++found;
        EXPECT_TRUE(entry.path().filename().string().starts_with("Kelvaro-"));
        std::ostringstream text;
        text << std::ifstream(entry.path()).rdbuf();
        EXPECT_TRUE(text.str().starts_with("Kelvaro 1.2.3\nSignal: 11\n")) << text.str();
        EXPECT_GT(text.str().size(), 100u) << "no stack";
    }
    EXPECT_EQ(found, 1u);
}

} // namespace
} // namespace kelvaro
