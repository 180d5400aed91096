// How the user's language compares, folds and spells: names in the order of a file browser, texts
// without regard to case and accents, dates and numbers in words. Texts are UTF-8; bytes that are
// not become replacement characters. Thread-safe.
#pragma once

#include "platform/LocalCalendar.h"

#include <string>
#include <string_view>
#include <vector>

namespace kelvaro {

class TextRules {
public:
    virtual ~TextRules() = default;
    // Without case and diacritics, for the current locale: "Müller" and "MULLER" become the same.
    virtual std::string folded(std::string_view text) const = 0;
    // Bytes whose plain comparison is the localized standard comparison: without case, runs of
    // digits by their value. Equal for texts that this comparison holds equal.
    virtual std::string sortKey(std::string_view text) const = 0;
    // The number with up to `decimals` decimals, none that is not needed and no grouping: in a
    // fixed form with a point, and in the user's form when that differs.
    virtual std::vector<std::string> numberForms(double value, int decimals) const = 0;
    // "2024-03-09 March Mar 2024 Saturday" with the words of the user's language.
    virtual std::string dateWords(const CivilTime& date) const = 0;
    // "Saturday, 9 March 2024".
    virtual std::string dayHeading(const CivilTime& date) const = 0;
    // "March 2024".
    virtual std::string monthHeading(const CivilTime& date) const = 0;
    // "Today" and "Yesterday".
    virtual std::string todayHeading() const = 0;
    virtual std::string yesterdayHeading() const = 0;
    // "9 March 2024 at 18:30:00", for a panel.
    virtual std::string dateAndTime(const CivilTime& time) const = 0;
};

} // namespace kelvaro
