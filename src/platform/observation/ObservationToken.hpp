// SPDX-License-Identifier: MIT
#pragma once

/// ObservationToken: a registration that ends when the token does.
///
///     class Panel {
///         ObservationToken balance_;
///         void show(TKTenure& tenure) {
///             balance_ = tenure.observe("balance", [this] { redraw(); });     // the one before ends here
///         }
///     };
///
/// A token keeps nobody alive. One that outlives the object it was handed out by, or whose registration was taken away by
/// removeObserver:…, ends without a word. The trap: a token that is not kept ends at once.
///
/// Ending takes constant time, however many observers there are. Used on the object's thread only.

#include "EstateBook_ModelExport.hpp"

#include "platform/observation/Key.hpp"
#include "platform/values/Object.hpp"
#include "platform/values/Ref.hpp"

#include <cstdint>

namespace estatebook::platform {

class ObservableObject;
struct WeakBlock;

class ESTATEBOOK_API ObservationToken {
public:
    /// Of nothing.
    ObservationToken() noexcept = default;
    ObservationToken(ObservationToken&& other) noexcept;
    ObservationToken& operator=(ObservationToken&& other) noexcept;
    ~ObservationToken();

    /// Takes the registration away; nothing happens a second time.
    void end() noexcept;

    /// Whether there is something to end: false by default, after `end`, when moved from, and once the object is gone.
    [[nodiscard]] explicit operator bool() const noexcept;

private:
    friend class ObservableObject;
    void takeAway(ObservableObject& object, const WeakBlock* observer, Object* told) noexcept;

    // Both are held: the observed object by what stands for it, and whoever is told.
    WeakBlock* object_ = nullptr;
    WeakBlock* observer_ = nullptr; // or
    Ref<Object> told_;              // a callback or a path
    const void* context_ = nullptr;
    Key key_; // none for a path
    std::uint8_t options_ = 0;
};

} // namespace estatebook::platform
