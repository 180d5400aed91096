#include "platform/codecs/OutputSink.h"

#include <algorithm>
#include <exception>

namespace kelvaro {

bool OutputSink::writeAt(std::int64_t offset, std::span<const std::byte> bytes) noexcept {
    if (failure_) return false;
    try {
        auto written = file_.writeAt(offset, bytes);
        if (!written) failure_ = std::move(written).error();
    } catch (const std::exception&) {
        failure_ = Failure{FailureKind::outOfMemory, {}};
    }
    if (failure_) return false;
    end_ = std::max(end_, offset + std::int64_t(bytes.size()));
    return true;
}

bool OutputSink::append(std::span<const std::byte> bytes) noexcept {
    return writeAt(end_, bytes);
}

std::size_t OutputSink::readAt(std::int64_t offset, std::span<std::byte> bytes) noexcept {
    if (failure_) return 0;
    try {
        auto got = file_.readAt(offset, bytes);
        if (got) return *got;
        failure_ = std::move(got).error();
    } catch (const std::exception&) {
        failure_ = Failure{FailureKind::outOfMemory, {}};
    }
    return 0;
}

} // namespace kelvaro
