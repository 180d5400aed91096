// usage: approve_golden [--write] [NAME...]
//
// Lists which golden pictures differ from what the program draws now; --write stores the drawn ones
// in the source tree (all that differ, or those named), for a person to look at and commit.
#include "develop/Pictures.h"
#include "develop/golden/GoldenCases.h"
#include "platform/imaging/ReferenceRenderer.h"

#include <algorithm>
#include <cstdio>
#include <string_view>

int main(int argc, char** argv) {
    using namespace kelvaro;
    bool write = false;
    std::vector<std::string_view> names;
    for (int i = 1; i < argc; ++i) {
        if (std::string_view(argv[i]) == "--write")
            write = true;
        else
            names.emplace_back(argv[i]);
    }
    const auto renderer = makeReferenceRenderer();
    int differing = 0;
    for (const auto& picture : test::drawnGoldenPictures(*renderer)) {
        if (!names.empty() && std::find(names.begin(), names.end(), picture.name) == names.end())
            continue;
        const auto golden = test::readGolden(test::goldenPath(picture.name));
        const bool sameSize = golden && golden->extent() == picture.pixels.extent();
        const auto difference =
            sameSize ? test::worstDifference(picture.pixels, *golden) : test::Difference{};
        if (sameSize && difference.worst == 0) continue;
        ++differing;
        std::printf("%-18s %s\n", picture.name.c_str(),
                    !golden     ? "is new"
                    : !sameSize ? "has another size"
                                : difference.where.c_str());
        if (write) test::writeGolden(test::goldenPath(picture.name), picture.pixels);
    }
    std::printf("%d golden pictures %s\n", differing, write ? "stored" : "differ");
    return 0;
}
