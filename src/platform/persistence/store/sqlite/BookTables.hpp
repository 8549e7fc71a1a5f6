// SPDX-License-Identifier: MIT
#pragma once

/// Inner header: BookTables: which tables a book of a model has, and which column holds what.

#include "platform/persistence/store/RowShape.hpp"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace estatebook::platform::sqlite {

/// "EBK1"
inline constexpr std::uint32_t ApplicationId = 0x45424b31;
inline constexpr std::uint32_t Layout = 2;
/// Keys, versions and numbers beyond it are nobody's, so that each has a next one; objects that were never stored are numbered from there.
inline constexpr std::int64_t GreatestGiven = (std::int64_t{1} << 62) - 1;

struct Column {
    enum class Kind : std::uint8_t { Attribute, Link, Place };

    std::string name{};
    /// What the entity calls it: the name, unless that had to be told apart from a sibling's.
    std::string property{};
    Kind kind = Kind::Attribute;
    /// Of an attribute.
    AttributeType type = AttributeType::Any;
    /// The entity that declares the property.
    const EntityDescription* owner = nullptr;
    /// Of a link: the table it leads to.
    std::string target{};
    /// Of an attribute: whether rows are looked up by it.
    bool isIndexed = false;
};

/// A table whose rows each end with their digest.
struct SealedTable {
    std::string name;
    /// Without the digest. The first one names the row.
    std::vector<std::string> columns;
    std::string sql;
    // What the table is asked. Parameters stand in the order of the columns, the digest behind them.
    std::string select{};
    std::string find{};
    std::string insert{};
    std::string update{};
    std::string remove{};

    void writeStatements();
};

/// The rows of one root entity and all below it.
struct EntityTable : SealedTable {
    static constexpr std::size_t Key = 0;
    static constexpr std::size_t Entity = 1;
    static constexpr std::size_t Version = 2;
    static constexpr std::size_t FirstProperty = 3;

    const EntityDescription* root = nullptr;
    /// What stands from FirstProperty on.
    std::vector<Column> properties;
    /// Over links, by which members are found.
    std::vector<std::string> linkIndexes;
    /// Over attributes by which rows are looked up.
    std::vector<std::string> lookupIndexes;

    /// Writes all that follows from the name and the properties.
    void layOut();
};

/// Where an entity's values stand.
struct EntityColumns {
    std::size_t table = 0;
    /// At the places of the attributes; none for a transient one.
    std::vector<std::optional<std::size_t>> values;
    /// At the places of the attributes: what finds rows by an indexed one, the value being ?1; empty for others.
    std::vector<std::string> lookups{};
    struct Link {
        std::size_t target = 0;
        /// Where the other side is ordered.
        std::optional<std::size_t> place;
    };
    std::vector<Link> links;
};

class BookTables {
public:
    /// REQUIRES: the model outlives it.
    explicit BookTables(const ManagedObjectModel& model);

    [[nodiscard]] const std::vector<EntityTable>& entityTables() const noexcept { return entityTables_; }
    [[nodiscard]] const EntityTable& tableOf(const EntityDescription& entity) const noexcept {
        return entityTables_[columnsOf(entity).table];
    }
    [[nodiscard]] const EntityColumns& columnsOf(const EntityDescription& entity) const noexcept {
        return columns_[entity.index()];
    }
    /// The number under which rows name an entity.
    [[nodiscard]] static std::int64_t numberOf(const EntityDescription& entity) noexcept {
        return static_cast<std::int64_t>(entity.index()) + 1;
    }
    /// " AND …" that keeps rows of the entity and its sub-entities; nothing when the column or table has no others.
    [[nodiscard]] std::string filterFor(const EntityDescription& entity,
                                        const EntityDescription& within) const;

    /// All tables whose rows have digests.
    [[nodiscard]] std::vector<const SealedTable*> sealedTables() const;
    /// All that a book's schema consists of, in the order of its making.
    [[nodiscard]] const std::vector<std::string>& schema() const noexcept { return schema_; }
    /// What of it is the same for every model.
    [[nodiscard]] std::vector<std::string> schemaBesideRows() const;

    SealedTable header;
    SealedTable entities;
    SealedTable commits;
    SealedTable journal;
    SealedTable identifiers;
    SealedTable metadata;
    /// The count and the sum of the digests of each table above. It has no digests of its own.
    static constexpr std::string_view Sums = "book_sum";

private:
    void addTable(const EntityDescription& root, const RowShapes& shapes);
    void addColumns(EntityTable& table, const RowShape& shape, const RowShapes& shapes);
    void addLookups(const EntityDescription& entity);
    void writeSchema();

    const ManagedObjectModel& model_;
    std::vector<EntityTable> entityTables_;
    std::vector<EntityColumns> columns_;
    std::vector<std::string> schema_;
};

/// In double quotes, as the data base names things.
[[nodiscard]] std::string quoted(std::string_view name);
/// What the table says of a column behind its name.
[[nodiscard]] std::string typeOf(const Column& column);

} // namespace estatebook::platform::sqlite
