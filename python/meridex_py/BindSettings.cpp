#include "Bind.h"

#include <functional>

#include <meridex/settings/Settings.h>
#include <meridex/settings/V4StandardProfiles.h>

namespace meridex::python {

void BindSettings(py::module_& m) {
    py::class_<Feature>(m, "Feature", "One feature switch of a profile: key, description, availability")
        .def(py::init<>(), "A new feature, not yet in a profile")
        .def_property(
            "Key", &Feature::Key, [](const Feature& f, std::string_view key) { f.setKey(key); }, "The feature's key")
        .def_property(
            "Description", &Feature::Description,
            [](const Feature& f, std::string_view text) { f.setDescription(text); }, "What the feature allows")
        .def_property(
            "Available", &Feature::Available, [](const Feature& f, bool value) { f.setAvailable(value); },
            "True when the profile allows the feature")
        .def_property_readonly("Element", &Feature::XMLNode, "The feature's XML element")
        .def("Clone", &Feature::Clone, "A detached copy of the feature")
        .def("__repr__", [](const Feature& f) {
            return "<meridex.Feature " + f.Key() + (f.Available() ? " available>" : " not available>");
        }, "The key and availability in angle brackets");

    py::class_<Profile> profile(m, "Profile", "A user profile: its key and its features, by 1-based number or by key");
    profile.def(py::init<>(), "A new profile, not yet in the settings")
        .def_property(
            "Key", &Profile::Key, [](const Profile& p, std::string_view key) { p.setKey(key); }, "The profile's key")
        .def("Count", &Profile::Count, "The number of features")
        .def("Item", [](const Profile& p, const PyIndex& i) { return OrNone(p.Item(ToIndex(i))); }, py::arg("index"),
             "The feature by 1-based number or by key, or None")
        .def("Add", [](const Profile& p, const Feature& f, std::optional<std::string> key) { p.Add(f, key); },
             py::arg("feature"), py::arg("key") = py::none(), "Adds a feature, under key when one is given")
        .def("Remove", [](const Profile& p, const PyIndex& i) { p.Remove(ToIndex(i)); }, py::arg("index"),
             "Removes the feature by 1-based number or by key")
        .def("Clear", &Profile::Clear, "Removes every feature")
        .def("FeatureAvailable", &Profile::FeatureAvailable, py::arg("key"),
             "True when the profile has the feature and it is available")
        .def("FeatureExists", &Profile::FeatureExists, py::arg("key"), "True when the profile has the feature")
        .def_property_readonly("Element", &Profile::XMLNode, "The profile's XML element")
        .def("__repr__", [](const Profile& p) { return "<meridex.Profile " + p.Key() + ">"; },
             "The key in angle brackets");
    AddSequence(profile, std::mem_fn(&Profile::Count), [](const Profile& p, const Index& i) { return p.Item(i); });

    py::class_<Profiles> profiles(m, "Profiles", "The profile collection, by 1-based number or by key");
    profiles.def("Count", &Profiles::Count, "The number of profiles")
        .def("Item", [](const Profiles& p, const PyIndex& i) { return OrNone(p.Item(ToIndex(i))); }, py::arg("index"),
             "The profile by 1-based number or by key, or None")
        .def("Add", [](const Profiles& p, const Profile& profile, std::optional<std::string> key) { p.Add(profile, key); },
             py::arg("profile"), py::arg("key") = py::none(), "Adds a profile, under key when one is given")
        .def("Remove", [](const Profiles& p, const PyIndex& i) { p.Remove(ToIndex(i)); }, py::arg("index"),
             "Removes the profile by 1-based number or by key")
        .def("Clear", &Profiles::Clear, "Removes every profile");
    AddSequence(profiles, std::mem_fn(&Profiles::Count), [](const Profiles& p, const Index& i) { return p.Item(i); });

    py::class_<Settings>(m, "Settings", "The settings document: keys, profiles and the current profile")
        .def(py::init<>(), "Empty settings")
        .def("LoadSettings", &Settings::LoadSettings, py::arg("path"),
             "True when the file was read; a missing or foreign file gives empty settings")
        .def("SaveSettings", &Settings::SaveSettings, py::arg("path") = std::string(),
             "Writes the settings atomically (to the loaded file when path is empty); True when written")
        .def_property_readonly("SettingsFile", &Settings::SettingsFile, "The file loaded or last saved")
        .def_property_readonly("ConflictCopy", &Settings::ConflictCopy,
                               "The conflict copy the last save made of another person's version (\"\" when it made none)")
        .def("GetString", [](const Settings& s, std::string_view key, std::string_view def) { return s.GetString(key, def); },
             py::arg("key"), py::arg("default") = "", "The text stored under key, or default when there is none")
        .def("SetString",
             [](Settings& s, std::string_view key, std::string_view value, bool saveNull) { s.SetString(key, value, saveNull); },
             py::arg("key"), py::arg("value"), py::arg("save_null") = false,
             "Stores text under key; without save_null \"\" and \"0\" remove the key")
        .def("GetBoolean", &Settings::GetBoolean, py::arg("key"), py::arg("default") = false,
             "The boolean stored under key, or default when there is none")
        .def("SetBoolean", &Settings::SetBoolean, py::arg("key"), py::arg("value"), py::arg("save_null") = false,
             "Stores \"-1\" or \"0\" under key; without save_null False removes the key")
        .def_property_readonly("Profiles", &Settings::Profiles, "The user profiles")
        .def_property(
            "CurrentProfile", [](const Settings& s) { return OrNone(s.CurrentProfile()); }, &Settings::setCurrentProfile,
            "The profile in use (None when the settings name none); setting it stores its key")
        .def_property_readonly("Root", &Settings::Root, "The document's root element")
        .def_static("IsKey", &Settings::IsKey, py::arg("key"), "True when the text can name a setting: one valid element name, not PROFILES");

    py::class_<V4StandardProfiles>(m, "V4StandardProfiles", "The built-in profiles and the feature catalogue")
        .def_static("GetDefaultAdministratorProfile", &V4StandardProfiles::GetDefaultAdministratorProfile,
                    "The administrator profile: every feature available")
        .def_static("GetDefaultProfile", &V4StandardProfiles::GetDefaultProfile, "DEFAULT: every feature but the scheme editor's advanced tools")
        .def_static("GetDefaultLockdownProfile", &V4StandardProfiles::GetDefaultLockdownProfile,
                    "LOCKDOWN: no editing, configuration, firmware, test-mode or scheme-file commands")
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
