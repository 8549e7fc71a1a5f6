// SPDX-License-Identifier: MIT
#pragma once

/// UndoManager: what can be undone, in groups, and what was undone and can be redone.
///
///     tenure->setRentalAmount(1100);
///     undo.setActionName("Change of Rent");
///     undo.endEvent();                       // the next change will be a step of its own
///     undo.undo();                           // the rent is what it was
///     undo.redo();                           // 1100 again
///
/// A group is what one undo takes back. As a rule it opens by itself with the first change of an event and ends with the
/// event; who handles events says so (`endEvent`), and an undo does, too. Groups that were begun by hand nest; the
/// outermost is the step.
///
/// A context registers its changes when they are processed. Whatever asks about undoing has the pending ones
/// processed first; disabling does not, so that a caller who means to leave out just what follows processes the
/// changes before and after.

#include "platform/values/Object.hpp"

#include <cstddef>
#include <deque>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace estatebook::platform {

class ESTATEBOOK_API UndoManager final : public Object {
public:
    using Action = std::function<void()>;

    UndoManager() noexcept : Object(Counting::Local) {}

    void disableUndoRegistration() noexcept { ++disabled_; }
    /// Raises InternalInconsistencyException when registration is not disabled.
    void enableUndoRegistration();
    [[nodiscard]] bool isUndoRegistrationEnabled() const noexcept { return disabled_ == 0; }

    /// Whether a change outside every group opens one that lasts to the end of the event; so it is from the start.
    [[nodiscard]] bool groupsByEvent() const noexcept { return groupsByEvent_; }
    void setGroupsByEvent(bool flag) noexcept { groupsByEvent_ = flag; }
    /// Ends the group that the event's first change opened; does nothing when there is none, or groups begun by hand are open.
    void endEvent();
    void beginUndoGrouping();
    /// Raises InternalInconsistencyException when no group is open.
    void endUndoGrouping();
    /// Groups that are open within one another, the event's own included.
    [[nodiscard]] std::size_t groupingLevel() const noexcept { return level_; }

    /// Remembers how to take back what was just done. While undoing or redoing it becomes part of the opposite; else
    /// nothing can be redone any more. Nothing is remembered while registration is disabled. The target only serves
    /// to take the action away again. Raises InternalInconsistencyException outside a group, when none opens by itself.
    /// What it needs is readied before any action of its group is carried out; if that raises, the group stays where it is.
    void registerUndo(const void* target, Action action, Action ready = {});

    /// Takes the last group back, after the event's own is closed. When all that it needs is ready, every action is carried out; the
    /// first exception of one leaves at the end. Does nothing when there is no group. Raises InternalInconsistencyException within a group begun by hand,
    /// or while undoing or redoing.
    void undo();
    /// The same for the group that was undone last.
    void redo();
    [[nodiscard]] bool canUndo();
    [[nodiscard]] bool canRedo();
    [[nodiscard]] bool isUndoing() const noexcept { return work_ == Work::Undoing; }
    [[nodiscard]] bool isRedoing() const noexcept { return work_ == Work::Redoing; }

    /// What the user calls the open group's changes; does nothing when no group is open. Undoing and redoing keep the name.
    void setActionName(std::string name);
    /// The name of what `undo` would take back; empty when it has none.
    [[nodiscard]] std::string undoActionName();
    [[nodiscard]] std::string redoActionName();

    /// How many groups are kept; 0, as from the start, for all. The oldest go first.
    [[nodiscard]] std::size_t levelsOfUndo() const noexcept { return levels_; }
    void setLevelsOfUndo(std::size_t levels);

    /// Forgets everything, open groups included.
    void removeAllActions() noexcept;
    /// Forgets the actions registered for a target, and groups that are empty then.
    void removeAllActionsWithTarget(const void* target) noexcept;

    /// Called before anything is asked about undoing, to register what has not been yet.
    void addCheckpoint(const void* target, Action action);
    void removeCheckpoint(const void* target) noexcept;

    [[nodiscard]] std::string_view runtimeClassName() const noexcept override { return "UndoManager"; }

private:
    struct Step {
        const void* target;
        Action action;
        Action ready{};
    };
    struct Group {
        std::string name;
        std::vector<Step> steps;
    };
    enum class Work : unsigned char { None, Undoing, Redoing };

    void checkpoint();
    void closeGroup();
    void perform(std::deque<Group>& from, Work work);
    void carryOut(const Group& group);

    std::size_t disabled_ = 0;
    std::size_t levels_ = 0;
    std::size_t level_ = 0;
    bool groupsByEvent_ = true;
    bool isEventOpen_ = false; // the lowest level is the event's own
    Work work_ = Work::None;
    Group open_;
    std::deque<Group> undo_;
    std::deque<Group> redo_;
    std::vector<Step> checkpoints_;
};

} // namespace estatebook::platform
