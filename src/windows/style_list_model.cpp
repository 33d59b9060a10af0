#include "windows/style_list_model.h"

#include "windows/shown_text.h"

namespace tessaril {

StyleListModel::StyleListModel(StyleList& styleList, QObject* parent)
    : QAbstractListModel(parent), list(styleList) {
    list.setObserver(this); // which resets the rows
}

StyleListModel::~StyleListModel() {
    list.setObserver(nullptr);
}

int StyleListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : rows;
}

QVariant StyleListModel::data(const QModelIndex& index, int role) const {
    const auto row = static_cast<std::size_t>(index.row());
    if (!index.isValid() || row >= list.styles().size()) return {};
    const styleObject& style = list.styles()[row];
    switch (role) {
    case Qt::DisplayRole:
        return oneLine(style.name);
    case sourceRole:
        return qtText(style.source);
    case Qt::CheckStateRole:
        return style.isEnabled ? Qt::Checked : Qt::Unchecked;
    case Qt::AccessibleTextRole:
        return QString("%1, %2, %3")
            .arg(oneLine(style.name), qtText(style.source),
                 style.isEnabled ? "enabled" : "disabled");
    default:
        return {};
    }
}

bool StyleListModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    if (role != Qt::CheckStateRole || data(index, role) == value) return false;
    list.onToggle(static_cast<std::size_t>(index.row()));
    return true;
}

Qt::ItemFlags StyleListModel::flags(const QModelIndex& index) const {
    if (!index.isValid()) return Qt::NoItemFlags;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable |
           Qt::ItemNeverHasChildren;
}

void StyleListModel::rowsReset() {
    beginResetModel();
    rows = static_cast<int>(list.styles().size());
    endResetModel();
}

void StyleListModel::rowAppended() {
    beginInsertRows({}, rows, rows);
    ++rows;
    endInsertRows();
    emit rowWanted(rows - 1);
}

void StyleListModel::rowChanged(std::size_t row) {
    const QModelIndex changed = index(static_cast<int>(row));
    emit dataChanged(changed, changed);
}

void StyleListModel::selectRow(std::size_t row) {
    emit rowWanted(static_cast<int>(row));
}

} // namespace tessaril
