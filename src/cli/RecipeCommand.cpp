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

Result<Adjustments> storedEdit(const std::filesystem::path& photo, Services& services,
                               double* editedAt = nullptr) {
    auto stored = Sidecar(*services.files, *services.random).loadPhoto(photo);
    if (!stored) return fail(std::move(stored).error());
    if (!*stored) return Adjustments{};
    if (editedAt) *editedAt = (*stored)->editedAt;
    return std::move((*stored)->adjustments);
}

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

Result<Adjustments> changed(const RecipeRequest& request, Adjustments edit, Services& services) {
    if (request.clear) edit = Adjustments{};
    if (request.copyFrom) {
        auto source = storedEdit(*request.copyFrom, services);
        if (!source) return source;
        edit = pasted(*source, edit);
    }
    if (auto set = applySettings(edit, request.settings); !set) return fail(std::move(set).error());
    return edit;
}

} // namespace

Result<void> applySettings(Adjustments& edit, const std::vector<std::string>& settings) {
    for (const std::string& setting : settings) {
        const auto equals = setting.find('=');
        if (equals == std::string::npos)
            return fail(FailureKind::malformed,
                        fmt::format("\"{}\" is no setting: write key=value.", setting));
        auto set = setFromText(edit, std::string_view(setting).substr(0, equals),
                               std::string_view(setting).substr(equals + 1));
        if (!set) return set;
    }
    return {};
}

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
    double editedAt = 0;
    auto edit = storedEdit(request.photo, services, &editedAt);
    if (!edit) {
        report(edit.error());
        return ExitCode::someFailed;
    }
    const bool changes = request.clear || request.copyFrom || !request.settings.empty();
    if (changes) {
        edit = changed(request, std::move(*edit), services);
        if (!edit) {
            report(edit.error());
            return ExitCode::someFailed;
        }
        editedAt = now();
        const auto saved =
            Sidecar(*services.files, *services.random).save(request.photo, *edit, editedAt);
        if (!saved) {
            report(saved.error());
            return ExitCode::someFailed;
        }
    }
    if (request.json) {
        auto text = encodedText(*edit);
        if (!text) {
            report(text.error());
            return ExitCode::someFailed;
        }
        fmt::print("{}\n", *text);
    } else {
        show(*edit, editedAt);
    }
    return ExitCode::done;
}

} // namespace kelvaro
