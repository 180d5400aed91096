#include "platform/codecs/TiffHandle.h"

#include <algorithm>

namespace kelvaro {

namespace {

constexpr tmsize_t kAlwaysAllowed = tmsize_t(64) << 20;

int keepQuiet(TIFF*, void*, const char*, const char*, va_list) {
    return 1;
}

struct OptionsDeleter {
    void operator()(TIFFOpenOptions* options) const noexcept { TIFFOpenOptionsFree(options); }
};
using Options = std::unique_ptr<TIFFOpenOptions, OptionsDeleter>;

Options quietOptions() {
    Options options(TIFFOpenOptionsAlloc());
    if (!options) return nullptr;
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), keepQuiet, nullptr);
    TIFFOpenOptionsSetWarningHandlerExtR(options.get(), keepQuiet, nullptr);
    return options;
}

template<class Client>
toff_t seek(Client& client, std::int64_t size, toff_t offset, int from) {
    const std::int64_t base = from == SEEK_SET ? 0 : from == SEEK_CUR ? client.position : size;
    client.position = base + std::int64_t(offset);
    return toff_t(client.position);
}

TiffReadClient& reading(thandle_t handle) {
    return *static_cast<TiffReadClient*>(handle);
}
TiffWriteClient& writing(thandle_t handle) {
    return *static_cast<TiffWriteClient*>(handle);
}

int closeNothing(thandle_t) {
    return 0;
}
int mapNothing(thandle_t, void**, toff_t*) {
    return 0;
}
void unmapNothing(thandle_t, void*, toff_t) {}

} // namespace

TiffHandle openTiff(TiffReadClient& client) {
    const Options options = quietOptions();
    if (!options) return nullptr;
    // No list or strip of an honest file is longer than the file.
    TIFFOpenOptionsSetMaxSingleMemAlloc(
        options.get(), std::max(kAlwaysAllowed, tmsize_t(client.source.size()) + 65536));
    return TiffHandle(TIFFClientOpenExt(
        "picture", "rm", &client,
        [](thandle_t handle, void* to, tmsize_t count) -> tmsize_t {
            auto& own = reading(handle);
            const auto got =
                own.source.readAt(own.position, {static_cast<std::byte*>(to),
                                                 std::size_t(std::max<tmsize_t>(count, 0))});
            own.position += std::int64_t(got);
            return tmsize_t(got);
        },
        [](thandle_t, void*, tmsize_t) -> tmsize_t { return 0; },
        [](thandle_t handle, toff_t offset, int from) {
            return seek(reading(handle), reading(handle).source.size(), offset, from);
        },
        closeNothing, [](thandle_t handle) { return toff_t(reading(handle).source.size()); },
        mapNothing, unmapNothing, options.get()));
}

TiffHandle openTiff(TiffWriteClient& client, bool big) {
    const Options options = quietOptions();
    if (!options) return nullptr;
    return TiffHandle(TIFFClientOpenExt(
        "picture", big ? "w8m" : "wm", &client,
        [](thandle_t handle, void* to, tmsize_t count) -> tmsize_t {
            auto& own = writing(handle);
            const auto got =
                own.sink.readAt(own.position, {static_cast<std::byte*>(to), std::size_t(count)});
            own.position += std::int64_t(got);
            return tmsize_t(got);
        },
        [](thandle_t handle, void* from, tmsize_t count) -> tmsize_t {
            auto& own = writing(handle);
            if (!own.sink.writeAt(own.position,
                                  {static_cast<const std::byte*>(from), std::size_t(count)}))
                return -1;
            own.position += count;
            return count;
        },
        [](thandle_t handle, toff_t offset, int from) {
            return seek(writing(handle), writing(handle).sink.size(), offset, from);
        },
        closeNothing, [](thandle_t handle) { return toff_t(writing(handle).sink.size()); },
        mapNothing, unmapNothing, options.get()));
}

} // namespace kelvaro
