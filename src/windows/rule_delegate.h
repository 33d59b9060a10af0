#pragma once

#include <QStyledItemDelegate>

namespace tessaril {

class RuleTableModel;

/// Draws a rule's type as a menu and its text as a line, and edits both in place. What is typed or
/// chosen is in the model at once; the Escape key brings back the text that was there before.
class RuleDelegate : public QStyledItemDelegate {
public:
    /// `model` must live longer.
    explicit RuleDelegate(RuleTableModel& model, QObject* parent = nullptr);

    /// Of the widest of the known types as a menu, with the air around it.
    static QSize typeSize(const QWidget& view);

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const override;
    void setEditorData(QWidget* editor, const QModelIndex& index) const override;
    void setModelData(QWidget* editor, QAbstractItemModel* model,
                      const QModelIndex& index) const override;
    void updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option,
                              const QModelIndex& index) const override;
    bool helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                   const QModelIndex& index) override;
    bool eventFilter(QObject* editor, QEvent* event) override;

private:
    QWidget* makeTypeMenu(QWidget* parent, const QModelIndex& index) const;
    QWidget* makeRuleField(QWidget* parent, const QModelIndex& index) const;

    RuleTableModel& model;
};

} // namespace tessaril
