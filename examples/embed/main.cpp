// A host's first minutes with Meridex: load the settings, ask which commands the
// current profile allows, open the address book and find a site by its path.
//
//   embed SETTINGS.xml BOOK.xml
//
// The address book is created with one site when the file does not exist.
#include <cstdio>

#include <meridex/meridex.h>

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: embed SETTINGS.xml BOOK.xml\n");
        return 2;
    }
    std::printf("Meridex %s (headers %s)\n", meridex::VersionText(), MERIDEX_VERSION_STRING);

    meridex::Settings settings;
    if (!settings.LoadSettings(argv[1])) std::printf("no settings file: empty settings\n");
    const meridex::Profile profile = settings.CurrentProfile();
    std::printf("current profile: %s\n", profile.IsNull() ? "(none)" : profile.Key().c_str());
    for (const char* command : {"V4_UNLOAD_DATA", "V4_SCHEME_EDITOR", "V4_COMMS_MAP"})
        std::printf("  %-18s %s\n", command, profile.FeatureAvailable(command) ? "shown" : "hidden");

    meridex::AddressBook book;
    if (!book.LoadAddressBook(argv[2])) {
        meridex::SiteGroup north;
        north.setName("North");
        book.Sites().AddGroup(north);
        meridex::Site site;
        site.setName("Hill Creek");
        site.SetParameter("TYPE", "IP");
        site.SetParameter("ADDRESS", "192.0.2.9");
        north.AddSite(site);
        try {
            book.SaveAddressBook(argv[2]);
        } catch (const meridex::Error& e) {
            std::fprintf(stderr, "cannot save %s: %s\n", argv[2], e.what());
            return 1;
        }
    }
    const meridex::Site site = book.FindSite("\\North\\Hill Creek");
    if (site.IsNull()) {
        std::printf("no site at \\North\\Hill Creek\n");
        return 1;
    }
    std::printf("site %s at %s, %d parameter(s)\n", site.Name().c_str(), site.Path().c_str(),
                static_cast<int>(site.ParameterCount()));
    return 0;
}
