#pragma once

#include <QWidget>

class QAction;

namespace tessaril {

/// What the main window shows in place of an empty list: how to begin, and the buttons to do it.
class EmptyListPage : public QWidget {
public:
    /// The buttons do what the actions do, under the actions' own texts. `fromURL` may be null.
    EmptyListPage(QAction& create, QAction& import, QAction* fromURL);
};

/// What it shows where the filter finds no style.
class NoMatchPage : public QWidget {
    Q_OBJECT

public:
    NoMatchPage();

signals:
    void showAllWanted();
};

} // namespace tessaril
