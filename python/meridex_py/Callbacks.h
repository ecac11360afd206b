#pragma once
#include <optional>

#include "Bind.h"

namespace meridex::python {

// An event handler given from Python: a callable, or None.
template <typename Signature>
using Handler = std::optional<std::function<Signature>>;

// Calls Python callables from inside the library. The library traps failures
// of its own steps, so a Python exception is held here and raised again once
// the library call has returned.
class Callbacks {
public:
    // The handler's result; the result type's default when there is no handler,
    // an earlier one failed or this one fails (an answer of the wrong type too).
    template <typename Result, typename... Parameters, typename... Args>
    Result Call(const Handler<Result(Parameters...)>& handler, Args&&... args) {
        if (!handler || failure_) return Result();
        try {
            return (*handler)(std::forward<Args>(args)...);
        } catch (py::error_already_set& e) {
            failure_.emplace(std::move(e));
        } catch (const py::cast_error& e) {
            PyErr_SetString(PyExc_TypeError, e.what());
            failure_.emplace();
        }
        return Result();
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
