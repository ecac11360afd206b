#include "Bind.h"

#include <functional>

#include <meridex/addressbook/AddressBook.h>

namespace meridex::python {
namespace {

// A group's sites and its groups, each a collection of its own in Python.
struct SiteList {
    SiteGroup group;
};
struct GroupList {
    SiteGroup group;
};

}  // namespace

void BindAddressBook(py::module_& m) {
    py::class_<Site> site(m, "Site", "A field site: name, key, path and its own communications parameters");
    site.def(py::init<>(), "A new site, not yet in a group")
        .def_property(
            "Name", &Site::Name, [](const Site& s, std::string_view v) { s.setName(v); }, "The site's name")
        .def_property(
            "Key", &Site::Key, [](const Site& s, std::string_view v) { s.setKey(v); }, "The site's key within its group")
        .def_property_readonly("Path", &Site::Path, "The site's path of keys (\\North\\HILL)")
        .def_property_readonly("Profile", &Site::Profile, "The site's PROFILE element")
        .def_property_readonly("Element", &Site::XMLNode, "The site's XML element")
        .def("ParameterCount", &Site::ParameterCount, "The number of communications parameters")
        .def("Parameter", [](const Site& s, const PyIndex& i) { return OrNone(s.Parameter(ToIndex(i))); }, py::arg("index"),
             "The parameter element by 1-based number or by name, or None")
        .def("SetParameter", &Site::SetParameter, py::arg("name"), py::arg("value"),
             "Sets a parameter's text, adding the parameter when it is missing")
        .def("Remove", [](const Site& s, const PyIndex& i) { return s.Remove(ToIndex(i)); }, py::arg("index"),
             "Removes a parameter by 1-based number or by name; True when one was removed")
        .def("__repr__", [](const Site& s) { return "<meridex.Site " + s.Path() + ">"; }, "The path in angle brackets");
    AddSequence(site, std::mem_fn(&Site::ParameterCount), [](const Site& s, const Index& i) { return s.Parameter(i); });

    // Declared before their members, so each signature names the Python class.
    py::class_<SiteGroup> group(m, "SiteGroup", "A group of sites and groups");
    py::class_<SiteList> sites(m, "SiteList", "The sites of a group, by 1-based number or by key");
    AddSequence(sites, [](const SiteList& l) { return l.group.SiteCount(); },
                [](const SiteList& l, const Index& i) { return l.group.Site(i); });
    py::class_<GroupList> groups(m, "GroupList", "The groups of a group, by 1-based number or by key");
    AddSequence(groups, [](const GroupList& l) { return l.group.GroupCount(); },
                [](const GroupList& l, const Index& i) { return l.group.Group(i); });

    group.def(py::init<>(), "A new group, not yet in a book")
        .def_property(
            "Name", &SiteGroup::Name, [](const SiteGroup& g, std::string_view v) { g.setName(v); }, "The group's name")
        .def_property(
            "Key", &SiteGroup::Key, [](const SiteGroup& g, std::string_view v) { g.setKey(v); },
            "The group's key within its parent")
        .def_property_readonly("Path", &SiteGroup::Path, "The group's path of keys (\\North)")
        .def_property_readonly("Sites", [](const SiteGroup& g) { return SiteList{g}; }, "The group's own sites")
        .def_property_readonly("Groups", [](const SiteGroup& g) { return GroupList{g}; }, "The group's own groups")
        .def_property_readonly("Parent", [](const SiteGroup& g) { return OrNone(g.Parent()); },
                               "The group holding this one, or None for the top group")
        .def_property_readonly("Element", &SiteGroup::XMLNode, "The group's XML element")
        .def("SiteCount", &SiteGroup::SiteCount, "The number of the group's own sites")
        .def("GroupCount", &SiteGroup::GroupCount, "The number of the group's own groups")
        .def("Site", [](const SiteGroup& g, const PyIndex& i) { return OrNone(g.Site(ToIndex(i))); }, py::arg("index"),
             "A site of the group by 1-based number or by key, or None")
        .def("Group", [](const SiteGroup& g, const PyIndex& i) { return OrNone(g.Group(ToIndex(i))); }, py::arg("index"),
             "A group of the group by 1-based number or by key, or None")
        .def("AddSite", &SiteGroup::AddSite, py::arg("site"), "Adds a site to the group")
        .def("AddGroup", &SiteGroup::AddGroup, py::arg("group"), "Adds a group to the group")
        .def("RemoveSite", [](const SiteGroup& g, const PyIndex& i) { return g.RemoveSite(ToIndex(i)); }, py::arg("index"),
             "Removes a site by 1-based number or by key; True when one was removed")
        .def("RemoveGroup", [](const SiteGroup& g, const PyIndex& i) { return g.RemoveGroup(ToIndex(i)); },
             py::arg("index"), "Removes a group by 1-based number or by key; True when one was removed")
        .def("Clear", &SiteGroup::Clear, "Removes every site and group of the group")
        .def("__repr__", [](const SiteGroup& g) { return "<meridex.SiteGroup " + g.Path() + ">"; },
             "The path in angle brackets");

    py::class_<AddressBook>(m, "AddressBook", "The address book document: field sites in nested groups")
        .def(py::init<>(), "An empty book")
        .def("LoadAddressBook", &AddressBook::LoadAddressBook, py::arg("path"),
             "True when the file was read; a missing or foreign file gives an empty book")
        .def("SaveAddressBook", &AddressBook::SaveAddressBook, py::arg("path") = std::string(),
             "Raises meridex.Error when the book cannot be written")
        .def("NewAddressBook", &AddressBook::NewAddressBook, "Empties the book")
        .def_property_readonly("FilePath", &AddressBook::FilePath, "The file loaded or last saved")
        .def_property_readonly("ConflictCopy", &AddressBook::ConflictCopy,
                               "The conflict copy the last save made of another person's version (\"\" when it made none)")
        .def_property_readonly("Sites", &AddressBook::Sites, "The top group")
        .def("FindSite", [](const AddressBook& b, std::string_view path) { return OrNone(b.FindSite(path)); },
             py::arg("path"), "The site at a path such as \\North\\HILL; None when the group has no such site")
        .def("FindGroup", [](const AddressBook& b, std::string_view path) { return OrNone(b.FindGroup(path)); },
             py::arg("path"), "The group at a path such as \\North, or None")
        .def("__iter__", [](const AddressBook& b) {
            // Every site of the book, depth first in document order.
            py::list sites;
            std::vector<SiteGroup> pending{b.Sites()};
            while (!pending.empty()) {
                const SiteGroup group = pending.back();
                pending.pop_back();
                for (int i = 1; i <= group.SiteCount(); ++i) sites.append(group.Site(Index(i)));
                for (int i = group.GroupCount(); i >= 1; --i) pending.push_back(group.Group(Index(i)));
            }
            return py::iter(sites);
        }, "Every site of the book, depth first");
}

}  // namespace meridex::python
