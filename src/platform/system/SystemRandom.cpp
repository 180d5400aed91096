#include "platform/system/SystemRandom.h"

#include "base/Require.h"
#include "platform/system/Descriptor.h"

#include <sys/random.h>

namespace kelvaro {

void SystemRandom::fill(std::span<std::byte> bytes) {
    while (!bytes.empty()) {
        const ssize_t got =
            uninterrupted([&] { return ::getrandom(bytes.data(), bytes.size(), 0); });
        KELVARO_REQUIRE(got > 0); // cannot fail with sound arguments
        bytes = bytes.subspan(static_cast<std::size_t>(got));
    }
}

} // namespace kelvaro
