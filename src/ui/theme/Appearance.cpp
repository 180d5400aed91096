#include "ui/theme/Appearance.h"

#include <QApplication>
#include <QProxyStyle>

// Pictures of a static library are known only once somebody asks for them; outside our namespace,
// as Qt wants it.
static void registerPictures() {
    Q_INIT_RESOURCE(resources);
}

namespace kelvaro {
namespace {

// Alt and a letter open a menu without a line under each title telling so.
class QuietStyle final : public QProxyStyle {
public:
    QuietStyle() : QProxyStyle("fusion") {}
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* data) const override {
        if (hint == SH_UnderlineShortcut) return 0;
        return QProxyStyle::styleHint(hint, option, widget, data);
    }
};

} // namespace

void Appearance::apply(bool dark, bool moves) {
    registerPictures();
    theme_ = dark ? Theme::forDark() : Theme::forLight();
    moves_ = moves;
    if (qApp->styleSheet().isEmpty()) QApplication::setStyle(new QuietStyle);
    QApplication::setFont(interfaceFont());
    QApplication::setPalette(paletteOf(theme_));
    qApp->setStyleSheet(styleSheetOf(theme_));
    QApplication::setEffectEnabled(Qt::UI_AnimateMenu, false);
    QApplication::setEffectEnabled(Qt::UI_AnimateCombo, false);
}

} // namespace kelvaro
