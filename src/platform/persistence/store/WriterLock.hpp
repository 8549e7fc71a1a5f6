// SPDX-License-Identifier: MIT
#pragma once

/// WriterLock: the right to write a book, held by one program at a time.
///
/// The kernel keeps it on a file "NAME.lock" beside the book and takes it back when its holder ends, in whatever way. A file
/// that is left over means nothing. The file tells who holds the lock, for those who are refused.

#include "platform/persistence/store/StoreChanges.hpp"
#include "platform/persistence/store/StoreError.hpp"

#include <string>
#include <utility>

namespace estatebook::platform {

class ESTATEBOOK_API WriterLock {
public:
    /// Locked, with the holder's name and since when, while another has it; nobody is waited for.
    [[nodiscard]] static StoreResult<WriterLock> take(const std::string& bookPath,
                                                      const CommitOrigin& holder);

    WriterLock(WriterLock&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    WriterLock& operator=(WriterLock&& other) noexcept {
        std::swap(descriptor_, other.descriptor_);
        return *this;
    }
    ~WriterLock();

private:
    explicit WriterLock(int descriptor) noexcept : descriptor_(descriptor) {}
    int descriptor_;
};

} // namespace estatebook::platform
