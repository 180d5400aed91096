// The one error value of the program: what kind of thing went wrong, for code that decides, and a
// sentence that names the file, for people.
#pragma once

#include <string>
#include <utility>

namespace kelvaro {

enum class FailureKind {
    notFound,     // the file or folder is not there
    unreadable,   // it is there, but the system will not let us read it
    unwritable,   // the target cannot be written
    diskFull,     // the device has no room left
    alreadyThere, // something stands where a new file was to go
    malformed,    // the content is not what its kind demands
    unsupported,  // sound content of a kind that we cannot handle
    tooLarge,     // honest or not, the content claims more than we are willing to hold
    newerVersion, // written by a later version of the program
    outOfMemory,
    cancelled,
    internal, // a service failed in a way that none of the above describes
};

struct Failure {
    FailureKind kind = FailureKind::internal;
    std::string message; // one sentence, ready to be shown

    bool operator==(const Failure&) const = default;
};

} // namespace kelvaro
