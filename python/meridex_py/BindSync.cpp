#include "Bind.h"
#include "Callbacks.h"

#include <meridex/sync/SyncSchemes.h>

namespace meridex::python {
namespace {

class PySyncEvents : public SyncEvents, public Callbacks {
public:
    py::object foundFiles = py::none(), copyFiles = py::none(), copyFilesError = py::none();
    void FoundFiles(const std::string& file) override { Call(foundFiles, file); }
    void CopyFiles(const std::string& source, const std::string& destination, std::int16_t progress) override {
        Call(copyFiles, source, destination, progress);
    }
    void CopyFilesError(const std::string& source, const std::string& destination, const std::string& text) override {
        Call(copyFilesError, source, destination, text);
    }
};

// SyncSchemes with its events as Python callables.
struct PySync {
    PySyncEvents events;
    SyncSchemes sync;
    PySync() { sync.setEvents(&events); }
};

// A collection of the owner's lists, kept alive by the Python SyncSchemes.
struct ItemList {
    SchemeFileCollection* list;
};

double Seconds(const std::timespec& t) { return static_cast<double>(t.tv_sec) + t.tv_nsec / 1e9; }

py::object FileOrNone(const FileInfo& file) { return file.IsNull() ? py::none() : py::cast(file); }

}  // namespace

void BindSync(py::module_& m) {
    py::enum_<SchemeSyncOptions>(m, "SchemeSyncOptions")
        .value("syncIgnore", syncIgnore)
        .value("syncUpdate", syncUpdate)
        .value("syncRevert", syncRevert)
        .export_values();

    py::class_<FileInfo>(m, "FileInfo", "A file as scanned: name, path, size and times (seconds since 1970)")
        .def_property_readonly("Name", &FileInfo::Name)
        .def_property_readonly("Path", &FileInfo::Path)
        .def_property_readonly("ParentFolder", &FileInfo::ParentFolder)
        .def_property_readonly("Size", &FileInfo::Size)
        .def_property_readonly("Modified", [](const FileInfo& f) { return Seconds(f.Modified()); });

    py::class_<SchemeFileItem>(m, "SchemeFileItem", "One scheme found by a comparison")
        .def_property_readonly("Key", &SchemeFileItem::Key)
        .def_property_readonly("RelativePath", &SchemeFileItem::RelativePath)
        .def_property_readonly("File", [](const SchemeFileItem& i) { return FileOrNone(i.File()); })
        .def_property_readonly("OtherFile", [](const SchemeFileItem& i) { return FileOrNone(i.OtherFile()); })
        .def_property("SyncOptions", &SchemeFileItem::SyncOptions, &SchemeFileItem::setSyncOptions)
        .def_property_readonly("ErrDescription", &SchemeFileItem::ErrDescription)
        .def("__repr__", [](const SchemeFileItem& i) { return "<meridex.SchemeFileItem " + i.RelativePath() + ">"; });

    py::class_<ItemList> items(m, "SchemeFileCollection", "Schemes by 1-based number or by key");
    items.def("__contains__", [](const ItemList& l, const std::string& key) { return l.list->Exists(key); });
    AddSequence(items, [](const ItemList& l) { return l.list->Count(); },
                [](const ItemList& l, const Index& i) { return l.list->Item(i); });

    auto list = [](SchemeFileCollection& (SyncSchemes::*member)() noexcept) {
        return py::cpp_function([member](PySync& s) { return ItemList{&(s.sync.*member)()}; }, py::keep_alive<0, 1>());
    };
    py::class_<PySync>(m, "SyncSchemes",
                       "Compares a remote and a local scheme folder and copies scheme families. Events are Python "
                       "callables: found_files(path), copy_files(source, destination, percent), "
                       "copy_files_error(source, destination, text).")
        .def(py::init([](py::object found, py::object copy, py::object copyError) {
                 auto sync = std::make_unique<PySync>();
                 sync->events.foundFiles = std::move(found);
                 sync->events.copyFiles = std::move(copy);
                 sync->events.copyFilesError = std::move(copyError);
                 return sync;
             }),
             py::arg("found_files") = py::none(), py::arg("copy_files") = py::none(),
             py::arg("copy_files_error") = py::none())
        .def(
            "GetSchemeList",
            [](PySync& s, const std::string& remote, const std::string& local) {
                s.sync.GetSchemeList(remote, local);
                s.events.RaiseHeld();
            },
            py::arg("remote_path"), py::arg("local_path"))
        .def("SyncSchemes",
             [](PySync& s) {
                 s.sync.Sync();
                 s.events.RaiseHeld();
             })
        .def("CancelSearch", [](PySync& s) { s.sync.CancelSearch(); })
        .def_property_readonly("NewerLocalFiles", list(&SyncSchemes::NewerLocalFiles))
        .def_property_readonly("NewerRemoteFiles", list(&SyncSchemes::NewerRemoteFiles))
        .def_property_readonly("SyncedFiles", list(&SyncSchemes::SyncedFiles))
        .def_property_readonly("Errors", list(&SyncSchemes::Errors));
}

}  // namespace meridex::python
