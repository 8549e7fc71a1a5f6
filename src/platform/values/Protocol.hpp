// SPDX-License-Identifier: MIT
#pragma once

/// Protocol: the root of the stateless abstract classes that managed and plain objects adopt alike.
///
///     struct TKLedgerTransaction : platform::Protocol {
///         virtual std::optional<Decimal> amount() const = 0; …
///     };
///     class TKStatement : public platform::Adopts<Object, TKLedgerTransaction> { … };
///     Ref<TKLedgerTransaction> line = statement;     // counts the statement itself
///
/// Whether an object adopts a protocol is asked at run time with `dynamic_cast`.

#include "platform/values/Object.hpp"

#include <utility>

namespace estatebook::platform {

class ESTATEBOOK_API Protocol {
public:
    virtual void retainAdopter() const noexcept = 0;
    virtual void releaseAdopter() const noexcept = 0;

    /// The object that adopts the protocol.
    [[nodiscard]] virtual Object& adopter() const noexcept = 0;

protected:
    Protocol() = default;
    Protocol(const Protocol&) = default;
    Protocol& operator=(const Protocol&) = default;
    ~Protocol() = default;
};

/// Base, with the counting of each adopted protocol led to it.
template <class Base, class... Protocols>
class Adopts : public Base, public Protocols... {
public:
    using Base::Base;

    void retainAdopter() const noexcept override { this->retain(); }
    void releaseAdopter() const noexcept override { this->release(); }
    [[nodiscard]] Object& adopter() const noexcept override { return const_cast<Adopts&>(*this); }
};

} // namespace estatebook::platform
