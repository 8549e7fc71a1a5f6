// SPDX-License-Identifier: MIT
// Decimal against the table that tools/decimal_table.py writes with another implementation of decimals. The
// build that has the table says where it is.
#ifdef ESTATEBOOK_DECIMAL_TABLE

#include "platform/values/Decimal.hpp"
#include "platform/values/Exception.hpp"

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>

namespace estatebook::platform {
namespace {

constexpr int RowCount = 100000;

Decimal read(const std::string& text) {
    const std::optional<Decimal> number = Decimal::parseExact(text);
    if (!number) throw std::invalid_argument("no decimal: " + text);
    return *number;
}

Decimal evaluate(const std::string& operation, std::istream& operands) {
    std::string first;
    std::string second;
    operands >> first >> second;
    const Decimal a = read(first);
    if (operation == "round") {
        static const std::map<std::string, RoundingMode> modes = {{"plain", RoundingMode::Plain},
                                                                  {"down", RoundingMode::Down},
                                                                  {"up", RoundingMode::Up},
                                                                  {"bankers", RoundingMode::Bankers}};
        short scale = 0;
        operands >> scale;
        return a.decimalNumberByRoundingAccordingToBehavior({modes.at(second), scale});
    }
    const Decimal b = read(second);
    if (operation == "add") return a + b;
    if (operation == "subtract") return a - b;
    if (operation == "multiply") return a * b;
    if (operation == "divide") return a / b;
    if (operation == "compare") return a < b ? -1 : a == b ? 0 : 1;
    throw std::invalid_argument("no operation: " + operation);
}

/// Whether the row's answer is the decimal's.
::testing::AssertionResult agrees(const std::string& row) {
    std::istringstream fields(row);
    std::string operation;
    fields >> operation;
    std::string ours;
    Decimal result;
    try {
        result = evaluate(operation, fields);
        ours = result.toString();
    } catch (const OverflowException&) {
        ours = "overflow";
    } catch (const UnderflowException&) {
        ours = "underflow";
    } catch (const DivideByZeroException&) {
        ours = "divide-by-zero";
    }
    std::string expected;
    fields >> expected;
    const std::optional<Decimal> number = Decimal::parseExact(expected);
    if (number ? result == *number && ours == number->toString() : ours == expected)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << row << "\n  gave " << ours;
}

TEST(DecimalTableTest, EveryRowOfTheTableComesOut) {
    std::ifstream table(ESTATEBOOK_DECIMAL_TABLE);
    ASSERT_TRUE(table) << "no table at " << ESTATEBOOK_DECIMAL_TABLE;
    int rows = 0;
    int failures = 0;
    for (std::string row; failures < 20 && std::getline(table, row); ++rows) {
        const ::testing::AssertionResult result = agrees(row);
        EXPECT_TRUE(result);
        failures += result ? 0 : 1;
    }
    EXPECT_EQ(rows, RowCount);
}

} // namespace
} // namespace estatebook::platform

#endif
