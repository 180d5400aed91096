#include "develop/stages/Stages.h"

namespace kelvaro {

Image exposureStage(const Image& capture, const Adjustments& edit) {
    return exposureAdjusted(capture, edit.exposure);
}

double analysisShift(const Adjustments& edit) {
    return edit.exposure;
}

} // namespace kelvaro
