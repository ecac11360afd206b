// The address book's dialogs: the editor on a book file, and the choice of a site to connect to.
#include <cstdio>
#include <string>

#include <meridex/addressbook/AddressBook.h>
#include <meridex/ui/settings/V4Dialogs.h>

#include "DialogCommand.h"

namespace meridex::dialogs {
namespace {

const CommandRegistration addressBook({
    "addressbook", "BOOK.xml [--map MAP.xml] [--schemes DIR]",
    "edit the address book; saved when the editor closes", 1, 5,
    [](const std::vector<std::string>& arguments) {
        std::string map, schemes;
        for (std::size_t i = 1; i < arguments.size(); i += 2) {
            if (i + 1 >= arguments.size() || (arguments[i] != "--map" && arguments[i] != "--schemes")) {
                std::fprintf(stderr, "usage: meridex-dialogs addressbook BOOK.xml [--map MAP.xml] [--schemes DIR]\n");
                return 2;
            }
            (arguments[i] == "--map" ? map : schemes) = arguments[i + 1];
        }
        ui::V4Dialogs().OpenAddressBook(arguments[0], map, schemes);
        return 0;
    }});

const CommandRegistration selectSite({
    "select-site", "BOOK.xml", "choose a site; prints its profile as NAME = value lines, exit 1 when none", 1, 1,
    [](const std::vector<std::string>& arguments) {
        AddressBook book;
        if (!book.LoadAddressBook(arguments[0]))
            std::fprintf(stderr, "%s could not be read: the book is empty\n", arguments[0].c_str());
        const XmlNode profile = ui::V4Dialogs().SelectSiteCommsProfiles(book);
        if (!profile) return 1;
        for (XmlNode child = profile.FirstChildElement(); child; child = child.NextSiblingElement())
            std::printf("%s = %s\n", child.Name().c_str(), child.Text().c_str());
        return 0;
    }});

}  // namespace
}  // namespace meridex::dialogs
