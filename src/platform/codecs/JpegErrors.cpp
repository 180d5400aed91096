#include "platform/codecs/JpegErrors.h"

#include <jerror.h>

namespace kelvaro {

jpeg_error_mgr* prepare(JpegErrors& errors) {
    jpeg_std_error(&errors.base);
    errors.base.error_exit = [](j_common_ptr info) {
        auto* own = reinterpret_cast<JpegErrors*>(info->err);
        own->code = info->err->msg_code;
        std::longjmp(own->jump, 1);
    };
    errors.base.emit_message = [](j_common_ptr info, int level) {
        if (level >= 0) return; // a trace
        ++info->err->num_warnings;
        if (info->err->msg_code == JWRN_HIT_MARKER)
            reinterpret_cast<JpegErrors*>(info->err)->ranOutOfBits = true;
    };
    errors.base.output_message = [](j_common_ptr) {};
    return &errors.base;
}

} // namespace kelvaro
