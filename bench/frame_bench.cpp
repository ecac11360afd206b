// Loading and saving a large document through the views against bare libxml2,
// in the same run.
#include <benchmark/benchmark.h>
#include <libxml/parser.h>
#include <libxml/xmlsave.h>

#include <cstdio>
#include <filesystem>
#include <string>

#include <meridex/frame/XMLOps.h>
#include <meridex/frame/XMLFactoryLease.h>
#include <meridex/frame/XmlDocument.h>

using namespace meridex;

namespace {

// An address-book-like document of n sites, each with a profile.
const std::string& LargeDocument() {
    static const std::string text = [] {
        std::string s = "<V4ADDRESSBOOK>";
        for (int i = 0; i < 20000; ++i) {
            const std::string n = std::to_string(i);
            s += "<SITE><NAME>Site " + n + " (Phone modem on COM1</NAME><KEY>Site " + n + "</KEY><PATH>\\Site " + n +
                 "</PATH><PROFILE><KEY>PROFILE1</KEY><NAME>Phone modem on COM1</NAME><TYPE>RS232</TYPE>"
                 "<METHOD>PHONEMODEM</METHOD><BAUDRATE>9600</BAUDRATE><COMMPORT>1</COMMPORT><RESET>ATZ</RESET>"
                 "<SETTINGS>ATE0</SETTINGS><FORCEPROMPT>K</FORCEPROMPT><ICON>PHONEMODEM</ICON>"
                 "<PHONENUMBER>0123 45" + n + "</PHONENUMBER></PROFILE></SITE>";
        }
        return s + "</V4ADDRESSBOOK>";
    }();
    return text;
}

std::string TempPath(const char* name) { return (std::filesystem::temp_directory_path() / name).string(); }

void BareLibxml2LoadSave(benchmark::State& state) {
    const std::string& text = LargeDocument();
    const std::string path = TempPath("meridex-bench-bare.xml");
    for (auto _ : state) {
        xmlDocPtr doc = xmlReadMemory(text.data(), static_cast<int>(text.size()), nullptr, nullptr,
                                      XML_PARSE_NONET | XML_PARSE_NOBLANKS);
        xmlSaveFormatFileEnc(path.c_str(), doc, "UTF-8", 1);
        xmlFreeDoc(doc);
    }
    std::remove(path.c_str());
    state.SetBytesProcessed(static_cast<long long>(state.iterations() * text.size()));
}
BENCHMARK(BareLibxml2LoadSave)->Unit(benchmark::kMillisecond);

void ViewsLoadSave(benchmark::State& state) {
    const std::string& text = LargeDocument();
    const std::string path = TempPath("meridex-bench-views.xml");
    for (auto _ : state) {
        XmlDocument doc = XmlDocument::Parse(text);
        doc.Save(path);  // atomic: temporary file, fsync, rename
    }
    std::remove(path.c_str());
    state.SetBytesProcessed(static_cast<long long>(state.iterations() * text.size()));
}
BENCHMARK(ViewsLoadSave)->Unit(benchmark::kMillisecond);

// Reading one field of every site through the views.
void ViewsReadEverySite(benchmark::State& state) {
    XMLFactoryLease lease;
    XmlDocument doc = XmlDocument::Parse(LargeDocument());
    for (auto _ : state) {
        std::size_t total = 0;
        for (XmlNode site = doc.DocumentElement().FirstChildElement("SITE"); site; site = site.NextSiblingElement("SITE"))
            total += XMLOps::GetXMLValue(site, "KEY", "").size();
        benchmark::DoNotOptimize(total);
    }
}
BENCHMARK(ViewsReadEverySite)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
