#include "cli/Commands.h"

#include "recipe/AdjustmentCatalogue.h"
#include "recipe/NumberText.h"
#include "recipe/RecipeActions.h"
#include "recipe/RecipeCoding.h"
#include "recipe/Sidecar.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <chrono>

namespace kelvaro {

namespace {

double now() {
    using namespace std::chrono;
    return duration<double>(system_clock::now().time_since_epoch()).count();
}

std::string describe(const LocalMask& mask) {
    return fmt::format("mask \"{}\"{}{}, amount {}, {} shape{}", mask.name,
                       mask.enabled ? "" : " (off)", mask.invert ? ", inverted" : "",
                       numberText(mask.amount), mask.components.size(),
                       mask.components.size() == 1 ? "" : "s");
}

void show(const Adjustments& edit, double editedAt) {
    if (!isEdited(edit)) {
        fmt::print("no edit\n");
        return;
    }
    for (const AdjustmentSpec& spec : storedKeyCatalogue())
        if (const double value = spec.value(edit); value != 0)
            fmt::print("{:<16}{}\n", spec.id, numberText(value));
    for (const LocalMask& mask : edit.masks)
        fmt::print("{}\n", describe(mask));
    if (editedAt != 0)
        fmt::print("edited {:%Y-%m-%d %H:%M:%S} UTC\n",
                   fmt::gmtime(static_cast<std::time_t>(editedAt)));
}

Result<StoredEdit> changedAndSaved(const RecipeRequest& request, Adjustments edit,
                                   Services& services) {
    if (request.clear) edit = Adjustments{};
    if (request.copyFrom) {
        auto source = storedEdit(*request.copyFrom, services);
        if (!source) return source;
        edit = pasted(source->adjustments, edit);
    }
    if (auto set = applySettings(edit, request.settings); !set) return fail(std::move(set).error());
    StoredEdit changed{std::move(edit), now()};
    auto saved = Sidecar(*services.files, *services.random)
                     .save(request.photo, changed.adjustments, changed.editedAt);
    if (!saved) return fail(std::move(saved).error());
    return changed;
}

} // namespace

ExitCode runRecipe(const RecipeRequest& request, Services& services) {
    for (const auto& photo : {std::optional(request.photo), request.copyFrom}) {
        if (!photo) continue;
        if (auto status = services.files->status(*photo); !status) {
            report(status.error());
            return ExitCode::someFailed;
        }
    }
    Adjustments probe; // wrong settings are wrong use, whatever the photo's recipe is
    if (auto set = applySettings(probe, request.settings); !set) {
        report(set.error());
        return ExitCode::wrongUse;
    }
    auto stored = storedEdit(request.photo, services);
    if (!stored) {
        report(stored.error());
        return ExitCode::someFailed;
    }
    const bool changes = request.clear || request.copyFrom || !request.settings.empty();
    if (changes) {
        stored = changedAndSaved(request, std::move(stored->adjustments), services);
        if (!stored) {
            report(stored.error());
            return ExitCode::someFailed;
        }
    }
    if (request.json) {
        auto text = encodedText(stored->adjustments);
        if (!text) {
            report(text.error());
            return ExitCode::someFailed;
        }
        fmt::print("{}\n", *text);
    } else {
        show(stored->adjustments, stored->editedAt);
    }
    return ExitCode::done;
}

} // namespace kelvaro
