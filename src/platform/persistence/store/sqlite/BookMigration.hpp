// SPDX-License-Identifier: MIT
#pragma once

/// Inner header: bringing books of earlier programs into the form of today.

#include "platform/persistence/store/sqlite/BookFile.hpp"

#include <cstdint>
#include <memory>
#include <string>

namespace estatebook::platform::sqlite {

/// A book of today, in memory, with all that a book of an earlier form holds: rows under their keys and versions, commits, journal,
/// identifiers, metadata. The pages, links, digests, counts and sums of the book are compared. Throws a StoreFailure. Linear in
/// the size of the book.
[[nodiscard]] std::unique_ptr<Connection> readEarlier(const FileSystem& files, const std::string& path,
                                                      const BookTables& tables, const RowShapes& shapes,
                                                      const ManagedObjectModel& model, LayoutSteps steps,
                                                      std::chrono::milliseconds patience);

/// Puts such a book in the place of that of the earlier form, of which a copy is kept; gives the path of the copy. Whatever
/// fails, and whenever the power does, the one or the other is there, complete. Throws a StoreFailure, or the error of the copy.
/// REQUIRES: the right to write the book, and nobody here has it open.
[[nodiscard]] std::string migrate(const FileSystem& files, const std::string& path, const BookTables& tables,
                                  const RowShapes& shapes, const Ref<ManagedObjectModel>& model,
                                  const SQLiteStore::Options& options);

} // namespace estatebook::platform::sqlite
