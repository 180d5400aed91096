// libjpeg reports fatal errors through a callback that must not return. Ours jumps back into
// `guarded`, which therefore is the only place that calls the library. Between the two lie only
// frames of C code and of lambdas without destructors.
#pragma once

#include <csetjmp>
#include <cstdio> // jpeglib.h needs it and does not say so
#include <jpeglib.h>
#include <type_traits>

namespace kelvaro {

struct JpegErrors {
    jpeg_error_mgr base; // first, so that the library's pointer is one to this
    std::jmp_buf jump;
    int code = 0;              // of the fatal error
    bool ranOutOfBits = false; // entropy-coded data ended before the picture did
};

// Fills in the callbacks; nothing is ever printed.
jpeg_error_mgr* prepare(JpegErrors& errors);

// Calls the library; false when it gave up.
template<class Call>
bool guarded(JpegErrors& errors, Call call) {
    static_assert(std::is_trivially_destructible_v<Call>, "nothing may be left unwound");
    if (setjmp(errors.jump) != 0) return false;
    call();
    return true;
}

} // namespace kelvaro
