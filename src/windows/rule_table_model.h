#pragma once

#include "settings/typed_rules.h"

#include <QAbstractTableModel>

#include <string>
#include <string_view>

namespace tessaril {

/// The rows of `TypedRules` for a view. Texts are shown as one line of plain text; Qt::EditRole has
/// them as they are.
class RuleTableModel : public QAbstractTableModel {
public:
    enum column { typeColumn, ruleColumn, columns };

    /// `rules` must live longer and be changed through the model only.
    explicit RuleTableModel(TypedRules& rules, QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    /// Writes nothing where the text is the shown one: what a widget cannot hold stays as it was.
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;

    const typedRule& rule(const QModelIndex& index) const;
    bool isReadOnly() const { return rules.isReadOnly(); }

    /// Sets the rule to exactly these bytes.
    void setRule(const QModelIndex& index, std::string text);
    /// Appends a row and gives whether it did.
    bool add(std::string_view type);
    void remove(int row);

private:
    const std::string& text(const QModelIndex& index) const;

    TypedRules& rules;
};

} // namespace tessaril
