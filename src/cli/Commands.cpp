#include "cli/Commands.h"

#include "recipe/RecipeActions.h"

#include <fmt/format.h>

namespace kelvaro {

Result<StoredEdit> storedEdit(const std::filesystem::path& photo, Services& services) {
    auto stored = Sidecar(*services.files, *services.random).loadPhoto(photo);
    if (!stored)
        return fail(stored.error().kind,
                    fmt::format("The edit of “{}” can't be used: {}", photo.filename().string(),
                                stored.error().message));
    return *stored ? std::move(**stored) : StoredEdit{};
}

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

void report(const Failure& failure) {
    fmt::print(stderr, "kelvaro-cli: {}\n", failure.message);
}

} // namespace kelvaro
