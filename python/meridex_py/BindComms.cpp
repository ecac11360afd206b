#include <functional>

#include "Bind.h"
#include "Callbacks.h"

#include <meridex/addressbook/SiteGroup.h>
#include <meridex/comms/CommsProfileManager.h>
#include <meridex/comms/ImportCommsProfiles.h>
#include <meridex/frame/Error.h>
#include <meridex/platform/Platform.h>
#include <meridex/platform/SerialPortSource.h>

namespace meridex::python {
namespace {

// A port source written in Python: ListPorts() and Probe(port).
class PySerialPortSource : public SerialPortSource {
public:
    std::vector<SerialPort> ListPorts() override { PYBIND11_OVERRIDE_PURE(std::vector<SerialPort>, SerialPortSource, ListPorts); }
    bool Probe(const SerialPort& port) override { PYBIND11_OVERRIDE_PURE(bool, SerialPortSource, Probe, port); }
};

class PyImportEvents : public ImportEvents, public Callbacks {
public:
    py::object message = py::none(), progress = py::none(), complete = py::none(), cancel = py::none();
    void Message(const std::string& text) override { Call(message, text); }
    void Progress(std::int16_t percent) override { Call(progress, percent); }
    void Complete() override { Call(complete); }
    bool CancelRequested() override {
        const py::object answer = Call(cancel);
        return Failed() || (!answer.is_none() && answer.cast<bool>());  // a failing callback ends the import
    }
};

// ImportCommsProfiles with its events as Python callables.
struct PyImport {
    PyImportEvents events;
    ImportCommsProfiles import{&events};
};

XmlNode RequireProfile(const XmlNode& profile) {
    if (profile.IsNull()) throw py::value_error("a device profile element is needed");
    return profile;
}

}  // namespace

void BindComms(py::module_& m) {
    py::class_<SerialPort>(m, "SerialPort", "A serial port: COM number, device path, description")
        .def(py::init([](std::int16_t number, std::string device, std::string description, bool bluetooth) {
                 return SerialPort{number, std::move(device), std::move(description), bluetooth};
             }),
             py::arg("number"), py::arg("device"), py::arg("description") = "", py::arg("bluetooth") = false)
        .def_readwrite("number", &SerialPort::number)
        .def_readwrite("device", &SerialPort::device)
        .def_readwrite("description", &SerialPort::description)
        .def_readwrite("bluetooth", &SerialPort::bluetooth);

    py::class_<SerialPortSource, PySerialPortSource, std::shared_ptr<SerialPortSource>>(
        m, "SerialPortSource", "Where the ports come from: subclass it with ListPorts() and Probe(port) to inject ports")
        .def(py::init<>())
        .def("ListPorts", &SerialPortSource::ListPorts)
        .def("Probe", &SerialPortSource::Probe, py::arg("port"));

    py::class_<CommsProfileManager> manager(m, "CommsProfileManager",
                                            "The communications map: this PC's connection devices. The map is saved "
                                            "to MapFile when the object ends, unless MapFile is empty.");
    manager.def(py::init<>(), "With this PC's serial ports and per-user settings")
        .def(py::init([](std::shared_ptr<SerialPortSource> ports) {
                 return std::make_unique<CommsProfileManager>(std::move(ports), Platform::DefaultUserStore());
             }),
             py::arg("ports"), py::keep_alive<1, 2>(), "With the ports of a SerialPortSource")
        .def_property("MapFile", &CommsProfileManager::MapFile, &CommsProfileManager::setMapFile)
        .def_property_readonly("ConflictCopy", &CommsProfileManager::ConflictCopy)
        .def("LoadXMLMapFile", &CommsProfileManager::LoadXMLMapFile, py::arg("path"))
        .def(
            "SaveXMLMapFile",
            [](CommsProfileManager& c, const std::string& path) {
                std::string error;
                if (!c.SaveXMLMapFile(path, &error)) throw Error(ErrorNumber::PathFileAccess, "CommsProfileManager:SaveXMLMapFile", error);
            },
            py::arg("path") = std::string(), "Raises meridex.Error when the map cannot be written")
        .def("GetCommPortDescriptions", &CommsProfileManager::GetCommPortDescriptions, py::arg("companion_folder"))
        .def("CleanRS232Direct", &CommsProfileManager::CleanRS232Direct)
        .def("ApplicationProfileCount", &CommsProfileManager::ApplicationProfileCount)
        .def("ApplicationProfile",
             [](const CommsProfileManager& c, const PyIndex& i) { return OrNone(c.ApplicationProfile(ToIndex(i))); },
             py::arg("index"))
        .def_property_readonly("ApplicationProfiles", &CommsProfileManager::ApplicationProfiles)
        .def("AddApplicationProfile", [](CommsProfileManager& c, const XmlNode& p) { c.AddApplicationProfile(RequireProfile(p)); })
        .def("RemoveApplicationProfile",
             [](CommsProfileManager& c, const XmlNode& p) { c.RemoveApplicationProfile(RequireProfile(p)); })
        .def("AddRS232Direct", &CommsProfileManager::AddRS232Direct, py::arg("port"))
        .def("AddRS232PhoneModem", &CommsProfileManager::AddRS232PhoneModem, py::arg("port"))
        .def("AddUDPConnection", &CommsProfileManager::AddUDPConnection)
        .def("AddTCPConnection", &CommsProfileManager::AddTCPConnection)
        .def("AddGPRSProxyConnection", &CommsProfileManager::AddGPRSProxyConnection)
        .def("GetBestMatch", [](CommsProfileManager& c, const XmlNode& p) { return OrNone(c.GetBestMatch(RequireProfile(p))); })
        .def("GetExactMatch", [](CommsProfileManager& c, const XmlNode& p) { return OrNone(c.GetExactMatch(RequireProfile(p))); })
        .def_static("GetDefaultProfile", [](const XmlNode& list) { return OrNone(CommsProfileManager::GetDefaultProfile(list)); })
        .def("MaxCommPort", &CommsProfileManager::MaxCommPort);
    AddSequence(manager, std::mem_fn(&CommsProfileManager::ApplicationProfileCount),
                [](const CommsProfileManager& c, const Index& i) { return c.ApplicationProfile(i); });

    py::class_<PyImport>(m, "ImportCommsProfiles",
                         "Adds a site for every dial-able profile of the schemes below a folder. The events are "
                         "Python callables: on_message(text), on_progress(percent), on_complete(), "
                         "cancel_requested() -> bool.")
        .def(py::init([](py::object onMessage, py::object onProgress, py::object onComplete, py::object cancel) {
                 auto import = std::make_unique<PyImport>();
                 import->events.message = std::move(onMessage);
                 import->events.progress = std::move(onProgress);
                 import->events.complete = std::move(onComplete);
                 import->events.cancel = std::move(cancel);
                 return import;
             }),
             py::arg("on_message") = py::none(), py::arg("on_progress") = py::none(),
             py::arg("on_complete") = py::none(), py::arg("cancel_requested") = py::none())
        .def(
            "ImportSchemes",
            [](PyImport& i, const std::string& root, const SiteGroup& group) {
                i.import.ImportSchemes(root, group);
                i.events.RaiseHeld();
            },
            py::arg("root_path"), py::arg("group"))
        .def_property_readonly("SchemeList", [](const PyImport& i) { return i.import.SchemeList(); })
        .def_property_readonly("SitesAdded", [](const PyImport& i) { return i.import.SitesAdded(); })
        .def_property_readonly("Cancelled", [](const PyImport& i) { return i.import.Cancelled(); });
}

}  // namespace meridex::python
