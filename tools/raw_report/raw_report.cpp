// The RAW engine's pictures and figures on a folder of test photos (README there): tables on
// standard output, and contact sheets to look at.
#include "CameraPictures.h"
#include "SyntheticTables.h"

#include <cstdio>
#include <cstring>
#include <string>

int main(int argc, char** argv) {
    using namespace kelvaro;
    const std::string what = argc > 2 ? argv[2] : "";
    if (argc < 2 || (what == "sheets" && argc != 4)) {
        std::fprintf(stderr, "usage: raw_report PHOTOS [demosaic|truth|highlights|match|all]\n"
                             "       raw_report PHOTOS sheets FOLDER\n");
        return 2;
    }
    const std::filesystem::path photos = argv[1];
    const Cancellation never;
    Services services = makeServices(never);
    if (what == "sheets") {
        report::makeContactSheets(photos / "raw", argv[3], services);
        return 0;
    }
    const auto wants = [&](const char* name) {
        return what.empty() || what == "all" || what == name;
    };
    if (wants("demosaic")) report::printDemosaic(photos / "kodak");
    if (wants("truth")) report::printTruth(photos / "raw");
    if (wants("highlights")) report::printHighlights(photos / "kodak");
    if (wants("match")) report::printCameraMatch(photos / "raw", services);
}
