// tag_table: prints every style tag with photos just short of its threshold, exactly on it and just
// past it, and what they earn.
#include "TagCases.h"

#include <fmt/format.h>

#include <set>

namespace {

std::string told(const kelvaro::test::TagPhotos& photos, const std::string& title) {
    const auto tag = kelvaro::test::earned(photos, title);
    return fmt::format("{:<19}{:<8}", photos.told,
                       tag ? fmt::format("{:.3f}", tag->strength) : "-");
}

} // namespace

int main() {
    fmt::print("{:<4}{:<28}{:<22}{:<27}{:<27}{:<27}{}\n", "#", "tag", "threshold", "just short",
               "exactly", "just past", "evidence exactly on the threshold");
    std::set<int> rules;
    for (const auto& each : kelvaro::test::tagCases()) {
        rules.insert(each.rule);
        const auto tag = kelvaro::test::earned(each.exactly, each.title);
        fmt::print("{:<4}{:<28}{:<22}{}{}{}{}\n", each.rule, each.title, each.threshold,
                   told(each.shortOf, each.title), told(each.exactly, each.title),
                   told(each.past, each.title), tag ? tag->reason : "NOT EARNED");
    }
    fmt::print("{} rules. Numbers behind the photos are strengths; \"-\": not earned.\n",
               rules.size());
    return rules.size() == 28 ? 0 : 1;
}
