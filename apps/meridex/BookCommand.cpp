#include <algorithm>
#include <filesystem>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "Commands.h"
#include "Json.h"
#include "ProgressBar.h"
#include <meridex/addressbook/AddressBook.h>
#include <meridex/comms/ImportCommsProfiles.h>
#include <meridex/frame/Error.h>
#include <meridex/frame/FileOps.h>

namespace meridex::cli {

namespace {

// Exit codes of "book" (a failed save reaches main as an Error: 2).
constexpr int kOk = 0;
constexpr int kNotFound = 1;  // a path that leads nowhere, bad input

struct Arguments {
    std::string book;
    std::string path;
    std::string name;
    std::vector<std::string> params;
    bool json = false;
};

std::string Text(const XmlNode& element, const char* child) { return element.SelectSingle(child).Text(); }

bool IsItem(const XmlNode& element) { return element.Name() == "SITE" || element.Name() == "GROUP"; }

XmlNode NextItem(XmlNode element) {
    while (!element.IsNull() && !IsItem(element)) element = element.NextSiblingElement();
    return element;
}

// Loads the book, saying so on stderr when the file was there but unusable.
bool Load(AddressBook& book, const std::string& path) {
    const bool read = book.LoadAddressBook(path);
    if (!read && FileOps::FileExists(path)) {
        std::cerr << "meridex: " << path << " could not be read; the book is empty, and the file is kept as "
                  << path << ".unreadable when the book is saved\n";
    }
    return read;
}

// The tree in document order, without recursion (groups may nest thousands
// deep). visit(element, depth) is called for each site and group.
template <typename Visit, typename Leave>
void Walk(const XmlNode& root, Visit visit, Leave leave) {
    std::vector<XmlNode> pending{NextItem(root.FirstChildElement())};
    while (!pending.empty()) {
        const XmlNode item = pending.back();
        if (item.IsNull()) {
            pending.pop_back();
            leave(pending.size());
            continue;
        }
        pending.back() = NextItem(item.NextSiblingElement());
        const bool group = item.Name() == "GROUP";
        visit(item, pending.size() - 1, group);
        if (group) pending.push_back(NextItem(item.FirstChildElement()));
    }
}

int Show(const Arguments& args) {
    AddressBook book;
    const bool read = Load(book, args.book);
    const XmlNode root = book.Sites().XMLNode();
    long sites = 0;
    long groups = 0;
    if (args.json) {
        std::string out = "{\"file\": " + JsonString(args.book) + ", \"read\": " + (read ? "true" : "false") +
                          ", \"name\": " + JsonString(Text(root, "NAME")) + ", \"items\": [";
        std::vector<bool> first{true};
        Walk(
            root,
            [&](const XmlNode& item, std::size_t, bool group) {
                if (!first.back()) out += ", ";
                first.back() = false;
                out += "{\"type\": " + JsonString(group ? "group" : "site") +
                       ", \"name\": " + JsonString(Text(item, "NAME")) + ", \"key\": " + JsonString(Text(item, "KEY")) +
                       ", \"path\": " + JsonString(Text(item, "PATH"));
                if (group) {
                    out += ", \"items\": [";
                    first.push_back(true);
                } else {
                    out += "}";
                }
            },
            [&](std::size_t depth) {
                out += depth == 0 ? "]" : "]}";
                first.pop_back();
            });
        std::cout << out << "}\n";
        return kOk;
    }
    std::cout << "Address book " << args.book << (read ? "" : " (no file read: empty)") << "\n";
    Walk(
        root,
        [&](const XmlNode& item, std::size_t depth, bool group) {
            (group ? groups : sites)++;
            const std::string path = Text(item, "PATH");
            // Indentation stops growing at 40 levels, so a hostile depth cannot
            // make gigabytes of blanks; deeper items carry their level instead.
            constexpr std::size_t kMaxIndent = 40;
            std::cout << std::string(2 * std::min(depth, kMaxIndent) + 2, ' ');
            if (depth > kMaxIndent) std::cout << "[level " << depth + 1 << "] ";
            std::cout << (group ? "+ " : "- ") << Text(item, "NAME") << "    " << (path.empty() ? "(no path)" : path)
                      << "\n";
        },
        [](std::size_t) {});
    std::cout << groups << " group(s), " << sites << " site(s)\n";
    return kOk;
}

void PrintGroup(const SiteGroup& group) {
    std::cout << "Group " << group.Name() << "\n  key:    " << group.Key() << "\n  path:   " << group.Path()
              << "\n  sites:  " << group.SiteCount() << "\n  groups: " << group.GroupCount() << "\n";
}

void PrintSite(const Site& site) {
    std::cout << "Site " << site.Name() << "\n  key:  " << site.Key() << "\n  path: " << site.Path()
              << "\n  parameters (" << site.ParameterCount() << "):\n";
    for (XmlNode p = site.Profile().FirstChildElement(); !p.IsNull(); p = p.NextSiblingElement()) {
        std::cout << "    " << p.Name() << " = " << p.Text() << "\n";
    }
}

int Find(const Arguments& args) {
    AddressBook book;
    Load(book, args.book);
    // Sites and groups have separate keys, so one path may lead to both.
    Site site = Site::None();
    try {
        site = book.FindSite(args.path);
    } catch (const Error&) {
        // A path that leads to no group: not a site either.
    }
    const SiteGroup group = book.FindGroup(args.path);
    if (!site.IsNull()) PrintSite(site);
    if (!group.IsNull()) PrintGroup(group);
    if (site.IsNull() && group.IsNull()) {
        std::cerr << "meridex: no site or group at the path " << args.path << " in " << args.book << "\n";
        return kNotFound;
    }
    return kOk;
}

// "" and "\" stand for the root, which FindGroup never returns.
SiteGroup GroupAt(const AddressBook& book, const std::string& path) {
    if (path.empty() || path == "\\") return book.Sites();
    return book.FindGroup(path);
}

// The group a path names, or null after telling the user there is none.
SiteGroup RequireGroup(const AddressBook& book, const std::string& path) {
    SiteGroup group = GroupAt(book, path);
    if (group.IsNull()) std::cerr << "meridex: no group at the path " << path << " (use \\ for the top of the book)\n";
    return group;
}

int AddGroup(const Arguments& args) {
    AddressBook book;
    Load(book, args.book);
    const SiteGroup parent = RequireGroup(book, args.path);
    if (parent.IsNull()) return kNotFound;
    SiteGroup group;
    group.setName(args.name);
    parent.AddGroup(group);
    book.SaveAddressBook();
    std::cout << "Added group " << group.Name() << " with key " << group.Key() << " at " << group.Path() << "\n";
    return kOk;
}

int AddSite(const Arguments& args) {
    Site site;
    site.setName(args.name);
    for (const auto& param : args.params) {
        const auto equals = param.find('=');
        if (equals == std::string::npos || !site.SetParameter(param.substr(0, equals), param.substr(equals + 1))) {
            std::cerr << "meridex: --param " << param
                      << ": expected NAME=VALUE with NAME a valid XML element name (such as PHONENUMBER)\n";
            return kNotFound;
        }
    }
    AddressBook book;
    Load(book, args.book);
    const SiteGroup group = RequireGroup(book, args.path);
    if (group.IsNull()) return kNotFound;
    group.AddSite(site);
    book.SaveAddressBook();
    std::cout << "Added site " << site.Name() << " with key " << site.Key() << " at " << site.Path() << "\n";
    return kOk;
}

// Import events shown on a progress bar, or as plain lines off a terminal.
struct ImportProgress : ImportEvents {
    ProgressBar bar;
    int percent = 0;
    void Message(const std::string& msg) override {
        if (bar.OnTerminal()) {
            bar.Update(percent, msg);
        } else {
            bar.Message(msg);
        }
    }
    void Progress(std::int16_t value) override {
        percent = value;
        bar.Update(value, "schemes processed");
    }
    void Complete() override { bar.Finish(); }
};

int Import(const Arguments& args) {
    std::error_code error;
    if (!std::filesystem::is_directory(args.path, error)) {
        std::cerr << "meridex: no scheme folder at " << args.path << "\n";
        return kNotFound;
    }
    AddressBook book;
    Load(book, args.book);
    ImportProgress progress;
    ImportCommsProfiles import(&progress);
    import.ImportSchemes(args.path, book.Sites());
    book.SaveAddressBook();
    std::cout << "Imported " << import.SitesAdded() << " site(s) from " << import.SchemeList().size()
              << " scheme file(s) into " << args.book << "\n";
    return kOk;
}

}  // namespace

void AddBookCommand(CLI::App& app, int& exitCode) {
    auto* book = app.add_subcommand("book", "The address book: sites in nested groups, import from schemes");
    book->require_subcommand(1);
    auto args = std::make_shared<Arguments>();
    auto run = [&exitCode, args](int (*command)(const Arguments&)) {
        return [&exitCode, args, command] { exitCode = command(*args); };
    };

    auto* show = book->add_subcommand("show", "Print the tree of groups and sites with their paths");
    show->add_option("BOOK", args->book, "address book file")->required();
    show->add_flag("--json", args->json, "the tree as JSON");
    show->callback(run(Show));

    auto* find = book->add_subcommand("find", "Show the site (with its parameters) or group a path leads to");
    find->add_option("BOOK", args->book, "address book file")->required();
    find->add_option("PATH", args->path, "path such as \\North\\Hill")->required();
    find->callback(run(Find));

    auto* addGroup = book->add_subcommand("add-group", "Add a group under a group and save");
    addGroup->add_option("BOOK", args->book, "address book file")->required();
    addGroup->add_option("PARENT_PATH", args->path, "path of the parent group (\\ for the top)")->required();
    addGroup->add_option("NAME", args->name, "name of the new group")->required();
    addGroup->callback(run(AddGroup));

    auto* addSite = book->add_subcommand("add-site", "Add a site to a group and save");
    addSite->add_option("BOOK", args->book, "address book file")->required();
    addSite->add_option("GROUP_PATH", args->path, "path of the group (\\ for the top)")->required();
    addSite->add_option("NAME", args->name, "name of the new site")->required();
    addSite->add_option("--param", args->params, "a communications parameter NAME=VALUE (repeatable)");
    addSite->callback(run(AddSite));

    auto* import = book->add_subcommand("import", "Add a site for every dial-able profile of the schemes below a folder");
    import->add_option("BOOK", args->book, "address book file")->required();
    import->add_option("SCHEMES_DIR", args->path, "root folder of the scheme files")->required();
    import->callback(run(Import));
}

}  // namespace meridex::cli
