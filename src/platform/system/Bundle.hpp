// SPDX-License-Identifier: MIT
#pragma once

/// Bundle: a file with code in it (a library or a program) and the resources that stand beside it.
///
/// Resources of a bundle at FOLDER/NAME stand in FOLDER/EstateBook_Model.resources, or, for a program that holds the
/// library in itself, in the library folder that belongs to FOLDER (../lib, as installed).

#include "EstateBook_ModelExport.hpp"

#include <optional>
#include <string>
#include <string_view>

namespace estatebook::platform {

class ESTATEBOOK_API Bundle {
public:
    /// bundleForClass: the bundle whose code holds the address (a function or a constant of the class).
    [[nodiscard]] static Bundle containing(const void* address);

    /// The folder in which the bundle's file stands; empty when the system does not know.
    [[nodiscard]] const std::string& folder() const noexcept { return folder_; }

    /// pathForResource:ofType: none when there is no such file.
    [[nodiscard]] std::optional<std::string> pathForResourceOfType(std::string_view name,
                                                                   std::string_view type) const;

private:
    explicit Bundle(std::string folder) : folder_(std::move(folder)) {}
    std::string folder_;
};

} // namespace estatebook::platform
