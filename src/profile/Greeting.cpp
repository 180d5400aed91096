#include "profile/Greeting.h"

#include "profile/WallTime.h"

#include <array>

namespace kelvaro {
namespace {

constexpr std::array earlyMorning{
    GreetingLine{"Early start", "? The light's still soft"},
    GreetingLine{"Good morning", ". Up with the blue hour"},
    GreetingLine{"Morning", ". First coffee, first edits?"},
};
constexpr std::array weekendMorning{
    GreetingLine{"Good morning", ". Weekend light ahead"},
    GreetingLine{"Morning", ". Out shooting today?"},
};
constexpr std::array mondayMorning{
    GreetingLine{"Good morning", ". A fresh week of photos"},
    GreetingLine{"Happy Monday", ". New week, new light"},
};
constexpr std::array weekdayMorning{
    GreetingLine{"Good morning", ". The day is young"},
    GreetingLine{"Morning", ". Fresh light today?"},
    GreetingLine{"Good morning", ". Let's make them shine"},
};
constexpr std::array midday{
    GreetingLine{"Hello", ". Lunchtime edit?"},
    GreetingLine{"Midday", ". Harsh light outside, perfect for editing"},
    GreetingLine{"Hi", ". A few photos before lunch?"},
};
constexpr std::array weekdayAfternoon{
    GreetingLine{"Good afternoon", ". The light is turning"},
    GreetingLine{"Afternoon", ". Golden hour isn't far"},
    GreetingLine{"Good afternoon", ". Time for a few edits?"},
};
constexpr std::array weekendAfternoon{
    GreetingLine{"Good afternoon", ". Weekend wander?"},
    GreetingLine{"Afternoon", ". How was the shoot?"},
};
constexpr std::array evening{
    GreetingLine{"Good evening", ". Soft light, quiet hours"},
    GreetingLine{"Golden hour", ". Camera nearby?"},
    GreetingLine{"Evening", ". Time to sort the day's shots?"},
};
constexpr std::array fridayEvening{
    GreetingLine{"Good evening", ". The weekend's nearly here"},
    GreetingLine{"Evening", ". Plans for the weekend light?"},
};
constexpr std::array lateEvening{
    GreetingLine{"Working late", "? The photos are glad"},
    GreetingLine{"Late session", "? Calm light for editing"},
    GreetingLine{"Good evening", ". One more edit?"},
};
constexpr std::array night{
    GreetingLine{"Still up", "? The photos will wait"},
    GreetingLine{"Night owl hours", ". Just you and the stars"},
    GreetingLine{"Burning the midnight oil", "? Mind the screen's glow"},
};

// Days since 0001-01-01, which is day 1.
std::int64_t ordinalOf(std::int64_t dayNumber) {
    constexpr std::int64_t ordinalOf1970 = 719'163;
    return dayNumber + ordinalOf1970;
}

} // namespace

std::span<const GreetingLine> greetingLines(const CivilTime& now) {
    const Weekday day = weekdayOf(dayNumber(now));
    const bool isWeekend = day >= Weekday::saturday;
    if (now.hour < 5) return night;
    if (now.hour < 8) return earlyMorning;
    if (now.hour < 11) {
        if (isWeekend) return weekendMorning;
        return day == Weekday::monday ? std::span<const GreetingLine>(mondayMorning)
                                      : weekdayMorning;
    }
    if (now.hour < 14) return midday;
    if (now.hour < 17) {
        return isWeekend ? std::span<const GreetingLine>(weekendAfternoon) : weekdayAfternoon;
    }
    if (now.hour < 21) {
        return day == Weekday::friday ? std::span<const GreetingLine>(fridayEvening) : evening;
    }
    return lateEvening;
}

std::string greeting(const CivilTime& now, std::string_view name) {
    const auto lines = greetingLines(now);
    const auto count = static_cast<std::int64_t>(lines.size());
    const std::int64_t ordinal = ordinalOf(dayNumber(now));
    const auto& line = lines[static_cast<std::size_t>((ordinal % count + count) % count)];
    std::string text(line.salutation);
    if (!name.empty()) text.append(", ").append(name);
    return text.append(line.ending);
}

} // namespace kelvaro
