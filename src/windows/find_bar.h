#pragma once

#include "editor/text_finder.h"

#include <QFrame>

class QCheckBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QToolButton;

namespace tessaril {

/// The find bar above a text: a row to search, and a row to replace when the finder says so. Hidden
/// at first. Return searches on, with Shift backwards; Escape hides the bar.
class FindBar : public QFrame, public TextFinderBar {
    Q_OBJECT

public:
    /// `finder` must live longer; the bar tells it what the user wants and shows what it reports.
    explicit FindBar(TextFinder& finder, QWidget* parent = nullptr);
    ~FindBar() override;

signals:
    /// The bar appeared or took another height.
    void shapeChanged();

    /// The bar has been hidden while it had the keyboard focus, or not.
    void closed(bool hadFocus);

protected:
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    bool eventFilter(QObject* object, QEvent* event) override;

private:
    void finderChanged() override;
    void finderShown() override;
    void makeFindRow();
    void makeReplaceRow();
    QPushButton* makeButton(const QString& text, textFinderAction action);
    QToolButton* makeStepButton(Qt::ArrowType arrow, const QString& name, textFinderAction action);
    void showReport();
    void fitButtons();
    QWidget* partFor(const QKeyEvent& key) const;
    bool reachPart(const QKeyEvent& key);

    TextFinder& finder;
    findBarVisibility shown = findBarVisibility::hidden;
    QWidget* findRow;
    QWidget* replaceRow;
    QLineEdit* findField;
    QLineEdit* replaceField;
    QLabel* matchCount;
    QCheckBox* matchCase;
    QString announced; ///< the report that screen readers have been told
};

} // namespace tessaril
