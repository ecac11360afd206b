#pragma once
// Shared by the binding files: null views become None, and the Python side of
// the library's 1-based, key-or-number index.
#include <optional>

#include <pybind11/functional.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <meridex/frame/Index.h>
#include <meridex/frame/XmlNode.h>

namespace meridex::python {

namespace py = pybind11;

void BindFrame(py::module_& m);
void BindSettings(py::module_& m);
void BindAddressBook(py::module_& m);
void BindComms(py::module_& m);
void BindSync(py::module_& m);
void BindFirmware(py::module_& m);
void BindUserInterface(py::module_& m);

// A namespace of the library's free functions, bound as a class of static
// methods (meridex.LoggerLinks.OpenTcp), which the type stubs can describe.
template <typename Tag>
struct Namespace {};

// An int is a 1-based number, a str a key (as the library's Index).
using PyIndex = std::variant<long long, std::string>;
inline Index ToIndex(const PyIndex& index) {
    return std::holds_alternative<long long>(index) ? Index(std::get<long long>(index))
                                                    : Index(std::get<std::string>(index));
}

// A view, or None when it is null (typed Optional[View] in the stubs).
template <typename View>
std::optional<View> OrNone(const View& view) {
    if (view.IsNull()) return std::nullopt;
    return view;
}

// The Python way for a miss in [ ]: IndexError for a number, KeyError for a key.
[[noreturn]] inline void Missing(const PyIndex& index) {
    if (std::holds_alternative<long long>(index)) throw py::index_error(std::to_string(std::get<long long>(index)));
    throw py::key_error(std::get<std::string>(index));
}

template <typename View>
View Required(const View& view, const PyIndex& index) {
    if (view.IsNull()) Missing(index);
    return view;
}

// The Python sequence protocol over a collection of 1-based Item(i), 1..Count:
// len(c), c[1] or c["KEY"] (IndexError or KeyError on a miss), and iteration.
template <typename Class, typename Count, typename Item>
Class& AddSequence(Class& cls, Count count, Item item) {
    using Self = typename Class::type;
    cls.def("__len__", [count](const Self& self) { return count(self); }, "The number of items")
        .def(
            "__getitem__",
            [item](const Self& self, const PyIndex& index) { return Required(item(self, ToIndex(index)), index); },
            py::arg("index"), "The item by 1-based number or by key; IndexError or KeyError when there is none")
        .def(
            "__iter__",
            [count, item](const Self& self) {
                py::list items;
                for (long long i = 1, n = count(self); i <= n; ++i) items.append(py::cast(item(self, Index(i))));
                return py::iter(items);
            },
            "Every item, in order");
    return cls;
}

}  // namespace meridex::python
