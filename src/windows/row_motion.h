#pragma once

#include <QElapsedTimer>
#include <QHash>
#include <QSet>
#include <QTimer>

class QWidget;

namespace tessaril {

/// What moves in the list's rows: the spinner of a row that is being checked, and the fading in of
/// its result. Drawing a frame asks for the next one, so nothing runs for what nobody sees.
class RowMotion {
public:
    /// - rows: drawn anew for every frame; must live longer
    explicit RowMotion(QWidget& rows);

    /// To be told whenever a row's status may have changed.
    void noteStatus(qint64 id, const QString& status);

    /// For how long the spinner has turned, in milliseconds.
    qint64 spinnerTime();
    /// How far the second line has come, 1 being all of it.
    qreal secondLineOpacity(qint64 id);

private:
    QTimer nextFrame;
    QElapsedTimer clock;
    QSet<qint64> checking;
    QHash<qint64, QElapsedTimer> fading;
};

} // namespace tessaril
