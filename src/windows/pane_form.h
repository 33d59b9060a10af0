#pragma once

class QFormLayout;
class QLabel;
class QWidget;

namespace tessaril {

/// The form of a preferences pane: labels to the right of their column, fields as wide as the pane.
QFormLayout* makePaneForm(QWidget& pane);

/// Some air between two groups of rows.
void addGap(QFormLayout& form);

/// Makes `label` a remark on the row above it.
void makeNote(QLabel& label);

} // namespace tessaril
