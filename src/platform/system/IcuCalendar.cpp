#include "platform/system/IcuCalendar.h"

#include <unicode/basictz.h>
#include <unicode/timezone.h>

namespace kelvaro {

namespace {

constexpr std::int64_t kNanoseconds = 1'000'000'000;

class IcuCalendar final : public LocalCalendar {
public:
    explicit IcuCalendar(std::unique_ptr<icu::TimeZone> zone) : zone_(std::move(zone)) {}

    CivilTime civil(FileTime instant) const override {
        std::int64_t seconds = instant.nanoseconds / kNanoseconds;
        if (instant.nanoseconds % kNanoseconds < 0) --seconds;
        return civilFromSeconds(seconds + offsetAt(double(seconds) * 1000));
    }

    FileTime instant(const CivilTime& civil) const override {
        const std::int64_t wall = secondsAsUtc(civil);
        const auto* zone = dynamic_cast<const icu::BasicTimeZone*>(zone_.get());
        if (!zone) return {(wall - offsetAt(double(wall) * 1000)) * kNanoseconds};
        int raw = 0, daylight = 0;
        UErrorCode error = U_ZERO_ERROR;
        zone->getOffsetFromLocal(double(wall) * 1000, UCAL_TZ_LOCAL_FORMER, UCAL_TZ_LOCAL_FORMER,
                                 raw, daylight, error);
        return {(wall - (raw + daylight) / 1000) * kNanoseconds};
    }

private:
    // Seconds ahead of UTC.
    std::int64_t offsetAt(double milliseconds) const {
        int raw = 0, daylight = 0;
        UErrorCode error = U_ZERO_ERROR;
        zone_->getOffset(milliseconds, false, raw, daylight, error);
        return (raw + daylight) / 1000;
    }

    std::unique_ptr<icu::TimeZone> zone_;
};

} // namespace

std::unique_ptr<LocalCalendar> makeIcuCalendar(const std::string& zone) {
    std::unique_ptr<icu::TimeZone> own(
        zone.empty() ? icu::TimeZone::detectHostTimeZone()
                     : icu::TimeZone::createTimeZone(icu::UnicodeString::fromUTF8(zone)));
    return std::make_unique<IcuCalendar>(std::move(own));
}

} // namespace kelvaro
