#include "desktop/settings_store.h"

#include "model/log.h"
#include "model/text.h"

#include <QFile>
#include <QStandardPaths>
#include <QVariant>

namespace tessaril {

namespace {

QString qtPath(const std::filesystem::path& path) {
    return QFile::decodeName(QByteArray::fromStdString(path.native()));
}

QString qtText(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

std::optional<bool> booleanFrom(std::string_view text) {
    if (text == "true" || text == "1") return true;
    if (text == "false" || text == "0") return false;
    return std::nullopt;
}

/// Reads `text` as the type of the value that it is called with.
struct reader {
    std::string_view text;

    std::optional<preferenceValue> operator()(bool) const { return booleanFrom(text); }
    std::optional<preferenceValue> operator()(std::int64_t) const { return parseInteger(text); }
    std::optional<preferenceValue> operator()(double) const { return parseDouble(text); }
    std::optional<preferenceValue> operator()(const std::string&) const {
        return std::string(text);
    }
};

struct writer {
    QVariant operator()(bool value) const { return value; }
    QVariant operator()(std::int64_t value) const { return QVariant::fromValue<qint64>(value); }
    // The shortest text that reads back to the same number.
    QVariant operator()(double value) const {
        return QString::number(value, 'g', QLocale::FloatingPointShortest);
    }
    QVariant operator()(const std::string& value) const { return qtText(value); }
};

/// A comma in a text that somebody typed into the file without quotes has made it a list.
QString joined(const QVariant& value) {
    return value.typeId() == QMetaType::QStringList ? value.toStringList().join(", ")
                                                    : value.toString();
}

} // namespace

SettingsStore::SettingsStore(const std::filesystem::path& file)
    : settings(qtPath(file), QSettings::IniFormat) {}

std::optional<preferenceValue> SettingsStore::value(std::string_view key,
                                                    const preferenceValue& like) const {
    const std::lock_guard lock(mutex);
    const QVariant stored = settings.value(qtText(key));
    if (!stored.isValid()) return std::nullopt;
    const std::string text = joined(stored).toStdString();
    return std::visit(reader{text}, like);
}

void SettingsStore::setValue(std::string_view key, const preferenceValue& value) {
    const std::lock_guard lock(mutex);
    settings.setValue(qtText(key), std::visit(writer{}, value));
    settings.sync();
    if (settings.status() != QSettings::NoError) logLine("Error writing preferences.");
}

std::filesystem::path standardPreferencesFile() {
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    return std::filesystem::path(QFile::encodeName(folder).toStdString()) / "tessaril" /
           "tessaril.conf";
}

std::filesystem::path sharedPreferencesFile(const std::filesystem::path& container) {
    return container / "preferences.ini";
}

} // namespace tessaril
