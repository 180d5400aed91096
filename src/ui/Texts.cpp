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

} // namespace kelvaro
