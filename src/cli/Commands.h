// The commands of kelvaro-cli. Each does its work, writes results to standard output and one
// sentence per failure to standard error, and answers with the exit code.
#pragma once

#include "app/Services.h"
#include "cli/CommandLine.h"
#include "recipe/Sidecar.h"

namespace kelvaro {

ExitCode runDevelop(const DevelopRequest& request, Services& services);
ExitCode runRecipe(const RecipeRequest& request, Services& services);
ExitCode runInfo(const PanelRequest& request, Services& services);
ExitCode runFavorite(const FavoriteRequest& request, Services& services);
ExitCode runList(const ListRequest& request, Services& services);
ExitCode runProfile(const ProfileRequest& request, Services& services);
ExitCode runExport(const ExportOrder& request, Services& services);

// The edit that lies beside a photo; the unedited record when there is none. Failures name the
// photo.
Result<StoredEdit> storedEdit(const std::filesystem::path& photo, Services& services);

// Applies "key=value" texts in their order; fails at the first that is wrong.
Result<void> applySettings(Adjustments& edit, const std::vector<std::string>& settings);

// One line on standard error: "kelvaro-cli: " and the sentence.
void report(const Failure& failure);

} // namespace kelvaro
