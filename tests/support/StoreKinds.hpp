// SPDX-License-Identifier: MIT
#pragma once

/// The kinds of stores there are, each with a way to make one and to open it again, and short ways to write rows of the
/// library's own model.

#include "model/Keys.hpp"
#include "platform/persistence/ManagedObjectModel.hpp"
#include "platform/persistence/store/InMemoryStore.hpp"
#include "platform/persistence/store/Store.hpp"
#include "platform/persistence/store/sqlite/SQLiteStore.hpp"
#include "store/ModelClasses.hpp"
#include "support/ProbedContext.hpp"
#include "support/TestFolder.hpp"

#include <memory>
#include <ostream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace estatebook::test {

inline platform::Ref<platform::ManagedObjectModel> bookModel() {
    static const auto model =
        platform::ManagedObjectModel::modelWithContentsOfFile(modelResourcePath(), modelClasses());
    return model;
}

inline const platform::EntityDescription& entityNamed(std::string_view name) {
    return *bookModel()->entityNamed(name);
}

inline const platform::RowShape& shapeOf(const platform::EntityDescription& entity) {
    static const platform::RowShapes shapes(*bookModel());
    return shapes.of(entity);
}

/// A store of some kind.
class StorePlace {
public:
    virtual ~StorePlace() = default;
    /// The store, made when it is first asked for.
    [[nodiscard]] platform::Store& store() {
        if (!store_) store_ = make();
        return *store_;
    }
    /// Closes it and opens it again.
    void reopen() { store_ = open(std::move(store_)); }

protected:
    virtual platform::Ref<platform::Store> make() = 0;
    virtual platform::Ref<platform::Store> open(platform::Ref<platform::Store> closed) = 0;

private:
    platform::Ref<platform::Store> store_;
};

struct StoreKind {
    std::string name;
    std::unique_ptr<StorePlace> (*place)();

    friend void PrintTo(const StoreKind& kind, std::ostream* stream) { *stream << kind.name; }
};

class InMemoryPlace final : public StorePlace {
    platform::Ref<platform::Store> make() override { return platform::InMemoryStore::make(bookModel()); }
    platform::Ref<platform::Store> open(platform::Ref<platform::Store> closed) override { return closed; }
};

class SQLitePlace final : public StorePlace {
    platform::Ref<platform::Store> make() override {
        return *platform::SQLiteStore::create(path_, bookModel(), {});
    }
    platform::Ref<platform::Store> open(platform::Ref<platform::Store> closed) override {
        closed = nullptr;
        auto opened = platform::SQLiteStore::open(path_, bookModel(), {});
        if (!opened) throw std::runtime_error(opened.error().message);
        return *std::move(opened);
    }

    TestFolder folder_;
    std::string path_ = folder_.file("book.estatebook");
};

template <class Place>
std::unique_ptr<StorePlace> makePlace() {
    return std::make_unique<Place>();
}

inline std::vector<StoreKind> storeKinds() {
    return {{"InMemory", makePlace<InMemoryPlace>}, {"SQLite", makePlace<SQLitePlace>}};
}

/// A row that is written value by value.
class RowOf {
public:
    RowOf(std::string_view entity, platform::RowKey key)
        : shape_(shapeOf(entityNamed(entity))), row_(shape_.emptyRow(key)) {}
    RowOf& with(platform::Key attribute, platform::Value value) {
        row_.values[shape_.attribute(attribute).value()] = std::move(value);
        return *this;
    }
    RowOf& to(platform::Key link, platform::RowKey target, std::int64_t place = 0) {
        row_.links[shape_.link(link).value()] = {target, place};
        return *this;
    }
    operator platform::Row() const { return row_; }

private:
    const platform::RowShape& shape_;
    platform::Row row_;
};

/// An update that is written value by value.
class UpdateOf {
public:
    UpdateOf(std::string_view entity, platform::RowKey key, std::int64_t version)
        : shape_(shapeOf(entityNamed(entity))),
          update_{.key = key, .entity = &shape_.entity(), .version = version} {}
    UpdateOf& with(platform::Key attribute, platform::Value value) {
        update_.values.push_back({shape_.attribute(attribute).value(), std::move(value)});
        return *this;
    }
    UpdateOf& to(platform::Key link, platform::RowKey target, std::int64_t place = 0) {
        update_.links.push_back({shape_.link(link).value(), {target, place}});
        return *this;
    }
    operator platform::RowUpdate() const { return update_; }

private:
    const platform::RowShape& shape_;
    platform::RowUpdate update_;
};

inline platform::RowDeletion deletionOf(std::string_view entity, platform::RowKey key, std::int64_t version) {
    return {key, &entityNamed(entity), version};
}

inline platform::StoreChanges newChanges() {
    return {.token = platform::CommitToken::random(),
            .origin = {platform::Date{800000000.5}, "Ada Field", "estatebook", "import"}};
}

} // namespace estatebook::test
