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
    site.def(py::init<>())
        .def_property("Name", &Site::Name, [](const Site& s, std::string_view v) { s.setName(v); })
        .def_property("Key", &Site::Key, [](const Site& s, std::string_view v) { s.setKey(v); })
        .def_property_readonly("Path", &Site::Path)
        .def_property_readonly("Profile", &Site::Profile, "The site's PROFILE element")
        .def_property_readonly("Element", &Site::XMLNode)
        .def("ParameterCount", &Site::ParameterCount)
        .def("Parameter", [](const Site& s, const PyIndex& i) { return OrNone(s.Parameter(ToIndex(i))); }, py::arg("index"))
        .def("SetParameter", &Site::SetParameter, py::arg("name"), py::arg("value"))
        .def("Remove", [](const Site& s, const PyIndex& i) { return s.Remove(ToIndex(i)); }, py::arg("index"))
        .def("__repr__", [](const Site& s) { return "<meridex.Site " + s.Path() + ">"; });
    AddSequence(site, std::mem_fn(&Site::ParameterCount), [](const Site& s, const Index& i) { return s.Parameter(i); });

    py::class_<SiteList> sites(m, "SiteList", "The sites of a group, by 1-based number or by key");
    AddSequence(sites, [](const SiteList& l) { return l.group.SiteCount(); },
                [](const SiteList& l, const Index& i) { return l.group.Site(i); });
    py::class_<GroupList> groups(m, "GroupList", "The groups of a group, by 1-based number or by key");
    AddSequence(groups, [](const GroupList& l) { return l.group.GroupCount(); },
                [](const GroupList& l, const Index& i) { return l.group.Group(i); });

    py::class_<SiteGroup>(m, "SiteGroup", "A group of sites and groups")
        .def(py::init<>())
        .def_property("Name", &SiteGroup::Name, [](const SiteGroup& g, std::string_view v) { g.setName(v); })
        .def_property("Key", &SiteGroup::Key, [](const SiteGroup& g, std::string_view v) { g.setKey(v); })
        .def_property_readonly("Path", &SiteGroup::Path)
        .def_property_readonly("Sites", [](const SiteGroup& g) { return SiteList{g}; })
        .def_property_readonly("Groups", [](const SiteGroup& g) { return GroupList{g}; })
        .def_property_readonly("Parent", [](const SiteGroup& g) { return OrNone(g.Parent()); })
        .def_property_readonly("Element", &SiteGroup::XMLNode)
        .def("SiteCount", &SiteGroup::SiteCount)
        .def("GroupCount", &SiteGroup::GroupCount)
        .def("Site", [](const SiteGroup& g, const PyIndex& i) { return OrNone(g.Site(ToIndex(i))); }, py::arg("index"))
        .def("Group", [](const SiteGroup& g, const PyIndex& i) { return OrNone(g.Group(ToIndex(i))); }, py::arg("index"))
        .def("AddSite", &SiteGroup::AddSite, py::arg("site"))
        .def("AddGroup", &SiteGroup::AddGroup, py::arg("group"))
        .def("RemoveSite", [](const SiteGroup& g, const PyIndex& i) { return g.RemoveSite(ToIndex(i)); }, py::arg("index"))
        .def("RemoveGroup", [](const SiteGroup& g, const PyIndex& i) { return g.RemoveGroup(ToIndex(i)); },
             py::arg("index"))
        .def("Clear", &SiteGroup::Clear)
        .def("__repr__", [](const SiteGroup& g) { return "<meridex.SiteGroup " + g.Path() + ">"; });

    py::class_<AddressBook>(m, "AddressBook", "The address book document: field sites in nested groups")
        .def(py::init<>())
        .def("LoadAddressBook", &AddressBook::LoadAddressBook, py::arg("path"))
        .def("SaveAddressBook", &AddressBook::SaveAddressBook, py::arg("path") = std::string(),
             "Raises meridex.Error when the book cannot be written")
        .def("NewAddressBook", &AddressBook::NewAddressBook)
        .def_property_readonly("FilePath", &AddressBook::FilePath)
        .def_property_readonly("ConflictCopy", &AddressBook::ConflictCopy)
        .def_property_readonly("Sites", &AddressBook::Sites, "The top group")
        .def("FindSite", [](const AddressBook& b, std::string_view path) { return OrNone(b.FindSite(path)); },
             py::arg("path"), "The site at a path such as \\North\\HILL; None when the group has no such site")
        .def("FindGroup", [](const AddressBook& b, std::string_view path) { return OrNone(b.FindGroup(path)); },
             py::arg("path"))
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
        });
}

}  // namespace meridex::python
