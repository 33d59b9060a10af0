#include "windows/rule_table_model.h"

#include "windows/shown_text.h"

namespace tessaril {

namespace {

constexpr qsizetype mostShown = 1000; // characters; as wide as a row can be

const std::string noText;

} // namespace

RuleTableModel::RuleTableModel(TypedRules& typedRules, QObject* parent)
    : QAbstractTableModel(parent), rules(typedRules) {}

int RuleTableModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(rules.rows().size());
}

int RuleTableModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : columns;
}

const typedRule& RuleTableModel::rule(const QModelIndex& index) const {
    return rules.rows()[static_cast<std::size_t>(index.row())];
}

const std::string& RuleTableModel::text(const QModelIndex& index) const {
    const typedRule& row = rule(index);
    if (index.column() == typeColumn) return row.type;
    return row.rule ? *row.rule : noText;
}

QVariant RuleTableModel::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
    if (role == Qt::DisplayRole) return oneLine(text(index), mostShown);
    if (role == Qt::EditRole) return qtText(text(index));
    return {};
}

QVariant RuleTableModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal) return {};
    if (role == Qt::TextAlignmentRole) return QVariant(Qt::AlignLeading | Qt::AlignVCenter);
    if (role == Qt::DisplayRole) return section == typeColumn ? "Type" : "Rule";
    return {};
}

Qt::ItemFlags RuleTableModel::flags(const QModelIndex& index) const {
    Qt::ItemFlags flags = Qt::ItemIsSelectable | Qt::ItemIsEnabled | Qt::ItemNeverHasChildren;
    flags.setFlag(Qt::ItemIsEditable, index.isValid() && !isReadOnly());
    return flags;
}

bool RuleTableModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    if (role != Qt::EditRole || !index.isValid() || isReadOnly()) return false;
    if (value == data(index, role)) return false;
    std::string typed = value.toString().toStdString();
    if (index.column() == typeColumn)
        rules.setType(static_cast<std::size_t>(index.row()), typed);
    else
        rules.setRule(static_cast<std::size_t>(index.row()), std::move(typed));
    emit dataChanged(index, index);
    return true;
}

void RuleTableModel::setRule(const QModelIndex& index, std::string text) {
    rules.setRule(static_cast<std::size_t>(index.row()), std::move(text));
    emit dataChanged(index, index);
}

bool RuleTableModel::add(std::string_view type) {
    if (isReadOnly()) return false;
    beginInsertRows({}, rowCount(), rowCount());
    rules.add(type);
    endInsertRows();
    return true;
}

void RuleTableModel::remove(int row) {
    if (isReadOnly() || row < 0 || row >= rowCount()) return;
    beginRemoveRows({}, row, row);
    rules.remove(static_cast<std::size_t>(row));
    endRemoveRows();
}

} // namespace tessaril
