#include "platform/system/IcuTextRules.h"

#include "base/Locked.h"

#include <unicode/coll.h>
#include <unicode/dtptngen.h>
#include <unicode/normalizer2.h>
#include <unicode/numfmt.h>
#include <unicode/reldatefmt.h>
#include <unicode/smpdtfmt.h>
#include <unicode/sortkey.h>
#include <unicode/tblcoll.h>
#include <unicode/uchar.h>
#include <unicode/udisplaycontext.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <unordered_map>

namespace kelvaro {

namespace {

icu::UnicodeString unicode(std::string_view text) {
    return icu::UnicodeString::fromUTF8({text.data(), static_cast<int32_t>(text.size())});
}

std::string utf8(const icu::UnicodeString& text) {
    std::string result;
    return text.toUTF8String(result);
}

bool isAscii(std::string_view text) {
    return std::all_of(text.begin(), text.end(),
                       [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

// Accents and their like; not the signs that are letters of their script (vowels of Devanagari,
// voicing marks of kana), whose combining class is below 10.
bool isDiacritic(UChar32 c) {
    return u_charType(c) == U_NON_SPACING_MARK && u_getCombiningClass(c) >= 10;
}

class IcuTextRules final : public TextRules {
public:
    explicit IcuTextRules(const icu::Locale& locale)
        : locale_(locale),
          isTurkic_(!std::strcmp(locale.getLanguage(), "tr") ||
                    !std::strcmp(locale.getLanguage(), "az")),
          isEnglish_(!std::strcmp(locale.getLanguage(), "en")) {
        UErrorCode error = U_ZERO_ERROR;
        collator_.reset(icu::Collator::createInstance(locale, error));
        if (collator_) {
            collator_->setStrength(icu::Collator::SECONDARY);
            collator_->setAttribute(UCOL_NUMERIC_COLLATION, UCOL_ON, error);
        }
        decomposer_ = icu::Normalizer2::getNFDInstance(error);
    }

    std::string folded(std::string_view text) const override {
        if (isAscii(text) && !isTurkic_) {
            std::string result(text);
            for (char& c : result)
                c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
            return result;
        }
        UErrorCode error = U_ZERO_ERROR;
        icu::UnicodeString folding = unicode(text);
        folding.foldCase(isTurkic_ ? U_FOLD_CASE_EXCLUDE_SPECIAL_I : U_FOLD_CASE_DEFAULT);
        const icu::UnicodeString decomposed = decomposer_->normalize(folding, error);
        icu::UnicodeString result;
        for (int32_t i = 0; i < decomposed.length(); i = decomposed.moveIndex32(i, 1)) {
            const UChar32 c = decomposed.char32At(i);
            if (!isDiacritic(c)) result.append(c);
        }
        return utf8(result);
    }

    std::string sortKey(std::string_view text) const override {
        if (!collator_) return std::string(text);
        std::array<std::uint8_t, 256> room;
        const icu::UnicodeString source = unicode(text);
        const int32_t length = collator_->getSortKey(source, room.data(), int32_t(room.size()));
        std::string key(static_cast<std::size_t>(length), '\0');
        if (static_cast<std::size_t>(length) <= room.size()) {
            std::memcpy(key.data(), room.data(), key.size());
        } else {
            collator_->getSortKey(source, reinterpret_cast<std::uint8_t*>(key.data()), length);
        }
        if (!key.empty()) key.pop_back(); // the 0 at its end
        return key;
    }

    std::vector<std::string> numberForms(double value, int decimals) const override {
        std::vector<std::string> forms{numberForm(icu::Locale("en_US_POSIX"), value, decimals)};
        const std::string own = numberForm(locale_, value, decimals);
        if (own != forms.front()) forms.push_back(own);
        return forms;
    }

    std::string dateWords(const CivilTime& date) const override {
        return formatted("yyyy-MM-dd MMMM MMM yyyy EEEE", date);
    }
    std::string dayHeading(const CivilTime& date) const override {
        return formatted(isEnglish_ ? "EEEE, d MMMM yyyy" : pattern("yMMMMEEEEd"), date);
    }
    std::string monthHeading(const CivilTime& date) const override {
        return formatted(isEnglish_ ? "MMMM yyyy" : pattern("yMMMM"), date);
    }
    std::string todayHeading() const override { return relative(UDAT_DIRECTION_THIS); }
    std::string yesterdayHeading() const override { return relative(UDAT_DIRECTION_LAST); }
    std::string dateAndTime(const CivilTime& time) const override {
        return formatted(isEnglish_ ? "d MMMM yyyy 'at' HH:mm:ss" : pattern("yMMMMdHHmmss"), time);
    }

private:
    static std::string numberForm(const icu::Locale& locale, double value, int decimals) {
        UErrorCode error = U_ZERO_ERROR;
        std::unique_ptr<icu::NumberFormat> format(
            icu::NumberFormat::createInstance(locale, UNUM_DECIMAL, error));
        if (!format) return {};
        format->setGroupingUsed(false);
        format->setMaximumFractionDigits(decimals);
        icu::UnicodeString text;
        return utf8(format->format(value, text));
    }

    std::string pattern(const char* skeleton) const {
        UErrorCode error = U_ZERO_ERROR;
        std::unique_ptr<icu::DateTimePatternGenerator> generator(
            icu::DateTimePatternGenerator::createInstance(locale_, error));
        return generator ? utf8(generator->getBestPattern(icu::UnicodeString(skeleton), error))
                         : "yyyy-MM-dd";
    }

    // The date is read as one of UTC, whatever the machine's time zone.
    std::string formatted(const std::string& pattern, const CivilTime& date) const {
        return formatters_.with([&](Formatters& formatters) {
            std::unique_ptr<icu::SimpleDateFormat>& format = formatters[pattern];
            if (!format) {
                UErrorCode error = U_ZERO_ERROR;
                format = std::make_unique<icu::SimpleDateFormat>(unicode(pattern), locale_, error);
                format->setTimeZone(*icu::TimeZone::getGMT());
            }
            icu::UnicodeString text;
            return utf8(format->format(double(secondsAsUtc(date)) * 1000, text));
        });
    }

    std::string relative(UDateDirection direction) const {
        UErrorCode error = U_ZERO_ERROR;
        const icu::RelativeDateTimeFormatter formatter(
            locale_, nullptr, UDAT_STYLE_LONG, UDISPCTX_CAPITALIZATION_FOR_BEGINNING_OF_SENTENCE,
            error);
        icu::UnicodeString text;
        return utf8(formatter.format(direction, UDAT_ABSOLUTE_DAY, text, error));
    }

    using Formatters = std::unordered_map<std::string, std::unique_ptr<icu::SimpleDateFormat>>;

    const icu::Locale locale_;
    const bool isTurkic_, isEnglish_;
    std::unique_ptr<icu::Collator> collator_;
    const icu::Normalizer2* decomposer_ = nullptr;
    mutable Locked<Formatters> formatters_; // by pattern
};

} // namespace

std::string userLocale() {
    for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char* value = std::getenv(variable);
        if (!value || !*value) continue;
        std::string name(value);
        name.resize(std::min(name.find_first_of(".@"), name.size()));
        return name == "C" || name == "POSIX" ? "en" : name;
    }
    return "en";
}

std::unique_ptr<TextRules> makeIcuTextRules(const std::string& locale) {
    icu::Locale known(locale.c_str());
    if (known.isBogus() || !*known.getLanguage()) known = icu::Locale("en");
    return std::make_unique<IcuTextRules>(known);
}

} // namespace kelvaro
