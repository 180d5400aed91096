#include "ui/theme/Appearance.h"

#include <QApplication>
#include <QStyle>
#include <QStyleFactory>

// Pictures of a static library are known only once somebody asks for them; outside our namespace,
// as Qt wants it.
static void registerPictures() {
    Q_INIT_RESOURCE(resources);
}

namespace kelvaro {

void Appearance::apply(bool dark, bool moves) {
    registerPictures();
    theme_ = dark ? Theme::forDark() : Theme::forLight();
    moves_ = moves;
    if (qApp->style()->name() != "fusion" && qApp->styleSheet().isEmpty())
        QApplication::setStyle(QStyleFactory::create("fusion"));
    QApplication::setFont(interfaceFont());
    QApplication::setPalette(paletteOf(theme_));
    qApp->setStyleSheet(styleSheetOf(theme_));
    QApplication::setEffectEnabled(Qt::UI_AnimateMenu, false);
    QApplication::setEffectEnabled(Qt::UI_AnimateCombo, false);
}

} // namespace kelvaro
