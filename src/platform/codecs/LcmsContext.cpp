#include "platform/codecs/LcmsContext.h"

#include <new>

namespace kelvaro {

LcmsContext makeLcmsContext() {
    cmsContext context = cmsCreateContext(nullptr, nullptr);
    if (!context) throw std::bad_alloc();
    cmsSetLogErrorHandlerTHR(context, [](cmsContext, cmsUInt32Number, const char*) {});
    return LcmsContext(context, [](cmsContext used) { cmsDeleteContext(used); });
}

} // namespace kelvaro
