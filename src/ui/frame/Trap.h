#pragma once
// Internal to the dialog library: how an event handler traps its own failures.
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include <meridex/frame/Error.h>
#include <meridex/frame/UserInterface.h>

namespace meridex::ui {

/// A failure caught inside an event handler: its error number and description.
struct TrappedFailure {
    std::int32_t number = 0;
    std::string description;
};

/// What a caught exception becomes: an Error keeps its number and description, running out of
/// memory is 7 "Out of memory", anything else 51 "Internal error" with its own text when it has one.
TrappedFailure FailureOf(std::exception_ptr failure);

/// Runs body; the failure it raised, if any. Nothing escapes, so no exception ever unwinds through
/// Qt's event loop.
template <class Body>
std::optional<TrappedFailure> Trap(Body&& body) noexcept {
    try {
        body();
        return std::nullopt;
    } catch (...) {
        return FailureOf(std::current_exception());
    }
}

/// The warning text of a trapped failure: context, " : ", the number, "-", the description
/// ("frmProfiles:cmdLock_Click : 5-Invalid procedure call or argument").
std::string FailureText(std::string_view context, const TrappedFailure& failure);

/// Runs body; a failure it raises is shown through ui (null: the installed interface) in an
/// exclamation box with FailureText, as dialogs report a failed handler and stay open. True when
/// body ran to its end.
bool TrapAndShow(const std::shared_ptr<UserInterface>& ui, std::string_view context,
                 const std::function<void()>& body) noexcept;

}  // namespace meridex::ui
