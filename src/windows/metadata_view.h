#pragma once

#include "style_editor/metadata_fields.h"

#include <QDialog>

#include <functional>

class QComboBox;
class QLineEdit;
class QPlainTextEdit;

namespace tessaril {

/// Shows what a style says of itself, and changes it on Save where it is not read-only.
class MetadataView : public QDialog {
public:
    /// Modal over the window of `parent`. Deletes itself when it closes.
    /// - save: called with the fields on Save; empty for a read-only style
    MetadataView(const metadataFields& fields, std::function<void(const metadataFields&)> save,
                 QWidget* parent);

    void accept() override;

private:
    std::function<void(const metadataFields&)> save;
    QLineEdit* authorField;
    QLineEdit* versionField;
    QLineEdit* licenseField;
    QLineEdit* namespaceField;
    QPlainTextEdit* descriptionField;
    QComboBox* preprocMenu;
};

} // namespace tessaril
