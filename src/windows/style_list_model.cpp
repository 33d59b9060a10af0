#include "windows/style_list_model.h"

#include "windows/shown_text.h"

#include <algorithm>
#include <numeric>
#include <ranges>

namespace tessaril {

namespace {

/// Decoded icons; far more than are on the screen.
constexpr int mostPictures = 1000;

/// The second line of a row, which an update check takes over.
QString secondLineOf(const styleObject& style) {
    const std::string& status = style.updateStatus;
    if (status == updateStatuses::checking) return "Checking for updates...";
    if (status == updateStatuses::updated) return "Updated!";
    if (status == updateStatuses::noUpdates) return "Already up-to-date.";
    if (status == updateStatuses::error) return "Update error.";
    return qtText(style.source);
}

QString shownName(const styleObject& style) {
    return oneLine(style.name);
}

QString spokenRow(const styleObject& style) {
    return QString("%1, %2, %3")
        .arg(shownName(style), secondLineOf(style), style.isEnabled ? "enabled" : "disabled");
}

} // namespace

StyleListModel::StyleListModel(StyleList& styleList, QObject* parent)
    : QAbstractListModel(parent), list(styleList), pictures(mostPictures) {
    list.setObserver(this); // which resets the rows
}

StyleListModel::~StyleListModel() {
    list.setObserver(nullptr);
}

int StyleListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(shown.size());
}

QVariant StyleListModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= rowCount()) return {};
    const std::size_t row = rowAt(index.row());
    if (row >= list.styles().size()) return {};
    const styleObject& style = *list.styles()[row];
    switch (role) {
    case Qt::DisplayRole:
        return shownName(style);
    case Qt::EditRole:
        return qtText(style.name);
    case secondLineRole:
        return secondLineOf(style);
    case updateStatusRole:
        return qtText(style.updateStatus);
    case isCustomRole:
        return style.isCustom;
    case idRole:
        return static_cast<qint64>(style.uniqueID);
    case Qt::DecorationRole:
        return style.faviconImg ? QVariant(pictureOf(style.faviconImg)) : QVariant();
    case Qt::CheckStateRole:
        return style.isEnabled ? Qt::Checked : Qt::Unchecked;
    case Qt::AccessibleTextRole:
        return spokenRow(style);
    default:
        return {};
    }
}

Qt::ItemFlags StyleListModel::flags(const QModelIndex& index) const {
    if (!index.isValid()) return Qt::NoItemFlags;
    const Qt::ItemFlags always = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsEditable |
                                 Qt::ItemIsUserCheckable | Qt::ItemNeverHasChildren;
    // Between rows of which some are hidden there is no one place to drop at.
    return isFiltered() ? always : always | Qt::ItemIsDragEnabled;
}

QPixmap StyleListModel::pictureOf(const std::shared_ptr<const siteIcon>& icon) const {
    if (const decodedIcon* known = pictures.object(icon.get())) return known->picture;
    auto decoded = std::make_unique<decodedIcon>();
    decoded->icon = icon;
    decoded->picture.loadFromData(reinterpret_cast<const uchar*>(icon->png.data()),
                                  static_cast<uint>(icon->png.size()), "PNG");
    const QPixmap picture = decoded->picture;
    pictures.insert(icon.get(), decoded.release());
    return picture;
}

void StyleListModel::setFilter(const QString& text) {
    StyleFilter wanted = filter;
    if (!wanted.setText(text.toStdString())) return;
    beginResetModel();
    filter = std::move(wanted);
    applyFilter();
    endResetModel();
    emit filterTurned();
}

void StyleListModel::applyFilter() {
    const auto& rows = list.styles();
    shown.resize(rows.size());
    std::iota(shown.begin(), shown.end(), std::size_t{0});
    if (isFiltered())
        std::erase_if(shown, [&](std::size_t row) { return !filter.shows(*rows[row]); });
}

int StyleListModel::firstPositionFrom(std::size_t row) const {
    return static_cast<int>(std::ranges::lower_bound(shown, row) - shown.begin());
}

std::optional<int> StyleListModel::positionOf(std::size_t row) const {
    const int position = firstPositionFrom(row);
    if (position >= rowCount() || rowAt(position) != row) return std::nullopt;
    return position;
}

void StyleListModel::rowsWillReset() {
    beginResetModel();
}

void StyleListModel::rowsReset() {
    applyFilter();
    endResetModel();
}

// What is removed or moved is announced before, while the view may still look at it; what comes in
// is looked at by the filter first.

void StyleListModel::rowsWillChange(const rowsChange& change) {
    const int first = firstPositionFrom(change.first);
    const int end = firstPositionFrom(change.last + 1);
    changing = -1;
    if (change.what == rowsChange::kind::insertion || first == end) return;
    if (change.what == rowsChange::kind::removal) {
        beginRemoveRows({}, first, end - 1);
        changing = end - first;
        return;
    }
    // The position before which the row goes, counted with the row still in its old place.
    const int before = firstPositionFrom(change.to > change.first ? change.to + 1 : change.to);
    if (beginMoveRows({}, first, first, {}, before)) changing = 1;
}

void StyleListModel::rowsChanged(const rowsChange& change) {
    switch (change.what) {
    case rowsChange::kind::insertion:
        insertShown(change.first, change.last);
        break;
    case rowsChange::kind::removal:
        removeShown(change.first, change.last);
        if (changing > 0) endRemoveRows();
        break;
    case rowsChange::kind::move:
        moveShown(change.first, change.to);
        if (changing > 0) endMoveRows();
        break;
    }
}

void StyleListModel::insertShown(std::size_t first, std::size_t last) {
    const int position = firstPositionFrom(first);
    const auto place = shown.begin() + position;
    std::for_each(place, shown.end(), [&](std::size_t& row) { row += last - first + 1; });
    std::vector<std::size_t> found;
    for (std::size_t row = first; row <= last; ++row)
        if (!isFiltered() || filter.shows(*list.styles()[row])) found.push_back(row);
    if (found.empty()) return;
    beginInsertRows({}, position, position + static_cast<int>(found.size()) - 1);
    shown.insert(place, found.begin(), found.end());
    endInsertRows();
}

void StyleListModel::removeShown(std::size_t first, std::size_t last) {
    const auto behind = shown.erase(shown.begin() + firstPositionFrom(first),
                                    shown.begin() + firstPositionFrom(last + 1));
    std::for_each(behind, shown.end(), [&](std::size_t& row) { row -= last - first + 1; });
}

void StyleListModel::moveShown(std::size_t from, std::size_t to) {
    const auto begin = shown.begin() + firstPositionFrom(std::min(from, to));
    const auto end = shown.begin() + firstPositionFrom(std::max(from, to) + 1);
    std::for_each(begin, end, [&](std::size_t& row) {
        if (row == from)
            row = to;
        else
            row = from < to ? row - 1 : row + 1;
    });
    std::sort(begin, end);
}

void StyleListModel::rowChanged(std::size_t row) {
    // It stays where it is shown, also under a name that the filter would not find.
    const auto position = positionOf(row);
    if (!position) return;
    const QModelIndex changed = index(*position);
    emit dataChanged(changed, changed);
}

void StyleListModel::selectRows(const std::vector<std::size_t>& rows) {
    if (!std::ranges::all_of(rows, [this](std::size_t row) { return positionOf(row).has_value(); }))
        emit hiddenRowWanted();
    QList<int> positions;
    for (const std::size_t row : rows)
        if (const auto position = positionOf(row)) positions.append(*position);
    if (!positions.empty()) emit positionsWanted(positions);
}

} // namespace tessaril
