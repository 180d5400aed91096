#include "profile/ProfileSource.h"

namespace kelvaro {

ProfileSource makeProfileSource(std::span<const KnownPhoto> photos, const LocalCalendar& calendar,
                                std::map<std::int64_t, std::int64_t> exportsByDay) {
    ProfileSource source;
    source.exportsByDay = std::move(exportsByDay);
    source.records.reserve(photos.size());
    for (const KnownPhoto& facts : photos) {
        source.records.push_back(makeShotRecord(*facts.photo, facts.meta, facts.isFavorite));
        if (!facts.isEdited) continue;
        if (facts.editDate)
            source.editDays.push_back(dayNumber(calendar.civil(*facts.editDate)));
        else
            ++source.undatedEdits;
    }
    return source;
}

} // namespace kelvaro
