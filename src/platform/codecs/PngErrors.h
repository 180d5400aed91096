// libpng reports fatal errors through a callback that must not return. Ours jumps back into
// `guarded`, which therefore is the only place that calls the library. Between the two lie only
// frames of C code and of lambdas without destructors.
#pragma once

#include <csetjmp>
#include <png.h>
#include <type_traits>

namespace kelvaro {

struct PngErrors {
    std::jmp_buf jump;
};

inline void onPngError(png_structp png, png_const_charp) {
    std::longjmp(static_cast<PngErrors*>(png_get_error_ptr(png))->jump, 1);
}
inline void onPngWarning(png_structp, png_const_charp) {}

// Calls the library; false when it gave up.
template<class Call>
bool guarded(PngErrors& errors, Call call) {
    static_assert(std::is_trivially_destructible_v<Call>, "nothing may be left unwound");
    if (setjmp(errors.jump) != 0) return false;
    call();
    return true;
}

} // namespace kelvaro
