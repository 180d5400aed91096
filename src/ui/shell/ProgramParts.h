// The services of a program as the parts that its window works with. For programs that link both.
#pragma once

#include "app/WindowServices.h"
#include "ui/shell/MainWindow.h"

namespace kelvaro {

inline WindowParts partsOf(WindowServices& services, Appearance& appearance, std::string version) {
    return {.appearance = appearance,
            .library = services.library(),
            .engine = services.render().engine(),
            .sessions = services.render().sessions(),
            .thumbnails = services.render().thumbnails(),
            .editing = services.editing(),
            .exporter = services.exporter(),
            .profile = services.profile(),
            .settings = services.settings(),
            .folders = services.folders(),
            .desktop = services.desktop(),
            .texts = *services.services().texts,
            .calendar = *services.services().calendar,
            .version = std::move(version),
            .prompts = nullptr};
}

} // namespace kelvaro
