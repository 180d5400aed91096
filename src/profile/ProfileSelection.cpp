#include "profile/ProfileSelection.h"

#include "profile/WallTime.h"

namespace kelvaro {

SharedRestriction photosOfBar(const Chart& chart, std::size_t bar, const ProfilePeriod& period,
                              const CivilTime& today) {
    const auto holds = [chart, bar, days = daysOf(period, today)](const Photo& photo,
                                                                  const PhotoMeta* meta) {
        const ShotRecord record = makeShotRecord(photo, meta, false);
        return isIn(days, record) && chart.barOf(record) == bar;
    };
    return std::make_shared<const PhotoRestriction>(
        PhotoRestriction{chart.bars()[bar].label + " · " + title(period), holds});
}

SharedRestriction photosOfDay(std::int64_t day, const TextRules& rules) {
    const auto holds = [day](const Photo&, const PhotoMeta* meta) {
        return meta && meta->takenOnWall && dayOf(*meta->takenOnWall) == day;
    };
    return std::make_shared<const PhotoRestriction>(
        PhotoRestriction{rules.dayHeading(civilFromSeconds(day * kSecondsPerDay)), holds});
}

} // namespace kelvaro
