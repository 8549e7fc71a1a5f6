// SPDX-License-Identifier: MIT

// What a store tells when the data base finds no memory.

#include "support/FailingAllocator.hpp"
#include "support/MemoryDisk.hpp"
#include "support/StoreKinds.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace estatebook::platform {
namespace {

using test::bookModel;
using test::entityNamed;
using test::RowOf;

// The data base has no room for the byte that ends a text, and gives none then. That is no damage.
TEST(StoreMemoryTest, ATextThatCannotBeEndedIsNotTakenForADamagedOne) {
    const std::string path = "/book.estatebook";
    test::FailingAllocator memory;
    test::MemoryDisk disk;
    std::vector<std::string> names;
    {
        const auto store = *SQLiteStore::create(path, bookModel(), {.fileSystem = &disk});
        StoreChanges changes = test::newChanges();
        // Memory comes in pieces of eight bytes: of texts that are read from several pages, some fill theirs to the last byte.
        for (std::size_t size = 6000; size < 6008; ++size) {
            names.emplace_back(size, 'x');
            changes.insertions.push_back(
                RowOf("Tenant", std::ssize(names)).with(keys::name, String::make(names.back())));
        }
        ASSERT_TRUE(store->save(changes)->landed());
    }
    std::size_t failures = 0;
    for (std::uint64_t request = 1;; ++request) {
        SCOPED_TRACE("request " + std::to_string(request));
        const auto store =
            *SQLiteStore::open(path, bookModel(), {.access = SQLiteStore::Access::Read, .fileSystem = &disk});
        std::vector<std::string> found;
        memory.failAt(request, test::FailingAllocator::Fault::Once);
        const auto fetched = store->fetchRows(entityNamed("Tenant"), {}, [&](const Row& row) {
            found.push_back(row.values.front().string()->string());
        });
        const bool hasFailed = memory.hasFailed();
        memory.recover();
        if (fetched) {
            ASSERT_EQ(found, names);
        } else {
            ++failures;
            ASSERT_EQ(fetched.error().code, StoreErrorCode::OutOfMemory) << fetched.error().message;
        }
        if (!hasFailed) break;
    }
    EXPECT_GT(failures, 0u);
}

} // namespace
} // namespace estatebook::platform
