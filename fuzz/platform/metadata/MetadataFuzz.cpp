// Any bytes as a photo file: its properties are read without a crash, a hang or output.
#include "platform/metadata/ExifPropertyReader.h"

#include <cstdint>
#include <cstdlib>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const int descriptor = ::memfd_create("photo", 0);
    if (descriptor < 0 || ::write(descriptor, data, size) != ssize_t(size)) std::abort();
    static kelvaro::ExifPropertyReader reader;
    (void)reader.read("/proc/self/fd/" + std::to_string(descriptor));
    ::close(descriptor);
    return 0;
}
