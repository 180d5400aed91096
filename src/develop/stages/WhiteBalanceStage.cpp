#include "develop/WhiteBalance.h"
#include "develop/stages/Stages.h"

namespace kelvaro {

Image whiteBalanceStage(const Image& capture, const Adjustments& edit, WhitePoint asShot) {
    return whiteBalanced(capture, asShot, edit.temperature, edit.tint);
}

} // namespace kelvaro
