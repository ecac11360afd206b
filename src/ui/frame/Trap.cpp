#include <meridex/ui/frame/Trap.h>

#include <new>

namespace meridex::ui {

TrappedFailure FailureOf(std::exception_ptr failure) {
    try {
        std::rethrow_exception(failure);
    } catch (const Error& e) {
        return {e.Number(), e.Description()};
    } catch (const std::bad_alloc&) {
        return {7, "Out of memory"};
    } catch (const std::exception& e) {
        const std::string what = e.what();
        return {51, what.empty() ? std::string("Internal error") : what};
    } catch (...) {
        return {51, "Internal error"};
    }
}

std::string FailureText(std::string_view context, const TrappedFailure& failure) {
    return std::string(context) + " : " + std::to_string(failure.number) + "-" + failure.description;
}

bool TrapAndShow(const std::shared_ptr<UserInterface>& ui, std::string_view context,
                 const std::function<void()>& body) noexcept {
    const auto failure = Trap(body);
    if (!failure) return true;
    // The report itself must not throw back into Qt either.
    Trap([&] {
        const auto shown = ui ? ui : UserInterface::Current();
        shown->MessageBox(FailureText(context, *failure), MessageButtons::OK, MessageIcon::Exclamation, {});
    });
    return false;
}

}  // namespace meridex::ui
