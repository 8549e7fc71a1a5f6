// SPDX-License-Identifier: MIT
#pragma once

/// InsertedRows: the rows that a save inserts, kept as they are or made one after another whenever they are asked for.
///
///     for (const Row& row : changes.insertions) write(row);       // a row is there until the next one

#include "platform/persistence/store/Row.hpp"

#include <cstddef>
#include <functional>
#include <initializer_list>
#include <iterator>
#include <utility>
#include <vector>

namespace estatebook::platform {

class InsertedRows {
public:
    /// Makes the row of a place; what it is given may hold another one.
    using Maker = std::function<void(std::size_t place, Row& row)>;

    InsertedRows() = default;
    InsertedRows(std::vector<Row> rows) : kept_(std::move(rows)) {}
    InsertedRows(std::initializer_list<Row> rows) : kept_(rows) {}
    InsertedRows(std::size_t count, Maker make) : count_(count), make_(std::move(make)) {}

    [[nodiscard]] std::size_t size() const noexcept { return make_ ? count_ : kept_.size(); }
    [[nodiscard]] bool empty() const noexcept { return size() == 0; }

    // REQUIRES: the rows are kept.
    void push_back(Row row) { kept_.push_back(std::move(row)); }
    [[nodiscard]] Row& operator[](std::size_t place) { return kept_[place]; }

    class Iterator {
    public:
        [[nodiscard]] const Row& operator*() {
            if (!rows_->make_) return rows_->kept_[place_];
            rows_->make_(place_, row_);
            return row_;
        }
        Iterator& operator++() {
            ++place_;
            return *this;
        }
        [[nodiscard]] bool operator==(std::default_sentinel_t) const noexcept {
            return place_ == rows_->size();
        }

    private:
        friend class InsertedRows;
        explicit Iterator(const InsertedRows& rows) : rows_(&rows) {}

        const InsertedRows* rows_;
        std::size_t place_ = 0;
        Row row_;
    };
    [[nodiscard]] Iterator begin() const { return Iterator(*this); }
    [[nodiscard]] static std::default_sentinel_t end() noexcept { return {}; }

private:
    std::vector<Row> kept_;
    std::size_t count_ = 0;
    Maker make_;
};

} // namespace estatebook::platform
