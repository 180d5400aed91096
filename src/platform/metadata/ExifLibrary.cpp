#include "platform/metadata/ExifLibrary.h"

#include <exiv2/exiv2.hpp>

#include <mutex>

namespace kelvaro {

namespace {

void lockXmp(void* lock, bool isLocking) {
    auto& mutex = *static_cast<std::recursive_mutex*>(lock);
    isLocking ? mutex.lock() : mutex.unlock();
}

} // namespace

void startExifLibrary() {
    static std::recursive_mutex xmpLock;
    static std::once_flag once;
    std::call_once(once, [] {
        Exiv2::LogMsg::setLevel(Exiv2::LogMsg::mute);
        Exiv2::XmpParser::initialize(lockXmp, &xmpLock);
        Exiv2::enableBMFF(true);
    });
}

} // namespace kelvaro
