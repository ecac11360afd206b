import pytest

import meridex

DOCUMENT = (
    "<V4SETTINGS><LANG>en</LANG><CURRENT_PROFILE>Field Crew</CURRENT_PROFILE><PROFILES>"
    "<PROFILE><KEY>Field Crew</KEY><FEATURE><KEY>V4_SCHEME_EDITOR</KEY></FEATURE></PROFILE>"
    "<PROFILE><KEY>ADMINISTRATOR</KEY></PROFILE></PROFILES></V4SETTINGS>"
)


@pytest.fixture
def settings(tmp_path):
    path = tmp_path / "V4Settings.xml"
    path.write_text(DOCUMENT)
    settings = meridex.Settings()
    assert settings.LoadSettings(str(path))
    return settings


def test_profiles_index_iterate_and_miss_the_python_way(settings):
    profiles = settings.Profiles
    assert len(profiles) == 2
    assert [p.Key for p in profiles] == ["Field Crew", "ADMINISTRATOR"]
    assert profiles[2].Key == profiles["administrator"].Key == "ADMINISTRATOR"
    with pytest.raises(IndexError):
        profiles[3]
    with pytest.raises(KeyError):
        profiles["nobody"]
    assert profiles.Item("nobody") is None


def test_the_current_profile_answers_for_its_features(settings):
    crew = settings.CurrentProfile
    assert crew.Key == "Field Crew"
    assert not crew.FeatureAvailable("V4_SCHEME_EDITOR")
    assert crew.FeatureAvailable("V4_UNLOAD_DATA")  # completed from the catalogue on load
    editor = crew["v4_scheme_editor"]
    editor.Available = True
    assert crew.FeatureAvailable("V4_SCHEME_EDITOR")  # two views, one element
    assert len(crew) == len(meridex.V4StandardProfiles.Catalogue())
    assert {f.Key for f in crew} == {key for key, _ in meridex.V4StandardProfiles.Catalogue()}


def test_values_and_profiles_are_saved(settings, tmp_path):
    settings.SetString("LANG", "fr")
    settings.SetBoolean("TABLET_MODE", True)
    settings.CurrentProfile = settings.Profiles["ADMINISTRATOR"]
    copy = str(tmp_path / "copy.xml")
    assert settings.SaveSettings(copy)
    again = meridex.Settings()
    assert again.LoadSettings(copy)
    assert again.GetString("LANG") == "fr" and again.GetBoolean("TABLET_MODE")
    assert again.CurrentProfile.Key == "ADMINISTRATOR"
    assert [child.name for child in again.Root.children][-1] == "PROFILES"
    assert again.GetString("MISSING", "fallback") == "fallback"


def test_standard_profiles_and_a_new_profile():
    lockdown = meridex.V4StandardProfiles.GetDefaultLockdownProfile()
    admin = meridex.V4StandardProfiles.GetDefaultAdministratorProfile()
    assert sum(f.Available for f in lockdown) < sum(f.Available for f in admin)
    profile = meridex.Profile()
    profile.Key = "Hydrologists"
    feature = meridex.Feature()
    feature.Description = "Unload"
    profile.Add(feature, "V4_UNLOAD_DATA")
    assert profile["V4_UNLOAD_DATA"].Description == "Unload"
    assert profile.Element.find("FEATURE/KEY").text == "V4_UNLOAD_DATA"
