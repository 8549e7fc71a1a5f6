// SPDX-License-Identifier: MIT
#pragma once

/// SteppedLayout: a layout in which rows stood otherwise than today's model has them, and the step that leads from there. Only tests
/// know it; it stands for whatever a layout of the future may change.
///
/// In the former layout a tenant's name ended with the number that the address book has ("Ada #7"), a property had a sublease,
/// which belongs to its name now, amounts were whole hundredths, and the entry "window" was kept with each book.

#include "platform/persistence/store/sqlite/LayoutSteps.hpp"
#include "support/EarlierModel.hpp"

#include <sqlite3.h>

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace estatebook::test {

class SteppedLayout {
public:
    [[nodiscard]] static platform::Ref<platform::ManagedObjectModel> former() {
        static const auto model = EarlierModel{.withoutAttributes = {"TKTenant.addressBookID"}}.make();
        return model;
    }
    [[nodiscard]] static platform::Ref<platform::ManagedObjectModel> today() {
        static const auto model = EarlierModel{.withoutAttributes = {"TKProperty.sublease"}}.make();
        return model;
    }
    [[nodiscard]] static const platform::sqlite::LayoutSteps& steps() {
        static constexpr platform::sqlite::FormerAttribute Gone[] = {
            {"Account", "sublease", platform::AttributeType::String}};
        static constexpr platform::sqlite::LayoutStep Steps[] = {
            {.from = 1, .attributes = Gone, .bring = bring}};
        static constexpr platform::sqlite::LayoutSteps All{Steps};
        return All;
    }
    /// Has a book that was written just now say that it is of the former layout.
    static void age(const std::string& path, const char* files = nullptr) {
        sqlite3* database = nullptr;
        const int opened = sqlite3_open_v2(path.c_str(), &database, SQLITE_OPEN_READWRITE, files);
        const int aged = opened == SQLITE_OK
                             ? sqlite3_exec(database, "PRAGMA user_version=1", nullptr, nullptr, nullptr)
                             : opened;
        sqlite3_close(database);
        if (aged != SQLITE_OK) throw std::runtime_error("the book cannot be aged");
    }

private:
    using Cell = platform::sqlite::Cell;

    static std::pair<std::string_view, std::optional<std::string_view>> parts(std::string_view name) {
        const std::size_t mark = name.rfind(" #");
        if (mark == std::string_view::npos) return {name, std::nullopt};
        return {name.substr(0, mark), name.substr(mark + 2)};
    }
    static void shift(platform::sqlite::SteppedRow& row, std::string_view column) {
        const Cell hundredths = row.cell(column);
        if (hundredths.type != Cell::Type::Text) return;
        const auto amount = platform::Decimal::parse(hundredths.bytes) *
                            platform::Decimal::withMantissaExponentIsNegative(1, -2, false);
        row.set(column, Cell::text(amount.toString()));
    }
    static void shorten(platform::sqlite::SteppedRow& row, std::string_view column) {
        if (const Cell name = row.cell(column); name.type == Cell::Type::Text)
            row.set(column, Cell::text(std::string(parts(name.bytes).first)));
    }

    static void bring(platform::sqlite::SteppedRow& row) {
        if (row.table() == "Account" && row.entity() == "Tenant") {
            const std::string name(row.cell("name").bytes);
            const auto number = parts(name).second;
            shorten(row, "name");
            if (number) row.set("addressBookID", Cell::text(*number));
        }
        if (row.table() == "Account" && row.entity() == "Property") {
            const Cell sublease = row.take("sublease");
            if (sublease.type == Cell::Type::Text)
                row.set("name", Cell::text(std::string(row.cell("name").bytes) + ", sublet " +
                                           std::string(sublease.bytes)));
        }
        if (row.table() == "Transaction") shift(row, "amount");
        if (row.table() == "book_metadata" && row.cell("name").bytes == "window") row.drop();
        if (row.table() != "book_journal") return;
        const std::string_view property = row.cell("property").bytes;
        if (property == "sublease") return row.drop();
        for (const char* column : {"former", "current"}) {
            if (property == "amount") shift(row, column);
            if (property == "name" && row.entity() == "Tenant") shorten(row, column);
        }
    }
};

} // namespace estatebook::test
