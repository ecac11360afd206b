#include "Bind.h"

#include <meridex/frame/Base64Encoder.h>
#include <meridex/frame/Error.h>
#include <meridex/frame/ErrorHandler.h>
#include <meridex/frame/FileOps.h>
#include <meridex/frame/XMLFactoryLease.h>
#include <meridex/frame/XMLOps.h>
#include <meridex/frame/XmlDocument.h>

namespace meridex::python {
namespace {

// An XMLOps function run with the factory document alive (it makes the missing elements).
template <typename Result, typename... Args>
auto WithFactory(Result (*function)(Args...)) {
    return [function](Args... args) {
        XMLFactoryLease lease;
        return function(args...);
    };
}

void BindXmlOps(py::module_& m) {
    py::class_<Namespace<struct XMLOpsTag>>(m, "XMLOps", "Values of an element's children, as the documents store them")
        .def_static("GetXMLValue", WithFactory(&XMLOps::GetXMLValue), py::arg("node"), py::arg("name"),
                    py::arg("default"), "The child's text; a missing child gives default, then stored unforced")
        .def_static("SetXMLValue", WithFactory(&XMLOps::SetXMLValue), py::arg("node"), py::arg("name"),
                    py::arg("value"), py::arg("force") = false,
                    "Stores the child's text; without force \"\" and \"0\" remove the child")
        .def_static("ReadXMLString", WithFactory(&XMLOps::ReadXMLString), py::arg("node"), py::arg("name"),
                    py::arg("default"), py::arg("force") = false,
                    "The child's text; a missing child gives default, then stored")
        .def_static("ReadXMLInteger", WithFactory(&XMLOps::ReadXMLInteger), py::arg("node"), py::arg("name"),
                    py::arg("default"), py::arg("force") = false,
                    "The child's leading number; meridex.Error 6 beyond 16 bits")
        .def_static("ReadXMLBoolean", WithFactory(&XMLOps::ReadXMLBoolean), py::arg("node"), py::arg("name"),
                    py::arg("default"), py::arg("force") = false,
                    "True when the child holds a non-zero number or \"True\" in any case")
        .def_static("WriteXMLString", WithFactory(&XMLOps::WriteXMLString), py::arg("node"), py::arg("name"),
                    py::arg("value"), py::arg("default"), py::arg("force") = false,
                    "Writes the child's text; a missing child is made with force or when value is not default");
}

}  // namespace

void BindFrame(py::module_& m) {
    py::class_<XmlNode>(m, "Element",
                        "A live view of one XML element: its name, its text and its child elements. "
                        "Two views of one element see the same data.")
        .def_property_readonly("name", &XmlNode::Name, "The element's name")
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
        .def(
            "__eq__",
            [](const XmlNode& a, const py::object& b) { return py::isinstance<XmlNode>(b) && a == b.cast<XmlNode>(); },
            py::arg("other"), "True when both views are of the same element")
        .def("__repr__", [](const XmlNode& node) { return "<meridex.Element " + node.Name() + ">"; },
             "The element's name in angle brackets");

    py::class_<XmlDocument>(m, "Document", "An XML document as the library reads and writes it")
        .def_static("New", &XmlDocument::New, "An empty document")
        .def_static(
            "Parse",
            [](std::string_view text) {
                std::string error;
                XmlDocument document = XmlDocument::Parse(text, &error);
                if (document.IsNull()) throw py::value_error(error);
                return document;
            },
            py::arg("text"), "A document read from XML text; ValueError naming the fault when it is not well-formed")
        .def_static(
            "Load",
            [](const std::string& path) {
                std::string error;
                XmlDocument document = XmlDocument::Load(path, &error);
                if (document.IsNull()) throw py::value_error(path + ": " + error);
                return document;
            },
            py::arg("path"), "A document read from a file; ValueError naming the fault when it cannot be read")
        .def_property_readonly(
            "Root", [](const XmlDocument& d) { return OrNone(d.DocumentElement()); },
            "The root element, or None for a document without one")
        .def("Serialize", &XmlDocument::Serialize, "The document as text, as a save writes it")
        .def(
            "Save",
            [](const XmlDocument& d, const std::string& path) {
                std::string error;
                if (!d.Save(path, &error)) throw py::value_error(path + ": " + error);
            },
            py::arg("path"), "Writes the document to a file atomically; ValueError when it cannot be written");

    BindXmlOps(m);
    py::class_<Namespace<struct FileOpsTag>>(m, "FileOps", "The library's file operations")
        .def_static(
            "WriteFileAtomic",
            [](const std::string& path, const py::bytes& bytes) {
                std::string error;
                if (!FileOps::WriteFileAtomic(path, std::string(bytes), &error))
                    throw Error(ErrorNumber::PathFileAccess, "FileOps:WriteFileAtomic", error);
            },
            py::arg("path"), py::arg("data"),
            "Writes bytes through a temporary file beside the target, flushed and renamed over it; raises "
            "meridex.Error and leaves the old file as it was when that fails")
        .def_static("KeepUnreadableFile", &FileOps::KeepUnreadableFile, py::arg("path"),
                    "Copies a file that could not be read to a free name beside it (NAME.unreadable, ...); the "
                    "copy's path, or \"\" when there was nothing to keep")
        .def_static("CreateFolderPath", &FileOps::CreateFolderPath, py::arg("path"),
                    "Creates the folder and every missing parent; meridex.Error 76 for a relative or empty path");

    py::class_<Base64Encoder>(m, "Base64Encoder", "Base64 of windows-1252 text, as the legacy host stores passwords")
        .def(py::init<>(), "An encoder")
        .def("Encode", &Base64Encoder::Encode, py::arg("text"), "The Base64 of the text's windows-1252 bytes")
        .def("Decode", &Base64Encoder::Decode, py::arg("text"),
             "The text Base64 stands for; raises meridex.Error on text that is not Base64");

    py::class_<ErrorHandler>(m, "ErrorHandler", "Writes trapped failures to an error log")
        .def(py::init([] { return std::make_unique<ErrorHandler>(); }), "A handler with no log file yet")
        .def_property("ErrorLogFile", &ErrorHandler::ErrorLogFile, &ErrorHandler::setErrorLogFile,
                      "The log file failures are appended to")
        .def_property("LogErrors", &ErrorHandler::LogErrors, &ErrorHandler::setLogErrors,
                      "True when failures are written to the log")
        .def_property("DisplayErrorMsg", &ErrorHandler::DisplayErrorMsg, &ErrorHandler::setDisplayErrorMsg,
                      "True when failures are also shown through the installed user interface")
        .def("LogError", &ErrorHandler::LogError, py::arg("number"), py::arg("description"), py::arg("context"),
             "Logs one failure: its number, description and context (\"Class:Routine\")");
}

}  // namespace meridex::python
