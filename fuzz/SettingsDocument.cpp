// The settings loader: any file gives settings or empty settings, and what a
// save would write always loads again.
#include <meridex/frame/Text.h>
#include <meridex/frame/XmlDocument.h>
#include <meridex/settings/Settings.h>

#include "FuzzSupport.h"

using namespace meridex;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Settings settings;
    settings.LoadSettings(fuzz::InputFile(data, size));
    (void)settings.GetString("LANG", "en");
    (void)settings.GetBoolean("AUTO", false);
    const Profile current = settings.CurrentProfile();
    (void)current.FeatureAvailable("V4_UNLOAD_DATA");
    for (int i = 1; i <= settings.Profiles().Count() && i <= 8; ++i) (void)settings.Profiles().Item(i).Key();
    const std::string saved = Text::XmlWithCharacterReferences(settings.Root().Xml());
    MERIDEX_FUZZ_CHECK(XmlDocument::Parse(saved));
    return 0;
}
