// The services of a program as the parts that its window works with. For programs that link both.
#pragma once

#include "app/WindowServices.h"
#include "ui/shell/MainWindow.h"

namespace kelvaro {

inline WindowParts partsOf(WindowServices& services, Appearance& appearance, std::string version,
                           UsageCounts* usage = nullptr) {
    return {.appearance = appearance,
            .library = services.library(),
            .engine = services.render().engine(),
            .sessions = services.render().sessions(),
            .thumbnails = services.render().thumbnails(),
            .exporter = services.exporter(),
            .settings = services.settings(),
            .folders = services.folders(),
            .desktop = services.desktop(),
            .texts = *services.services().texts,
            .calendar = *services.services().calendar,
            .version = std::move(version),
            .prompts = nullptr,
            .usage = usage};
}

} // namespace kelvaro
