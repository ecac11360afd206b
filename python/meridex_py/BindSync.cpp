#include "Bind.h"
#include "Callbacks.h"

#include <meridex/sync/SyncSchemes.h>

namespace meridex::python {
namespace {

class PySyncEvents : public SyncEvents, public Callbacks {
public:
    Handler<void(const std::string&)> foundFiles;
    Handler<void(const std::string&, const std::string&, int)> copyFiles;
    Handler<void(const std::string&, const std::string&, const std::string&)> copyFilesError;
    void FoundFiles(const std::string& file) override { Call(foundFiles, file); }
    void CopyFiles(const std::string& source, const std::string& destination, std::int16_t progress) override {
        Call(copyFiles, source, destination, int{progress});
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

std::optional<FileInfo> FileOrNone(const FileInfo& file) {
    if (file.IsNull()) return std::nullopt;
    return file;
}

}  // namespace

void BindSync(py::module_& m) {
    py::enum_<SchemeSyncOptions>(m, "SchemeSyncOptions", "What a synchronisation does with one scheme")
        .value("syncIgnore", syncIgnore, "Leave it")
        .value("syncUpdate", syncUpdate, "Copy the newer copy over the older")
        .value("syncRevert", syncRevert, "Copy the older copy back over the newer")
        .export_values();

    py::class_<FileInfo>(m, "FileInfo", "A file as scanned: name, path, size and times (seconds since 1970)")
        .def_property_readonly("Name", &FileInfo::Name, "The file's name")
        .def_property_readonly("Path", &FileInfo::Path, "The file's full path")
        .def_property_readonly("ParentFolder", &FileInfo::ParentFolder, "The folder holding the file")
        .def_property_readonly("Size", &FileInfo::Size, "The size in bytes")
        .def_property_readonly("Modified", [](const FileInfo& f) { return Seconds(f.Modified()); },
                               "The last change, in seconds since 1970");

    py::class_<SchemeFileItem>(m, "SchemeFileItem", "One scheme found by a comparison")
        .def_property_readonly("Key", &SchemeFileItem::Key, "The scheme's key in its collection")
        .def_property_readonly("RelativePath", &SchemeFileItem::RelativePath, "The scheme's path below either root")
        .def_property_readonly("File", [](const SchemeFileItem& i) { return FileOrNone(i.File()); },
                               "The scheme on its own side, or None")
        .def_property_readonly("OtherFile", [](const SchemeFileItem& i) { return FileOrNone(i.OtherFile()); },
                               "The scheme on the other side, or None")
        .def_property("SyncOptions", &SchemeFileItem::SyncOptions, &SchemeFileItem::setSyncOptions,
                      "What the next SyncSchemes() does with this scheme")
        .def_property_readonly("ErrDescription", &SchemeFileItem::ErrDescription, "Why the scheme failed, if it did")
        .def("__repr__", [](const SchemeFileItem& i) { return "<meridex.SchemeFileItem " + i.RelativePath() + ">"; },
             "The relative path in angle brackets");

    py::class_<ItemList> items(m, "SchemeFileCollection", "Schemes by 1-based number or by key");
    items.def("__contains__", [](const ItemList& l, const std::string& key) { return l.list->Exists(key); },
              py::arg("key"), "True when a scheme of that key is in the collection");
    AddSequence(items, [](const ItemList& l) { return l.list->Count(); },
                [](const ItemList& l, const Index& i) { return l.list->Item(i); });

    auto list = [](SchemeFileCollection& (SyncSchemes::*member)() noexcept) {
        return py::cpp_function([member](PySync& s) { return ItemList{&(s.sync.*member)()}; }, py::keep_alive<0, 1>());
    };
    py::class_<PySync>(m, "SyncSchemes",
                       "Compares a remote and a local scheme folder and copies scheme families. Events are Python "
                       "callables: found_files(path), copy_files(source, destination, percent), "
                       "copy_files_error(source, destination, text).")
        .def(py::init([](Handler<void(const std::string&)> found,
                         Handler<void(const std::string&, const std::string&, int)> copy,
                         Handler<void(const std::string&, const std::string&, const std::string&)> copyError) {
                 auto sync = std::make_unique<PySync>();
                 sync->events.foundFiles = std::move(found);
                 sync->events.copyFiles = std::move(copy);
                 sync->events.copyFilesError = std::move(copyError);
                 return sync;
             }),
             py::arg("found_files") = py::none(), py::arg("copy_files") = py::none(),
             py::arg("copy_files_error") = py::none(), "A synchronisation reporting to the given callables")
        .def(
            "GetSchemeList",
            [](PySync& s, const std::string& remote, const std::string& local) {
                s.sync.GetSchemeList(remote, local);
                s.events.RaiseHeld();
            },
            py::arg("remote_path"), py::arg("local_path"),
            "Compares the two scheme folders and fills the collections")
        .def("SyncSchemes",
             [](PySync& s) {
                 s.sync.Sync();
                 s.events.RaiseHeld();
             },
             "Copies every scheme family as its SyncOptions say, keeping what a copy replaces as NAME~NNNN.BAK")
        .def("CancelSearch", [](PySync& s) { s.sync.CancelSearch(); }, "Stops a comparison at the next file")
        .def_property_readonly("NewerLocalFiles", list(&SyncSchemes::NewerLocalFiles), "Schemes newer on this PC")
        .def_property_readonly("NewerRemoteFiles", list(&SyncSchemes::NewerRemoteFiles),
                               "Schemes newer in the shared folder")
        .def_property_readonly("SyncedFiles", list(&SyncSchemes::SyncedFiles), "Schemes in step")
        .def_property_readonly("Errors", list(&SyncSchemes::Errors), "Schemes that could not be read or copied");
}

}  // namespace meridex::python
