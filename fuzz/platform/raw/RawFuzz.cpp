// Any bytes as a RAW file: open, preview, develop at half size. Nothing may crash, hang or print.
#include "platform/raw/CameraRawEngine.h"

#include <cstdint>
#include <cstdlib>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // A file in memory, because the engine takes a path.
    const int descriptor = ::memfd_create("raw", 0);
    if (descriptor < 0 || ::write(descriptor, data, size) != ssize_t(size)) std::abort();
    kelvaro::CameraRawEngine engine;
    auto file = engine.open("/proc/self/fd/" + std::to_string(descriptor));
    if (file) {
        (void)(*file)->preview();
        kelvaro::RawDevelopSettings settings;
        settings.reduction = 1 + int(size & 1);
        settings.captureOnly = (size & 2) != 0;
        const auto pixels = (*file)->properties().size;
        if (std::int64_t(pixels.width) * pixels.height < 4'000'000)
            (void)(*file)->develop(settings, nullptr);
    }
    ::close(descriptor);
    return 0;
}
