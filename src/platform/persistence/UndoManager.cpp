// SPDX-License-Identifier: MIT
#include "platform/persistence/UndoManager.hpp"

#include "platform/values/Exception.hpp"
#include "platform/values/FirstException.hpp"

#include <algorithm>
#include <utility>

namespace estatebook::platform {

void UndoManager::enableUndoRegistration() {
    if (disabled_ == 0)
        throw InternalInconsistencyException("undo registration was enabled more often than it was disabled");
    --disabled_;
}

// Groups

void UndoManager::beginUndoGrouping() {
    checkpoint();
    if (level_ == 0 && groupsByEvent_) {
        isEventOpen_ = true;
        ++level_;
    }
    ++level_;
}

void UndoManager::endUndoGrouping() {
    checkpoint();
    if (level_ == (isEventOpen_ ? 1 : 0))
        throw InternalInconsistencyException("an undo group was ended that nobody began");
    if (--level_ == 0) closeGroup();
}

void UndoManager::endEvent() {
    checkpoint();
    if (level_ != 1 || !isEventOpen_) return;
    level_ = 0;
    closeGroup();
}

void UndoManager::closeGroup() {
    isEventOpen_ = false;
    Group closed = std::exchange(open_, {});
    if (closed.steps.empty()) return;
    auto& groups = isUndoing() ? redo_ : undo_;
    groups.push_back(std::move(closed));
    if (levels_ > 0 && groups.size() > levels_) groups.pop_front();
}

void UndoManager::registerUndo(const void* target, Action action, Action ready) {
    if (!isUndoRegistrationEnabled()) return;
    if (level_ == 0) {
        if (!groupsByEvent_)
            throw InternalInconsistencyException(
                "a change was registered for undoing while no group is open");
        isEventOpen_ = true;
        level_ = 1;
    }
    if (work_ == Work::None) redo_.clear();
    open_.steps.push_back({target, std::move(action), std::move(ready)});
}

// Undoing

void UndoManager::undo() {
    perform(undo_, Work::Undoing);
}

void UndoManager::redo() {
    perform(redo_, Work::Redoing);
}

void UndoManager::perform(std::deque<Group>& from, Work work) {
    if (work_ != Work::None)
        throw InternalInconsistencyException("an undo or redo was asked for while another goes on");
    checkpoint();
    if (level_ > (isEventOpen_ ? 1 : 0))
        throw InternalInconsistencyException("an undo or redo was asked for within an open group");
    endEvent();
    if (from.empty()) return;

    Group group = std::move(from.back());
    from.pop_back();
    level_ = 1;
    work_ = work;
    bool isReady = false;
    FirstException exceptions;
    exceptions.keep([&] {
        for (const Step& step : group.steps)
            if (step.ready) step.ready();
        isReady = true;
    });
    if (isReady) {
        open_.name = group.name;
        exceptions.keep([&] { carryOut(group); });
    } else {
        from.push_back(std::move(group));
        work_ = Work::None;
    }
    level_ = 0;
    closeGroup();
    work_ = Work::None;
    exceptions.rethrow();
}

void UndoManager::carryOut(const Group& group) {
    FirstException exceptions;
    for (auto step = group.steps.rbegin(); step != group.steps.rend(); ++step)
        exceptions.keep([&] { step->action(); });
    exceptions.keep([&] { checkpoint(); });
    exceptions.rethrow();
}

bool UndoManager::canUndo() {
    checkpoint();
    return !undo_.empty() || (level_ > 0 && work_ == Work::None && !open_.steps.empty());
}

bool UndoManager::canRedo() {
    checkpoint();
    return !redo_.empty();
}

void UndoManager::setActionName(std::string name) {
    checkpoint();
    if (level_ > 0) open_.name = std::move(name);
}

std::string UndoManager::undoActionName() {
    checkpoint();
    if (level_ > 0 && !open_.steps.empty()) return open_.name;
    return undo_.empty() ? std::string() : undo_.back().name;
}

std::string UndoManager::redoActionName() {
    checkpoint();
    return redo_.empty() ? std::string() : redo_.back().name;
}

// Forgetting

void UndoManager::setLevelsOfUndo(std::size_t levels) {
    levels_ = levels;
    if (levels_ == 0) return;
    while (undo_.size() > levels_) undo_.pop_front();
    while (redo_.size() > levels_) redo_.pop_front();
}

void UndoManager::removeAllActions() noexcept {
    open_ = {};
    level_ = 0;
    isEventOpen_ = false;
    undo_.clear();
    redo_.clear();
}

void UndoManager::removeAllActionsWithTarget(const void* target) noexcept {
    const auto isTargets = [&](const Step& step) { return step.target == target; };
    std::erase_if(open_.steps, isTargets);
    for (auto* groups : {&undo_, &redo_}) {
        for (Group& group : *groups) std::erase_if(group.steps, isTargets);
        std::erase_if(*groups, [](const Group& group) { return group.steps.empty(); });
    }
}

// Checkpoints

void UndoManager::checkpoint() {
    for (std::size_t index = 0; index < checkpoints_.size(); ++index) {
        const Action action = checkpoints_[index].action; // it may come to take itself away
        action();
    }
}

void UndoManager::addCheckpoint(const void* target, Action action) {
    checkpoints_.push_back({target, std::move(action)});
}

void UndoManager::removeCheckpoint(const void* target) noexcept {
    std::erase_if(checkpoints_, [&](const Step& each) { return each.target == target; });
}

} // namespace estatebook::platform
