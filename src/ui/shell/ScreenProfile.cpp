#include "ui/shell/ScreenProfile.h"

#include <QGuiApplication>

#include <cstdlib>
#include <memory>
#include <xcb/xcb.h>

namespace kelvaro {
namespace {

constexpr std::uint32_t longestProfileWords = 4 << 18; // 4 MB

template<class T>
using Reply = std::unique_ptr<T, decltype(&std::free)>;

// The bytes of a property of the root window; empty when it is not there.
QByteArray rootProperty(xcb_connection_t* connection, const char* name) {
    const auto length = static_cast<std::uint16_t>(std::char_traits<char>::length(name));
    const Reply<xcb_intern_atom_reply_t> atom(
        xcb_intern_atom_reply(connection, xcb_intern_atom(connection, true, length, name), nullptr),
        &std::free);
    const auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
    if (!atom || atom->atom == XCB_ATOM_NONE || !screens.data) return {};
    const Reply<xcb_get_property_reply_t> property(
        xcb_get_property_reply(connection,
                               xcb_get_property(connection, false, screens.data->root, atom->atom,
                                                XCB_GET_PROPERTY_TYPE_ANY, 0, longestProfileWords),
                               nullptr),
        &std::free);
    if (!property) return {};
    return QByteArray(static_cast<const char*>(xcb_get_property_value(property.get())),
                      xcb_get_property_value_length(property.get()));
}

} // namespace

QColorSpace screenProfile(const QScreen* screen) {
    const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    if (!x11 || !x11->connection()) return {};
    // The first screen has the bare name, the others their number behind it.
    const qsizetype number = QGuiApplication::screens().indexOf(screen);
    const QByteArray name =
        number > 0 ? "_ICC_PROFILE_" + QByteArray::number(number) : QByteArray("_ICC_PROFILE");
    const QByteArray profile = rootProperty(x11->connection(), name.constData());
    if (profile.isEmpty()) return {};
    const QColorSpace space = QColorSpace::fromIccProfile(profile);
    // Converting to what the pictures are in already would cost time and change nothing.
    return space == QColorSpace(QColorSpace::SRgb) ? QColorSpace() : space;
}

} // namespace kelvaro
