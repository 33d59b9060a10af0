#pragma once

#include <QPixmap>
#include <QVariantAnimation>
#include <QWidget>

namespace tessaril {

/// Pictures of rows that slide and fade over a table while the table itself is already as it will
/// be, so nothing depends on them. They vanish when the rows scroll or the next ones come.
class RowSlide : public QWidget {
public:
    /// - rows: what the table draws its rows on; its only child that covers all of it
    explicit RowSlide(QWidget& rows);

    /// The last row, at `row`, has just come: it slides down into its place.
    void slideIn(const QRect& row);

    /// To be told before the row at `row` goes.
    void keep(const QRect& row);
    /// The row that was kept has gone: it fades, and those below slide up.
    void slideOut();

    /// Shows the table as it is.
    void stop();

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void start(const QRect& from);

    QWidget& rows;
    QVariantAnimation progress; ///< from 0 to 1
    QRect place;                ///< of the row
    QPixmap leaving;            ///< the row that has gone; null for one that has come
    QPixmap staying;            ///< everything from the row's place downwards
};

} // namespace tessaril
