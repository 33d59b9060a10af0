#pragma once

#include "style_editor/window_appearance.h"

#include <QToolBar>

#include <functional>
#include <string>
#include <vector>

class QComboBox;
class QLabel;

namespace tessaril {

class EditorTitle;

/// The commands that stand in the toolbar of a Style Editor, titled and with icons. All outlive it.
struct editorToolbarCommands {
    QAction* addSection;
    QAction* deleteSection;
    QAction* duplicateSection;
    QAction* rules;
    QAction* metadata;
    QAction* beautify;
    QAction* exportStyle;
    QAction* exportSection;
};

/// The toolbar of a Style Editor: the menu of its sections, its commands, and the style's name. In
/// a narrow window there are no labels.
class EditorToolbar : public QToolBar {
public:
    /// - selectSection: called when the user picks one, with its position
    EditorToolbar(const editorToolbarCommands& commands,
                  std::function<void(std::size_t)> selectSection, bool isReadOnly, QWidget* parent);

    void setAppearance(const windowAppearance& wanted);
    void showName(const std::string& name);
    void showSections(const std::vector<std::string>& titles, std::size_t current);

    QComboBox& sectionMenu() { return *sectionPicker; }

protected:
    void showEvent(QShowEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void addCommand(QAction* action);
    QWidget* makeAddRemove(const editorToolbarCommands& commands);
    void makeExport(const editorToolbarCommands& commands);
    void setLabelled(bool isLabelled);
    void fit();

    windowAppearance appearance;
    QComboBox* sectionPicker;
    EditorTitle* title;
    QLabel* addRemoveLabel;
    int labelledWidth = 0; ///< that the labels need; 0 while the toolbar has not been shown
};

} // namespace tessaril
