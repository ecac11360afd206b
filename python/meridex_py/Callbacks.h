#pragma once
#include <optional>

#include "Bind.h"

namespace meridex::python {

// Calls Python callables from inside the library. The library traps failures
// of its own steps, so a Python exception is held here and raised again once
// the library call has returned.
class Callbacks {
public:
    // The callable's result; None when there is no callable or it failed.
    template <typename... Args>
    py::object Call(const py::object& callable, Args&&... args) {
        if (callable.is_none() || failure_) return py::none();
        try {
            return callable(std::forward<Args>(args)...);
        } catch (py::error_already_set& e) {
            failure_.emplace(std::move(e));
            return py::none();
        }
    }
    bool Failed() const { return failure_.has_value(); }
    // After the library call: raises the held exception, if any.
    void RaiseHeld() {
        if (!failure_) return;
        py::error_already_set e = std::move(*failure_);
        failure_.reset();
        throw e;
    }

private:
    std::optional<py::error_already_set> failure_;
};

}  // namespace meridex::python
