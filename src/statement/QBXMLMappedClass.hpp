// SPDX-License-Identifier: MIT
#pragma once

/// QBXMLMappedClass: an object that says under which class name it is mapped to XML.
///
///     if (auto mapped = platform::refCast<QBXMLMappedClass>(object)) mapped->mappedClassName();

#include "EstateBook_ModelExport.hpp"

#include "platform/values/Protocol.hpp"
#include "platform/values/Ref.hpp"
#include "platform/values/String.hpp"

namespace estatebook {

class ESTATEBOOK_API QBXMLMappedClass : public platform::Protocol {
public:
    /// The class name, for example "TKStatement".
    [[nodiscard]] virtual platform::Ref<platform::String> mappedClassName() const = 0;

protected:
    ~QBXMLMappedClass() = default;
};

} // namespace estatebook
