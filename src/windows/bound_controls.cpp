#include "windows/bound_controls.h"

#include "preferences/preference_keys.h"
#include "windows/shown_text.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QSignalBlocker>
#include <QSpinBox>

#include <algorithm>
#include <limits>
#include <utility>

namespace tessaril {

namespace {

// What the editor's own commands keep to.
constexpr int smallestFont = 8;
constexpr int largestFont = 24;

/// A text that is there already is left alone, and the cursor in it.
void show(QLineEdit& field, const std::string& text) {
    if (field.text().toStdString() != text) field.setText(qtText(text));
}

/// A size outside the usual range, from another machine or typed into the file, is shown as it is.
void show(QSpinBox& box, std::int64_t stored) {
    const QSignalBlocker blocker(box);
    using limits = std::numeric_limits<int>;
    const int size =
        static_cast<int>(std::clamp<std::int64_t>(stored, limits::min(), limits::max()));
    // Never narrower again, or a step inward could not be taken back.
    box.setRange(std::min(box.minimum(), size), std::max(box.maximum(), size));
    // Where the number is being typed its text may be ahead of the value.
    if (box.value() != size) box.setValue(size);
}

} // namespace

BoundControls::BoundControls(PreferenceControls& preferenceControls)
    : preferences(preferenceControls) {}

QCheckBox* BoundControls::checkBox(const QString& title, std::string_view key) {
    auto* box = new QCheckBox(title);
    box->setObjectName(qtText(key));
    QObject::connect(box, &QCheckBox::clicked, box,
                     [this, key](bool on) { preferences.turn(key, on); });
    loaders.push_back([this, box, key] { box->setChecked(preferences.isOn(key)); });
    return box;
}

QComboBox* BoundControls::menu(const valueMenu& menu) {
    auto* box = new QComboBox;
    box->setObjectName(qtText(menu.key));
    for (const menuEntry& entry : menu.entries) {
        if (entry.isSeparator())
            box->insertSeparator(box->count());
        else
            box->addItem(qtText(entry.title));
    }
    box->setMaxVisibleItems(box->count());
    box->setMinimumContentsLength(16); // one width for all
    QObject::connect(box, &QComboBox::activated, box,
                     [this, &menu](int position) { preferences.choose(menu, position); });
    loaders.push_back([this, box, &menu] { box->setCurrentIndex(preferences.position(menu)); });
    return box;
}

QSpinBox* BoundControls::fontSize() {
    auto* box = new QSpinBox;
    box->setObjectName(qtText(preferenceKeys::fontSize));
    box->setRange(smallestFont, largestFont);
    box->setSuffix(" pt");
    QObject::connect(box, &QSpinBox::valueChanged, box,
                     [this](int size) { preferences.setFontSize(size); });
    loaders.push_back([this, box] { show(*box, preferences.fontSize()); });
    return box;
}

QLineEdit* BoundControls::field(std::string_view key) {
    auto* field = new QLineEdit;
    field->setObjectName(qtText(key));
    QObject::connect(field, &QLineEdit::textEdited, field, [this, key](const QString& text) {
        preferences.edit(key, text.toStdString());
    });
    QObject::connect(field, &QLineEdit::editingFinished, field,
                     [this, key] { preferences.endEditing(key); });
    loaders.push_back([this, field, key] { show(*field, preferences.text(key)); });
    return field;
}

QLineEdit* BoundControls::addressField(std::string_view key,
                                       std::function<void(PreferenceControls::entered)> entered) {
    auto* field = new QLineEdit;
    field->setObjectName(qtText(key));
    QObject::connect(field, &QLineEdit::editingFinished, field,
                     [this, field, key, isRefused = false, entered = std::move(entered)]() mutable {
                         // Loaded, untouched and left again it is not to be stored either. After
                         // one that was refused, the loaded one may be back by Undo.
                         if (!field->isModified() && !isRefused) return;
                         const auto outcome =
                             preferences.setAddress(key, field->text().toStdString());
                         isRefused = outcome == PreferenceControls::entered::notUnderstood ||
                                     outcome == PreferenceControls::entered::holdsPassword;
                         if (!isRefused) field->setText(qtText(preferences.text(key)));
                         if (entered) entered(outcome);
                     });
    // One that is being typed is left to who types it.
    loaders.push_back([this, field, key] {
        if (!field->isModified()) show(*field, preferences.text(key));
    });
    return field;
}

void BoundControls::reload() {
    for (const auto& load : loaders)
        load();
}

} // namespace tessaril
