// The one mark that every text of the window passes: it looks for a translation and turns what is
// stored into the words of this platform. lupdate finds the texts by -tr-function-alias.
#pragma once

#include <QString>

#include <string_view>

namespace kelvaro {

QString words(std::string_view stored);
// "1 photo" and "12 photos": the first form for exactly one, the other with %1 for the rest.
QString counted(qint64 count, std::string_view one, std::string_view many);
// A number as the user's language groups its digits.
QString number(qint64 value);

// The same text, which a label can break inside words that are longer than any of a language.
QString breakable(const QString& text);

inline QString fromUtf8(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

} // namespace kelvaro
