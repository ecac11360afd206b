#include "Bind.h"

#include <functional>

#include <meridex/settings/Settings.h>
#include <meridex/settings/V4StandardProfiles.h>

namespace meridex::python {

void BindSettings(py::module_& m) {
    py::class_<Feature>(m, "Feature", "One feature switch of a profile: key, description, availability")
        .def(py::init<>())
        .def_property("Key", &Feature::Key, [](const Feature& f, std::string_view key) { f.setKey(key); })
        .def_property("Description", &Feature::Description,
                      [](const Feature& f, std::string_view text) { f.setDescription(text); })
        .def_property("Available", &Feature::Available, [](const Feature& f, bool value) { f.setAvailable(value); })
        .def_property_readonly("Element", &Feature::XMLNode)
        .def("Clone", &Feature::Clone)
        .def("__repr__", [](const Feature& f) {
            return "<meridex.Feature " + f.Key() + (f.Available() ? " available>" : " not available>");
        });

    py::class_<Profile> profile(m, "Profile", "A user profile: its key and its features, by 1-based number or by key");
    profile.def(py::init<>())
        .def_property("Key", &Profile::Key, [](const Profile& p, std::string_view key) { p.setKey(key); })
        .def("Count", &Profile::Count)
        .def("Item", [](const Profile& p, const PyIndex& i) { return OrNone(p.Item(ToIndex(i))); }, py::arg("index"))
        .def("Add", [](const Profile& p, const Feature& f, std::optional<std::string> key) { p.Add(f, key); },
             py::arg("feature"), py::arg("key") = py::none())
        .def("Remove", [](const Profile& p, const PyIndex& i) { p.Remove(ToIndex(i)); }, py::arg("index"))
        .def("Clear", &Profile::Clear)
        .def("FeatureAvailable", &Profile::FeatureAvailable, py::arg("key"))
        .def("FeatureExists", &Profile::FeatureExists, py::arg("key"))
        .def_property_readonly("Element", &Profile::XMLNode)
        .def("__repr__", [](const Profile& p) { return "<meridex.Profile " + p.Key() + ">"; });
    AddSequence(profile, std::mem_fn(&Profile::Count), [](const Profile& p, const Index& i) { return p.Item(i); });

    py::class_<Profiles> profiles(m, "Profiles", "The profile collection, by 1-based number or by key");
    profiles.def("Count", &Profiles::Count)
        .def("Item", [](const Profiles& p, const PyIndex& i) { return OrNone(p.Item(ToIndex(i))); }, py::arg("index"))
        .def("Add", [](const Profiles& p, const Profile& profile, std::optional<std::string> key) { p.Add(profile, key); },
             py::arg("profile"), py::arg("key") = py::none())
        .def("Remove", [](const Profiles& p, const PyIndex& i) { p.Remove(ToIndex(i)); }, py::arg("index"))
        .def("Clear", &Profiles::Clear);
    AddSequence(profiles, std::mem_fn(&Profiles::Count), [](const Profiles& p, const Index& i) { return p.Item(i); });

    py::class_<Settings>(m, "Settings", "The settings document: keys, profiles and the current profile")
        .def(py::init<>())
        .def("LoadSettings", &Settings::LoadSettings, py::arg("path"),
             "True when the file was read; a missing or foreign file gives empty settings")
        .def("SaveSettings", &Settings::SaveSettings, py::arg("path") = std::string(), "True when written")
        .def_property_readonly("SettingsFile", &Settings::SettingsFile)
        .def_property_readonly("ConflictCopy", &Settings::ConflictCopy)
        .def("GetString", [](const Settings& s, std::string_view key, std::string_view def) { return s.GetString(key, def); },
             py::arg("key"), py::arg("default") = "")
        .def("SetString",
             [](Settings& s, std::string_view key, std::string_view value, bool saveNull) { s.SetString(key, value, saveNull); },
             py::arg("key"), py::arg("value"), py::arg("save_null") = false)
        .def("GetBoolean", &Settings::GetBoolean, py::arg("key"), py::arg("default") = false)
        .def("SetBoolean", &Settings::SetBoolean, py::arg("key"), py::arg("value"), py::arg("save_null") = false)
        .def_property_readonly("Profiles", &Settings::Profiles)
        .def_property(
            "CurrentProfile", [](const Settings& s) { return OrNone(s.CurrentProfile()); }, &Settings::setCurrentProfile)
        .def_property_readonly("Root", &Settings::Root)
        .def_static("IsKey", &Settings::IsKey, py::arg("key"));

    py::class_<V4StandardProfiles>(m, "V4StandardProfiles", "The built-in profiles and the feature catalogue")
        .def_static("GetDefaultAdministratorProfile", &V4StandardProfiles::GetDefaultAdministratorProfile)
        .def_static("GetDefaultProfile", &V4StandardProfiles::GetDefaultProfile)
        .def_static("GetDefaultLockdownProfile", &V4StandardProfiles::GetDefaultLockdownProfile)
        .def_static(
            "Catalogue",
            [] {
                std::vector<std::pair<std::string, std::string>> rows;
                for (const auto& row : V4StandardProfiles::Catalogue())
                    rows.emplace_back(std::string(row.key), std::string(row.description));
                return rows;
            },
            "(key, description) of every feature, in order");
}

}  // namespace meridex::python
