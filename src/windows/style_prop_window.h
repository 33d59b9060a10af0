#pragma once

#include "platform/icon_loader.h"
#include "settings/style_prop_view.h"

#include <QDialog>

#include <memory>

class QPushButton;

namespace tessaril {

class ElidedLabel;
class Spinner;
class VariableTableView;

/// The properties of one style: where it applies and the values of its variables. Return and Ctrl+S
/// save; Escape and the window's close button cancel. Deletes itself when it closes.
class StylePropWindow : public QDialog {
public:
    /// A window of its own, also with a `parent`. `content` has no handlers yet.
    /// - icon: of the style; none: the droplet
    StylePropWindow(std::unique_ptr<StylePropView> content,
                    const std::shared_ptr<const siteIcon>& icon, QWidget* parent);
    ~StylePropWindow() override;

    std::int64_t styleID() const { return view->style().uniqueID; }
    void bringForward();

    void reject() override;

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    QWidget* makeHeader(const std::shared_ptr<const siteIcon>& icon);
    QWidget* makeSettings();
    QWidget* makeExclusions();
    QWidget* makeVariables();
    QWidget* makeButtons();
    void showName(const std::string& name);
    void save();

    std::unique_ptr<StylePropView> view;
    ElidedLabel* styleNameField;
    VariableTableView* variableTable = nullptr; ///< none: the style has no variables
    QPushButton* resetVarButton;
    Spinner* saveSpinner;
};

} // namespace tessaril
