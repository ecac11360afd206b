// The address book loader: any file gives a book or an empty one; its sites are
// found by their own paths; what a save would write loads again.
#include <meridex/addressbook/AddressBook.h>
#include <meridex/frame/Error.h>
#include <meridex/frame/XmlDocument.h>

#include "FuzzSupport.h"

using namespace meridex;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    AddressBook book;
    book.LoadAddressBook(fuzz::InputFile(data, size));
    const SiteGroup root = book.Sites();
    int visited = 0;
    for (int g = 1; g <= root.GroupCount() && visited < 64; ++g) {
        const SiteGroup group = root.Group(g);
        for (int s = 1; s <= group.SiteCount() && visited < 64; ++s, ++visited) {
            const Site site = group.Site(s);
            try {
                (void)book.FindSite(site.Path());
            } catch (const Error&) {
                // a key with a backslash cannot be reached by path
            }
        }
        (void)book.FindGroup(group.Path());
    }
    MERIDEX_FUZZ_CHECK(XmlDocument::Parse(root.XMLNode().OwnerDocument().Serialize()) || root.XMLNode().IsNull());
    return 0;
}
