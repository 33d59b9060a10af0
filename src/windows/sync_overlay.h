#pragma once

#include <QTimer>
#include <QWidget>

class QLabel;
class QPushButton;

namespace tessaril {

class Spinner;

/// What lies in the middle of the locked style list: at first that it syncs, and once that has
/// failed a box that asks how to go on. The list around it stays as it is.
class SyncOverlay : public QWidget {
    Q_OBJECT

public:
    /// Lies over `over`, whose child it becomes.
    explicit SyncOverlay(QWidget* over);

    /// The list has been locked or released. A lock is shown a moment later, unless it holds for
    /// less than that; at once where the window is not on the screen yet.
    void setLocked(bool isLocked);

    /// The sync that the list is locked for has failed; of no effect on a list that is not locked.
    void showFailure();

    /// Whether it is to be seen, wherever the window is.
    bool isUp() const { return current != stage::none; }
    bool asks() const { return current == stage::failed; }

signals:
    /// `isUp` or `asks` has changed. A part that had the focus and has gone has lost it.
    void turned(bool hadFocus);
    void retryWanted();
    void offlineWanted();

protected:
    bool eventFilter(QObject* object, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    enum class stage { none, syncing, failed };

    QWidget* makeSyncingPart();
    QWidget* makeFailurePart();
    void turnTo(stage wanted);
    void place();

    stage current = stage::none;
    bool locked = false;
    QTimer late;
    Spinner* spinner;
    QPushButton* retryButton;
    QPushButton* offlineButton;
    QWidget* syncingPart;
    QWidget* failurePart;
};

} // namespace tessaril
