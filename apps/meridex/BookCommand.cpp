#include <algorithm>
#include <filesystem>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "Cli.h"
#include "Commands.h"
#include "ProgressBar.h"
#include <meridex/addressbook/AddressBook.h>
#include <meridex/comms/ImportCommsProfiles.h>
#include <meridex/frame/Error.h>

namespace meridex::cli {

namespace {

constexpr std::string_view kRoot = "V4ADDRESSBOOK";
constexpr std::string_view kKind = "address book";

struct Arguments {
    std::string book;
    std::string path;
    std::string name;
    std::vector<std::string> params;
    bool skipExisting = false;
};

std::string Text(const XmlNode& element, const char* child) { return element.SelectSingle(child).Text(); }

bool IsItem(const XmlNode& element) { return element.Name() == "SITE" || element.Name() == "GROUP"; }

XmlNode NextItem(XmlNode element) {
    while (!element.IsNull() && !IsItem(element)) element = element.NextSiblingElement();
    return element;
}

void LoadToRead(AddressBook& book, const std::string& path) {
    RequireRead(path, kRoot, kKind);
    book.LoadAddressBook(path);
}

void LoadToChange(AddressBook& book, const std::string& path) {
    RefuseToReplace(path, kRoot, kKind);
    book.LoadAddressBook(path);
}

void Save(AddressBook& book) {
    try {
        book.SaveAddressBook();
        NoteSaved(book.ConflictCopy());
    } catch (const Error& e) {
        throw Failure(kWriteFailed, "could not save " + book.FilePath() + ": " + e.Description());
    }
}

// The tree in document order, without recursion (groups may nest thousands
// deep). visit(element, depth, isGroup) is called for each site and group,
// leave(depth) when a group's items end.
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

Json ParametersJson(const XmlNode& profile) {
    Json parameters = Json::object();
    for (XmlNode p = profile.FirstChildElement(); !p.IsNull(); p = p.NextSiblingElement()) parameters[p.Name()] = p.Text();
    return parameters;
}

Json ItemJson(const XmlNode& item, bool group) {
    Json out{{"type", group ? "group" : "site"},
             {"name", Text(item, "NAME")},
             {"key", Text(item, "KEY")},
             {"path", Text(item, "PATH")}};
    if (!group) out["parameters"] = ParametersJson(Site(item).Profile());
    return out;
}

int Show(const Arguments& args) {
    AddressBook book;
    LoadToRead(book, args.book);
    const XmlNode root = book.Sites().XMLNode();
    if (JsonOutput()) {
        // Groups being filled, innermost last; each is put into its parent when it ends.
        std::vector<Json> open{Json{{"book", args.book}, {"name", Text(root, "NAME")}, {"items", Json::array()}}};
        Walk(
            root,
            [&](const XmlNode& item, std::size_t, bool group) {
                Json entry = ItemJson(item, group);
                if (group) {
                    entry["items"] = Json::array();
                    open.push_back(std::move(entry));
                } else {
                    open.back()["items"].push_back(std::move(entry));
                }
            },
            [&](std::size_t depth) {
                if (depth == 0) return;
                Json done = std::move(open.back());
                open.pop_back();
                open.back()["items"].push_back(std::move(done));
            });
        PrintJson(open.front());
        return kOk;
    }
    long sites = 0;
    long groups = 0;
    std::cout << "Address book " << args.book << "\n";
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
    for (XmlNode p = site.Profile().FirstChildElement(); !p.IsNull(); p = p.NextSiblingElement())
        std::cout << "    " << p.Name() << " = " << p.Text() << "\n";
}

int Find(const Arguments& args) {
    AddressBook book;
    LoadToRead(book, args.book);
    // Sites and groups have separate keys, so one path may lead to both.
    Site site = Site::None();
    try {
        site = book.FindSite(args.path);
    } catch (const Error&) {
        // A path that leads to no group: not a site either.
    }
    const SiteGroup group = book.FindGroup(args.path);
    if (site.IsNull() && group.IsNull())
        throw Failure(kNo, "no site or group at the path " + args.path + " in " + args.book);
    if (JsonOutput()) {
        Json groupJson = nullptr;
        if (!group.IsNull()) {
            groupJson = ItemJson(group.XMLNode(), true);
            groupJson["sites"] = group.SiteCount();
            groupJson["groups"] = group.GroupCount();
        }
        PrintJson({{"book", args.book},
                   {"path", args.path},
                   {"site", site.IsNull() ? Json(nullptr) : ItemJson(site.XMLNode(), false)},
                   {"group", groupJson}});
        return kOk;
    }
    if (!site.IsNull()) PrintSite(site);
    if (!group.IsNull()) PrintGroup(group);
    return kOk;
}

// The group a path names ("" and "\" the top), or a failure saying there is none.
SiteGroup RequireGroup(const AddressBook& book, const std::string& path) {
    SiteGroup group = path.empty() || path == "\\" ? book.Sites() : book.FindGroup(path);
    if (group.IsNull())
        throw Failure(kNo, "no group at the path " + path + " in " + book.FilePath() + " (use \\ for the top of the book)");
    return group;
}

// Paths are backslash-separated names, so a name that is empty or holds a
// backslash could be saved but never found again.
void RequireReachableName(const std::string& name, const char* what) {
    if (name.empty() || name.find('\\') != std::string::npos)
        throw Failure(kUsage, std::string("a ") + what + " name must not be empty nor hold \\ (paths could not reach \"" +
                                  name + "\")");
}

void Report(const char* what, const std::string& book, const Json& item, const std::string& name,
            const std::string& key, const std::string& path) {
    if (JsonOutput())
        PrintJson({{"book", book}, {what, item}});
    else
        std::cout << "Added " << what << " " << name << " with key " << key << " at " << path << "\n";
}

int AddGroup(const Arguments& args) {
    RequireReachableName(args.name, "group");
    AddressBook book;
    LoadToChange(book, args.book);
    const SiteGroup parent = RequireGroup(book, args.path);
    SiteGroup group;
    group.setName(args.name);
    if (!parent.AddGroup(group)) throw Failure(kNo, "the group " + args.name + " could not be added at " + args.path);
    Save(book);
    Report("group", args.book, ItemJson(group.XMLNode(), true), group.Name(), group.Key(), group.Path());
    return kOk;
}

int AddSite(const Arguments& args) {
    RequireReachableName(args.name, "site");
    Site site;
    site.setName(args.name);
    for (const auto& param : args.params) {
        const auto equals = param.find('=');
        if (equals == std::string::npos || !site.SetParameter(param.substr(0, equals), param.substr(equals + 1)))
            throw Failure(kUsage, "--param " + param +
                                      ": expected NAME=VALUE with NAME a valid XML element name (such as PHONENUMBER)");
    }
    AddressBook book;
    LoadToChange(book, args.book);
    const SiteGroup group = RequireGroup(book, args.path);
    if (!group.AddSite(site)) throw Failure(kNo, "the site " + args.name + " could not be added at " + args.path);
    Save(book);
    Report("site", args.book, ItemJson(site.XMLNode(), false), site.Name(), site.Key(), site.Path());
    return kOk;
}

// Import events shown on a progress bar, or as plain lines off a terminal.
struct ImportProgress : ImportEvents {
    ProgressBar bar;
    int percent = 0;
    void Message(const std::string& msg) override {
        if (JsonOutput()) return;
        if (bar.OnTerminal()) bar.Update(percent, msg);
        else bar.Message(msg);
    }
    void Progress(std::int16_t value) override {
        percent = value;
        if (!JsonOutput()) bar.Update(value, "schemes processed");
    }
    void Complete() override { bar.Finish(); }
};

struct ImportCount {
    long added = 0;
    long existing = 0;  // a site of that name was already in its group
    long skipped = 0;
};

bool HasSiteNamed(const SiteGroup& group, const std::string& name) {
    for (int i = 1; i <= group.SiteCount(); ++i)
        if (group.Site(i).Name() == name) return true;
    return false;
}

// Copies the sites of an imported tree into the book, group by group as the
// import itself makes them (a group is found by its folder name).
ImportCount Merge(const SiteGroup& from, const SiteGroup& into, bool skipExisting) {
    ImportCount count;
    std::vector<std::pair<SiteGroup, SiteGroup>> pending{{from, into}};
    while (!pending.empty()) {
        const auto [source, target] = pending.back();
        pending.pop_back();
        for (int i = 1; i <= source.SiteCount(); ++i) {
            const Site site = source.Site(i);
            const bool exists = HasSiteNamed(target, site.Name());
            count.existing += exists;
            if (exists && skipExisting) {
                ++count.skipped;
                continue;
            }
            Site copy;
            copy.setName(site.Name());
            copy.setProfile(site.Profile());
            count.added += target.AddSite(copy);
        }
        for (int i = 1; i <= source.GroupCount(); ++i) {
            const SiteGroup sub = source.Group(i);
            SiteGroup child = target.Group(sub.Name());
            if (child.IsNull()) {
                SiteGroup created;
                created.setName(sub.Name());
                if (!target.AddGroup(created)) continue;
                child = target.Group(created.Key());
            }
            pending.emplace_back(sub, child);
        }
    }
    return count;
}

int Import(const Arguments& args) {
    std::error_code error;
    if (!std::filesystem::is_directory(args.path, error))
        throw Failure(kBadInput, "no scheme folder at " + args.path);
    AddressBook book;
    LoadToChange(book, args.book);
    // Imported apart first, so the sites already in the book can be told apart.
    AddressBook imported;
    imported.NewAddressBook();
    ImportProgress progress;
    ImportCommsProfiles import(&progress);
    import.ImportSchemes(args.path, imported.Sites());
    const ImportCount count = Merge(imported.Sites(), book.Sites(), args.skipExisting);
    Save(book);
    const long schemes = static_cast<long>(import.SchemeList().size());
    if (JsonOutput()) {
        PrintJson({{"book", args.book},
                   {"schemeFolder", args.path},
                   {"schemeFiles", schemes},
                   {"sitesAdded", count.added},
                   {"alreadyInBook", count.existing},
                   {"skipped", count.skipped}});
        return kOk;
    }
    std::cout << "Imported " << count.added << " site(s) from " << schemes << " scheme file(s) into " << args.book
              << "\n";
    if (count.existing > 0)
        std::cout << count.existing << " of the schemes' site(s) were already in the book: "
                  << (args.skipExisting ? "skipped\n" : "added again (--skip-existing leaves them out)\n");
    return kOk;
}

}  // namespace

void AddBookCommand(CLI::App& app, int& exitCode) {
    auto* book = app.add_subcommand("book", "The address book: sites in nested groups, import from schemes");
    book->require_subcommand(1);
    auto args = std::make_shared<Arguments>();
    auto add = [&](const char* name, const char* description, int (*command)(const Arguments&)) {
        CLI::App* sub = book->add_subcommand(name, description);
        sub->add_option("BOOK", args->book, "address book file")->required();
        AddJsonFlag(sub);
        sub->callback([&exitCode, args, command] { exitCode = command(*args); });
        return sub;
    };

    add("show", "Print the tree of groups and sites with their paths", Show);

    auto* find = add("find", "Show the site (with its parameters) or group a path leads to (exit 1 if none)", Find);
    find->add_option("PATH", args->path, "path such as \\North\\Hill")->required();

    auto* addGroup = add("add-group", "Add a group under a group and save", AddGroup);
    addGroup->add_option("PARENT_PATH", args->path, "path of the parent group (\\ for the top)")->required();
    addGroup->add_option("NAME", args->name, "name of the new group (not empty, no \\)")->required();
    AddForceFlag(addGroup);

    auto* addSite = add("add-site", "Add a site to a group and save", AddSite);
    addSite->add_option("GROUP_PATH", args->path, "path of the group (\\ for the top)")->required();
    addSite->add_option("NAME", args->name, "name of the new site (not empty, no \\)")->required();
    addSite->add_option("--param", args->params, "a communications parameter NAME=VALUE (repeatable)");
    AddForceFlag(addSite);

    auto* import = add("import", "Add a site for every dial-able profile of the schemes below a folder", Import);
    import->add_option("SCHEMES_DIR", args->path, "root folder of the scheme files")->required();
    import->add_flag("--skip-existing", args->skipExisting,
                     "Leave out the sites whose group already holds a site of that name");
    AddForceFlag(import);
}

}  // namespace meridex::cli
