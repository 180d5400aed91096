#include "ui/Texts.h"

#include "app/PlatformWords.h"

#include <QCoreApplication>
#include <QLocale>

namespace kelvaro {

QString words(std::string_view stored) {
    const std::string text(stored);
    const QString translated = QCoreApplication::translate("kelvaro", text.c_str());
    return QString::fromStdString(shownText(translated.toStdString()));
}

QString counted(qint64 count, std::string_view one, std::string_view many) {
    return count == 1 ? words(one) : words(many).arg(number(count));
}

QString number(qint64 value) {
    return QLocale().toString(value);
}

QString breakable(const QString& text) {
    constexpr int longestWord = 24;
    constexpr QChar breakHere(0x200B); // takes no room
    QString broken;
    int length = 0; // of the word so far
    for (const QChar c : text) {
        length = c.isSpace() ? 0 : length + 1;
        if (length > longestWord && !c.isLowSurrogate() && !c.isMark()) {
            broken += breakHere;
            length = 1;
        }
        broken += c;
    }
    return broken;
}

} // namespace kelvaro
