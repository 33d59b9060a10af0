#include "desktop/appearance.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QPalette>

namespace tessaril {

namespace {

bool isDark(const QPalette& palette) {
    return palette.color(QPalette::Window).lightness() <
           palette.color(QPalette::WindowText).lightness();
}

QVariant unwrapped(QVariant value) {
    while (value.canConvert<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    return value;
}

/// What the desktop says to its portal ("org.freedesktop.appearance color-scheme": 1 is dark); the
/// way to learn it that all desktops share. Never starts a portal and waits for none.
bool desktopPrefersDark() {
    constexpr int patience = 250; // milliseconds
    constexpr uint dark = 1;
    QDBusMessage question = QDBusMessage::createMethodCall(
        "org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop",
        "org.freedesktop.portal.Settings", "Read");
    question.setArguments({"org.freedesktop.appearance", "color-scheme"});
    question.setAutoStartService(false);
    const QDBusMessage answer =
        QDBusConnection::sessionBus().call(question, QDBus::Block, patience);
    if (answer.type() != QDBusMessage::ReplyMessage || answer.arguments().isEmpty()) return false;
    return unwrapped(answer.arguments().front()).toUInt() == dark;
}

} // namespace

QPalette darkPalette() {
    const QColor window(0x2a, 0x2c, 0x30);
    const QColor base(0x1f, 0x21, 0x24);
    const QColor text(0xec, 0xed, 0xee);
    const QColor weak(0x8d, 0x91, 0x96);

    // Buttons, frames and shadows follow from the two base colours.
    QPalette palette(QColor(0x3a, 0x3d, 0x42), window);
    for (const QPalette::ColorRole role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText})
        palette.setColor(role, text);
    for (const QPalette::ColorRole role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, weak);
    palette.setColor(QPalette::Base, base);
    palette.setColor(QPalette::AlternateBase, window);
    palette.setColor(QPalette::ToolTipBase, window);
    palette.setColor(QPalette::PlaceholderText, weak);
    palette.setColor(QPalette::Highlight, QColor(0x2f, 0x6f, 0xc1));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::Link, QColor(0x6c, 0xb8, 0xf5));
    palette.setColor(QPalette::BrightText, QColor(0xff, 0x8a, 0x80));
    return palette;
}

bool applyAppearance() {
    QApplication::setStyle("Fusion");
    // A desktop whose own theme reaches Qt has set its colours already.
    if (isDark(QApplication::palette())) return true;
    if (!desktopPrefersDark()) return false;
    QApplication::setPalette(darkPalette());
    return true;
}

} // namespace tessaril
