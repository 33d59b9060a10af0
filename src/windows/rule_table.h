#pragma once

#include "settings/typed_rules.h"

#include <QWidget>

#include <string_view>

class QLabel;
class QToolButton;

namespace tessaril {

class RowSlide;
class RuleTableModel;
class RuleTableView;

/// A table of typed rules, and the buttons that add to it and remove from it. What is typed or
/// chosen is in `TypedRules` at once, also while an editor is open. Read-only rules can be scrolled
/// and copied.
class RuleTable : public QWidget {
public:
    /// `rules` must live longer and be changed by nobody else meanwhile.
    explicit RuleTable(TypedRules& rules, QWidget* parent = nullptr);

    /// What the empty table shows.
    void setNoteWithoutRules(const QString& note);

protected:
    bool eventFilter(QObject* object, QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void makeButtons();
    void add(std::string_view type);
    void removeSelected();
    void showRows();

    RuleTableModel* model;
    RuleTableView* view;
    RowSlide* slide;
    QLabel* emptyNote;
    QToolButton* addRuleButton;
    QToolButton* removeRuleButton;
};

} // namespace tessaril
