#include "app/Services.h"

#include "platform/codecs/CodecImageFiles.h"
#include "platform/imaging/TiledRenderer.h"
#include "platform/metadata/ExifMetadataCopier.h"
#include "platform/metadata/ExifPropertyReader.h"
#include "platform/raw/CameraRawEngine.h"
#include "platform/system/IcuCalendar.h"
#include "platform/system/IcuTextRules.h"
#include "platform/system/PosixFileSystem.h"
#include "platform/system/SystemClock.h"
#include "platform/system/SystemRandom.h"

namespace kelvaro {

Services makeServices(const Cancellation& cancellation) {
    Services services{.files = std::make_unique<PosixFileSystem>(),
                      .random = std::make_unique<SystemRandom>(),
                      .reader = makeImageReader(),
                      .writer = makeImageWriter(),
                      .raw = std::make_unique<CameraRawEngine>(makeImageReader()),
                      .properties = std::make_unique<ExifPropertyReader>(),
                      .metadata = std::make_unique<ExifMetadataCopier>(),
                      .renderer = makeTiledRenderer(),
                      .brushes = std::make_unique<BrushRaster>(),
                      .texts = makeIcuTextRules(),
                      .calendar = makeIcuCalendar(),
                      .clock = std::make_unique<SystemClock>(),
                      .cancellation = cancellation};
    return services;
}

} // namespace kelvaro
