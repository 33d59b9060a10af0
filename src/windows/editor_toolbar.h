#pragma once

#include "style_editor/window_appearance.h"

#include <QToolBar>

#include <string>

class QLabel;

namespace tessaril {

class EditorTitle;
class SectionMenuBox;

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
    /// Takes over the menu. Gives the window its smallest width when it is shown.
    EditorToolbar(const editorToolbarCommands& commands, SectionMenuBox& sectionMenu,
                  bool isReadOnly, QWidget* parent);

    void setAppearance(const windowAppearance& wanted);
    void showName(const std::string& name);

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
    EditorTitle* title;
    QLabel* addRemoveLabel;
    int labelledWidth = 0; ///< that the labels need; 0 while the toolbar has not been shown
};

} // namespace tessaril
