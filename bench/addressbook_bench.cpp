// The address book at a water authority's size, each measurement beside a
// bare-libxml2 baseline doing the same file or tree work:
//   load / save of a 20,000-site book        vs  xmlReadFile / xmlSaveFile
//   that save (checked: did someone else save?) vs  the same bytes written unchecked
//   a save merging another's 100 changes, and
//   that merge alone                           vs  one load of the book
//   FindSite of every site's path             vs  a plain scan of the tree per path
//   import of 1,000 and 4,000 schemes          vs  parsing the same scheme files
//   4,000 sites added to one group             vs  building the same elements raw
#include <benchmark/benchmark.h>
#include <libxml/parser.h>
#include <libxml/tree.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "BenchFolder.h"
#include <meridex/addressbook/AddressBook.h>
#include <meridex/comms/ImportCommsProfiles.h>
#include <meridex/frame/FileOps.h>
#include <meridex/frame/ThreeWayMerge.h>
#include <meridex/frame/XmlDocument.h>

namespace fs = std::filesystem;
using namespace meridex;

namespace {

constexpr int kRegions = 20;
constexpr int kCatchments = 10;
constexpr int kSitesPerCatchment = 100;  // 20 x 10 x 100 = 20,000 sites

// The 20,000-site book, written once; also every site's path.
const std::string& BigBook(std::vector<std::string>* paths = nullptr) {
    static std::vector<std::string> allPaths;
    static const std::string file = [] {
        const std::string path = BenchFolder() + "/AddressBook.xml";
        AddressBook book;
        book.LoadAddressBook(path);
        for (int r = 0; r < kRegions; ++r) {
            SiteGroup region;
            region.setName("Region " + std::to_string(r));
            book.Sites().AddGroup(region);
            for (int c = 0; c < kCatchments; ++c) {
                SiteGroup catchment;
                catchment.setName("Catchment " + std::to_string(c));
                region.AddGroup(catchment);
                for (int s = 0; s < kSitesPerCatchment; ++s) {
                    Site site;
                    site.setName("Gauge " + std::to_string(s));
                    site.SetParameter("TYPE", "RS232");
                    site.SetParameter("METHOD", "PHONEMODEM");
                    site.SetParameter("BAUDRATE", "9600");
                    site.SetParameter("COMMPORT", "3");
                    site.SetParameter("PHONENUMBER", "0311 555 " + std::to_string(1000 + s));
                    site.SetParameter("FORCEPROMPT", "K");
                    catchment.AddSite(site);
                    allPaths.push_back(site.Path());
                }
            }
        }
        book.SaveAddressBook();
        return path;
    }();
    if (paths) *paths = allPaths;
    return file;
}

void BM_BookLoad(benchmark::State& state) {
    const std::string file = BigBook();
    for (auto _ : state) {
        AddressBook book;
        benchmark::DoNotOptimize(book.LoadAddressBook(file));
    }
}
BENCHMARK(BM_BookLoad)->Unit(benchmark::kMillisecond);

void BM_BaselineLoad(benchmark::State& state) {
    const std::string file = BigBook();
    for (auto _ : state) {
        xmlDocPtr doc = xmlReadFile(file.c_str(), nullptr, XML_PARSE_NONET);
        benchmark::DoNotOptimize(doc);
        xmlFreeDoc(doc);
    }
}
BENCHMARK(BM_BaselineLoad)->Unit(benchmark::kMillisecond);

void BM_BookSave(benchmark::State& state) {
    AddressBook book;
    book.LoadAddressBook(BigBook());
    const std::string out = BenchFolder() + "/saved.xml";
    for (auto _ : state) book.SaveAddressBook(out);
}
BENCHMARK(BM_BookSave)->Unit(benchmark::kMillisecond);

void BM_BaselineSave(benchmark::State& state) {
    xmlDocPtr doc = xmlReadFile(BigBook().c_str(), nullptr, XML_PARSE_NONET);
    const std::string out = BenchFolder() + "/saved-raw.xml";
    for (auto _ : state) benchmark::DoNotOptimize(xmlSaveFile(out.c_str(), doc));
    xmlFreeDoc(doc);
}
BENCHMARK(BM_BaselineSave)->Unit(benchmark::kMillisecond);

// BM_BookSave's saves after the first are checked against the version the
// book last saved; this writes the same bytes the same way without the check.
void BM_BookSaveUnchecked(benchmark::State& state) {
    AddressBook book;
    book.LoadAddressBook(BigBook());
    const XmlDocument document = book.Sites().XMLNode().OwnerDocument();
    const std::string out = BenchFolder() + "/saved-unchecked.xml";
    for (auto _ : state) benchmark::DoNotOptimize(document.Save(out));
}
BENCHMARK(BM_BookSaveUnchecked)->Unit(benchmark::kMillisecond);

// 100 site names changed in one of two books loaded from one file.
void RenameSites(AddressBook& book, const std::vector<std::string>& paths, std::size_t first, const char* name) {
    for (std::size_t i = first; i < first + 100; ++i) book.FindSite(paths[i * 97 % paths.size()]).setName(name);
}

// Two people each change 100 sites of the 20,000-site book; the second save
// finds the first one's and merges (timed: that save, all of it).
void BM_BookSaveMergingAnothers(benchmark::State& state) {
    std::vector<std::string> paths;
    const std::string source = BigBook(&paths);
    const std::string file = BenchFolder() + "/shared.xml";
    for (auto _ : state) {
        state.PauseTiming();
        fs::copy_file(source, file, fs::copy_options::overwrite_existing);
        AddressBook theirs, ours;
        theirs.LoadAddressBook(file);
        ours.LoadAddressBook(file);
        RenameSites(theirs, paths, 0, "Theirs");
        theirs.SaveAddressBook();
        RenameSites(ours, paths, 100, "Ours");
        state.ResumeTiming();
        ours.SaveAddressBook();
        if (!ours.ConflictCopy().empty()) state.SkipWithError("the changes should have merged");
    }
}
BENCHMARK(BM_BookSaveMergingAnothers)->Unit(benchmark::kMillisecond);

// The merge alone in that save: both versions parsed, their changes put into ours.
void BM_BookMergeOnly(benchmark::State& state) {
    std::vector<std::string> paths;
    const std::string source = BigBook(&paths);
    const std::string file = BenchFolder() + "/merge-theirs.xml";
    fs::copy_file(source, file, fs::copy_options::overwrite_existing);
    AddressBook theirs;
    theirs.LoadAddressBook(file);
    RenameSites(theirs, paths, 0, "Theirs");
    theirs.SaveAddressBook();
    std::string base, theirBytes;
    FileOps::ReadWholeFile(source, base);
    FileOps::ReadWholeFile(file, theirBytes);
    ThreeWayMerge::Rules rules;
    rules.descend = [](std::string_view name) { return name == "GROUP"; };
    for (auto _ : state) {
        state.PauseTiming();
        AddressBook ours;
        ours.LoadAddressBook(source);
        RenameSites(ours, paths, 100, "Ours");
        state.ResumeTiming();
        if (!ThreeWayMerge::MergeDocuments(ours.Sites().XMLNode(), base, theirBytes, rules))
            state.SkipWithError("the changes should have merged");
    }
}
BENCHMARK(BM_BookMergeOnly)->Unit(benchmark::kMillisecond);

void BM_FindEverySite(benchmark::State& state) {
    std::vector<std::string> paths;
    AddressBook book;
    book.LoadAddressBook(BigBook(&paths));
    for (auto _ : state) {
        for (const auto& path : paths) benchmark::DoNotOptimize(book.FindSite(path));
    }
    state.SetItemsProcessed(static_cast<long>(state.iterations() * paths.size()));
}
BENCHMARK(BM_FindEverySite)->Unit(benchmark::kMillisecond);

// The straightforward way: split the path, scan each level's children for
// the key (ASCII case only, which flatters the baseline).
xmlNodePtr RawChild(xmlNodePtr parent, const char* kind, const std::string& key) {
    for (xmlNodePtr child = parent->children; child; child = child->next) {
        if (child->type != XML_ELEMENT_NODE || !xmlStrEqual(child->name, BAD_CAST kind)) continue;
        for (xmlNodePtr k = child->children; k; k = k->next) {
            if (k->type == XML_ELEMENT_NODE && xmlStrEqual(k->name, BAD_CAST "KEY")) {
                xmlChar* text = xmlNodeGetContent(k);
                const bool match = text && xmlStrcasecmp(text, BAD_CAST key.c_str()) == 0;
                xmlFree(text);
                if (match) return child;
                break;
            }
        }
    }
    return nullptr;
}

void BM_BaselineFindEverySite(benchmark::State& state) {
    std::vector<std::string> paths;
    xmlDocPtr doc = xmlReadFile(BigBook(&paths).c_str(), nullptr, XML_PARSE_NONET);
    for (auto _ : state) {
        for (const auto& path : paths) {
            xmlNodePtr node = xmlDocGetRootElement(doc);
            std::size_t start = path.find('\\') + 1;
            for (std::size_t slash; node && (slash = path.find('\\', start)) != std::string::npos; start = slash + 1)
                node = RawChild(node, "GROUP", path.substr(start, slash - start));
            if (node) node = RawChild(node, "SITE", path.substr(start));
            benchmark::DoNotOptimize(node);
        }
    }
    state.SetItemsProcessed(static_cast<long>(state.iterations() * paths.size()));
    xmlFreeDoc(doc);
}
BENCHMARK(BM_BaselineFindEverySite)->Unit(benchmark::kMillisecond);

// count schemes in one folder (so thousands of groups land in one group),
// each with two dial-able profiles and a direct cable.
const std::string& SchemeTree(int count) {
    static std::string made[2];
    std::string& root = made[count == 1000 ? 0 : 1];
    if (!root.empty()) return root;
    root = BenchFolder() + "/schemes" + std::to_string(count);
    fs::create_directories(root + "/North");
    for (int i = 0; i < count; ++i) {
        std::ofstream(root + "/North/Scheme" + std::to_string(i) + ".xml")
            << "<SCHEME><NAME>Scheme " << i << "</NAME><COMMSPROFILES>"
            << "<PROFILE><KEY>PROFILE1</KEY><NAME>Phone modem on COM3</NAME><TYPE>RS232</TYPE>"
               "<METHOD>PHONEMODEM</METHOD><COMMPORT>3</COMMPORT><PHONENUMBER>0311 555 0142</PHONENUMBER></PROFILE>"
            << "<PROFILE><KEY>PROFILE2</KEY><NAME>Network (TCP/IP)</NAME><TYPE>IP</TYPE><METHOD>TCP</METHOD>"
               "<ADDRESS>192.0.2.1</ADDRESS><PORT>9000</PORT></PROFILE>"
            << "<PROFILE><KEY>PROFILE3</KEY><NAME>Direct to COM1</NAME><TYPE>RS232</TYPE><METHOD>DIRECT</METHOD>"
               "</PROFILE></COMMSPROFILES></SCHEME>";
    }
    return root;
}

void BM_Import(benchmark::State& state) {
    const std::string root = SchemeTree(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        AddressBook book;
        book.NewAddressBook();
        ImportCommsProfiles import;
        import.ImportSchemes(root, book.Sites());
        benchmark::DoNotOptimize(import.SitesAdded());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_Import)->Arg(1000)->Arg(4000)->Unit(benchmark::kMillisecond);

void BM_BaselineParseSchemes(benchmark::State& state) {
    const std::string root = SchemeTree(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        for (const auto& entry : fs::directory_iterator(root + "/North")) {
            xmlDocPtr doc = xmlReadFile(entry.path().c_str(), nullptr, XML_PARSE_NONET);
            benchmark::DoNotOptimize(doc);
            xmlFreeDoc(doc);
        }
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_BaselineParseSchemes)->Arg(1000)->Arg(4000)->Unit(benchmark::kMillisecond);

// The unique-key rule with thousands of sites in one group.
void BM_AddSitesToOneGroup(benchmark::State& state) {
    for (auto _ : state) {
        AddressBook book;
        book.NewAddressBook();
        const SiteGroup root = book.Sites();
        for (long i = 0; i < state.range(0); ++i) {
            Site site;
            site.setName("Gauge " + std::to_string(i % 1000));  // names repeat, so keys get suffixes
            root.AddSite(site);
        }
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_AddSitesToOneGroup)->Arg(1000)->Arg(4000)->Unit(benchmark::kMillisecond);

void BM_BaselineRawSites(benchmark::State& state) {
    for (auto _ : state) {
        xmlDocPtr doc = xmlNewDoc(BAD_CAST "1.0");
        xmlNodePtr root = xmlNewNode(nullptr, BAD_CAST "V4ADDRESSBOOK");
        xmlDocSetRootElement(doc, root);
        for (long i = 0; i < state.range(0); ++i) {
            xmlNodePtr site = xmlNewChild(root, nullptr, BAD_CAST "SITE", nullptr);
            xmlNewChild(site, nullptr, BAD_CAST "PROFILE", nullptr);
            const std::string name = "Gauge " + std::to_string(i % 1000);
            xmlNewTextChild(site, nullptr, BAD_CAST "NAME", BAD_CAST name.c_str());
            xmlNewTextChild(site, nullptr, BAD_CAST "KEY", BAD_CAST name.c_str());
            xmlNewTextChild(site, nullptr, BAD_CAST "PATH", BAD_CAST("\\" + name).c_str());
        }
        xmlFreeDoc(doc);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_BaselineRawSites)->Arg(1000)->Arg(4000)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
