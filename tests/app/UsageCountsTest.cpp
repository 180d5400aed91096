#include "app/UsageCounts.h"

#include "fakes/MemorySettings.h"

#include <gtest/gtest.h>

namespace kelvaro {
namespace {

class Sender final : public UsageSender {
public:
    bool hasAddress() const override { return true; }
    bool send(const std::string& message) override {
        sent.push_back(message);
        return arrives;
    }
    std::vector<std::string> sent;
    bool arrives = true;
};

TEST(UsageCounts, CountsAndSendsOnlyAfterAYes) {
    MemorySettings settings;
    Sender sender;
    UsageCounts counts(settings, sender, "1.0", "Linux");
    counts.countLaunch();
    counts.countExport(5);
    counts.sendPending();
    EXPECT_FALSE(counts.isShared());
    EXPECT_EQ(counts.launches() + counts.exportedPhotos(), 0);

    counts.setShared(true);
    counts.sendPending();
    EXPECT_TRUE(sender.sent.empty()); // nothing to tell yet
    counts.countLaunch();
    counts.countExport(5);
    counts.countExport(-3);
    const std::string message = counts.message();
    EXPECT_EQ(message, "Kelvaro.launched: 1\nKelvaro.exported: 5\nKelvaro: 1.0\nSystem: Linux\n");
    sender.arrives = false;
    counts.sendPending();
    EXPECT_EQ(counts.exportedPhotos(), 5); // kept until it arrives
    sender.arrives = true;
    counts.sendPending();
    EXPECT_EQ(sender.sent, (std::vector{message, message}));
    EXPECT_EQ(counts.launches() + counts.exportedPhotos(), 0);

    counts.countLaunch();
    counts.setShared(false);
    EXPECT_EQ(counts.launches(), 0);
}

} // namespace
} // namespace kelvaro
