#include "platform/system/IcuCalendar.h"

#include <unicode/basictz.h>
#include <unicode/timezone.h>
#include <unicode/tztrans.h>

#include <algorithm>
#include <vector>

namespace kelvaro {

namespace {

constexpr std::int64_t kNanoseconds = 1'000'000'000;

// The years whose changes of the clock are looked up once; outside them ICU is asked each time.
constexpr CivilTime kFirst{1900, 1, 1}, kEnd{2100, 1, 1};

class IcuCalendar final : public LocalCalendar {
public:
    explicit IcuCalendar(std::unique_ptr<icu::TimeZone> zone) : zone_(std::move(zone)) {
        collectStretches();
    }

    CivilTime civil(FileTime instant) const override {
        std::int64_t seconds = instant.nanoseconds / kNanoseconds;
        if (instant.nanoseconds % kNanoseconds < 0) --seconds;
        return civilFromSeconds(seconds + offsetAt(seconds));
    }

    FileTime instant(const CivilTime& civil) const override {
        const std::int64_t wall = secondsAsUtc(civil);
        return {(wall - offsetOnWall(wall)) * kNanoseconds};
    }

private:
    // From one change of the clock to the next.
    struct Stretch {
        std::int64_t begin;     // UTC seconds
        std::int64_t wallBegin; // the first reading that can't be one of the stretch before
        int offset;             // seconds ahead of UTC
    };

    void collectStretches() {
        const auto* zone = dynamic_cast<const icu::BasicTimeZone*>(zone_.get());
        if (!zone) return;
        const std::int64_t first = secondsAsUtc(kFirst), end = secondsAsUtc(kEnd);
        const int firstOffset = askedOffset(first);
        stretches_.push_back({first, first + firstOffset, firstOffset});
        icu::TimeZoneTransition change;
        double at = double(first) * 1000;
        while (zone->getNextTransition(at, false, change) &&
               change.getTime() < double(end) * 1000) {
            at = change.getTime();
            const auto begin = std::int64_t(at / 1000);
            const int before = stretches_.back().offset, after = askedOffset(begin);
            stretches_.push_back({begin, begin + std::max(before, after), after});
        }
        stretches_.push_back({end, end + stretches_.back().offset, 0});
    }

    template<class Field>
    const Stretch* stretchAt(std::int64_t seconds, Field field) const {
        const auto next = std::upper_bound(
            stretches_.begin(), stretches_.end(), seconds,
            [&](std::int64_t wanted, const Stretch& stretch) { return wanted < stretch.*field; });
        return next == stretches_.begin() || next == stretches_.end() ? nullptr : &*(next - 1);
    }

    int offsetAt(std::int64_t seconds) const {
        const Stretch* stretch = stretchAt(seconds, &Stretch::begin);
        return stretch ? stretch->offset : askedOffset(seconds);
    }

    // Of a clock on the wall. A reading that comes twice is the first one, and one that is skipped
    // is read as if the clock had not been changed yet.
    int offsetOnWall(std::int64_t wall) const {
        const Stretch* stretch = stretchAt(wall, &Stretch::wallBegin);
        if (stretch) return stretch->offset;
        const auto* zone = dynamic_cast<const icu::BasicTimeZone*>(zone_.get());
        if (!zone) return askedOffset(wall);
        int raw = 0, daylight = 0;
        UErrorCode error = U_ZERO_ERROR;
        zone->getOffsetFromLocal(double(wall) * 1000, UCAL_TZ_LOCAL_FORMER, UCAL_TZ_LOCAL_FORMER,
                                 raw, daylight, error);
        return (raw + daylight) / 1000;
    }

    int askedOffset(std::int64_t seconds) const {
        int raw = 0, daylight = 0;
        UErrorCode error = U_ZERO_ERROR;
        zone_->getOffset(double(seconds) * 1000, false, raw, daylight, error);
        return (raw + daylight) / 1000;
    }

    std::unique_ptr<icu::TimeZone> zone_;
    std::vector<Stretch> stretches_; // in order, the last one only an end; empty: always ask
};

} // namespace

std::unique_ptr<LocalCalendar> makeIcuCalendar(const std::string& zone) {
    std::unique_ptr<icu::TimeZone> own(
        zone.empty() ? icu::TimeZone::detectHostTimeZone()
                     : icu::TimeZone::createTimeZone(icu::UnicodeString::fromUTF8(zone)));
    return std::make_unique<IcuCalendar>(std::move(own));
}

} // namespace kelvaro
