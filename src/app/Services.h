// The parts of the system that every program of ours works with, put together once at start-up.
#pragma once

#include "base/Cancellation.h"
#include "base/Clock.h"
#include "develop/BrushRaster.h"
#include "platform/FileSystem.h"
#include "platform/ImageFiles.h"
#include "platform/LocalCalendar.h"
#include "platform/MetadataCopier.h"
#include "platform/PhotoProperties.h"
#include "platform/Random.h"
#include "platform/RawEngine.h"
#include "platform/Renderer.h"
#include "platform/TextRules.h"

#include <memory>

namespace kelvaro {

struct Services {
    std::unique_ptr<FileSystem> files;
    std::unique_ptr<RandomSource> random;
    std::unique_ptr<ImageReader> reader;
    std::unique_ptr<ImageWriter> writer;
    std::unique_ptr<RawEngine> raw;
    std::unique_ptr<PropertyReader> properties;
    std::unique_ptr<MetadataCopier> metadata;
    std::unique_ptr<Renderer> renderer;
    std::unique_ptr<BrushRaster> brushes;
    std::unique_ptr<TextRules> texts;
    std::unique_ptr<LocalCalendar> calendar;
    std::unique_ptr<Clock> clock;
    const Cancellation& cancellation; // set when the user interrupts the program
};

Services makeServices(const Cancellation& cancellation);

} // namespace kelvaro
