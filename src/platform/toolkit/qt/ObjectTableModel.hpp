// SPDX-License-Identifier: MIT
#pragma once

/// ObjectTableModel: the base of models for Qt's views in which each row is an object of a list.
///
///     class Tenants : public ObjectTableModel { … int columnCount(…) … QVariant data(…) … Heading heading(…) … };
///     tenants.follow(allTenants(*context));
///
/// The rows stay as they are until the model is given another list to follow. Rows of objects that are in both stay the same
/// rows, at other places if need be, so that the selection and whatever else holds on to a row outlives the change.

#include "platform/observation/ObservableObject.hpp"

#include <QAbstractTableModel>
#include <QString>
#include <QVariant>

#include <cstddef>
#include <unordered_map>
#include <vector>

namespace estatebook::platform {

class ObjectTableModel : public QAbstractTableModel {
public:
    /// How titles and cells of a column stand.
    static constexpr Qt::Alignment TextAlignment = Qt::AlignLeft | Qt::AlignVCenter;
    static constexpr Qt::Alignment AmountAlignment = Qt::AlignRight | Qt::AlignVCenter;

    struct Heading {
        QString title;
        Qt::Alignment alignment = TextAlignment;
    };

    /// Null for a row that is not there.
    [[nodiscard]] Ref<ObservableObject> objectAt(int row) const;
    /// -1 when the object is not in the list.
    [[nodiscard]] int rowOf(const ObservableObject& object) const;

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

protected:
    using QAbstractTableModel::QAbstractTableModel;

    /// REQUIRES: a column that is there.
    [[nodiscard]] virtual Heading heading(int column) const = 0;

    /// Goes over to these objects, and announces all cells as changed. An object that is listed again, and none at all, have no
    /// row. Linear; N log N when rows change places.
    ///
    /// The trap: views ask for cells of rows that come before this returns.
    void follow(std::vector<Ref<ObservableObject>> objects);

private:
    using Places = std::unordered_map<const ObservableObject*, int>;
    void removeThoseNotIn(const Places& places);
    void orderBy(const Places& places);
    void insertThoseMissing(const std::vector<Ref<ObservableObject>>& objects);

    std::vector<Ref<ObservableObject>> rows_;
    /// Reckoned when somebody asks after rows have come or gone.
    mutable Places places_;
    mutable bool arePlacesKnown_ = false;
};

} // namespace estatebook::platform
