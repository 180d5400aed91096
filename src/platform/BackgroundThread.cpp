#include "platform/BackgroundThread.h"

#include <sys/resource.h>
#include <unistd.h>

namespace kelvaro {

namespace {

constexpr int kNiceness = 10; // a weight of 110 against 1024

} // namespace

void runThisThreadInBackground() {
    // On Linux this is about one thread, told by its own number.
    static_cast<void>(::setpriority(PRIO_PROCESS, id_t(::gettid()), kNiceness));
}

} // namespace kelvaro
