#include "desktop/appearance.h"

#include "desktop/widget_style.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QPalette>

#include <algorithm>
#include <cmath>

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

/// The relative luminance of the Web Content Accessibility Guidelines 2.
double luminance(const QColor& color) {
    const auto linear = [](double part) {
        return part <= 0.03928 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
           0.0722 * linear(color.blueF());
}

/// Their contrast ratio.
double contrast(const QColor& a, const QColor& b) {
    const auto [darker, lighter] = std::minmax({luminance(a), luminance(b)});
    return (lighter + 0.05) / (darker + 0.05);
}

/// Fusion's own selection is too light for the white text on it.
QPalette withReadableSelection(QPalette palette) {
    constexpr double enough = 4.5;
    const QColor text = palette.color(QPalette::HighlightedText);
    QColor highlight = palette.color(QPalette::Highlight);
    while (text.lightness() > highlight.lightness() && contrast(text, highlight) < enough)
        highlight = highlight.darker(105);
    palette.setColor(QPalette::Highlight, highlight);
    return palette;
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
    QApplication::setStyle(new WidgetStyle);
    // A desktop whose own theme reaches Qt has set its colours already.
    const bool isDarkAlready = isDark(QApplication::palette());
    const bool darkens = !isDarkAlready && desktopPrefersDark();
    QApplication::setPalette(
        withReadableSelection(darkens ? darkPalette() : QApplication::palette()));
    return isDarkAlready || darkens;
}

} // namespace tessaril
