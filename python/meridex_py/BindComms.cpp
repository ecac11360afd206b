#include <functional>

#include "Bind.h"
#include "Callbacks.h"

#include <meridex/addressbook/SiteGroup.h>
#include <meridex/comms/CommsProfileManager.h>
#include <meridex/comms/ImportCommsProfiles.h>
#include <meridex/comms/PortSnapshot.h>
#include <meridex/comms/PortsFile.h>
#include <meridex/comms/ProfileXml.h>
#include <meridex/comms/XmlSchemeFile.h>
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
    Handler<void(const std::string&)> message;
    Handler<void(int)> progress;
    Handler<void()> complete;
    Handler<bool()> cancel;
    void Message(const std::string& text) override { Call(message, text); }
    void Progress(std::int16_t percent) override { Call(progress, int{percent}); }
    void Complete() override { Call(complete); }
    bool CancelRequested() override { return Call(cancel) || Failed(); }  // a failing callback ends the import
};

// ImportCommsProfiles with its events as Python callables.
struct PyImport {
    PyImportEvents events;
    ImportCommsProfiles import{&events};
};

// A snapshot with the source it asks, kept alive by the Python object.
struct PySnapshot {
    std::shared_ptr<SerialPortSource> source;
    PortSnapshot snapshot{*source};
};

XmlNode RequireProfile(const XmlNode& profile) {
    if (profile.IsNull()) throw py::value_error("a device profile element is needed");
    return profile;
}

// A failed save as the library's error, naming the file.
void SaveOrRaise(bool saved, const char* source, const std::string& error) {
    if (!saved) throw Error(ErrorNumber::PathFileAccess, source, error);
}

void BindSchemes(py::module_& m) {
    py::class_<XmlSchemeFile>(m, "XmlSchemeFile",
                              "A scheme file of the open format: root SCHEME, an optional NAME and COMMSPROFILES "
                              "with the scheme's PROFILE elements")
        .def(py::init<>(), "No scheme open yet")
        .def("Open", &XmlSchemeFile::Open, py::arg("path"),
             "Reads the scheme at a full path; False (and no scheme open) when it cannot be read")
        .def_property_readonly("SchemeText", &XmlSchemeFile::SchemeText, "The full path of the open scheme")
        .def_property_readonly("CommsProfiles", [](const XmlSchemeFile& s) { return OrNone(s.CommsProfiles()); },
                               "The COMMSPROFILES element holding the PROFILE elements, or None when none is open")
        .def_property_readonly("Name", &XmlSchemeFile::Name, "The scheme's NAME text (\"\" when it has none)")
        .def(
            "Save",
            [](const XmlSchemeFile& s) {
                std::string error;
                SaveOrRaise(s.Save(&error), "XmlSchemeFile:Save", error);
            },
            "Writes the scheme back to its file atomically; raises meridex.Error when it cannot be written")
        .def(
            "SaveAs",
            [](const XmlSchemeFile& s, const std::string& path) {
                std::string error;
                SaveOrRaise(s.SaveAs(path, &error), "XmlSchemeFile:SaveAs", error);
            },
            py::arg("path"), "Writes the scheme to another file atomically; raises meridex.Error when it cannot")
        .def("__repr__", [](const XmlSchemeFile& s) { return "<meridex.XmlSchemeFile " + s.SchemeText() + ">"; },
             "The path in angle brackets");
}

void BindPorts(py::module_& m) {
    py::class_<SerialPort>(m, "SerialPort", "A serial port: COM number, device path, description")
        .def(py::init([](std::int16_t number, std::string device, std::string description, bool bluetooth) {
                 return SerialPort{number, std::move(device), std::move(description), bluetooth};
             }),
             py::arg("number"), py::arg("device"), py::arg("description") = "", py::arg("bluetooth") = false,
             "A port under its COM number")
        .def_readwrite("number", &SerialPort::number, "The COM number")
        .def_readwrite("device", &SerialPort::device, "The path that is opened")
        .def_readwrite("description", &SerialPort::description, "The friendly name shown to the user")
        .def_readwrite("bluetooth", &SerialPort::bluetooth, "True for a Bluetooth modem link, present without probing")
        .def("__repr__", [](const SerialPort& p) { return "<meridex.SerialPort COM" + std::to_string(p.number) + ">"; },
             "The COM number in angle brackets");

    py::class_<SerialPortSource, PySerialPortSource, std::shared_ptr<SerialPortSource>>(
        m, "SerialPortSource", "Where the ports come from: subclass it with ListPorts() and Probe(port) to inject ports")
        .def(py::init<>(), "A source whose ListPorts and Probe a subclass gives")
        .def("ListPorts", &SerialPortSource::ListPorts, "Every port that has a COM number, ascending")
        .def("Probe", &SerialPortSource::Probe, py::arg("port"), "True when a listed port is present");

    py::class_<PySnapshot>(m, "PortSnapshot",
                           "The serial ports as one operation sees them: listed once, each port probed at most once")
        .def(py::init([](std::optional<std::shared_ptr<SerialPortSource>> source) {
                 auto ports = source && *source ? *source : Platform::DefaultSerialPortSource(Platform::DefaultUserStore());
                 return std::make_unique<PySnapshot>(PySnapshot{std::move(ports)});
             }),
             py::arg("source") = py::none(), "A snapshot of a port source (this PC's ports when None)")
        .def("Ports", [](PySnapshot& s) { return s.snapshot.Ports(); }, "The listed ports in ascending number")
        .def(
            "Find",
            [](PySnapshot& s, std::int16_t number) -> std::optional<SerialPort> {
                const SerialPort* port = s.snapshot.Find(number);
                if (!port) return std::nullopt;
                return *port;
            },
            py::arg("number"), "The listed port with that COM number, or None")
        .def("IsBluetoothModemPort", [](PySnapshot& s, std::int16_t n) { return s.snapshot.IsBluetoothModemPort(n); },
             py::arg("number"), "True for a listed Bluetooth modem link")
        .def("IsPresent", [](PySnapshot& s, std::int16_t n) { return s.snapshot.IsPresent(n); }, py::arg("number"),
             "True when the port is listed and present")
        .def("PresentPorts", [](PySnapshot& s, std::int16_t highest) { return s.snapshot.PresentPorts(highest); },
             py::arg("highest"), "The COM numbers 1..highest of the present ports, ascending");

    py::class_<Namespace<struct PlatformTag>> platform(m, "Platform", "What the library asks of the operating system");
    platform.def_static("DefaultSerialPortSource", [] { return Platform::DefaultSerialPortSource(Platform::DefaultUserStore()); },
                 "This PC's serial ports, numbered as the current user's settings pin them");
    platform.def_static("CompanionProgramName", &Platform::CompanionProgramName,
                 "The file name of the companion program that writes ports.txt");
    platform.def_static("LibraryFolder", &Platform::LibraryFolder, "The folder of the file holding the library");

    py::class_<Namespace<struct PortsFileTag>>(m, "PortsFile", "Where the port description file ports.txt is kept")
        .def_static("Folder", &PortsFile::Folder, py::arg("companion_folder"),
                  "The folder for ports.txt: the companion's own when writable, else a per-user folder (created)");

    py::class_<Namespace<struct ProfileXmlTag>> profileXml(m, "ProfileXml",
                                                           "Field access on device profiles without side effects");
    profileXml.def_static("HasChild", &ProfileXml::HasChild, py::arg("profile"), py::arg("name"),
                   "True when the profile has a child element of that name");
    profileXml.def_static("ChildText", &ProfileXml::ChildText, py::arg("profile"), py::arg("name"),
                   "The child's text, \"\" when there is no such child");
    profileXml.def_static("SetChild", &ProfileXml::SetChild, py::arg("profile"), py::arg("name"), py::arg("text"),
                   "Sets the child's text, appending the child when it is missing");
    profileXml.def_static("PortNumber", &ProfileXml::PortNumber, py::arg("profile"),
                   "COMMPORT as a number (0 when missing); None when out of range");
}

}  // namespace

void BindComms(py::module_& m) {
    BindPorts(m);
    BindSchemes(m);

    py::class_<CommsProfileManager> manager(m, "CommsProfileManager",
                                            "The communications map: this PC's connection devices. The map is saved "
                                            "to MapFile when the object ends, unless MapFile is empty.");
    manager.def(py::init<>(), "With this PC's serial ports and per-user settings")
        .def(py::init([](std::shared_ptr<SerialPortSource> ports) {
                 return std::make_unique<CommsProfileManager>(std::move(ports), Platform::DefaultUserStore());
             }),
             py::arg("ports"), py::keep_alive<1, 2>(), "With the ports of a SerialPortSource")
        .def_property("MapFile", &CommsProfileManager::MapFile, &CommsProfileManager::setMapFile,
                      "The file the map was loaded from and is saved to when the object ends (\"\": not saved)")
        .def_property_readonly("ConflictCopy", &CommsProfileManager::ConflictCopy,
                               "The conflict copy the last save made of another person's version (\"\" when it made none)")
        .def("LoadXMLMapFile", &CommsProfileManager::LoadXMLMapFile, py::arg("path"),
             "Loads the map; a missing or unreadable file gives the default map. True when the file was read")
        .def(
            "SaveXMLMapFile",
            [](CommsProfileManager& c, const std::string& path) {
                std::string error;
                SaveOrRaise(c.SaveXMLMapFile(path, &error), "CommsProfileManager:SaveXMLMapFile", error);
            },
            py::arg("path") = std::string(), "Writes the map atomically; raises meridex.Error when it cannot be written")
        .def("GetCommPortDescriptions", &CommsProfileManager::GetCommPortDescriptions, py::arg("companion_folder"),
             "Names the direct profiles after their ports, from the companion program's ports.txt")
        .def("CleanRS232Direct", &CommsProfileManager::CleanRS232Direct,
             "Removes direct profiles whose port has gone and adds one for each new port")
        .def("ApplicationProfileCount", &CommsProfileManager::ApplicationProfileCount, "The number of device profiles")
        .def("ApplicationProfile",
             [](const CommsProfileManager& c, const PyIndex& i) { return OrNone(c.ApplicationProfile(ToIndex(i))); },
             py::arg("index"), "A device profile by 1-based number or by KEY, or None")
        .def_property_readonly("ApplicationProfiles", &CommsProfileManager::ApplicationProfiles,
                               "The element whose PROFILE children are the device profiles")
        .def("AddApplicationProfile",
             [](CommsProfileManager& c, const XmlNode& p) { c.AddApplicationProfile(RequireProfile(p)); },
             py::arg("profile"), "Adds a device profile under a fresh KEY")
        .def("RemoveApplicationProfile",
             [](CommsProfileManager& c, const XmlNode& p) { c.RemoveApplicationProfile(RequireProfile(p)); },
             py::arg("profile"), "Removes a device profile of the map")
        .def("AddRS232Direct", &CommsProfileManager::AddRS232Direct, py::arg("port"),
             "Appends a direct cable profile on that COM port with its defaults")
        .def("AddRS232PhoneModem", &CommsProfileManager::AddRS232PhoneModem, py::arg("port"),
             "Appends a phone modem profile on that COM port with its defaults")
        .def("AddUDPConnection", &CommsProfileManager::AddUDPConnection, "Appends a UDP profile with its defaults")
        .def("AddTCPConnection", &CommsProfileManager::AddTCPConnection, "Appends a TCP/IP profile with its defaults")
        .def("AddGPRSProxyConnection", &CommsProfileManager::AddGPRSProxyConnection,
             "Appends a GPRS proxy profile with its defaults")
        .def("GetBestMatch",
             [](CommsProfileManager& c, const XmlNode& p) { return OrNone(c.GetBestMatch(RequireProfile(p))); },
             py::arg("profile"), "This map's counterpart of a foreign profile, as a detached copy, or None")
        .def("GetExactMatch",
             [](CommsProfileManager& c, const XmlNode& p) { return OrNone(c.GetExactMatch(RequireProfile(p))); },
             py::arg("profile"), "This map's profile matching a foreign one exactly, or None; meridex.Error for a GPRS proxy the map lacks")
        .def_static(
            "GetDefaultProfile", [](const XmlNode& list) { return OrNone(CommsProfileManager::GetDefaultProfile(list)); },
            py::arg("profiles"), "The first PROFILE child whose DEFAULT is a non-zero number, or None")
        .def(
            "MapSchemeCommsProfiles",
            [](CommsProfileManager& c, XmlSchemeFile& scheme) { c.MapSchemeCommsProfiles(scheme); }, py::arg("scheme"),
            "Adapts an open scheme's profiles to this PC's map, in place (save the scheme to keep them)")
        .def(
            "MapSchemeCommsProfiles",
            [](CommsProfileManager& c, const XmlNode& profiles, std::string_view schemeText) {
                c.MapSchemeCommsProfiles(profiles, schemeText);
            },
            py::arg("profiles"), py::arg("scheme_text"),
            "Adapts a profile list (an element with PROFILE children) to this PC's map, in place; "
            "scheme_text names its owner")
        .def("MaxCommPort", &CommsProfileManager::MaxCommPort, "The highest COM number looked at");
    AddSequence(manager, std::mem_fn(&CommsProfileManager::ApplicationProfileCount),
                [](const CommsProfileManager& c, const Index& i) { return c.ApplicationProfile(i); });

    py::class_<PyImport>(m, "ImportCommsProfiles",
                         "Adds a site for every dial-able profile of the schemes below a folder. The events are "
                         "Python callables: on_message(text), on_progress(percent), on_complete(), "
                         "cancel_requested() -> bool.")
        .def(py::init([](Handler<void(const std::string&)> onMessage, Handler<void(int)> onProgress,
                         Handler<void()> onComplete, Handler<bool()> cancel) {
                 auto import = std::make_unique<PyImport>();
                 import->events.message = std::move(onMessage);
                 import->events.progress = std::move(onProgress);
                 import->events.complete = std::move(onComplete);
                 import->events.cancel = std::move(cancel);
                 return import;
             }),
             py::arg("on_message") = py::none(), py::arg("on_progress") = py::none(),
             py::arg("on_complete") = py::none(), py::arg("cancel_requested") = py::none(),
             "An import reporting to the given callables (each may be None)")
        .def(
            "ImportSchemes",
            [](PyImport& i, const std::string& root, const SiteGroup& group) {
                i.import.ImportSchemes(root, group);
                i.events.RaiseHeld();
            },
            py::arg("root_path"), py::arg("group"),
            "Adds the sites of every scheme below root_path to group; an exception a callable raised comes out here")
        .def_property_readonly("SchemeList", [](const PyImport& i) { return i.import.SchemeList(); },
                               "The scheme files the last run found, in discovery order")
        .def_property_readonly("SitesAdded", [](const PyImport& i) { return i.import.SitesAdded(); },
                               "The number of sites the last run added")
        .def_property_readonly("Cancelled", [](const PyImport& i) { return i.import.Cancelled(); },
                               "True when the last run was cancelled");
}

}  // namespace meridex::python
