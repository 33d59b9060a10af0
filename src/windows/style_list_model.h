#pragma once

#include "store/style_list.h"

#include <QAbstractListModel>
#include <QCache>
#include <QPixmap>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tessaril {

/// The style list's rows for a view: those that the filter shows, in the list's order. A position
/// is where a row is shown, its row where it stands in the list. Every change but a new filter or
/// new rows is passed on as what it is, so that a view keeps its place.
class StyleListModel : public QAbstractListModel, public StyleListObserver {
    Q_OBJECT

public:
    enum rowRole {
        secondLineRole = Qt::UserRole, ///< where the style comes from, or how its update goes
        updateStatusRole,
        isCustomRole,
        idRole, ///< of the style; qint64
    };

    /// Observes `list`, which must live longer, for as long as it lives itself.
    explicit StyleListModel(StyleList& list, QObject* parent = nullptr);
    ~StyleListModel() override;

    /// Shows only the rows that the text finds.
    void setFilter(const QString& text);
    bool isFiltered() const { return filter.isActive(); }

    std::size_t rowAt(int position) const { return shown[static_cast<std::size_t>(position)]; }
    /// Nothing for a row that the filter hides.
    std::optional<int> positionOf(std::size_t row) const;

    int rowCount(const QModelIndex& parent = {}) const override;
    /// The decoration is the site's icon, a QPixmap of `siteIconSize`; none for a placeholder.
    QVariant data(const QModelIndex& index, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

signals:
    /// The rows at the positions, ascending, are to be selected, and the first scrolled to.
    void positionsWanted(const QList<int>& positions);
    /// A row is wanted that the filter hides; to be answered by `setFilter`.
    void hiddenRowWanted();
    void lockTurned();
    void filterTurned();

private:
    /// Keeps the icon, so that no other one takes its address.
    struct decodedIcon {
        std::shared_ptr<const siteIcon> icon;
        QPixmap picture;
    };

    void rowsWillReset() override;
    void rowsReset() override;
    void rowsWillChange(const rowsChange& change) override;
    void rowsChanged(const rowsChange& change) override;
    void rowChanged(std::size_t row) override;
    void selectRows(const std::vector<std::size_t>& rows) override;
    void lockChanged() override { emit lockTurned(); }

    void applyFilter();
    void insertShown(std::size_t first, std::size_t last);
    void removeShown(std::size_t first, std::size_t last);
    void moveShown(std::size_t from, std::size_t to);
    int firstPositionFrom(std::size_t row) const;
    QPixmap pictureOf(const std::shared_ptr<const siteIcon>& icon) const;

    StyleList& list;
    StyleFilter filter;
    std::vector<std::size_t> shown; ///< the rows, by position
    int changing = -1;              ///< rows that a view was told are about to change; -1: none
    mutable QCache<const siteIcon*, decodedIcon> pictures;
};

} // namespace tessaril
