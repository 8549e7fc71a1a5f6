// SPDX-License-Identifier: MIT
#include "tenure/GeneratedLines.hpp"

#include <stdexcept>

namespace estatebook {

using namespace platform;

GeneratedLines::GeneratedLines(const EntityDescription& entity, std::size_t capacity)
    : Object(Counting::Local), model_(&entity.model()),
      birth_(ManagedObjectBirth::withoutContextAndModel(entity)), texts_(capacity), capacity_(capacity) {}

Ref<GeneratedLines> GeneratedLines::make(const EntityDescription& entity, std::size_t capacity) {
    static_assert(alignof(GeneratedLines) == alignof(GeneratedLine));
    if (capacity > MaximalPlaceInBlock) throw std::length_error("GeneratedLines: too many lines");
    void* const memory = ::operator new(sizeof(GeneratedLines) + capacity * sizeof(GeneratedLine));
    try {
        return Ref<GeneratedLines>(new (memory) GeneratedLines(entity, capacity));
    } catch (...) {
        ::operator delete(memory);
        throw;
    }
}

void GeneratedLines::dispose() const noexcept {
    auto* const self = const_cast<GeneratedLines*>(this);
    self->~GeneratedLines();
    ::operator delete(static_cast<void*>(self));
}

Ref<String> GeneratedLine::what() const {
    if (auto given = TKTransaction::what()) return given;
    const GeneratedLines& row = GeneratedLines::of(*this);
    if (place() < row.firstRent_) return nullptr;
    return row.texts_[place() - row.firstRent_];
}

void GeneratedLine::dispose() const noexcept {
    // As a rule nobody linked the line with anything, and there is nothing to take apart.
    if (isLinked())
        endManaging();
    else
        endObserving();
    const GeneratedLines& row = GeneratedLines::of(*this);
    this->~GeneratedLine();
    row.release();
}

} // namespace estatebook
