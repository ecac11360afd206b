#include "Bind.h"

#include <pybind11/eval.h>

#include <meridex/Version.h>
#include <meridex/frame/Error.h>

namespace meridex::python {
namespace {

// meridex.Error: the library's one failure type, with its number, source and description.
constexpr const char* kErrorClass = R"py(
class Error(Exception):
    """A failure reported by the library: number, source ("Class:Routine") and description."""

    def __init__(self, number, source, description):
        super().__init__(f"{description} (error {number}, {source})")
        self.number = number
        self.source = source
        self.description = description
)py";

}  // namespace

}  // namespace meridex::python

PYBIND11_MODULE(meridex, m) {
    namespace py = pybind11;
    using namespace meridex::python;
    m.doc() = "Settings and user profiles, the address book, the communications map, scheme files, scheme "
              "synchronisation and logger firmware of the Meridex library";
    m.attr("__version__") = meridex::VersionText();
    py::exec(kErrorClass, m.attr("__dict__"));
    // Held for the translator as long as the interpreter runs.
    static py::handle errorClass = py::object(m.attr("Error")).release();
    py::register_exception_translator([](std::exception_ptr p) {
        try {
            if (p) std::rethrow_exception(p);
        } catch (const meridex::Error& e) {
            py::object value = errorClass(e.Number(), e.Source(), e.Description());
            PyErr_SetObject(errorClass.ptr(), value.ptr());
        }
    });
    BindFrame(m);
    BindUserInterface(m);
    BindSettings(m);
    BindAddressBook(m);
    BindComms(m);
    BindSync(m);
    BindFirmware(m);
}
