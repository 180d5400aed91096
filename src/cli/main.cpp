// kelvaro-cli: develops photos, shows and changes their recipes, and tells what they are.
#include "cli/Commands.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <csignal>
#include <cstdio>
#include <functional>
#include <map>
#include <set>

namespace kelvaro {
namespace {

Cancellation interruption;

void interrupt(int) {
    interruption.cancel();
}

// Ctrl-C and a polite kill end the work between two steps, so that no temporary file stays behind.
// A second one ends the program at once.
void stopOnSignals() {
    struct sigaction action {};
    action.sa_handler = interrupt;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

// Paths come as they are typed; the parser's own reading of a path would split it at blanks.
CLI::Option* pathOption(CLI::App* command, const std::string& name, const std::string& help,
                        const std::function<void(std::filesystem::path)>& take) {
    return command->add_option_function<std::string>(
        name, [take](const std::string& text) { take(std::filesystem::path(text)); }, help);
}

// One path or more, without which the command cannot run.
void requiredPaths(CLI::App* command, const std::string& name,
                   std::vector<std::filesystem::path>& paths, const std::string& help) {
    command
        ->add_option_function<std::vector<std::string>>(
            name,
            [&paths](const std::vector<std::string>& texts) {
                paths.assign(texts.begin(), texts.end());
            },
            help)
        ->required();
}

CLI::App* addDevelop(CLI::App& app, DevelopRequest& request) {
    CLI::App* command =
        app.add_subcommand("develop", "Develop one photo with its recipe into a picture file");
    pathOption(command, "photo", "The RAW file or picture to develop", [&](auto path) {
        request.photo = path;
    })->required();
    pathOption(command, "-o,--output",
               "The file to write; jpg, heic, tif or png chooses the format",
               [&](auto path) { request.output = path; })
        ->required();
    command
        ->add_option("--set", request.settings,
                     "Set one adjustment on top of the recipe, as key=value; may be repeated")
        ->expected(1)
        ->allow_extra_args(false)
        ->take_all();
    auto* recipe =
        pathOption(command, "--recipe", "Use the recipe in this JSON file, not the photo's own",
                   [&](auto path) { request.recipe = path; });
    auto* none = command->add_flag("--no-sidecar", request.noSidecar, "Start from no recipe");
    recipe->excludes(none);
    command->add_option("--long-edge", request.longEdge, "Reduce the longer side to so many pixels")
        ->check(CLI::Range(1, 1'000'000));
    command->add_option("--quality", request.quality, "0 to 1, for JPEG and HEIC")
        ->check(CLI::Range(0.0, 1.0))
        ->capture_default_str();
    const std::map<std::string, Pipeline::OutputSpace> spaces{
        {"sRGB", Pipeline::OutputSpace::sRGB}, {"displayP3", Pipeline::OutputSpace::displayP3}};
    command->add_option("--space", request.space, "The colour space to write")
        ->transform(CLI::CheckedTransformer(spaces, CLI::ignore_case))
        ->option_text("sRGB|displayP3 [sRGB]");
    auto* linear = command->add_flag(
        "--linear", request.linear,
        "Write the finished picture in the linear working space, as 32-bit float TIFF");
    command
        ->add_option_function<std::string>(
            "--stage", [&](const std::string&) { request.sceneStage = true; },
            "\"scene\": write the scene-linear capture of a RAW file, as 32-bit float TIFF")
        ->check(CLI::IsMember({"scene"}))
        ->excludes(linear);
    pathOption(command, "--analysis", "Also write what the photo's analysis found into this folder",
               [&](auto path) { request.analysis = path; });
    command->add_flag("--timings", request.timings, "Print milliseconds per step");
    return command;
}

CLI::App* addRecipe(CLI::App& app, RecipeRequest& request) {
    CLI::App* command = app.add_subcommand("recipe", "Show or change the recipe of a photo");
    pathOption(command, "photo", "The photo", [&](auto path) { request.photo = path; })->required();
    command->add_flag("--json", request.json, "Show the recipe as JSON");
    command->add_option("--set", request.settings, "Set one adjustment, as key=value; repeatable")
        ->expected(1)
        ->allow_extra_args(false)
        ->take_all();
    command->add_flag("--clear", request.clear, "Remove the whole edit first");
    pathOption(command, "--copy-from",
               "Take over another photo's adjustments and masks; the crop stays",
               [&](auto path) { request.copyFrom = path; });
    return command;
}

// "2/8"; the option's own check has made sure that it is one.
Shard shardFrom(const std::string& text) {
    const auto slash = text.find('/');
    return {std::stoul(text.substr(0, slash)), std::stoul(text.substr(slash + 1))};
}

std::string checkShard(const std::string& text) {
    const auto slash = text.find('/');
    const auto isNumber = [](const std::string& part) {
        return !part.empty() && part.size() <= 9 &&
               part.find_first_not_of("0123456789") == std::string::npos;
    };
    const bool wellFormed = slash != std::string::npos && isNumber(text.substr(0, slash)) &&
                            isNumber(text.substr(slash + 1));
    if (!wellFormed) return "write I/N, such as 2/8";
    const Shard shard = shardFrom(text);
    return shard.number >= 1 && shard.number <= shard.count ? "" : "I must lie between 1 and N";
}

void addExportLook(CLI::App* command, ExportOrder& request) {
    command
        ->add_option_function<std::string>(
            "--format", [&](const std::string& name) { request.format = *exportFormat(name); },
            "jpeg, heic, tiff or png [jpeg]; TIFF and PNG hold 16 bits")
        ->check(CLI::IsMember({"jpeg", "heic", "tiff", "png"}))
        ->option_text("NAME");
    command->add_option("--quality", request.quality, "10 to 100, for JPEG and HEIC")
        ->check(CLI::Range(10.0, 100.0))
        ->capture_default_str();
    command
        ->add_option("--long-edge", request.longEdge,
                     "Reduce the longer side, border included, to so many pixels")
        ->check(CLI::Range(256, 20000));
    command
        ->add_option("--border", request.borderPercent,
                     "A white border, in percent of the longer side; 1 where no number follows")
        ->check(CLI::Range(1.0, 20.0))
        ->expected(0, 1)
        ->default_str("1")
        ->option_text("[PERCENT]");
    command
        ->add_option_function<std::string>(
            "--stamp", [&](const std::string& name) { request.stamp = *DateStamp::style(name); },
            "Imprint the day of capture: dayMonthYear (where nothing follows) or monthDayYear")
        ->check(CLI::IsMember({"none", "dayMonthYear", "monthDayYear"}))
        ->expected(0, 1)
        ->default_str("dayMonthYear")
        ->option_text("[STYLE]");
    command
        ->add_option_function<std::string>(
            "--space",
            [&](const std::string& name) { request.space = *Pipeline::outputSpace(name); },
            "The colour space to write: sRGB or displayP3 [sRGB]")
        ->check(CLI::IsMember({"sRGB", "displayP3"}))
        ->option_text("NAME");
}

CLI::App* addExport(CLI::App& app, ExportOrder& request) {
    CLI::App* command = app.add_subcommand(
        "export", "Export photos, and the photos of folders, with their recipes into a folder");
    requiredPaths(command, "paths", request.paths,
                  "Photos, and folders whose photos are meant (not those of folders inside)");
    pathOption(command, "--to", "The folder to write to; made where it is missing", [&](auto path) {
        request.folder = path;
    })->required();
    addExportLook(command, request);
    command->add_flag("--no-metadata", request.noMetadata,
                      "Leave camera info and location out of the files");
    command->add_flag("--replace", request.replace,
                      "Replace files of the same name, except photos that lie beside those given");
    command->add_flag("--no-verify", request.noVerify,
                      "Don't read files back before they get their names");
    command
        ->add_option_function<std::string>(
            "--shard", [&](const std::string& text) { request.shard = shardFrom(text); },
            "Export only the I-th of N parts of the photos, to share them among machines")
        ->check(CLI::Validator(checkShard, "I/N"));
    command->add_flag("--json", request.json, "Print one JSON object for each photo");
    command->add_flag("--timings", request.timings, "Print milliseconds per step");
    return command;
}

CLI::App* addInfo(CLI::App& app, PanelRequest& request) {
    CLI::App* command =
        app.add_subcommand("info", "Tell everything that photos record of themselves");
    requiredPaths(command, "photos", request.photos, "The photos");
    command->add_flag("--json", request.json, "One JSON array with an object per photo");
    return command;
}

CLI::App* addFavorite(CLI::App& app, FavoriteRequest& request) {
    CLI::App* command = app.add_subcommand("favorite", "Make photos favorites");
    requiredPaths(command, "photos", request.photos, "The photos");
    command->add_flag("--off", request.off, "Remove them from the favorites instead");
    return command;
}

// Values that are set as they are typed.
template<class T>
CLI::Option* setOption(CLI::App* command, const std::string& name, std::set<T>& values,
                       const std::string& help) {
    return command
        ->add_option_function<std::vector<T>>(
            name, [&](const std::vector<T>& given) { values.insert(given.begin(), given.end()); },
            help)
        ->expected(1)
        ->allow_extra_args(false)
        ->take_all();
}

CLI::App* addList(CLI::App& app, ListRequest& request) {
    CLI::App* command = app.add_subcommand(
        "list", "List the photos of folders: searched, filtered, sorted, grouped by day");
    requiredPaths(command, "folders", request.folders,
                  "The folders; folders inside them are not looked into");
    command->add_option("--query", request.query,
                        "Words that all must be found: names, camera, lens, 35mm, f/1.8, iso 400, "
                        "1/250, 2024, March, edited, favorite");
    const std::map<std::string, Scope::Kind> scopes{{"all", Scope::Kind::all},
                                                    {"edited", Scope::Kind::edited},
                                                    {"favorites", Scope::Kind::favorites}};
    command->add_option("--scope", request.scope, "Which photos to look at")
        ->transform(CLI::CheckedTransformer(scopes))
        ->option_text("all|edited|favorites [all]");
    setOption(command, "--camera", request.filter.cameras, "Only this camera model; repeatable");
    setOption(command, "--lens", request.filter.lenses, "Only this lens; repeatable");
    setOption(command, "--focal", request.filter.focalLengths,
              "Only this focal length in mm, as recorded; repeatable");
    const std::map<std::string, PhotoKind> kinds{{"raw", PhotoKind::raw},
                                                 {"image", PhotoKind::image}};
    setOption(command, "--kind", request.filter.formats, "Only RAW files, or only other images")
        ->transform(CLI::CheckedTransformer(kinds))
        ->option_text("raw|image");
    std::map<std::string, SortKey> keys;
    for (const SortKey key : kSortKeys)
        keys.emplace(rawValue(key), key);
    command->add_option("--sort", request.order.key, "What to sort by")
        ->transform(CLI::CheckedTransformer(keys))
        ->option_text("dateTaken|modified|created|name|size [dateTaken]");
    command->add_flag_callback(
        "--descending", [&] { request.order.ascending = false; }, "The last one first");
    command->add_flag("--groups", request.groups, "Put headings between the days");
    command->add_flag("--json", request.json,
                      "One JSON array of photos, or of groups of photos with --groups");
    return command;
}

// The day of "2024-03-09"; none when the text names no day of the calendar.
std::optional<std::int64_t> dayFrom(const std::string& text) {
    CivilTime date;
    char rest = 0;
    const bool isShaped =
        text.size() == 10 &&
        std::sscanf(text.c_str(), "%4d-%2d-%2d%c", &date.year, &date.month, &date.day, &rest) == 3;
    if (!isShaped || date.month < 1 || date.month > 12) return std::nullopt;
    const std::int64_t day = dayNumber(date);
    // A 31st that the month lacks comes back as a day of the next.
    return civilFromSeconds(day * 86'400) == date ? std::optional(day) : std::nullopt;
}

void addDayOption(CLI::App* command, const std::string& name, std::optional<std::int64_t>& day,
                  const std::string& help) {
    const auto check = [](const std::string& text) {
        return dayFrom(text) ? std::string() : "write a day as 2024-03-09";
    };
    command
        ->add_option_function<std::string>(
            name, [&day](const std::string& text) { day = dayFrom(text); }, help)
        ->check(CLI::Validator(check, "DATE"));
}

CLI::App* addProfile(CLI::App& app, ProfileRequest& request) {
    CLI::App* command =
        app.add_subcommand("profile", "Tell how the photos of folders were taken, in words");
    requiredPaths(command, "folders", request.folders,
                  "The folders; folders inside them are not looked into");
    addDayOption(command, "--from", request.from, "Only photos of this day and later");
    addDayOption(command, "--to", request.to, "Only photos of this day and earlier");
    command->add_flag("--json", request.json, "One JSON object, with the charts");
    return command;
}

int run(int argc, char** argv) {
    CLI::App app{"Kelvaro on the command line: develops photos without ever changing an original.",
                 "kelvaro-cli"};
    app.set_version_flag("--version", "kelvaro-cli " KELVARO_VERSION);
    app.require_subcommand(1);
    app.footer("Exit codes: 0 all done, 1 some photos failed, 2 wrong use, 130 stopped.");
    DevelopRequest develop;
    RecipeRequest recipe;
    PanelRequest info;
    ListRequest list;
    FavoriteRequest favorite;
    const CLI::App* developCommand = addDevelop(app, develop);
    const CLI::App* recipeCommand = addRecipe(app, recipe);
    const CLI::App* favoriteCommand = addFavorite(app, favorite);
    const CLI::App* listCommand = addList(app, list);
    ProfileRequest profile;
    const CLI::App* profileCommand = addProfile(app, profile);
    ExportOrder exports;
    const CLI::App* exportCommand = addExport(app, exports);
    addInfo(app, info);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        const bool asked = error.get_exit_code() == 0; // --help, --version
        app.exit(error);
        return static_cast<int>(asked ? ExitCode::done : ExitCode::wrongUse);
    }
    stopOnSignals();
    Services services = makeServices(interruption);
    if (developCommand->parsed()) return static_cast<int>(runDevelop(develop, services));
    if (recipeCommand->parsed()) return static_cast<int>(runRecipe(recipe, services));
    if (favoriteCommand->parsed()) return static_cast<int>(runFavorite(favorite, services));
    if (listCommand->parsed()) return static_cast<int>(runList(list, services));
    if (exportCommand->parsed()) return static_cast<int>(runExport(exports, services));
    if (profileCommand->parsed()) return static_cast<int>(runProfile(profile, services));
    return static_cast<int>(runInfo(info, services));
}

} // namespace

} // namespace kelvaro

int main(int argc, char** argv) {
    try {
        return kelvaro::run(argc, argv);
    } catch (const std::bad_alloc&) {
        std::fputs("kelvaro-cli: There is not enough memory for this picture.\n", stderr);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "kelvaro-cli: Something went wrong: %s\n", error.what());
    }
    return static_cast<int>(kelvaro::ExitCode::someFailed);
}
