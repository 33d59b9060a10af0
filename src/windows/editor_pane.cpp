#include "windows/editor_pane.h"

#include "preferences/preference_keys.h"
#include "windows/pane_form.h"
#include "windows/shadow_frame.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QSpinBox>

namespace tessaril {

namespace keys = preferenceKeys;

EditorPane::EditorPane(PreferenceControls& controls,
                       const std::function<QWidget*(QWidget* parent)>& makePreview)
    : bound(controls) {
    QFormLayout* form = makePaneForm(*this);
    form->addRow("&Theme:", bound.menu(themeMenu));
    form->addRow("&Font:", bound.menu(fontMenu));
    form->addRow("Font &size:", bound.fontSize());
    form->addRow("Tool&bar:", bound.menu(toolbarMenu));
    addGap(*form);
    form->addRow("Code:", bound.checkBox("&Wrap long lines", keys::wordWrap));
    form->addRow("", bound.checkBox("Show &line numbers", keys::showGutter));
    form->addRow("", bound.checkBox("Mark e&rrors", keys::showErrors));
    form->addRow("", bound.checkBox("Suggest &completions while typing", keys::autocomplete));
    form->addRow("Window:", bound.checkBox("Show the t&itle", keys::showEditorTitle));
    if (makePreview) {
        addGap(*form);
        QWidget* preview = makePreview(this);
        preview->setMinimumHeight(fontMetrics().lineSpacing() * 10);
        preview->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
        form->addRow(new ShadowFrame(preview));
    }
    bound.reload();
}

} // namespace tessaril
