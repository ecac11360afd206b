#include "Bind.h"

#include <meridex/frame/Base64Encoder.h>
#include <meridex/frame/ErrorHandler.h>

namespace meridex::python {

void BindFrame(py::module_& m) {
    py::class_<XmlNode>(m, "Element",
                        "A live view of one XML element: its name, its text and its child elements. "
                        "Two views of one element see the same data.")
        .def_property_readonly("name", &XmlNode::Name)
        .def_property(
            "text", &XmlNode::Text, [](const XmlNode& node, std::string_view text) { node.setText(text); },
            "The element's text")
        .def_property_readonly(
            "children",
            [](const XmlNode& node) {
                std::vector<XmlNode> children;
                for (XmlNode child = node.FirstChildElement(); child; child = child.NextSiblingElement())
                    children.push_back(child);
                return children;
            },
            "The child elements, in order")
        .def(
            "find", [](const XmlNode& node, std::string_view path) { return OrNone(node.SelectSingle(path)); },
            py::arg("path"), "The first element at a relative name path (\"PROFILE/KEY\"), or None")
        .def("find_all", &XmlNode::SelectAll, py::arg("path"), "Every element at a relative name path")
        .def_property_readonly("xml", &XmlNode::Xml, "The element serialised as XML")
        .def("__eq__", [](const XmlNode& a, const XmlNode& b) { return a == b; })
        .def("__repr__", [](const XmlNode& node) { return "<meridex.Element " + node.Name() + ">"; });

    py::class_<Base64Encoder>(m, "Base64Encoder", "Base64 of windows-1252 text, as the legacy host stores passwords")
        .def(py::init<>())
        .def("Encode", &Base64Encoder::Encode, py::arg("text"))
        .def("Decode", &Base64Encoder::Decode, py::arg("text"), "Raises meridex.Error on text that is not Base64");

    py::class_<ErrorHandler>(m, "ErrorHandler", "Writes trapped failures to an error log")
        .def(py::init([] { return std::make_unique<ErrorHandler>(); }))
        .def_property("ErrorLogFile", &ErrorHandler::ErrorLogFile, &ErrorHandler::setErrorLogFile)
        .def_property("LogErrors", &ErrorHandler::LogErrors, &ErrorHandler::setLogErrors)
        .def_property("DisplayErrorMsg", &ErrorHandler::DisplayErrorMsg, &ErrorHandler::setDisplayErrorMsg)
        .def("LogError", &ErrorHandler::LogError, py::arg("number"), py::arg("description"), py::arg("context"));
}

}  // namespace meridex::python
