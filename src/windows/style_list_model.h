#pragma once

#include "store/style_list.h"

#include <QAbstractListModel>

namespace tessaril {

/// The style list's rows for a view. The check state is whether the style is enabled; setting it
/// is the list's toggle command.
class StyleListModel : public QAbstractListModel, public StyleListObserver {
    Q_OBJECT

public:
    /// The row's second line.
    static constexpr int sourceRole = Qt::UserRole;

    /// Observes `list`, which must live longer, for as long as it lives itself.
    explicit StyleListModel(StyleList& list, QObject* parent = nullptr);
    ~StyleListModel() override;

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

signals:
    /// The row is to be scrolled to and selected.
    void rowWanted(int row);

private:
    void rowsReset() override;
    void rowAppended() override;
    void rowChanged(std::size_t row) override;
    void selectRow(std::size_t row) override;

    StyleList& list;
    int rows = 0; ///< as the view knows it
};

} // namespace tessaril
